// Fixed-width integer names used across the platform and the library.
#pragma once

#include <cstdint>

using int64 = std::int64_t;
using uint64 = std::uint64_t;
