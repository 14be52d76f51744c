#include "compositing/packed_blend.h"

#include "pixels/dispatch.h"
#include "pixels/overlap.h"

namespace zvk::compositing {

// --- working pixels ---

std::optional<WorkingPixel> WorkingPixel::Of(std::span<const int32_t> offsets, int32_t pixelSize) {
  if (!SamplesAreApart(offsets, pixelSize)) return std::nullopt;
  WorkingPixel working;
  working.count_ = offsets.size();
  working.pixelSize_ = pixelSize;
  working.first_ = RangeOf(offsets).lowest;
  std::ranges::copy(offsets, working.offsets_.begin());
  for (size_t i = 0; i < offsets.size(); ++i) {
    working.places_[i] =
        static_cast<int32_t>(std::ranges::count_if(offsets, [&](int32_t other) { return other < offsets[i]; }));
  }
  return working;
}

namespace {

using Moves = std::array<SampleMove, WorkingPixel::kMostChannels>;

}  // namespace

SampleMover WorkingPixel::ReadEach() const {
  Moves moves{};
  for (size_t i = 0; i < count_; ++i) moves[i] = {offsets_[i], places_[i]};
  return {pixelSize_, Size(), std::span(moves).first(count_)};
}

SampleMover WorkingPixel::ReadLast() const {
  Moves moves{};
  for (size_t i = 0; i < count_; ++i) moves[i] = {offsets_[count_ - 1], places_[i]};
  return {pixelSize_, Size(), std::span(moves).first(count_)};
}

SampleMover WorkingPixel::Write() const {
  Moves moves{};
  for (size_t i = 0; i < count_; ++i) moves[i] = {places_[i], offsets_[i]};
  return {Size(), pixelSize_, std::span(moves).first(count_)};
}

// --- operands ---

namespace {

[[gnu::always_inline]] inline void TakeMeansBody(const uint8_t *__restrict red, const uint8_t *__restrict green,
                                                 const uint8_t *__restrict blue, uint8_t *__restrict mean,
                                                 int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    mean[i] = static_cast<uint8_t>(static_cast<uint16_t>(red[i] + green[i] + blue[i]) / 3);
  }
}
constexpr auto TakeMeans = KernelOf<TakeMeansBody>;

SampleMover ReaderOfOne(int32_t pixelSize, int32_t offset) { return {pixelSize, 1, std::array{SampleMove{offset, 0}}}; }

}  // namespace

MeanConversion::MeanConversion(int32_t pixelSize, const std::array<int32_t, 3> &colours, const WorkingPixel &working)
    : read_{ReaderOfOne(pixelSize, colours[0]), ReaderOfOne(pixelSize, colours[1]),
            ReaderOfOne(pixelSize, colours[2])} {
  if (working.Size() > 1) {
    Moves moves{};
    for (int32_t i = 0; i < working.Size(); ++i) moves[static_cast<size_t>(i)] = {0, i};
    spread_.emplace(1, working.Size(), std::span(moves).first(static_cast<size_t>(working.Size())));
  }
}

void MeanConversion::operator()(const uint8_t *source, uint8_t *tile, int32_t width) const {
  std::array<std::array<uint8_t, kTilePixels>, 3> samples;
  for (size_t i = 0; i < samples.size(); ++i) read_[i](source, samples[i].data(), width);
  std::array<uint8_t, kTilePixels> means;
  uint8_t *mean = spread_ ? means.data() : tile;
  TakeMeans(samples[0].data(), samples[1].data(), samples[2].data(), mean, width);
  if (spread_) (*spread_)(mean, tile, width);
}

PackedOperand::PackedOperand(const WorkingPixel &working, std::span<const uint8_t> samples) : pixelSize_(0) {
  for (size_t i = 0; i < samples.size(); ++i) {
    for (int32_t x = 0; x < kTilePixels; ++x) {
      tile_[ptrdiff_t{x} * working.Size() + working.At(i)] = samples[i];
    }
  }
}

PackedOperand::PackedOperand(int32_t pixelSize, const PixelConversion &conversion)
    : reader_(ReaderOf(conversion)), pixelSize_(pixelSize) {
  tile_.fill(255);
}

PackedOperand::PackedOperand(int32_t pixelSize, const MeanConversion &conversion)
    : reader_(conversion), pixelSize_(pixelSize) {}

PackedOperand::Reader PackedOperand::ReaderOf(const PixelConversion &conversion) {
  if (const auto shift = conversion.ShiftOfCopy()) return InPlace{*shift};
  return conversion;
}

const uint8_t *PackedOperand::TileOf(const uint8_t *pixels, int32_t width) {
  if (const auto *inPlace = std::get_if<InPlace>(&reader_)) return pixels + inPlace->first;
  if (const auto *image = std::get_if<PixelConversion>(&reader_)) image->ConvertRow(pixels, tile_.data(), width);
  if (const auto *mean = std::get_if<MeanConversion>(&reader_)) (*mean)(pixels, tile_.data(), width);
  return tile_.data();
}

}  // namespace zvk::compositing
