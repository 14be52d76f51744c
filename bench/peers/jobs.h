// What there is to do, in the words of no library.
#pragma once

#include <cstdint>
#include <vector>

#include "bench/peers/view.h"

namespace zvk::peers {

enum class Filter : uint8_t { Lanczos3, Lanczos8, Mitchell, Triangle, Box, Nearest };

struct Scaling {
  Filter filter;
  Layout layout;
  Size from;
  Size to;

  bool Shrinks() const { return to.width < from.width; }
};

// A square of weights, row by row; sums are multiplied by `scale`.
struct Matrix {
  int32_t dimension;
  std::vector<int32_t> weights;
  double scale;
};

}  // namespace zvk::peers
