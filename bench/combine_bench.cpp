// CopyPixels and Combine on images of 6000 x 4000 pixels, and plain loops on a sixteenth of the pixels beside them.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>

#include "bench/bench_host.h"
#include "compositing/combine.h"
#include "compositing/copy_pixels.h"
#include "image/image_formats.h"

namespace zvk::bench {
namespace {

constexpr int32_t kNoColour = -1;
constexpr int32_t G = ImageFormatG, GA = ImageFormatGA, RGB = ImageFormatRGB, RGBA = ImageFormatRGBA;
constexpr int32_t RGBX = ImageFormatRGBX, BGRA = ImageFormatBGRA;

// --- copies ---

void Copy(benchmark::State &state, int32_t from, int32_t to) {
  const BenchImage source(6000, 4000, from), dest(6000, 4000, to);
  for (auto _ : state) benchmark::DoNotOptimize(rbCopyPixels2(dest.Handle(), source.Handle()));
  CountPixels(state, 6000, 4000);
}

ZVK_BENCHMARK(Copy, RGB_to_RGB, RGB, RGB);
ZVK_BENCHMARK(Copy, RGBA_to_RGBA, RGBA, RGBA);
ZVK_BENCHMARK(Copy, RGBX_to_RGBX, RGBX, RGBX);
ZVK_BENCHMARK(Copy, RGB_to_BGRA, RGB, BGRA);
ZVK_BENCHMARK(Copy, RGBA_to_RGB, RGBA, RGB);
ZVK_BENCHMARK(Copy, RGBA_to_GA, RGBA, GA);
ZVK_BENCHMARK(Copy, RGB_to_G, RGB, G);
ZVK_BENCHMARK(Copy, G_to_RGB, G, RGB);

// Rows copied whole.
void NaiveCopyOfRows(benchmark::State &state) {
  const BenchImage source(6000, 4000, RGB), dest(6000, 4000, RGB);
  ImageClassData &from = source.Record(), &to = dest.Record();
  for (auto _ : state) {
    for (int32_t y = 0; y < 4000; ++y) std::memcpy(to.GetRow(&to, y), from.GetRow(&from, y), 18000);
    benchmark::ClobberMemory();
  }
  CountPixels(state, 6000, 4000);
}
BENCHMARK(NaiveCopyOfRows)->Unit(benchmark::kMillisecond);

// Samples by their offsets.
void NaiveCopyOfSamples(benchmark::State &state) {
  const BenchImage source(1500, 1000, RGB), dest(1500, 1000, BGRA);
  ImageClassData &from = source.Record(), &to = dest.Record();
  for (auto _ : state) {
    for (int32_t y = 0; y < 1000; ++y) {
      const uint8_t *read = from.GetRow(&from, y);
      uint8_t *write = to.GetRow(&to, y);
      for (int32_t x = 0; x < 1500; ++x) {
        write[to.RedOffset] = read[from.RedOffset];
        write[to.GreenOffset] = read[from.GreenOffset];
        write[to.BlueOffset] = read[from.BlueOffset];
        read += from.PixelSize;
        write += to.PixelSize;
      }
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, 1500, 1000);
}
BENCHMARK(NaiveCopyOfSamples)->Unit(benchmark::kMillisecond);

// --- through a mask image ---

void Masked(benchmark::State &state, int32_t destFormat, int32_t sourceFormat, int32_t maskFormat, bool premultiplied) {
  const BenchImage dest(6000, 4000, destFormat), source(6000, 4000, sourceFormat), mask(6000, 4000, maskFormat);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        Case2(dest.Handle(), source.Handle(), premultiplied, mask.Handle(), 0, 0, 0, 0, 6000, 4000));
  }
  CountPixels(state, 6000, 4000);
}

ZVK_BENCHMARK(Masked, RGB_RGB_RGB, RGB, RGB, RGB, false);
ZVK_BENCHMARK(Masked, RGB_RGB_G, RGB, RGB, G, false);
ZVK_BENCHMARK(Masked, RGB_BGRA_G, RGB, BGRA, G, false);
ZVK_BENCHMARK(Masked, RGBX_RGB_G, RGBX, RGB, G, false);
ZVK_BENCHMARK(Masked, RGBA_RGBA_RGBA, RGBA, RGBA, RGBA, false);
ZVK_BENCHMARK(Masked, RGBA_RGBA_GA, RGBA, RGBA, GA, false);
ZVK_BENCHMARK(Masked, G_RGB_RGB, G, RGB, RGB, false);
ZVK_BENCHMARK(Masked, premultiplied_RGB_RGB_G, RGB, RGB, G, true);
ZVK_BENCHMARK(Masked, premultiplied_RGBA_RGBA_RGBA, RGBA, RGBA, RGBA, true);

// The formulas for every sample, by offsets.
void NaiveMasked(benchmark::State &state, int32_t format) {
  const BenchImage dest(1500, 1000, format), source(1500, 1000, format), mask(1500, 1000, G);
  ImageClassData &d = dest.Record(), &s = source.Record(), &m = mask.Record();
  const auto blend = [](uint8_t &sample, uint8_t laidOn, uint8_t keep) {
    sample = static_cast<uint8_t>(((255 - keep) * laidOn + sample * keep) / 255);
  };
  for (auto _ : state) {
    for (int32_t y = 0; y < 1000; ++y) {
      uint8_t *to = d.GetRow(&d, y);
      const uint8_t *from = s.GetRow(&s, y);
      const uint8_t *keep = m.GetRow(&m, y);
      for (int32_t x = 0; x < 1500; ++x) {
        const uint8_t sample = keep[m.GrayOffset];
        blend(to[d.RedOffset], from[s.RedOffset], sample);
        blend(to[d.GreenOffset], from[s.GreenOffset], sample);
        blend(to[d.BlueOffset], from[s.BlueOffset], sample);
        if (d.HasAlpha) blend(to[d.AlphaOffset], from[s.AlphaOffset], 255);
        to += d.PixelSize;
        from += s.PixelSize;
        keep += m.PixelSize;
      }
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, 1500, 1000);
}
ZVK_BENCHMARK(NaiveMasked, RGB_RGB_G, RGB);
ZVK_BENCHMARK(NaiveMasked, RGBA_RGBA_G, RGBA);

// Views of one image, which go pixel after pixel.
void MaskedOntoItself(benchmark::State &state, int32_t format) {
  const BenchImage image(6000, 4000, format), mask(6000, 4000, G);
  for (auto _ : state) {
    benchmark::DoNotOptimize(Case2(image.Handle(), image.Handle(), false, mask.Handle(), 0, 0, 0, 0, 6000, 4000));
  }
  CountPixels(state, 6000, 4000);
}
ZVK_BENCHMARK(MaskedOntoItself, RGB, RGB);
ZVK_BENCHMARK(MaskedOntoItself, RGBA, RGBA);

// --- with a flat colour ---

void Flat(benchmark::State &state, int32_t destFormat, int32_t imageFormat, int32_t foreColour, int32_t maskColour) {
  const BenchImage dest(6000, 4000, destFormat), image(6000, 4000, imageFormat);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        PictureCombine1(dest.Handle(), image.Handle(), nullptr, 0, 0, 0, 0, 6000, 4000, true, foreColour, maskColour));
  }
  CountPixels(state, 6000, 4000);
}

ZVK_BENCHMARK(Flat, foreground_RGB_G, RGB, G, 0x336699, kNoColour);
ZVK_BENCHMARK(Flat, foreground_RGB_RGB, RGB, RGB, 0x336699, kNoColour);
ZVK_BENCHMARK(Flat, foreground_RGBA_RGBA, RGBA, RGBA, 0x336699, kNoColour);
ZVK_BENCHMARK(Flat, foreground_G_G, G, G, 0x336699, kNoColour);
ZVK_BENCHMARK(Flat, mask_colour_RGB_RGB, RGB, RGB, kNoColour, 0x336699);
ZVK_BENCHMARK(Flat, mask_colour_RGBA_RGBA, RGBA, RGBA, kNoColour, 0x336699);

}  // namespace
}  // namespace zvk::bench
