// The blurs and the unsharp mask over 24 megapixels, and the same in plain loops over bytes, which know the layout when
// they are compiled, over a sixteenth of them.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "bench/bench_host.h"
#include "filters/box_blur.h"
#include "filters/fractional_blur.h"
#include "filters/unsharp.h"
#include "image/image_formats.h"

namespace zvk::bench {
namespace {

constexpr int32_t kWidth = 6000, kHeight = 4000;
constexpr int32_t kNaiveWidth = kWidth / 4, kNaiveHeight = kHeight / 4;

struct Photograph : BenchImage {
  explicit Photograph(int32_t format) : BenchImage(kWidth, kHeight, format, FillLikePhotograph) {}
};

void BoxBlur(benchmark::State &state, int32_t sourceFormat, int32_t destFormat, double radius, bool vertical,
             bool horizontal) {
  const Photograph source(sourceFormat), dest(destFormat);
  for (auto _ : state) Drop(BoxBlurFilter(source.Handle(), dest.Handle(), radius, vertical, horizontal));
  CountPixels(state, kWidth, kHeight);
}

void BoxBlurInPlace(benchmark::State &state, int32_t format, double radius) {
  const Photograph image(format);
  for (auto _ : state) Drop(BoxBlurFilter(image.Handle(), image.Handle(), radius, true, true));
  CountPixels(state, kWidth, kHeight);
}

void Fractional(benchmark::State &state, int32_t format) {
  const Photograph source(format), dest(format);
  for (auto _ : state) Drop(BoxBlurFractionalFilter(source.Handle(), dest.Handle(), 0.4));
  CountPixels(state, kWidth, kHeight);
}

void Unsharp(benchmark::State &state, int32_t format) {
  const Photograph image(format), blurred(format);
  Drop(BoxBlurFilter(image.Handle(), blurred.Handle(), 3.0, true, true));
  for (auto _ : state) benchmark::DoNotOptimize(unsharpFilter(image.Handle(), blurred.Handle(), 0.2, 3));
  CountPixels(state, kWidth, kHeight);
}

// --- plain loops over packed RGB ---

using Bytes = std::vector<uint8_t>;

Bytes NaivePhotograph() {
  Bytes bytes(size_t{3} * kNaiveWidth * kNaiveHeight);
  FillLikePhotograph(bytes.data(), static_cast<int64_t>(bytes.size()));
  return bytes;
}

size_t At(int32_t x, int32_t y, int32_t channel) {
  return (static_cast<size_t>(y) * kNaiveWidth + static_cast<size_t>(x)) * 3 + static_cast<size_t>(channel);
}

void NaiveBoxBlur(benchmark::State &state, int32_t r) {
  const Bytes source = NaivePhotograph();
  Bytes dest(source.size()), line(size_t{3} * kNaiveWidth);
  std::vector<uint32_t> sums(size_t{3} * kNaiveWidth), table(static_cast<size_t>(2 * r + 2) * 256);
  for (auto _ : state) {
    for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<uint32_t>(i) / static_cast<uint32_t>(2 * r + 1);
    std::fill(sums.begin(), sums.end(), 0);
    for (int32_t j = -r; j <= r; ++j) {
      for (size_t i = 0; i < sums.size(); ++i) sums[i] += source[At(0, std::clamp(j, 0, kNaiveHeight - 1), 0) + i];
    }
    for (int32_t y = 0; y < kNaiveHeight; ++y) {
      for (size_t i = 0; i < sums.size(); ++i) dest[At(0, y, 0) + i] = static_cast<uint8_t>(table[sums[i]]);
      for (size_t i = 0; i < sums.size(); ++i) {
        sums[i] -= source[At(0, std::max(y - r, 0), 0) + i];
        sums[i] += source[At(0, std::min(y + r + 1, kNaiveHeight - 1), 0) + i];
      }
    }
    for (int32_t y = 0; y < kNaiveHeight; ++y) {
      std::copy_n(dest.begin() + static_cast<ptrdiff_t>(At(0, y, 0)), line.size(), line.begin());
      for (int32_t c = 0; c < 3; ++c) {
        uint32_t sum = 0;
        for (int32_t j = -r; j <= r; ++j) sum += line[At(std::clamp(j, 0, kNaiveWidth - 1), 0, c)];
        for (int32_t x = 0; x < kNaiveWidth; ++x) {
          dest[At(x, y, c)] = static_cast<uint8_t>(table[sum]);
          sum += line[At(std::min(x + r + 1, kNaiveWidth - 1), 0, c)];
          sum -= line[At(std::max(x - r, 0), 0, c)];
        }
      }
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, kNaiveWidth, kNaiveHeight);
}

void NaiveFractional(benchmark::State &state) {
  const Bytes source = NaivePhotograph();
  Bytes dest(source.size()), line(size_t{3} * kNaiveWidth);
  const double f = 0.4, norm = 1.0 / (f + f + 1.0);
  for (auto _ : state) {
    for (int32_t y = 0; y < kNaiveHeight; ++y) {
      const int32_t above = std::max(y - 1, 0), below = y == 0 ? 0 : std::min(y + 1, kNaiveHeight - 1);
      for (size_t i = 0; i < line.size(); ++i) {
        const int neighbours = source[At(0, above, 0) + i] + source[At(0, below, 0) + i];
        dest[At(0, y, 0) + i] = static_cast<uint8_t>((neighbours * f + source[At(0, y, 0) + i]) * norm);
      }
    }
    for (int32_t y = 0; y < kNaiveHeight; ++y) {
      std::copy_n(dest.begin() + static_cast<ptrdiff_t>(At(0, y, 0)), line.size(), line.begin());
      for (int32_t x = 0; x < kNaiveWidth; ++x) {
        const int32_t last = kNaiveWidth - 1, left = x == last ? x : std::max(x - 1, 0), right = std::min(x + 1, last);
        for (int32_t c = 0; c < 3; ++c) {
          const int neighbours = line[At(left, 0, c)] + line[At(right, 0, c)];
          dest[At(x, y, c)] = static_cast<uint8_t>((neighbours * f + line[At(x, 0, c)]) * norm);
        }
      }
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, kNaiveWidth, kNaiveHeight);
}

void NaiveUnsharp(benchmark::State &state) {
  Bytes image = NaivePhotograph();
  const Bytes blurred(image.size(), 100);
  const double k = 0.2 * 4 + 1;
  for (auto _ : state) {
    for (size_t i = 0; i < image.size(); ++i) {
      const int difference = image[i] - blurred[i];
      if (std::abs(difference) < 3) continue;
      image[i] = static_cast<uint8_t>(std::clamp(static_cast<int>(difference * k + blurred[i]), 0, 255));
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, kNaiveWidth, kNaiveHeight);
}

ZVK_BENCHMARK(BoxBlur, RGB_2, ImageFormatRGB, ImageFormatRGB, 2, true, true);
ZVK_BENCHMARK(BoxBlur, RGB_3, ImageFormatRGB, ImageFormatRGB, 3, true, true);
ZVK_BENCHMARK(BoxBlur, RGB_20, ImageFormatRGB, ImageFormatRGB, 20, true, true);
ZVK_BENCHMARK(BoxBlur, RGB_127, ImageFormatRGB, ImageFormatRGB, 127, true, true);
ZVK_BENCHMARK(BoxBlur, RGB_128, ImageFormatRGB, ImageFormatRGB, 128, true, true);
ZVK_BENCHMARK(BoxBlur, RGB_200, ImageFormatRGB, ImageFormatRGB, 200, true, true);
ZVK_BENCHMARK(BoxBlur, RGB_500, ImageFormatRGB, ImageFormatRGB, 500, true, true);
ZVK_BENCHMARK(BoxBlur, RGB_columns, ImageFormatRGB, ImageFormatRGB, 20, true, false);
ZVK_BENCHMARK(BoxBlur, RGB_rows, ImageFormatRGB, ImageFormatRGB, 20, false, true);
ZVK_BENCHMARK(BoxBlur, RGBA, ImageFormatRGBA, ImageFormatRGBA, 20, true, true);
ZVK_BENCHMARK(BoxBlur, G, ImageFormatG, ImageFormatG, 20, true, true);
ZVK_BENCHMARK(BoxBlur, RGBX_to_BGR, ImageFormatRGBX, ImageFormatBGR, 20, true, true);
ZVK_BENCHMARK(BoxBlurInPlace, RGB, ImageFormatRGB, 20);
ZVK_BENCHMARK(Fractional, RGB, ImageFormatRGB);
ZVK_BENCHMARK(Fractional, RGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Unsharp, RGB, ImageFormatRGB);
ZVK_BENCHMARK(Unsharp, RGBX, ImageFormatRGBX);
ZVK_BENCHMARK(Unsharp, CMYK, ImageFormatCMYK);
ZVK_BENCHMARK(NaiveBoxBlur, RGB_2, 2);
ZVK_BENCHMARK(NaiveBoxBlur, RGB_20, 20);
ZVK_BENCHMARK(NaiveBoxBlur, RGB_200, 200);
BENCHMARK(NaiveFractional)->Unit(benchmark::kMillisecond);
BENCHMARK(NaiveUnsharp)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zvk::bench
