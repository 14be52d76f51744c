// Images in a file, of which one block is mapped at a time. Walks over the rows: down, and up through a mirrored view;
// the counter tells how often a walk moved the block. And operations on 12 megapixels in several blocks, with both
// images in memory, with the source in a file, the dest, and each in a file of its own; the same with files that are
// mapped in one block, which stays mapped.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "bench/bench_host.h"
#include "compositing/combine.h"
#include "compositing/copy_pixels.h"
#include "filters/box_blur.h"
#include "filters/diffuse_filter.h"
#include "filters/dither.h"
#include "filters/engrave_filter.h"
#include "filters/fractional_blur.h"
#include "filters/matrix_filter.h"
#include "filters/neon_filter.h"
#include "filters/oil_filter.h"
#include "filters/stamp_filter.h"
#include "filters/tone_filters.h"
#include "filters/unsharp.h"
#include "geometry/mirror.h"
#include "geometry/rotate.h"
#include "geometry/turns.h"
#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "scaling/fast_scale.h"
#include "scaling/scale_engine.h"

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

// --- operations ---

constexpr int32_t kWidth = 4000, kHeight = 3000;

// An image of noise in memory or in a file.
enum class Place { Memory, Blocks, OneBlock };

class Image {
 public:
  Image(Place place, int32_t width, int32_t height, int32_t format)
      : object_(standalone::Owned<standalone::Object>::Adopt(BenchHost().Classes().NewInstance("PictureZVK"))) {
    if (place != Place::Memory) {
      ImageConstructorFile(object_, width, height, format, 0, nullptr);
      if (place == Place::OneBlock) SetMemBlockSize(object_, 0, INT32_MAX);
    } else {
      ImageConstructor(object_, width, height, format);
    }
    Noise noise;
    ImageClassData &record = *RecordOf(object_);
    for (int32_t y = 0; y < height; ++y) {
      uint8_t *row = record.GetRow(&record, y);
      for (int32_t i = 0; i < width * record.PixelSize; ++i) row[i] = static_cast<uint8_t>(i / 97 % 200 + noise() / 8);
    }
  }
  operator REALobject() const { return object_.Handle(); }

 private:
  standalone::Owned<standalone::Object> object_;
};

struct Operation {
  std::function<void(REALobject source, REALobject dest)> run;
  int32_t sourceFormat = ImageFormatRGB;
  int32_t destFormat = ImageFormatRGB;
  int32_t destWidth = kWidth;
  int32_t destHeight = kHeight;
};

Operation Filter(std::function<REALobject(REALobject source, REALobject dest)> filter) {
  return {[filter](REALobject source, REALobject dest) { Drop(filter(source, dest)); }};
}

Operation Matrix(int32_t dimension) {
  return Filter([dimension](REALobject source, REALobject dest) {
    const BenchArray entries(std::vector<int32_t>(static_cast<size_t>(dimension * dimension), 1));
    return PictureMatrix5(source, dest, dimension, entries.Handle(), 0, 1.0 / (dimension * dimension));
  });
}

void Combine(REALobject source, REALobject dest) {
  PictureCombine3(dest, source, source, 0, 0, 0, 0, kWidth, kHeight, false);
}

void CopyRow(REALobject source, REALobject dest) { rbCopyPixels2(dest, source); }

