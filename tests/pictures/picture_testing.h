// What the tests of host pictures share: plain ways to look at pictures and images, and storage that misbehaves.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "standalone/runtime/picture_storage.h"
#include "tests/naive/samples.h"
#include "tests/scenes/image_test.h"
#include "tests/scenes/pictures.h"
#include "tests/scenes/yields.h"
#include "tests/support/plugin_host.h"

namespace picture_testing {

using naive::SampleAt;
using scenes::FillPicture;
using scenes::HostOf;
using scenes::kGD;
using scenes::kLayouts;
using scenes::MakeNewPicturesOf;
using scenes::MakeStorage;
using scenes::NewFilledPicture;
using scenes::YieldAlways;
using scenes::Yields;
using standalone::Owned;
using standalone::Pixel;

// The four bytes of a pixel as they lie in memory.
inline std::vector<uint8_t> BytesAt(standalone::Picture &picture, int32_t x, int32_t y) {
  const uint8_t *pixel = picture.Storage().Row(y) + 4 * x;
  return {pixel, pixel + 4};
}

inline void SetBytesAt(standalone::Picture &picture, int32_t x, int32_t y, const std::vector<uint8_t> &bytes) {
  std::memcpy(picture.Storage().Row(y) + 4 * x, bytes.data(), 4);
}

// An image in memory full of noise.
inline Owned<standalone::Object> NewImage(PluginHost &host, int32_t width, int32_t height, int32_t format,
                                          uint32_t seed = 1) {
  return scenes::NewNoise(host, width, height, format, seed);
}

inline std::vector<uint8_t> StorageOf(const zvk::image::ImageClassData &record) {
  return {record.Buffer, record.Buffer + record.TotalSize};
}

// Storage that answers every lock with one description, or refuses them all if its type is 0.
class OddStorage : public standalone::PictureStorage {
 public:
  OddStorage(uint32_t type, void *data) : type_(type), data_(data) {}

  int32_t Width() const override { return 5; }
  int32_t Height() const override { return 4; }
  Pixel Get(int32_t, int32_t) const override { return {}; }
  void Set(int32_t, int32_t, Pixel) override {}
  bool Describe(int32_t, REALpictureDescription *description) override {
    *description = {type_, data_, Width(), Height(), 32, 0, nullptr};
    return type_ != 0;
  }

 private:
  uint32_t type_;
  void *data_;
};

inline Owned<standalone::Picture> NewOddPicture(PluginHost &host, uint32_t type, void *data) {
  return host.NewPicture(std::make_unique<OddStorage>(type, data));
}

// True if nobody but the test holds the picture, and no lock of it is left.
inline bool IsFree(const standalone::Picture &picture) { return picture.References() == 1 && picture.LocksHeld() == 0; }

inline int64_t Locks(PluginHost &host) { return host->Calls("REALLockPictureDescription"); }
inline int64_t Unlocks(PluginHost &host) { return host->Calls("unlockPictureDescription"); }

}  // namespace picture_testing
