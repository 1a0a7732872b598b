#include "svg/read/detail/StyleSheet.h"

#include <algorithm>

#include "svg/read/detail/StandardValues.h"

namespace tq::svg::detail {

namespace {

bool isNameChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

// The text without its comments; an unterminated comment runs to the end.
std::string withoutComments(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (text.compare(i, 2, "/*") == 0) {
            const std::size_t end = text.find("*/", i + 2);
            if (end == std::string_view::npos) {
                break;
            }
            out += ' ';
            i = end + 2;
        } else {
            out += text[i++];
        }
    }
    return out;
}

// The position of the brace that closes the block opened just before `from`, or npos. Nesting
// is counted, not recursed, so a hostile sheet cannot exhaust the stack.
std::size_t closingBrace(std::string_view text, std::size_t from) {
    std::size_t depth = 1;
    for (std::size_t i = from; i < text.size(); ++i) {
        if (text[i] == '{') {
            ++depth;
        } else if (text[i] == '}' && --depth == 0) {
            return i;
        }
    }
    return std::string_view::npos;
}

bool hasClass(std::string_view classes, std::string_view name) {
    std::size_t i = 0;
    while (i < classes.size()) {
        while (i < classes.size() && (classes[i] == ' ' || classes[i] == '\t' ||
                                      classes[i] == '\n' || classes[i] == '\r')) {
            ++i;
        }
        std::size_t end = i;
        while (end < classes.size() && classes[end] != ' ' && classes[end] != '\t' &&
               classes[end] != '\n' && classes[end] != '\r') {
            ++end;
        }
        if (end > i && classes.substr(i, end - i) == name) {
            return true;
        }
        i = end;
    }
    return false;
}

}  // namespace

