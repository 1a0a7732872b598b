// CSS style sheets for the standard reading profile (internal).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
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

// An attribute as an element carries it, for attribute selectors.
struct CssAttribute {
    std::string_view name;
    std::string_view value;
};

// One element as selectors see it. Elements name their parent and the sibling before them by
// their index in the same array, where both come first; attributes are a range of an attribute
// array. An element whose attributes were not kept (`attributesKnown` false) matches no attribute
// selector.
struct CssElement {
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

    std::string_view tag;
    std::string_view id;
    std::string_view classes;  // the class attribute, a list separated by white space
    std::uint32_t parent = kNone;
    std::uint32_t previous = kNone;  // the sibling before it
    std::uint32_t attributes = 0;
    std::uint32_t attributeCount = 0;
    bool firstChild = false;
    bool attributesKnown = true;
};

// The rules of a style sheet whose selectors are built from type selectors, "*", ".class",
// "#id", attribute selectors ("[a]", "[a=v]", "[a~=v]", "[a|=v]", "[a^=v]", "[a$=v]",
// "[a*=v]") and ":first-child", joined by the descendant, child and sibling combinators (" ",
// ">", "+", "~"), in comma lists. Rules with any other selector (other pseudo-classes, pseudo-
// elements) are left out and named by unsupported(); "@media" blocks for the screen apply, other
// at-rules are left out (named too, unless they define nothing drawn, as "@font-face" and
// "@import" do). Never fetches anything.
//
// Matching backtracks, which a hostile sheet can make exponential in its compounds, and every
// rule is tried on every element: a budget of compound tests per sheet bounds the time. Past
// it no rule matches any more, and exhausted() says so.
class StyleSheet {
public:
    void parse(std::string_view text);
    bool empty() const { return mRules.empty(); }

    // The declarations of the rules that match `elements[element]`, in cascade order: by
    // specificity, then by the order of the sheet.
    void match(const std::vector<CssElement>& elements, const std::vector<CssAttribute>& attributes,
               std::uint32_t element, std::vector<const CssDeclaration*>& out) const;

    // Whether some rule may match an element named `tag` that has no class and no id.
    bool mayMatchWithoutClassOrId(std::string_view tag) const;

    // The selectors and at-rules that were left out, in the order of the sheet.
    const std::vector<std::string>& unsupported() const { return mUnsupported; }

    // Whether matching ran out of its budget, so that later elements were given no rule.
    bool exhausted() const { return mWork > kMatchBudget; }

private:
    struct AttributeTest {
        std::string name;
        char operation = 0;  // 0 present, or the character before "=" ('=' for equality)
        std::string value;
    };
    struct Compound {
        std::string tag;  // empty for any element
        std::string id;
        std::vector<std::string> classes;
        std::vector<AttributeTest> attributes;
        bool firstChild = false;
        // How it joins the compound on its left: ' ' descendant, '>' child, '+' the sibling just
        // before, '~' any sibling before.
        char combinator = ' ';
    };
    // Compounds from the right: the subject first.
    struct Rule {
        std::vector<Compound> compounds;
        std::uint32_t specificity = 0;
        std::size_t declarations = 0;  // first of them in mDeclarations
        std::size_t count = 0;
    };

    bool parseSelector(std::string_view text, Rule& rule) const;
    bool parseCompound(std::string_view text, Compound& compound, std::uint32_t& ids,
                       std::uint32_t& classes, std::uint32_t& types) const;
    void addRules(std::string_view selectors, std::string_view block);
    void parseBlocks(std::string_view text, int depth);
    void indexRules();
    bool compoundMatches(const Compound& compound, const CssElement& element,
                         const std::vector<CssAttribute>& attributes) const;
    bool matchesFrom(const Rule& rule, std::size_t compound,
                     const std::vector<CssElement>& elements,
                     const std::vector<CssAttribute>& attributes, std::uint32_t element) const;

    // Compound tests of one document: enough for every rule of a large sheet on every element of
    // a large document, about a second.
    static constexpr std::uint64_t kMatchBudget = 100'000'000;

    std::vector<Rule> mRules;
    std::vector<CssDeclaration> mDeclarations;
    std::vector<std::string> mUnsupported;
    std::vector<std::pair<std::string, std::uint32_t>> mById, mByClass;  // sorted
    std::vector<std::uint32_t> mOthers;
    // Working space of match and matches.
    mutable std::vector<std::pair<std::uint64_t, const Rule*>> mMatching;
    mutable std::uint64_t mWork = 0;
};

}  // namespace tq::svg::detail
