#include "scaling/digit_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "scaling/scale_filters.h"
#include "tests/naive/scale.h"
#include "tests/scenes/random.h"

namespace zvk::scaling {
namespace {

using Bytes = std::vector<uint8_t>;

class DigitKernels : public testing::Test {
 protected:
  void SetUp() override {
    if (!HasDigitSums()) GTEST_SKIP() << "not on this machine, or not at this level";
  }
};

// Sixteen rows of noise.
struct NoiseRows {
  NoiseRows(size_t size, uint32_t seed) : bytes(scenes::Noise(size * kLanes, seed)) {
    for (size_t row = 0; row < kLanes; ++row) rows[row] = bytes.data() + row * size;
  }
  Bytes bytes;
  std::array<const uint8_t *, kLanes> rows{};
};

std::vector<uint32_t> Staged(const NoiseRows &noise, int32_t pixelSize, const std::vector<int32_t> &places,
                             int32_t from, int32_t end) {
  const auto samples = static_cast<int32_t>(places.size());
  std::vector<uint32_t> quads(static_cast<size_t>((end - from + kMostStaged) / kColumnsOfQuad * samples * kLanes));
  QuadStage stage{noise.rows.data(), 0, pixelSize, *std::ranges::max_element(places) + 1, samples, {}, from, end,
                  quads.data()};
  std::ranges::copy(places, stage.places.begin());
  StageQuads(stage);
  return quads;
}

TEST_F(DigitKernels, FourColumnsOfASampleStandInANumberThoseOfAllRowsSideBySide) {
  for (const auto &[pixelSize, places] : {std::pair{1, std::vector<int32_t>{0}},
                                          {2, {1}},
                                          {3, {0, 1, 2}},
                                          {4, {3, 0, 1, 2}},
                                          {5, {4, 3, 2, 1, 0}},
                                          {8, {7, 1}}}) {
    const auto samples = static_cast<int32_t>(places.size());
    for (const auto &[from, end] : {std::pair{0, 1}, {0, 90}, {4, 85}, {8, 72}}) {
      // The rows end with the last pixel.
      const NoiseRows noise(static_cast<size_t>(end * pixelSize), 1);
      const std::vector<uint32_t> quads = Staged(noise, pixelSize, places, from, end);
      for (int32_t x = from; x < end; ++x) {
        const int32_t quad = (x - from) / kColumnsOfQuad, column = (x - from) % kColumnsOfQuad;
        for (int32_t s = 0; s < samples; ++s) {
          for (int32_t row = 0; row < kLanes; ++row) {
            ASSERT_EQ(quads[(quad * samples + s) * kLanes + row] >> 8 * column & 255,
                      noise.rows[row][x * pixelSize + places[s]]);
          }
        }
      }
    }
  }
}

void ExpectToldColumns(const std::vector<ScaleTapList> &lists, int32_t samples, double rounding, const NoiseRows &noise,
                       int32_t pixels) {
  const DigitLists digits(lists, rounding);
  ASSERT_TRUE(digits);
  const auto count = static_cast<int32_t>(lists.size());
  const int32_t stride = samples + 1;
  std::vector<int32_t> places;
  for (int32_t s = 0; s < samples; ++s) places.push_back(s);
  Bytes expected(static_cast<size_t>(count * stride * kLanes), 77);
  for (int32_t x = 0; x < count; ++x) {
    for (int32_t s = 0; s < samples; ++s) {
      for (int32_t row = 0; row < kLanes; ++row) {
        double sum = 0.0;
        for (int32_t t = 0; t < lists[x].TapCount; ++t) {
          sum += noise.rows[row][lists[x].Taps[t].SourceIndex * samples + s] * double{lists[x].Taps[t].Weight};
        }
        // The values stand in reverse order behind a byte that is left alone.
        expected[(x * stride + samples - s) * kLanes + row] =
            static_cast<uint8_t>(naive::Finished(sum, lists[x].WeightSum, rounding, false));
      }
    }
  }
  const std::vector<uint32_t> quads = Staged(noise, samples, places, 0, pixels);
  Bytes made(expected.size(), 77);
  DigitColumns columns{&digits, rounding, 0, count, quads.data(), 0, made.data(), stride, {}};
  for (int32_t s = 0; s < samples; ++s) columns.place[s] = samples - s;
  SumDigitColumns(columns, samples);
  ASSERT_EQ(made, expected) << samples << " samples, rounding " << rounding;
}

TEST_F(DigitKernels, SumsAreTheToldOnesWithEveryFilterOfNoiseAndOfFlatAreas) {
  for (int32_t mode = ScaleTriangle; mode <= ScaleCubic; ++mode) {
    for (const auto &[from, to] : {std::pair{200, 50}, {200, 63}, {50, 200}, {97, 101}, {3, 40}, {400, 3}}) {
      ScaleTapTable table;
      ASSERT_TRUE(
          table.Build(*FindScaleFilter(mode), kHorizontalAxis, to, static_cast<double>(to) / from, from, nullptr));
      const std::vector<ScaleTapList> lists(table.Lists(), table.Lists() + to);
      for (int32_t samples = 1; samples <= kMostValues; ++samples) {
        NoiseRows noise(static_cast<size_t>(from * samples), static_cast<uint32_t>(mode));
        for (const double rounding : {0.5, 0.0}) ExpectToldColumns(lists, samples, rounding, noise, from);
        for (const uint8_t level : {0, 1, 128, 255}) {
          std::ranges::fill(noise.bytes, level);
          ExpectToldColumns(lists, samples, 0.0, noise, from);
        }
      }
    }
  }
}

TEST_F(DigitKernels, ListsWithoutTapsWithGapsBackwardsOrTooHeavyAreTheToldOnes) {
  std::vector<ScaleTap> taps = {{0.3F, 5}, {0.7F, 9}, {1.0F, 0}, {-1.0F, 1},
                                {1e9F, 2}, {0.0F, 3}, {2.0F, 7}, {0.5F, 6}};
  const std::vector<ScaleTapList> lists = {{taps.data(), 2, 1.0F},      {nullptr, 0, 0.0F},
                                           {taps.data() + 2, 2, 0.0F},  {taps.data() + 4, 3, 1.0F},
                                           {taps.data() + 7, 1, -0.5F}, {taps.data(), 1, 0.3F}};
  for (int32_t samples = 1; samples <= kMostValues; ++samples) {
    ExpectToldColumns(lists, samples, 0.5, NoiseRows(static_cast<size_t>(20 * samples), 4), 20);
  }
}

}  // namespace
}  // namespace zvk::scaling
