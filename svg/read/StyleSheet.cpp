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

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

// The length of the name at the front of `text`.
std::size_t nameLength(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && isNameChar(text[i])) {
        ++i;
    }
    return i;
}

// Calls `visit` with each name of a class attribute's list.
template <typename Visit>
void forEachClass(std::string_view classes, Visit&& visit) {
    std::size_t i = 0;
    while (i < classes.size()) {
        while (i < classes.size() && isSpace(classes[i])) {
            ++i;
        }
        std::size_t end = i;
        while (end < classes.size() && !isSpace(classes[end])) {
            ++end;
        }
        if (end > i && !visit(classes.substr(i, end - i))) {
            return;
        }
        i = end;
    }
}

bool hasClass(std::string_view classes, std::string_view name) {
    bool found = false;
    forEachClass(classes, [&](std::string_view c) {
        found = c == name;
        return !found;
    });
    return found;
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

namespace {

// Whether a "@media" query list applies to a picture on a screen: a query of "all" or "screen"
// without conditions.
bool mediaApplies(std::string_view queries) {
    while (!queries.empty()) {
        const std::size_t comma = queries.find(',');
        std::string_view query = TrimSpace(queries.substr(0, comma));
        if (query.substr(0, 5) == "only ") {
            query = TrimSpace(query.substr(5));
        }
        if (query.empty() || EqualsLowerCase(query, "all") || EqualsLowerCase(query, "screen")) {
            return true;
        }
        queries = comma == std::string_view::npos ? std::string_view() : queries.substr(comma + 1);
    }
    return false;
}

// At-rules that define nothing a static picture draws: left out without a word.
bool isSilentAtRule(std::string_view name) {
    for (const std::string_view silent : {"font-face", "keyframes", "-webkit-keyframes", "page",
                                          "counter-style", "property", "font-feature-values"}) {
        if (EqualsLowerCase(name, silent)) {
            return true;
        }
    }
    return false;
}

bool attributeMatches(std::string_view value, char operation, std::string_view wanted) {
    switch (operation) {
        case 0:
            return true;
        case '=':
            return value == wanted;
        case '~':
            return !wanted.empty() && hasClass(value, wanted);
        case '|':
            return value == wanted || (value.substr(0, wanted.size()) == wanted &&
                                       value.size() > wanted.size() && value[wanted.size()] == '-');
        case '^':
            return !wanted.empty() && value.substr(0, wanted.size()) == wanted;
        case '$':
            return !wanted.empty() && value.size() >= wanted.size() &&
                   value.substr(value.size() - wanted.size()) == wanted;
        default:  // '*'
            return !wanted.empty() && value.find(wanted) != std::string_view::npos;
    }
}

}  // namespace

// One compound: a type or "*", then classes, ids, attribute tests and ":first-child".
bool StyleSheet::parseCompound(std::string_view text, Compound& compound, std::uint32_t& ids,
                               std::uint32_t& classes, std::uint32_t& types) const {
    std::size_t i = 0;
    if (!text.empty() && text[0] == '*') {
        i = 1;
    } else {
        i = nameLength(text);
        compound.tag = std::string(text.substr(0, i));
        types += i > 0 ? 1 : 0;
    }
    while (i < text.size()) {
        const char kind = text[i++];
        if (kind == '[') {
            const std::size_t close = text.find(']', i);
            if (close == std::string_view::npos) {
                return false;
            }
            std::string_view inside = TrimSpace(text.substr(i, close - i));
            i = close + 1;
            AttributeTest test;
            const std::size_t length = nameLength(inside);
            test.name = std::string(inside.substr(0, length));
            inside = TrimSpace(inside.substr(length));
            if (test.name.empty()) {
                return false;
            }
            if (!inside.empty()) {
                const std::size_t equals = inside.find('=');
                if (equals > 1) {
                    return false;
                }
                test.operation = equals == 0 ? '=' : inside[0];
                if (std::string_view("=~|^$*").find(test.operation) == std::string_view::npos) {
                    return false;
                }
                std::string_view value = TrimSpace(inside.substr(equals + 1));
                if (value.size() >= 2 && (value[0] == '"' || value[0] == '\'') &&
                    value.back() == value[0]) {
                    value = value.substr(1, value.size() - 2);
                } else if (value.empty() || nameLength(value) != value.size()) {
                    return false;
                }
                test.value = std::string(value);
            }
            compound.attributes.push_back(std::move(test));
            ++classes;
            continue;
        }
        if (kind == ':') {
            if (text.substr(i, 11) != "first-child" || nameLength(text.substr(i)) != 11) {
                return false;  // other pseudo-classes, pseudo-elements
            }
            i += 11;
            compound.firstChild = true;
            ++classes;
            continue;
        }
        const std::size_t length = nameLength(text.substr(i));
        if (length == 0 || (kind != '.' && kind != '#')) {
            return false;
        }
        const std::string name(text.substr(i, length));
        i += length;
        if (kind == '.') {
            compound.classes.push_back(name);
            ++classes;
        } else if (compound.id.empty() || compound.id == name) {
            compound.id = name;
            ++ids;
        } else {
            return false;  // two different ids never match
        }
    }
    return true;
}

// A complex selector: compounds joined by white space (descendant), ">" (child), "+" (the
// sibling just before) or "~" (any sibling before).
bool StyleSheet::parseSelector(std::string_view text, Rule& rule) const {
    std::uint32_t ids = 0;
    std::uint32_t classes = 0;
    std::uint32_t types = 0;
    char combinator = ' ';
    text = TrimSpace(text);
    while (!text.empty()) {
        // A compound runs to white space or a combinator outside an attribute selector's brackets.
        std::size_t end = 0;
        for (bool bracket = false; end < text.size(); ++end) {
            const char c = text[end];
            bracket = c == '[' ? true : c == ']' ? false : bracket;
            if (!bracket && (isSpace(c) || c == '>' || c == '+' || c == '~')) {
                break;
            }
        }
        Compound compound;
        if (end == 0 || !parseCompound(text.substr(0, end), compound, ids, classes, types)) {
            return false;
        }
        compound.combinator = combinator;
        rule.compounds.push_back(std::move(compound));
        text = TrimSpace(text.substr(end));
        combinator = ' ';
        if (!text.empty() && (text[0] == '>' || text[0] == '+' || text[0] == '~')) {
            combinator = text[0];
            text = TrimSpace(text.substr(1));
            if (text.empty()) {
                return false;
            }
        }
    }
    if (rule.compounds.empty() || rule.compounds.size() > 32) {
        return false;
    }
    // The subject first; each compound's combinator says how it joins the compound on its left.
    std::reverse(rule.compounds.begin(), rule.compounds.end());
    rule.specificity =
        std::min(ids, 255u) << 16 | std::min(classes, 255u) << 8 | std::min(types, 255u);
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
        if (parseSelector(text, rule)) {
            rule.declarations = first;
            rule.count = count;
            mRules.push_back(std::move(rule));
        } else if (!TrimSpace(text).empty()) {
            mUnsupported.emplace_back(TrimSpace(text));
        }
        start = end + 1;
    }
}

