// The inner loops of the box blur: sums of windows along a line of samples, and their means.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "host/resources.h"
#include "pixels/dispatch.h"
#include "pixels/loop_steps.h"

namespace zvk::filters {

struct Window {
  int32_t radius;   // samples on each side of the middle one
  int32_t divisor;  // by which a sum becomes a mean

  // A window of radius 0 covers one sample and divides it by 3 all the same, so that it darkens.
  explicit Window(int32_t wholeRadius) : radius(wholeRadius), divisor(wholeRadius >= 1 ? 2 * wholeRadius + 1 : 3) {}

  // Sums that lead to a mean are below this.
  uint32_t SumEnd() const { return static_cast<uint32_t>(divisor) * 256; }

  // 16 bits hold the sum of any samples.
  bool IsNarrow() const { return divisor <= 255; }

  // Where dest shares storage with the source, what leaves a sum need not be what has come into it. What no window of
  // samples adds up to gives 0.
  uint8_t Mean(uint32_t sum) const {
    return static_cast<uint8_t>(sum < SumEnd() ? sum / static_cast<uint32_t>(divisor) : 0);
  }
};

// The sums of the window around column 0 of a row, by what sample(column, channel) gives. Columns beyond an edge count
// as the edge, and are not visited one by one.
template <size_t kChannels, class Sample>
[[gnu::always_inline]] inline std::array<uint32_t, kChannels> FirstSums(int32_t width, int32_t radius,
                                                                        const Sample &sample) {
  const int32_t last = width - 1;
  const auto atFirst = static_cast<uint32_t>(radius) + 1;
  const auto beyondLast = static_cast<uint32_t>(std::max(radius - last, 0));
  std::array<uint32_t, kChannels> sums = {};
  for (size_t c = 0; c < kChannels; ++c) sums[c] = sample(0, c) * atFirst + sample(last, c) * beyondLast;
  for (int32_t x = 1; x <= std::min(radius, last); ++x) {
    OneStepAtATime();
    for (size_t c = 0; c < kChannels; ++c) sums[c] += sample(x, c);
  }
  return sums;
}

// --- kernels over samples side by side, with narrow sums of 16 bits or sums of 32, which wrap ---

// Adds `times` times the samples.
template <class Sum>
using AddFunction = void(const uint8_t *samples, uint32_t times, ptrdiff_t count, Sum *sums);
extern const Kernel<AddFunction<uint16_t>> AddToNarrowSums;
extern const Kernel<AddFunction<uint32_t>> AddToSums;

template <class Sum>
using ReplaceFunction = void(const uint8_t *leaving, const uint8_t *entering, ptrdiff_t count, Sum *sums);
extern const Kernel<ReplaceFunction<uint16_t>> ReplaceInNarrowSums;
extern const Kernel<ReplaceFunction<uint32_t>> ReplaceInSums;

// sums[x] becomes the sum of the window around column x of a line, for each of up to five channels.
template <class Sum>
using WindowFunction = void(const uint8_t *samples, int32_t width, int32_t radius, Sum *sums);
const Kernel<WindowFunction<uint16_t>> &SumNarrowWindows(size_t channels);
const Kernel<WindowFunction<uint32_t>> &SumWindows(size_t channels);

// Window::Mean of each sum. Narrow ones must be sums of samples; the window must be narrow.
template <class Sum>
using MeanFunction = void(const Sum *sums, ptrdiff_t count, Window window, uint8_t *means);
extern const Kernel<MeanFunction<uint16_t>> DivideNarrowSums;
const Kernel<MeanFunction<uint32_t>> &DivideSums(Window window);

// --- lines of sums ---

// In 16 bits, if that is asked for, or in 32.
class SumLine {
 public:
  SumLine(Window window, int64_t count, bool narrow);

  // False if there is no memory.
  explicit operator bool() const { return narrow_ ? bool{narrowSums_} : bool{sums_}; }

  void Add(const uint8_t *samples, uint32_t times) const;
  void Replace(const uint8_t *leaving, const uint8_t *entering) const;
  // Each sum becomes that of a window along the line.
  void SumAlong(const uint8_t *samples, int32_t width, size_t channels) const;
  void MeansTo(uint8_t *means) const;

 private:
  Window window_;
  ptrdiff_t count_;
  bool narrow_;
  ZeroedBuffer<uint16_t> narrowSums_;
  ZeroedBuffer<uint32_t> sums_;
};

}  // namespace zvk::filters
