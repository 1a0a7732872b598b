#include "svg/path/PathVisitorStrToTokens.h"

#include <utf8.h>

#include <cstdint>

#include <tqSystem/tqStringUtils.h>

#include "svg/model/SvgNumber.h"
#include "svg/model/detail/ExactDecimal.h"

namespace tq::svg {

namespace {

bool isAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

PathVisitorStrToTokens::PathVisitorStrToTokens(const std::string& text, Callback callback)
    : mText(text),
      mBegin(mText.data()),
      mEnd(mText.data() + mText.size()),
      mCallback(std::move(callback)),
      mPos(mBegin) {}

// Every rule tests characters through here: ASCII is the byte itself, anything else is decoded
// (raising the utf8 exceptions when malformed) and never matches a rule.
inline char32_t PathVisitorStrToTokens::peek(const char* pos) const {
    const auto byte = static_cast<unsigned char>(*pos);
    if (byte < 0x80) {
        return byte;
    }
    return utf8::next(pos, mEnd);
}

inline bool PathVisitorStrToTokens::isWhiteSpace(const char* pos) const {
    const char32_t c = peek(pos);
    return c == U' ' || c == U'\n';
}

std::string PathVisitorStrToTokens::positionOf(const char* pos) const {
    return tqStringUtils::fromUInt64(static_cast<uint64>(pos - mBegin), 1);
}

// Hands the scratch numbers over in a vector of their exact size, so the item tree keeps no
// spare capacity and the scratch keeps its own.
void PathVisitorStrToTokens::emit(char letter) {
    mCallback(letter, std::vector<float>(mNumbers.begin(), mNumbers.end()));
}

bool PathVisitorStrToTokens::visit() {
    if (consumeSvgPath(mPos) == Invalid) {
        return false;
    }
    if (mPos == mEnd) {
        return true;
    }
    if (mError.empty()) {
        mError = "Unrecognized sequence at position " + positionOf(mPos);
    }
    return false;
}

void PathVisitorStrToTokens::consumeAnyWhiteSpace(const char*& pos) {
    while (pos != mEnd && isWhiteSpace(pos)) {
        ++pos;
    }
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeSeparator(const char*& pos) {
    if (pos == mEnd) {
        return Invalid;
    }
    const char* start = pos;
    bool comma = false;
    while (pos != mEnd) {
        const char32_t c = peek(pos);
        if (c == U' ' || c == U'\n') {
            ++pos;
        } else if (c == U',' && !comma) {
            comma = true;
            ++pos;
        } else {
            break;
        }
    }
    if (pos != start) {
        return Matched;
    }
    // Two numbers may not touch; a sign or a point may start the next one without a separator.
    if (pos != mBegin && pos != mEnd && isAsciiDigit(pos[-1]) && isAsciiDigit(*pos)) {
        return Invalid;
    }
    return Matched;
}

// Whether `c` may extend a number run that began at `runStart` and reached `at`.
inline bool extendsRun(char32_t c, const char* runStart, const char* at, bool point) {
    return (c >= U'0' && c <= U'9') || c == U'e' || c == U'E' ||
           ((c == U'+' || c == U'-') && (at == runStart || at[-1] == 'e' || at[-1] == 'E')) ||
           (c == U'.' && !point);
}

// The longest run of number characters, converted as a whole. The usual shape
// [sign]digits[.digits][e[sign]digits] is read and converted in the same pass; anything else
// (a run that goes on past that shape, long mantissas, large exponents) takes the general way.
PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeCoordinate(const char*& pos,
                                                                        float& out) {
    const auto digit = [](const char* q) { return *q >= '0' && *q <= '9'; };
    const char* p = pos;
    bool negative = false;
    if (p != mEnd && (*p == '-' || *p == '+')) {
        negative = *p == '-';
        ++p;
    }
    std::uint64_t mantissa = 0;
    int significant = 0;
    int exponent = 0;
    bool anyDigit = false;
    bool point = false;
    for (; p != mEnd && digit(p); ++p) {
        anyDigit = true;
        if (mantissa != 0 || *p != '0') {
            mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
            ++significant;
        }
    }
    if (p != mEnd && *p == '.') {
        point = true;
        for (++p; p != mEnd && digit(p); ++p) {
            anyDigit = true;
            if (mantissa != 0 || *p != '0') {
                mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
                ++significant;
            }
            --exponent;
        }
    }
    if (anyDigit && p != mEnd && (*p == 'e' || *p == 'E')) {
        const char* q = p + 1;
        bool negativeExponent = false;
        if (q != mEnd && (*q == '-' || *q == '+')) {
            negativeExponent = *q == '-';
            ++q;
        }
        if (q != mEnd && digit(q)) {
            int e = 0;
            for (; q != mEnd && digit(q); ++q) {
                e = e < 10000 ? e * 10 + (*q - '0') : e;
            }
            exponent += negativeExponent ? -e : e;
            p = q;
        }
    }
    // Past the usual shape the run may still go on ("1e5.5", "2.e", "--"): then scan it whole.
    bool usual = anyDigit;
    if (p != mEnd && extendsRun(peek(p), pos, p, point)) {
        usual = false;
        for (; p != mEnd && extendsRun(peek(p), pos, p, point); ++p) {
            point = point || *p == '.';
        }
    }
    if (p == pos) {
        return NoMatch;
    }
    const char* run = pos;
    pos = p;
    double value = 0.0;
    if (usual && detail::ExactDecimalToDouble(mantissa, significant, exponent, value)) {
        out = static_cast<float>(negative ? -value : value);
        return Matched;
    }
    return ParseSvgNumber(std::string_view(run, static_cast<std::size_t>(p - run)), out) ? Matched
                                                                                         : Invalid;
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeCoordinateSequence(
    const char*& pos, std::vector<float>& out, int count) {
    const std::size_t before = out.size();
    float value = 0.0f;
    const Match first = consumeCoordinate(pos, value);
    if (first != Matched) {
        out.resize(before);
        return first;
    }
    out.push_back(value);
    for (int i = 1; i < count; ++i) {
        if (consumeSeparator(pos) != Matched || consumeCoordinate(pos, value) != Matched) {
            out.resize(before);
            return Invalid;
        }
        out.push_back(value);
    }
    return Matched;
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeCommandWithFloatSequence(
    const char*& pos, const char* letters, int count) {
    if (pos == mEnd) {
        return NoMatch;
    }
    const char32_t c = peek(pos);
    bool listed = false;
    for (const char* letter = letters; *letter != '\0' && !listed; ++letter) {
        listed = c == static_cast<unsigned char>(*letter);
    }
    if (!listed) {
        return NoMatch;
    }
    const char letter = *pos++;
    consumeAnyWhiteSpace(pos);
    mNumbers.clear();
    while (true) {
        const Match group = consumeCoordinateSequence(pos, mNumbers, count);
        if (group == Invalid) {
            mError = std::string("Unmatched coordinate sequence after ") + letter +
                     " at position " + positionOf(pos);
            return Invalid;
        }
        if (group == NoMatch) {
            if (mNumbers.empty()) {
                return Invalid;  // a letter with no number; deliberately no message
            }
            emit(letter);
            return Matched;
        }
        consumeAnyWhiteSpace(pos);
    }
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeClosePath(const char*& pos) {
    if (pos == mEnd) {
        return NoMatch;
    }
    const char32_t c = peek(pos);
    if (c != U'Z' && c != U'z') {
        return NoMatch;
    }
    const char letter = *pos++;
    mNumbers.clear();
    emit(letter);
    return Matched;
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeFlag(const char*& pos, bool& out) {
    if (pos == mEnd) {
        return NoMatch;
    }
    const char32_t c = peek(pos);
    if (c != U'0' && c != U'1') {
        return NoMatch;
    }
    out = c == U'1';
    ++pos;
    return Matched;
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeEllipticalArcSequence(
    const char*& pos) {
    if (pos == mEnd) {
        return NoMatch;
    }
    const char32_t c = peek(pos);
    if (c != U'A' && c != U'a') {
        return NoMatch;
    }
    const char letter = *pos++;
    consumeAnyWhiteSpace(pos);
    const char* committed = pos;
    mNumbers.clear();
    while (true) {
        const char* p = committed;
        float value[5] = {};
        bool flag[2] = {};
        const bool whole =
            consumeCoordinate(p, value[0]) == Matched && consumeSeparator(p) == Matched &&
            consumeCoordinate(p, value[1]) == Matched && consumeSeparator(p) == Matched &&
            consumeCoordinate(p, value[2]) == Matched && consumeSeparator(p) == Matched &&
            consumeFlag(p, flag[0]) == Matched && consumeSeparator(p) == Matched &&
            consumeFlag(p, flag[1]) == Matched && consumeSeparator(p) == Matched &&
            consumeCoordinate(p, value[3]) == Matched && consumeSeparator(p) == Matched &&
            consumeCoordinate(p, value[4]) == Matched;
        if (!whole) {
            break;  // the partial group is dropped and left unread
        }
        mNumbers.insert(mNumbers.end(), {value[0], value[1], value[2], flag[0] ? 1.0f : 0.0f,
                                         flag[1] ? 1.0f : 0.0f, value[3], value[4]});
        committed = p;
        consumeAnyWhiteSpace(committed);
    }
    pos = committed;
    if (mNumbers.empty()) {
        mError = "Expected instructions following elliptical-arc at position " + positionOf(pos);
        return Invalid;
    }
    emit(letter);
    return Matched;
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeDrawToCommand(const char*& pos) {
    consumeAnyWhiteSpace(pos);
    if (pos == mEnd) {
        return NoMatch;
    }
    Match result = consumeCommandWithFloatSequence(pos, "Ll", 2);
    if (result == NoMatch) {
        result = consumeCommandWithFloatSequence(pos, "HhVv", 1);
    }
    if (result == NoMatch) {
        result = consumeCommandWithFloatSequence(pos, "Cc", 6);
    }
    if (result == NoMatch) {
        result = consumeCommandWithFloatSequence(pos, "Ss", 4);
    }
    if (result == NoMatch) {
        result = consumeClosePath(pos);
    }
    if (result == NoMatch) {
        result = consumeEllipticalArcSequence(pos);
    }
    if (result != NoMatch) {
        return result;
    }
    if (*pos == 'M' || *pos == 'm') {
        return NoMatch;  // a new moveto group begins
    }
    mError += "Unsupported command in path @" +
              tqStringUtils::fromInt64(static_cast<int64>(pos - mBegin), 1) + " : " +
              std::string(pos, mEnd);
    return Invalid;
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeMoveToDrawToCommandGroup(
    const char*& pos, bool required) {
    if (pos == mEnd) {
        return NoMatch;
    }
    const char* start = pos;
    const Match move = consumeCommandWithFloatSequence(pos, "Mm", 2);
    if (move == NoMatch) {
        pos = start;
    }
    if (move == Matched || (move == NoMatch && !required)) {
        while (true) {
            const char* attempt = pos;
            const Match draw = consumeDrawToCommand(pos);
            if (draw == Invalid) {
                return Invalid;
            }
            if (draw == NoMatch) {
                pos = attempt;
                return Matched;
            }
        }
    }
    mError = "Expected MoveTo sequence at position " + positionOf(pos);
    return Invalid;
}

PathVisitorStrToTokens::Match PathVisitorStrToTokens::consumeSvgPath(const char*& pos) {
    consumeAnyWhiteSpace(pos);
    Match group = consumeMoveToDrawToCommandGroup(pos, true);
    while (group != NoMatch) {
        if (group == Invalid) {
            return Invalid;
        }
        consumeAnyWhiteSpace(pos);
        const char* before = pos;
        group = consumeMoveToDrawToCommandGroup(pos, false);
        if (group == Matched && pos == before) {
            break;  // nothing consumed: stop rather than loop
        }
    }
    consumeAnyWhiteSpace(pos);
    return Matched;
}

}  // namespace tq::svg
