// The short kernels for wide samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "scaling/scale_filters.h"
#include "scaling/short_kernels.h"
#include "tests/naive/scale.h"
#include "tests/scenes/random.h"
#include "tests/support/cpu_levels.h"

namespace zvk::scaling {
namespace {

using Bytes = std::vector<uint8_t>;

uint16_t WordAt(const uint8_t *address) {
  uint16_t word;
  std::memcpy(&word, address, sizeof word);
  return word;
}

// Sixteen rows of noise, one byte off their place.
struct WideRows {
  WideRows(size_t size, uint32_t seed) : bytes(scenes::Noise(size * kLanes + 1, seed)) {
    for (size_t row = 0; row < kLanes; ++row) rows[row] = bytes.data() + 1 + row * size;
  }
  Bytes bytes;
  std::array<const uint8_t *, kLanes> rows{};
};

TEST(WordKernels, SamplesOfAllRowsStandInPairsLess32768) {
  const WideRows noise(200, 1);
  ForEachForm(StageWords, [&](auto stage) {
    for (const ptrdiff_t pixelSize : {2, 3, 5}) {
      for (const int32_t count : {1, 2, 7, 8, 9, 33}) {
        std::vector<int32_t> pairs(static_cast<size_t>(count / 2 + 1) * kLanes, 99);
        stage({noise.rows.data(), 4, pixelSize, count, pairs.data()});
        for (int32_t i = 0; i < count; ++i) {
          for (int32_t row = 0; row < kLanes; ++row) {
            const auto sample = static_cast<int16_t>(pairs[i / 2 * kLanes + row] >> 16 * (i % 2));
            ASSERT_EQ(sample, WordAt(noise.rows[row] + 4 + i * pixelSize) - 32768);
          }
        }
        if (count % 2 == 0) {
          EXPECT_EQ(pairs[static_cast<size_t>(count / 2) * kLanes], 99);
        }
      }
    }
  });
}

TEST(WordKernels, ColumnsGoBackToTheirRows) {
  for (const ptrdiff_t count : {0, 1, 7, 8, 17, 24}) {
    const Bytes noise = scenes::Noise(static_cast<size_t>(count) * kLanes * 2, 2);
    std::vector<uint16_t> columns(static_cast<size_t>(count) * kLanes);
    std::ranges::transform(columns, columns.begin(),
                           [i = size_t{0}, &noise](uint16_t) mutable { return WordAt(&noise[2 * i++]); });
    ForEachForm(TurnWordsToRows, [&](auto turn) {
      std::vector<Bytes> made(kLanes, Bytes(static_cast<size_t>(count) * 2 + 1, 77));
      std::array<uint8_t *, kLanes> rows{};
      for (size_t row = 0; row < kLanes; ++row) rows[row] = made[row].data();
      turn(columns.data(), count, rows.data());
      for (size_t row = 0; row < kLanes; ++row) {
        for (ptrdiff_t i = 0; i < count; ++i) {
          ASSERT_EQ(WordAt(&made[row][2 * i]), columns[i * kLanes + static_cast<ptrdiff_t>(row)]);
        }
        EXPECT_EQ(made[row].back(), 77);
      }
    });
  }
}

// --- sums ---

uint16_t ToldWord(double sum, const ScaleTapList &list, double rounding) {
  return static_cast<uint16_t>(naive::Finished(sum, list.WeightSum, rounding, true));
}

void ExpectToldColumns(const std::vector<ScaleTapList> &lists, double rounding, const WideRows &noise,
                       int32_t columns) {
  const WordLists words(lists, rounding);
  ASSERT_TRUE(words);
  const auto count = static_cast<int32_t>(lists.size());
  std::vector<uint16_t> expected(static_cast<size_t>(count) * kLanes);
  for (int32_t x = 0; x < count; ++x) {
    for (int32_t row = 0; row < kLanes; ++row) {
      double sum = 0.0;
      for (int32_t t = 0; t < lists[x].TapCount; ++t) {
        sum += WordAt(noise.rows[row] + lists[x].Taps[t].SourceIndex * 2) * double{lists[x].Taps[t].Weight};
      }
      expected[x * kLanes + row] = ToldWord(sum, lists[x], rounding);
    }
  }
  ForEachForm(SumWordColumns, [&](auto sumColumns) {
    std::vector<int32_t> pairs(static_cast<size_t>(columns / 2 + 1) * kLanes);
    StageWords.At(pixels::CpuLevel::Baseline)({noise.rows.data(), 0, 2, columns, pairs.data()});
    std::vector<uint16_t> made(expected.size());
    sumColumns({&words, rounding, 0, count, pairs.data(), 0, made.data()});
    ASSERT_EQ(made, expected);
  });
}

class WordColumnsOf : public testing::TestWithParam<int32_t> {};
INSTANTIATE_TEST_SUITE_P(EveryFilter, WordColumnsOf, testing::Range<int32_t>(ScaleTriangle, ScaleCubic + 1));

TEST_P(WordColumnsOf, AreTheToldOnes) {
  for (const auto &[from, to] : {std::pair{200, 50}, {201, 63}, {50, 200}, {97, 101}, {3, 40}, {400, 3}}) {
    ScaleTapTable table;
    ASSERT_TRUE(
        table.Build(*FindScaleFilter(GetParam()), kHorizontalAxis, to, static_cast<double>(to) / from, from, nullptr));
    const std::vector<ScaleTapList> lists(table.Lists(), table.Lists() + to);
    WideRows noise(static_cast<size_t>(from) * 2, 3);
    for (const double rounding : {0.5, 0.0}) ExpectToldColumns(lists, rounding, noise, from);
    for (const uint8_t level : {0, 255, 128}) {
      std::ranges::fill(noise.bytes, level);
      for (const double rounding : {0.5, 0.0}) ExpectToldColumns(lists, rounding, noise, from);
    }
  }
}

TEST(WordColumnsOfOddLists, WithoutTapsWithGapsBackwardsOrTooHeavyAreTheToldOnes) {
  std::vector<ScaleTap> taps = {{0.3F, 5}, {0.7F, 9}, {1.0F, 0}, {-1.0F, 1},
                                {1e9F, 2}, {0.0F, 3}, {2.0F, 7}, {0.5F, 6}};
  const std::vector<ScaleTapList> lists = {{taps.data(), 2, 1.0F},      {nullptr, 0, 0.0F},
                                           {taps.data() + 2, 2, 0.0F},  {taps.data() + 4, 3, 1.0F},
                                           {taps.data() + 7, 1, -0.5F}, {taps.data(), 1, 0.3F}};
  ExpectToldColumns(lists, 0.5, WideRows(40, 4), 20);
}

void ExpectToldRows(int32_t mode, int32_t from, int32_t to, int32_t count) {
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(mode), kVerticalAxis, to, static_cast<double>(to) / from, from, nullptr));
  const std::vector<ScaleTapList> lists(table.Lists(), table.Lists() + to);
  const WordLists words(lists, 0.5);
  const size_t rowSize = static_cast<size_t>(count) * 2 + 1;
  const Bytes noise = scenes::Noise(rowSize * static_cast<size_t>(from), 8);
  std::vector<const uint8_t *> rows;
  for (int32_t y = 0; y < from; ++y) rows.push_back(noise.data() + rowSize * static_cast<size_t>(y));
  ForEachForm(SumWordRows, [&](auto sumRows) {
    std::vector<Bytes> made(static_cast<size_t>(to), Bytes(static_cast<size_t>(count) * 2 + 1, 77));
    std::vector<uint8_t *> madeRows;
    for (Bytes &row : made) madeRows.push_back(row.data());
    sumRows({&words, 0, to, rows.data(), from - 1, 0, count, madeRows.data()});
    for (int32_t y = 0; y < to; ++y) {
      for (int32_t i = 0; i < count; ++i) {
        double sum = 0.0;
        for (int32_t t = 0; t < lists[y].TapCount; ++t) {
          sum += WordAt(rows[lists[y].Taps[t].SourceIndex] + 2 * i) * double{lists[y].Taps[t].Weight};
        }
        ASSERT_EQ(WordAt(&made[y][2 * i]), ToldWord(sum, lists[y], 0.5)) << "row " << y << ", sample " << i;
      }
      ASSERT_EQ(made[y].back(), 77);
    }
  });
}

TEST_P(WordColumnsOf, RowsAreTheToldOnesToo) {
  for (const auto &[from, to] : {std::pair{100, 30}, {31, 100}, {41, 41}, {5, 64}, {301, 7}, {1, 3}}) {
    for (const int32_t count : {16, 37, 128}) ExpectToldRows(GetParam(), from, to, count);
  }
}

}  // namespace
}  // namespace zvk::scaling
