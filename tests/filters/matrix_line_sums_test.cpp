#include "filters/matrix_line_sums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "tests/filters/filter_testing.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

constexpr int32_t kChannels = 3, kColumns = 45;

// A matrix over lines of noise, every line for itself; those without samples are left out of the sums.
class SumsOfLines {
 public:
  SumsOfLines(int32_t dimension, const std::vector<int32_t> &entries, const MatrixResult &result)
      : entries_(entries), dimension_(dimension), result_(result) {
    for (int32_t i = 0; i < dimension; ++i) {
      samples_.emplace_back(static_cast<size_t>(Length()));
      for (uint8_t &sample : samples_.back()) sample = Next();
    }
  }

  void CheckAll() {
    std::array<int32_t, MatrixTerms::kMostEntries> all = {};
    std::copy(entries_.begin(), entries_.end(), all.begin());
    const MatrixTerms terms(all, dimension_);
    const LineSums sum(terms, result_, {-(dimension_ / 2), kChannels, Length()}, kColumns * kChannels, dimension_);
    ASSERT_TRUE(static_cast<bool>(sum));
    for (int32_t missing = -1; missing < std::min(dimension_, 3); ++missing) CheckWithout(sum, missing);
  }

 private:
  int64_t Length() const { return int64_t{kColumns + dimension_ - 1} * kChannels; }

  uint8_t Next() {
    state_ = state_ * 1664525 + 1013904223;
    // Extremes are frequent, as sums are to be as large as they can be.
    return state_ >> 30 == 0 ? uint8_t{255} : static_cast<uint8_t>(state_ >> 22);
  }

  void CheckWithout(const LineSums &sum, int32_t missing) {
    std::vector<SourceLine> lines;
    for (int32_t i = 0; i < dimension_; ++i) {
      lines.push_back({i != missing ? samples_[static_cast<size_t>(i)].data() : nullptr, i, i});
    }
    std::vector<uint8_t> bytes(size_t{kColumns} * kChannels);
    sum(lines, bytes.data());
    for (int32_t k = 0; k < kColumns * kChannels; ++k) {
      uint32_t expected = 0;
      for (int32_t i = 0; i < dimension_; ++i) {
        for (int32_t j = 0; j < dimension_ && i != missing; ++j) {
          const int32_t entry = entries_[static_cast<size_t>(i * dimension_ + j)];
          if (entry < 255)
            expected +=
                static_cast<uint32_t>(entry) * samples_[static_cast<size_t>(i)][static_cast<size_t>(k + j * kChannels)];
        }
      }
      ASSERT_EQ(bytes[static_cast<size_t>(k)], result_(static_cast<int32_t>(expected))) << k << " without " << missing;
    }
  }

  std::vector<int32_t> entries_;
  int32_t dimension_;
  MatrixResult result_;
  std::vector<std::vector<uint8_t>> samples_;
  uint32_t state_ = 1;
};

using Numbers = std::vector<int32_t>;

void Check(int32_t dimension, const Numbers &entries, const MatrixResult &result) {
  SumsOfLines(dimension, entries, result).CheckAll();
}

Numbers Products(const Numbers &column, const Numbers &row) {
  Numbers entries;
  for (const int32_t c : column) {
    for (const int32_t r : row)
      entries.push_back(static_cast<int32_t>(static_cast<uint32_t>(c) * static_cast<uint32_t>(r)));
  }
  return entries;
}

TEST(LineSums, OfNarrowMatrices) {
  Check(1, {1}, {0, 1.0});
  Check(3, {1, 2, 1, 2, 4, 2, 1, 2, 1}, {0, 1.0 / 16});
  Check(3, {-1, -1, -1, -1, 8, -1, -1, -1, -1}, {128, 1.0});
  Check(4, Numbers(16, 16), {-100, 1.0 / 250});
}

TEST(LineSums, OfWideMatrices) {
  Check(3, {-90, 20, -90, 20, 250, 20, -90, 20, -90}, {0, 0.01});
  Check(2, {254, 254, 254, -254}, {-50000, 0.001});
  Check(3, {-100000, 254, 200, 100, -32768, -32769, 1, 65536, -65537}, {5, 1e-4});
  Check(3, {INT32_MIN, 254, INT32_MIN, INT32_MIN + 1, 0, -16843010, 1, 0, INT32_MIN}, {5, 1e-7});
}

// Entries with gaps between them have no neighbours to be paired with.
TEST(LineSums, OfWideMatricesWithGaps) {
  Check(5, {-300, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 254, 0, -7, 300, 8, 7, 6, 5, 4, 0, 0, 0, 0, -9}, {900, 0.02});
}

TEST(LineSums, OfAColumnTimesARow) {
  const Numbers blur = {1, 4, 6, 4, 1}, slope = {-2, -1, 0, 1, 2}, wide = {-254, 100, 254, 9, -200};
  for (const Numbers &column : {blur, slope, wide}) {
    for (const Numbers &row : {blur, slope, Numbers{0, 1, 0, 0, 1}}) {
      Check(5, Products(column, row), {50, 1.0 / 100});
      Check(5, Products(row, column), {50, 1.0});
    }
  }
  Check(25, Numbers(625, 1), {0, 1.0 / 625});
  Check(25, Numbers(625, -254), {0, -1.0 / 625 / 254});
  Check(7, Products({0, 3, 0, -9, 0, 6, 0}, {-5, 0, 10, 15, 0, 0, 5}), {0, 0.003});
}

// Sums along columns that do not fit into 16 bits, and products that wrap.
TEST(LineSums, OfAColumnTimesARowBeyond16Bits) {
  Check(5, Products({-70001, 90000, -100000, 5, 1}, {-1, -2, -3, -4, -5}), {0, 1e-4});
  Check(5, Products({-254, -254, -254, -254, -253}, {1, 1, 1, 1, 1}), {0, -1.0 / 300});
  Check(6, Products({1, 1, 1, 1, 1, 1}, {INT32_MIN, INT32_MIN, -1, -65536, -32769, -8000000}), {99, 1e-6});
  Check(6, Products({INT32_MIN, INT32_MIN, -1, -65536, -32769, -8000000}, {1, 1, 1, 1, 1, 1}), {99, 1e-6});
  Check(5, Products({-30000, -30001, -30002, -30003, -30004}, {70000, 70001, 70002, 70003, 70007}), {0, 1e-7});
}

TEST(LineSums, OfAMatrixThatMissesItsFactorsByOneEntry) {
  for (const size_t index : {size_t{0}, size_t{12}, size_t{24}}) {
    Numbers entries = Products({1, 4, 6, 4, 1}, {1, 4, 6, 4, 1});
    ++entries[index];
    Check(5, entries, {0, 1.0 / 257});
    entries = Products({1, 4, 6, 4, 1}, {-100, 0, 40, 20, 10});
    --entries[index];
    Check(5, entries, {0, 0.01});
  }
}

}  // namespace
}  // namespace zvk::filters
