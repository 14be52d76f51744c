#include "filters/matrix_filter_terms.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

namespace zvk::filters {
namespace {

using Entries = std::array<int32_t, MatrixTerms::kMostEntries>;
using Listed = std::vector<std::tuple<int32_t, int32_t, int32_t>>;  // row, column, weight

Listed ListOf(std::span<const MatrixTerm> terms) {
  Listed list;
  for (const MatrixTerm &term : terms) list.emplace_back(term.row, term.column, term.weight);
  return list;
}

TEST(MatrixTerms, EntriesOfAnOddWindowLieAroundThePixel) {
  const MatrixTerms terms(Entries{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 3);
  EXPECT_EQ(
      ListOf(terms.All()),
      (Listed{
          {-1, -1, 1}, {-1, 0, 2}, {-1, 1, 3}, {0, -1, 4}, {0, 0, 5}, {0, 1, 6}, {1, -1, 7}, {1, 0, 8}, {1, 1, 9}}));
}

TEST(MatrixTerms, AnEvenWindowReachesFurtherUpAndLeft) {
  const MatrixTerms terms(Entries{1, 2, 3, 4}, 2);
  EXPECT_EQ(ListOf(terms.All()), (Listed{{-1, -1, 1}, {-1, 0, 2}, {0, -1, 3}, {0, 0, 4}}));
}

TEST(MatrixTerms, ZerosAndHolesAreLeftOut) {
  const MatrixTerms terms(Entries{0, 255, 254, INT32_MAX, -1, 256, INT32_MIN, 0, 0}, 3);
  EXPECT_EQ(ListOf(terms.All()), (Listed{{-1, 1, 254}, {0, 0, -1}, {1, -1, INT32_MIN}}));
  EXPECT_EQ(terms.RowCount(), 3);
  EXPECT_EQ(ListOf(terms.OfRow(0)), (Listed{{-1, 1, 254}}));
  EXPECT_EQ(ListOf(terms.OfRow(1)), (Listed{{0, 0, -1}}));
  EXPECT_EQ(ListOf(terms.OfRow(2)), (Listed{{1, -1, INT32_MIN}}));
}

TEST(MatrixTerms, ARowMayBeEmpty) {
  const MatrixTerms terms(Entries{0, 0, 300, 7}, 2);
  EXPECT_EQ(terms.RowCount(), 2);
  EXPECT_TRUE(terms.OfRow(0).empty());
  EXPECT_EQ(terms.RowAt(0), -1);
  EXPECT_EQ(terms.RowAt(1), 0);
}

TEST(MatrixTerms, ADimensionBelowOneHasNone) {
  for (const int32_t dimension : {0, -1, INT32_MIN}) {
    const MatrixTerms terms(Entries{1, 2, 3}, dimension);
    EXPECT_TRUE(terms.All().empty());
    EXPECT_EQ(terms.RowCount(), 0);
  }
}

TEST(MatrixTerms, AMatrixAbove50EndsWithTheEntries) {
  Entries entries = {};
  entries.fill(1);
  EXPECT_EQ(MatrixTerms(entries, 50).All().size(), 2500u);
  EXPECT_EQ(MatrixTerms(entries, 50).RowCount(), 50);
  const MatrixTerms terms(entries, 51);
  EXPECT_EQ(terms.RowCount(), 50);
  EXPECT_EQ(terms.OfRow(48).size(), 51u);
  EXPECT_EQ(terms.OfRow(49).size(), 1u);
  EXPECT_EQ(ListOf(terms.OfRow(49)), (Listed{{24, -25, 1}}));
  const MatrixTerms huge(entries, INT32_MAX);
  EXPECT_EQ(huge.RowCount(), 1);
  EXPECT_EQ(huge.All().front().column, -1073741823);
  EXPECT_EQ(huge.All().back().column, -1073741823 + 2499);
  EXPECT_EQ(huge.All().back().row, -1073741823);
}

TEST(MatrixTerms, WithinAnImageNoPlaceLiesFurtherAwayThanAnEdge) {
  const MatrixTerms terms(Entries{1, 2, 3, 4, 5, 6, 7, 0, 300, 9, 10, 11, 12, 13, 14, 0, 0, 0, 0, 0, -1, -2, -3, 4, -4},
                          5);
  EXPECT_EQ(ListOf(terms.Within(9, 9).All()), ListOf(terms.All()));
  const MatrixTerms within = terms.Within(2, 3);
  EXPECT_EQ(ListOf(within.All()), (Listed{{-2, -1, 3},
                                          {-2, 0, 3},
                                          {-2, 1, 9},
                                          {-1, -1, 13},
                                          {-1, 1, 9},
                                          {0, -1, 21},
                                          {0, 0, 12},
                                          {0, 1, 27},
                                          {2, -1, -3},
                                          {2, 0, -3},
                                          {2, 1, 0}}));
  EXPECT_TRUE(within.OfRow(3).empty());
  EXPECT_EQ(ListOf(terms.Within(1, 1).All()), (Listed{{0, 0, 15}, {0, 0, 22}, {0, 0, 60}, {0, 0, -6}}));
  const MatrixTerms wraps(Entries{INT32_MIN, INT32_MIN, -1, 0, 0, 0, 0, 0, 0}, 3);
  EXPECT_EQ(ListOf(wraps.Within(1, 9).All()), (Listed{{-1, 0, -1}}));
}

TEST(MatrixResult, AddsThenScalesThenCuts) {
  EXPECT_EQ((MatrixResult{10, 1.0}(245)), 255);
  EXPECT_EQ((MatrixResult{10, 1.0}(246)), 255);
  EXPECT_EQ((MatrixResult{10, 1.0}(-10)), 0);
  EXPECT_EQ((MatrixResult{10, 1.0}(-9)), 1);
  EXPECT_EQ((MatrixResult{10, 0.5}(5)), 7);
  EXPECT_EQ((MatrixResult{1, 1.0}(INT32_MAX)), 0);
  EXPECT_EQ((MatrixResult{0, 1e300}(1)), 0);
  EXPECT_EQ((MatrixResult{0, std::nan("")}(100)), 0);
}

// The integer path needs no scale: the product with 1 is exact for every sum.
TEST(MatrixResult, AScaleOfOneChangesNoSum) {
  for (const int32_t sum : {INT32_MIN, INT32_MIN + 1, -1, 0, 1, 16777217, INT32_MAX - 1, INT32_MAX}) {
    EXPECT_EQ((MatrixResult{0, 1.0}.Scaled(sum)), sum);
  }
}

}  // namespace
}  // namespace zvk::filters
