// What all forms of the short kernels are written with: vectors of sixteen bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "scaling/short_kernels.h"

namespace zvk::scaling {

using Bytes = uint8_t __attribute__((vector_size(kLanes)));

[[gnu::always_inline]] inline Bytes LoadBytes16(const uint8_t *bytes) {
  Bytes loaded;
  std::memcpy(&loaded, bytes, sizeof loaded);
  return loaded;
}

[[gnu::always_inline]] inline void StoreBytes16(uint8_t *to, Bytes bytes) { std::memcpy(to, &bytes, sizeof bytes); }

// Calls visit with the number of a pixel's values, 1 to kMostValues, as a type.
template <class Visitor>
[[gnu::always_inline]] inline void WithValues(int32_t values, Visitor visit) {
  switch (values) {
    case 1:
      return visit(std::integral_constant<int32_t, 1>());
    case 2:
      return visit(std::integral_constant<int32_t, 2>());
    case 3:
      return visit(std::integral_constant<int32_t, 3>());
    case 4:
      return visit(std::integral_constant<int32_t, 4>());
    default:
      return visit(std::integral_constant<int32_t, kMostValues>());
  }
}

// A fourth of kLanes floats.
using Quarter = float __attribute__((vector_size(kLanes)));

// The sums of four, each of all that is in it.
[[gnu::always_inline]] inline Quarter SumOfEach(Quarter a, Quarter b, Quarter c, Quarter d) {
  const Quarter ab = __builtin_shufflevector(a, b, 0, 4, 1, 5) + __builtin_shufflevector(a, b, 2, 6, 3, 7);
  const Quarter cd = __builtin_shufflevector(c, d, 0, 4, 1, 5) + __builtin_shufflevector(c, d, 2, 6, 3, 7);
  return __builtin_shufflevector(ab, cd, 0, 1, 4, 5) + __builtin_shufflevector(ab, cd, 2, 3, 6, 7);
}

// The first three of every four bytes, side by side; behind them anything.
[[gnu::always_inline]] inline Bytes ThreeOfFour(Bytes bytes) {
  return __builtin_shufflevector(bytes, bytes, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 3, 3, 3);
}

}  // namespace zvk::scaling
