#include "filters/matrix_filter_kernel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "pixels/dispatch.h"
#include "pixels/loop_steps.h"

namespace zvk::filters {

namespace {

using Scaling = MatrixSums::Scaling;

// Samples summed at once: what the registers hold.
constexpr int32_t kBlockBytes = 128;

// What the result of a sum is before it is cut to a byte.
template <Scaling kScaling>
[[gnu::always_inline]] inline int32_t Scaled(const MatrixResult &result, int32_t sum) {
  if constexpr (kScaling == Scaling::None) return sum + result.delta;
  if constexpr (kScaling == Scaling::Bounded) return static_cast<int32_t>((sum + result.delta) * result.scale);
  return result.Scaled(sum);
}

// `count` samples, at most a block, from `offset` on. All arithmetic wraps. A constant count makes straight code.
template <class Sum, Scaling kScaling>
[[gnu::always_inline]] inline void SumBlock(const WeightedLine *__restrict lines, size_t lineCount, Sum start,
                                            MatrixResult result, int64_t offset, int32_t count,
                                            uint8_t *__restrict bytes) {
  constexpr auto kBlock = static_cast<int32_t>(kBlockBytes / sizeof(Sum));
  Sum sums[kBlock] = {};
  for (int32_t i = 0; i < count; ++i) sums[i] = start;
  for (size_t k = 0; k < lineCount; ++k) {
    OneStepAtATime();
    const uint8_t *samples = lines[k].samples + offset;
    const auto weight = static_cast<Sum>(lines[k].weight);
    for (int32_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + samples[i] * weight);
  }
  // The detour over whole numbers keeps each loop to one width of numbers.
  int32_t whole[kBlock] = {};
  for (int32_t i = 0; i < count; ++i) whole[i] = std::clamp(Scaled<kScaling>(result, sums[i]), 0, 255);
  for (int32_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(whole[i]);
}

template <class Sum, Scaling kScaling>
[[gnu::always_inline]] inline void SumScaledLinesBody(const WeightedLine *lines, size_t lineCount, Sum start,
                                                      const MatrixResult &result, int64_t count, uint8_t *bytes) {
  constexpr auto kBlock = static_cast<int32_t>(kBlockBytes / sizeof(Sum));
  if (count < kBlock) {
    SumBlock<Sum, kScaling>(lines, lineCount, start, result, 0, static_cast<int32_t>(count), bytes);
    return;
  }
  // The last block may do some of the one before it again.
  for (int64_t i = 0; i < count; i += kBlock) {
    const int64_t first = std::min(i, count - kBlock);
    SumBlock<Sum, kScaling>(lines, lineCount, start, result, first, kBlock, bytes + first);
  }
}
template <class Sum, Scaling kScaling>
constexpr auto SumScaledLines = KernelOf<SumScaledLinesBody<Sum, kScaling>>;

template <class Sum>
void SumLines(Scaling scaling, std::span<const WeightedLine> lines, Sum start, const MatrixResult &result,
              int64_t count, uint8_t *bytes) {
  switch (scaling) {
    case Scaling::None:
      return SumScaledLines<Sum, Scaling::None>(lines.data(), lines.size(), start, result, count, bytes);
    case Scaling::Bounded:
      return SumScaledLines<Sum, Scaling::Bounded>(lines.data(), lines.size(), start, result, count, bytes);
    case Scaling::Any:
      return SumScaledLines<Sum, Scaling::Any>(lines.data(), lines.size(), start, result, count, bytes);
  }
}

// How the sums from `lowest` to `highest`, of which not all may occur, are scaled.
Scaling ScalingOf(const MatrixResult &result, int64_t lowest, int64_t highest) {
  constexpr double kLimit = 2147483648.0;  // 32 bits hold what lies within
  if (result.scale == 1.0) return Scaling::None;
  const auto farthest =
      static_cast<double>(std::max(std::abs(lowest + result.delta), std::abs(highest + result.delta)));
  return farthest < kLimit && farthest * std::abs(result.scale) < kLimit ? Scaling::Bounded : Scaling::Any;
}

}  // namespace

MatrixSums::MatrixSums(std::span<const MatrixTerm> terms, const MatrixResult &result) : result_(result) {
  int64_t lowest = 0;
  int64_t highest = 0;
  for (const MatrixTerm &term : terms) (term.weight < 0 ? lowest : highest) += int64_t{255} * term.weight;
  scaling_ = ScalingOf(result, lowest, highest);
  narrow_ = highest - lowest < 65536;
  // Narrow sums start at 0 for the lowest one, and the delta takes that back.
  start_ = static_cast<uint16_t>(narrow_ ? -lowest : 0);
  result_.delta -= start_;
}

void MatrixSums::operator()(std::span<const WeightedLine> lines, int64_t count, uint8_t *bytes) const {
  if (narrow_) {
    SumLines<uint16_t>(scaling_, lines, start_, result_, count, bytes);
  } else {
    SumLines<int32_t>(scaling_, lines, 0, result_, count, bytes);
  }
}

}  // namespace zvk::filters
