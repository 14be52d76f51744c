// A convolution matrix as the sums need it: the entries that count, and what becomes of a sum.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "host/truncate.h"

namespace zvk::filters {

// An entry that counts: where its sample lies, counted from the output pixel, and its weight.
struct MatrixTerm {
  int32_t row;
  int32_t column;
  int32_t weight;
};

class MatrixTerms {
 public:
  static constexpr int32_t kMostEntries = 2500;
  static constexpr int32_t kMostRows = 50;

  // `entries` row by row. The window reaches dimension / 2 up and to the left of a pixel, and the rest down and to the
  // right: one less for an even dimension. Nothing counts of a dimension below 1.
  MatrixTerms(const std::array<int32_t, kMostEntries> &entries, int32_t dimension);

  // The same for an image of that size, of which a sample further away than an edge is the edge: no place lies further
  // away, and no row has two entries at one place. Their weights are added up, wrapping, to what may be 0.
  MatrixTerms Within(int32_t width, int32_t height) const;

  std::span<const MatrixTerm> All() const { return {terms_.data(), static_cast<size_t>(firstOfRow_[rowCount_])}; }

  // The rows of the matrix, as far as they have entries. A row may have no entry that counts.
  int32_t RowCount() const { return rowCount_; }
  int32_t RowAt(int32_t i) const { return i - reach_; }
  std::span<const MatrixTerm> OfRow(int32_t i) const {
    return All().subspan(static_cast<size_t>(firstOfRow_[i]), static_cast<size_t>(firstOfRow_[i + 1] - firstOfRow_[i]));
  }

 private:
  std::array<MatrixTerm, kMostEntries> terms_{};
  std::array<int32_t, kMostRows + 1> firstOfRow_{};
  int32_t rowCount_ = 0;
  int32_t reach_;
};

// What becomes of a sum of products.
struct MatrixResult {
  int32_t delta;
  double scale;

  // The delta is added, wrapping, before the scaling. The scale 1 changes no integer.
  int32_t Scaled(int32_t sum) const { return Truncate((sum + delta) * scale); }
  uint8_t operator()(int32_t sum) const { return static_cast<uint8_t>(std::clamp(Scaled(sum), 0, 255)); }
};

}  // namespace zvk::filters
