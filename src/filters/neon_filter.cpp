#include "filters/neon_filter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "host/resources.h"
#include "pixels/dispatch.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/neighbourhood.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

namespace {

using enum ColourFamily;

// The root of twice the sum of the squares, as a whole number up to 510. Roots of whole numbers that small, at most
// 260100, come out the same in single and in double precision: none is rounded up to a whole number.
[[gnu::always_inline]] inline int32_t Contour(int32_t sample, int32_t right, int32_t below) {
  const int32_t squares = (sample - right) * (sample - right) + (sample - below) * (sample - below);
  return static_cast<int32_t>(std::sqrt(static_cast<float>(2 * squares)));
}

// `step` samples further on is the next pixel.
[[gnu::always_inline]] inline void ContoursBody(const uint8_t *__restrict samples, const uint8_t *__restrict below,
                                                ptrdiff_t count, ptrdiff_t step, uint8_t *__restrict contours) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    contours[i] = static_cast<uint8_t>(std::min(Contour(samples[i], samples[i + step], below[i]), 255));
  }
}
constexpr auto Contours = KernelOf<ContoursBody>;

template <class Layout>
class NeonContours {
 public:
  NeonContours(ImageClassData &source, ImageClassData &dest)
      : source_(source), dest_(dest), rowBytes_(std::max(source.RowSize, 0)), rows_(source, dest) {
    // The limit is that of a whole row with a margin of 16 bytes.
    const int64_t room = int64_t{source.RowSize} + 16;
    if (room < 1 || room > kLargestAllocation) return;
    const int64_t samples = (int64_t{source.Width} + 1) * kChannels;
    for (ZeroedBuffer<uint8_t> *buffer : {&row_, &below_, &made_}) *buffer = ZeroedBuffer<uint8_t>(samples);
  }

  // False if there is no memory to work in.
  explicit operator bool() const { return row_ && below_ && made_; }

  void Run() {
    const int32_t width = source_.Width;
    Take(0, row_);
    for (int32_t y = 0; y < source_.Height; ++y) {
      HeldRow destRow(dest_, y, source_);
      if (y < source_.Height - 1) {
        Take(y + 1, below_);
        destRow.Again();
      } else {
        std::fill_n(below_.Get(), (int64_t{width} + 1) * kChannels, uint8_t{0});
      }
      if (destRow) {
        rows_.dest.Write(destRow.Get(), width, made_.Get(), [&](uint8_t *contours) { MakeRow(y, contours); });
      }
      std::swap(row_, below_);
    }
  }

 private:
  static constexpr ptrdiff_t kChannels = Layout::channelCount;

  // One pixel more than the row has. A row that cannot be had counts as zeros.
  void Take(int32_t y, const ZeroedBuffer<uint8_t> &buffer) {
    const uint8_t *row = FetchRow(source_, y);
    rows_.source.CopyWithin(row, row != nullptr ? rowBytes_ : 0, source_.Width + 1, buffer.Get());
  }

  void MakeRow(int32_t y, uint8_t *contours) const {
    Contours(row_.Get(), below_.Get(), source_.Width * kChannels, kChannels, contours);
    if constexpr (Layout::family == ColourFamily::CMYK && Layout::hasAlpha) MakeYellowOfRow(y, contours);
  }

  // Yellow of CMYK with alpha: its cut to 255 asks for the row's index instead of the value. In the first 256 rows the
  // low byte of the value is stored, in all others 255.
  void MakeYellowOfRow(int32_t y, uint8_t *contours) const {
    constexpr size_t kYellow = 2;
    static_assert(Layout::channels[kYellow] == &ImageClassData::YellowOffset);
    const ptrdiff_t place = rows_.source.PlaceOf(kYellow);
    for (int32_t x = 0; x < source_.Width; ++x) {
      const ptrdiff_t i = x * kChannels + place;
      contours[i] = static_cast<uint8_t>(y > 255 ? 255 : Contour(row_[i], row_[i + kChannels], below_[i]));
    }
  }

  ImageClassData &source_;
  ImageClassData &dest_;
  int64_t rowBytes_;
  SampleRowsOfBoth<Layout> rows_;
  ZeroedBuffer<uint8_t> row_;
  ZeroedBuffer<uint8_t> below_;
  ZeroedBuffer<uint8_t> made_;
};

}  // namespace

REALobject NeonFilter(REALobject instance, REALobject dest) {
  return RunFilterOn<Gray, RGB, CMYK>(instance, dest,
                                      [&]<class Layout>(Layout, ImageClassData &source, ImageClassData &target) {
                                        NeonContours<Layout> contours(source, target);
                                        if (contours) contours.Run();
                                      });
}

}  // namespace zvk::filters
