// What the benchmarks share: the host and its images, and how a benchmark is registered and its pixels counted.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

#include "bench/bench_images.h"

// BENCHMARK_CAPTURE, its times told in milliseconds.
#define ZVK_BENCHMARK(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)

namespace zvk::bench {

// Has the pixels a second told for a round that goes over `width` by `height` of them.
inline void CountPixels(benchmark::State &state, int64_t width, int64_t height) {
  state.SetItemsProcessed(state.iterations() * width * height);
}

}  // namespace zvk::bench
