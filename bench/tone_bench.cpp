// The tone filters and the dither on an image of 6000 x 4000 pixels, from one image into another, and plain loops on a
// sixteenth of the pixels beside them.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "bench/bench_host.h"
#include "filters/dither.h"
#include "filters/tone_filters.h"
#include "image/image_formats.h"
#include "tests/naive/filters.h"

namespace zvk::bench {
namespace {

using Filter = REALobject (*)(REALobject self, REALobject dest);

void Apply(benchmark::State &state, Filter filter, int32_t from, int32_t to) {
  const BenchImage source(6000, 4000, from), dest(6000, 4000, to);
  for (auto _ : state) Drop(filter(source.Handle(), dest.Handle()));
  CountPixels(state, 6000, 4000);
}

REALobject Gamma(REALobject self, REALobject dest) { return GammaFilterG(self, dest, 1.8); }
REALobject Gammas(REALobject self, REALobject dest) { return GammaFilterRGB(self, dest, 1.8, 1.7, 1.6); }
REALobject GammasAndAlpha(REALobject self, REALobject dest) { return GammaFilterRGBA(self, dest, 1.8, 1.7, 1.6, 1); }
REALobject Gain(REALobject self, REALobject dest) { return GainFilter(self, dest, 0.7, 0.4); }
REALobject Dither2x2(REALobject self, REALobject dest) { return DitherFilter(self, dest, 1, 2); }
REALobject Dither16x16(REALobject self, REALobject dest) { return DitherFilter(self, dest, 10, 4); }

ZVK_BENCHMARK(Apply, solarize_RGB, SolarizeFilter, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Apply, solarize_RGBA, SolarizeFilter, ImageFormatRGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Apply, solarize_G, SolarizeFilter, ImageFormatG, ImageFormatG);
ZVK_BENCHMARK(Apply, solarize_RGB_to_BGRX, SolarizeFilter, ImageFormatRGB, ImageFormatBGRX);
ZVK_BENCHMARK(Apply, gamma_RGB, Gamma, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Apply, gammas_RGB, Gammas, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Apply, gammas_RGBA, GammasAndAlpha, ImageFormatRGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Apply, gain_RGB, Gain, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Apply, dither_2x2_RGB, Dither2x2, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Apply, dither_16x16_RGB, Dither16x16, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Apply, dither_16x16_RGBA, Dither16x16, ImageFormatRGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Apply, dither_16x16_G, Dither16x16, ImageFormatG, ImageFormatG);

// A plain loop that knows the layout: packed RGB, a table for all.
void NaiveTable(benchmark::State &state) {
  const BenchImage source(1500, 1000, ImageFormatRGB), dest(1500, 1000, ImageFormatRGB);
  std::vector<uint8_t> table(256);
  for (size_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i);
  ImageClassData &from = source.Record(), &to = dest.Record();
  for (auto _ : state) {
    for (int32_t y = 0; y < 1000; ++y) {
      const uint8_t *const read = from.GetRow(&from, y);
      uint8_t *const write = to.GetRow(&to, y);
      for (int32_t i = 0; i < 4500; ++i) write[i] = table[read[i]];
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, 1500, 1000);
}
BENCHMARK(NaiveTable)->Unit(benchmark::kMillisecond);

// The dither as it is defined, two remainders for each pixel, two tables and a comparison for each sample.
void NaiveDither(benchmark::State &state) {
  const BenchImage source(1500, 1000, ImageFormatRGB), dest(1500, 1000, ImageFormatRGB);
  const int size = 16, levels = 4;
  std::vector<int> thresholds(256), map(levels), div(256), mod(256);
  for (int i = 0; i < 256; ++i) {
    thresholds[static_cast<size_t>(i)] = i / 2;
    div[static_cast<size_t>(i)] = i * (levels - 1) / 256;
    mod[static_cast<size_t>(i)] = i * (size * size + 1) / 256;
  }
  for (int i = 0; i < levels; ++i) map[static_cast<size_t>(i)] = i * 255 / (levels - 1);
  ImageClassData &from = source.Record(), &to = dest.Record();
  for (auto _ : state) {
    for (int32_t y = 0; y < 1000; ++y) {
      const uint8_t *read = from.GetRow(&from, y);
      uint8_t *write = to.GetRow(&to, y);
      for (int32_t x = 0; x < 1500; ++x) {
        const int m = thresholds[static_cast<size_t>(y % size * size + x % size)];
        for (int c = 0; c < 3; ++c) {
          const auto level = static_cast<size_t>(div[*read] + (mod[*read] <= m ? 1 : 0));
          *write++ = static_cast<uint8_t>(map[level]);
          ++read;
        }
      }
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, 1500, 1000);
}
BENCHMARK(NaiveDither)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zvk::bench
