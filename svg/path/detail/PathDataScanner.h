// The path-data grammar of both reading profiles, one scanner (internal).
//
// The scanner reads a "d" value once, left to right, and hands its sink each command as it
// completes, group by group: begin(letter), then group(values, count) for every complete group
// of numbers (arc flags as 0 or 1), then end(); a command that fails after some of its groups
// were handed over gets abandon() instead of end() under the subset grammar, which keeps whole
// commands only.
//
// SubsetGrammar is the library's deliberate reading: white space is only space and line feed,
// commas may not stand between two groups of one command, arc flags must stand apart from what
// follows them, a number is the longest run of number characters converted as a whole, and there
// are no quadratic curves. A refusal leaves one positioned message. Malformed UTF-8 met where a
// rule tests a character raises the utf8 exceptions.
//
// StandardGrammar reads SVG's path grammar as browsers do: every XML white space, commas
// wherever the grammar allows them, compact arc flags ("a1 1 0 01 5 5"), numbers by the SVG
// number syntax ("1e5.5" is 1e5 then .5), the quadratic commands, and on an error every group
// completed before it is kept (the message says where the rest was dropped). Non-finite numbers
// are errors. Bytes outside ASCII never match and never throw.
//
// Neither allocates per number or per command: numbers are converted as they are scanned (the
// digits gathered into a mantissa and converted by one multiplication, the general conversion
// for more than 19 digits) and groups sit in a fixed array.
#pragma once

#include <utf8.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <tqSystem/tqStringUtils.h>

#include "svg/model/Path.h"
#include "svg/model/detail/ExactDecimal.h"
#include "svg/model/detail/SvgNumber.h"
#include "svg/path/detail/PathLetterTable.h"

namespace tq::svg::detail {

struct SubsetGrammar {
    static constexpr bool kStandard = false;
};

struct StandardGrammar {
    static constexpr bool kStandard = true;
};

template <class Grammar, class Sink>
class PathDataScanner {
public:
    PathDataScanner(std::string_view text, Sink& sink)
        : mBegin(text.data()), mEnd(text.data() + text.size()), mSink(sink) {}

    // True when the whole text was accepted; otherwise error() says why (under the subset
    // grammar it may be empty: a letter followed by no number, deliberately).
    bool scan() {
        const char* pos = mBegin;
        if constexpr (Grammar::kStandard) {
            return scanStandard(pos);
        } else {
            if (consumeSvgPath(pos) == Invalid) {
                return false;
            }
            if (pos == mEnd) {
                return true;
            }
            if (mError.empty()) {
                mError = "Unrecognized sequence at position " + positionOf(pos);
            }
            return false;
        }
    }

    const std::string& error() const { return mError; }

    // Numbers separated by comma-wsp (a polygon's points), appended to `out`; false, keeping
    // the numbers before it, at the first that does not read.
    bool scanNumbers(std::vector<float>& out) {
        static_assert(Grammar::kStandard, "number lists are read by the standard grammar");
        const char* pos = mBegin;
        skipSpace(pos);
        while (pos != mEnd) {
            float value = 0.0f;
            if (consumeNumber(pos, value) != Matched) {
                return false;
            }
            out.push_back(value);
            if (skipCommaSpace(pos) && pos == mEnd) {
                return false;  // a trailing comma
            }
        }
        return true;
    }

private:
    enum Match { NoMatch = 0, Invalid = 1, Matched = 2 };

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    // Under the subset grammar every rule that tests a character decodes it, so that malformed
    // UTF-8 raises the utf8 exceptions; a well-formed non-ASCII character matches nothing.
    char peek(const char* pos) const {
        if constexpr (!Grammar::kStandard) {
            if (static_cast<unsigned char>(*pos) >= 0x80) {
                utf8::next(pos, mEnd);
                return '\x80';
            }
        }
        return *pos;
    }

