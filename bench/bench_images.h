// Images full of noise for benchmarks, in a host of the benchmark's own.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "plugin/plugin_entry.h"
#include "standalone/runtime/host.h"

namespace zvk {

inline standalone::Host &BenchHost() {
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
  Image &operator=(const Image &) = delete;
  ~Image() { object_->Unlock(); }

  REALobject Handle() const { return object_->Handle(); }
  ImageClassData &Record() const { return *RecordOf(Handle()); }

 private:
  standalone::Object *object_;
};

// Has the pixels a second told for a round that goes over `width` by `height` of them.
inline void CountPixels(benchmark::State &state, int64_t width, int64_t height) {
  state.SetItemsProcessed(state.iterations() * width * height);
}

}  // namespace zvk
