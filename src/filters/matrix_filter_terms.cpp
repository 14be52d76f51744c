#include "filters/matrix_filter_terms.h"

#include <algorithm>
#include <cstddef>

namespace zvk::filters {

MatrixTerms::MatrixTerms(const std::array<int32_t, kMostEntries> &entries, int32_t dimension) : reach_(dimension / 2) {
  // From this entry on the matrix has a hole, whatever the weight: the entry is not looked at.
  constexpr int32_t kHole = 255;
  int32_t count = 0;
  for (int64_t first = 0; rowCount_ < dimension && first < kMostEntries; first += dimension) {
    const auto end = std::min<int64_t>(first + dimension, kMostEntries);
    for (int64_t i = first; i < end; ++i) {
      const int32_t weight = entries[static_cast<size_t>(i)];
      if (weight == 0 || weight >= kHole) continue;
      terms_[static_cast<size_t>(count++)] = {RowAt(rowCount_), static_cast<int32_t>(i - first) - reach_, weight};
    }
    firstOfRow_[static_cast<size_t>(++rowCount_)] = count;
  }
}

MatrixTerms MatrixTerms::Within(int32_t width, int32_t height) const {
  MatrixTerms within = *this;
  int32_t count = 0;
  for (int32_t i = 0; i < rowCount_; ++i) {
    const int32_t first = count;
    for (const MatrixTerm &term : OfRow(i)) {
      const int32_t column = std::clamp(term.column, 1 - width, width - 1);
      if (count > first && within.terms_[static_cast<size_t>(count) - 1].column == column) {
        within.terms_[static_cast<size_t>(count) - 1].weight += term.weight;
        continue;
      }
      within.terms_[static_cast<size_t>(count++)] = {std::clamp(term.row, 1 - height, height - 1), column, term.weight};
    }
    within.firstOfRow_[static_cast<size_t>(i) + 1] = count;
  }
  return within;
}

}  // namespace zvk::filters
