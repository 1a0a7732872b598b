#include "svg/model/UnitValue.h"

#include <cstdlib>
#include <string_view>

#include <tqSystem/tqStringUtils.h>

namespace tq::svg {

namespace {

constexpr std::string_view kSuffixes[] = {"", "%", "em", "px", "pt", "cm", "mm", "in", ""};

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

void stripTrailingSpace(std::string& text) {
    while (!text.empty() && isSpace(text.back())) {
        text.pop_back();
    }
}

}  // namespace

bool UnitValue::parseVal(const std::string& text, UnitValue& out) {
    std::string number = text;
    stripTrailingSpace(number);
    Unit unit = Unit::None;
    // Fixed order: the first suffix that matches wins.
    for (int u = static_cast<int>(Unit::Percent); u <= static_cast<int>(Unit::In); ++u) {
        const std::string_view suffix = kSuffixes[u];
        if (number.size() >= suffix.size() &&
            std::string_view(number).substr(number.size() - suffix.size()) == suffix) {
            unit = static_cast<Unit>(u);
            number.resize(number.size() - suffix.size());
            break;
        }
    }
    stripTrailingSpace(number);
    char* end = nullptr;
    const double value = strtod_l(number.c_str(), &end, tqStringUtils::msCLocale);
    if (end != number.c_str() + number.size()) {
        return false;
    }
    out.value = static_cast<float>(value);
    out.unit = unit;
    return true;
}

bool UnitToString(Unit unit, std::string& out, bool append) {
    if (!append) {
        out.clear();
    }
    const auto index = static_cast<std::size_t>(unit);
    if (index >= std::size(kSuffixes)) {
        return false;
    }
    out += kSuffixes[index];
    return true;
}

}  // namespace tq::svg