    bool isSpace(const char* pos) const {
        const char c = peek(pos);
        if constexpr (Grammar::kStandard) {
            return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f';
        } else {
            return c == ' ' || c == '\n';
        }
    }

    void skipSpace(const char*& pos) const {
        while (pos != mEnd && isSpace(pos)) {
            ++pos;
        }
    }

    std::string positionOf(const char* pos) const {
        return tqStringUtils::fromUInt64(static_cast<uint64>(pos - mBegin), 1);
    }

    // ---- numbers -------------------------------------------------------------------------------

    static bool startsRun(char c) {
        return isDigit(c) || c == 'e' || c == 'E' || c == '+' || c == '-' || c == '.';
    }

    // Whether `c` may extend a subset number run that began at `runStart` and reached `at`.
    static bool extendsRun(char c, const char* runStart, const char* at, bool point) {
        return isDigit(c) || c == 'e' || c == 'E' ||
               ((c == '+' || c == '-') && (at == runStart || at[-1] == 'e' || at[-1] == 'E')) ||
               (c == '.' && !point);
    }

    // Appends the digits from `p` on to `mantissa` (modulo 2^64: the caller counts them) and
    // sets `p` past them. Eight bytes at a time where eight remain, without a branch per digit:
    // numbers in path data have few digits of varying count, and a loop that stops at the first
    // non-digit mispredicts its exit on most numbers.
    static void AppendDigits(const char*& p, const char* end, std::uint64_t& mantissa) {
        constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0u;
        constexpr std::uint64_t kZeros = 0x3030303030303030u;
        while (end - p >= 8) {
            std::uint64_t chunk;
            std::memcpy(&chunk, p, 8);
            // A byte is a digit when its high nibble is 3 and adding 6 keeps it 3.
            const std::uint64_t test =
                (chunk & kHigh) | (((chunk + 0x0606060606060606u) & kHigh) >> 4);
            const std::uint64_t other = test ^ 0x3333333333333333u;  // zero bytes: digits
            const int count = other == 0 ? 8 : CountTrailingZeros(other) / 8;
            if (count == 0) {
                return;
            }
            // The digits moved to the high bytes (the low ones read as leading zeros), then
            // combined pairwise into one number.
            std::uint64_t value = (chunk - kZeros) << (8 * (8 - count));
            value = (value * 10 + (value >> 8)) & 0x00FF00FF00FF00FFu;
            value = (value * 100 + (value >> 16)) & 0x0000FFFF0000FFFFu;
            value = (value * 10000 + (value >> 32)) & 0xFFFFFFFFu;
            mantissa = mantissa * kPowersOfTen[count] + value;
            p += count;
            if (count < 8) {
                return;
            }
        }
        for (; p != end && isDigit(*p); ++p) {
            mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
        }
    }

    static int CountTrailingZeros(std::uint64_t x) { return __builtin_ctzll(x); }

    static constexpr std::uint64_t kPowersOfTen[] = {1,      10,      100,      1000,     10000,
                                                     100000, 1000000, 10000000, 100000000};

    // The usual shape [sign]digits[.digits][e[sign]digits] from `p`, converted in the same pass.
    // Sets `p` past what it read; `exact` is false when the value needs the general conversion.
    static void scanDecimal(const char*& p, const char* end, bool& anyDigit, bool& point,
                            bool& exact, double& value) {
        // Signs follow no pattern in path data; this form lets the compiler select, not branch.
        const bool negative = p != end && *p == '-';
        p += negative || (p != end && *p == '+');
        // Every digit goes into the mantissa; leading zeros add nothing to it, and a number of
        // more than 19 digits, leading zeros included, takes the general conversion.
        std::uint64_t mantissa = 0;
        const char* digits = p;
        AppendDigits(p, end, mantissa);
        std::ptrdiff_t count = p - digits;
        int exponent = 0;
        point = p != end && *p == '.';
        if (point) {
            const char* fraction = ++p;
            AppendDigits(p, end, mantissa);
            exponent = -static_cast<int>(std::min<std::ptrdiff_t>(p - fraction, 100000));
            count += p - fraction;
        }
        anyDigit = count > 0;
        const int significant = static_cast<int>(std::min<std::ptrdiff_t>(count, 100));
        if (anyDigit && p != end && (*p == 'e' || *p == 'E')) {
            const char* q = p + 1;
            bool negativeExponent = false;
            if (q != end && (*q == '-' || *q == '+')) {
                negativeExponent = *q == '-';
                ++q;
            }
            if (q != end && isDigit(*q)) {
                int e = 0;
                for (; q != end && isDigit(*q); ++q) {
                    e = e < 10000 ? e * 10 + (*q - '0') : e;
                }
                exponent += negativeExponent ? -e : e;
                p = q;
            }
        }
        exact = anyDigit && DecimalToDouble(mantissa, significant, exponent, negative, value);
    }

