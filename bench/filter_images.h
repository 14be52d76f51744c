// What the benchmarks of filters share: a host, images of noise in it, and arrays.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "plugin/plugin_entry.h"
#include "standalone/runtime/arrays.h"
#include "standalone/runtime/host.h"

namespace zvk {

inline standalone::Host &BenchHost() {
  static standalone::Host host;
  static const bool started = (host.Start(&REALPluginMain), true);
  (void)started;
  return host;
}

inline void Unlock(REALobject object) { standalone::Object::From(object)->Unlock(); }

class BenchImage {
 public:
  BenchImage(int32_t width, int32_t height, int32_t format) : object_(BenchHost().Classes().NewInstance("PictureZVK")) {
    ImageConstructor(Handle(), width, height, format);
    std::minstd_rand random(1);
    for (int64_t i = 0; i < Record().TotalSize; ++i) Record().Buffer[i] = static_cast<uint8_t>(random() >> 8);
  }
  BenchImage(const BenchImage &) = delete;
  BenchImage &operator=(const BenchImage &) = delete;
  ~BenchImage() { object_->Unlock(); }

  REALobject Handle() const { return object_->Handle(); }
  ImageClassData &Record() const { return *RecordOf(Handle()); }

 private:
  standalone::Object *object_;
};

class BenchArray {
 public:
  explicit BenchArray(const std::vector<int32_t> &values)
      : array_((BenchHost(), standalone::IntegerArray::Make(values))) {}
  BenchArray(const BenchArray &) = delete;
  BenchArray &operator=(const BenchArray &) = delete;
  ~BenchArray() { array_->Unlock(); }

  REALarray Handle() const { return array_->ArrayHandle(); }

 private:
  standalone::IntegerArray *array_;
};

}  // namespace zvk
