// Rows of 6000 pixels a second through RowInFormat, and the same conversions as plain loops beside it, which know both
// layouts when they are compiled. A row that is read is a new memory block of the host's each time.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "bench/bench_host.h"
#include "exchange/row_conversion.h"
#include "image/image_formats.h"
#include "standalone/runtime/memory_block.h"

namespace zvk::bench {
namespace {

constexpr int32_t kWidth = 6000;

void NaiveRGBToBGRA(const uint8_t *source, uint8_t *dest) {
  for (int32_t x = 0; x < kWidth; ++x) {
    dest[4 * x] = source[3 * x + 2];
    dest[4 * x + 1] = source[3 * x + 1];
    dest[4 * x + 2] = source[3 * x];
  }
}

void NaiveRGBToG(const uint8_t *source, uint8_t *dest) {
  for (int32_t x = 0; x < kWidth; ++x) {
    dest[x] = static_cast<uint8_t>((77 * source[3 * x] + 151 * source[3 * x + 1] + 28 * source[3 * x + 2]) / 256);
  }
}

void NaiveGToCMYK(const uint8_t *source, uint8_t *dest) {
  for (int32_t x = 0; x < kWidth; ++x) {
    for (int32_t ink = 0; ink < 4; ++ink) dest[4 * x + ink] = source[x];
  }
}

void Read(benchmark::State &state, int32_t imageFormat, int32_t format) {
  const BenchImage image(kWidth, 1, imageFormat);
  for (auto _ : state) {
    Drop(rbGetRowF(image.Handle(), 0, format));
  }
  state.SetItemsProcessed(state.iterations());
}

void Write(benchmark::State &state, int32_t format, int32_t imageFormat) {
  const BenchImage image(kWidth, 1, imageFormat);
  standalone::MemoryBlock *const block = standalone::MemoryBlock::Make(4 * kWidth);
  for (auto _ : state) {
    rbSetRowF(image.Handle(), 0, format, block->Handle());
    benchmark::ClobberMemory();
  }
  block->Unlock();
  state.SetItemsProcessed(state.iterations());
}

void Naive(benchmark::State &state, void (*convert)(const uint8_t *, uint8_t *)) {
  const std::vector<uint8_t> source(4 * kWidth, 77);
  std::vector<uint8_t> dest(4 * kWidth);
  for (auto _ : state) {
    convert(source.data(), dest.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK_CAPTURE(Read, RGB_to_BGRA, ImageFormatRGB, ImageFormatBGRA);
BENCHMARK_CAPTURE(Write, RGB_to_BGRA, ImageFormatRGB, ImageFormatBGRA);
BENCHMARK_CAPTURE(Naive, RGB_to_BGRA, NaiveRGBToBGRA);
BENCHMARK_CAPTURE(Read, RGB_to_G, ImageFormatRGB, ImageFormatG);
BENCHMARK_CAPTURE(Write, RGB_to_G, ImageFormatRGB, ImageFormatG);
BENCHMARK_CAPTURE(Naive, RGB_to_G, NaiveRGBToG);
BENCHMARK_CAPTURE(Read, G_to_CMYK, ImageFormatG, ImageFormatCMYK);
BENCHMARK_CAPTURE(Write, G_to_CMYK, ImageFormatG, ImageFormatCMYK);
BENCHMARK_CAPTURE(Naive, G_to_CMYK, NaiveGToCMYK);

}  // namespace
}  // namespace zvk::bench
