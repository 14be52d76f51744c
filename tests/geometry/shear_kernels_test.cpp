#include "geometry/shear_kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/geometry/turn_testing.h"
#include "tests/support/cpu_levels.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;

// Weights of every kind: 0 and 1, all fractions of small numbers and their neighbours among the doubles, where products
// are rounded to whole numbers and just not, and random ones.
std::vector<double> Weights() {
  std::vector<double> weights = {0.0, 1.0, 1e-300, 5e-324, 1.0 / 65536, 1.0 / 65537, 65535.0 / 65536};
  for (int d = 2; d <= 255; ++d) {
    for (int n = 1; n <= d; n += 1 + d / 8) {
      double below = static_cast<double>(n) / d;
      double above = below;
      weights.push_back(below);
      for (int i = 0; i < 3; ++i) {
        weights.push_back(below = std::nextafter(below, 0.0));
        if (above < 1.0) weights.push_back(above = std::nextafter(above, 1.0));
      }
    }
  }
  std::minstd_rand random(1);
  for (int i = 0; i < 3000; ++i) weights.push_back(random() / 2147483647.0);
  return weights;
}

TEST(ShearKernels, AShareIsTheTruncatedProduct) {
  EXPECT_EQ(ShareOf(255, 0.5), 127);
  EXPECT_EQ(ShareOf(200, 0.999), 199);
  EXPECT_EQ(ShareOf(255, 1.0), 255);
  EXPECT_EQ(ShareOf(3, 1.0 / 3), 1);  // the product is rounded to 1
  EXPECT_EQ(ShareOf(255, 0.0), 0);
}

TEST(ShearKernels, TheEndOfALineIsTheRestOfTheBackgroundAndTheLastShare) {
  EXPECT_EQ(LastSample(40, 50, 0.25), 80);  // 40 - (10 - 50)
  EXPECT_EQ(LastSample(255, 0, 0.5), 127);  // 255 - 127.5
  EXPECT_EQ(LastSample(0, 13, 0.7), 13);
  EXPECT_EQ(LastSample(255, 255, 1.0), 255);
}

TEST(ShearKernels, AFractionGivesTheSharesOfItsWeight) {
  int withFraction = 0;
  const std::vector<double> weights = Weights();
  for (const double weight : weights) {
    const ShareWeight share(weight);
    EXPECT_EQ(share.weight, weight);
    if (share.fraction == 0) continue;
    ++withFraction;
    for (int sample = 0; sample < 256; ++sample) {
      ASSERT_EQ(sample * share.fraction >> 16, static_cast<int>(sample * weight)) << weight << ' ' << sample;
    }
  }
  EXPECT_GT(withFraction, static_cast<int>(weights.size()) / 2);
}

TEST(ShearKernels, RandomWeightsHaveFractions) {
  std::minstd_rand random(2);
  for (int i = 0; i < 10000; ++i) EXPECT_NE(ShareWeight(random() / 2147483648.0).fraction, 0);
  EXPECT_NE(ShareWeight(0.0).fraction, 0);
  EXPECT_EQ(ShareWeight(1.0).fraction, 0);
  EXPECT_EQ(ShareWeight(std::numeric_limits<double>::quiet_NaN()).fraction, 0);
}

TEST(ShearKernels, AlongALineEverySampleGivesItsShareToTheNext) {
  for (const double weight : Weights()) {
    for (const int step : {1, 2, 3, 4, 5}) {
      const int count = 41;
      const Bytes line = Noise(count + step, static_cast<uint32_t>(weight * 1000) + step);
      const ShareWeight share(weight);
      Bytes made(count + 2, 0xEE);
      ShearAlong(line.data() + step, step, count, share, made.data() + 1);
      Bytes expected(count + 2, 0xEE);
      for (int i = 0; i < count; ++i) {
        const int given = static_cast<int>(line[i + step] * weight), taken = static_cast<int>(line[i] * weight);
        expected[i + 1] = static_cast<uint8_t>(line[i + step] + taken - given);
      }
      ASSERT_EQ(made, expected) << weight;
      if (share.fraction == 0) continue;
      ForEachForm(ShearByFraction, [&](auto shear) {
        made.assign(count + 2, 0xEE);
        shear(line.data() + step, step, count, share.fraction, made.data() + 1);
        EXPECT_EQ(made, expected) << weight;
      });
    }
  }
}

TEST(ShearKernels, AcrossLinesEverySampleHasAWeightOfItsOwn) {
  std::minstd_rand random(3);
  for (int count = 0; count <= 150; ++count) {
    std::vector<double> weights;
    std::vector<uint16_t> fractions;
    for (int i = 0; i < count; ++i) {
      weights.push_back(random() / 2147483648.0);
      fractions.push_back(ShareWeight(weights.back()).fraction);
    }
    const Bytes line = Noise(count, count), before = Noise(count, count + 1000);
    Bytes expected(count), expectedShares(count);
    for (int i = 0; i < count; ++i) {
      expectedShares[i] = static_cast<uint8_t>(line[i] * weights[i]);
      expected[i] = static_cast<uint8_t>(line[i] + before[i] - expectedShares[i]);
    }
    Bytes made(count), shares = before;
    ShearAcrossByWeights(line.data(), count, weights.data(), shares.data(), made.data());
    EXPECT_EQ(made, expected);
    EXPECT_EQ(shares, expectedShares);
    ForEachForm(ShearAcrossByFractions, [&](auto shear) {
      made.assign(count, 0);
      shares = before;
      shear(line.data(), count, fractions.data(), shares.data(), made.data());
      EXPECT_EQ(made, expected);
      EXPECT_EQ(shares, expectedShares);
    });
  }
}

}  // namespace
}  // namespace zvk::geometry
