// What the tests of host pictures share: pictures in every storage form, images of random bytes, and plain ways to look
// at both.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "standalone/runtime/picture_storage.h"
#include "tests/support/plugin_host.h"

namespace picture_testing {

using standalone::Owned;
using standalone::Pixel;

// Storage forms by the plug-in's layout code: 1 to 6 are bitmap contexts, 8 is a GD image.
inline constexpr int32_t kLayouts[] = {1, 2, 3, 4, 5, 6, 8};
inline constexpr int32_t kGD = 8;

inline standalone::HostOptions HostOf(int32_t layout) {
  return {.kind = layout == kGD ? standalone::HostKind::Console : standalone::HostKind::Desktop};
}

// Between unreadable pages, and with 12 bytes behind each row of a bitmap.
inline std::unique_ptr<standalone::PictureStorage> MakeStorage(int32_t width, int32_t height, int32_t layout,
                                                               bool hasAlphaChannel = false) {
  if (layout == kGD) return std::make_unique<standalone::GDStorage>(width, height, true);
  standalone::BitmapLayout bitmap;
  bitmap.alphaInfo = static_cast<uint32_t>(layout);
  bitmap.bytesPerRow = 4 * width + 12;
  bitmap.hasAlphaChannel = hasAlphaChannel;
  return std::make_unique<standalone::BitmapStorage>(width, height, bitmap, true);
}

// Makes all pictures that the plug-in asks for of this form.
inline void MakeNewPicturesOf(PluginHost &host, int32_t layout) {
  host->SetPictureFactory([layout](int32_t width, int32_t height) { return MakeStorage(width, height, layout); });
}

// The four bytes of a pixel as they lie in memory.
inline std::vector<uint8_t> BytesAt(standalone::Picture &picture, int32_t x, int32_t y) {
  const uint8_t *pixel = picture.Storage().Row(y) + 4 * x;
  return {pixel, pixel + 4};
}

inline void SetBytesAt(standalone::Picture &picture, int32_t x, int32_t y, const std::vector<uint8_t> &bytes) {
  std::memcpy(picture.Storage().Row(y) + 4 * x, bytes.data(), 4);
}

// Random bytes, 0 and 255 more often than the others.
inline uint8_t RandomByte(std::mt19937 &random) {
  const uint32_t value = random();
  if (value % 8 == 0) return 0;
  if (value % 8 == 1) return 255;
  return static_cast<uint8_t>(value >> 8);
}

inline void FillPicture(standalone::Picture &picture, uint32_t seed) {
  std::mt19937 random(seed);
  for (int32_t y = 0; y < picture.Height(); ++y) {
    uint8_t *row = picture.Storage().Row(y);
    for (int32_t i = 0; i < 4 * picture.Width(); ++i) row[i] = RandomByte(random);
  }
}

inline Owned<standalone::Picture> NewFilledPicture(PluginHost &host, int32_t width, int32_t height, int32_t layout,
                                                   uint32_t seed = 1) {
  auto picture = host.NewPicture(MakeStorage(width, height, layout));
  FillPicture(*picture, seed);
  return picture;
}

// An image in memory, filled with random bytes.
inline Owned<standalone::Object> NewImage(PluginHost &host, int32_t width, int32_t height, int32_t format,
                                          uint32_t seed = 1) {
  auto image = host.New("PictureZVK");
  zvk::image::ImageConstructor(image, width, height, format);
  zvk::image::ImageClassData *record = zvk::image::RecordOf(image);
  std::mt19937 random(seed);
  for (int64_t i = 0; record->Valid && i < record->TotalSize; ++i) record->Buffer[i] = RandomByte(random);
  return image;
}

inline std::vector<uint8_t> StorageOf(const zvk::image::ImageClassData &record) {
  return {record.Buffer, record.Buffer + record.TotalSize};
}

// The address of a sample.
inline uint8_t *SampleAt(zvk::image::ImageClassData &record, int32_t x, int32_t y, int32_t offset) {
  return record.GetRow(&record, y) + static_cast<ptrdiff_t>(x) * record.PixelSize + offset;
}

// Counts every request for a yield: the clock moves whenever it is read, so none comes too early.
inline void YieldAlways(PluginHost &host, REALobject image) {
  static uint32_t ticks;
  ticks = 1000;
  host->SetEntry(
      "TickCount", +[]() -> uint32_t { return ticks += 10; });
  zvk::image::RecordOf(image)->Yield.YieldTicks = 1;
}

inline int64_t Yields(PluginHost &host) { return host->Calls("REALYieldToRB"); }

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
