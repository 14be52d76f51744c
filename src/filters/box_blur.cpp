#include "filters/box_blur.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "host/resources.h"
#include "host/truncate.h"
#include "image/rows.h"
#include "pixels/dispatch.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/loop_steps.h"
#include "pixels/neighbourhood.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

namespace {

using enum ColourFamily;

// --- the window ---

struct Window {
  int32_t radius;   // samples on each side of the middle one
  int32_t divisor;  // by which a sum becomes a mean

  // A window of radius 0 covers one sample and divides it by 3 all the same, so that it darkens.
  explicit Window(int32_t wholeRadius) : radius(wholeRadius), divisor(wholeRadius >= 1 ? 2 * wholeRadius + 1 : 3) {}

  // Sums that lead to a mean are below this.
  uint32_t SumEnd() const { return static_cast<uint32_t>(divisor) * 256; }

  // Where dest shares storage with the source, what leaves a sum need not be what has come into it. What no window of
  // samples adds up to gives 0.
  uint8_t Mean(uint32_t sum) const {
    return static_cast<uint8_t>(sum < SumEnd() ? sum / static_cast<uint32_t>(divisor) : 0);
  }
};

bool IsAllocatable(int64_t size) { return size >= 1 && size <= kLargestAllocation; }

// The limits are those of a table of all means in 32 bits, of the sums of a channel with a margin of 5, and of a row
// with a margin of 20 bytes; what exceeds one of them is not blurred. No sum or position overflows within them.
bool HasRoom(const ImageClassData &source, int32_t radius) {
  const int64_t window = 2 * int64_t{radius} + 1;
  return IsAllocatable((window + 1) * 256 * int64_t{sizeof(uint32_t)}) &&
         IsAllocatable((int64_t{source.Width} + 5) * int64_t{sizeof(uint32_t)}) &&
         IsAllocatable(int64_t{source.RowSize} + 20);
}

// --- kernels over samples side by side ---

// Adds `times` times the samples.
[[gnu::always_inline]] inline void AddSamplesBody(const uint8_t *__restrict samples, uint32_t times, ptrdiff_t count,
                                                  uint32_t *__restrict sums) {
  for (ptrdiff_t i = 0; i < count; ++i) sums[i] += samples[i] * times;
}
constexpr auto AddSamples = KernelOf<AddSamplesBody>;

[[gnu::always_inline]] inline void ReplaceSamplesBody(const uint8_t *__restrict leaving,
                                                      const uint8_t *__restrict entering, ptrdiff_t count,
                                                      uint32_t *__restrict sums) {
  for (ptrdiff_t i = 0; i < count; ++i) sums[i] += static_cast<uint32_t>(entering[i] - leaving[i]);
}
constexpr auto ReplaceSamples = KernelOf<ReplaceSamplesBody>;

// Window::Mean of each sum, without a division: half a unit lifts the quotient away from the whole number below it by
// more than the arithmetic errs, which in single precision holds for divisors below kSingleDivisors.
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
template <class Real>
constexpr auto DivideSums = KernelOf<DivideSumsBody<Real>>;

constexpr int32_t kSingleDivisors = 16384;

void MeansOf(const uint32_t *sums, ptrdiff_t count, Window window, uint8_t *means) {
  if (window.divisor < kSingleDivisors) {
    DivideSums<float>(sums, count, window, means);
  } else {
    DivideSums<double>(sums, count, window, means);
  }
}

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
    for (size_t c = 0; c < kChannels; ++c) sums[c] += sample(x, c);
  }
  return sums;
}

