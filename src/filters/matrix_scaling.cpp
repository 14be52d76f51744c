#include "filters/matrix_scaling.h"

#include <cmath>
#include <cstdlib>

namespace zvk::filters {

namespace {

constexpr int32_t kSteps = 255;

// Calls visit(v, step) for v from 1 to 255, step being the smallest whole number whose product with the scale is at
// least v in double precision, as long as that is not above `highest`. The number of steps visited.
template <class Visitor>
int32_t VisitSteps(double scale, double highest, Visitor &&visit) {
  for (int32_t v = 1; v <= kSteps; ++v) {
    const double quotient = v / scale;
    if (!(quotient < highest + 2)) return v - 1;
    double step = std::ceil(quotient);
    while ((step - 1) * scale >= v) --step;
    while (step * scale < v) ++step;
    if (step > highest) return v - 1;
    visit(v, step);
  }
  return kSteps;
}

// True if shortened(n) leads to the same byte as n times the scale, for whole numbers up to `highest`. Neither falls
// where n rises, so they agree everywhere if they agree on both sides of each step.
template <class Shortened>
bool AgreesAtAllSteps(double scale, int64_t highest, const Shortened &shortened) {
  bool agrees = true;
  const int32_t steps = VisitSteps(scale, static_cast<double>(highest), [&](int32_t v, double step) {
    const auto n = static_cast<int32_t>(step);
    agrees = agrees && shortened(n) >= v && shortened(n - 1) < v;
  });
  return agrees && (steps == kSteps || shortened(static_cast<int32_t>(highest)) <= steps);
}

}  // namespace

MatrixScaling::MatrixScaling(const MatrixResult &told, int64_t lowest, int64_t highest, bool narrow)
    : result(told), start(static_cast<uint16_t>(narrow ? -lowest : 0)) {
  constexpr double kLimit = 2147483648.0;  // 32 bits hold what lies within
  result.delta -= start;
  if (told.scale == 1.0) {
    way = Way::None;
    return;
  }
  const auto farthest = static_cast<double>(std::max(std::abs(lowest + told.delta), std::abs(highest + told.delta)));
  if (!(farthest < kLimit && farthest * std::abs(told.scale) < kLimit)) return;
  way = Way::Double;
  const int64_t highestValue = std::max<int64_t>(highest + told.delta, 0);
  if (!(told.scale > 0)) return;
  if (narrow && ServeWords(highestValue)) {
    way = Way::Words;
  } else if (ServeSingle(highestValue, farthest)) {
    way = Way::Single;
  }
}

bool MatrixScaling::ServeWords(int64_t highest) {
  constexpr int64_t kMost = UINT16_MAX;
  if (highest > kMost) return false;
  int exponent = 0;
  const double mantissa = std::frexp(result.scale, &exponent);  // from 0.5 to 1, or 0
  const double rounded = std::ceil(mantissa * 65536);
  if (exponent > 0 || exponent <= -16 || rounded > static_cast<double>(kMost)) return false;
  product = {static_cast<uint16_t>(rounded), static_cast<uint8_t>(-exponent)};
  floor = static_cast<uint16_t>(std::clamp<int64_t>(-int64_t{result.delta}, 0, kMost));
  offset = static_cast<uint16_t>(floor > 0 ? -floor : result.delta);
  return AgreesAtAllSteps(result.scale, highest, [&](int32_t n) { return int32_t{product(static_cast<uint16_t>(n))}; });
}

bool MatrixScaling::ServeSingle(int64_t highest, double farthest) {
  constexpr double kLimit = 1073741824.0;  // far enough from 32 bits that rounding does not leave them
  if (!(farthest * result.scale < kLimit)) return false;
  // The bias puts each step midway between the last number below it and the first one above.
  double above = -1;
  double below = 1;
  VisitSteps(result.scale, static_cast<double>(highest), [&](int32_t v, double step) {
    const double distance = step - v / result.scale;
    above = std::max(above, -distance);
    below = std::min(below, 1 - distance);
  });
  factor = static_cast<float>(result.scale);
  bias = static_cast<float>((below + above) / 2 * result.scale);
  return AgreesAtAllSteps(result.scale, highest, [&](int32_t n) { return ScaledSingle(*this, n); });
}

}  // namespace zvk::filters
