// A host in which the plug-in runs without being loaded, images and arrays in it, and noise to fill them with.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "plugin/plugin_entry.h"
#include "standalone/runtime/arrays.h"
#include "standalone/runtime/host.h"

namespace zvk::bench {

using namespace plugin;  // which sees all operations

// The one host of a program, which starts the plug-in when it is first asked for.
inline standalone::Host &BenchHost() {
  static standalone::Host host;
  static const bool started = (host.Start(&REALPluginMain), true);
  (void)started;
  return host;
}

// Gives back an object that an operation has returned.
inline void Drop(REALobject result) { standalone::ObjectAs<standalone::Object>(result)->Unlock(); }

// Noise, the same in each run, a byte at each call.
class Noise {
 public:
  explicit Noise(uint32_t seed = 1) : state_(seed) {}

  uint8_t operator()() {
    state_ = state_ * 1664525 + 1013904223;
    return static_cast<uint8_t>(state_ >> 24);
  }

 private:
  uint32_t state_;
};

inline void FillWithNoise(uint8_t *bytes, int64_t count) { std::generate_n(bytes, count, Noise()); }

// Noise over a gradient, so that neighbours are alike as in a photograph.
inline void FillLikePhotograph(uint8_t *bytes, int64_t count) {
  Noise noise;
  for (int64_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(i / 97 % 200 + noise() / 8);
}

// An image in memory, all of its bytes filled once.
class BenchImage {
 public:
  BenchImage(int32_t width, int32_t height, int32_t format, void (*fill)(uint8_t *bytes, int64_t count) = FillWithNoise)
      : object_(BenchHost().Classes().NewInstance("PictureZVK")) {
    ImageConstructor(Handle(), width, height, format);
    fill(Record().Buffer, Record().TotalSize);
  }
  BenchImage(const BenchImage &) = delete;
  BenchImage &operator=(const BenchImage &) = delete;
  ~BenchImage() { object_->Unlock(); }

  REALobject Handle() const { return object_->Handle(); }
  ImageClassData &Record() const { return *RecordOf(Handle()); }

 private:
  standalone::Object *object_;
};

// An array of integers, as filters take them.
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

}  // namespace zvk::bench
