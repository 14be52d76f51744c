// ApplyMatrix on an image of 6000 x 4000 pixels, from one image into another, and the naive loops on a sixteenth of the
// pixels beside it.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "bench/bench_host.h"
#include "filters/matrix_filter.h"
#include "image/image_formats.h"
#include "tests/naive/filters.h"

namespace zvk::bench {
namespace {

const naive::Matrix kSharpen{3, {0, -1, 0, -1, 5, -1, 0, -1, 0}};
const naive::Matrix kBlur{3, {1, 2, 1, 2, 4, 2, 1, 2, 1}, 0, 1.0 / 16};
const naive::Matrix kWide{3, {-90, 20, -90, 20, 250, 20, -90, 20, -90}, 0, 0.01};

naive::Matrix Average(int32_t dimension) {
  const int32_t count = dimension * dimension;
  return {dimension, std::vector<int32_t>(static_cast<size_t>(count), 1), 0, 1.0 / count};
}

// No column times a row, and sums beyond 16 bits from 11 x 11 on.
naive::Matrix Uneven(int32_t dimension) {
  naive::Matrix matrix = Average(dimension);
  for (size_t i = 0; i < matrix.entries.size(); ++i) matrix.entries[i] = static_cast<int32_t>(i * 7 % 11) - 2;
  matrix.scale /= 3;
  return matrix;
}

void Apply(benchmark::State &state, int32_t format, const naive::Matrix &matrix) {
  const BenchImage source(6000, 4000, format), dest(6000, 4000, format);
  const BenchArray entries(matrix.entries);
  for (auto _ : state) {
    Drop(
        PictureMatrix5(source.Handle(), dest.Handle(), matrix.dimension, entries.Handle(), matrix.delta, matrix.scale));
  }
  CountPixels(state, 6000, 4000);
}

void Naive(benchmark::State &state, int32_t format, const naive::Matrix &matrix) {
  const BenchImage source(1500, 1000, format), dest(1500, 1000, format);
  for (auto _ : state) naive::ApplyMatrix(source.Record(), dest.Record(), 1500, 1000, matrix);
  CountPixels(state, 1500, 1000);
}

ZVK_BENCHMARK(Apply, sharpen_RGB, ImageFormatRGB, kSharpen);
ZVK_BENCHMARK(Apply, blur_RGB, ImageFormatRGB, kBlur);
ZVK_BENCHMARK(Apply, blur_RGBA, ImageFormatRGBA, kBlur);
ZVK_BENCHMARK(Apply, blur_RGBX, ImageFormatRGBX, kBlur);
ZVK_BENCHMARK(Apply, blur_G, ImageFormatG, kBlur);
ZVK_BENCHMARK(Apply, wide_RGB, ImageFormatRGB, kWide);
ZVK_BENCHMARK(Apply, average5_RGB, ImageFormatRGB, Average(5));
ZVK_BENCHMARK(Apply, average15_RGB, ImageFormatRGB, Average(15));
ZVK_BENCHMARK(Apply, average25_RGB, ImageFormatRGB, Average(25));
ZVK_BENCHMARK(Apply, uneven5_RGB, ImageFormatRGB, Uneven(5));
ZVK_BENCHMARK(Apply, uneven7_RGB, ImageFormatRGB, Uneven(7));
ZVK_BENCHMARK(Apply, uneven15_RGB, ImageFormatRGB, Uneven(15));
ZVK_BENCHMARK(Apply, uneven25_RGB, ImageFormatRGB, Uneven(25));
ZVK_BENCHMARK(Naive, blur_RGB, ImageFormatRGB, kBlur);

// In place each pixel asks for its rows anew.
void ApplyInPlace(benchmark::State &state) {
  const BenchImage image(1500, 1000, ImageFormatRGB);
  const BenchArray entries(kBlur.entries);
  for (auto _ : state) {
    Drop(PictureMatrix5(image.Handle(), image.Handle(), 3, entries.Handle(), 0, kBlur.scale));
  }
  CountPixels(state, 1500, 1000);
}
BENCHMARK(ApplyInPlace)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zvk::bench
