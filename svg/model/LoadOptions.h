// Options of a load.
#pragma once

#include <cstddef>

namespace tq::svg {

// How a document is read.
enum class LoadProfile {
    // The library's own subset of SVG with its deliberate restrictions: anything else fails the
    // load (or, with ignoreUnsupported, is skipped with a warning).
    Subset,
    // Static SVG 1.1 and SVG 2 as browsers draw it, normalised into the same tree: shapes the
    // tree has no item for become paths, style sheets and inherited values are resolved,
    // references are expanded. What is not drawn (text, images, filters, masks, clip paths,
    // markers, patterns, animation, scripts) is skipped or kept with one warning each, never a
    // refusal; gradients fall back to the average of their stop colours. Only malformed XML and
    // hostile input (a reference loop, an expansion out of proportion) fail the load.
    Standard,
};

struct LoadOptions {
    // False: an unsupported tag or attribute, or an invalid value, fails the load.
    // True: it is skipped and reported as a warning. The standard profile always warns.
    bool ignoreUnsupported = false;
    LoadProfile profile = LoadProfile::Subset;
    // The standard profile refuses a document of more elements than this, as a bound on the
    // memory and time a hostile file can take (about 500 bytes an item); 0 lifts it.
    std::size_t maxElements = 1000000;
};

}  // namespace tq::svg
