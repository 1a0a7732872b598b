// The "path" element: its drawing commands as read.
#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "svg/model/ItemInterface.h"

namespace tq::svg {

class TQSVG_EXPORT Path : public ItemInterface {
public:
    // Each absolute kind is followed by its relative kind; there is no quadratic kind and no
    // relative close path.
    enum class CommandType : std::uint8_t {
        MoveTo = 0,
        MoveToRel = 1,
        LineTo = 2,
        LineToRel = 3,
        EllipticalArc = 4,
        EllipticalArcRel = 5,
        HLineTo = 6,
        HLineToRel = 7,
        VLineTo = 8,
        VLineToRel = 9,
        CubicBezier = 10,
        CubicBezierRel = 11,
        SmoothCubicBezier = 12,
        SmoothCubicBezierRel = 13,
        ClosePath = 14,
    };

    // The letter of each kind, indexed by its value: the library's one letter table.
    static constexpr const char* CommandLetters = "MmLlAaHhVvCcSsZ";

    // One drawing command with its numbers, in user units and as read (relative stays relative).
    struct Command {
        bool operator==(const Command& other) const {
            return type == other.type && values == other.values;
        }
        bool operator!=(const Command& other) const { return !(*this == other); }

        CommandType type = CommandType::MoveTo;
        std::vector<float> values;
    };

    Path();
    Path(const Path& other) = default;
    Path(Path&& other) = default;

    bool computeEstimatedBoundingVolume(BoundingBox& box,
                                        const Wm4::Matrix3f& transform) const override;

    std::list<Command> commands;

private:
    bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                const SaveOptions& options) const override;
};

}  // namespace tq::svg