void ForEachDeclaration(
    std::string_view block,
    const std::function<void(std::string_view, std::string_view, bool)>& visit) {
    std::size_t start = 0;
    while (start < block.size()) {
        // A declaration ends at a semicolon outside parentheses and quotes (url("a;b")).
        std::size_t end = start;
        int parentheses = 0;
        char quote = 0;
        for (; end < block.size(); ++end) {
            const char c = block[end];
            if (quote != 0) {
                quote = c == quote ? 0 : quote;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '(') {
                ++parentheses;
            } else if (c == ')' && parentheses > 0) {
                --parentheses;
            } else if (c == ';' && parentheses == 0) {
                break;
            }
        }
        const std::string_view declaration = block.substr(start, end - start);
        start = end + 1;
        const std::size_t colon = declaration.find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        const std::string_view name = TrimSpace(declaration.substr(0, colon));
        std::string_view value = TrimSpace(declaration.substr(colon + 1));
        bool important = false;
        const std::size_t bang = value.rfind('!');
        if (bang != std::string_view::npos &&
            EqualsLowerCase(TrimSpace(value.substr(bang + 1)), "important")) {
            important = true;
            value = TrimSpace(value.substr(0, bang));
        }
        if (name.empty() || name.size() > 64 ||
            !std::all_of(name.begin(), name.end(), isNameChar)) {
            continue;
        }
        char lowered[64];
        for (std::size_t i = 0; i < name.size(); ++i) {
            const char c = name[i];
            lowered[i] = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
        visit(std::string_view(lowered, name.size()), value, important);
    }
}

bool StyleSheet::parseSelector(std::string_view text, Selector& selector) const {
    text = TrimSpace(text);
    if (text.empty()) {
        return false;
    }
    std::size_t i = 0;
    if (text[0] == '*') {
        i = 1;
    } else {
        while (i < text.size() && isNameChar(text[i])) {
            ++i;
        }
        selector.tag = std::string(text.substr(0, i));
    }
    std::uint32_t ids = 0;
    std::uint32_t classes = 0;
    while (i < text.size()) {
        const char kind = text[i++];
        const std::size_t begin = i;
        while (i < text.size() && isNameChar(text[i])) {
            ++i;
        }
        if (i == begin || (kind != '.' && kind != '#')) {
            return false;
        }
        const std::string name(text.substr(begin, i - begin));
        if (kind == '.') {
            selector.classes.push_back(name);
            ++classes;
        } else if (selector.id.empty() || selector.id == name) {
            selector.id = name;
            ++ids;
        } else {
            return false;  // two different ids never match
        }
    }
    const std::uint32_t types = selector.tag.empty() ? 0 : 1;
    selector.specificity = std::min(ids, 255u) << 16 | std::min(classes, 255u) << 8 | types;
    return true;
}

void StyleSheet::addRules(std::string_view selectors, std::string_view block) {
    const std::size_t first = mDeclarations.size();
    ForEachDeclaration(block, [&](std::string_view name, std::string_view value, bool important) {
        mDeclarations.push_back({std::string(name), std::string(value), important});
    });
    const std::size_t count = mDeclarations.size() - first;
    std::size_t start = 0;
    while (start <= selectors.size()) {
        std::size_t end = selectors.find(',', start);
        if (end == std::string_view::npos) {
            end = selectors.size();
        }
        Rule rule;
        const std::string_view text = selectors.substr(start, end - start);
        if (parseSelector(text, rule.selector)) {
            rule.declarations = first;
            rule.count = count;
            mRules.push_back(std::move(rule));
        } else if (mFirstUnsupported.empty()) {
            mFirstUnsupported = std::string(TrimSpace(text));
        }
        start = end + 1;
    }
}

void StyleSheet::parse(std::string_view sheet) {
    const std::string text = withoutComments(sheet);
    std::string_view rest(text);
    while (true) {
        rest = TrimSpace(rest);
        // The markers that hide a sheet from older XML readers are no part of it.
        for (const std::string_view marker : {"<!--", "-->"}) {
            if (rest.substr(0, marker.size()) == marker) {
                rest.remove_prefix(marker.size());
                rest = TrimSpace(rest);
            }
        }
        if (rest.empty()) {
            return;
        }
        const std::size_t open = rest.find('{');
        const std::size_t semicolon = rest.find(';');
        if (rest[0] == '@' && semicolon < open) {
            rest.remove_prefix(semicolon + 1);  // @import, @charset: nothing is fetched
            continue;
        }
        if (open == std::string_view::npos) {
            return;
        }
        const std::size_t close = closingBrace(rest, open + 1);
        const std::string_view block = rest.substr(
            open + 1, (close == std::string_view::npos ? rest.size() : close) - open - 1);
        if (rest[0] == '@') {
            if (mFirstUnsupported.empty()) {
                mFirstUnsupported = std::string(TrimSpace(rest.substr(0, open)));
            }
        } else {
            addRules(rest.substr(0, open), block);
        }
        if (close == std::string_view::npos) {
            return;
        }
        rest.remove_prefix(close + 1);
    }
}

void StyleSheet::match(std::string_view tag, std::string_view classes, std::string_view id,
                       std::vector<const CssDeclaration*>& out) const {
    out.clear();
    auto& matching = mMatching;
    matching.clear();
    for (std::size_t i = 0; i < mRules.size(); ++i) {
        const Selector& s = mRules[i].selector;
        const bool matches =
            (s.tag.empty() || s.tag == tag) && (s.id.empty() || s.id == id) &&
            std::all_of(s.classes.begin(), s.classes.end(),
                        [&](const std::string& name) { return hasClass(classes, name); });
        if (matches) {
            matching.emplace_back(std::uint64_t(s.specificity) << 32 | i, &mRules[i]);
        }
    }
    std::sort(matching.begin(), matching.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& entry : matching) {
        for (std::size_t d = 0; d < entry.second->count; ++d) {
            out.push_back(&mDeclarations[entry.second->declarations + d]);
        }
    }
}

bool StyleSheet::matchesEvery(std::string_view tag) const {
    return std::any_of(mRules.begin(), mRules.end(), [&](const Rule& rule) {
        const Selector& s = rule.selector;
        return (s.tag.empty() || s.tag == tag) && s.id.empty() && s.classes.empty();
    });
}

}  // namespace tq::svg::detail
