// The arithmetic of a shear: every sample gives a share of its value, told by a weight, to the next one along the line.
// That moves a line of samples by a fraction of a pixel and keeps their sum. The kernels here work on runs of samples;
// who is next to whom is told by the caller. All weights are in 0 to 1.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/truncate.h"
#include "pixels/dispatch.h"

namespace zvk::geometry {

// What a sample gives to the next one: the product in double precision, truncated.
inline uint8_t ShareOf(uint8_t sample, double weight) { return static_cast<uint8_t>(Truncate(sample * weight)); }

// What is left behind the last sample of a line, which gave `share`: that, and the background less its own share.
inline uint8_t LastSample(uint8_t background, uint8_t share, double weight) {
  return static_cast<uint8_t>(Truncate(background - (background * weight - share)));
}

// A weight, with a number of 65536ths that gives the same share of each of the 256 samples without floating point.
// There is one for nearly every weight; 0 says that there is none.
struct ShareWeight {
  explicit ShareWeight(double weight);

  double weight;
  uint16_t fraction;
};

// dest[i] = source[i] - share of source[i] + share of source[i - step], for `count` samples of one weight; those `step`
// apart are neighbours. The `step` samples before source are read. The runs must not overlap.
void ShearAlong(const uint8_t *source, ptrdiff_t step, int64_t count, const ShareWeight &weight, uint8_t *dest);
// The same by a fraction.
using LineShear = Kernel<void(const uint8_t *source, ptrdiff_t step, int64_t count, uint16_t fraction, uint8_t *dest)>;
extern const LineShear ShearByFraction;

// The same for samples whose neighbours are in the lines before and behind: dest[i] = source[i] - share of source[i] +
// shares[i], and shares[i] becomes the share of source[i]. Each has a fraction or a weight of its own. The runs must
// not overlap.
using CrossShear =
    Kernel<void(const uint8_t *source, int32_t count, const uint16_t *fractions, uint8_t *shares, uint8_t *dest)>;
extern const CrossShear ShearAcrossByFractions;
void ShearAcrossByWeights(const uint8_t *source, int32_t count, const double *weights, uint8_t *shares, uint8_t *dest);

}  // namespace zvk::geometry