    // One number at `pos`. Subset: the longest run of number characters, which must convert as
    // a whole. Standard: the longest prefix that is a number, which must be finite.
    Match consumeNumber(const char*& pos, float& out) const {
        const char* p = pos;
        bool anyDigit = false;
        bool point = false;
        bool exact = false;
        double value = 0.0;
        scanDecimal(p, mEnd, anyDigit, point, exact, value);
        if constexpr (Grammar::kStandard) {
            if (!anyDigit) {
                return NoMatch;
            }
            float narrowed = static_cast<float>(value);
            if (!exact && !ParseSvgNumber(std::string_view(pos, static_cast<std::size_t>(p - pos)),
                                          narrowed)) {
                return Invalid;
            }
            if (!std::isfinite(narrowed)) {
                return Invalid;
            }
            pos = p;
            out = narrowed;
            return Matched;
        } else {
            // Past the usual shape the run may still go on ("1e5.5", "2.e", "--"): scan it whole.
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
            if (usual && exact) {
                out = static_cast<float>(value);
                return Matched;
            }
            return ParseSvgNumber(std::string_view(run, static_cast<std::size_t>(p - run)), out)
                       ? Matched
                       : Invalid;
        }
    }

    Match consumeFlag(const char*& pos, float& out) const {
        if (pos == mEnd) {
            return NoMatch;
        }
        const char c = peek(pos);
        if (c != '0' && c != '1') {
            return NoMatch;
        }
        out = c == '1' ? 1.0f : 0.0f;
        ++pos;
        return Matched;
    }

    // ---- the subset grammar ------------------------------------------------------------------

    // Between two numbers of a group: spaces and line feeds with at most one comma, or nothing
    // where the next number starts with a sign or a point. Two digits may not touch.
    Match consumeSeparator(const char*& pos) const {
        if (pos == mEnd) {
            return Invalid;
        }
        const char* start = pos;
        bool comma = false;
        while (pos != mEnd) {
            // Whether a comma or a space comes is data, not a pattern: one test for both.
            const char c = peek(pos);
            const bool firstComma = c == ',' && !comma;
            if (c != ' ' && c != '\n' && !firstComma) {
                break;
            }
            comma = comma || firstComma;
            ++pos;
        }
        if (pos != start) {
            return Matched;
        }
        if (pos != mBegin && isDigit(pos[-1]) && isDigit(*pos)) {
            return Invalid;
        }
        return Matched;
    }

    Match consumeGroup(const char*& pos, float* values, int count) const {
        // No number run starts here: the common end of a command, told without scanning.
        if (pos == mEnd || !startsRun(peek(pos))) {
            return NoMatch;
        }
        const Match first = consumeNumber(pos, values[0]);
        if (first != Matched) {
            return first;
        }
        for (int i = 1; i < count; ++i) {
            if (consumeSeparator(pos) != Matched || consumeNumber(pos, values[i]) != Matched) {
                return Invalid;
            }
        }
        return Matched;
    }

