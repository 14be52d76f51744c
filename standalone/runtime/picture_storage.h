// Where the pixels of a host picture are: the forms that hosts have, behind one interface.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "abi/host_layouts.h"
#include "standalone/runtime/bitmap_layout.h"
#include "standalone/runtime/bytes.h"

namespace standalone {

// One pixel, as its samples stand in the storage: nothing is multiplied or divided by alpha. 255 is opaque.
struct Pixel {
  uint8_t red = 0;
  uint8_t green = 0;
  uint8_t blue = 0;
  uint8_t alpha = 255;

  bool operator==(const Pixel &) const = default;
};

// Pixels of a picture. Positions are 0 to Width() - 1 and 0 to Height() - 1.
class PictureStorage {
 public:
  PictureStorage() = default;
  PictureStorage(const PictureStorage &) = delete;
  PictureStorage &operator=(const PictureStorage &) = delete;
  virtual ~PictureStorage() = default;

  virtual int32_t Width() const = 0;
  virtual int32_t Height() const = 0;
  // What the picture answers for "HasAlphaChannel".
  virtual bool HasAlphaChannel() const { return false; }

  virtual Pixel Get(int32_t x, int32_t y) const = 0;
  virtual void Set(int32_t x, int32_t y, Pixel pixel) = 0;

  // Fills the (zeroed) description for a lock that wants the form kDescriptionBitmapContext, kDescriptionGDImage or
  // (0) any. False if the pixels are not there in that form.
  virtual bool Describe(int32_t wantedType, REALpictureDescription *description) = 0;

  // The bytes of a row at 4 bytes a pixel, top row first; nil in a form without such rows.
  virtual uint8_t *Row(int32_t) { return nullptr; }
};

// A console host's form: a true-colour image in the GD record, black and opaque at first. Each row is memory of its
// own. The high byte of a pixel is GD's alpha, 0 opaque to 127 clear.
class GDStorage : public PictureStorage {
 public:
  GDStorage(int32_t width, int32_t height, bool fenced = false);

  GDImage &Image() { return image_; }

  int32_t Width() const override { return image_.width; }
  int32_t Height() const override { return image_.height; }
  Pixel Get(int32_t x, int32_t y) const override;
  void Set(int32_t x, int32_t y, Pixel pixel) override;
  bool Describe(int32_t wantedType, REALpictureDescription *description) override;
  uint8_t *Row(int32_t y) override { return image_.trueColorRows[y]; }

 private:
  GDImage image_ = {};
  std::vector<std::unique_ptr<Bytes>> rows_;
  std::vector<uint8_t *> table_;
};

// A palette image in the GD record: a byte a pixel, up to 256 colours. A colour that no longer fits becomes the
// nearest.
class PaletteStorage : public PictureStorage {
 public:
  PaletteStorage(int32_t width, int32_t height);

  GDImage &Image() { return image_; }

  int32_t Width() const override { return image_.width; }
  int32_t Height() const override { return image_.height; }
  Pixel Get(int32_t x, int32_t y) const override;
  void Set(int32_t x, int32_t y, Pixel pixel) override;
  bool Describe(int32_t wantedType, REALpictureDescription *description) override;

 private:
  uint8_t ColourIndex(Pixel pixel);

  GDImage image_ = {};
  std::vector<uint8_t> pixels_;
  std::vector<uint8_t *> table_;
};

// What a plug-in's context address points to; its functions read nothing else.
struct BitmapContext {
  void *data;
  size_t width;
  size_t height;
  size_t bitsPerPixel;
  size_t bytesPerRow;
  uint32_t alphaInfo;
};

// A desktop host's form: a bitmap context, white and opaque at first. Pixels can be read and set one by one where they
// have 32 bits; elsewhere they read as black and stay as they are.
class BitmapStorage : public PictureStorage {
 public:
  BitmapStorage(int32_t width, int32_t height, BitmapLayout layout = {}, bool fenced = false);

  BitmapContext &Context() { return context_; }

  int32_t Width() const override { return static_cast<int32_t>(context_.width); }
  int32_t Height() const override { return static_cast<int32_t>(context_.height); }
  bool HasAlphaChannel() const override { return hasAlphaChannel_; }
  Pixel Get(int32_t x, int32_t y) const override;
  void Set(int32_t x, int32_t y, Pixel pixel) override;
  bool Describe(int32_t wantedType, REALpictureDescription *description) override;
  uint8_t *Row(int32_t y) override;

 private:
  uint8_t *PixelAddress(int32_t x, int32_t y) const;

  std::unique_ptr<Bytes> bytes_;
  BitmapContext context_;
  bool hasAlphaChannel_;
};

// A picture with no bitmap of its own, as one that is kept as drawing orders: no description, readable by drawing only.
class DrawnStorage : public PictureStorage {
 public:
  DrawnStorage(int32_t width, int32_t height);

  int32_t Width() const override { return width_; }
  int32_t Height() const override { return height_; }
  Pixel Get(int32_t x, int32_t y) const override;
  void Set(int32_t x, int32_t y, Pixel pixel) override;
  bool Describe(int32_t, REALpictureDescription *) override { return false; }

 private:
  int32_t width_;
  int32_t height_;
  std::vector<Pixel> pixels_;
};

}  // namespace standalone
