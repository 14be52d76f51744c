#include "filters/box_blur_kernels.h"

#include <cstring>
#include <utility>

#include "pixels/loop_steps.h"
#include "pixels/word_product.h"

namespace zvk::filters {

namespace {

// Vectors never cross a call, as all of this becomes a part of the forms for each level.
#pragma GCC diagnostic ignored "-Wpsabi"

template <class Sum>
[[gnu::always_inline]] inline void AddSamplesBody(const uint8_t *__restrict samples, uint32_t times, ptrdiff_t count,
                                                  Sum *__restrict sums) {
  for (ptrdiff_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + samples[i] * static_cast<Sum>(times));
}

template <class Sum>
[[gnu::always_inline]] inline void ReplaceSamplesBody(const uint8_t *__restrict leaving,
                                                      const uint8_t *__restrict entering, ptrdiff_t count,
                                                      Sum *__restrict sums) {
  for (ptrdiff_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + entering[i] - leaving[i]);
}

[[gnu::always_inline]] inline void DivideNarrowSumsBody(const uint16_t *__restrict sums, ptrdiff_t count, Window window,
                                                        uint8_t *__restrict means) {
  const WordDivision divide(static_cast<uint16_t>(window.divisor));
  for (ptrdiff_t i = 0; i < count; ++i) means[i] = static_cast<uint8_t>(divide(sums[i]));
}

// Window::Mean without a division: half a unit lifts the quotient away from the whole number below it by more than the
// arithmetic errs, which in single precision holds for divisors below kSingleDivisors.
template <class Real>
[[gnu::always_inline]] inline void DivideSumsBody(const uint32_t *__restrict sums, ptrdiff_t count, Window window,
                                                  uint8_t *__restrict means) {
  const uint32_t end = window.SumEnd();
  const Real factor = Real{1} / static_cast<Real>(window.divisor);
  for (ptrdiff_t i = 0; i < count; ++i) {
    // The first sum beyond those of a mean gives 256, of which a byte keeps 0.
    const auto sum = static_cast<int32_t>(std::min(sums[i], end));
    means[i] = static_cast<uint8_t>(static_cast<int32_t>((static_cast<Real>(sum) + Real{0.5}) * factor));
  }
}

constexpr int32_t kSingleDivisors = 16384;

// --- running sums ---

// The numbers of a vector moved up by kStep, with zeros below.
template <size_t kStep, class Vector, size_t... kLane>
[[gnu::always_inline]] inline Vector MovedUp(const Vector &vector, std::index_sequence<kLane...> lanes) {
  return __builtin_shufflevector(Vector{}, vector, (kLane < kStep ? kLane : lanes.size() + kLane - kStep)...);
}

// The last kStep numbers of a vector over and over.
template <size_t kStep, class Vector, size_t... kLane>
[[gnu::always_inline]] inline Vector LastRepeated(const Vector &vector, std::index_sequence<kLane...> lanes) {
  return __builtin_shufflevector(vector, vector, (lanes.size() - kStep + kLane % kStep)...);
}

// Each number becomes the sum of those that are before it by whole steps, and itself.
template <size_t kStep, size_t kFrom = kStep, class Vector, class Lanes>
[[gnu::always_inline]] inline void SumUp(Vector &vector, Lanes lanes) {
  if constexpr (kFrom < Lanes::size()) {
    vector += MovedUp<kFrom>(vector, lanes);
    SumUp<kStep, 2 * kFrom>(vector, lanes);
  }
}

// The same of a line. kBytes is 0 where the machine has no quick shuffle for vectors: there one number follows the
// other.
template <size_t kBytes, size_t kStep, class Sum>
[[gnu::always_inline]] inline void SumUpLine(Sum *sums, ptrdiff_t count) {
  constexpr auto kNext = static_cast<ptrdiff_t>(kStep);
  constexpr size_t kLanes = kBytes / sizeof(Sum);
  std::array<Sum, kStep> before = {};
  ptrdiff_t i = 0;
  if constexpr (kLanes >= 2 * kStep) {
    typedef Sum Vector __attribute__((vector_size(kBytes)));  // NOLINT: an alias may not depend on kBytes
    constexpr std::make_index_sequence<kLanes> kAll = {};
    Vector repeated = {};
    for (; i + static_cast<ptrdiff_t>(kLanes) <= count; i += kLanes) {
      Vector vector;
      std::memcpy(&vector, sums + i, kBytes);
      SumUp<kStep>(vector, kAll);
      vector += repeated;
      std::memcpy(sums + i, &vector, kBytes);
      repeated = LastRepeated<kStep>(vector, kAll);
    }
    std::memcpy(before.data(), &repeated, sizeof before);
  }
  for (; i + kNext <= count; i += kNext) {
    for (ptrdiff_t c = 0; c < kNext; ++c) {
      before[c] = static_cast<Sum>(before[c] + sums[i + c]);
      sums[i + c] = before[c];
    }
  }
  for (ptrdiff_t c = 0; i + c < count; ++c) sums[i + c] = static_cast<Sum>(before[c] + sums[i + c]);
}

// Two steps: how the sum of each window differs from the one before, many at once, then their running sum.
template <size_t kBytes, class Sum, size_t kChannels>
[[gnu::always_inline]] inline void SumWindowsBody(const uint8_t *__restrict samples, int32_t width, int32_t radius,
                                                  Sum *__restrict sums) {
  constexpr auto kStep = static_cast<ptrdiff_t>(kChannels);
  if (width <= 0) return;
  const int32_t last = width - 1;
  const auto first = FirstSums<kChannels>(
      width, radius, [&](ptrdiff_t x, size_t c) { return uint32_t{samples[x * kStep + static_cast<ptrdiff_t>(c)]}; });
  for (size_t c = 0; c < kChannels; ++c) sums[c] = static_cast<Sum>(first[c]);

  // Column x meets x + radius and has taken leave of x - radius - 1; in between neither lies beyond an edge.
  const int32_t innerFirst = std::min(radius, last) + 1;
  const int32_t innerEnd = std::max(width - radius, innerFirst);
  for (int32_t x = 1; x < innerFirst; ++x) {
    OneStepAtATime();
    const uint8_t *entering = samples + std::min(x + radius, last) * kStep;
    for (ptrdiff_t c = 0; c < kStep; ++c) sums[x * kStep + c] = static_cast<Sum>(entering[c] - samples[c]);
  }
  for (ptrdiff_t i = innerFirst * kStep; i < innerEnd * kStep; ++i) {
    sums[i] = static_cast<Sum>(samples[i + radius * kStep] - samples[i - (radius + 1) * kStep]);
  }
  const uint8_t *edge = samples + last * kStep;
  for (int32_t x = innerEnd; x < width; ++x) {
    OneStepAtATime();
    const uint8_t *leaving = samples + (x - radius - 1) * kStep;
    for (ptrdiff_t c = 0; c < kStep; ++c) sums[x * kStep + c] = static_cast<Sum>(edge[c] - leaving[c]);
  }
  SumUpLine<kBytes, kChannels>(sums, width * kStep);
}

// SSE2 shuffles quickly only by steps that divide a vector. With AVX2, eight numbers are as many as one shuffle takes.
template <class Sum, size_t kChannels>
constexpr auto kWindowKernel =
    KernelOfSizes<SumWindowsBody<(kChannels & (kChannels - 1)) == 0 ? 16 : 0, Sum, kChannels>,
                  SumWindowsBody<8 * sizeof(Sum), Sum, kChannels>, SumWindowsBody<64, Sum, kChannels>>;

template <class Sum, size_t... kBefore>
constexpr auto WindowKernels(std::index_sequence<kBefore...>) {
  return std::array{kWindowKernel<Sum, kBefore + 1>...};
}

constexpr std::make_index_sequence<5> kChannelCounts = {};

}  // namespace

// --- forms for each level ---

constexpr Kernel<AddFunction<uint16_t>> AddToNarrowSums = KernelOf<AddSamplesBody<uint16_t>>;
constexpr Kernel<AddFunction<uint32_t>> AddToSums = KernelOf<AddSamplesBody<uint32_t>>;
constexpr Kernel<ReplaceFunction<uint16_t>> ReplaceInNarrowSums = KernelOf<ReplaceSamplesBody<uint16_t>>;
constexpr Kernel<ReplaceFunction<uint32_t>> ReplaceInSums = KernelOf<ReplaceSamplesBody<uint32_t>>;
constexpr Kernel<MeanFunction<uint16_t>> DivideNarrowSums = KernelOf<DivideNarrowSumsBody>;

const Kernel<WindowFunction<uint16_t>> &SumNarrowWindows(size_t channels) {
  static constexpr auto kKernels = WindowKernels<uint16_t>(kChannelCounts);
  return kKernels[channels - 1];
}

const Kernel<WindowFunction<uint32_t>> &SumWindows(size_t channels) {
  static constexpr auto kKernels = WindowKernels<uint32_t>(kChannelCounts);
  return kKernels[channels - 1];
}

const Kernel<MeanFunction<uint32_t>> &DivideSums(Window window) {
  return window.divisor < kSingleDivisors ? KernelOf<DivideSumsBody<float>> : KernelOf<DivideSumsBody<double>>;
}

// --- lines of sums ---

SumLine::SumLine(Window window, int64_t count, bool narrow)
    : window_(window), count_(static_cast<ptrdiff_t>(count)), narrow_(narrow) {
  if (narrow) {
    narrowSums_ = ZeroedBuffer<uint16_t>(count);
  } else {
    sums_ = ZeroedBuffer<uint32_t>(count);
  }
}

void SumLine::Add(const uint8_t *samples, uint32_t times) const {
  if (narrow_) return AddToNarrowSums(samples, times, count_, narrowSums_.Get());
  AddToSums(samples, times, count_, sums_.Get());
}

void SumLine::Replace(const uint8_t *leaving, const uint8_t *entering) const {
  if (narrow_) return ReplaceInNarrowSums(leaving, entering, count_, narrowSums_.Get());
  ReplaceInSums(leaving, entering, count_, sums_.Get());
}

void SumLine::SumAlong(const uint8_t *samples, int32_t width, size_t channels) const {
  if (narrow_) return SumNarrowWindows(channels)(samples, width, window_.radius, narrowSums_.Get());
  SumWindows(channels)(samples, width, window_.radius, sums_.Get());
}

void SumLine::MeansTo(uint8_t *means) const {
  if (narrow_) return DivideNarrowSums(narrowSums_.Get(), count_, window_, means);
  DivideSums(window_)(sums_.Get(), count_, window_, means);
}

}  // namespace zvk::filters
