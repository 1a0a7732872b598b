// Command letters to their kinds and group sizes in one lookup (internal).
#pragma once

#include <cstdint>

#include "svg/model/Path.h"

namespace tq::svg::detail {

// Built from the command table at compile time. Scanning asks it once per command; the linear
// search of the table mispredicts its exit on most commands, since their letters follow no pattern.
struct PathLetterTable {
    static constexpr std::uint8_t kNoCommand = 0xFF;

    std::uint8_t type[128] = {};          // the kind's value, or kNoCommand
    std::uint8_t groupSize[2][128] = {};  // [with the quadratic letters][letter]: 0 for none

    // The kind of `letter` ('z' reads as ClosePath); false for any other character.
    constexpr bool typeOf(char letter, Path::CommandType& out) const {
        const auto index = static_cast<unsigned char>(letter);
        if (index >= 128 || type[index] == kNoCommand) {
            return false;
        }
        out = static_cast<Path::CommandType>(type[index]);
        return true;
    }

    // The numbers one group of `letter` holds; 0 for Z and for letters that are no command. The
    // quadratic letters count only where the grammar has them.
    constexpr int groupSizeOf(char letter, bool quadratics) const {
        const auto index = static_cast<unsigned char>(letter);
        return index < 128 ? groupSize[quadratics ? 1 : 0][index] : 0;
    }
};

constexpr PathLetterTable MakePathLetterTable() {
    PathLetterTable table;
    for (int c = 0; c < 128; ++c) {
        Path::CommandType type{};
        const bool known = Path::CommandTypeOfLetter(static_cast<char>(c), type);
        table.type[c] = known ? static_cast<std::uint8_t>(type) : PathLetterTable::kNoCommand;
        const auto size = known ? static_cast<std::uint8_t>(Path::ValueCount(type)) : 0;
        table.groupSize[0][c] = size;
        table.groupSize[1][c] = size;
    }
    table.groupSize[1][int('Q')] = table.groupSize[1][int('q')] = 4;
    table.groupSize[1][int('T')] = table.groupSize[1][int('t')] = 2;
    return table;
}

inline constexpr PathLetterTable kPathLetters = MakePathLetterTable();

}  // namespace tq::svg::detail
