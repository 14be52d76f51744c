#include "scaling/short_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "scaling/scale_filters.h"
#include "tests/naive/scale.h"
#include "tests/scenes/random.h"
#include "tests/support/cpu_levels.h"

namespace zvk::scaling {
namespace {

using Bytes = std::vector<uint8_t>;

// Sixteen rows of noise.
struct NoiseRows {
  NoiseRows(size_t size, uint32_t seed) : bytes(scenes::Noise(size * kLanes, seed)) {
    for (size_t row = 0; row < kLanes; ++row) rows[row] = bytes.data() + row * size;
  }
  Bytes bytes;
  std::array<const uint8_t *, kLanes> rows{};
};

TEST(ShortKernels, StagedBytesOfAllRowsStandSideBySideLess128) {
  for (const ptrdiff_t count : {0, 1, 15, 16, 17, 48, 100}) {
    const NoiseRows noise(130, 4);
    ForEachForm(StageRows, [&](auto stage) {
      std::vector<float> staged(static_cast<size_t>(count + 1) * kLanes, 999.0F);
      stage(noise.rows.data(), 7, count, staged.data());
      for (ptrdiff_t i = 0; i < count; ++i) {
        for (int32_t row = 0; row < kLanes; ++row) ASSERT_EQ(staged[i * kLanes + row], noise.rows[row][7 + i] - 128.0F);
      }
      EXPECT_EQ(staged[static_cast<size_t>(count) * kLanes], 999.0F);
    });
  }
}

TEST(ShortKernels, APlaneStandsInBlocksBesideTheOthersLess128) {
  const Bytes plane = scenes::Noise(48, 7);
  ForEachForm(StagePlane, [&](auto stage) {
    std::vector<float> staged(3 * 2 * kLanes, 999.0F);
    stage({plane.data(), 48, staged.data() + kLanes, 2});
    for (ptrdiff_t i = 0; i < 48; ++i) {
      ASSERT_EQ(staged[i / kLanes * 2 * kLanes + kLanes + i % kLanes], plane[i] - 128.0F);
      ASSERT_EQ(staged[i / kLanes * 2 * kLanes + i % kLanes], 999.0F);
    }
  });
}

TEST(ShortKernels, ColumnsGoBackToTheirRows) {
  for (const ptrdiff_t count : {0, 1, 15, 16, 33, 64}) {
    const Bytes columns = scenes::Noise(static_cast<size_t>(count) * kLanes, 5);
    ForEachForm(TurnToRows, [&](auto turn) {
      std::vector<Bytes> made(kLanes, Bytes(static_cast<size_t>(count) + 1, 77));
      std::array<uint8_t *, kLanes> rows{};
      for (size_t row = 0; row < kLanes; ++row) rows[row] = made[row].data();
      turn(columns.data(), count, rows.data());
      for (size_t row = 0; row < kLanes; ++row) {
        for (ptrdiff_t i = 0; i < count; ++i)
          ASSERT_EQ(made[row][i], columns[i * kLanes + static_cast<ptrdiff_t>(row)]);
        EXPECT_EQ(made[row].back(), 77);
      }
    });
  }
}

TEST(ShortKernels, GrayIsMixedOfThreePlacesAndAlphaIsTakenOver) {
  std::vector<float> staged(4 * 5 * kLanes);
  std::mt19937 random(6);
  for (float &sample : staged) sample = static_cast<float>(random() % 256) - 128.0F;
  ForEachForm(MixGray, [&](auto mixGray) {
    for (const int32_t mixedChannels : {1, 2}) {
      std::vector<float> mixed(5 * 2 * kLanes, 999.0F);
      mixGray({staged.data(), 4, {2, 0, 3}, 1, mixed.data(), mixedChannels, 5});
      for (ptrdiff_t x = 0; x < 5; ++x) {
        for (ptrdiff_t i = 0; i < kLanes; ++i) {
          const float *column = &staged[x * 4 * kLanes + i];
          const double gray = 0.3 * column[2 * kLanes] + 0.59 * column[0] + 0.11 * column[3 * kLanes];
          ASSERT_NEAR(mixed[x * mixedChannels * kLanes + i], gray, kRoundingsOfGray * 128.0 * 0x1p-24);
          if (mixedChannels == 2) {
            ASSERT_EQ(mixed[(x * 2 + 1) * kLanes + i], column[kLanes]);
          }
        }
      }
    }
  });
}

// --- sums ---

// The lists of a scale, as ScaleTapTable builds them, and some that it never does.
std::vector<ScaleTapList> ListsOf(ScaleTapTable &table, int32_t mode, int32_t from, int32_t to) {
  EXPECT_TRUE(table.Build(*FindScaleFilter(mode), kHorizontalAxis, to, static_cast<double>(to) / from, from, nullptr));
  return {table.Lists(), table.Lists() + to};
}

// Every form of the sums of one row against the same expected bytes: of each of the rows by itself.
void ExpectToldDots(const std::vector<ScaleTapList> &lists, int32_t channels, int32_t values, bool mixed,
                    double rounding, const NoiseRows &noise, int32_t pixels, const Bytes &expected) {
  const ShortLists shortLists(lists, {rounding, kLanes, mixed ? kRoundingsOfGray : 0, kLanes});
  ASSERT_TRUE(shortLists);
  const auto count = static_cast<int32_t>(lists.size());
  const int32_t stride = values + 1, blocks = (pixels + kLanes - 1) / kLanes;
  ForEachForm(ShortDots, [&](auto sumDots) {
    for (ptrdiff_t row = 0; row < kLanes; ++row) {
      std::vector<float> staged(static_cast<size_t>(blocks * channels * kLanes));
      std::vector<float> mixedSamples(static_cast<size_t>(blocks * 2 * kLanes));
      for (int32_t x = 0; x < blocks * kLanes; ++x) {
        // Behind the last pixel anything may stand.
        for (int32_t c = 0; c < channels; ++c) {
          staged[(x / kLanes * channels + c) * kLanes + x % kLanes] =
              x < pixels ? noise.rows[row][x * channels + c] - 128.0F : 99.0F;
        }
      }
      const GrayMix mix{staged.data(), channels, {0, 1, 2}, 3, mixedSamples.data(), values, blocks};
      if (mixed) MixGray.At(pixels::CpuLevel::Baseline)(mix);
      Bytes made(static_cast<size_t>(count * stride), 77);
      ShortColumns columns{.lists = &shortLists,
                           .rounding = rounding,
                           .first = 0,
                           .end = count,
                           .staged = mixed ? mixedSamples.data() : staged.data(),
                           .firstColumn = 0,
                           .channels = mixed ? values : channels,
                           .from = {0, 1, 2, 3, 4},
                           .values = made.data(),
                           .stride = stride,
                           .place = {},
                           .mix = mixed ? &mix : nullptr};
      for (int32_t v = 0; v < values; ++v) columns.place[v] = values - v;
      sumDots(columns, values);
      for (int32_t i = 0; i < count * stride; ++i) ASSERT_EQ(made[i], expected[i * kLanes + row]) << i;
    }
  });
}

// Every form against the told sum, over rows of `pixels` pixels of `channels` bytes.
void ExpectToldColumns(const std::vector<ScaleTapList> &lists, int32_t channels, int32_t values, bool mixed,
                       double rounding, const NoiseRows &noise, int32_t pixels) {
  const ShortLists shortLists(lists, {rounding, ColumnChains(values), mixed ? kRoundingsOfGray : 0});
  ASSERT_TRUE(shortLists);
  const auto count = static_cast<int32_t>(lists.size());
  const int32_t stride = values + 1;
  Bytes expected(static_cast<size_t>(count * stride * kLanes), 77);
  for (int32_t x = 0; x < count; ++x) {
    for (int32_t row = 0; row < kLanes; ++row) {
      for (int32_t v = 0; v < values; ++v) {
        double sum = 0.0;
        for (int32_t t = 0; t < lists[x].TapCount; ++t) {
          const uint8_t *pixel = noise.rows[row] + lists[x].Taps[t].SourceIndex * channels;
          const double w = lists[x].Taps[t].Weight;
          if (mixed && v == 0) {
            sum += (pixel[2] * 0.11 * w) + ((pixel[1] * 0.59 * w) + (pixel[0] * 0.3 * w));
          } else {
            sum += pixel[mixed ? 3 : v] * w;
          }
        }
        // The values stand in reverse order behind a byte that is left alone.
        expected[(x * stride + values - v) * kLanes + row] =
            static_cast<uint8_t>(naive::Finished(sum, lists[x].WeightSum, rounding, false));
      }
    }
  }
  ForEachForm(ShortColumnSums, [&](auto sumColumns) {
    std::vector<float> staged(static_cast<size_t>((pixels + kMostChains) * channels * kLanes));
    std::vector<float> mixedSamples(static_cast<size_t>((pixels + kMostChains) * 2 * kLanes));
    StageRows.At(pixels::CpuLevel::Baseline)(noise.rows.data(), 0, ptrdiff_t{pixels} * channels, staged.data());
    const GrayMix mix{staged.data(), channels, {0, 1, 2}, 3, mixedSamples.data(), values, pixels};
    if (mixed) MixGray.At(pixels::CpuLevel::Baseline)(mix);
    Bytes made(expected.size(), 77);
    ShortColumns columns{.lists = &shortLists,
                         .rounding = rounding,
                         .first = 0,
                         .end = count,
                         .staged = mixed ? mixedSamples.data() : staged.data(),
                         .firstColumn = 0,
                         .channels = mixed ? values : channels,
                         .from = {},
                         .values = made.data(),
                         .stride = stride,
                         .place = {},
                         .mix = mixed ? &mix : nullptr};
    for (int32_t v = 0; v < values; ++v) {
      columns.from[v] = v;
      columns.place[v] = values - v;
    }
    sumColumns(columns, values);
    ASSERT_EQ(made, expected) << channels << " channels, " << values << " values, rounding " << rounding;
  });
  ExpectToldDots(lists, channels, values, mixed, rounding, noise, pixels, expected);
}

class ShortColumnsOf : public testing::TestWithParam<int32_t> {};
INSTANTIATE_TEST_SUITE_P(EveryFilter, ShortColumnsOf, testing::Range<int32_t>(ScaleTriangle, ScaleCubic + 1));

TEST_P(ShortColumnsOf, AreTheToldOnes) {
  for (const auto &[from, to] : {std::pair{200, 50}, {200, 63}, {50, 200}, {97, 101}, {3, 40}, {400, 3}}) {
    ScaleTapTable table;
    const auto lists = ListsOf(table, GetParam(), from, to);
    for (const double rounding : {0.5, 0.0}) {
      for (int32_t values = 1; values <= kMostValues; ++values) {
        const NoiseRows noise(static_cast<size_t>(from) * kMostValues, static_cast<uint32_t>(values));
        ExpectToldColumns(lists, values, values, false, rounding, noise, from);
      }
      const NoiseRows noise(static_cast<size_t>(from) * 4, 9);
      ExpectToldColumns(lists, 4, 2, true, rounding, noise, from);
      ExpectToldColumns(lists, 3, 1, true, rounding, noise, from);
    }
  }
}

TEST_P(ShortColumnsOf, OfFlatAreasAreTheToldOnes) {
  ScaleTapTable table;
  const auto lists = ListsOf(table, GetParam(), 120, 41);
  for (const int32_t level : {0, 1, 77, 128, 254, 255}) {
    NoiseRows flat(120 * 3, 1);
    std::ranges::fill(flat.bytes, static_cast<uint8_t>(level));
    for (const double rounding : {0.5, 0.0}) {
      ExpectToldColumns(lists, 3, 3, false, rounding, flat, 120);
      ExpectToldColumns(lists, 3, 1, true, rounding, flat, 120);
      // One sample is another one, so that a group is not flat.
      flat.bytes[100] = 3;
      ExpectToldColumns(lists, 3, 3, false, rounding, flat, 120);
      flat.bytes[100] = static_cast<uint8_t>(level);
    }
  }
}

TEST(ShortColumnsOfOddLists, WithoutTapsWithGapsBackwardsOrWithoutASumAreTheToldOnes) {
  std::vector<ScaleTap> taps = {{0.3F, 5}, {0.7F, 9}, {1.0F, 0},   {-1.0F, 1}, {1e9F, 2},
                                {0.0F, 3}, {2.0F, 7}, {1e-30F, 4}, {0.5F, 6}};
  const std::vector<ScaleTapList> lists = {{taps.data(), 2, 1.0F},      {nullptr, 0, 0.0F},
                                           {taps.data() + 2, 2, 0.0F},  {taps.data() + 4, 3, 1.0F},
                                           {taps.data() + 7, 2, -0.5F}, {taps.data(), 1, 0.3F}};
  for (int32_t values = 1; values <= kMostValues; ++values) {
    const NoiseRows noise(20 * kMostValues, 3);
    ExpectToldColumns(lists, values, values, false, 0.5, noise, 20);
  }
}

// Every form of the row sums against the told ones: samples of temp pixels of `bytes` bytes at the places.
void ExpectToldRows(int32_t mode, int32_t from, int32_t to, int32_t bytes, const std::vector<int32_t> &places,
                    int32_t count) {
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(mode), kVerticalAxis, to, static_cast<double>(to) / from, from, nullptr));
  const std::vector<ScaleTapList> lists(table.Lists(), table.Lists() + to);
  const ShortLists shortLists(lists, {0.5, 1});
  const auto samples = static_cast<int32_t>(places.size());
  const size_t rowSize = static_cast<size_t>(count / samples * bytes);
  const Bytes noise = scenes::Noise(rowSize * static_cast<size_t>(from), 8);
  std::vector<const uint8_t *> rows;
  for (int32_t y = 0; y < from; ++y) rows.push_back(noise.data() + rowSize * static_cast<size_t>(y));
  std::vector<Bytes> expected(static_cast<size_t>(to), Bytes(static_cast<size_t>(count)));
  int32_t ringRows = 1, reach = 0;
  for (int32_t y = 0; y < to; ++y) {
    if (shortLists[y].count > 0) reach = std::max(reach, shortLists[y].source + shortLists[y].count);
    while (ringRows < reach - shortLists[y].source) ringRows *= 2;
    for (int32_t i = 0; i < count; ++i) {
      const ptrdiff_t at = i / samples * bytes + places[i % samples];
      double sum = 0.0;
      for (int32_t t = 0; t < lists[y].TapCount; ++t) {
        sum += rows[lists[y].Taps[t].SourceIndex][at] * double{lists[y].Taps[t].Weight};
      }
      expected[y][i] = static_cast<uint8_t>(naive::Finished(sum, lists[y].WeightSum, 0.5, false));
    }
  }
  ForEachForm(ShortRowSums, [&](auto sumRows) {
    std::vector<float> ring(static_cast<size_t>(ringRows * kBlockSamples));
    std::vector<Bytes> made(static_cast<size_t>(to), Bytes(kBlockSamples));
    std::vector<uint8_t *> made_rows;
    for (Bytes &row : made) made_rows.push_back(row.data());
    ShortRows job{.lists = &shortLists,
                  .first = 0,
                  .end = to,
                  .rows = rows.data(),
                  .lastRow = from - 1,
                  .at = 0,
                  .bytes = bytes,
                  .samples = samples,
                  .places = {},
                  .count = count,
                  .ring = ring.data(),
                  .ringRows = ringRows,
                  .to = made_rows.data()};
    std::ranges::copy(places, job.places.begin());
    sumRows(job);
    for (int32_t y = 0; y < to; ++y) {
      ASSERT_TRUE(std::equal(expected[y].begin(), expected[y].end(), made[y].begin())) << "row " << y;
    }
  });
}

class ShortRowsOf : public testing::TestWithParam<int32_t> {};
INSTANTIATE_TEST_SUITE_P(EveryFilter, ShortRowsOf, testing::Range<int32_t>(ScaleTriangle, ScaleCubic + 1));

TEST_P(ShortRowsOf, AreTheToldOnes) {
  for (const auto &[from, to] : {std::pair{100, 30}, {30, 100}, {41, 41}, {5, 64}, {300, 7}}) {
    ExpectToldRows(GetParam(), from, to, 1, {0}, 96);
    ExpectToldRows(GetParam(), from, to, 1, {0}, 37);
    ExpectToldRows(GetParam(), from, to, 4, {0, 1, 2}, 96);
    ExpectToldRows(GetParam(), from, to, 4, {0, 1, 2}, 33);
    ExpectToldRows(GetParam(), from, to, 4, {1}, 96);
    ExpectToldRows(GetParam(), from, to, 4, {1, 3}, 50);
    ExpectToldRows(GetParam(), from, to, 2, {0}, 96);
  }
}

}  // namespace
}  // namespace zvk::scaling
