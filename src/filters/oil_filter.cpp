#include "filters/oil_filter.h"

#include <algorithm>
#include <array>
#include <cstddef>

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

constexpr int32_t kMostLevels = 256;

// What is written where no pixel lies in range.
constexpr uint8_t kNoSample = 255;

// The first and last row or column in range of a place; none if the last is before the first. The sums wrap, so that a
// range near the end of the numbers can reach nothing as well.
struct Span {
  int32_t first;
  int32_t last;

  Span(int32_t place, int32_t range, int32_t size)
      : first(std::max(place - range, 0)), last(std::min(place + range, size - 1)) {}
};

// --- any images: the whole window for each pixel, its rows fetched one by one ---

struct Bins {
  std::array<int32_t, kMostLevels> counts;
  std::array<int32_t, kMostLevels> sums;

  void Clear(int32_t levels) {
    std::fill_n(counts.begin(), levels, 0);
    std::fill_n(sums.begin(), levels, 0);
  }
  void Add(int32_t sample, int32_t levels) {
    const auto bin = static_cast<size_t>(sample * levels / 256);
    ++counts[bin];
    sums[bin] += sample;
  }
  size_t Fullest(int32_t levels) const {
    return static_cast<size_t>(std::max_element(counts.begin(), counts.begin() + levels) - counts.begin());
  }
};

// Where kNoSample goes that is meant for a channel: for magenta and yellow that is cyan, and they stay as they are.
constexpr ChannelOffset PlaceOfNoSample(ChannelOffset channel) {
  const bool goesToCyan = channel == &ImageClassData::MagentaOffset || channel == &ImageClassData::YellowOffset;
  return goesToCyan ? &ImageClassData::CyanOffset : channel;
}

template <class Layout>
void PaintPixel(const std::array<Bins, Layout::channelCount> &bins, int32_t levels, const ImageClassData &dest,
                uint8_t *pixel) {
  for (size_t c = 0; c < Layout::channelCount; ++c) {
    const size_t best = bins[c].Fullest(levels);
    const int32_t count = bins[c].counts[best];
    if (count > 0) {
      pixel[dest.*Layout::channels[c]] = static_cast<uint8_t>(bins[c].sums[best] / count);
    } else {
      pixel[dest.*PlaceOfNoSample(Layout::channels[c])] = kNoSample;
    }
  }
}

// One row of dest. rowAt(y) gives a row of the source; nil for one that cannot be had, which is left out.
template <class Layout, class RowAt>
void PaintRowByPixel(ImageClassData &source, ImageClassData &dest, int32_t levels, int32_t range, int32_t y,
                     const RowAt &rowAt) {
  const auto offsets = Layout::OffsetsOf(source);
  std::array<Bins, Layout::channelCount> bins = {};
  const Span rows(y, range, source.Height);
  HeldRow destRow(dest, y, source);
  for (int32_t x = 0; x < source.Width; ++x) {
    const Span columns(x, range, source.Width);
    for (Bins &ofChannel : bins) ofChannel.Clear(levels);
    for (int32_t row = rows.first; row <= rows.last; ++row) {
      const uint8_t *sourceRow = rowAt(row);
      if (sourceRow == nullptr) continue;
      for (int32_t column = columns.first; column <= columns.last; ++column) {
        const uint8_t *pixel = sourceRow + ptrdiff_t{column} * source.PixelSize;
        for (size_t c = 0; c < bins.size(); ++c) bins[c].Add(pixel[offsets[c]], levels);
      }
    }
    if (destRow.Again() == nullptr) continue;
    PaintPixel<Layout>(bins, levels, dest, destRow.Get() + ptrdiff_t{x} * dest.PixelSize);
  }
}

// --- images that share nothing: bins that slide along a row, so that a pixel costs two columns of its window ---

// Where the samples of one channel are counted. Sums wrap as 32 bits do.
template <class Key>
struct SlidingBins {
  // For each bin 256 x the count of its samples, and 255 - its index in the lowest byte: the largest key is that of the
  // fullest bin, the lower one of two.
  alignas(64) std::array<Key, kMostLevels> keys;
  std::array<uint32_t, kMostLevels> sums;

  SlidingBins() : sums() {
    for (size_t bin = 0; bin < keys.size(); ++bin) keys[bin] = static_cast<Key>(255 - bin);
  }
};

// Samples of a window of which a Key of 32 bits can keep count.
constexpr int64_t kMostSamplesOfNarrowKeys = (1 << 24) - 1;

// One row of dest, and the rows of the source in its range.
template <size_t kChannels>
struct OilRow {
  const uint8_t *const *rows;
  int32_t rowCount;
  int32_t width;
  int32_t range;
  int32_t levels;
  ptrdiff_t sourcePixelSize;
  ptrdiff_t destPixelSize;
  std::array<int32_t, kChannels> sourceOffsets;
  std::array<int32_t, kChannels> destOffsets;
};

