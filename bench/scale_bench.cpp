// 24 megapixels scaled to 1.5 and back, with each filter and through several pairs, on one thread; 24 megapixels to 1.5
// and 1.5 to 6 on one and on two threads; and the first through the naive scaler of the tests, at a sixteenth of the
// size. Pixels a second are those of the larger image.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>

#include "bench/bench_host.h"
#include "image/image_formats.h"
#include "scaling/scale_engine.h"
#include "tests/naive/scale.h"

namespace zvk::bench {
namespace {

constexpr int32_t kTriangle = 1, kBox = 2, kLanczos3 = 3, kLanczos8 = 4, kMitchell = 5, kPoly3 = 6, kCubic = 7;

void Shrink(benchmark::State &state, int32_t mode, int32_t sourceFormat, int32_t destFormat, int32_t yieldTicks) {
  const BenchImage source(6000, 4000, sourceFormat), dest(1500, 1000, destFormat);
  dest.Record().Yield.YieldTicks = yieldTicks;
  for (auto _ : state) PictureScaleZVK(dest.Handle(), source.Handle(), nullptr, mode, 1500, 1000);
  CountPixels(state, 6000, 4000);
}

void Enlarge(benchmark::State &state, int32_t mode, int32_t sourceFormat, int32_t destFormat) {
  const BenchImage source(1500, 1000, sourceFormat), dest(6000, 4000, destFormat);
  for (auto _ : state) PictureScaleZVK(dest.Handle(), source.Handle(), nullptr, mode, 6000, 4000);
  CountPixels(state, 6000, 4000);
}

void NaiveShrink(benchmark::State &state, int32_t mode, int32_t sourceFormat, int32_t destFormat) {
  const BenchImage source(1500, 1000, sourceFormat), dest(375, 250, destFormat);
  const BenchImage temp(375, 1000, naive::PairFor(source.Record(), dest.Record())->tempFormat);
  for (auto _ : state) naive::Scale(dest.Record(), source.Record(), temp.Record(), mode, 375, 250);
  CountPixels(state, 1500, 1000);
}

// A scale on threads: filter, format and number of threads are the benchmark's arguments.
void ScaleOnThreads(benchmark::State &state, int32_t sourceWidth, int32_t sourceHeight, int32_t width, int32_t height) {
  const auto mode = static_cast<int32_t>(state.range(0));
  const auto format = static_cast<int32_t>(state.range(1));
  const auto threads = static_cast<int32_t>(state.range(2));
  const BenchImage source(sourceWidth, sourceHeight, format), dest(width, height, format);
  for (auto _ : state) {
    PictureScaleZVKMT(dest.Handle(), threads, source.Handle(), nullptr, mode, width, height);
  }
  CountPixels(state, std::max(sourceWidth, width), std::max(sourceHeight, height));
}

void FiltersFormatsAndThreads(benchmark::internal::Benchmark *benchmark) {
  benchmark->ArgNames({"filter", "format", "threads"})
      ->ArgsProduct({benchmark::CreateDenseRange(kTriangle, kCubic, 1), {ImageFormatRGB, ImageFormatRGBA}, {1, 2}})
      ->Unit(benchmark::kMillisecond)
      ->MeasureProcessCPUTime()
      ->UseRealTime();
}

ZVK_BENCHMARK(Shrink, triangle, kTriangle, ImageFormatRGB, ImageFormatRGB, 0);
ZVK_BENCHMARK(Shrink, box, kBox, ImageFormatRGB, ImageFormatRGB, 0);
ZVK_BENCHMARK(Shrink, lanczos3, kLanczos3, ImageFormatRGB, ImageFormatRGB, 0);
ZVK_BENCHMARK(Shrink, lanczos8, kLanczos8, ImageFormatRGB, ImageFormatRGB, 0);
ZVK_BENCHMARK(Shrink, mitchell, kMitchell, ImageFormatRGB, ImageFormatRGB, 0);
ZVK_BENCHMARK(Shrink, poly3, kPoly3, ImageFormatRGB, ImageFormatRGB, 0);
ZVK_BENCHMARK(Shrink, cubic, kCubic, ImageFormatRGB, ImageFormatRGB, 0);
ZVK_BENCHMARK(Shrink, lanczos3_RGBA, kLanczos3, ImageFormatRGBA, ImageFormatRGBA, 0);
ZVK_BENCHMARK(Shrink, lanczos3_RGB_to_G, kLanczos3, ImageFormatRGB, ImageFormatG, 0);
ZVK_BENCHMARK(Shrink, lanczos3_G, kLanczos3, ImageFormatG, ImageFormatG, 0);
ZVK_BENCHMARK(Shrink, lanczos3_G16, kLanczos3, ImageFormatGray16, ImageFormatGray16, 0);
ZVK_BENCHMARK(Shrink, lanczos3_CMYKA, kLanczos3, ImageFormatCMYKA, ImageFormatCMYKA, 0);
// The host asks for time ten times a second, so no row can be read ahead.
ZVK_BENCHMARK(Shrink, lanczos3_yielding, kLanczos3, ImageFormatRGB, ImageFormatRGB, 6);
ZVK_BENCHMARK(Enlarge, lanczos3, kLanczos3, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Enlarge, triangle_G, kTriangle, ImageFormatG, ImageFormatG);
ZVK_BENCHMARK(NaiveShrink, triangle, kTriangle, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(NaiveShrink, lanczos3, kLanczos3, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(NaiveShrink, lanczos8, kLanczos8, ImageFormatRGB, ImageFormatRGB);

BENCHMARK_CAPTURE(ScaleOnThreads, shrink, 6000, 4000, 1500, 1000)->Apply(FiltersFormatsAndThreads);
BENCHMARK_CAPTURE(ScaleOnThreads, enlarge, 1500, 1000, 3000, 2000)->Apply(FiltersFormatsAndThreads);

}  // namespace
}  // namespace zvk::bench
