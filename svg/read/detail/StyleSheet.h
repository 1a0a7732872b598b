// Simple CSS style sheets for the standard reading profile (internal).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tq::svg::detail {

// Calls `visit(name, value, important)` for each "name: value" of a declaration block, in
// order; names in lower case, values trimmed, "!important" taken off. Malformed declarations are
// passed over.
void ForEachDeclaration(std::string_view block,
                        const std::function<void(std::string_view name, std::string_view value,
                                                 bool important)>& visit);

struct CssDeclaration {
    std::string name;
    std::string value;
    bool important = false;
};

// The rules of style sheets whose selectors are element names, ".class", "#id", "*" and their
// compounds ("path.a#b"), in comma lists. Rules with any other selector (descendants, children,
// attributes, pseudo-classes) and at-rules (@media, @import, ...) are left out: they are
// counted, and the first such selector is kept for a warning. Never fetches anything.
class StyleSheet {
public:
    void parse(std::string_view text);
    bool empty() const { return mRules.empty(); }

    // The declarations of the rules that match an element, in cascade order: by specificity,
    // then by the order of the sheet. `classes` is the class attribute, a space-separated list.
    void match(std::string_view tag, std::string_view classes, std::string_view id,
               std::vector<const CssDeclaration*>& out) const;

    // Whether some rule applies to every element named `tag`, whatever its class and id.
    bool matchesEvery(std::string_view tag) const;

    const std::string& firstUnsupported() const { return mFirstUnsupported; }

private:
    struct Selector {
        std::string tag;  // empty or "*" for any element
        std::vector<std::string> classes;
        std::string id;
        std::uint32_t specificity = 0;
    };
    struct Rule {
        Selector selector;
        std::size_t declarations = 0;  // first of them in mDeclarations
        std::size_t count = 0;
    };

    bool parseSelector(std::string_view text, Selector& selector) const;
    void addRules(std::string_view selectors, std::string_view block);

    std::vector<Rule> mRules;
    std::vector<CssDeclaration> mDeclarations;
    std::string mFirstUnsupported;
    // Working space of match: the matching rules by specificity and position.
    mutable std::vector<std::pair<std::uint64_t, const Rule*>> mMatching;
};

}  // namespace tq::svg::detail
