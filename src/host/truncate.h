// The one conversion from double to integer.
#pragma once

#include <cstdint>

#include "host/layers.h"

namespace zvk::host {

// Truncates toward zero. Not-a-number and what does not fit into 32 bits give the most negative integer.
constexpr int32_t Truncate(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}

}  // namespace zvk::host
