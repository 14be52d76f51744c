#include "levels/invert.h"

#include "pixels/in_place.h"
#include "pixels/layouts.h"
#include "pixels/row_samples.h"
#include "pixels/whole_image.h"
#include "pixels/wide_samples.h"

namespace zvk::levels {

namespace {

using enum ColourFamily;

constexpr int32_t kWholeByte = 0;

// The complement of a 16-bit sample is that of its bytes, and such pixels are nothing but their sample.
void InvertWords(const ImageClassData &image, const RowPart &part) {
  uint8_t *const samples = part.row + image.GrayOffset;
  const auto invert = [&](int32_t column, ptrdiff_t bytes) {
    ComplementSamples({samples + ptrdiff_t{column} * image.PixelSize, 1, bytes}, {&kWholeByte, 1});
  };
  VisitWideSamples(
      image, part.row, part.x, part.width,
      [&](int32_t column, int32_t count) { invert(column, ptrdiff_t{count} * image.PixelSize); },
      [&](int32_t column) { invert(column, 1); });
}

}  // namespace

void Invert1(REALobject instance) { OnWholeImage(Invert5, instance); }

void Invert5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height) {
  ImageClassData *image = RecordOf(instance);
  const auto rectangle = BeginInPlace(image, {x, y, width, height});
  if (!rectangle) return;
  VisitLayout<Gray, RGB, CMYK>(*image, [&]<class Layout>(Layout) {
    ForEachRow(*image, *rectangle, RowYield::AfterEachRow, [&](const RowPart &part) {
      if constexpr (Layout::family == Gray && !Layout::hasAlpha) {
        if (image->BitsPerComponent == 16) return InvertWords(*image, part);
      }
      ComplementSamples(part.PixelsOf(*image), Layout::OffsetsOf(*image));
    });
  });
}

}  // namespace zvk::levels
