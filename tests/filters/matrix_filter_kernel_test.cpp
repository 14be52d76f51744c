#include "filters/matrix_filter_kernel.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/fence.h"

namespace zvk::filters {
namespace {

// One sample under each weight, summed and shifted so that the sum is seen: result(sum) is sum - expected + 100.
void ExpectSum(const std::vector<int32_t> &weights, const std::vector<uint8_t> &samples, int32_t expected) {
  std::vector<MatrixTerm> terms;
  std::vector<WeightedLine> lines;
  for (size_t i = 0; i < weights.size(); ++i) {
    terms.push_back({0, static_cast<int32_t>(i), weights[i]});
    lines.push_back({&samples[i], weights[i]});
  }
  const MatrixResult result{100 - expected, 1.0}, doubled{100 - expected, 2.0};
  uint8_t byte = 0;
  MatrixSums(terms, result)(lines, 1, &byte);
  EXPECT_EQ(byte, 100) << expected;
  MatrixSums(terms, doubled)(lines, 1, &byte);
  EXPECT_EQ(byte, 200) << expected;
}

TEST(MatrixSums, TheExtremesOfEverySumThat16BitsHoldJustOrNotAnyMore) {
  for (int32_t above = 250; above <= 262; ++above) {
    const int32_t rest = above - 200;
    ExpectSum({200, rest}, {255, 255}, 255 * above);
    ExpectSum({200, rest}, {0, 0}, 0);
    ExpectSum({-200, -rest}, {255, 255}, -255 * above);
    ExpectSum({-200, rest}, {255, 0}, -255 * 200);
    ExpectSum({-200, rest}, {0, 255}, 255 * rest);
  }
  ExpectSum({254, 254, -100000}, {255, 255, 255}, 255 * (508 - 100000));
}

TEST(MatrixSums, ALineMayBeMissing) {
  const std::vector<MatrixTerm> terms = {{0, 0, -3}, {1, 0, 5}};
  const uint8_t sample = 20;
  const std::vector<WeightedLine> one = {{&sample, 5}}, none = {};
  uint8_t byte = 0;
  const MatrixSums sum(terms, {7, 1.0});
  sum(one, 1, &byte);
  EXPECT_EQ(byte, 107);
  sum(none, 1, &byte);
  EXPECT_EQ(byte, 7);
}

// Scales around the one at which a white sample leaves 32 bits, and with it becomes 0.
TEST(MatrixSums, AScaleThatLeaves32BitsForSomeSumsDoesSoForThoseAlone) {
  std::vector<uint8_t> samples(256), bytes(256);
  for (size_t i = 0; i < 256; ++i) samples[i] = static_cast<uint8_t>(i);
  for (const int32_t weight : {1, -1, 250, -300}) {
    for (const int32_t delta : {0, 3, -500, INT32_MAX, INT32_MIN}) {
      const std::vector<MatrixTerm> terms = {{0, 0, weight}, {0, 1, -7}};
      const std::vector<WeightedLine> lines = {{samples.data(), weight}, {samples.data(), -7}};
      for (const double scale : {1.0, 0.001, -0.001, 1e-9, 8421504.0, 8421505.0, 33686.0, -33000.0, 1e6, -1e12}) {
        MatrixSums(terms, {delta, scale})(lines, 256, bytes.data());
        for (int32_t i = 0; i < 256; ++i) {
          // Wraps, as all sums do.
          const auto sum = static_cast<int32_t>(static_cast<uint32_t>(i * (weight - 7)) + static_cast<uint32_t>(delta));
          const double product = sum * scale;
          const int expected = product >= 2147483648.0 || product < 0 ? 0
                               : product > 255                        ? 255
                                                                      : static_cast<int>(product);
          ASSERT_EQ(bytes[static_cast<size_t>(i)], expected) << i << " x " << weight << " + " << delta << ", " << scale;
        }
      }
    }
  }
}

TEST(MatrixSums, EveryCountIsServedWithinItsBytes) {
  for (const int32_t weight : {2, 300, -300}) {
    for (size_t count = 1; count < 300; ++count) {
      const fence::Block first(count), second(count, fence::Side::kBefore), bytes(count),
          before(count, fence::Side::kBefore);
      for (size_t i = 0; i < count; ++i) {
        first.Data()[i] = static_cast<uint8_t>(i * 7);
        second.Data()[i] = static_cast<uint8_t>(i * 11 + 3);
      }
      const std::vector<MatrixTerm> terms = {{0, 0, weight}, {0, 1, -1}};
      const std::vector<WeightedLine> lines = {{first.Data(), weight}, {second.Data(), -1}};
      const MatrixSums sum(terms, {20, 0.25});
      sum(lines, static_cast<int64_t>(count), bytes.Data());
      sum(lines, static_cast<int64_t>(count), before.Data());
      for (size_t i = 0; i < count; ++i) {
        const int32_t quarter = (weight * first.Data()[i] - second.Data()[i] + 20) / 4;
        ASSERT_EQ(bytes.Data()[i], quarter < 0 ? 0 : quarter > 255 ? 255 : quarter) << count << ", " << i;
        ASSERT_EQ(before.Data()[i], bytes.Data()[i]);
      }
    }
  }
}

}  // namespace
}  // namespace zvk::filters
