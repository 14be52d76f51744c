#include "scaling/scale_kernels.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>

namespace zvk::scaling {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(ScaleKernels, AValueIsRoundedByTruncationAfterAHalfIsAdded) {
  EXPECT_EQ(Finish<uint8_t>(37.49, 1.0, 0.5), 37);
  EXPECT_EQ(Finish<uint8_t>(37.5, 1.0, 0.5), 38);
  EXPECT_EQ(Finish<uint8_t>(75.0, 2.0, 0.5), 38);
  EXPECT_EQ(Finish<uint8_t>(37.99, 1.0, 0.0), 37);
  EXPECT_EQ(Finish<uint16_t>(40000.5, 1.0, 0.5), 40001);
}

TEST(ScaleKernels, AValueIsCutToWhatASampleHolds) {
  EXPECT_EQ(Finish<uint8_t>(-0.4, 1.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(-1.6, 1.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(255.4, 1.0, 0.5), 255);
  EXPECT_EQ(Finish<uint8_t>(256.0, 1.0, 0.5), 255);
  EXPECT_EQ(Finish<uint8_t>(65536.0, 1.0, 0.5), 255);
  EXPECT_EQ(Finish<uint16_t>(65536.0, 1.0, 0.5), 65535);
}

TEST(ScaleKernels, NotANumberAndWhatIs32BitsTooLargeGiveZeroAndNot255) {
  EXPECT_EQ(Finish<uint8_t>(0.0, 0.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(kNaN, 1.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(1.0, 0.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(-1.0, 0.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(kInfinity, 1.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(2147483648.0, 1.0, 0.0), 0);
  EXPECT_EQ(Finish<uint8_t>(2147483647.0, 1.0, 0.0), 255);
  EXPECT_EQ(Finish<uint16_t>(2147483647.6, 1.0, 0.5), 0);
}

TEST(ScaleKernels, GrayIsBlueThenGreenAndRed) {
  // Chosen so that another order of the sums, or one product for each part, comes out differently.
  int32_t otherwise = 0;
  std::mt19937 random(5);
  for (int32_t i = 0; i < 1000; ++i) {
    const double r = random() % 256, g = random() % 256, b = random() % 256;
    const double w = static_cast<float>(random()) / 4e9f;
    const double start = random() % 1000 / 7.0;
    double sum = start;
    const double samples[] = {r * SamplePart<ScaleValues::kGrayOfColour>(0),
                              g * SamplePart<ScaleValues::kGrayOfColour>(1),
                              b * SamplePart<ScaleValues::kGrayOfColour>(2)};
    AddTap<3, ScaleValues::kGrayOfColour, 1>(samples, w, &sum);
    ASSERT_EQ(sum, start + ((b * 0.11 * w) + ((g * 0.59 * w) + (r * 0.3 * w))));
    otherwise += sum != start + r * 0.3 * w + g * 0.59 * w + b * 0.11 * w;
  }
  EXPECT_GT(otherwise, 0);
}

}  // namespace
}  // namespace zvk::scaling
