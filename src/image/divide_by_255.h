// The integer division of blends, without a division.
#pragma once

#include <cstdint>

namespace zvk {

// value / 255 rounded down, exact for 0 to 65535: for a product of two samples, and for two products whose weights add
// up to 255. These stay within 16 bits all along, so that a loop over samples can take many of them at once.
constexpr uint32_t DivideBy255(uint32_t value) { return (value + 1 + ((value + 1) >> 8)) >> 8; }

}  // namespace zvk
