// Pictures of the host in every storage form.
#pragma once

#include <cstdint>
#include <memory>

#include "standalone/runtime/picture_storage.h"
#include "tests/scenes/random.h"
#include "tests/support/plugin_host.h"

namespace scenes {

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

inline void FillPicture(standalone::Picture &picture, uint32_t seed) {
  Random random(seed);
  for (int32_t y = 0; y < picture.Height(); ++y) {
    FillNoise(picture.Storage().Row(y), static_cast<size_t>(4 * picture.Width()), random);
  }
}

inline standalone::Owned<standalone::Picture> NewFilledPicture(PluginHost &host, int32_t width, int32_t height,
                                                               int32_t layout, uint32_t seed = 1) {
  auto picture = host.NewPicture(MakeStorage(width, height, layout));
  FillPicture(*picture, seed);
  return picture;
}

}  // namespace scenes
