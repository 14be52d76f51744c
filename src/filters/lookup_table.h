// Samples through tables: the one loop of all filters that change each sample by itself.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "filters/tone_tables.h"
#include "image/image_record.h"
#include "pixels/channel_rows.h"
#include "pixels/dispatch.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

// Sends `count` bytes through the table. Both may be the same bytes; else they may not overlap.
using MapFunction = void(const ToneTable &table, const uint8_t *source, uint8_t *dest, ptrdiff_t count);
extern const Kernel<MapFunction> MapBytes;

// Sends the samples of `width` pixels through the table of their channel, each written before the next one is read.
template <size_t kChannels>
void MapRow(const std::array<ToneTable, kChannels> &tables, ChannelRow<const uint8_t, kChannels> source,
            ChannelRow<uint8_t, kChannels> dest, int32_t width) {
  for (int32_t x = 0; x < width; ++x) {
    for (size_t c = 0; c < kChannels; ++c) dest.pixel[dest.offsets[c]] = tables[c][source.pixel[source.offsets[c]]];
    source.Next();
    dest.Next();
  }
}

// Sends every sample of the layout's channels through the table of its channel and stores it in dest, row by row, pixel
// by pixel and sample by sample.
template <class Layout>
void MapSamples(ImageClassData &source, ImageClassData &dest,
                const std::array<ToneTable, Layout::channelCount> &tables) {
  const auto from = Layout::OffsetsOf(source);
  const auto to = Layout::OffsetsOf(dest);
  const ByteRuns<Layout> runs(source, dest);
  const bool alike = std::ranges::all_of(tables, [&](const ToneTable &table) { return table == tables[0]; });
  const auto mapBytes = [&](const uint8_t *read, uint8_t *written, ptrdiff_t count) {
    MapBytes(tables[0], read, written, count);
  };
  ForEachRowPair(dest, source, source.Height, [&](uint8_t *destRow, const uint8_t *sourceRow) {
    if (alike && runs.Visit(sourceRow, destRow, mapBytes)) return;
    MapRow<Layout::channelCount>(tables, {sourceRow, source.PixelSize, from}, {destRow, dest.PixelSize, to},
                                 source.Width);
  });
}

// The same with one table for all channels.
template <class Layout>
void MapSamples(ImageClassData &source, ImageClassData &dest, const ToneTable &table) {
  std::array<ToneTable, Layout::channelCount> tables;
  tables.fill(table);
  MapSamples<Layout>(source, dest, tables);
}

}  // namespace zvk::filters