void StyleSheet::parse(std::string_view sheet) {
    const std::string text = withoutComments(sheet);
    parseBlocks(text, 0);
    indexRules();
}

// Rules by their subject's id, else its first class, so that an element is tried only against
// rules that can match it; the others are tried on every element.
void StyleSheet::indexRules() {
    mById.clear();
    mByClass.clear();
    mOthers.clear();
    for (std::uint32_t i = 0; i < mRules.size(); ++i) {
        const Compound& subject = mRules[i].compounds[0];
        if (!subject.id.empty()) {
            mById.emplace_back(subject.id, i);
        } else if (!subject.classes.empty()) {
            mByClass.emplace_back(subject.classes[0], i);
        } else {
            mOthers.push_back(i);
        }
    }
    std::sort(mById.begin(), mById.end());
    std::sort(mByClass.begin(), mByClass.end());
}

// Rules and at-rules in order; "@media" blocks that apply are read as rules of their own, to a
// bounded depth.
void StyleSheet::parseBlocks(std::string_view rest, int depth) {
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
        // Searched before the brace only: a search of the whole rest per rule is quadratic.
        const std::size_t semicolon = rest[0] == '@' ? rest.substr(0, open).find(';') : open;
        if (semicolon < open) {
            rest.remove_prefix(semicolon + 1);  // @import, @charset: nothing is fetched
            continue;
        }
        if (open == std::string_view::npos) {
            return;
        }
        const std::size_t close = closingBrace(rest, open + 1);
        const std::string_view block = rest.substr(
            open + 1, (close == std::string_view::npos ? rest.size() : close) - open - 1);
        const std::string_view prelude = TrimSpace(rest.substr(0, open));
        if (prelude.substr(0, 1) == "@") {
            const std::string_view name = prelude.substr(1, nameLength(prelude.substr(1)));
            if (EqualsLowerCase(name, "media") && depth < 4 &&
                mediaApplies(prelude.substr(1 + name.size()))) {
                parseBlocks(block, depth + 1);
            } else if (!isSilentAtRule(name)) {
                mUnsupported.emplace_back(prelude);
            }
        } else {
            addRules(prelude, block);
        }
        if (close == std::string_view::npos) {
            return;
        }
        rest.remove_prefix(close + 1);
    }
}

