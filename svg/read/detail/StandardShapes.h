// Drawing commands and transforms for what the tree has no item of its own for (internal).
#pragma once

#include <list>
#include <string_view>
#include <vector>

#include <Wm4Foundation/Wm4Matrix3.h>

#include "svg/model/BoundingBox.h"
#include "svg/model/ItemInterface.h"
#include "svg/model/Path.h"

namespace tq::svg::detail {

// An ellipse as four quarter arcs, from its rightmost point, as SVG defines it; nothing for a
// radius that is not positive.
void AppendEllipse(std::list<Path::Command>& out, float cx, float cy, float rx, float ry);

// A rectangle with rounded corners, radii already resolved and clamped: lines and quarter arcs
// clockwise from the end of the top-left corner, as SVG defines it.
void AppendRoundedRect(std::list<Path::Command>& out, float x, float y, float width, float height,
                       float rx, float ry);

// The points of a polyline or polygon (x y pairs; an odd last number is dropped), closed for a
// polygon; nothing for fewer than one pair.
void AppendPolyline(std::list<Path::Command>& out, const std::vector<float>& coordinates,
                    bool closed);

// The transform that fits `viewBox` into the viewport at (x, y) of `width` by `height` under a
// preserveAspectRatio value ("xMidYMid meet" when empty or not understood).
Wm4::Matrix3f ViewBoxTransform(const BoundingBox& viewBox, float x, float y, float width,
                               float height, std::string_view preserveAspectRatio);

// A viewBox by SVG's number syntax: four numbers, the width and height not negative.
bool ParseViewBox(std::string_view text, BoundingBox& box);

// The length of a path in its own units: lines exactly, curves and arcs along 64 chords each,
// close enough to scale dashes by.
double PathLength(const std::list<Path::Command>& commands);

// A translation by (x, y).
Wm4::Matrix3f Translation(float x, float y);

// Sets the item's transform to its own followed by `m` (applied first to the content); an
// identity result is stored as no transform.
void AppendTransform(ItemInterface& item, const Wm4::Matrix3f& m);

}  // namespace tq::svg::detail
