// The matrices of thresholds of the ordered dither.
#pragma once

#include <cstdint>

namespace zvk::filters {

struct DitherMatrix {
  int32_t size;
  const int32_t *thresholds;  // size x size, row by row; the range differs between the matrices

  const int32_t *Row(int32_t y) const { return thresholds + y % size * size; }
};

inline constexpr int32_t kLargestDitherMatrix = 16;

// The matrix by the number of its constant; nil outside 1 to 10.
const DitherMatrix *DitherMatrixByNumber(int32_t number);

}  // namespace zvk::filters
