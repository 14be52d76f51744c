// Host pictures whose pixels are real images of the GD library: the record that a plug-in sees in a picture's
// description is the library's own image, so whatever either side draws, both have.
//
//   Host host;
//   UseGdPictures(host);                            // what a plug-in asks for is such a picture from now on
//   LoadedPicture photo = LoadPicture("photo.png");
//   SavePicture(*photo.picture, "copy.webp", {.alpha = AlphaPlane::Keep});
#pragma once

#include <gd.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "standalone/files/orientation.h"
#include "standalone/gd/image_file.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/picture.h"
#include "standalone/runtime/picture_storage.h"

namespace standalone {

// A console host's form of picture over an image of the GD library. The alpha of a pixel is told as 0 (clear) to 255
// (opaque) and kept as GD's 7 bits, of 0 (opaque) to 127 (clear).
class GdPictureStorage : public PictureStorage {
 public:
  // Takes over a true-colour image. Throws std::invalid_argument on a palette image or nil.
  explicit GdPictureStorage(OwnedGdImage image);
  // A black, opaque image; sizes are 1 or more. Throws std::bad_alloc.
  GdPictureStorage(int32_t width, int32_t height);

  gdImagePtr Image() const { return image_.get(); }

  int32_t Width() const override { return image_->sx; }
  int32_t Height() const override { return image_->sy; }
  Pixel Get(int32_t x, int32_t y) const override;
  void Set(int32_t x, int32_t y, Pixel pixel) override;
  bool Describe(int32_t wantedType, REALpictureDescription *description) override;
  uint8_t *Row(int32_t y) override;

 private:
  OwnedGdImage image_;
};

// Lets the host make its new pictures in this form.
void UseGdPictures(HostState &host);

struct LoadedPicture {
  Owned<Picture> picture;
  std::string_view format;  // as in LoadedImage
  bool hasTransparency;
};

// Reads an image file into a picture. Where some of it is not opaque, the picture gets a mask: white where the file is
// opaque, black where it is clear. Throws ImageFileError.
LoadedPicture LoadPicture(const std::string &path, Orient orient = Orient::Upright);

// The picture with its mask, turned; itself if there is nothing to turn. It is of the GD library, else
// std::invalid_argument is thrown. Throws std::bad_alloc.
Owned<Picture> Turned(Owned<Picture> picture, const Turn &turn);

// Writes a picture of any form into an image file. Where alpha is kept, it is that of the mask (its red) if the picture
// has one, else that of the pixels. Throws ImageFileError.
void SavePicture(Picture &picture, const std::string &path, const SaveOptions &options = {});

}  // namespace standalone
