// Starts the library for the life of a scope.
#pragma once

#include "svg/io/tqSvgIOManager.h"

namespace tq::svg {

// initializeTqSvg() when constructed, terminateTqSvg() when destroyed: the start and stop pair of
// a host's main function or of a plug-in's lifetime, balanced on every way out of the scope.
// Guards nest, as the start and stop calls count.
class LibraryGuard {
public:
    LibraryGuard() { initializeTqSvg(); }
    ~LibraryGuard() { terminateTqSvg(); }
    LibraryGuard(const LibraryGuard&) = delete;
    LibraryGuard& operator=(const LibraryGuard&) = delete;
};

}  // namespace tq::svg
