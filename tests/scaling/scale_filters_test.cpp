#include "scaling/scale_filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zvk::scaling {
namespace {

TEST(ScaleFilters, WindowsAndCapacities) {
  struct Expected {
    const ScaleFilter &filter;
    double window;
    int32_t horizontal;
    int32_t vertical;
  };
  for (const Expected &expected : {Expected{kTriangleFilter, 1.0, 4, 4},
                                   {kBoxFilter, 0.5, 2, 3},
                                   {kLanczos3Filter, 3.0, 8, 8},
                                   {kLanczos8Filter, 8.0, 18, 18},
                                   {kMitchellFilter, 2.0, 6, 6},
                                   {kPoly3Filter, 4.0, 10, 10},
                                   {kCubicFilter, 3.0, 8, 8}}) {
    EXPECT_EQ(expected.filter.FilterWindow, expected.window);
    EXPECT_EQ(expected.filter.HorizontalCapacity, expected.horizontal);
    EXPECT_EQ(expected.filter.VerticalCapacity, expected.vertical);
  }
}

TEST(ScaleFilters, TheCentreWeighsOneExceptWithMitchell) {
  for (const ScaleFilter *filter :
       {&kTriangleFilter, &kBoxFilter, &kLanczos3Filter, &kLanczos8Filter, &kPoly3Filter, &kCubicFilter}) {
    EXPECT_EQ(filter->FilterKernel(0.0), 1.0);
  }
  EXPECT_EQ(kMitchellFilter.FilterKernel(0.0), 5.333333333333333 / 6.0);
}

TEST(ScaleFilters, ADistanceOfOneIsZeroWithTriangleAndPoly3AndTinyWithTheOthers) {
  EXPECT_EQ(kTriangleFilter.FilterKernel(1.0), 0.0);
  EXPECT_EQ(kPoly3Filter.FilterKernel(1.0), 0.0);
  for (const ScaleFilter *filter : {&kLanczos3Filter, &kLanczos8Filter, &kCubicFilter}) {
    EXPECT_NE(filter->FilterKernel(1.0), 0.0);
    EXPECT_LT(std::abs(filter->FilterKernel(1.0)), 1e-15);
  }
  EXPECT_NEAR(kMitchellFilter.FilterKernel(1.0), 1.0 / 18.0, 1e-15);
}

TEST(ScaleFilters, BoxKeepsADistanceOfExactlyHalf) {
  EXPECT_EQ(kBoxFilter.FilterKernel(0.5), 1.0);
  EXPECT_EQ(kBoxFilter.FilterKernel(std::nextafter(0.5, 1.0)), 0.0);
}

TEST(ScaleFilters, KernelsEndAtTheirBounds) {
  EXPECT_NE(kTriangleFilter.FilterKernel(std::nextafter(1.0, 0.0)), 0.0);
  EXPECT_NE(kLanczos3Filter.FilterKernel(2.9), 0.0);
  EXPECT_EQ(kLanczos3Filter.FilterKernel(3.0), 0.0);
  EXPECT_NE(kLanczos8Filter.FilterKernel(7.9), 0.0);
  EXPECT_EQ(kLanczos8Filter.FilterKernel(8.0), 0.0);
  EXPECT_NE(kMitchellFilter.FilterKernel(1.9), 0.0);
  EXPECT_EQ(kMitchellFilter.FilterKernel(2.0), 0.0);
  EXPECT_NE(kPoly3Filter.FilterKernel(1.9), 0.0);
  EXPECT_EQ(kPoly3Filter.FilterKernel(2.0), 0.0);
  EXPECT_EQ(kPoly3Filter.FilterKernel(3.0), 0.0);  // inside its window, outside its kernel
  EXPECT_NE(kCubicFilter.FilterKernel(2.9), 0.0);
  EXPECT_EQ(kCubicFilter.FilterKernel(3.1), 0.0);
}

TEST(ScaleFilters, HandWorkedValues) {
  EXPECT_EQ(kTriangleFilter.FilterKernel(0.25), 0.75);
  // sinc(1.5) sinc(0.5) = (-2 / 3pi) (2 / pi)
  constexpr double kPi = 3.141592653589793;
  EXPECT_NEAR(kLanczos3Filter.FilterKernel(1.5), -4.0 / (3.0 * kPi * kPi), 1e-15);
  // sinc(4) is 0; sinc(0.5) sinc(1/16)
  EXPECT_NEAR(kLanczos8Filter.FilterKernel(4.0), 0.0, 1e-16);
  EXPECT_NEAR(kLanczos8Filter.FilterKernel(0.5), 2.0 / kPi * std::sin(kPi / 16.0) / (kPi / 16.0), 1e-15);
  // (7/8 - 3 + 16/3) / 6 and (-7/3 27/8 + 27 - 30 + 32/3) / 6
  EXPECT_NEAR(kMitchellFilter.FilterKernel(0.5), 77.0 / 144.0, 1e-15);
  EXPECT_NEAR(kMitchellFilter.FilterKernel(1.5), -5.0 / 144.0, 1e-15);
  EXPECT_EQ(kPoly3Filter.FilterKernel(0.5), 0.59375);
  EXPECT_EQ(kPoly3Filter.FilterKernel(1.5), -0.09375);
  // 1/6 - 7/12 + 1; -7/12 27/8 + 27/4 - 59/8 + 5/2; 1/12 125/8 - 25/6 + 35/8 - 3/2
  EXPECT_NEAR(kCubicFilter.FilterKernel(0.5), 7.0 / 12.0, 1e-15);
  EXPECT_NEAR(kCubicFilter.FilterKernel(1.5), -3.0 / 32.0, 1e-15);
  EXPECT_NEAR(kCubicFilter.FilterKernel(2.5), 1.0 / 96.0, 1e-15);
}

TEST(ScaleFilters, CubicBoundsBelongToTheLowerInterval) {
  EXPECT_EQ(kCubicFilter.FilterKernel(1.0), 1.3333333333333333 - 2.3333333333333335 + 1.0);
  EXPECT_EQ(kCubicFilter.FilterKernel(2.0), -0.5833333333333334 * 8.0 + 3.0 * 4.0 - 4.916666666666667 * 2.0 + 2.5);
  EXPECT_EQ(kCubicFilter.FilterKernel(3.0), 0.08333333333333333 * 27.0 - 0.6666666666666666 * 9.0 + 1.75 * 3.0 - 1.5);
}

TEST(ScaleFilters, NotANumberIsOutside) {
  for (const ScaleFilter *filter : {&kTriangleFilter, &kBoxFilter, &kLanczos3Filter, &kLanczos8Filter, &kMitchellFilter,
                                    &kPoly3Filter, &kCubicFilter}) {
    EXPECT_EQ(filter->FilterKernel(std::numeric_limits<double>::quiet_NaN()), 0.0);
  }
}

}  // namespace
}  // namespace zvk::scaling
