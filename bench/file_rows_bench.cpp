// Walks over the rows of an image in a file, of which one block is mapped at a time: down, and up through a mirrored
// view. The counter tells how often a walk moved the block.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "bench/bench_host.h"
#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/views.h"

namespace zvk::bench {
namespace {

constexpr int32_t kRows = 100000;

// Reads a byte of every row in the record's order; how often the block moved on the way.
int64_t Walk(ImageClassData &image) {
  int64_t remaps = 0;
  int32_t first = image.MappedFirstRow;
  for (int32_t y = 0; y < image.Height; ++y) {
    benchmark::DoNotOptimize(*image.GetRow(&image, y));
    if (image.MappedFirstRow == first) continue;
    first = image.MappedFirstRow;
    ++remaps;
  }
  return remaps;
}

void WalkRows(benchmark::State &state, bool upwards) {
  const auto image = standalone::Owned<standalone::Object>::Adopt(BenchHost().Classes().NewInstance("PictureZVK"));
  ImageConstructorFile(image, 1000, kRows, ImageFormatRGB, 0, nullptr);
  const auto mirrored = standalone::Owned<standalone::Object>::Adopt(GetMirroredView(image));
  int64_t remaps = 0;
  for (auto _ : state) remaps = Walk(*RecordOf(upwards ? mirrored : image));
  state.SetItemsProcessed(state.iterations() * kRows);
  state.counters["remaps"] = static_cast<double>(remaps);
}

ZVK_BENCHMARK(WalkRows, Down, false);
ZVK_BENCHMARK(WalkRows, Up, true);

}  // namespace
}  // namespace zvk::bench