    // A letter among `letters` and its groups of numbers, separated by white space only. An
    // incomplete group refuses the whole command, with a message; a letter with no number refuses
    // it without one, deliberately.
    Match consumeCommandWithGroups(const char*& pos, const char* letters) {
        if (pos == mEnd) {
            return NoMatch;
        }
        const char c = peek(pos);
        bool listed = false;
        for (const char* letter = letters; *letter != '\0' && !listed; ++letter) {
            listed = c == *letter;
        }
        return listed ? consumeGroups(pos) : NoMatch;
    }

    // The groups after the command letter at `pos`.
    Match consumeGroups(const char*& pos) {
        const char letter = *pos++;
        const int count = kPathLetters.groupSizeOf(letter, false);
        skipSpace(pos);
        mSink.begin(letter);
        bool any = false;
        while (true) {
            float values[7];
            const Match group = consumeGroup(pos, values, count);
            if (group == Invalid) {
                mSink.abandon();
                mError = std::string("Unmatched coordinate sequence after ") + letter +
                         " at position " + positionOf(pos);
                return Invalid;
            }
            if (group == NoMatch) {
                if (!any) {
                    mSink.abandon();
                    return Invalid;
                }
                mSink.end();
                return Matched;
            }
            mSink.group(values, count);
            any = true;
            skipSpace(pos);
        }
    }

    Match consumeClosePath(const char*& pos) {
        if (pos == mEnd) {
            return NoMatch;
        }
        const char c = peek(pos);
        if (c != 'Z' && c != 'z') {
            return NoMatch;
        }
        mSink.begin(*pos++);
        mSink.end();
        return Matched;
    }

    // Arc groups are read whole or not at all: a partial last group is left unread (and then
    // refused as an unsupported command), and the groups before it stand.
    Match consumeEllipticalArcs(const char*& pos) {
        if (pos == mEnd) {
            return NoMatch;
        }
        const char c = peek(pos);
        if (c != 'A' && c != 'a') {
            return NoMatch;
        }
        const char letter = *pos++;
        skipSpace(pos);
        const char* committed = pos;
        bool any = false;
        while (true) {
            const char* p = committed;
            float v[7];
            const bool whole =
                consumeNumber(p, v[0]) == Matched && consumeSeparator(p) == Matched &&
                consumeNumber(p, v[1]) == Matched && consumeSeparator(p) == Matched &&
                consumeNumber(p, v[2]) == Matched && consumeSeparator(p) == Matched &&
                consumeFlag(p, v[3]) == Matched && consumeSeparator(p) == Matched &&
                consumeFlag(p, v[4]) == Matched && consumeSeparator(p) == Matched &&
                consumeNumber(p, v[5]) == Matched && consumeSeparator(p) == Matched &&
                consumeNumber(p, v[6]) == Matched;
            if (!whole) {
                break;
            }
            if (!any) {
                mSink.begin(letter);
                any = true;
            }
            mSink.group(v, 7);
            committed = p;
            skipSpace(committed);
        }
        pos = committed;
        if (!any) {
            mError =
                "Expected instructions following elliptical-arc at position " + positionOf(pos);
            return Invalid;
        }
        mSink.end();
        return Matched;
    }

    // The letters are disjoint, so the command is chosen by its letter at once.
    Match consumeDrawToCommand(const char*& pos) {
        skipSpace(pos);
        if (pos == mEnd) {
            return NoMatch;
        }
        switch (peek(pos)) {
            case 'L':
            case 'l':
            case 'H':
            case 'h':
            case 'V':
            case 'v':
            case 'C':
            case 'c':
            case 'S':
            case 's':
                return consumeGroups(pos);
            case 'Z':
            case 'z':
                return consumeClosePath(pos);
            case 'A':
            case 'a':
                return consumeEllipticalArcs(pos);
            case 'M':
            case 'm':
                return NoMatch;  // a new moveto group begins
            default:
                break;
        }
        mError += "Unsupported command in path @" +
                  tqStringUtils::fromInt64(static_cast<int64>(pos - mBegin), 1) + " : " +
                  std::string(pos, mEnd);
        return Invalid;
    }

