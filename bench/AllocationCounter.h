// Counts heap allocations of the whole benchmark process (operator new is replaced in
// AllocationCounter.cpp).
#pragma once

#include <cstddef>

namespace tq::bench {

std::size_t AllocationCount();

}  // namespace tq::bench
