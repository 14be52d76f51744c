#include <algorithm>

#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/names.h"
#include "standalone/runtime/picture.h"

namespace standalone {
namespace {

// Stands for all of the image's width or height.
constexpr int32_t kWholeSize = -10000;

}  // namespace

Graphics *Graphics::Make(Picture &picture) {
  return new Graphics(HostState::Current().Classes().Get("Graphics"), picture);
}

void Graphics::DrawPicture(const Picture &image, int32_t x, int32_t y, int32_t width, int32_t height, int32_t sourceX,
                           int32_t sourceY, int32_t sourceWidth, int32_t sourceHeight) {
  if (sourceWidth == kWholeSize) sourceWidth = image.Width();
  if (sourceHeight == kWholeSize) sourceHeight = image.Height();
  const auto last = [](int32_t start, int32_t size, int32_t limit) {
    return static_cast<int32_t>(std::min<int64_t>(int64_t{start} + size, limit));
  };
  const auto inside = [](int64_t position, int32_t limit) { return position >= 0 && position < limit; };
  for (int32_t row = std::max(y, 0); row < last(y, height, picture_->Height()); ++row) {
    const int64_t fromY = sourceY + (int64_t{row} - y) * sourceHeight / height;
    for (int32_t column = std::max(x, 0); column < last(x, width, picture_->Width()); ++column) {
      const int64_t fromX = sourceX + (int64_t{column} - x) * sourceWidth / width;
      if (!inside(fromX, image.Width()) || !inside(fromY, image.Height())) continue;
      Pixel pixel = image.GetPixel(static_cast<int32_t>(fromX), static_cast<int32_t>(fromY));
      pixel.alpha = 255;
      picture_->SetPixel(column, row, pixel);
    }
  }
}

namespace {

constexpr const char *kDrawPicture =
    "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, sx as Integer = 0, "
    "sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)";

void DrawPictureMethod(REALobject graphicsHandle, REALobject imageHandle, int32_t x, int32_t y, int32_t width,
                       int32_t height, int32_t sourceX, int32_t sourceY, int32_t sourceWidth, int32_t sourceHeight) {
  auto *const graphics = ObjectAs<Graphics>(graphicsHandle);
  const auto *const image = ObjectAs<Picture>(imageHandle);
  if (graphics == nullptr || image == nullptr) return;
  graphics->DrawPicture(*image, x, y, width, height, sourceX, sourceY, sourceWidth, sourceHeight);
}

// The function of a method that a plug-in has registered for the class or one above it.
void *FindMethod(const Class *type, const char *declaration) {
  for (; type != nullptr; type = type->Super()) {
    if (type->Definition() == nullptr) continue;
    for (const RegisteredMethod &method : type->Definition()->methods) {
      if (DeclarationsEqual(method.declaration, declaration)) return method.function;
    }
  }
  return nullptr;
}

void *LoadObjectMethod(REALobject handle, const char *declaration) {
  Object *const object = LiveObject(handle);
  if (object == nullptr || declaration == nullptr) return nullptr;
  if (dynamic_cast<Graphics *>(object) == nullptr) return FindMethod(&object->Type(), declaration);
  const HostState &host = HostState::Current();
  const bool draws = host.DrawsPictures() && !host.IsWithheld("DrawPicture");
  return draws && DeclarationsEqual(declaration, kDrawPicture) ? reinterpret_cast<void *>(DrawPictureMethod) : nullptr;
}

REALobject PictureGraphicsGetter(REALobject handle) {
  auto *const picture = ObjectAs<Picture>(handle);
  return picture == nullptr ? nullptr : Graphics::Make(*picture)->Handle();
}

}  // namespace

std::vector<Entry> GraphicsEntries() {
  return {MakeEntry<"pluginPictureGraphicsGetter", PictureGraphicsGetter>(),
          MakeEntry<"REALLoadObjectMethod", LoadObjectMethod>()};
}

}  // namespace standalone
