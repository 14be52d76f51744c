// The told arithmetic of a scale, which is the definition of its bytes: weighted sums of samples in double, and the
// finishing of sums into samples.
#pragma once

#include <cstdint>
#include <limits>

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

// What is added to a quotient before it is truncated.
inline constexpr double kRoundToNearest = 0.5;
inline constexpr double kRoundTowardZero = 0.0;

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

// Finishes up to `Most` sums. The detour over whole numbers keeps each of its loops to one width of numbers.
template <int32_t Most, class Sample>
[[gnu::always_inline]] inline void FinishAll(const double *__restrict sums, int32_t count, double weightSum,
                                             double rounding, Sample *__restrict values) {
  int32_t whole[Most];
  for (int32_t i = 0; i < count; ++i) whole[i] = Finish<Sample>(sums[i], weightSum, rounding);
  for (int32_t i = 0; i < count; ++i) values[i] = static_cast<Sample>(whole[i]);
}

}  // namespace zvk::scaling
