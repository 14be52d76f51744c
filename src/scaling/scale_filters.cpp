#include "scaling/scale_filters.h"

#include <cmath>
#include <iterator>

namespace zvk::scaling {

namespace {

double Triangle(double a) { return a < 1.0 ? 1.0 - a : 0.0; }

// A sample exactly on the edge of the window counts on both sides.
double Box(double a) { return 0.5 >= a ? 1.0 : 0.0; }

double Sinc(double t) {
  constexpr double kPi = 3.141592653589793;
  return t == 0.0 ? 1.0 : std::sin(t * kPi) / (t * kPi);
}

double Lanczos3(double a) { return a < 3.0 ? Sinc(a) * Sinc(a / 3.0) : 0.0; }

double Lanczos8(double a) { return a < 8.0 ? Sinc(a) * Sinc(a * 0.125) : 0.0; }

// The cubic of Mitchell and Netravali with B = C = 1/3.
double Mitchell(double a) {
  const double square = a * a;
  const double cube = a * a * a;
  if (a < 1.0) return (7.0 * cube - 12.0 * square + 5.333333333333333) / 6.0;
  if (a < 2.0) return (-2.3333333333333335 * cube + 12.0 * square - 20.0 * a + 10.666666666666666) / 6.0;
  return 0.0;
}

// Cubic convolution with the parameter -0.75.
double Poly3(double a) {
  if (a < 1.0) return (1.25 * a - 2.25) * a * a + 1.0;
  if (a < 2.0) return ((-0.75 * a + 3.75) * a - 6.0) * a + 3.0;
  return 0.0;
}

// A cubic in each of three unit intervals, whose upper bounds belong to them.
double Cubic(double a) {
  const double square = a * a;
  const double cube = a * a * a;
  if (a <= 1.0) return 1.3333333333333333 * cube - 2.3333333333333335 * square + 1.0;
  if (a <= 2.0) return -0.5833333333333334 * cube + 3.0 * square - 4.916666666666667 * a + 2.5;
  if (a <= 3.0) return 0.08333333333333333 * cube - 0.6666666666666666 * square + 1.75 * a - 1.5;
  return 0.0;
}

// In the order of ScaleMode. The window of poly3 is twice as wide as its kernel: what lies between is looked at and
// gives no tap.
// clang-format off
constexpr ScaleFilter kFilters[] = {
    // window  kernel  horizontal, vertical capacity
    {1.0, Triangle,  4,  4},
    {0.5, Box,       2,  3},
    {3.0, Lanczos3,  8,  8},
    {8.0, Lanczos8, 18, 18},
    {2.0, Mitchell,  6,  6},
    {4.0, Poly3,    10, 10},
    {3.0, Cubic,     8,  8},
};
// clang-format on
static_assert(std::size(kFilters) == ScaleCubic);

}  // namespace

const ScaleFilter *FindScaleFilter(int32_t mode) {
  return mode >= ScaleTriangle && mode <= ScaleCubic ? &kFilters[mode - ScaleTriangle] : nullptr;
}

}  // namespace zvk::scaling
