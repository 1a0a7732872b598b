// The attribute value parsers that the loader builds on, one per input.
//
// Input bytes:
//   0     the parser: 0 transform list, 1 colour, 2 number list, 3 single number
//   1     for the number list, its bounds: low nibble the least count, high nibble the most
//   rest  the attribute value (from byte 1 on for the other parsers)
//
// Malformed UTF-8 raises the utf8 exceptions in number lists (and so in a transform's arguments),
// by design; exactly those are caught. Checked: a refusal sends a message and leaves the output
// alone; a transform list is the product of its commands and keeps the affine row; "#rrggbb" and
// its kin give their hexadecimal bytes; a number list gives as many numbers as parts, each read as
// one number is; one number reads as strtod reads it in the C locale, narrowed to float.
#include <utf8.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "svg/model/detail/SvgNumber.h"
#include "svg/read/detail/AttributeParsers.h"

namespace {

constexpr const char* kTarget = "fuzz_attributes";

using tq::fuzz::fail;

struct Collected {
    std::vector<std::string> lines;
    tq::svg::Loader::MessageCallback callback() {
        return [this](const std::string& line) { lines.push_back(line); };
    }
};

bool sameFloat(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

bool sameMatrix(const Wm4::Matrix3f& a, const Wm4::Matrix3f& b) {
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            if (!sameFloat(a(r, c), b(r, c))) {
                return false;
            }
        }
    }
    return true;
}

void transformList(const std::string& text) {
    const Wm4::Matrix3f marker(2, 3, 5, 7, 11, 13, 17, 19, 23);
    Wm4::Matrix3f whole = marker;
    Collected messages;
    bool ok = false;
    try {
        ok = tq::svg::ParseTransformList(text, whole, messages.callback());
    } catch (const utf8::exception&) {
        return;  // from the argument lists, which are number lists
    }
    if (!ok) {
        if (messages.lines.empty() || !sameMatrix(whole, marker)) {
            fail(kTarget, "a refused transform list without a message or with its output changed",
                 text);
        }
        return;
    }
    if (!tq::fuzz::allFinite(whole)) {
        return;  // inf and NaN arguments propagate into the product as they will
    }
    if (whole(2, 0) != 0.0f || whole(2, 1) != 0.0f || whole(2, 2) != 1.0f) {
        fail(kTarget, "a transform list lost its affine row", text);
    }
    // Split before the last command: both parts parse, and the whole is the product of the
    // first part's matrix and the last command's, computed in the same order.
    const std::size_t lastClose = text.rfind(')');
    const std::size_t split = lastClose == 0 ? std::string::npos : text.rfind(')', lastClose - 1);
    if (lastClose == std::string::npos || split == std::string::npos) {
        return;
    }
    Wm4::Matrix3f head, last;
    if (!tq::svg::ParseTransformList(text.substr(0, split + 1), head, nullptr) ||
        !tq::svg::ParseTransformList(text.substr(split + 1), last, nullptr)) {
        fail(kTarget, "a part of an accepted transform list was refused", text);
    }
    if (head * last != whole) {
        fail(kTarget, "a transform list is not the product of its commands", text);
    }
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

void colour(const std::string& text) {
    Wm4::Vector4<unsigned char> rgba(1, 2, 3, 4);
    const bool ok = tq::svg::ParseSvgColor(text, rgba);
    if (!ok) {
        return;
    }
    const std::size_t size = text.size();
    if (size == 0 || text[0] != '#') {
        return;
    }
    bool allHex = true;
    for (std::size_t i = 1; i < size; ++i) {
        allHex = allHex && hexDigit(text[i]) >= 0;
    }
    if (!allHex) {
        return;
    }
    // #rgb and #rgba repeat each digit; #rrggbb and #rrggbbaa take pairs; alpha defaults to opaque.
    const bool pairs = size == 7 || size == 9;
    const int channels = (size == 5 || size == 9) ? 4 : 3;
    for (int i = 0; i < 4; ++i) {
        int expected = 255;
        if (i < channels) {
            const int hi = hexDigit(text[pairs ? 1 + 2 * i : 1 + i]);
            const int lo = hexDigit(text[pairs ? 2 + 2 * i : 1 + i]);
            expected = hi * 16 + lo;
        }
        if (rgba[i] != expected) {
            fail(kTarget, "a hexadecimal colour gave other bytes", text);
        }
    }
}

bool isSeparator(char c) {
    return c == ' ' || c == ',' || c == '\t' || c == '\n' || c == '\r';
}

void numberList(const std::string& text, std::size_t minCount, std::size_t maxCount) {
    std::vector<float> numbers = {42.0f};
    Collected messages;
    bool ok = false;
    try {
        ok = tq::svg::ParseNumberList("n", text, minCount, maxCount, numbers, messages.callback());
    } catch (const utf8::exception&) {
        return;
    }
    if (!ok) {
        if (messages.lines.empty()) {
            fail(kTarget, "a refused number list without a message", text);
        }
        return;
    }
    std::vector<std::string> parts(1);
    for (char c : text) {
        if (isSeparator(c)) {
            if (!parts.back().empty()) {
                parts.emplace_back();
            }
        } else {
            parts.back() += c;
        }
    }
    if (parts.back().empty()) {
        parts.pop_back();
    }
    if (numbers.size() != parts.size() || numbers.size() < minCount || numbers.size() > maxCount) {
        fail(kTarget, "a number list gave another count than its parts", text);
    }
    for (std::size_t i = 0; i < parts.size(); ++i) {
        float one = 0.0f;
        if (!tq::svg::ParseSvgNumber(parts[i], one) || !sameFloat(one, numbers[i])) {
            fail(kTarget, "a number of a list reads otherwise alone", text);
        }
    }
}

void number(const std::string& text) {
    float value = 7.0f;
    const bool ok = tq::svg::ParseSvgNumber(text, value);
    if (text.find('\0') != std::string::npos) {
        if (ok) {
            fail(kTarget, "a number with a NUL byte in it was accepted", text);
        }
        return;
    }
    char* end = nullptr;
    const double reference = std::strtod(text.c_str(), &end);
    const bool whole = !text.empty() && end == text.c_str() + text.size();
    if (ok != whole) {
        fail(kTarget,
             ok ? "accepted a number strtod stops inside" : "refused a number strtod reads", text);
    }
    if (ok ? !sameFloat(value, static_cast<float>(reference)) : value != 7.0f) {
        fail(kTarget,
             ok ? "a number differs from strtod's, narrowed" : "a refusal changed the output",
             text);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string rest = tq::fuzz::documentBytes(data, size);
    switch (data[0] % 4) {
        case 0:
            transformList(rest);
            break;
        case 1:
            colour(rest);
            break;
        case 2:
            if (!rest.empty()) {
                const auto bounds = static_cast<unsigned char>(rest[0]);
                numberList(rest.substr(1), bounds & 15u, bounds >> 4);
            }
            break;
        default:
            number(rest);
            break;
    }
    return 0;
}
