// A line of output from lines of source samples: which sums of a matrix are taken, and in which arithmetic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "filters/matrix_factors.h"
#include "filters/matrix_filter_kernel.h"
#include "filters/matrix_filter_terms.h"
#include "filters/matrix_scaling.h"
#include "host/resources.h"

namespace zvk::filters {

// How the samples of a line lie: the first one is that which `firstColumn` of the matrix meets at output column 0.
struct LineShape {
  int32_t firstColumn;
  int32_t channels;  // how far samples of neighbouring columns are apart
  int64_t length;
};

// A row of the source that lies ready; its samples are nil if it cannot be had. Rows in use at a time have slots that
// differ.
struct SourceLine {
  const uint8_t *samples;
  int32_t row;
  int32_t slot;
};

class LineSums {
 public:
  // `count` results a line, from lines in slots below `slots`. No row of the matrix may have two entries at one place.
  // The terms must outlive the sums.
  LineSums(const MatrixTerms &terms, const MatrixResult &result, const LineShape &shape, int64_t count, int32_t slots);

  // False if there is no memory.
  explicit operator bool() const;

  // The results of one line. `lines` are what the rows of the matrix meet; that of a row without entries may be
  // anything.
  void operator()(std::span<const SourceLine> lines, uint8_t *bytes) const;

 private:
  // Words: narrow sums, entry by entry. Pairs: two entries at once, in 32 bits. Columns: a sum along columns first, and
  // of those one along the row; of narrow columns the first is in 16 bits.
  enum class Form : uint8_t { Words, Pairs, NarrowColumns, Columns };

  // Two entries of a row side by side, or of the row that is a factor, each as two numbers of 16 bits.
  struct PairEntry {
    int32_t matrixRow;
    int32_t offset;  // among the samples of a line
    Pair low;
    Pair high;
  };

  Form FormOf() const;
  void ListPairs(int32_t matrixRow);
  int32_t OffsetOf(int32_t column) const { return (column - shape_.firstColumn) * shape_.channels; }
  std::span<const WeightedLine> WeightedLines(std::span<const SourceLine> lines) const;
  std::span<const WeightedLine> WeightedColumn(std::span<const SourceLine> lines) const;
  const Pair *PairsOf(const SourceLine &line) const;
  void SumAlongColumns(std::span<const SourceLine> lines) const;

  const MatrixTerms &terms_;
  LineShape shape_;
  int64_t count_;
  std::optional<MatrixFactors> factors_;
  Form form_;
  MatrixScaling scaling_;
  int64_t stride_;  // of lines of pairs
  int32_t entryCount_ = 0;
  uint16_t columnStart_ = 0;  // what narrow sums along columns are raised by
  int32_t start_ = 0;         // what the sum of pairs starts with
  ZeroedBuffer<WeightedLine> weighted_;
  ZeroedBuffer<PairEntry> entries_;
  ZeroedBuffer<WeightedPairs> high_;
  ZeroedBuffer<WeightedPairs> low_;
  ZeroedBuffer<Pair> pairs_;      // a line for each slot, or one of the lower halves and one of the upper ones
  ZeroedBuffer<int32_t> rows_;    // the row of which a slot has pairs, and 1
  ZeroedBuffer<uint16_t> words_;  // narrow sums along columns
  ZeroedBuffer<int32_t> sums_;    // others
};

}  // namespace zvk::filters
