// Moves and rotations of 24 megapixels, from memory to memory, and the same as plain loops beside them; the naive
// rotation of the tests at a sixteenth of the size. Pixels a second are those of the source.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "bench/bench_host.h"
#include "geometry/mirror.h"
#include "geometry/rotate.h"
#include "geometry/turns.h"
#include "image/image_formats.h"
#include "tests/naive/rotate.h"

namespace zvk::bench {
namespace {

constexpr int32_t kWidth = 6000, kHeight = 4000;
constexpr int32_t kNaiveWidth = 1500, kNaiveHeight = 1000;

void InPlace(benchmark::State &state, void (*move)(REALobject), int32_t format) {
  const BenchImage image(kWidth, kHeight, format);
  for (auto _ : state) move(image.Handle());
  CountPixels(state, kWidth, kHeight);
}

void Turn(benchmark::State &state, REALobject (*turn)(REALobject, REALobject), int32_t format, int32_t destFormat) {
  const bool sameSides = turn == Rotate180;
  const BenchImage source(kWidth, kHeight, format);
  const BenchImage dest(sameSides ? kWidth : kHeight, sameSides ? kHeight : kWidth, destFormat);
  for (auto _ : state) Drop(turn(source.Handle(), dest.Handle()));
  CountPixels(state, kWidth, kHeight);
}

void Rotate(benchmark::State &state, double angle, int32_t format) {
  const BenchImage source(kWidth, kHeight, format);
  for (auto _ : state) Drop(rbRotate(source.Handle(), angle, 0, 0, 0, 0, 0, 0, 0, 0, 0));
  CountPixels(state, kWidth, kHeight);
}

// --- plain loops over packed pixels ---

using Pixels = std::vector<uint8_t>;

template <int32_t kPixelSize>
void PlainHMirror(Pixels &image) {
  for (ptrdiff_t y = 0; y < kHeight; ++y) {
    uint8_t *row = &image[static_cast<size_t>(y * kWidth * kPixelSize)];
    for (ptrdiff_t x = 0; x < kWidth / 2; ++x) {
      for (ptrdiff_t c = 0; c < kPixelSize; ++c) {
        std::swap(row[x * kPixelSize + c], row[(kWidth - 1 - x) * kPixelSize + c]);
      }
    }
  }
}

template <int32_t kPixelSize>
void PlainHalfTurn(const Pixels &source, Pixels &dest) {
  for (ptrdiff_t y = 0; y < kHeight; ++y) {
    for (ptrdiff_t x = 0; x < kWidth; ++x) {
      const uint8_t *from = &source[static_cast<size_t>((y * kWidth + x) * kPixelSize)];
      const ptrdiff_t place = (kHeight - 1 - y) * kWidth + kWidth - 1 - x;
      for (ptrdiff_t c = 0; c < kPixelSize; ++c) dest[static_cast<size_t>(place * kPixelSize + c)] = from[c];
    }
  }
}

template <int32_t kPixelSize>
void PlainQuarterTurn(const Pixels &source, Pixels &dest) {
  for (ptrdiff_t y = 0; y < kHeight; ++y) {
    for (ptrdiff_t x = 0; x < kWidth; ++x) {
      const uint8_t *from = &source[static_cast<size_t>((y * kWidth + x) * kPixelSize)];
      const ptrdiff_t place = (kWidth - 1 - x) * kHeight + y;
      for (ptrdiff_t c = 0; c < kPixelSize; ++c) dest[static_cast<size_t>(place * kPixelSize + c)] = from[c];
    }
  }
}

void PlainInPlace(benchmark::State &state, void (*move)(Pixels &), int32_t pixelSize) {
  Pixels image(static_cast<size_t>(kWidth) * kHeight * pixelSize, 7);
  for (auto _ : state) {
    move(image);
    benchmark::ClobberMemory();
  }
  CountPixels(state, kWidth, kHeight);
}

void PlainTurn(benchmark::State &state, void (*turn)(const Pixels &, Pixels &), int32_t pixelSize) {
  const Pixels source(static_cast<size_t>(kWidth) * kHeight * pixelSize, 7);
  Pixels dest = source;
  for (auto _ : state) {
    turn(source, dest);
    benchmark::ClobberMemory();
  }
  CountPixels(state, kWidth, kHeight);
}

void NaiveRotate(benchmark::State &state, double angle, int32_t format) {
  const BenchImage source(kNaiveWidth, kNaiveHeight, format);
  for (auto _ : state) naive::RotateByShears(source.Handle(), angle, {});
  CountPixels(state, kNaiveWidth, kNaiveHeight);
}

ZVK_BENCHMARK(InPlace, HMirror_RGB, HMirrorSelf, ImageFormatRGB);
ZVK_BENCHMARK(InPlace, HMirror_RGBA, HMirrorSelf, ImageFormatRGBA);
ZVK_BENCHMARK(InPlace, HMirror_RGBX, HMirrorSelf, ImageFormatRGBX);
ZVK_BENCHMARK(PlainInPlace, HMirror_RGB, PlainHMirror<3>, 3);
ZVK_BENCHMARK(PlainInPlace, HMirror_RGBA, PlainHMirror<4>, 4);
ZVK_BENCHMARK(InPlace, VMirror_RGB, VMirrorSelf, ImageFormatRGB);
ZVK_BENCHMARK(InPlace, VMirror_RGBA, VMirrorSelf, ImageFormatRGBA);
ZVK_BENCHMARK(InPlace, VMirror_RGBX, VMirrorSelf, ImageFormatRGBX);
ZVK_BENCHMARK(InPlace, Rotate180_RGB, Rotate180Self, ImageFormatRGB);
ZVK_BENCHMARK(InPlace, Rotate180_RGBA, Rotate180Self, ImageFormatRGBA);
ZVK_BENCHMARK(Turn, Rotate180_RGB, Rotate180, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Turn, Rotate180_RGBA, Rotate180, ImageFormatRGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Turn, Rotate180_RGBA_to_BGRX, Rotate180, ImageFormatRGBA, ImageFormatBGRX);
ZVK_BENCHMARK(PlainTurn, Rotate180_RGB, PlainHalfTurn<3>, 3);
ZVK_BENCHMARK(PlainTurn, Rotate180_RGBA, PlainHalfTurn<4>, 4);
ZVK_BENCHMARK(Turn, Rotate90_G, Rotate90fast, ImageFormatG, ImageFormatG);
ZVK_BENCHMARK(Turn, Rotate90_RGB, Rotate90fast, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(Turn, Rotate90_RGBA, Rotate90fast, ImageFormatRGBA, ImageFormatRGBA);
ZVK_BENCHMARK(Turn, Rotate90_RGBX, Rotate90fast, ImageFormatRGBX, ImageFormatRGBX);
ZVK_BENCHMARK(Turn, Rotate90_RGB_to_BGRX, Rotate90fast, ImageFormatRGB, ImageFormatBGRX);
ZVK_BENCHMARK(Turn, Rotate270_RGB, Rotate270, ImageFormatRGB, ImageFormatRGB);
ZVK_BENCHMARK(PlainTurn, Rotate90_RGB, PlainQuarterTurn<3>, 3);
ZVK_BENCHMARK(PlainTurn, Rotate90_RGBA, PlainQuarterTurn<4>, 4);
ZVK_BENCHMARK(Rotate, by_5_RGB, 5.0, ImageFormatRGB);
ZVK_BENCHMARK(Rotate, by_30_RGB, 30.0, ImageFormatRGB);
ZVK_BENCHMARK(Rotate, by_45_RGB, 45.0, ImageFormatRGB);
ZVK_BENCHMARK(Rotate, by_30_RGBA, 30.0, ImageFormatRGBA);
ZVK_BENCHMARK(Rotate, by_30_RGBX, 30.0, ImageFormatRGBX);
ZVK_BENCHMARK(Rotate, by_100_RGB, 100.0, ImageFormatRGB);
ZVK_BENCHMARK(NaiveRotate, by_5_RGB, 5.0, ImageFormatRGB);
ZVK_BENCHMARK(NaiveRotate, by_30_RGB, 30.0, ImageFormatRGB);
ZVK_BENCHMARK(NaiveRotate, by_30_RGBA, 30.0, ImageFormatRGBA);

}  // namespace
}  // namespace zvk::bench
