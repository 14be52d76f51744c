#include "scaling/scale_filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace zvk::scaling {
namespace {

double Kernel(ScaleMode mode, double distance) { return FindScaleFilter(mode)->FilterKernel(distance); }

TEST(ScaleFilters, WindowsAndCapacities) {
  struct Expected {
    ScaleMode mode;
    double window;
    int32_t horizontal;
    int32_t vertical;
  };
  for (const Expected &expected : {Expected{ScaleTriangle, 1.0, 4, 4},
                                   {ScaleBox, 0.5, 2, 3},
                                   {ScaleLanczos3, 3.0, 8, 8},
                                   {ScaleLanczos8, 8.0, 18, 18},
                                   {ScaleMitchell, 2.0, 6, 6},
                                   {ScalePoly3, 4.0, 10, 10},
                                   {ScaleCubic, 3.0, 8, 8}}) {
    const ScaleFilter &filter = *FindScaleFilter(expected.mode);
    EXPECT_EQ(filter.FilterWindow, expected.window);
    EXPECT_EQ(filter.HorizontalCapacity, expected.horizontal);
    EXPECT_EQ(filter.VerticalCapacity, expected.vertical);
  }
}

TEST(ScaleFilters, OtherModesAreNone) {
  for (const int32_t mode : {INT32_MIN, -1, 0, 8, INT32_MAX}) EXPECT_EQ(FindScaleFilter(mode), nullptr) << mode;
}

TEST(ScaleFilters, TheCentreWeighsOneExceptWithMitchell) {
  for (const ScaleMode filter : {ScaleTriangle, ScaleBox, ScaleLanczos3, ScaleLanczos8, ScalePoly3, ScaleCubic}) {
    EXPECT_EQ(Kernel(filter, 0.0), 1.0);
  }
  EXPECT_EQ(Kernel(ScaleMitchell, 0.0), 5.333333333333333 / 6.0);
}

TEST(ScaleFilters, ADistanceOfOneIsZeroWithTriangleAndPoly3AndTinyWithTheOthers) {
  EXPECT_EQ(Kernel(ScaleTriangle, 1.0), 0.0);
  EXPECT_EQ(Kernel(ScalePoly3, 1.0), 0.0);
  for (const ScaleMode filter : {ScaleLanczos3, ScaleLanczos8, ScaleCubic}) {
    EXPECT_NE(Kernel(filter, 1.0), 0.0);
    EXPECT_LT(std::abs(Kernel(filter, 1.0)), 1e-15);
  }
  EXPECT_NEAR(Kernel(ScaleMitchell, 1.0), 1.0 / 18.0, 1e-15);
}

TEST(ScaleFilters, BoxKeepsADistanceOfExactlyHalf) {
  EXPECT_EQ(Kernel(ScaleBox, 0.5), 1.0);
  EXPECT_EQ(Kernel(ScaleBox, std::nextafter(0.5, 1.0)), 0.0);
}

TEST(ScaleFilters, KernelsEndAtTheirBounds) {
  EXPECT_NE(Kernel(ScaleTriangle, std::nextafter(1.0, 0.0)), 0.0);
  EXPECT_NE(Kernel(ScaleLanczos3, 2.9), 0.0);
  EXPECT_EQ(Kernel(ScaleLanczos3, 3.0), 0.0);
  EXPECT_NE(Kernel(ScaleLanczos8, 7.9), 0.0);
  EXPECT_EQ(Kernel(ScaleLanczos8, 8.0), 0.0);
  EXPECT_NE(Kernel(ScaleMitchell, 1.9), 0.0);
  EXPECT_EQ(Kernel(ScaleMitchell, 2.0), 0.0);
  EXPECT_NE(Kernel(ScalePoly3, 1.9), 0.0);
  EXPECT_EQ(Kernel(ScalePoly3, 2.0), 0.0);
  EXPECT_EQ(Kernel(ScalePoly3, 3.0), 0.0);  // inside its window, outside its kernel
  EXPECT_NE(Kernel(ScaleCubic, 2.9), 0.0);
  EXPECT_EQ(Kernel(ScaleCubic, 3.1), 0.0);
}

TEST(ScaleFilters, HandWorkedValues) {
  EXPECT_EQ(Kernel(ScaleTriangle, 0.25), 0.75);
  // sinc(1.5) sinc(0.5) = (-2 / 3pi) (2 / pi)
  constexpr double kPi = 3.141592653589793;
  EXPECT_NEAR(Kernel(ScaleLanczos3, 1.5), -4.0 / (3.0 * kPi * kPi), 1e-15);
  // sinc(4) is 0; sinc(0.5) sinc(1/16)
  EXPECT_NEAR(Kernel(ScaleLanczos8, 4.0), 0.0, 1e-16);
  EXPECT_NEAR(Kernel(ScaleLanczos8, 0.5), 2.0 / kPi * std::sin(kPi / 16.0) / (kPi / 16.0), 1e-15);
  // (7/8 - 3 + 16/3) / 6 and (-7/3 27/8 + 27 - 30 + 32/3) / 6
  EXPECT_NEAR(Kernel(ScaleMitchell, 0.5), 77.0 / 144.0, 1e-15);
  EXPECT_NEAR(Kernel(ScaleMitchell, 1.5), -5.0 / 144.0, 1e-15);
  EXPECT_EQ(Kernel(ScalePoly3, 0.5), 0.59375);
  EXPECT_EQ(Kernel(ScalePoly3, 1.5), -0.09375);
  // 1/6 - 7/12 + 1; -7/12 27/8 + 27/4 - 59/8 + 5/2; 1/12 125/8 - 25/6 + 35/8 - 3/2
  EXPECT_NEAR(Kernel(ScaleCubic, 0.5), 7.0 / 12.0, 1e-15);
  EXPECT_NEAR(Kernel(ScaleCubic, 1.5), -3.0 / 32.0, 1e-15);
  EXPECT_NEAR(Kernel(ScaleCubic, 2.5), 1.0 / 96.0, 1e-15);
}

TEST(ScaleFilters, CubicBoundsBelongToTheLowerInterval) {
  EXPECT_EQ(Kernel(ScaleCubic, 1.0), 1.3333333333333333 - 2.3333333333333335 + 1.0);
  EXPECT_EQ(Kernel(ScaleCubic, 2.0), -0.5833333333333334 * 8.0 + 3.0 * 4.0 - 4.916666666666667 * 2.0 + 2.5);
  EXPECT_EQ(Kernel(ScaleCubic, 3.0), 0.08333333333333333 * 27.0 - 0.6666666666666666 * 9.0 + 1.75 * 3.0 - 1.5);
}

TEST(ScaleFilters, NotANumberIsOutside) {
  for (const ScaleMode filter :
       {ScaleTriangle, ScaleBox, ScaleLanczos3, ScaleLanczos8, ScaleMitchell, ScalePoly3, ScaleCubic}) {
    EXPECT_EQ(Kernel(filter, std::numeric_limits<double>::quiet_NaN()), 0.0);
  }
}

}  // namespace
}  // namespace zvk::scaling