    Match consumeMoveToGroup(const char*& pos, bool required) {
        if (pos == mEnd) {
            return NoMatch;
        }
        const char* start = pos;
        const Match move = consumeCommandWithGroups(pos, "Mm");
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

    Match consumeSvgPath(const char*& pos) {
        skipSpace(pos);
        Match group = consumeMoveToGroup(pos, true);
        while (group != NoMatch) {
            if (group == Invalid) {
                return Invalid;
            }
            skipSpace(pos);
            const char* before = pos;
            group = consumeMoveToGroup(pos, false);
            if (group == Matched && pos == before) {
                break;  // nothing consumed: stop rather than loop
            }
        }
        skipSpace(pos);
        return Matched;
    }

    // ---- the standard grammar ----------------------------------------------------------------

    // comma-wsp: white space with at most one comma; true when it held a comma.
    bool skipCommaSpace(const char*& pos) const {
        skipSpace(pos);
        if (pos == mEnd || *pos != ',') {
            return false;
        }
        ++pos;
        skipSpace(pos);
        return true;
    }

    bool startsNumber(const char* pos) const {
        return pos != mEnd && (isDigit(*pos) || *pos == '.' || *pos == '-' || *pos == '+');
    }

    // One group of `count` values at `pos`; arc flags are single characters that need no
    // separator after them.
    bool readStandardGroup(const char*& pos, bool arc, int count, float* values) const {
        for (int i = 0; i < count; ++i) {
            if (i > 0) {
                skipCommaSpace(pos);
            }
            const bool flag =
                arc && (i == int(Path::ArcLargeArcFlag) || i == int(Path::ArcSweepFlag));
            if ((flag ? consumeFlag(pos, values[i]) : consumeNumber(pos, values[i])) != Matched) {
                return false;
            }
        }
        return true;
    }

    bool failStandard(std::string message) {
        mError = std::move(message);
        return false;
    }

    // A command's groups follow one another, separated by comma-wsp; the first group that is
    // incomplete ends the path, keeping every group before it.
    bool scanStandard(const char* pos) {
        skipSpace(pos);
        if (pos == mEnd) {
            return true;
        }
        if (*pos != 'M' && *pos != 'm') {
            return failStandard("Expected MoveTo sequence at position " + positionOf(pos));
        }
        while (true) {
            skipSpace(pos);
            if (pos == mEnd) {
                return true;
            }
            const char letter = *pos;
            if (letter == 'Z' || letter == 'z') {
                ++pos;
                mSink.begin(letter);
                mSink.end();
                continue;
            }
            const int count = kPathLetters.groupSizeOf(letter, true);
            if (count == 0) {
                return failStandard("Unsupported command in path @" + positionOf(pos) + " : " +
                                    std::string(pos, mEnd));
            }
            ++pos;
            skipSpace(pos);
            const bool arc = letter == 'A' || letter == 'a';
            mSink.begin(letter);
            bool any = false;
            while (true) {
                float values[7];
                const char* groupStart = pos;
                if (!readStandardGroup(pos, arc, count, values)) {
                    mSink.end();
                    if (arc && !any) {
                        return failStandard(
                            "Expected instructions following elliptical-arc at position " +
                            positionOf(groupStart));
                    }
                    return failStandard("Unmatched coordinate sequence after " +
                                        std::string(1, letter) + " at position " + positionOf(pos));
                }
                mSink.group(values, count);
                any = true;
                // A comma promises another group; white space alone may end the command.
                if (!skipCommaSpace(pos) && !startsNumber(pos)) {
                    break;
                }
            }
            mSink.end();
        }
    }

    const char* mBegin;
    const char* mEnd;
    Sink& mSink;
    std::string mError;
};

}  // namespace tq::svg::detail
