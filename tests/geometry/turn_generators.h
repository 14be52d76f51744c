// Random images for the properties of mirroring, turning and rotation: every format, storage and view.
#pragma once

#include <algorithm>
#include <cstdint>

#include "tests/geometry/turn_testing.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/views.h"

namespace turn_testing {

using scenes::AnyFormat;
using scenes::AnyKind;
using scenes::AnyOddView;
using scenes::CheckCases;
using scenes::Random;

// Now and then without channels that move; sixteen bits are refused, which tests tell by themselves.
inline int32_t AnyMovedFormat(Random &random) {
  const int32_t format = scenes::AnyLikelyFormat(random);
  return format == zvk::image::ImageFormatGray16 ? int32_t{zvk::image::ImageFormatG} : format;
}

// An image of noise, with gaps between its rows or without. No row is missing.
inline StoredImage AnyStored(Random &random, PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format,
                             bool gaps = true) {
  scenes::RowLayout layout = scenes::AnyRowLayout(random, kind, height);
  if (!gaps) layout.gap = 0;
  layout.wholeLastRow = false;
  layout.missingRow = -1;
  return scenes::NoisyImage(host, kind, width, height, format, layout, random.Bits());
}

// An image somewhere in the bytes of a block, over other images; its rows may overlap each other too.
inline Owned<Object> AnyImageOver(Random &random, PluginHost &host, const StoredImage &stored) {
  const int32_t format = AnyMovedFormat(random), pixelSize = PixelSizeOf(format);
  const auto size = static_cast<int32_t>(stored.All().size());
  const int32_t width = random.Between(1, std::max(1, std::min(12, size / pixelSize)));
  const int32_t distance = std::min(size, random.Between(0, width * pixelSize + 3));
  const int32_t lastRow = std::max(distance, width * pixelSize);
  const int32_t height = random.Between(1, distance == 0 ? 12 : std::min(12, (size - lastRow) / distance + 1));
  auto image = host.New("PictureZVK");
  zvk::image::ImageConstructorMemory(image, stored.Block(), width, height, format, distance);
  RecordOf(image)->Buffer += random.Between(0, size - (height - 1) * distance - lastRow);
  return image;
}

}  // namespace turn_testing
