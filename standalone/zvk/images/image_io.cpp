#include "standalone/zvk/images/image_io.h"

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "standalone/gd/gd_picture.h"
#include "standalone/rows/row_reader.h"
#include "standalone/rows/row_writer.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {

namespace {

constexpr size_t kPixelBytes = 4;

// --- pixels of pictures, which are images of the GD library, and bytes of red, green, blue and alpha ---

int *PixelsOf(Picture &picture, int32_t y) { return reinterpret_cast<int *>(picture.Storage().Row(y)); }

void PutRow(std::span<const uint8_t> bytes, int *pixels, int *mask) {
  for (size_t i = 0; i < bytes.size(); i += kPixelBytes) {
    *pixels++ = gdTrueColor(bytes[i], bytes[i + 1], bytes[i + 2]);
    *mask++ = gdTrueColor(bytes[i + 3], bytes[i + 3], bytes[i + 3]);
  }
}

void GetRow(const int *pixels, const int *mask, std::span<uint8_t> bytes) {
  for (size_t i = 0; i < bytes.size(); i += kPixelBytes) {
    const int pixel = *pixels++;
    bytes[i] = static_cast<uint8_t>(gdTrueColorGetRed(pixel));
    bytes[i + 1] = static_cast<uint8_t>(gdTrueColorGetGreen(pixel));
    bytes[i + 2] = static_cast<uint8_t>(gdTrueColorGetBlue(pixel));
    bytes[i + 3] = static_cast<uint8_t>(gdTrueColorGetRed(*mask++));
  }
}

// Calls visit(y, bytes) for each row of a picture with a mask. The bytes are the visitor's to change.
template <class Visitor>
void ForEachRow(Picture &picture, Visitor visit) {
  std::vector<uint8_t> bytes(kPixelBytes * static_cast<size_t>(picture.Width()));
  for (int32_t y = 0; y < picture.Height(); ++y) {
    GetRow(PixelsOf(picture, y), PixelsOf(*picture.Mask(), y), bytes);
    visit(y, bytes);
  }
}

bool IsOpaque(Picture &picture) {
  if (picture.Mask() == nullptr) return true;
  for (int32_t y = 0; y < picture.Height(); ++y) {
    const int *const mask = PixelsOf(*picture.Mask(), y);
    if (!std::all_of(mask, mask + picture.Width(), [](int pixel) { return gdTrueColorGetRed(pixel) == kOpaque; })) {
      return false;
    }
  }
  return true;
}

// The picture is opaque then, and without a mask.
void LayOnBackground(Picture &picture, uint32_t background) {
  ForEachRow(picture, [&](int32_t y, std::span<uint8_t> bytes) {
    standalone::LayOnBackground(bytes, background, bytes);
    int *const pixels = PixelsOf(picture, y);
    for (int32_t x = 0; x < picture.Width(); ++x) {
      const uint8_t *const pixel = bytes.data() + ptrdiff_t{3} * x;
      pixels[x] = gdTrueColor(pixel[0], pixel[1], pixel[2]);
    }
  });
  picture.SetMask({});
}

// --- loading ---

// A picture read row by row, with a mask if it has transparent pixels; empty if the file is none with alpha, or cannot
// be read so (in one way or none, as whoever reads it whole will tell).
Owned<Picture> LoadRows(const std::string &path) {
  std::unique_ptr<RowReader> reader;
  try {
    reader = OpenRows(path, Interlaced::HoldWhole);
  } catch (const ImageFileError &) {
    return {};
  }
  if (!reader->Header().hasAlpha) return {};
  reader->KeepAlpha();
  auto picture = Owned<Picture>::Adopt(Picture::Make(reader->Width(), reader->Height()));
  auto mask = Owned<Picture>::Adopt(Picture::Make(reader->Width(), reader->Height()));
  std::vector<uint8_t> bytes(kPixelBytes * static_cast<size_t>(reader->Width()));
  for (int32_t y = 0; y < reader->Height(); ++y) {
    reader->ReadRow(bytes);
    PutRow(bytes, PixelsOf(*picture, y), PixelsOf(*mask, y));
  }
  if (reader->HasSeenTransparency()) picture->SetMask(std::move(mask));
  return picture;
}

// With a mask, white where it is opaque, if some of it is not.
Owned<Picture> LoadMaskedPicture(const std::string &path, Orient orient) {
  Owned<Picture> picture = LoadRows(path);
  return picture ? Turned(std::move(picture), TurnOf(path, orient)) : LoadPicture(path, orient).picture;
}

// The alpha of the image is that of the mask, or 255.
Value ImageWithAlpha(const PluginSession &session, const Owned<Picture> &picture) {
  const Value format = session.Images().Constant("ImageFormatRGBA");
  Value image = session.Images().New({picture->Width(), picture->Height(), format});
  Picture *const mask = picture->Mask();
  const int32_t references = mask != nullptr ? mask->References() : 0;
  image.Call("DrawMaskedPictureRGB", {picture});
  // The drawing leaves a reference to the mask behind, which would keep it for good.
  if (mask != nullptr && mask->References() > references) mask->Unlock();
  return image;
}

// --- saving ---

// The image as a picture, with a mask if it has alpha to be kept and is not opaque.
Owned<Picture> PictureOf(const Value &image, const std::string &path, AlphaPlane alpha) {
  const Size size = SizeOf(image);
  if (std::max(size.width, size.height) > kLargestPictureSide) {
    throw std::runtime_error(path + ": " + Text(size) + " pixels are too many; a picture has at most " +
                             std::to_string(kLargestPictureSide) + " pixels each way");
  }
  const bool hasMask = alpha == AlphaPlane::Keep && HasAlpha(image);
  const Value result = image.Call(hasMask ? "CopyPictureWithMask" : "CopyPicture");
  if (result.IsNil()) throw std::bad_alloc();
  auto picture = Owned<Picture>::Share(result.As<Picture>());
  if (hasMask && picture->Mask() == nullptr) throw std::bad_alloc();
  if (IsOpaque(*picture)) picture->SetMask({});
  return picture;
}

void SaveRows(Picture &picture, const std::string &path) {
  const std::unique_ptr<RowWriter> writer = CreateRows(path, picture.Width(), picture.Height(), true);
  ForEachRow(picture, [&](int32_t, std::span<const uint8_t> bytes) { writer->WriteRow(bytes); });
  writer->Finish();
}

}  // namespace

