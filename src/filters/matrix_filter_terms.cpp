#include "filters/matrix_filter_terms.h"

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

}  // namespace zvk::filters
