#include "filters/box_blur.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "filters/box_blur_kernels.h"
#include "host/resources.h"
#include "host/truncate.h"
#include "image/rows.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/loop_steps.h"
#include "pixels/neighbourhood.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

namespace {

using enum ColourFamily;

bool IsAllocatable(int64_t size) { return size >= 1 && size <= kLargestAllocation; }

// The limits are those of a table of all means in 32 bits, of the sums of a channel with a margin of 5, and of a row
// with a margin of 20 bytes; what exceeds one of them is not blurred. No sum or position overflows within them.
bool HasRoom(const ImageClassData &source, int32_t radius) {
  const int64_t window = 2 * int64_t{radius} + 1;
  return IsAllocatable((window + 1) * 256 * int64_t{sizeof(uint32_t)}) &&
         IsAllocatable((int64_t{source.Width} + 5) * int64_t{sizeof(uint32_t)}) &&
         IsAllocatable(int64_t{source.RowSize} + 20);
}

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
        // Rows that may change between entering and leaving need not add up to samples.
        columnSums_(window, samples_, window.IsNarrow() && HasFixedRows(source) && ImagesAreApart(source, dest)),
        windowSums_(window, samples_, window.IsNarrow()),
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
    } else if (horizontal && ImagesAreApart(source_, dest_)) {
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
        columnSums_.Add(rows_.source.Read(row, width_, entering_.Get()), times);
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
          columnSums_.MeansTo(samples);
          if (thenAlongRows) BlurAlong(samples, samples);
        });
      }
      const uint8_t *leaving = SourceSamples(std::max(y - window_.radius, 0), leaving_.Get());
      const auto next = static_cast<int32_t>(std::min(int64_t{y} + window_.radius + 1, lastRow));
      columnSums_.Replace(leaving, SourceSamples(next, entering_.Get()));
    }
  }

  // One row of samples to another, which may be the same.
  void BlurAlong(const uint8_t *samples, uint8_t *means) {
    windowSums_.SumAlong(samples, width_, Layout::channelCount);
    windowSums_.MeansTo(means);
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
  SumLine columnSums_;
  SumLine windowSums_;
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
