#include "filters/engrave_filter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>

#include "host/resources.h"
#include "pixels/dispatch.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/neighbourhood.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"
#include "pixels/row_window.h"

namespace zvk::filters {

namespace {

using enum ColourFamily;

// In 16 bits, of which a vector holds more.
constexpr uint8_t Relief(uint8_t sample, uint8_t other) {
  const auto difference = static_cast<int16_t>(sample - other + 128);
  return static_cast<uint8_t>(std::clamp<int16_t>(difference, 0, 255));
}

// --- any images: pixel by pixel, the samples of one row in hand before the other row is fetched ---

template <class Layout>
void EngraveByPixel(ImageClassData &source, ImageClassData &dest, int32_t level) {
  const auto from = Layout::OffsetsOf(source);
  const auto to = Layout::OffsetsOf(dest);
  for (int32_t y = 0; y < source.Height; ++y) {
    const int32_t otherY = PlaceAt(y, level, source.Height);
    HeldRow destRow(dest, y, source);
    for (int32_t x = 0; x < source.Width; ++x) {
      std::array<uint8_t, Layout::channelCount> samples = {};
      const uint8_t *row = FetchRow(source, y);
      if (row == nullptr) continue;
      const uint8_t *pixel = row + ptrdiff_t{x} * source.PixelSize;
      for (size_t c = 0; c < samples.size(); ++c) samples[c] = pixel[from[c]];

      const uint8_t *otherRow = FetchRow(source, otherY);
      if (otherRow == nullptr) continue;
      const uint8_t *other = otherRow + ptrdiff_t{PlaceAt(x, level, source.Width)} * source.PixelSize;
      for (size_t c = 0; c < samples.size(); ++c) samples[c] = Relief(samples[c], other[from[c]]);

      if (destRow.Again() == nullptr) continue;
      uint8_t *destPixel = destRow.Get() + ptrdiff_t{x} * dest.PixelSize;
      for (size_t c = 0; c < samples.size(); ++c) destPixel[to[c]] = samples[c];
    }
  }
}

// --- images that share nothing: whole rows ---

[[gnu::always_inline]] inline void ReliefOfRowBody(const uint8_t *__restrict samples, const uint8_t *__restrict others,
                                                   ptrdiff_t count, uint8_t *__restrict relief) {
  for (ptrdiff_t i = 0; i < count; ++i) relief[i] = Relief(samples[i], others[i]);
}
constexpr auto ReliefOfRow = KernelOf<ReliefOfRowBody>;

template <class Layout>
class RowEngraver {
 public:
  RowEngraver(ImageClassData &source, ImageClassData &dest, int32_t level)
      : source_(source),
        dest_(dest),
        level_(level),
        // Wrapping sums lead to neither column in between.
        innerFirst_(static_cast<int32_t>(std::clamp<int64_t>(-int64_t{level}, 0, source.Width))),
        innerEnd_(static_cast<int32_t>(std::clamp<int64_t>(source.Width - int64_t{level}, innerFirst_, source.Width))),
        window_(source, RangeOf(Layout::OffsetsOf(source)), source.Width, RowsOfWindow(source, level)),
        rows_(source, dest),
        samples_(int64_t{source.Width} * kChannels),
        others_(int64_t{source.Width} * kChannels),
        made_(int64_t{source.Width} * kChannels) {}

  // False if there is no memory to work in.
  explicit operator bool() const { return window_ && samples_ && others_ && made_; }

  void Run() {
    const int32_t width = source_.Width;
    // In the order in which they lie, or else the block of a file would go back and forth until the window is full.
    for (int32_t y = 0; y < std::min(level_, source_.Height); ++y) window_.Row(y);
    for (int32_t y = 0; y < source_.Height; ++y) {
      uint8_t *destRow = FetchRow(dest_, y);
      const uint8_t *row = window_.Row(y);
      const uint8_t *otherRow = window_.Row(PlaceAt(y, level_, source_.Height));
      if (destRow == nullptr || row == nullptr || otherRow == nullptr) continue;
      const uint8_t *samples = rows_.source.Read(row, width, samples_.Get());
      const uint8_t *others = rows_.source.Read(otherRow, width, others_.Get());
      rows_.dest.Write(destRow, width, made_.Get(), [&](uint8_t *made) { EngraveRow(samples, others, made); });
    }
  }

 private:
  static constexpr ptrdiff_t kChannels = Layout::channelCount;

  // From a row to its counterpart. A wrapping sum leads to an edge, however far that is.
  static int32_t RowsOfWindow(const ImageClassData &source, int32_t level) {
    return static_cast<int32_t>(std::min(std::abs(int64_t{level}) + 1, int64_t{source.Height}));
  }

  void EngraveRow(const uint8_t *samples, const uint8_t *others, uint8_t *made) const {
    EngravePixels(samples, others, 0, innerFirst_, made);
    if (innerFirst_ < innerEnd_) {
      const ptrdiff_t inner = innerFirst_ * kChannels;
      const uint8_t *counterparts = others + inner + level_ * kChannels;
      ReliefOfRow(samples + inner, counterparts, (innerEnd_ - innerFirst_) * kChannels, made + inner);
    }
    EngravePixels(samples, others, innerEnd_, source_.Width, made);
  }

  // Columns whose counterpart lies beyond an edge.
  void EngravePixels(const uint8_t *samples, const uint8_t *others, int32_t first, int32_t end, uint8_t *made) const {
    for (int32_t x = first; x < end; ++x) {
      const ptrdiff_t pixel = x * kChannels, other = PlaceAt(x, level_, source_.Width) * kChannels;
      for (ptrdiff_t c = 0; c < kChannels; ++c) made[pixel + c] = Relief(samples[pixel + c], others[other + c]);
    }
  }

  ImageClassData &source_;
  ImageClassData &dest_;
  int32_t level_;
  int32_t innerFirst_;  // columns whose counterpart lies in the row
  int32_t innerEnd_;
  RowWindow window_;
  SampleRowsOfBoth<Layout> rows_;
  ZeroedBuffer<uint8_t> samples_;
  ZeroedBuffer<uint8_t> others_;
  ZeroedBuffer<uint8_t> made_;
};

template <class Layout>
void Engrave(ImageClassData &source, ImageClassData &dest, int32_t level) {
  if (ImagesAreApart(source, dest)) {
    RowEngraver<Layout> engraver(source, dest, level);
    if (engraver) return engraver.Run();
  }
  EngraveByPixel<Layout>(source, dest, level);
}

}  // namespace

REALobject EngraveFilter(REALobject instance, REALobject dest, int32_t level) {
  return RunFilterOn<Gray, RGB>(instance, dest,
                                [&]<class Layout>(Layout, ImageClassData &source, ImageClassData &target) {
                                  Engrave<Layout>(source, target, level);
                                });
}

}  // namespace zvk::filters
