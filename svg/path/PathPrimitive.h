// Absolute pieces of a path: straight lines, elliptical arcs in centre form and cubic curves.
#pragma once

#include <cstdint>

#include <Wm4Foundation/Wm4BezierCurve2.h>
#include <Wm4Foundation/Wm4Matrix3.h>
#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/BoundingBox.h"
#include "svg/tqSvgExport.h"

namespace tq::svg {

enum class PathPrimitiveType : std::uint32_t {
    LinePrimitive = 0,
    ArcPrimitive = 1,
    BezierCubicPrimitive = 2,
};

// Users switch on `type` and cast down to read the fields.
class TQSVG_EXPORT PathPrimitive {
public:
    explicit PathPrimitive(PathPrimitiveType type_) : type(type_) {}
    virtual ~PathPrimitive();

    // The piece's extent under `transform`, an estimate: see each kind.
    virtual void computeBoundingBox(BoundingBox& box, const Wm4::Matrix3f& transform) const = 0;

    PathPrimitiveType type;
};

class TQSVG_EXPORT PathLine : public PathPrimitive {
public:
    PathLine(const Wm4::Vector2f& start_, const Wm4::Vector2f& end_);

    // Replaces `box` by the box of the two mapped end points.
    void computeBoundingBox(BoundingBox& box, const Wm4::Matrix3f& transform) const override;

    Wm4::Vector2f start;
    Wm4::Vector2f end;
};

// An arc in SVG's end-point form, converted to centre form at construction. Radii too small to
// reach the end point are deliberately not enlarged: the centre then falls on the chord's
// midpoint and the arc stops short of the end point. Equal end points or a radius below 0.01
// leave the arc degenerate: centre (0, 0), both angles 0.
class TQSVG_EXPORT PathEllipticalArc : public PathPrimitive {
public:
    PathEllipticalArc(const Wm4::Vector2f& radii_, float rotation_, bool largeArc_, bool sweep_,
                      const Wm4::Vector2f& start_, const Wm4::Vector2f& end_);

    // Empty for equal end points; the untransformed box of the end points when a radius is
    // below 0.01 (deliberate); otherwise the points at the two end angles and at the multiples
    // of a quarter turn strictly between them, with the matrix mixed into the radii: exact for
    // the identity, an estimate otherwise.
    void computeBoundingBox(BoundingBox& box, const Wm4::Matrix3f& transform) const override;

    Wm4::Vector2f center;
    Wm4::Vector2f start;
    Wm4::Vector2f end;
    Wm4::Vector2f radii;  // absolute values of the given radii
    float rotation;       // degrees, as given
    bool largeArc;
    bool sweep;
    float startAngle = 0.0f;  // radians
    float deltaAngle = 0.0f;  // radians, signed extent

private:
    void computeCenterForm();
};

class TQSVG_EXPORT PathBezierCubic : public PathPrimitive {
public:
    // Takes ownership of `controlPoints`, four points allocated with new[].
    explicit PathBezierCubic(Wm4::Vector2f* controlPoints);

    // Leaves `box` as it is: curves deliberately add no extent of their own.
    void computeBoundingBox(BoundingBox& box, const Wm4::Matrix3f& transform) const override;

    Wm4::BezierCurve2f curve;
};

}  // namespace tq::svg
