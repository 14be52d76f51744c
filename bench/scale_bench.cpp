// 24 megapixels scaled to 1.5 and back, with each filter and through several pairs, on one thread; and the same through
// the naive scaler of the tests, at a sixteenth of the size. Pixels a second are those of the larger image.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "host/plugin_entry.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "scaling/scale_engine.h"
#include "standalone/runtime/host.h"
#include "tests/support/naive_scale.h"

namespace zvk {
namespace {

constexpr int32_t kTriangle = 1, kBox = 2, kLanczos3 = 3, kLanczos8 = 4, kMitchell = 5, kPoly3 = 6, kCubic = 7;

standalone::Host &BenchHost() {
  static standalone::Host host;
  static const bool started = (host.Start(&REALPluginMain), true);
  (void)started;
  return host;
}

class Image {
 public:
  Image(int32_t width, int32_t height, int32_t format) : object_(BenchHost().Classes().NewInstance("PictureZVK")) {
    ImageConstructor(Handle(), width, height, format);
    uint32_t state = 1;
    for (int64_t i = 0; i < Record().TotalSize; ++i) {
      state = state * 1664525 + 1013904223;
      Record().Buffer[i] = static_cast<uint8_t>(state >> 24);
    }
  }
  Image(const Image &) = delete;
  ~Image() { object_->Unlock(); }

  REALobject Handle() const { return object_->Handle(); }
  ImageClassData &Record() const { return *RecordOf(Handle()); }

 private:
  standalone::Object *object_;
};

void CountPixels(benchmark::State &state, int64_t width, int64_t height) {
  state.SetItemsProcessed(state.iterations() * width * height);
}

void Shrink(benchmark::State &state, int32_t mode, int32_t sourceFormat, int32_t destFormat, int32_t yieldTicks) {
  const Image source(6000, 4000, sourceFormat), dest(1500, 1000, destFormat);
  dest.Record().Yield.YieldTicks = yieldTicks;
  for (auto _ : state) PictureScaleZVK(dest.Handle(), source.Handle(), nullptr, mode, 1500, 1000);
  CountPixels(state, 6000, 4000);
}

void Enlarge(benchmark::State &state, int32_t mode, int32_t sourceFormat, int32_t destFormat) {
  const Image source(1500, 1000, sourceFormat), dest(6000, 4000, destFormat);
  for (auto _ : state) PictureScaleZVK(dest.Handle(), source.Handle(), nullptr, mode, 6000, 4000);
  CountPixels(state, 6000, 4000);
}

void NaiveShrink(benchmark::State &state, int32_t mode, int32_t sourceFormat, int32_t destFormat) {
  const Image source(1500, 1000, sourceFormat), dest(375, 250, destFormat);
  const Image temp(375, 1000, naive::PairFor(source.Record(), dest.Record())->tempFormat);
  for (auto _ : state) naive::Scale(dest.Record(), source.Record(), temp.Record(), mode, 375, 250);
  CountPixels(state, 1500, 1000);
}

#define ZVK_BENCHMARK(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)
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

}  // namespace
}  // namespace zvk
