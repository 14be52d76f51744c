#include "bench/peers/view.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace zvk::peers {
namespace {

constexpr int32_t kTiles = 5;  // which divides all sides, whole or made smaller

// A wave for each position, between -1 and 1; each channel has its own.
std::vector<float> Wave(int32_t length, double periods, size_t channel) {
  std::vector<float> wave(static_cast<size_t>(length));
  for (int32_t i = 0; i < length; ++i) {
    const double turns = periods * i / length + 0.2 * static_cast<double>(channel);
    wave[static_cast<size_t>(i)] = static_cast<float>(std::sin(2 * std::numbers::pi * turns));
  }
  return wave;
}

}  // namespace

View PackedView(void *pixels, size_t stride, Size size, Layout layout) {
  std::vector<ptrdiff_t> channels{0, 1, 2, 3};
  if (layout == Layout::BGRA) std::swap(channels[0], channels[2]);
  channels.resize(static_cast<size_t>(Channels(layout)));
  return {size, SampleBytes(layout), PixelBytes(layout), std::move(channels),
          [=](int32_t y) { return static_cast<uint8_t *>(pixels) + stride * static_cast<size_t>(y); }};
}

void DrawTestPicture(const View &view) {
  uint32_t noise = 1;
  std::vector<std::vector<float>> across, down;
  for (size_t c = 0; c < view.channels.size(); ++c) {
    across.push_back(Wave(view.size.width, 1.3, c));
    down.push_back(Wave(view.size.height, 0.8, c));
  }
  for (int32_t y = 0; y < view.size.height; ++y) {
    uint8_t *const row = view.row(y);
    for (size_t c = 0; c < view.channels.size(); ++c) {
      const float height = 90 * down[c][static_cast<size_t>(y)];
      uint8_t *sample = row + view.channels[c];
      for (int32_t x = 0; x < view.size.width; ++x, sample += view.pixelStep) {
        noise = noise * 1664525 + 1013904223;
        const float level = 112 + height * across[c][static_cast<size_t>(x)] + static_cast<float>(noise >> 27);
        if (view.sampleBytes == 1) {
          *sample = static_cast<uint8_t>(level);
        } else {
          const auto word = static_cast<uint16_t>(level * 257);
          std::memcpy(sample, &word, sizeof word);
        }
      }
    }
  }
}

std::vector<double> TileLevels(const View &view) {
  const int32_t tileRows = std::min(kTiles, view.size.height);
  const size_t channels = view.channels.size();
  std::vector<double> sums(static_cast<size_t>(tileRows * kTiles) * channels), counts(sums.size());
  for (int32_t y = 0; y < view.size.height; ++y) {
    const uint8_t *const row = view.row(y);
    for (int32_t x = 0; x < view.size.width; ++x) {
      const int64_t tileRow = int64_t{y} * tileRows / view.size.height, tile = int64_t{x} * kTiles / view.size.width;
      for (size_t c = 0; c < channels; ++c) {
        const uint8_t *const sample = row + x * view.pixelStep + view.channels[c];
        uint16_t word = 0;
        if (view.sampleBytes == 2) std::memcpy(&word, sample, sizeof word);
        const auto at = static_cast<size_t>(tileRow * kTiles + tile) * channels + c;
        sums[at] += view.sampleBytes == 1 ? *sample : word / 257.0;
        ++counts[at];
      }
    }
  }
  for (size_t i = 0; i < sums.size(); ++i) sums[i] /= counts[i];
  return sums;
}

}  // namespace zvk::peers
