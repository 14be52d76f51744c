#include "pixels/row_samples.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "pixels/dispatch.h"
#include "pixels/overlap.h"

namespace zvk::pixels {

namespace {

constexpr size_t kMostSamples = 5;
constexpr ptrdiff_t kLargestPixel = 8;
// Pixels of which coefficients are laid out side by side: as many as the bytes that the widest register holds.
constexpr ptrdiff_t kTilePixels = 64;

// --- what becomes of a sample: a pair of coefficients and a rule; the pair by default leaves it as it is ---

struct BitStep {
  using Word = uint8_t;
  Word keep = 0xFF;
  Word flip = 0;
  static uint8_t Of(uint8_t sample, Word keep, Word flip) { return (sample & keep) ^ flip; }
};

struct BlendStep {
  using Word = uint32_t;
  Word weight = 65536;
  Word addend = 0;
  static uint8_t Of(uint8_t sample, Word weight, Word addend) {
    return static_cast<uint8_t>((sample * weight + addend) >> 16);
  }
};

// --- kernels ---

// Repeats the first `unit` words until there are `total`.
template <class Word>
void Repeat(Word *words, ptrdiff_t unit, ptrdiff_t total) {
  for (ptrdiff_t done = unit; done < total;) {
    const ptrdiff_t count = std::min(done, total - done);
    std::memcpy(words + done, words, static_cast<size_t>(count) * sizeof(Word));
    done += count;
  }
}

// Every byte by the coefficients of its place in the tile.
template <class Step>
[[gnu::always_inline]] inline void MapBytesBody(uint8_t *__restrict bytes, ptrdiff_t count,
                                                const typename Step::Word *__restrict first,
                                                const typename Step::Word *__restrict second, ptrdiff_t pixelSize) {
  const ptrdiff_t tile = kTilePixels * pixelSize;
  for (; count >= tile; count -= tile) {
    for (ptrdiff_t block = 0; block < tile; block += kTilePixels) {
      for (ptrdiff_t i = block; i < block + kTilePixels; ++i) bytes[i] = Step::Of(bytes[i], first[i], second[i]);
    }
    bytes += tile;
  }
  for (ptrdiff_t i = 0; i < count; ++i) bytes[i] = Step::Of(bytes[i], first[i], second[i]);
}
template <class Step>
constexpr auto MapBytes = KernelOf<MapBytesBody<Step>>;

template <class Step>
void MapInOrder(const PixelRow &row, std::span<const int32_t> offsets, std::span<const Step> steps) {
  uint8_t *pixel = row.first;
  for (ptrdiff_t x = 0; x < row.count; ++x) {
    for (size_t i = 0; i < offsets.size(); ++i) {
      const auto [first, second] = steps[i];
      pixel[offsets[i]] = Step::Of(pixel[offsets[i]], first, second);
    }
    pixel += row.pixelSize;
  }
}

// --- rows ---

template <class Step>
void MapApart(const PixelRow &row, std::span<const int32_t> offsets, std::span<const Step> steps) {
  using Word = typename Step::Word;
  const OffsetRange range = RangeOf(offsets);
  const ptrdiff_t bytes = (row.count - 1) * row.pixelSize + static_cast<ptrdiff_t>(range.Span());
  const ptrdiff_t tile = std::min(row.count, kTilePixels) * row.pixelSize;
  std::array<Word, kTilePixels * kLargestPixel> first;
  std::array<Word, kTilePixels * kLargestPixel> second;
  const auto [unchangedFirst, unchangedSecond] = Step{};
  std::fill_n(first.begin(), row.pixelSize, unchangedFirst);
  std::fill_n(second.begin(), row.pixelSize, unchangedSecond);
  for (size_t i = 0; i < offsets.size(); ++i) {
    const auto place = static_cast<size_t>(offsets[i] - range.lowest);
    const auto [stepFirst, stepSecond] = steps[i];
    first[place] = stepFirst;
    second[place] = stepSecond;
  }
  Repeat(first.data(), row.pixelSize, tile);
  Repeat(second.data(), row.pixelSize, tile);
  MapBytes<Step>(row.first + range.lowest, bytes, first.data(), second.data(), row.pixelSize);
}

template <class Step>
void MapSamples(const PixelRow &row, std::span<const int32_t> offsets, std::span<const Step> steps) {
  if (row.count < 1) return;
  if (row.pixelSize <= kLargestPixel && SamplesAreApart(offsets, static_cast<int32_t>(row.pixelSize))) {
    MapApart(row, offsets, steps);
  } else {
    MapInOrder(row, offsets, steps);
  }
}

}  // namespace

void PaintSamples(const PixelRow &row, std::span<const int32_t> offsets, std::span<const uint8_t> values) {
  std::array<BitStep, kMostSamples> steps;
  for (size_t i = 0; i < offsets.size(); ++i) steps[i] = {.keep = 0, .flip = values[i]};
  MapSamples<BitStep>(row, offsets, std::span(steps).first(offsets.size()));
}

void ComplementSamples(const PixelRow &row, std::span<const int32_t> offsets) {
  std::array<BitStep, kMostSamples> steps;
  steps.fill({.keep = 0xFF, .flip = 0xFF});
  MapSamples<BitStep>(row, offsets, std::span(steps).first(offsets.size()));
}

void BlendSamples(const PixelRow &row, std::span<const int32_t> offsets, uint32_t weight,
                  std::span<const uint32_t> addends) {
  std::array<BlendStep, kMostSamples> steps;
  for (size_t i = 0; i < offsets.size(); ++i) steps[i] = {weight, addends[i]};
  MapSamples<BlendStep>(row, offsets, std::span(steps).first(offsets.size()));
}

}  // namespace zvk::pixels
