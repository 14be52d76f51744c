// Random images for the properties of mirroring, turning and rotation: every format, storage and view.
#pragma once

#include <rapidcheck.h>

#include <cstdint>
#include <vector>

#include "image/views.h"
#include "tests/geometry/turn_testing.h"

namespace turn_testing {

// A number from `least` to `most`, all alike from the first case on.
inline int32_t Any(int32_t least, int32_t most) {
  return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(least, most + 1));
}
inline bool OneIn(int32_t count) { return Any(1, count) == 1; }

// Now and then longer than the runs and blocks in which pixels are moved.
inline int32_t AnySide() { return OneIn(6) ? Any(1, 300) : Any(1, 20); }

inline int32_t AnyFamilyFormat() {
  return kFormats[static_cast<size_t>(Any(0, static_cast<int32_t>(kFormats.size()) - 1))];
}
// Now and then of no family.
inline int32_t AnyFormat() { return OneIn(20) ? Any(33, 40) : AnyFamilyFormat(); }

inline Kind AnyKind() { return OneIn(4) ? Kind::File : OneIn(6) ? Kind::Table : OneIn(3) ? Kind::Memory : Kind::Block; }

// A view of an image as chance has it, or the image itself. The first row and column are in it.
inline Owned<Object> AnyView(Owned<Object> image) {
  ImageClassData &record = *RecordOf(image);
  if (record.RowTable != nullptr) return image;
  const auto take = [&](REALobject view) {
    if (auto adopted = Adopt(view)) image = adopted;
  };
  if (OneIn(3)) {
    const int32_t x = Any(0, record.Width - 1), y = Any(0, record.Height - 1);
    take(zvk::image::ClipImage5(image, x, y, Any(1, record.Width), Any(1, record.Height)));
  }
  if (OneIn(3)) take(zvk::image::GetMirroredView(image));
  constexpr REALobject (*kChannelViews[])(REALobject) = {zvk::image::GreenChannel, zvk::image::AlphaChannel,
                                                         zvk::image::BlackChannel, zvk::image::RGBChannel,
                                                         zvk::image::CMYKChannel};
  if (OneIn(3)) take(kChannelViews[Any(0, 4)](image));
  ImageClassData &shown = *RecordOf(image);
  if (OneIn(6)) {
    for (int32_t ImageClassData::*offset : {&ImageClassData::RedOffset, &ImageClassData::GreenOffset,
                                            &ImageClassData::GrayOffset, &ImageClassData::AlphaOffset}) {
      if (OneIn(2)) shown.*offset = Any(0, shown.PixelSize - 1);
    }
  }
  return image;
}

// An image somewhere in the bytes of a block, over other images; its rows may overlap each other too.
inline Owned<Object> AnyImageOver(PluginHost &host, const Storage &storage) {
  const int32_t format = AnyFormat(), size = storage.block->Size(), pixelSize = PixelSizeOf(format);
  const int32_t width = Any(1, std::max(1, std::min(12, size / pixelSize)));
  const int32_t distance = std::min(size, Any(0, width * pixelSize + 3));
  const int32_t lastRow = std::max(distance, width * pixelSize);
  const int32_t height = Any(1, distance == 0 ? 12 : std::min(12, (size - lastRow) / distance + 1));
  auto image = host.New("PictureZVK");
  zvk::image::ImageConstructorMemory(image, storage.block, width, height, format, distance);
  RecordOf(image)->Buffer += Any(0, size - (height - 1) * distance - lastRow);
  return image;
}

}  // namespace turn_testing