std::map<std::string, Operation> Operations() {
  const auto shrink = [](REALobject source, REALobject dest) {
    PictureScaleZVK(dest, source, nullptr, 3, kWidth / 4, kHeight / 4);
  };
  const auto enlarge = [](REALobject source, REALobject dest) {
    PictureScaleZVK(dest, source, nullptr, 3, kWidth, kHeight);
  };
  return {
      {"matrix3", Matrix(3)},
      {"matrix9", Matrix(9)},
      {"box_blur", Filter([](REALobject source, REALobject dest) { return BoxBlurFilter(source, dest, 5, 1, 1); })},
      {"box_blur_along",
       Filter([](REALobject source, REALobject dest) { return BoxBlurFilter(source, dest, 5, 0, 1); })},
      {"fractional_blur",
       Filter([](REALobject source, REALobject dest) { return BoxBlurFractionalFilter(source, dest, 0.4); })},
      {"unsharp", {[](REALobject source, REALobject dest) { unsharpFilter(dest, source, 0.5, 3); }}},
      {"oil", Filter([](REALobject source, REALobject dest) { return OilFilter(source, dest, 16, 3); })},
      {"engrave", Filter([](REALobject source, REALobject dest) { return EngraveFilter(source, dest, 2); })},
      {"neon", Filter(NeonFilter)},
      {"stamp", Filter([](REALobject source, REALobject dest) {
         return StampFilter(source, dest, 9.0, 0.5, 0.1, 0x102030, 0xF0E0D0);
       })},
      {"diffuse", Filter([](REALobject source, REALobject dest) { return DifuseFilter(source, dest, 3); })},
      {"solarize", Filter(SolarizeFilter)},
      {"gammas",
       Filter([](REALobject source, REALobject dest) { return GammaFilterRGB(source, dest, 1.8, 1.7, 1.6); })},
      {"dither", Filter([](REALobject source, REALobject dest) { return DitherFilter(source, dest, 10, 4); })},
      {"combine", {Combine}},
      {"combine_RGBA", {Combine, ImageFormatRGBA, ImageFormatRGBA}},
      {"copy", {CopyRow}},
      {"copy_RGB_BGRA", {CopyRow, ImageFormatRGB, ImageFormatBGRA}},
      {"copy_RGB_G", {CopyRow, ImageFormatRGB, ImageFormatG}},
      {"scale_down", {shrink, ImageFormatRGB, ImageFormatRGB, kWidth / 4, kHeight / 4}},
      {"scale_up", {enlarge}},
      {"fast_scale_down",
       {[](REALobject source, REALobject dest) { ScalePictureFast(dest, source, kWidth / 4, kHeight / 4); },
        ImageFormatRGB, ImageFormatRGB, kWidth / 4, kHeight / 4}},
      {"fast_scale_up", {[](REALobject source, REALobject dest) { ScalePictureFast(dest, source, kWidth, kHeight); }}},
      {"rotate_10", {[](REALobject source, REALobject) { Drop(rbRotate(source, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0)); }}},
      {"rotate_180", Filter(Rotate180)},
      {"rotate_90",
       {[](REALobject source, REALobject dest) { Drop(Rotate90fast(source, dest)); }, ImageFormatRGB, ImageFormatRGB,
        kHeight, kWidth}},
      {"rotate_90_slow",
       {[](REALobject source, REALobject dest) { Drop(Rotate90(source, dest)); }, ImageFormatRGB, ImageFormatRGB,
        kHeight, kWidth}},
      {"mirror_across", {[](REALobject source, REALobject) { HMirrorSelf(source); }}},
      {"mirror_upside_down", {[](REALobject source, REALobject) { VMirrorSelf(source); }}},
  };
}

void Operate(benchmark::State &state, const std::string &name, Place sourcePlace, Place destPlace) {
  const Operation operation = Operations().at(name);
  const bool enlarges = name == "scale_up" || name == "fast_scale_up";
  const int32_t part = enlarges ? 4 : 1;
  const Image source(sourcePlace, kWidth / part, kHeight / part, operation.sourceFormat);
  const Image dest(destPlace, operation.destWidth, operation.destHeight, operation.destFormat);
  for (auto _ : state) operation.run(source, dest);
  CountPixels(state, kWidth, kHeight);
}

const bool kRegistered = [] {
  using enum Place;
  for (const auto &[name, operation] : Operations()) {
    for (const auto &[places, source, dest] :
         {std::tuple("memory", Memory, Memory), std::tuple("from_file", Blocks, Memory),
          std::tuple("to_file", Memory, Blocks), std::tuple("file_to_file", Blocks, Blocks),
          std::tuple("from_block", OneBlock, Memory), std::tuple("to_block", Memory, OneBlock),
          std::tuple("block_to_block", OneBlock, OneBlock)}) {
      benchmark::RegisterBenchmark(("Operate/" + name + "/" + places).c_str(), Operate, name, source, dest)
          ->Unit(benchmark::kMillisecond);
    }
  }
  return true;
}();

}  // namespace
}  // namespace zvk::bench
