// Segmented geometry as JSON, for `tqsvg mesh`.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "svg/tqSvg.h"

// Appends one JSON document: {"error": bool, "primitives": [...]}, each primitive with its fill
// and stroke colours (RGBA in [0, 1], opacity applied), stroke width, outline points (flat x, y
// pairs), segments (index pairs), fill triangle points and triangles (index triples), and stroke
// triangle points and triangles. Non-finite numbers become null, as JSON has no spelling for
// them.
void AppendMeshJson(std::string& out,
                    const std::list<std::shared_ptr<tq::svg::SegmentedPrimitive>>& primitives,
                    bool error);
