#include "filters/dither_matrices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <vector>

#include "tests/filters/dither_lists.h"

namespace zvk::filters {
namespace {

using filter_testing::DitherList;
using filter_testing::DitherLists;

std::vector<int> Thresholds(int32_t number) {
  const DitherMatrix &matrix = *DitherMatrixByNumber(number);
  return {matrix.thresholds, matrix.thresholds + ptrdiff_t{matrix.size} * matrix.size};
}

// How often each value occurs.
std::map<int, int> Counted(const std::vector<int> &values) {
  std::map<int, int> counts;
  for (const int value : values) ++counts[value];
  return counts;
}

TEST(DitherMatrices, TheNumbersAre1To10) {
  for (const int32_t number : {INT32_MIN, -1, 0, 11, 12, INT32_MAX}) {
    EXPECT_EQ(DitherMatrixByNumber(number), nullptr) << number;
  }
  const std::vector<int> sizes = {2, 4, 4, 4, 6, 6, 8, 6, 8, 16};
  for (int32_t number = 1; number <= 10; ++number) {
    ASSERT_NE(DitherMatrixByNumber(number), nullptr);
    EXPECT_EQ(DitherMatrixByNumber(number)->size, sizes[static_cast<size_t>(number - 1)]);
  }
}

TEST(DitherMatrices, EveryThresholdIsTheListed) {
  const std::vector<DitherList> lists = DitherLists();
  ASSERT_EQ(lists.size(), 10u);
  for (int32_t number = 1; number <= 10; ++number) {
    const DitherList &list = lists[static_cast<size_t>(number - 1)];
    EXPECT_EQ(DitherMatrixByNumber(number)->size, list.size) << list.name;
    EXPECT_EQ(Thresholds(number), list.thresholds) << list.name;
  }
}

TEST(DitherMatrices, TheFirstFourHoldEachNumberOnce) {
  for (const int32_t number : {1, 2, 3, 4}) {
    const auto counts = Counted(Thresholds(number));
    const int entries = number == 1 ? 4 : 16;
    EXPECT_EQ(counts.size(), static_cast<size_t>(entries));
    EXPECT_EQ(counts.begin()->first, 0);
    EXPECT_EQ(counts.rbegin()->first, entries - 1);
  }
}

TEST(DitherMatrices, TheLinesRiseFromLeftToRightAndFromTopToBottom) {
  std::vector<int> rising(16);
  std::iota(rising.begin(), rising.end(), 0);
  EXPECT_EQ(Thresholds(4), rising);
}

TEST(DitherMatrices, TheHalftoneRunsTo36With25And33Twice) {
  const auto counts = Counted(Thresholds(5));
  EXPECT_EQ(counts.begin()->first, 0);
  EXPECT_EQ(counts.rbegin()->first, 36);
  for (const auto &[value, count] : counts) EXPECT_EQ(count, value == 25 || value == 33 ? 2 : 1) << value;
}

TEST(DitherMatrices, TheLargerOrderedOnesRunTo63And251) {
  for (const auto &[number, most] : {std::pair{6, 63}, {7, 251}}) {
    const auto counts = Counted(Thresholds(number));
    EXPECT_EQ(counts.size(), Thresholds(number).size()) << "each value once";
    EXPECT_EQ(counts.begin()->first, 1);
    EXPECT_EQ(counts.rbegin()->first, most);
  }
}

TEST(DitherMatrices, ClustersHoldEachNumberTwiceAndExchangeTheirHalvesFromTopToBottom) {
  for (const int32_t number : {8, 9, 10}) {
    const std::vector<int> thresholds = Thresholds(number);
    const auto counts = Counted(thresholds);
    EXPECT_EQ(counts.size(), thresholds.size() / 2);
    EXPECT_EQ(counts.rbegin()->first, static_cast<int>(thresholds.size()) / 2 - 1);
    for (const auto &[value, count] : counts) EXPECT_EQ(count, 2) << value;
    const int size = DitherMatrixByNumber(number)->size;
    for (int y = 0; y < size / 2; ++y) {
      for (int x = 0; x < size; ++x) {
        const int other = (y + size / 2) * size + (x + size / 2) % size;
        EXPECT_EQ(thresholds[static_cast<size_t>(y * size + x)], thresholds[static_cast<size_t>(other)]) << x << y;
      }
    }
  }
}

TEST(DitherMatrices, RowsRepeat) {
  const DitherMatrix &matrix = *DitherMatrixByNumber(5);
  EXPECT_EQ(matrix.Row(0), matrix.thresholds);
  EXPECT_EQ(matrix.Row(5), matrix.thresholds + 30);
  EXPECT_EQ(matrix.Row(6), matrix.thresholds);
  EXPECT_EQ(matrix.Row(6000003), matrix.thresholds + 18);
}

}  // namespace
}  // namespace zvk::filters
