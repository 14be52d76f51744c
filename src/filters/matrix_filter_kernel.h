// The inner loop of the convolution over lines of samples that lie ready.
#pragma once

#include <cstdint>
#include <span>

#include "filters/matrix_filter_terms.h"

namespace zvk::filters {

// The samples that one entry of the matrix meets along a line of output, and the entry.
struct WeightedLine {
  const uint8_t *samples;
  int32_t weight;
};

// The sums of one matrix and what becomes of them, in the narrowest arithmetic that holds them.
class MatrixSums {
 public:
  // None: the scale is 1. Bounded: 32 bits hold whatever the scaling gives.
  enum class Scaling : uint8_t { None, Bounded, Any };

  MatrixSums(std::span<const MatrixTerm> terms, const MatrixResult &result);

  // bytes[k] = result(sum of weight x samples[k] over all lines), for k from 0 below count. Each line must be one of
  // the terms, and the bytes may share no memory with the samples.
  void operator()(std::span<const WeightedLine> lines, int64_t count, uint8_t *bytes) const;

 private:
  MatrixResult result_;
  Scaling scaling_;
  bool narrow_;     // all sums lie within 65536 values, so 16 bits tell them apart
  uint16_t start_;  // what narrow sums are raised by, so that none is negative
};

}  // namespace zvk::filters