// sums[x] becomes the sum of the window around column x, for each channel. Two steps: how each sum differs from the
// one before, many at once, then their running sum.
template <size_t kChannels>
[[gnu::always_inline]] inline void SumWindowsBody(const uint8_t *__restrict samples, int32_t width, int32_t radius,
                                                  uint32_t *__restrict sums) {
  constexpr auto kStep = static_cast<ptrdiff_t>(kChannels);
  const int32_t last = width - 1;
  // Column x takes leave of x - radius and meets x + radius + 1; in between neither lies beyond an edge.
  const int32_t innerFirst = std::min(radius, width);
  const int32_t innerEnd = std::max(last - radius, innerFirst);
  for (int32_t x = 0; x < innerFirst; ++x) {
    const uint8_t *entering = samples + std::min(x + radius + 1, last) * kStep;
    for (ptrdiff_t c = 0; c < kStep; ++c) sums[x * kStep + c] = static_cast<uint32_t>(entering[c] - samples[c]);
  }
  for (ptrdiff_t i = innerFirst * kStep; i < innerEnd * kStep; ++i) {
    sums[i] = static_cast<uint32_t>(samples[i + (radius + 1) * kStep] - samples[i - radius * kStep]);
  }
  const uint8_t *edge = samples + last * kStep;
  for (int32_t x = innerEnd; x < width; ++x) {
    const uint8_t *leaving = samples + (x - radius) * kStep;
    for (ptrdiff_t c = 0; c < kStep; ++c) sums[x * kStep + c] = static_cast<uint32_t>(edge[c] - leaving[c]);
  }

  auto running = FirstSums<kChannels>(
      width, radius, [&](ptrdiff_t x, size_t c) { return uint32_t{samples[x * kStep + static_cast<ptrdiff_t>(c)]}; });
  for (int32_t x = 0; x < width; ++x) {
    for (size_t c = 0; c < kChannels; ++c) {
      const uint32_t difference = sums[c];
      sums[c] = running[c];
      running[c] += difference;
    }
    sums += kStep;
  }
}
template <size_t kChannels>
constexpr auto SumWindows = KernelOf<SumWindowsBody<kChannels>>;

// --- the passes ---

template <class Layout>
class BoxBlur {
 public:
  BoxBlur(ImageClassData &source, ImageClassData &dest, Window window)
      : source_(source),
        dest_(dest),
        window_(window),
        width_(source.Width),
        samples_(int64_t{source.Width} * kChannels),
        rows_(source, dest),
        columnSums_(samples_),
        windowSums_(samples_),
        leaving_(samples_),
        entering_(samples_),
        made_(samples_) {}

  // False if there is no memory to work in.
  explicit operator bool() const { return columnSums_ && windowSums_ && leaving_ && entering_ && made_; }

  void Run(bool vertical, bool horizontal) {
    if (vertical && horizontal && SamplesAreApart<Layout>(dest_) &&
        OrderIsUnobservable<Layout>(source_, dest_, width_, source_.Height)) {
      // Nobody can tell that each row gets both passes before the next one gets the first.
      BlurColumns(true);
    } else if (vertical) {
      BlurColumns(false);
      if (horizontal) BlurDestAlongRows();
    } else if (horizontal && AreDisjoint(source_, dest_)) {
      BlurAlongRows();
    } else if (horizontal) {
      BlurAlongRowsInOrder();
    }
  }

 private:
  static constexpr ptrdiff_t kChannels = Layout::channelCount;

  // A row of the source; zeros for one that cannot be had. In a mapped file it would not outlive the next fetch, so it
  // is copied.
  const uint8_t *SourceSamples(int32_t y, uint8_t *buffer) {
    const uint8_t *row = FetchRow(source_, y);
    if (row == nullptr) {
      std::fill_n(buffer, samples_, uint8_t{0});
    } else if (HasFixedRows(source_)) {
      return rows_.source.Read(row, width_, buffer);
    } else {
      rows_.source.Copy(row, width_, buffer);
    }
    return buffer;
  }

  // The column sums around row 0. A row that stands for those beyond an edge is fetched for each of them, and added
  // once.
  void SumFirstRows() {
    uint32_t times = 0;
    for (int32_t j = -window_.radius; j <= window_.radius; ++j) {
      const int32_t y = PlaceAt(j, 0, source_.Height);
      const uint8_t *row = FetchRow(source_, y);
      ++times;
      if (j < window_.radius && PlaceAt(j + 1, 0, source_.Height) == y) continue;
      if (row != nullptr) {
        AddSamples(rows_.source.Read(row, width_, entering_.Get()), times, samples_, columnSums_.Get());
      }
      times = 0;
    }
  }

  void BlurColumns(bool thenAlongRows) {
    SumFirstRows();
    const int64_t lastRow = int64_t{source_.Height} - 1;
    for (int32_t y = 0; y < source_.Height; ++y) {
      uint8_t *row = FetchRow(dest_, y);
      if (row != nullptr) {
        rows_.dest.Write(row, width_, made_.Get(), [&](uint8_t *samples) {
          MeansOf(columnSums_.Get(), samples_, window_, samples);
          if (thenAlongRows) BlurAlong(samples, samples);
        });
      }
      const uint8_t *leaving = SourceSamples(std::max(y - window_.radius, 0), leaving_.Get());
      const auto next = static_cast<int32_t>(std::min(int64_t{y} + window_.radius + 1, lastRow));
      ReplaceSamples(leaving, SourceSamples(next, entering_.Get()), samples_, columnSums_.Get());
    }
  }

