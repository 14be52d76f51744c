// The loops in which a scale spends its time: weighted sums of samples, and the finishing of sums into samples. They
// know nothing of images and formats, only of samples side by side.
#pragma once

#include <cstdint>
#include <limits>

#include "pixels/dispatch.h"
#include "scaling/scale_pairs.h"
#include "scaling/scale_taps.h"

namespace zvk::scaling {

// How many values the samples of a pixel make.
constexpr int32_t ValueCount(int32_t sampleCount, ScaleValues values) {
  return values == ScaleValues::kGrayOfColour ? sampleCount - 2 : sampleCount;
}

// What a sample counts before its weight: red, green and blue their parts of gray (other ones than in ScaleFast) where
// gray is made of them.
template <ScaleValues Values>
constexpr double SamplePart(int32_t sample) {
  constexpr double kGrayParts[] = {0.3, 0.59, 0.11};
  return Values == ScaleValues::kGrayOfColour && sample < 3 ? kGrayParts[sample] : 1.0;
}

// Adds one tap to the sums of `Rows` pixels. `samples` holds their samples, one kind after the other for all rows and
// already multiplied by SamplePart; `sums` the values likewise. As sums are rounded, the order of the three parts of
// gray is part of the result.
template <int32_t SampleCount, ScaleValues Values, int32_t Rows>
[[gnu::always_inline]] inline void AddTap(const double *__restrict samples, double weight, double *__restrict sums) {
  if constexpr (Values == ScaleValues::kSamples) {
    for (int32_t i = 0; i < SampleCount * Rows; ++i) sums[i] += samples[i] * weight;
  } else {
    const double *red = samples;
    const double *green = samples + Rows;
    const double *blue = green + Rows;
    for (int32_t i = 0; i < Rows; ++i) sums[i] += blue[i] * weight + (green[i] * weight + red[i] * weight);
    for (int32_t i = Rows; i < (SampleCount - 2) * Rows; ++i) sums[i] += samples[i + 2 * Rows] * weight;
  }
}

// A sum divided by the weights' sum, plus `rounding`, truncated and cut to what a sample holds. Not-a-number and what
// is beyond 32 bits count as the most negative integer and so give 0. Written as selections, which compilers turn into
// straight code for many values at once.
template <class Sample>
[[gnu::always_inline]] inline int32_t Finish(double sum, double weightSum, double rounding) {
  constexpr double kLimit = std::numeric_limits<Sample>::max();
  double value = sum / weightSum + rounding;
  value = value < 2147483648.0 ? value : 0.0;
  value = value > 0.0 ? value : 0.0;
  value = value < kLimit ? value : kLimit;
  return static_cast<int32_t>(value);
}

// Rows that the horizontal pass takes at once where it may: so many that the sums of a pixel fill several registers.
constexpr int32_t RowBatch(int32_t sampleCount, ScaleValues values) {
  if (values == ScaleValues::kGrayOfColour) return 24;
  if (sampleCount == 1) return 32;
  return sampleCount == 2 ? 16 : 8;
}

// A stretch of output columns.
template <class Sample>
struct ColumnSums {
  const double *samples;      // source columns of samples x rows doubles, as AddTap takes them
  int32_t firstColumn;        // the number of the first of these
  const ScaleTapList *lists;  // one for each output column
  int32_t count;
  double rounding;
  Sample *values;  // finished output columns of values x rows
};

// The kernel for 1 row or for a RowBatch: of bytes for one to five samples as they are, and for gray of three and four;
// of wide samples for one as it is.
template <class Sample>
using ColumnKernel = Kernel<void(const ColumnSums<Sample> &columns)>;
template <class Sample>
const ColumnKernel<Sample> &ColumnSummation(int32_t sampleCount, ScaleValues values, int32_t rows);
template <>
const ColumnKernel<uint8_t> &ColumnSummation(int32_t sampleCount, ScaleValues values, int32_t rows);
template <>
const ColumnKernel<uint16_t> &ColumnSummation(int32_t sampleCount, ScaleValues values, int32_t rows);

// One finished row of `count` samples out of `rowCount` rows of samples, which need not be aligned, by their weights.
// Made for uint8_t and uint16_t.
template <class Sample>
using RowKernel = Kernel<void(const uint8_t *const *rows, const double *weights, int32_t rowCount, double weightSum,
                              double rounding, int64_t count, Sample *values)>;
template <class Sample>
const RowKernel<Sample> &RowSummation();

}  // namespace zvk::scaling
