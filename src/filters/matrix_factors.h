// Matrices that are a column times a row: two short sums in place of a long one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "filters/matrix_filter_terms.h"

namespace zvk::filters {

// Whole numbers whose products are the weights of a matrix. All divisors that the column has in common are the row's.
class MatrixFactors {
 public:
  // Nothing if the matrix is no such product, or all zeros. No row may have two entries at one place.
  static std::optional<MatrixFactors> Of(const MatrixTerms &terms);

  // A weight for each row of the matrix.
  int32_t ColumnWeight(int32_t i) const { return column_[static_cast<size_t>(i)]; }

  // The row of the matrix whose entries, each made a row weight, are the row.
  int32_t Model() const { return model_; }
  int32_t RowWeight(int32_t entry) const { return static_cast<int32_t>(entry / divisor_ * factor_); }

 private:
  std::array<int32_t, MatrixTerms::kMostRows> column_ = {};
  int32_t model_ = 0;
  int64_t divisor_ = 0;
  int64_t factor_ = 0;
};

}  // namespace zvk::filters
