// Image files by way of the GD library: PNG, JPEG, GIF, WebP, TIFF and BMP into true-colour images and back.
//
//   LoadedImage photo = LoadImageFile("photo.jpg");
//   SaveImageFile(photo.image.get(), "photo.webp", {.quality = 80});
#pragma once

#include <gd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "standalone/files/file_error.h"

namespace standalone {

struct DestroyGdImage {
  void operator()(gdImagePtr image) const { gdImageDestroy(image); }
};
using OwnedGdImage = std::unique_ptr<gdImage, DestroyGdImage>;

struct LoadedImage {
  OwnedGdImage
      image;  // true colour: each pixel is blue, green, red, alpha from the low byte; alpha 0 is opaque, 127 clear
  std::string_view format;  // "PNG", "JPEG", "GIF", "WebP", "TIFF" or "BMP"
  bool hasTransparency;     // some pixel is not opaque
};

// What becomes of the alpha of the pixels in a saved file: dropped (all of them opaque, no alpha plane), or kept as far
// as the format can (PNG, WebP and TIFF keep it whole, GIF as clear or opaque, JPEG and BMP not at all).
enum class AlphaPlane : uint8_t { Drop, Keep };

struct SaveOptions {
  AlphaPlane alpha = AlphaPlane::Drop;
  int quality = -1;  // 1 to 100, for JPEG and WebP; -1: JPEG 90, WebP without loss
};

// Reads a file, by its content and whatever its name. Palette images and colour keys are turned into true colour with
// alpha; of an animation the first image is taken. Pixels are as they are stored, whatever their orientation
// (standalone/files/orientation.h). Throws ImageFileError.
LoadedImage LoadImageFile(const std::string &path);

// Writes the true-colour image in the format that the path's extension names. The file appears whole or not at all: it
// is written beside the target, then renamed. GIF keeps up to 256 colours exactly, more are reduced. Throws
// ImageFileError.
void SaveImageFile(gdImagePtr image, const std::string &path, const SaveOptions &options = {});

// True if the path's extension, in any case, is one that can be saved.
bool HasKnownImageExtension(const std::string &path);

// True if the path's extension is one of a format that keeps alpha, if not with all its bits: PNG, WebP and TIFF.
bool HoldsAlpha(const std::string &path);

// The extensions that can be saved, as a list for people: "png, jpg, jpeg, gif, webp, tif, tiff, bmp".
std::string KnownImageExtensions();

}  // namespace standalone
