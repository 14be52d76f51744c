#include "pictures/picture_editor.h"

#include <algorithm>
#include <cstring>

#include "host/host_services.h"
#include "host/resources.h"

namespace zvk::pictures {

bool IsDesktop = false;
bool IsConsole = false;

void ClassifyHost() {
  if (IsDesktop || IsConsole) return;
  const bool application = REALGetClassRef("Application") != nullptr;
  const bool webApplication = REALGetClassRef("WebApplication") != nullptr;
  const bool consoleApplication = REALGetClassRef("ConsoleApplication") != nullptr;
  if (application) {
    IsDesktop = true;
  } else if (webApplication || consoleApplication) {
    IsConsole = true;
  }
}

bool LockDescription(REALobject picture, REALpictureDescription *description, int32_t wantedType) {
  if (REALLockPictureDescription(picture, description, wantedType)) return true;
  if (rbversion < 2012.0) REALUnlockPictureDescription(picture);
  return false;
}

PictureSize SizeOf(REALobject picture) {
  const auto read = [picture](const char *property) {
    int32_t value = 0;
    return picture != nullptr && REALGetPropValueInt32(picture, property, &value) ? value : 0;
  };
  return {read("Width"), read("Height")};
}

// --- drawing pictures into pictures ---

namespace {

using DrawPictureMethod = void (*)(REALobject graphics, REALobject image, int32_t x, int32_t y, int32_t width,
                                   int32_t height, int32_t sourceX, int32_t sourceY, int32_t sourceWidth,
                                   int32_t sourceHeight);

bool IsOfType(const REALpictureDescription &description, int32_t type) {
  return description.type == static_cast<uint32_t>(type) && description.data != nullptr;
}

// The GD image that OwnCopy may work on, or nil.
const GDImage *CopyableImage(const REALpictureDescription &description) {
  if (!IsOfType(description, kDescriptionGDImage)) return nullptr;
  const auto *image = static_cast<const GDImage *>(description.data);
  return image->paletteRows == nullptr && image->trueColorRows != nullptr ? image : nullptr;
}

// Copies no more than the images have, whatever size the caller names.
bool CopyRows(const REALpictureDescription &dest, const REALpictureDescription &source, int32_t width, int32_t height) {
  const GDImage *to = CopyableImage(dest);
  const GDImage *from = CopyableImage(source);
  if (to == nullptr || from == nullptr || to->width != from->width || to->height != from->height) return false;
  const size_t bytes = 4 * static_cast<size_t>(std::max(std::min(width, from->width), 0));
  const int32_t rows = std::min(height, from->height);
  for (int32_t i = 0; i < rows; ++i) std::memcpy(to->trueColorRows[i], from->trueColorRows[i], bytes);
  return true;
}

// Draws the source at its own size through the graphics of dest, or copies its pixels on hosts whose graphics have no
// such method.
void DrawInto(REALobject dest, REALobject graphics, REALobject source, int32_t width, int32_t height) {
  const auto drawPicture = reinterpret_cast<DrawPictureMethod>(REALLoadObjectMethod(
      graphics,
      "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, sx as Integer = 0, sy as "
      "Integer = 0, sw as Integer = -10000, sh as Integer = -10000)"));
  if (drawPicture != nullptr) {
    drawPicture(graphics, source, 0, 0, width, height, 0, 0, width, height);
    return;
  }
  // Old hosts are still asked for their own drawing function, though nothing is done with it.
  if (rbversion < 2012.0) HostFunction("RuntimeGraphicsDrawPicture");
  OwnCopy(dest, source, 0, 0, width, height, 0, 0, width, height);
}

// A new picture with the given one drawn into it, for a picture that has no bitmap of its own; nil if there is none.
// On a host without graphics it stays as the host made it.
ObjectReference DrawnCopy(REALobject picture) {
  const auto [width, height] = SizeOf(picture);
  if (width < 1 || height < 1) return {};
  ObjectReference copy(REALNewPicture(width, height, 32));
  if (!copy) return {};
  const ObjectReference graphics(REALGetPictureGraphics(copy.Get()));
  if (graphics) DrawInto(copy.Get(), graphics.Get(), picture, width, height);
  return copy;
}

}  // namespace

void AddPictureMask(REALobject picture, REALobject maskPicture, int32_t width, int32_t height) {
  if (picture == nullptr || maskPicture == nullptr || width < 1 || height < 1) return;
  const ObjectReference mask(REALGetPictureMask(picture, 1));
  if (!mask) return;
  const ObjectReference graphics(REALGetPictureGraphics(mask.Get()));
  if (graphics) {
    DrawInto(mask.Get(), graphics.Get(), maskPicture, width, height);
  } else {
    OwnCopy(mask.Get(), maskPicture, 0, 0, width, height, 0, 0, width, height);
  }
}

bool OwnCopy(REALobject dest, REALobject source, int32_t /*x*/, int32_t /*y*/, int32_t width, int32_t height,
             int32_t /*sourceX*/, int32_t /*sourceY*/, int32_t sourceWidth, int32_t sourceHeight) {
  if (dest == nullptr || source == nullptr || sourceWidth != width || sourceHeight != height) return false;
  REALpictureDescription from{};
  if (!LockDescription(source, &from, kDescriptionGDImage)) return false;
  bool copied = false;
  REALpictureDescription to{};
  if (LockDescription(dest, &to, kDescriptionGDImage)) {
    copied = CopyRows(to, from, width, height);
    REALUnlockPictureDescription(dest);
  }
  REALUnlockPictureDescription(source);
  REALPictureClearCache(dest);
  return copied;
}

// --- the editor ---

PictureEditor::~PictureEditor() { ReleasePicture(); }

void PictureEditor::ReleasePicture() {
  Reserved = 0;
  if (PixMap != nullptr) {
    UnlockPixels(PixMap);
    PixMap = nullptr;
  }
  if (DescriptionLocked) {
    if (Picture != nullptr) REALUnlockPictureDescription(Picture);
    DescriptionLocked = false;
  }
  if (Picture == nullptr) return;
  if (ForWriting) REALPictureClearCache(Picture);
  REALUnlockObject(Picture);
  Picture = nullptr;
}

int32_t PictureEditor::RowPixels() const {
  return Layout == kLayoutGD ? static_cast<const GDImage *>(Description.data)->width : RowBytes / PixelBytes;
}

bool PictureEditor::GetPictureEditor(REALobject picture, int8_t forReading, int8_t forWriting) {
  return Attach(picture, forReading != 0, forWriting != 0, true);
}

// mayCopy: a picture without a bitmap may be replaced by a drawn copy. A copy is not copied again, so a host that can
// describe none of its pictures is not asked for new ones without end.
bool PictureEditor::Attach(REALobject picture, bool forReading, bool forWriting, bool mayCopy) {
  ReleasePicture();
  if (picture == nullptr) return false;
  ForReading = forReading;
  ForWriting = forWriting;
  ClassifyHost();
  uint8_t hasAlpha = false;
  HasAlpha = REALGetPropValueUInt8(picture, "HasAlphaChannel", &hasAlpha) && hasAlpha;

  if (!IsConsole) {
    if (LockDescription(picture, &Description, kDescriptionBitmapContext)) return AttachBitmap(picture);
    if (!HasAlpha && ForReading && !ForWriting && mayCopy) {
      const ObjectReference copy = DrawnCopy(picture);
      if (copy) return Attach(copy.Get(), forReading, false, false);
    }
  }
  if (IsDesktop || !LockDescription(picture, &Description, kDescriptionGDImage)) return false;
  return AttachGDImage(picture);
}

// Takes over the description lock and a reference, with the cursor at the first pixel.
bool PictureEditor::HoldLocked(REALobject picture) {
  REALLockObject(picture);
  Picture = picture;
  DescriptionLocked = true;
  PixelBytes = 4;
  Column = 0;
  Row = 0;
  RowAddress = BaseAddress;
  return true;
}

bool PictureEditor::AttachBitmap(REALobject picture) {
  IsDesktop = true;
  if (!IsOfType(Description, kDescriptionBitmapContext)) {
    REALUnlockPictureDescription(picture);
    return false;
  }
  void *context = Description.data;
  auto *pixels = static_cast<uint8_t *>(CGBitmapContextGetData(context));
  const size_t bitsPerPixel = CGBitmapContextGetBitsPerPixel(context);
  const auto width = static_cast<int32_t>(CGBitmapContextGetWidth(context));
  const auto height = static_cast<int32_t>(CGBitmapContextGetHeight(context));
  const auto rowBytes = static_cast<int32_t>(CGBitmapContextGetBytesPerRow(context));
  const auto alphaInfo = static_cast<int32_t>(CGBitmapContextGetAlphaInfo(context) & 7);
  // Of pictures with alpha only the premultiplied forms are taken. A refused form keeps its description lock.
  if (alphaInfo < 1 || alphaInfo > (HasAlpha ? 2 : 6)) return false;
  Layout = alphaInfo;
  if (bitsPerPixel != 32 || pixels == nullptr) {
    REALUnlockPictureDescription(picture);
    return false;
  }
  AlphaRoute = HasAlpha;
  RowBytes = rowBytes;
  Width = width;
  Height = height;
  BaseAddress = pixels;
  return HoldLocked(picture);
}

bool PictureEditor::AttachGDImage(REALobject picture) {
  IsConsole = true;
  const auto *image = IsOfType(Description, kDescriptionGDImage) ? static_cast<GDImage *>(Description.data) : nullptr;
  if (image == nullptr || image->paletteRows != nullptr || image->trueColor == 0 || image->trueColorRows == nullptr) {
    REALUnlockPictureDescription(picture);
    return false;
  }
  AlphaRoute = false;
  Layout = kLayoutGD;
  RowBytes = 4 * Description.width;
  Width = Description.width;
  Height = Description.height;
  RowPointers = image->trueColorRows;
  BaseAddress = RowPointers[0];
  return HoldLocked(picture);
}

REALobject PictureEditor::RenderPictureWriter() {
  REALobject result = nullptr;
  if (Picture != nullptr) {
    // The cache is cleared here and once more on release.
    REALLockObject(Picture);
    REALPictureClearCache(Picture);
    result = Picture;
  } else if (Description.pixelBuffer != nullptr) {
    result = REALBuildPictureFromBuffer(Width, Height, 1, Description.pixelBuffer, RowBytes);
  }
  ReleasePicture();
  return result;
}

}  // namespace zvk::pictures
