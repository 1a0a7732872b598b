// A deterministic generator of path-heavy SVG documents for the benchmarks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tq::bench {

// Writes about `targetBytes` of SVG that the library loads: groups with transforms and opacity
// holding paths of about 40 commands each (lines, cubics, smooth cubics, arcs, absolute and
// relative, one to three decimals, comma and compact separators), some rects, circles and
// texts, and a style sheet. The same seed gives the same bytes.
std::string GeneratePathHeavySvg(std::size_t targetBytes, std::uint32_t seed = 1);

// `paths` filled shapes as icons draw them, in groups of 20 under a transform: a closed outline
// of cubics, smooth cubics, arcs and lines around a centre, with a hole (two arcs wound the
// other way) in every second one. Outlines are star-shaped around their centre and their pieces
// bulge little, so they seldom cross themselves. The same seed gives the same bytes.
std::string GenerateShapeSvg(std::size_t paths, std::uint32_t seed = 1);

// The concatenated "d" values of a document made by GeneratePathHeavySvg, for the tokenizer
// benchmark, and how many numbers they hold.
std::string ExtractPathData(const std::string& svg, std::size_t* numberCount);

}  // namespace tq::bench