// Takes the samples of a column into the bins (kTimes is 1) or out of them (-1).
template <int32_t kTimes, size_t kChannels, class Key>
[[gnu::always_inline]] inline void CountColumn(const OilRow<kChannels> &row, int32_t column,
                                               std::array<SlidingBins<Key>, kChannels> &bins) {
  for (int32_t i = 0; i < row.rowCount; ++i) {
    const uint8_t *pixel = row.rows[i] + column * row.sourcePixelSize;
    for (size_t c = 0; c < kChannels; ++c) {
      const int32_t sample = pixel[row.sourceOffsets[c]];
      const auto bin = static_cast<size_t>(sample * row.levels / 256);
      bins[c].keys[bin] += static_cast<Key>(kTimes * 256);
      bins[c].sums[bin] += static_cast<uint32_t>(kTimes * sample);
    }
  }
}

// Keys are looked through in blocks of this many; those of the last block that are no levels count nothing.
constexpr size_t kKeyBlock = 16;

template <class Key>
[[gnu::always_inline]] inline uint8_t MeanOfFullest(const SlidingBins<Key> &bins, size_t blocks) {
  std::array<Key, kKeyBlock> largest = {};
  for (size_t block = 0; block < blocks; ++block) {
    for (size_t i = 0; i < kKeyBlock; ++i) largest[i] = std::max(largest[i], bins.keys[block * kKeyBlock + i]);
  }
  Key fullest = 0;
  for (const Key key : largest) fullest = std::max(fullest, key);
  const auto sum = static_cast<int32_t>(bins.sums[255 - (fullest & 255)]);
  const auto count = std::max(static_cast<int32_t>(fullest >> 8), 1);  // a window holds its own pixel at least
  return static_cast<uint8_t>(sum / count);
}

template <class Key, size_t kChannels>
[[gnu::always_inline]] inline void PaintRowBody(const OilRow<kChannels> &job, uint8_t *dest) {
  const OilRow<kChannels> row = job;  // a copy, as the compiler must take every byte that is written for a change of it
  const size_t blocks = (static_cast<size_t>(row.levels) + kKeyBlock - 1) / kKeyBlock;
  std::array<SlidingBins<Key>, kChannels> bins;
  for (int32_t x = 0; x < std::min(row.range, row.width); ++x) CountColumn<1>(row, x, bins);
  for (int32_t x = 0; x < row.width; ++x) {
    if (x + row.range < row.width) CountColumn<1>(row, x + row.range, bins);
    if (x > row.range) CountColumn<-1>(row, x - row.range - 1, bins);
    for (size_t c = 0; c < kChannels; ++c) dest[row.destOffsets[c]] = MeanOfFullest(bins[c], blocks);
    dest += row.destPixelSize;
  }
}
template <class Key, size_t kChannels>
constexpr auto PaintRow = KernelUpToAVX2<PaintRowBody<Key, kChannels>>;

// False, with nothing written, if there is no memory.
template <class Layout>
bool PaintByRow(ImageClassData &source, ImageClassData &dest, int32_t levels, int32_t range) {
  const auto mostRows = static_cast<int32_t>(std::min(2 * int64_t{range} + 1, int64_t{source.Height}));
  RowWindow window(source, RangeOf(Layout::OffsetsOf(source)), source.Width, mostRows);
  const ZeroedBuffer<const uint8_t *> addresses(source.Height);
  if (!window || !addresses) return false;
  int32_t next = 0;
  ForEachRow(dest, source.Height, [&](uint8_t *destRow, int32_t y) {
    const Span rows(y, range, source.Height);
    for (; next <= rows.last; ++next) addresses[next] = window.Row(next);
    if (std::find(addresses.Get() + rows.first, addresses.Get() + rows.last + 1, nullptr) !=
        addresses.Get() + rows.last + 1) {
      return PaintRowByPixel<Layout>(source, dest, levels, range, y, [&](int32_t row) { return addresses[row]; });
    }
    const OilRow<Layout::channelCount> row{addresses.Get() + rows.first,
                                           rows.last - rows.first + 1,
                                           source.Width,
                                           range,
                                           levels,
                                           source.PixelSize,
                                           dest.PixelSize,
                                           Layout::OffsetsOf(source),
                                           Layout::OffsetsOf(dest)};
    const int64_t columns = std::min(2 * int64_t{range} + 1, int64_t{source.Width});
    if (row.rowCount * columns <= kMostSamplesOfNarrowKeys) {
      PaintRow<uint32_t, Layout::channelCount>(row, destRow);
    } else {
      PaintRow<uint64_t, Layout::channelCount>(row, destRow);
    }
  });
  return true;
}

template <class Layout>
void Paint(ImageClassData &source, ImageClassData &dest, int32_t levels, int32_t range) {
  // No window is empty then, and no sum wraps.
  const bool reaches = range >= 0 && range <= INT32_MAX - 1 - std::max(source.Width, source.Height);
  if (reaches && ImagesAreApart(source, dest) && PaintByRow<Layout>(source, dest, levels, range)) return;
  for (int32_t y = 0; y < source.Height; ++y) {
    PaintRowByPixel<Layout>(source, dest, levels, range, y, [&](int32_t row) { return FetchRow(source, row); });
  }
}

}  // namespace

REALobject OilFilter(REALobject instance, REALobject dest, int32_t levels, int32_t range) {
  return RunFilterOn<Gray, RGB, CMYK>(instance, dest,
                                      [&]<class Layout>(Layout, ImageClassData &source, ImageClassData &target) {
                                        // Without a level there is no bin that a sample could go into.
                                        if (levels > 0)
                                          Paint<Layout>(source, target, std::min(levels, kMostLevels), range);
                                      });
}

}  // namespace zvk::filters
