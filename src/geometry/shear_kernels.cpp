#include "geometry/shear_kernels.h"

#include <initializer_list>

#include "pixels/dispatch.h"

namespace zvk::geometry {

namespace {

constexpr int32_t kFractions = 65536;

[[gnu::always_inline]] inline uint8_t ShareOfFraction(uint16_t sample, uint16_t fraction) {
  return static_cast<uint8_t>(uint32_t{sample} * fraction / kFractions);
}

// --- fractions ---

[[gnu::always_inline]] inline bool GivesSameSharesBody(uint16_t fraction, double weight) {
  int32_t differences = 0;
  for (int32_t sample = 0; sample < 256; ++sample) {
    const auto share = static_cast<int32_t>(sample * weight);
    differences += ShareOfFraction(static_cast<uint16_t>(sample), fraction) != share ? 1 : 0;
  }
  return differences == 0;
}
constexpr auto GivesSameShares = KernelOf<GivesSameSharesBody>;

}  // namespace

// All weights between two neighbours among the fractions with denominators up to 255 give the same shares, and such
// neighbours are more than 1/65536 apart: the multiple of that just below the weight or the one just above it lies
// between them too. Neither need do where a share hangs on the rounding of a product.
ShareWeight::ShareWeight(double weight) : weight(weight), fraction(0) {
  const int32_t below = Truncate(weight * kFractions);
  for (const int32_t candidate : {below, below + 1}) {
    if (candidate < 1 || candidate >= kFractions) continue;
    if (!GivesSameShares(static_cast<uint16_t>(candidate), weight)) continue;
    fraction = static_cast<uint16_t>(candidate);
    return;
  }
}

// --- along a line ---

namespace {

[[gnu::always_inline]] inline void ShearByFractionBody(const uint8_t *__restrict source, ptrdiff_t step, int64_t count,
                                                       uint16_t fraction, uint8_t *__restrict dest) {
  for (int64_t i = 0; i < count; ++i) {
    const uint8_t given = ShareOfFraction(source[i], fraction);
    const uint8_t taken = ShareOfFraction(source[i - step], fraction);
    dest[i] = static_cast<uint8_t>(source[i] - given + taken);
  }
}

}  // namespace

constexpr LineShear ShearByFraction = KernelOf<ShearByFractionBody>;

void ShearAlong(const uint8_t *source, ptrdiff_t step, int64_t count, const ShareWeight &weight, uint8_t *dest) {
  if (weight.fraction != 0) {
    ShearByFraction(source, step, count, weight.fraction, dest);
    return;
  }
  for (int64_t i = 0; i < count; ++i) {
    const uint8_t given = ShareOf(source[i], weight.weight);
    dest[i] = static_cast<uint8_t>(source[i] - given + ShareOf(source[i - step], weight.weight));
  }
}

// --- across lines ---

namespace {

[[gnu::always_inline]] inline void ShearAcrossByFractionsBody(const uint8_t *__restrict source, int32_t count,
                                                              const uint16_t *__restrict fractions,
                                                              uint8_t *__restrict shares, uint8_t *__restrict dest) {
  for (int32_t i = 0; i < count; ++i) {
    const uint8_t given = ShareOfFraction(source[i], fractions[i]);
    dest[i] = static_cast<uint8_t>(source[i] - given + shares[i]);
    shares[i] = given;
  }
}

}  // namespace

constexpr CrossShear ShearAcrossByFractions = KernelOf<ShearAcrossByFractionsBody>;

void ShearAcrossByWeights(const uint8_t *source, int32_t count, const double *weights, uint8_t *shares, uint8_t *dest) {
  for (int32_t i = 0; i < count; ++i) {
    const uint8_t given = ShareOf(source[i], weights[i]);
    dest[i] = static_cast<uint8_t>(source[i] - given + shares[i]);
    shares[i] = given;
  }
}

}  // namespace zvk::geometry