bool StyleSheet::compoundMatches(const Compound& c, const CssElement& e,
                                 const std::vector<CssAttribute>& attributes) const {
    if (++mWork > kMatchBudget || (!c.tag.empty() && c.tag != e.tag) ||
        (!c.id.empty() && c.id != e.id) || (c.firstChild && !e.firstChild)) {
        return false;
    }
    for (const std::string& name : c.classes) {
        if (!hasClass(e.classes, name)) {
            return false;
        }
    }
    const auto begin = attributes.begin() + e.attributes;
    const auto end = begin + (e.attributesKnown ? e.attributeCount : 0);
    return std::all_of(c.attributes.begin(), c.attributes.end(), [&](const AttributeTest& test) {
        return std::any_of(begin, end, [&](const CssAttribute& a) {
            return a.name == test.name && attributeMatches(a.value, test.operation, test.value);
        });
    });
}

// Whether the compounds after `compound` (leftwards in the selector) match around `element`, at
// which `compound` matched. Tries every candidate of a descendant or later-sibling combinator in
// turn; the budget bounds the backtracking.
bool StyleSheet::matchesFrom(const Rule& rule, std::size_t compound,
                             const std::vector<CssElement>& elements,
                             const std::vector<CssAttribute>& attributes,
                             std::uint32_t element) const {
    if (compound + 1 == rule.compounds.size()) {
        return true;
    }
    const Compound& next = rule.compounds[compound + 1];
    const char combinator = rule.compounds[compound].combinator;
    const bool sibling = combinator == '+' || combinator == '~';
    const bool once = combinator == '>' || combinator == '+';
    for (std::uint32_t e = sibling ? elements[element].previous : elements[element].parent;
         e != CssElement::kNone; e = sibling ? elements[e].previous : elements[e].parent) {
        if (compoundMatches(next, elements[e], attributes) &&
            matchesFrom(rule, compound + 1, elements, attributes, e)) {
            return true;
        }
        if (once || mWork > kMatchBudget) {
            break;
        }
    }
    return false;
}

void StyleSheet::match(const std::vector<CssElement>& elements,
                       const std::vector<CssAttribute>& attributes, std::uint32_t element,
                       std::vector<const CssDeclaration*>& out) const {
    out.clear();
    auto& matching = mMatching;
    matching.clear();
    const CssElement& e = elements[element];
    const auto tryRule = [&](std::uint32_t i) {
        const Rule& rule = mRules[i];
        if (!exhausted() && compoundMatches(rule.compounds[0], e, attributes) &&
            matchesFrom(rule, 0, elements, attributes, element)) {
            matching.emplace_back(std::uint64_t(rule.specificity) << 32 | i, &rule);
        }
    };
    const auto tryKeyed = [&](const std::vector<std::pair<std::string, std::uint32_t>>& index,
                              std::string_view key) {
        auto it =
            std::lower_bound(index.begin(), index.end(), key,
                             [](const auto& entry, std::string_view k) { return entry.first < k; });
        for (; it != index.end() && it->first == key; ++it) {
            tryRule(it->second);
        }
    };
    if (!e.id.empty()) {
        tryKeyed(mById, e.id);
    }
    forEachClass(e.classes, [&](std::string_view name) {
        tryKeyed(mByClass, name);
        return true;
    });
    std::for_each(mOthers.begin(), mOthers.end(), tryRule);
    // In cascade order; a class named twice on the element finds its rules twice.
    std::sort(matching.begin(), matching.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    matching.erase(std::unique(matching.begin(), matching.end()), matching.end());
    if (exhausted()) {
        return;  // an element gets all of its rules or none
    }
    std::sort(matching.begin(), matching.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& entry : matching) {
        for (std::size_t d = 0; d < entry.second->count; ++d) {
            out.push_back(&mDeclarations[entry.second->declarations + d]);
        }
    }
}

bool StyleSheet::mayMatchWithoutClassOrId(std::string_view tag) const {
    return std::any_of(mRules.begin(), mRules.end(), [&](const Rule& rule) {
        const Compound& subject = rule.compounds[0];
        return (subject.tag.empty() || subject.tag == tag) && subject.id.empty() &&
               subject.classes.empty();
    });
}

}  // namespace tq::svg::detail
