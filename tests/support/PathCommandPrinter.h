// Readable GoogleTest failure output for path commands: "L(1 2)".
#pragma once

#include <cstddef>
#include <ostream>

#include "svg/model/Path.h"

namespace tq::svg {

inline void PrintTo(const Path::Command& command, std::ostream* os) {
    *os << Path::CommandLetters[static_cast<int>(command.type)] << '(';
    for (std::size_t i = 0; i < command.values.size(); ++i) {
        *os << (i ? " " : "") << command.values[i];
    }
    *os << ')';
}

}  // namespace tq::svg
