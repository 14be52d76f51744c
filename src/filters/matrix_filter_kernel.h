// The inner loops of the convolution over lines of samples that lie ready.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "filters/matrix_scaling.h"
#include "pixels/dispatch.h"

namespace zvk::filters {

// The samples that one entry of the matrix meets along a line of output, and the entry.
struct WeightedLine {
  const uint8_t *samples;
  int32_t weight;
};

// Two numbers of 16 bits with a sign, the first in the lower half: samples of neighbouring columns, or their weights.
using Pair = uint32_t;

constexpr Pair PairOf(int32_t first, int32_t second) {
  return static_cast<uint16_t>(first) | static_cast<uint32_t>(second) << 16;
}

// Pairs along a line of output, and the weights of both.
struct WeightedPairs {
  const Pair *pairs;
  Pair weights;
};

// What makes a sum of pairs: 65536 x that of the high ones, and start, and that of the low ones.
struct PairTerms {
  std::span<const WeightedPairs> high;
  std::span<const WeightedPairs> low;
  int32_t start;
};

// A line of pairs must go on for so many behind the last one that counts, whatever they hold.
inline constexpr int64_t kPairsBehind = 64;

// bytes[k] is made of scaling.start + the sum of weight x samples[k] over all lines, for k from 0 below count, in 16
// bits; the scaling must be a narrow one. The bytes may share no memory with the samples.
using LinesToBytes = void(const WeightedLine *lines, size_t lineCount, const MatrixScaling &scaling, int64_t count,
                          uint8_t *bytes);

// The same of pairs, in 32 bits, by a scaling that is not narrow.
using PairsToBytes = void(const PairTerms &terms, const MatrixScaling &scaling, int64_t count, uint8_t *bytes);

// Their kernels for each way of scaling; Words only of lines.
const Kernel<LinesToBytes> &SumLines(MatrixScaling::Way way);
const Kernel<PairsToBytes> &SumPairs(MatrixScaling::Way way);

// sums[k] = start + the sum over all lines, wrapping.
template <class Sum>
using LinesToSums = void(const WeightedLine *lines, size_t lineCount, Sum start, int64_t count, Sum *sums);
extern const Kernel<LinesToSums<uint16_t>> SumNarrowColumns;
extern const Kernel<LinesToSums<int32_t>> SumColumns;

// pairs[k] holds what is at k and `distance` further on; behind the end there is 0.
template <class Number>
using NumbersToPairs = void(const Number *numbers, int64_t distance, int64_t count, Pair *pairs);
extern const Kernel<NumbersToPairs<uint8_t>> PairSamples;

// The same of sums, each less 32768.
extern const Kernel<NumbersToPairs<uint16_t>> PairSums;

// The same of the lower halves of sums, less 32768, and of the upper ones as they are.
using SumsToHalves = void(const int32_t *sums, int64_t distance, int64_t count, Pair *low, Pair *high);
extern const Kernel<SumsToHalves> PairHalves;

}  // namespace zvk::filters
