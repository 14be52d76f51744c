// The horizontal sums of a scale in whole numbers, for machines that sum products of bytes (AVX-512 with VNNI and
// VBMI).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "scaling/digit_lists.h"
#include "scaling/short_kernels.h"

namespace zvk::scaling {

// True if the machine has them, at level AVX512.
bool HasDigitSums();

// Pixels `from` to `end` - 1 of kLanes rows, `from` a multiple of four. Four columns of a sample stand in 32 bits,
// these of all rows side by side: [group of four columns][sample][row].
struct QuadStage {
  const uint8_t *const *rows;
  ptrdiff_t first;    // byte of a row where pixel 0 begins
  int32_t pixelSize;  // 1 to kLargestQuadPixel bytes
  int32_t span;       // bytes of a pixel that may be read
  int32_t samples;    // that are staged, at these bytes of a pixel
  std::array<int32_t, kMostValues> places;
  int32_t from;
  int32_t end;
  uint32_t *quads;  // room for kMostStaged pixels more
};
inline constexpr int32_t kLargestQuadPixel = 8;
inline constexpr int32_t kMostStaged = 64;

// Must not be called where HasDigitSums() is false.
void StageQuads(const QuadStage &stage);

// Output columns `first` to `end` - 1 of kLanes rows.
struct DigitColumns {
  const DigitLists *lists;
  double rounding;
  int32_t first;
  int32_t end;
  const uint32_t *quads;
  int32_t firstColumn;  // of the quads, a multiple of four
  uint8_t *values;      // `stride` x kLanes bytes for each output column
  int32_t stride;
  std::array<int32_t, kMostValues> place;  // which of these each sample's value is
};

// For one to five samples of a pixel. Must not be called where HasDigitSums() is false.
void SumDigitColumns(const DigitColumns &columns, int32_t samples);

}  // namespace zvk::scaling
