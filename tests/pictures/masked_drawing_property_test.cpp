// Random images, pictures, masks and rectangles, against plain loops over the host's own pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "pictures/masked_drawing.h"
#include "tests/pictures/picture_property_testing.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::HostKind;
using standalone::Picture;

// One pixel as the two families tell it; `mask` is nil for none.
void StorePixel(ImageClassData &record, int32_t x, int32_t y, Pixel drawn, const Pixel *mask, bool invert) {
  const int32_t red = mask != nullptr ? mask->red : 255;
  *SampleAt(record, x, y, record.AlphaOffset) = static_cast<uint8_t>(invert ? 255 - red : red);
  *SampleAt(record, x, y, record.RedOffset) = drawn.red;
  *SampleAt(record, x, y, record.GreenOffset) = drawn.green;
  *SampleAt(record, x, y, record.BlueOffset) = drawn.blue;
}

uint8_t Blended(int32_t p, int32_t d, int32_t m, bool invert) {
  return static_cast<uint8_t>(invert ? (p * m + (255 - m) * d) / 255 : ((255 - m) * p + d * m) / 255);
}

void BlendPixel(ImageClassData &record, int32_t x, int32_t y, Pixel drawn, const Pixel *mask, bool invert) {
  if (mask == nullptr) {
    *SampleAt(record, x, y, record.RedOffset) = drawn.red;
    *SampleAt(record, x, y, record.GreenOffset) = drawn.green;
    *SampleAt(record, x, y, record.BlueOffset) = drawn.blue;
    return;
  }
  const uint8_t red = Blended(drawn.red, *SampleAt(record, x, y, record.RedOffset), mask->red, invert);
  const uint8_t green = Blended(drawn.green, *SampleAt(record, x, y, record.GreenOffset), mask->green, invert);
  const uint8_t blue = Blended(drawn.blue, *SampleAt(record, x, y, record.BlueOffset), mask->blue, invert);
  *SampleAt(record, x, y, record.RedOffset) = red;
  *SampleAt(record, x, y, record.GreenOffset) = green;
  *SampleAt(record, x, y, record.BlueOffset) = blue;
}

void CheckMasked(Random &random, PluginHost &host, int32_t layout, int32_t maskLayout) {
  const AnyImage image(random, host, random.OneIn(10) ? AnyFormat(random) : random.Between(1, 10));
  ImageClassData &record = image.record();
  if (random.Between(0, 3) == 0) record.AlphaOffset = record.RedOffset / record.PixelSize * record.PixelSize;
  auto picture = NewFilledPicture(host, random.Side(150), random.Between(1, 12), layout, random.Bits());
  Picture *mask = nullptr;
  if (random.Between(0, 4) != 0) {
    auto made = NewFilledPicture(host, picture->Width(), picture->Height(), maskLayout, random.Bits());
    mask = made.Get();
    picture->SetMask(std::move(made));
  }
  const bool invert = random.Between(0, 1) != 0, stores = random.Between(0, 1) != 0;
  const AnyMove move(random);
  const int32_t x = move.destX, y = move.destY, width = move.width, height = move.height;
  const int32_t sourceX = move.sourceX, sourceY = move.sourceY;

  // The plain loop works on the storage itself, which is then put back.
  const auto before = image.AllBytes();
  const bool refused = !(record.HasRed && record.HasGreen && record.HasBlue);
  for (const auto &[row, sourceRow] : Pairs(y, height, sourceY, record.Height, picture->Height())) {
    for (const auto &[column, sourceColumn] : Pairs(x, width, sourceX, record.Width, picture->Width())) {
      if (refused) continue;
      Pixel maskPixel;
      if (mask != nullptr) maskPixel = mask->GetPixel(sourceColumn, sourceRow);
      (stores ? StorePixel : BlendPixel)(record, column, row, picture->GetPixel(sourceColumn, sourceRow),
                                         mask != nullptr ? &maskPixel : nullptr, invert);
    }
  }
  const auto expected = image.AllBytes();
  std::copy(before.begin(), before.end(), image.block->Data());

  (stores ? rbDrawMaskedPictureRGB8 : rbDrawPictureApplyMaskRGB8)(image.image, picture, x, y, width, height, sourceX,
                                                                  sourceY, invert);
  RC_ASSERT(IsFree(*picture));
  if (mask != nullptr) {
    // The mask's reference stays, unless the image has no colours and nobody asked for it.
    RC_ASSERT(mask->References() == (refused ? 1 : 2) && mask->LocksHeld() == 0);
    if (!refused) mask->Unlock();
  }
  // Where a sum wraps more or less may be drawn than the caller meant; the fences see to it that nothing outside is.
  if (move.near) RC_ASSERT(image.AllBytes() == expected);
}

TEST(MaskedDrawingProperty, OnADesktopEveryPictureIsDrawnAsThePlainLoopDoes) {
  PluginHost host({.kind = HostKind::Desktop, .fenced = true});
  CheckManyCases([&](Random &random) {
    const int32_t layout = random.Between(1, 6);
    CheckMasked(random, host, layout, random.Between(0, 1) == 0 ? layout : random.Between(1, 6));
  });
}

TEST(MaskedDrawingProperty, OnAConsoleEveryPictureIsDrawnAsThePlainLoopDoes) {
  PluginHost host({.fenced = true});
  CheckManyCases([&](Random &random) { CheckMasked(random, host, kGD, kGD); });
}

}  // namespace
}  // namespace zvk::pictures
