#include "filters/matrix_factors.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace zvk::filters {
namespace {

MatrixTerms TermsOf(int32_t dimension, const std::vector<int32_t> &entries) {
  std::array<int32_t, MatrixTerms::kMostEntries> all = {};
  std::copy(entries.begin(), entries.end(), all.begin());
  return {all, dimension};
}

std::vector<int32_t> Products(const std::vector<int32_t> &column, const std::vector<int32_t> &row) {
  std::vector<int32_t> entries;
  for (const int32_t c : column) {
    for (const int32_t r : row) entries.push_back(c * r);
  }
  return entries;
}

// The factors are found, their products are the entries, and no divisor of the column is left.
void ExpectFactors(const std::vector<int32_t> &column, const std::vector<int32_t> &row, int32_t divisorOfColumn) {
  const auto dimension = static_cast<int32_t>(row.size());
  const auto entries = Products(column, row);
  const MatrixTerms terms = TermsOf(dimension, entries);
  const auto factors = MatrixFactors::Of(terms);
  ASSERT_TRUE(factors);
  std::vector<int32_t> foundRow(row.size());
  for (const MatrixTerm &term : terms.OfRow(factors->Model())) {
    foundRow[static_cast<size_t>(term.column + dimension / 2)] = factors->RowWeight(term.weight);
  }
  std::vector<int32_t> foundColumn;
  for (int32_t i = 0; i < dimension; ++i) foundColumn.push_back(factors->ColumnWeight(i));
  EXPECT_EQ(Products(foundColumn, foundRow), entries);
  const auto model = static_cast<size_t>(factors->Model());
  const int32_t sign = (foundColumn[model] < 0) != (column[model] < 0) ? -1 : 1;
  for (size_t i = 0; i < column.size(); ++i) EXPECT_EQ(foundColumn[i] * divisorOfColumn * sign, column[i]);
}

TEST(MatrixFactors, OfAColumnTimesARowAreFoundAndTheRowHasTheCommonDivisors) {
  ExpectFactors({1, 2, 1}, {1, 2, 1}, 1);
  ExpectFactors({1, 1, 1}, {-1, 0, 1}, 1);
  ExpectFactors({2, 4, 6}, {3, 6, 9}, 2);
  ExpectFactors({-6, 0, 9}, {4, 0, -10}, 3);
  ExpectFactors({0, 0, 5}, {0, 7, 0}, 5);
  ExpectFactors({0, -3, 0}, {2, 0, 0}, 3);
  ExpectFactors({7}, {-11}, 7);
  ExpectFactors({1, 0, 0}, {-2147483647 - 1, 3, 0}, 1);
  ExpectFactors({-46341, -2, -3}, {46340, 1, 5}, 1);
}

TEST(MatrixFactors, AMatrixThatMissesThemByOneEntryHasNone) {
  const std::vector<int32_t> column = {1, 2, 0, 3, 2}, row = {2, -1, 0, 4, 1};
  const std::vector<int32_t> entries = Products(column, row);
  ASSERT_TRUE(MatrixFactors::Of(TermsOf(5, entries)));
  for (size_t i = 0; i < entries.size(); ++i) {
    for (const int32_t change : {-1, 1}) {
      std::vector<int32_t> missed = entries;
      missed[i] += change;
      EXPECT_FALSE(MatrixFactors::Of(TermsOf(5, missed))) << i << ", " << change;
    }
  }
}

TEST(MatrixFactors, ProductsThatAgreeIn32BitsOnlyAreNone) {
  // 65536 x 65536 is 0 in 32 bits.
  EXPECT_FALSE(MatrixFactors::Of(TermsOf(2, {-65536, 1, 1, -65536})));
  EXPECT_FALSE(MatrixFactors::Of(TermsOf(2, {-65536, 0, 0, -65536})));
}

TEST(MatrixFactors, ZerosHaveNone) {
  EXPECT_FALSE(MatrixFactors::Of(TermsOf(3, {})));
  EXPECT_FALSE(MatrixFactors::Of(TermsOf(0, {1})));
  EXPECT_FALSE(MatrixFactors::Of(TermsOf(2, {255, 300, 255, 999})));
}

TEST(MatrixFactors, EntriesAddedUpToZeroCountAsZeros) {
  // In an image of two columns what lies further out is its edge.
  EXPECT_TRUE(MatrixFactors::Of(TermsOf(5, {1, 2, 3, 4, 5}).Within(2, 9)));
  const MatrixTerms cancelled = TermsOf(5, {1, -1, 3, 2, 2, /**/ 0, 0, 6, 4, 4, /**/ 5, -5, 0, 0, 0}).Within(2, 9);
  const auto factors = MatrixFactors::Of(cancelled);
  ASSERT_TRUE(factors);
  EXPECT_EQ(factors->ColumnWeight(0), 1);
  EXPECT_EQ(factors->ColumnWeight(1), 2);
  EXPECT_EQ(factors->ColumnWeight(2), 0);
}

}  // namespace
}  // namespace zvk::filters