  // One row of samples to another, which may be the same.
  void BlurAlong(const uint8_t *samples, uint8_t *means) {
    SumWindows<Layout::channelCount>(samples, width_, window_.radius, windowSums_.Get());
    MeansOf(windowSums_.Get(), samples_, window_, means);
  }

  void BlurDestAlongRows() {
    ForEachRow(dest_, source_.Height, [&](uint8_t *row, int32_t /*y*/) {
      const uint8_t *samples = rows_.dest.Read(row, width_, entering_.Get());
      rows_.dest.Write(row, width_, made_.Get(), [&](uint8_t *means) { BlurAlong(samples, means); });
    });
  }

  void BlurAlongRows() {
    ForEachRowPair(dest_, source_, source_.Height, [&](uint8_t *destRow, const uint8_t *sourceRow) {
      const uint8_t *samples = rows_.source.Read(sourceRow, width_, entering_.Get());
      rows_.dest.Write(destRow, width_, made_.Get(), [&](uint8_t *means) { BlurAlong(samples, means); });
    });
  }

  // A pass along rows alone reads the source itself and not a copy, so what it writes may come back to it.
  void BlurAlongRowsInOrder() {
    const auto from = Layout::OffsetsOf(source_);
    const auto to = Layout::OffsetsOf(dest_);
    const int32_t last = width_ - 1;
    ForEachRowPair(dest_, source_, source_.Height, [&](uint8_t *destRow, const uint8_t *sourceRow) {
      const auto sample = [&](int32_t x, size_t c) {
        return uint32_t{sourceRow[ptrdiff_t{x} * source_.PixelSize + from[c]]};
      };
      auto sums = FirstSums<Layout::channelCount>(width_, window_.radius, sample);
      for (int32_t x = 0; x < width_; ++x) {
        uint8_t *pixel = destRow + ptrdiff_t{x} * dest_.PixelSize;
        for (size_t c = 0; c < sums.size(); ++c) pixel[to[c]] = window_.Mean(sums[c]);
        for (size_t c = 0; c < sums.size(); ++c) sums[c] += sample(std::min(x + window_.radius + 1, last), c);
        for (size_t c = 0; c < sums.size(); ++c) sums[c] -= sample(std::max(x - window_.radius, 0), c);
        OneStepAtATime();  // the compiler cannot tell by addresses whether two mappings of a file overlap
      }
    });
  }

  ImageClassData &source_;
  ImageClassData &dest_;
  Window window_;
  int32_t width_;
  int64_t samples_;  // of a row
  SampleRowsOfBoth<Layout> rows_;
  ZeroedBuffer<uint32_t> columnSums_;
  ZeroedBuffer<uint32_t> windowSums_;
  ZeroedBuffer<uint8_t> leaving_;
  ZeroedBuffer<uint8_t> entering_;
  ZeroedBuffer<uint8_t> made_;
};

}  // namespace

// --- handlers ---

REALobject BoxBlurFilter(REALobject instance, REALobject dest, double radius, uint8_t vertical, uint8_t horizontal) {
  const int32_t wholeRadius = Truncate(radius);
  return RunFilterOn<Gray, RGB, CMYK>(instance, dest,
                                      [&]<class Layout>(Layout, ImageClassData &source, ImageClassData &target) {
                                        // A negative radius has no window at all.
                                        if (wholeRadius < 0 || !HasRoom(source, wholeRadius)) return;
                                        BoxBlur<Layout> blur(source, target, Window(wholeRadius));
                                        if (blur) blur.Run(vertical != 0, horizontal != 0);
                                      });
}

REALobject BoxBlurFilter2(REALobject instance, REALobject dest, double radius, int32_t iterations, uint8_t vertical,
                          uint8_t horizontal) {
  if (instance == nullptr) return nullptr;
  REALLockObject(instance);
  ObjectReference current(instance);
  for (int32_t i = 0; i < iterations && current; ++i) {
    current = ObjectReference(BoxBlurFilter(current.Get(), i == 0 ? dest : nullptr, radius, vertical, horizontal));
  }
  return current.Release();
}

}  // namespace zvk::filters
