// The "path" element: its drawing commands as read.
#pragma once

#include <cstddef>
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

    // The one command table: the letter of each kind and how many numbers it carries, both
    // indexed by its value. An arc's numbers are rx, ry, rotation, the large-arc and sweep flags,
    // x and y.
    static constexpr const char* CommandLetters = "MmLlAaHhVvCcSsZ";
    static constexpr std::uint8_t CommandValueCounts[15] = {2, 2, 2, 2, 7, 7, 1, 1,
                                                            1, 1, 6, 6, 4, 4, 0};
    static constexpr std::size_t ArcLargeArcFlag = 3;
    static constexpr std::size_t ArcSweepFlag = 4;

    // Whether the number at `index` of a command of `type` is an arc flag.
    static constexpr bool IsFlag(CommandType type, std::size_t index) {
        return (type == CommandType::EllipticalArc || type == CommandType::EllipticalArcRel) &&
               (index == ArcLargeArcFlag || index == ArcSweepFlag);
    }
    // The kind written with `letter` ('z' reads as ClosePath); false for any other character.
    static constexpr bool CommandTypeOfLetter(char letter, CommandType& type) {
        if (letter == 'z') {
            letter = 'Z';
        }
        for (std::uint8_t i = 0; i < 15; ++i) {
            if (CommandLetters[i] == letter) {
                type = static_cast<CommandType>(i);
                return true;
            }
        }
        return false;
    }
    static constexpr std::size_t ValueCount(CommandType type) {
        return CommandValueCounts[static_cast<std::size_t>(type)];
    }

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
