// Operations that change an image in place, over 24 megapixels; and the same as plain loops, over a sixteenth of them.
// Pixels a second.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "bench/bench_host.h"
#include "image/image_formats.h"
#include "levels/auto_level.h"
#include "levels/fill.h"
#include "levels/fill_apply.h"
#include "levels/invert.h"

namespace zvk::bench {
namespace {

// Noise of little contrast, so that AutoLevel has something to do.
void FillWithLowContrast(uint8_t *bytes, int64_t count) {
  std::generate_n(bytes, count, [noise = Noise()]() mutable { return static_cast<uint8_t>(40 + noise() / 2); });
}

void Run(benchmark::State &state, void (*operation)(REALobject), int32_t format) {
  const BenchImage image(6000, 4000, format, FillWithLowContrast);
  for (auto _ : state) {
    operation(image.Handle());
    benchmark::ClobberMemory();
  }
  CountPixels(state, 6000, 4000);
}

void FillValue(REALobject image) { FillRect1(image, 128); }
void FillColour(REALobject image) { FillRectRGB1(image, 10, 20, 30); }
void Apply(REALobject image) { FillRectApplyRGBA1(image, 10, 20, 30, 40); }
void Level(REALobject image) { AutoLevel1(image); }

// --- plain loops over the samples of RGB pixels ---

template <class Operation>
void OverPixels(const ImageClassData &image, Operation &&operation) {
  for (int32_t y = 0; y < image.Height; ++y) {
    uint8_t *row = image.GetRow(const_cast<ImageClassData *>(&image), y);
    for (int32_t x = 0; x < image.Width; ++x) operation(row + x * image.PixelSize);
  }
}

void NaiveFill(const ImageClassData &image) {
  OverPixels(image, [&](uint8_t *pixel) {
    pixel[image.RedOffset] = 128;
    pixel[image.GreenOffset] = 128;
    pixel[image.BlueOffset] = 128;
  });
}

void NaiveColour(const ImageClassData &image) {
  OverPixels(image, [&](uint8_t *pixel) {
    pixel[image.RedOffset] = 10;
    pixel[image.GreenOffset] = 20;
    pixel[image.BlueOffset] = 30;
  });
}

void NaiveApply(const ImageClassData &image) {
  const auto blend = [](uint8_t old, uint32_t colour) {
    return static_cast<uint8_t>((old * ((255U - 40) * 257) + colour * (40U * 257)) >> 16);
  };
  OverPixels(image, [&](uint8_t *pixel) {
    pixel[image.RedOffset] = blend(pixel[image.RedOffset], 10);
    pixel[image.GreenOffset] = blend(pixel[image.GreenOffset], 20);
    pixel[image.BlueOffset] = blend(pixel[image.BlueOffset], 30);
  });
}

void NaiveRandom(const ImageClassData &image) {
  OverPixels(image, [&](uint8_t *pixel) {
    pixel[image.RedOffset] = static_cast<uint8_t>(std::rand());
    pixel[image.GreenOffset] = static_cast<uint8_t>(std::rand());
    pixel[image.BlueOffset] = static_cast<uint8_t>(std::rand());
  });
}

void NaiveClear(const ImageClassData &image) {
  OverPixels(image, [&](uint8_t *pixel) {
    for (int32_t i = 0; i < image.PixelSize; ++i) pixel[i] = 0;
  });
}

void NaiveInvert(const ImageClassData &image) {
  OverPixels(image, [&](uint8_t *pixel) {
    pixel[image.RedOffset] = 255 - pixel[image.RedOffset];
    pixel[image.GreenOffset] = 255 - pixel[image.GreenOffset];
    pixel[image.BlueOffset] = 255 - pixel[image.BlueOffset];
  });
}

void NaiveLevel(const ImageClassData &image) {
  std::array<uint32_t, 256> counts{};
  OverPixels(image, [&](const uint8_t *pixel) {
    const double brightness =
        pixel[image.BlueOffset] * 0.01 + (pixel[image.GreenOffset] * 0.813 + pixel[image.RedOffset] * 0.177);
    ++counts[static_cast<size_t>(brightness)];
  });
  for (size_t i = 1; i < counts.size(); ++i) counts[i] += counts[i - 1];
  const auto total = static_cast<float>(counts[255]);
  int32_t low = 0, high = 0;
  for (int32_t i = 0; i < 256; ++i) {
    if (counts[static_cast<size_t>(i)] <= static_cast<int64_t>(total * 0.005F)) low = i;
    if (counts[static_cast<size_t>(i)] <= static_cast<int64_t>(total * 0.995F)) high = i;
  }
  const double scale = 255.0 / (high - low);
  const auto level = [&](uint8_t value) {
    return value < low ? uint8_t{0} : value > high ? uint8_t{255} : static_cast<uint8_t>((value - low) * scale);
  };
  OverPixels(image, [&](uint8_t *pixel) {
    pixel[image.RedOffset] = level(pixel[image.RedOffset]);
    pixel[image.GreenOffset] = level(pixel[image.GreenOffset]);
    pixel[image.BlueOffset] = level(pixel[image.BlueOffset]);
  });
}

void Naive(benchmark::State &state, void (*operation)(const ImageClassData &)) {
  const BenchImage image(1500, 1000, ImageFormatRGB, FillWithLowContrast);
  for (auto _ : state) {
    operation(image.Record());
    benchmark::ClobberMemory();
  }
  CountPixels(state, 1500, 1000);
}

ZVK_BENCHMARK(Run, FillRect, FillValue, ImageFormatRGB);
ZVK_BENCHMARK(Naive, FillRect, NaiveFill);
ZVK_BENCHMARK(Run, FillRect_RGBX, FillValue, ImageFormatRGBX);
ZVK_BENCHMARK(Run, FillRect_CMYK, FillValue, ImageFormatCMYK);
ZVK_BENCHMARK(Run, FillRectRGB, FillColour, ImageFormatRGB);
ZVK_BENCHMARK(Naive, FillRectRGB, NaiveColour);
ZVK_BENCHMARK(Run, FillRectRGB_RGBA, FillColour, ImageFormatRGBA);
ZVK_BENCHMARK(Run, FillRectApply, Apply, ImageFormatRGB);
ZVK_BENCHMARK(Naive, FillRectApply, NaiveApply);
ZVK_BENCHMARK(Run, FillRectApply_RGBA, Apply, ImageFormatRGBA);
ZVK_BENCHMARK(Run, FillRectRandom, FillRectRandom1, ImageFormatRGB);
ZVK_BENCHMARK(Naive, FillRectRandom, NaiveRandom);
ZVK_BENCHMARK(Run, ClearRect, ClearRect1, ImageFormatRGB);
ZVK_BENCHMARK(Naive, ClearRect, NaiveClear);
ZVK_BENCHMARK(Run, Invert, Invert1, ImageFormatRGB);
ZVK_BENCHMARK(Naive, Invert, NaiveInvert);
ZVK_BENCHMARK(Run, Invert_RGBX, Invert1, ImageFormatRGBX);
ZVK_BENCHMARK(Run, AutoLevel, Level, ImageFormatRGB);
ZVK_BENCHMARK(Naive, AutoLevel, NaiveLevel);

}  // namespace
}  // namespace zvk::bench
