// Host pictures: pixels in some form of storage, a mask, and locks of their description.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "standalone/runtime/objects.h"
#include "standalone/runtime/picture_storage.h"

namespace standalone {

class Picture : public Object {
 public:
  // A picture over the storage given.
  static Picture *Make(std::unique_ptr<PictureStorage> storage);
  // A picture as "newPicture" makes it: in the form of the running host's kind. Nil for sizes below 1.
  static Picture *Make(int32_t width, int32_t height);

  PictureStorage &Storage() { return *storage_; }
  int32_t Width() const { return storage_->Width(); }
  int32_t Height() const { return storage_->Height(); }
  Pixel GetPixel(int32_t x, int32_t y) const { return storage_->Get(x, y); }
  void SetPixel(int32_t x, int32_t y, Pixel pixel) { storage_->Set(x, y, pixel); }

  // The mask, or nil. GetMask makes one, white and of the picture's size and kind, if there is none.
  Picture *Mask() const { return mask_.Get(); }
  Picture &GetMask();
  void SetMask(Owned<Picture> mask) { mask_ = std::move(mask); }

  // A description lock. Fails where the storage has no such form; whether a failed one must be given back all the same
  // is `countsFailure`.
  bool LockDescription(int32_t wantedType, REALpictureDescription *description, bool countsFailure);
  void UnlockDescription();
  // Locks held now, and since its making: locks taken, and orders to forget cached renderings.
  int32_t LocksHeld() const { return locksHeld_; }
  int32_t LocksTaken() const { return locksTaken_; }
  int32_t CacheClears() const { return cacheClears_; }
  void ClearCache() { ++cacheClears_; }

  // "Width", "Height"; "HasAlphaChannel".
  bool GetInteger(std::string_view name, int32_t *value) override;
  bool GetBoolean(std::string_view name, bool *value) override;

 private:
  Picture(const Class &type, std::unique_ptr<PictureStorage> storage) : Object(type), storage_(std::move(storage)) {}

  std::unique_ptr<PictureStorage> storage_;
  Owned<Picture> mask_;
  int32_t locksHeld_ = 0;
  int32_t locksTaken_ = 0;
  int32_t cacheClears_ = 0;
};

// Description locks that were taken and not given back, those of pictures that have ended meanwhile among them.
int32_t DescriptionLocksHeld();

// What draws into a picture; holds it.
class Graphics : public Object {
 public:
  static Graphics *Make(Picture &picture);

  Picture &Target() const { return *picture_; }

  // Copies the source rectangle of `image` over the target rectangle, opaque, scaled to the nearest pixel where the
  // sizes differ. A source width or height of -10000 is all of the image's. What lies outside either picture is left
  // out.
  void DrawPicture(const Picture &image, int32_t x, int32_t y, int32_t width, int32_t height, int32_t sourceX,
                   int32_t sourceY, int32_t sourceWidth, int32_t sourceHeight);

 private:
  Graphics(const Class &type, Picture &picture) : Object(type), picture_(Owned<Picture>::Share(&picture)) {}

  Owned<Picture> picture_;
};

}  // namespace standalone
