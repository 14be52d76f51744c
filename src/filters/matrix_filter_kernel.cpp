#include "filters/matrix_filter_kernel.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "pixels/loop_steps.h"

namespace zvk::filters {

namespace {

using Way = MatrixScaling::Way;

// --- blocks ---

// Samples summed at once: what the registers hold.
constexpr int32_t kBlockBytes = 128;
template <class Sum>
constexpr auto kBlock = static_cast<int32_t>(kBlockBytes / sizeof(Sum));

// Calls visit(first, count) for blocks of kCount numbers. The last one may do some of the one before it again; a
// shorter one is alone.
template <int32_t kCount, class Visitor>
[[gnu::always_inline]] inline void VisitBlocks(int64_t count, const Visitor &visit) {
  if (count < kCount) {
    visit(int64_t{0}, static_cast<int32_t>(count));
    return;
  }
  for (int64_t i = 0; i < count; i += kCount) visit(std::min(i, count - kCount), kCount);
}

// --- lines of samples ---

// All arithmetic wraps.
template <class Sum>
[[gnu::always_inline]] inline void SumBlock(const WeightedLine *__restrict lines, size_t lineCount, Sum start,
                                            int64_t offset, int32_t count, Sum *__restrict sums) {
  for (int32_t i = 0; i < count; ++i) sums[i] = start;
  for (size_t k = 0; k < lineCount; ++k) {
    OneStepAtATime();
    const uint8_t *samples = lines[k].samples + offset;
    const auto weight = static_cast<Sum>(lines[k].weight);
    for (int32_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + samples[i] * weight);
  }
}

template <Way kWay>
[[gnu::always_inline]] inline void SumLinesBody(const WeightedLine *lines, size_t lineCount,
                                                const MatrixScaling &scaling, int64_t count, uint8_t *bytes) {
  const MatrixScaling local = scaling;
  VisitBlocks<kBlock<uint16_t>>(
      count, [&](int64_t first, int32_t now) __attribute__((always_inline)) {
        uint16_t sums[kBlock<uint16_t>] = {};
        SumBlock<uint16_t>(lines, lineCount, local.start, first, now, sums);
        uint8_t made[kBlock<uint16_t>];
        FinishSums<kWay, kBlock<uint16_t>>(local, sums, made);
        std::memcpy(bytes + first, made, static_cast<size_t>(now));
      });
}

template <class Sum>
[[gnu::always_inline]] inline void SumColumnsBody(const WeightedLine *lines, size_t lineCount, Sum start, int64_t count,
                                                  Sum *sums) {
  VisitBlocks<kBlock<Sum>>(
      count, [&](int64_t first, int32_t now) __attribute__((always_inline)) {
        Sum block[kBlock<Sum>] = {};
        SumBlock<Sum>(lines, lineCount, start, first, now, block);
        std::copy_n(block, now, sums + first);
      });
}

// --- pairs ---

// Vectors never cross a call, as all of this becomes a part of the forms for each level.
#pragma GCC diagnostic ignored "-Wpsabi"

// Makes a number of 16 bits, or each of a pair of them, less by 32768.
constexpr Pair kLess = 0x80008000;

template <class Number>
[[gnu::always_inline]] inline void PairNumbersBody(const Number *__restrict numbers, int64_t distance, int64_t count,
                                                   Pair *__restrict pairs) {
  constexpr Pair kChange = sizeof(Number) == 1 ? 0 : kLess;
  const int64_t inside = std::max<int64_t>(count - distance, 0);
  for (int64_t i = 0; i < inside; ++i) pairs[i] = (numbers[i] | Pair{numbers[i + distance]} << 16) ^ kChange;
  for (int64_t i = inside; i < count; ++i) pairs[i] = numbers[i] ^ (kChange & 0xFFFF);
}

[[gnu::always_inline]] inline void PairHalvesBody(const int32_t *__restrict sums, int64_t distance, int64_t count,
                                                  Pair *__restrict low, Pair *__restrict high) {
  const int64_t inside = std::max<int64_t>(count - distance, 0);
  for (int64_t i = 0; i < inside; ++i) {
    const auto first = static_cast<uint32_t>(sums[i]);
    const auto second = static_cast<uint32_t>(sums[i + distance]);
    low[i] = ((first & 0xFFFF) | second << 16) ^ kLess;
    high[i] = first >> 16 | (second & 0xFFFF0000);
  }
  for (int64_t i = inside; i < count; ++i) {
    const auto first = static_cast<uint32_t>(sums[i]);
    low[i] = (first & 0xFFFF) ^ (kLess & 0xFFFF);
    high[i] = first >> 16;
  }
}

// Numbers in a vector of the machine.
template <size_t kBytes>
struct PairVector {
  typedef int32_t Sums __attribute__((vector_size(kBytes)));   // NOLINT: an alias may not depend on kBytes
  typedef int16_t Words __attribute__((vector_size(kBytes)));  // NOLINT
};

// Adds the products of both halves of each pair. Nothing is lost but where all four are -32768, and there the sum wraps
// as it may.
template <class Words, class Sums>
[[gnu::always_inline]] inline void MultiplyAdd(const Words &pairs, const Words &weights, Sums &sums) {
  if constexpr (sizeof(Sums) == 16) sums += (Sums)__builtin_ia32_pmaddwd128(pairs, weights);
  if constexpr (sizeof(Sums) == 32) sums += (Sums)__builtin_ia32_pmaddwd256(pairs, weights);
  if constexpr (sizeof(Sums) == 64) {
#ifndef __clang__  // which checks this file and knows it by another name
    sums += (Sums)__builtin_ia32_pmaddwd512_mask(pairs, weights, Sums{}, static_cast<__mmask16>(-1));
#endif
  }
}

template <size_t kBytes, size_t kVectors>
[[gnu::always_inline]] inline void AddPairs(std::span<const WeightedPairs> terms, int64_t offset,
                                            typename PairVector<kBytes>::Sums (&sums)[kVectors]) {
  using Vector = PairVector<kBytes>;
  for (const WeightedPairs &term : terms) {
    const Pair *pairs = term.pairs + offset;
    const auto weights = (typename Vector::Words)(typename Vector::Sums{} + static_cast<int32_t>(term.weights));
    for (size_t i = 0; i < kVectors; ++i) {
      typename Vector::Words words;
      std::memcpy(&words, pairs + i * kBytes / sizeof(Pair), kBytes);
      MultiplyAdd(words, weights, sums[i]);
    }
  }
}

template <size_t kBytes, Way kWay>
[[gnu::always_inline]] inline void SumPairsBody(const PairTerms &terms, const MatrixScaling &scaling, int64_t count,
                                                uint8_t *bytes) {
  constexpr size_t kVectors = kBytes < 64 ? 8 : 4;
  constexpr auto kNumbers = static_cast<int32_t>(kVectors * kBytes / sizeof(int32_t));
  static_assert(kNumbers <= kPairsBehind);
  const PairTerms local = terms;
  const MatrixScaling localScaling = scaling;
  for (int64_t i = 0; i < count; i += kNumbers) {
    // The last block does some of the one before it again; a short line is a part of a block.
    const int64_t first = std::max<int64_t>(std::min(i, count - kNumbers), 0);
    typename PairVector<kBytes>::Sums vectors[kVectors] = {};
    if (!local.high.empty()) {
      AddPairs<kBytes>(local.high, first, vectors);
      for (auto &vector : vectors) vector <<= 16;
    }
    for (auto &vector : vectors) vector += local.start;
    AddPairs<kBytes>(local.low, first, vectors);
    int32_t sums[kNumbers];
    std::memcpy(sums, vectors, sizeof sums);
    uint8_t made[kNumbers];
    FinishSums<kWay, kNumbers>(localScaling, sums, made);
    std::memcpy(bytes + first, made, static_cast<size_t>(std::min<int64_t>(count, kNumbers)));
  }
}

}  // namespace

// --- forms for each level ---

const Kernel<LinesToBytes> &SumLines(Way way) {
  static constexpr std::array kKernels = {KernelOf<SumLinesBody<Way::None>>, KernelOf<SumLinesBody<Way::Words>>,
                                          KernelOf<SumLinesBody<Way::Single>>, KernelOf<SumLinesBody<Way::Double>>,
                                          KernelOf<SumLinesBody<Way::Any>>};
  return kKernels[static_cast<size_t>(way)];
}

template <Way kWay>
constexpr auto kSumPairs = KernelOfSizes<SumPairsBody<16, kWay>, SumPairsBody<32, kWay>, SumPairsBody<64, kWay>>;

const Kernel<PairsToBytes> &SumPairs(Way way) {
  // Sums of pairs are never words.
  static constexpr std::array kKernels = {kSumPairs<Way::None>, kSumPairs<Way::Any>, kSumPairs<Way::Single>,
                                          kSumPairs<Way::Double>, kSumPairs<Way::Any>};
  return kKernels[static_cast<size_t>(way)];
}

constexpr Kernel<LinesToSums<uint16_t>> SumNarrowColumns = KernelOf<SumColumnsBody<uint16_t>>;
constexpr Kernel<LinesToSums<int32_t>> SumColumns = KernelOf<SumColumnsBody<int32_t>>;
constexpr Kernel<NumbersToPairs<uint8_t>> PairSamples = KernelOf<PairNumbersBody<uint8_t>>;
constexpr Kernel<NumbersToPairs<uint16_t>> PairSums = KernelOf<PairNumbersBody<uint16_t>>;
constexpr Kernel<SumsToHalves> PairHalves = KernelOf<PairHalvesBody>;

}  // namespace zvk::filters
