// Scales by nearest pixels: 24 megapixels to 1.5, and 1.5 to 6; and the same through the naive scaler of the tests, at
// a quarter of the size. Pixels a second are those that are written.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "bench/bench_host.h"
#include "image/image_formats.h"
#include "scaling/fast_scale.h"
#include "tests/naive/fast_scale.h"

namespace zvk::bench {
namespace {

void Shrink(benchmark::State &state, int32_t sourceFormat, int32_t destFormat) {
  const BenchImage source(6000, 4000, sourceFormat), dest(1500, 1000, destFormat);
  for (auto _ : state) ScalePictureFast(dest.Handle(), source.Handle(), 1500, 1000);
  CountPixels(state, 1500, 1000);
}

void Enlarge(benchmark::State &state, int32_t sourceFormat, int32_t destFormat) {
  const BenchImage source(1500, 1000, sourceFormat), dest(3000, 2000, destFormat);
  for (auto _ : state) ScalePictureFast(dest.Handle(), source.Handle(), 3000, 2000);
  CountPixels(state, 3000, 2000);
}

void NaiveEnlarge(benchmark::State &state, int32_t sourceFormat, int32_t destFormat) {
  const BenchImage source(750, 500, sourceFormat), dest(1500, 1000, destFormat);
  for (auto _ : state) naive::ScaleFast(dest.Record(), source.Record(), 1500, 1000);
  CountPixels(state, 1500, 1000);
}

ZVK_BENCHMARK(Shrink, RGB, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Shrink, RGBA, ImageFormatRGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Shrink, RGB_to_BGRA, ImageFormatRGB, ImageFormatBGRA);
ZVK_BENCHMARK(Shrink, RGB_to_G, ImageFormatRGB, ImageFormatG);
ZVK_BENCHMARK(Enlarge, RGB, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Enlarge, RGBA, ImageFormatRGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Enlarge, RGB_to_BGRA, ImageFormatRGB, ImageFormatBGRA);
ZVK_BENCHMARK(Enlarge, RGB_to_G, ImageFormatRGB, ImageFormatG);
ZVK_BENCHMARK(Enlarge, G, ImageFormatG, ImageFormatG);
ZVK_BENCHMARK(NaiveEnlarge, RGB, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(NaiveEnlarge, RGB_to_G, ImageFormatRGB, ImageFormatG);

}  // namespace
}  // namespace zvk::bench
