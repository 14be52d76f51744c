// The integer division of blends.
#pragma once

#include <cstdint>

#include "host/layers.h"

namespace zvk::pixels {

// value / 255 rounded down, exact for 0 to 65535: for a product of two samples, and for two products whose weights add
// up to 255. It stays within 16 bits, where loops over samples take many at once: the compiler makes a multiplication
// of the division, which beats shifts and sums.
constexpr uint32_t DivideBy255(uint32_t value) { return static_cast<uint16_t>(value) / 255; }

}  // namespace zvk::pixels
