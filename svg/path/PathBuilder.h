// Composes path commands from shapes (lines, rectangles, ellipses and arcs, polylines).
//
// The commands are kept compact: no move to where the pen already is, horizontal and vertical
// lines where a coordinate stays, and for each record the relative or the absolute form,
// whichever is shorter once written (ties keep the absolute form). Arcs are always absolute.
//
// Shapes are either written as they come, or gathered between startContour and endContour and
// then written as one closed figure, optionally reordered so that each shape starts near where
// the previous one ended (shapes may then be walked backwards).
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/ItemInterfacePointer.h"
#include "svg/model/Path.h"
#include "svg/tqSvgExport.h"

namespace tq::svg {

class TQSVG_EXPORT PathBuilder {
public:
    // A shape of an open contour, written when the contour ends.
    class TQSVG_EXPORT PrimitiveInterface {
    public:
        enum : std::uint32_t { LineType = 0, EllipseType = 1, SegmentListType = 2 };

        explicit PrimitiveInterface(std::uint32_t primitiveType) : type(primitiveType) {}
        virtual ~PrimitiveInterface() = default;

        // Appends the shape's commands; the builder's pen is already at getStartPoint().
        virtual void write(PathBuilder& builder) const = 0;
        // The first point, or the last one when reversed.
        virtual const Wm4::Vector2f& getStartPoint() const = 0;
        // The last point, or the first one when reversed.
        virtual const Wm4::Vector2f& getEndPoint() const = 0;

        std::uint32_t type;
        bool reversed = false;  // set by the contour reordering
    };

    class TQSVG_EXPORT Line : public PrimitiveInterface {
    public:
        Line(const Wm4::Vector2f& from, const Wm4::Vector2f& to);

        void write(PathBuilder& builder) const override;
        const Wm4::Vector2f& getStartPoint() const override { return reversed ? end : start; }
        const Wm4::Vector2f& getEndPoint() const override { return reversed ? start : end; }

        Wm4::Vector2f start;
        Wm4::Vector2f end;
    };

    // An elliptical arc from startAngle to endAngle (radians, from the x axis towards the y
    // axis), or the whole ellipse when the angles span 2 pi within 0.01.
    class TQSVG_EXPORT Ellipse : public PrimitiveInterface {
    public:
        Ellipse(const Wm4::Vector2f& center, const Wm4::Vector2f& radii, float startAngle,
                float endAngle);

        void write(PathBuilder& builder) const override;
        const Wm4::Vector2f& getStartPoint() const override {
            return reversed ? endPoint : startPoint;
        }
        const Wm4::Vector2f& getEndPoint() const override {
            return reversed ? startPoint : endPoint;
        }

        Wm4::Vector2f center;
        Wm4::Vector2f radii;
        float startAngle;
        float endAngle;
        Wm4::Vector2f startPoint;  // at startAngle, or at angle 0 for a full ellipse
        Wm4::Vector2f endPoint;    // at endAngle, or at angle 0 for a full ellipse
        bool full;
    };

    // A polyline through at least one point.
    class TQSVG_EXPORT SegmentList : public PrimitiveInterface {
    public:
        explicit SegmentList(std::vector<Wm4::Vector2f>&& polyline);

        void write(PathBuilder& builder) const override;
        const Wm4::Vector2f& getStartPoint() const override {
            return reversed ? points.back() : points.front();
        }
        const Wm4::Vector2f& getEndPoint() const override {
            return reversed ? points.front() : points.back();
        }

        std::vector<Wm4::Vector2f> points;
    };

    PathBuilder() = default;
    ~PathBuilder();

    // Copies hold copies of the pending shapes of an open contour, so either builder may go on
    // with it (or drop it) alone.
    PathBuilder(const PathBuilder& other);
    PathBuilder& operator=(const PathBuilder& other);
    // Moves take the pending shapes over and leave `other` as after clearBuilder().
    PathBuilder(PathBuilder&& other) noexcept;
    PathBuilder& operator=(PathBuilder&& other) noexcept;

    // Ends an open contour first, then gathers the following shapes until endContour. With
    // `reorder`, the shapes are chained greedily by nearest end when the contour ends.
    void startContour(bool reorder);
    // Writes the gathered shapes as one figure closed by "Z"; nothing when none was gathered.
    void endContour();
    // Drops the gathered shapes without writing anything.
    void cancelContour();

    void appendLine(const Wm4::Vector2f& from, const Wm4::Vector2f& to);
    // Corners (x, y), (x + w, y), (x + w, y + h), (x, y + h) and back to (x, y).
    void appendRect(const Wm4::Vector2f& position, const Wm4::Vector2f& size);
    // Angles in radians, from the x axis towards the y axis; see Ellipse for the full turn.
    void appendEllipse(const Wm4::Vector2f& center, const Wm4::Vector2f& radii, float startAngle,
                       float endAngle);
    // A polyline; an empty one is no shape and is ignored. The Move form leaves `points` empty.
    void appendSegmentListConst(const std::vector<Wm4::Vector2f>& points);
    void appendSegmentListMove(std::vector<Wm4::Vector2f>& points);

    // A Path with the commands written so far, or an empty pointer when the builder is empty.
    // Shapes of an open contour are not included. With `take` the commands move into the item
    // and the builder is cleared; otherwise they are copied and the builder is unchanged.
    ItemInterfacePointer<Path> createPathItem(bool take);

    const std::list<Path::Command>& getContent() const { return mContent; }
    // No command written and no shape pending.
    bool isEmpty() const { return mContent.empty() && mPendingPrimitives.empty(); }
    // Drops pending shapes and commands, closes the contour and forgets the pen position.
    void clearBuilder();

private:
    void writeMove(const Wm4::Vector2f& point);
    void writeLineTo(const Wm4::Vector2f& point);
    void writeHLineTo(float x);
    void writeVLineTo(float y);
    void writeEllipticalArc(const Wm4::Vector2f& radii, float rotation, bool largeArc, bool sweep,
                            const Wm4::Vector2f& end);
    void startPrimitive(bool connect, const Wm4::Vector2f& point);
    void endPrimitive(const Wm4::Vector2f& point);
    // Writes one shape outside a contour: it is moved to, never joined by a line.
    void writeAlone(const PrimitiveInterface& primitive);
    // The same for points the caller keeps (rectangles, copied polylines): no SegmentList copy.
    void writePolylineAlone(const Wm4::Vector2f* points, std::size_t count);
    void setCurrentPoint(const Wm4::Vector2f& point);
    void clearCurrentContour();

    static void ReorderContourPath(std::list<std::unique_ptr<PrimitiveInterface>>& primitives);

    std::list<std::unique_ptr<PrimitiveInterface>> mPendingPrimitives;
    Wm4::Vector2f mCurrentPoint;
    bool mHasCurrentPoint = false;
    std::list<Path::Command> mContent;
    bool mContourOpen = false;
    bool mReorderContour = false;
};

}  // namespace tq::svg
