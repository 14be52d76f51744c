#include "pictures/gworld_export.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "host/host_services.h"
#include "host/resources.h"
#include "pixels/pixel_watch.h"
#include "pixels/row_walker.h"

namespace zvk::pictures {

namespace {

constexpr int16_t kGrayColourTable = 40;  // the system's number of it

// Where the other plug-in's object keeps the world, which is an address; behind it, that it has one.
constexpr size_t kWorldInObject = 24;

bool CanBeCopied(const ImageClassData &image) { return image.BitsPerComponent != 16 && IsUsable(image); }

// A new world with its pixels locked, and the object that is to own it. Unless both are there, all is given back.
class GWorld {
 public:
  GWorld(const ImageClassData &image, int16_t depth, void *colourTable)
      : bounds_{0, 0, static_cast<int16_t>(image.Height), static_cast<int16_t>(image.Width)} {
    if (NewGWorld(&world_, depth, &bounds_, colourTable, nullptr, 0) != 0) world_ = nullptr;
    if (world_ == nullptr) return;
    object_ = ObjectReference(REALnewInstance("GWorldZVK"));
    if (!object_) return;
    void *pixMap = GetGWorldPixMap(world_);
    if (pixMap == nullptr || !LockPixels(pixMap) || !GetPixRowBytes.Resolves()) return;
    rowBytes_ = GetPixRowBytes(pixMap);
    pixels_ = static_cast<uint8_t *>(GetPixBaseAddr(pixMap));
  }
  GWorld(const GWorld &) = delete;
  GWorld &operator=(const GWorld &) = delete;
  ~GWorld() {
    if (world_ != nullptr) DisposeGWorld(world_);
  }

  explicit operator bool() const { return pixels_ != nullptr; }

  // Rows of the world; not those of the image where 16 bits were too few for them.
  int32_t Height() const { return bounds_.bottom; }
  int32_t RowBytes() const { return rowBytes_; }
  uint8_t *Row(int32_t y) const { return pixels_ + ptrdiff_t{y} * rowBytes_; }

  // Hands the world to the object, and the object to the caller.
  REALobject Release() {
    uint8_t *object = reinterpret_cast<uint8_t *>(object_.Get());
    std::memcpy(object + kWorldInObject, &world_, sizeof world_);
    object[kWorldInObject + sizeof world_] = 1;
    world_ = nullptr;
    return object_.Release();
  }

 private:
  const Rect bounds_;
  void *world_ = nullptr;
  ObjectReference object_;
  int32_t rowBytes_ = 0;
  uint8_t *pixels_ = nullptr;
};

// Calls write(source, dest) for each pixel; a row that cannot be had is left as it is. `destSize` is a pixel's bytes in
// the world, and its row bytes say how many columns there is room for, whatever became of the width in 16 bits. A world
// that is not as high as the image gets no row.
template <class Write>
REALobject Fill(GWorld &world, ImageClassData &image, int32_t destSize, Write write) {
  const int32_t columns = std::min(image.Width, world.RowBytes() / destSize);
  const int32_t rows = world.Height() == image.Height ? image.Height : 0;
  ForEachRow(image, rows, [&](const uint8_t *source, int32_t y) {
    uint8_t *dest = world.Row(y);
    for (int32_t x = 0; x < columns; ++x) {
      write(source, dest);
      source += image.PixelSize;
      dest += destSize;
    }
  });
  return world.Release();
}

REALobject CopyGWorldRGB(ImageClassData &image) {
  const bool hasAlpha = image.HasAlpha;
  GWorld world(image, hasAlpha ? 32 : 24, nullptr);
  if (!world) return nullptr;
  const ptrdiff_t red = image.RedOffset, green = image.GreenOffset, blue = image.BlueOffset;
  const auto writeColours = [=](const uint8_t *source, uint8_t *dest) {
    dest[0] = source[red];
    dest[1] = source[green];
    dest[2] = source[blue];
  };
  // A world of depth 24 whose rows have room for it is filled with pixels of 32 bits.
  if (!hasAlpha && world.RowBytes() < 4 * image.Width) return Fill(world, image, 3, writeColours);
  return Fill(world, image, 4, [=, alpha = ptrdiff_t{image.AlphaOffset}](const uint8_t *source, uint8_t *dest) {
    dest[0] = hasAlpha ? source[alpha] : 255;
    writeColours(source, dest + 1);
  });
}

}  // namespace

REALobject CopyGWorldG(ImageClassData &image) {
  GWorld world(image, 8, GetCTable(kGrayColourTable));
  if (!world) return nullptr;
  return Fill(world, image, 1,
              [gray = ptrdiff_t{image.GrayOffset}](const uint8_t *source, uint8_t *dest) { *dest = source[gray]; });
}

REALobject CopyGWorld(REALobject instance) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !CanBeCopied(*image)) return nullptr;
  const PixelWatch watched(*image);
  YieldOn(*image);
  // Other code of the host may have closed the image, or one that it shows, or constructed it anew.
  if (!CanBeCopied(*image) || !watched.HasStorage()) return nullptr;
  if (image->IsGray) return CopyGWorldG(*image);
  return image->IsRGB ? CopyGWorldRGB(*image) : nullptr;
}

}  // namespace zvk::pictures
