#include "levels/fill_apply.h"

#include <array>

#include "levels/fill.h"
#include "pixels/in_place.h"
#include "pixels/layouts.h"
#include "pixels/row_samples.h"
#include "pixels/whole_image.h"

namespace zvk::levels {

namespace {

using enum ColourFamily;

// The colour as a family's samples. Not Luma, which shifts: a sum below zero is rounded toward zero here.
template <ColourFamily kFamily>
auto ColourOf(int32_t red, int32_t green, int32_t blue) {
  if constexpr (kFamily == Gray) {
    return std::array{(red * 77 + green * 151 + blue * 28) / 256};
  } else {
    return std::array{red, green, blue};
  }
}

}  // namespace

uint8_t FillRectApplyRGBA1(REALobject instance, int32_t red, int32_t green, int32_t blue, int32_t alpha) {
  return OnWholeImage(FillRectApplyRGBA5, instance, red, green, blue, alpha);
}

uint8_t FillRectApplyRGBA5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, int32_t red,
                           int32_t green, int32_t blue, int32_t alpha) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !image->Valid) return false;
  const Rectangle rectangle = FitRectangle({x, y, width, height}, image->Width, image->Height);
  // An empty rectangle needs no pixels.
  if (!IsEmpty(rectangle) && !HasPixels(*image)) return false;
  // 255 x 257 is one short of 65536, so the shift takes an exact mix to the number below. As the arithmetic wraps, the
  // two weights may be taken times 257 before the sum or the sum after it.
  const auto colourWeight = static_cast<uint32_t>(alpha) * 257;
  const uint32_t oldWeight = (255 - static_cast<uint32_t>(alpha)) * 257;
  return VisitLayout<RGB, Gray>(*image, [&]<class AnyLayout>(AnyLayout) {
    constexpr ColourFamily kFamily = AnyLayout::family;
    std::array<uint32_t, AnyLayout::colourCount> addends;
    const auto colour = ColourOf<kFamily>(red, green, blue);
    for (size_t i = 0; i < addends.size(); ++i) addends[i] = static_cast<uint32_t>(colour[i]) * colourWeight;
    ForEachRow(*image, rectangle, RowYield::AfterEachRow, [&](const RowPart &part) {
      BlendSamples(part.PixelsOf(*image), Layout<kFamily, false>::OffsetsOf(*image), oldWeight, addends);
    });
  });
}

uint8_t FillRectApplyRGBcA1(REALobject instance, uint32_t colour, int32_t alpha) {
  const auto [red, green, blue] = PartsOf(colour);
  return FillRectApplyRGBA1(instance, red, green, blue, alpha);
}

uint8_t FillRectApplyRGBcA5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, uint32_t colour,
                            int32_t alpha) {
  const auto [red, green, blue] = PartsOf(colour);
  return FillRectApplyRGBA5(instance, x, y, width, height, red, green, blue, alpha);
}

}  // namespace zvk::levels
