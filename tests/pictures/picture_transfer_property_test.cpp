// Random images, pictures and rectangles, in both directions, against plain loops over the host's own pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include "pictures/picture_export.h"
#include "pictures/picture_import.h"
#include "tests/pictures/picture_property_testing.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::HostKind;

// --- export ---

Pixel ColourOf(ImageClassData &record, int32_t x, int32_t y) {
  const auto sample = [&](int32_t offset) { return int32_t{*SampleAt(record, x, y, offset)}; };
  int32_t red, green, blue;
  if (record.IsGray) {
    // The high byte of a 16-bit sample is the second one on this machine.
    red = green = blue = sample(record.GrayOffset + (record.BitsPerComponent == 16 ? 1 : 0));
  } else if (record.IsRGB) {
    red = sample(record.RedOffset);
    green = sample(record.GreenOffset);
    blue = sample(record.BlueOffset);
  } else {
    const int32_t white = 255 - sample(record.BlackOffset);
    red = white - sample(record.CyanOffset) * white / 255;
    green = white - sample(record.MagentaOffset) * white / 255;
    blue = white - sample(record.YellowOffset) * white / 255;
  }
  return {static_cast<uint8_t>(red), static_cast<uint8_t>(green), static_cast<uint8_t>(blue)};
}

Pixel AlphaOf(ImageClassData &record, int32_t x, int32_t y) {
  const uint8_t alpha = *SampleAt(record, x, y, record.AlphaOffset);
  return {alpha, alpha, alpha};
}

// The positions of a caller's axis that lie in the image, counted one by one.
std::set<int64_t> Meant(int64_t position, int64_t size, int64_t limit) {
  if (size < 0) {
    position += size;
    size = -size;
  }
  std::set<int64_t> meant;
  for (int64_t i = 0; i < limit; ++i) {
    if (i >= position && i < position + size) meant.insert(i);
  }
  return meant;
}

void ExpectExport(ImageClassData &record, REALobject result, const std::set<int64_t> &columns,
                  const std::set<int64_t> &rows, Pixel (*expected)(ImageClassData &, int32_t, int32_t)) {
  auto picture = AdoptPicture(result);
  RC_ASSERT(static_cast<bool>(picture));
  RC_ASSERT(IsFree(*picture));
  RC_ASSERT(picture->Width() == static_cast<int32_t>(columns.size()));
  RC_ASSERT(picture->Height() == static_cast<int32_t>(rows.size()));
  int32_t y = 0;
  for (const int64_t row : rows) {
    int32_t x = 0;
    for (const int64_t column : columns) {
      RC_ASSERT(picture->GetPixel(x++, y) == expected(record, static_cast<int32_t>(column), static_cast<int32_t>(row)));
    }
    ++y;
  }
}

void CheckExport(Random &random, PluginHost &host, int32_t layout) {
  MakeNewPicturesOf(host, layout);
  const AnyImage image(random, host);
  ImageClassData &record = image.record();
  const AnyMove move(random);
  const int32_t x = move.destX, y = move.destY, width = move.width, height = move.height;
  const auto before = image.AllBytes();
  const auto columns = Meant(x, width, record.Width), rows = Meant(y, height, record.Height);
  const REALobject colours = rbCopyPicture(image.image, x, y, width, height);
  const REALobject mask = rbCopyMask(image.image, x, y, width, height);
  RC_ASSERT(image.AllBytes() == before);
  const bool expected = !columns.empty() && !rows.empty();
  if (colours != nullptr) {
    RC_ASSERT(expected && (record.IsGray || record.IsRGB || record.IsCMYK));
    ExpectExport(record, colours, columns, rows, ColourOf);
  } else {
    // Where a sum wraps the size may stay too large for any picture, though some pixels are meant.
    RC_ASSERT(!expected || !move.near || !(record.IsGray || record.IsRGB || record.IsCMYK));
  }
  if (mask != nullptr) {
    RC_ASSERT(expected && record.HasAlpha);
    ExpectExport(record, mask, columns, rows, AlphaOf);
  } else {
    RC_ASSERT(!expected || !move.near || !record.HasAlpha);
  }
}

TEST(ExportProperty, OnADesktopEveryImageIsCopiedAsThePlainLoopDoes) {
  PluginHost host({.kind = HostKind::Desktop, .fenced = true});
  CheckManyCases([&](Random &random) { CheckExport(random, host, random.Between(1, 6)); });
}

TEST(ExportProperty, OnAConsoleEveryImageIsCopiedAsThePlainLoopDoes) {
  PluginHost host({.fenced = true});
  CheckManyCases([&](Random &random) { CheckExport(random, host, kGD); });
}

// --- import ---

void CheckImport(Random &random, PluginHost &host, int32_t layout) {
  const AnyImage image(random, host);
  ImageClassData &record = image.record();
  auto picture = NewFilledPicture(host, random.Side(150), random.Between(1, 12), layout, random.Bits());
  const AnyMove move(random);
  const int32_t x = move.destX, y = move.destY, width = move.width, height = move.height;
  const int32_t sourceX = move.sourceX, sourceY = move.sourceY;
  // Mostly the family that the image has channels for.
  const int32_t family = random.Between(0, 9) == 0 ? random.Between(0, 3) : record.HasRed ? 0 : random.Between(1, 3);

  // The plain loop works on the storage itself, which is then put back.
  const auto before = image.AllBytes();
  const bool refused = family == 0 ? !(record.HasRed && record.HasGreen && record.HasBlue) : !record.HasGray;
  for (const auto &[row, sourceRow] : Pairs(y, height, sourceY, record.Height, picture->Height())) {
    for (const auto &[column, sourceColumn] : Pairs(x, width, sourceX, record.Width, picture->Width())) {
      if (refused) continue;
      const Pixel pixel = picture->GetPixel(sourceColumn, sourceRow);
      if (family == 0) {
        *SampleAt(record, column, row, record.RedOffset) = pixel.red;
        *SampleAt(record, column, row, record.GreenOffset) = pixel.green;
        *SampleAt(record, column, row, record.BlueOffset) = pixel.blue;
      } else {
        const uint8_t samples[] = {pixel.red, pixel.green, pixel.blue};
        *SampleAt(record, column, row, record.GrayOffset) = samples[family - 1];
      }
    }
  }
  const auto expected = image.AllBytes();
  std::copy(before.begin(), before.end(), image.block->Data());

  constexpr decltype(&rbDrawPictureRGB8) kDraws[] = {rbDrawPictureRGB8, rbDrawPictureRedToGrayChannel8,
                                                     rbDrawPictureGreenToGrayChannel8, rbDrawPictureBlueToGrayChannel8};
  kDraws[family](image.image, picture, x, y, width, height, sourceX, sourceY);
  RC_ASSERT(IsFree(*picture));
  // Where a sum wraps more or less may be drawn than the caller meant; the fences see to it that nothing outside is.
  if (move.near) RC_ASSERT(image.AllBytes() == expected);
}

TEST(ImportProperty, OnADesktopEveryPictureIsDrawnAsThePlainLoopDoes) {
  PluginHost host({.kind = HostKind::Desktop, .fenced = true});
  CheckManyCases([&](Random &random) { CheckImport(random, host, random.Between(1, 6)); });
}

TEST(ImportProperty, OnAConsoleEveryPictureIsDrawnAsThePlainLoopDoes) {
  PluginHost host({.fenced = true});
  CheckManyCases([&](Random &random) { CheckImport(random, host, kGD); });
}

}  // namespace
}  // namespace zvk::pictures
