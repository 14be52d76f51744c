// The artistic filters over 24 megapixels, and the same in plain loops over bytes, which know the layout when they are
// compiled, over fewer of them.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "bench/bench_host.h"
#include "filters/diffuse_filter.h"
#include "filters/engrave_filter.h"
#include "filters/neon_filter.h"
#include "filters/oil_filter.h"
#include "filters/stamp_filter.h"
#include "image/image_formats.h"

namespace zvk::bench {
namespace {

constexpr int32_t kWidth = 6000, kHeight = 4000;
constexpr int32_t kNaiveWidth = kWidth / 10, kNaiveHeight = kHeight / 10;

struct Photograph : BenchImage {
  explicit Photograph(int32_t format) : BenchImage(kWidth, kHeight, format, FillLikePhotograph) {}
};

// The filter from one image into another one of the same format.
template <class Filter>
void Run(benchmark::State &state, int32_t format, Filter filter) {
  const Photograph source(format), dest(format);
  for (auto _ : state) Drop(filter(source.Handle(), dest.Handle()));
  CountPixels(state, kWidth, kHeight);
}

void Oil(benchmark::State &state, int32_t format, int32_t levels, int32_t range) {
  Run(state, format, [&](REALobject source, REALobject dest) { return OilFilter(source, dest, levels, range); });
}

void Diffuse(benchmark::State &state, int32_t format) {
  Run(state, format, [](REALobject source, REALobject dest) { return DifuseFilter(source, dest, 3); });
}

void Engrave(benchmark::State &state, int32_t format) {
  Run(state, format, [](REALobject source, REALobject dest) { return EngraveFilter(source, dest, 2); });
}

void Neon(benchmark::State &state, int32_t format) { Run(state, format, NeonFilter); }

void Stamp(benchmark::State &state, int32_t format) {
  Run(state, format,
      [](REALobject source, REALobject dest) { return StampFilter(source, dest, 9.0, 0.5, 0.1, 0x102030, 0xF0E0D0); });
}

// --- plain loops over packed RGB ---

using Bytes = std::vector<uint8_t>;

Bytes NaivePhotograph() {
  Bytes bytes(size_t{3} * kNaiveWidth * kNaiveHeight);
  FillLikePhotograph(bytes.data(), static_cast<int64_t>(bytes.size()));
  return bytes;
}

size_t At(int32_t x, int32_t y) { return (static_cast<size_t>(y) * kNaiveWidth + static_cast<size_t>(x)) * 3; }

template <class Pixel>
void RunNaive(benchmark::State &state, Pixel pixel) {
  const Bytes source = NaivePhotograph();
  Bytes dest(source.size());
  for (auto _ : state) {
    for (int32_t y = 0; y < kNaiveHeight; ++y) {
      for (int32_t x = 0; x < kNaiveWidth; ++x) pixel(source, x, y, &dest[At(x, y)]);
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, kNaiveWidth, kNaiveHeight);
}

void NaiveOil(benchmark::State &state, int32_t levels, int32_t range) {
  std::array<std::array<int32_t, 256>, 3> counts, sums;
  RunNaive(state, [&](const Bytes &source, int32_t x, int32_t y, uint8_t *dest) {
    for (auto &bins : counts) std::fill_n(bins.begin(), levels, 0);
    for (auto &bins : sums) std::fill_n(bins.begin(), levels, 0);
    for (int32_t row = std::max(y - range, 0); row <= std::min(y + range, kNaiveHeight - 1); ++row) {
      for (int32_t column = std::max(x - range, 0); column <= std::min(x + range, kNaiveWidth - 1); ++column) {
        const uint8_t *const pixel = &source[At(column, row)];
        for (size_t c = 0; c < 3; ++c) {
          const auto bin = static_cast<size_t>(pixel[c] * levels / 256);
          ++counts[c][bin];
          sums[c][bin] += pixel[c];
        }
      }
    }
    for (size_t c = 0; c < 3; ++c) {
      size_t best = 0;
      for (size_t bin = 1; bin < static_cast<size_t>(levels); ++bin) {
        if (counts[c][bin] > counts[c][best]) best = bin;
      }
      dest[c] = static_cast<uint8_t>(sums[c][best] / counts[c][best]);
    }
  });
}

void NaiveDiffuse(benchmark::State &state) {
  RunNaive(state, [](const Bytes &source, int32_t x, int32_t y, uint8_t *dest) {
    const int32_t column = std::clamp(x + std::rand() % 7 - 3, 0, kNaiveWidth - 1);
    const int32_t row = std::clamp(y + std::rand() % 7 - 3, 0, kNaiveHeight - 1);
    for (size_t c = 0; c < 3; ++c) dest[c] = source[At(column, row) + c];
  });
}

void NaiveEngrave(benchmark::State &state) {
  RunNaive(state, [](const Bytes &source, int32_t x, int32_t y, uint8_t *dest) {
    const size_t other = At(std::min(x + 2, kNaiveWidth - 1), std::min(y + 2, kNaiveHeight - 1));
    for (size_t c = 0; c < 3; ++c) {
      dest[c] = static_cast<uint8_t>(std::clamp(source[At(x, y) + c] - source[other + c] + 128, 0, 255));
    }
  });
}

void NaiveNeon(benchmark::State &state) {
  RunNaive(state, [](const Bytes &source, int32_t x, int32_t y, uint8_t *dest) {
    for (size_t c = 0; c < 3; ++c) {
      const int sample = source[At(x, y) + c];
      const int right = sample - (x + 1 < kNaiveWidth ? source[At(x + 1, y) + c] : 0);
      const int below = sample - (y + 1 < kNaiveHeight ? source[At(x, y + 1) + c] : 0);
      const auto single = static_cast<float>(right * right + below * below);
      dest[c] = static_cast<uint8_t>(std::min(static_cast<int>(static_cast<float>(std::sqrt(2.0 * single))), 255));
    }
  });
}

ZVK_BENCHMARK(Oil, RGB_20_levels_range_2, ImageFormatRGB, 20, 2);
ZVK_BENCHMARK(Oil, RGB_20_levels_range_4, ImageFormatRGB, 20, 4);
ZVK_BENCHMARK(Oil, RGB_20_levels_range_8, ImageFormatRGB, 20, 8);
ZVK_BENCHMARK(Oil, RGB_256_levels_range_4, ImageFormatRGB, 256, 4);
ZVK_BENCHMARK(Oil, RGBA_20_levels_range_4, ImageFormatRGBA, 20, 4);
ZVK_BENCHMARK(Diffuse, RGB, ImageFormatRGB);
ZVK_BENCHMARK(Engrave, RGB, ImageFormatRGB);
ZVK_BENCHMARK(Engrave, RGBX, ImageFormatRGBX);
ZVK_BENCHMARK(Neon, RGB, ImageFormatRGB);
ZVK_BENCHMARK(Neon, RGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Neon, CMYKA, ImageFormatCMYKA);
ZVK_BENCHMARK(Stamp, RGB, ImageFormatRGB);
ZVK_BENCHMARK(NaiveOil, RGB_20_levels_range_2, 20, 2);
ZVK_BENCHMARK(NaiveOil, RGB_20_levels_range_4, 20, 4);
ZVK_BENCHMARK(NaiveOil, RGB_20_levels_range_8, 20, 8);
ZVK_BENCHMARK(NaiveOil, RGB_256_levels_range_4, 256, 4);
BENCHMARK(NaiveDiffuse)->Unit(benchmark::kMillisecond);
BENCHMARK(NaiveEngrave)->Unit(benchmark::kMillisecond);
BENCHMARK(NaiveNeon)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zvk::bench