void LayOnBackground(std::span<const uint8_t> pixels, uint32_t background, std::span<uint8_t> row) {
  const uint32_t under[] = {background >> 16 & 255, background >> 8 & 255, background & 255};
  const uint8_t *from = pixels.data();
  uint8_t *to = row.data();
  for (size_t i = 0; i < pixels.size(); i += kPixelBytes, from += kPixelBytes) {
    const uint32_t alpha = from[3];
    for (size_t channel = 0; channel < 3; ++channel) {
      *to++ = static_cast<uint8_t>((from[channel] * alpha + under[channel] * (255 - alpha)) / 255);
    }
  }
}

void NoteLaidOnBackground(const std::string &path, uint32_t background) {
  PrintMessage(path + ": has transparent pixels, which are laid on " + ColourText(background));
}

void NoteNoTransparency(const std::string &path, uint32_t background) {
  PrintMessage(path + ": cannot hold transparency; transparent pixels are laid on " + ColourText(background));
}

Value LoadImage(const PluginSession &session, const std::string &path, Orient orient) {
  Owned<Picture> picture = LoadMaskedPicture(path, orient);
  if (picture->Mask() != nullptr) return ImageWithAlpha(session, picture);
  return session.Images().New({std::move(picture)});
}

Value LoadImageWithAlpha(const PluginSession &session, const std::string &path, Orient orient) {
  return ImageWithAlpha(session, LoadMaskedPicture(path, orient));
}

Value LoadOpaqueImage(const PluginSession &session, const std::string &path, uint32_t background, Orient orient) {
  Owned<Picture> picture = LoadMaskedPicture(path, orient);
  if (picture->Mask() != nullptr) {
    NoteLaidOnBackground(path, background);
    LayOnBackground(*picture, background);
  }
  return session.Images().New({std::move(picture)});
}

void SaveImage(const Value &image, const std::string &path, uint32_t background, AlphaPlane alpha) {
  const Owned<Picture> picture = PictureOf(image, path, alpha);
  if (picture->Mask() != nullptr && HasRowAlpha(path)) {
    SaveRows(*picture, path);
    return;
  }
  if (picture->Mask() != nullptr && !HoldsAlpha(path)) {
    NoteNoTransparency(path, background);
    LayOnBackground(*picture, background);
  }
  SavePicture(*picture, path, {.alpha = AlphaPlane::Keep});
}

Size SizeOf(const Value &image) { return {image.Get("Width").AsInteger(), image.Get("Height").AsInteger()}; }

bool HasAlpha(const Value &image) { return image.Get("HasAlpha").AsBoolean(); }

}  // namespace standalone
