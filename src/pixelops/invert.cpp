#include "pixelops/invert.h"

#include "image/layouts.h"
#include "pixelops/in_place.h"
#include "pixelops/row_samples.h"

namespace zvk {

namespace {

using enum ColourFamily;

constexpr int32_t kWholeByte = 0;

// The complement of a 16-bit sample is that of its bytes, and such pixels are nothing but their sample.
void InvertWords(const ImageClassData &image, const RowPart &part) {
  const auto bytes = PixelBytes(image, part.row, image.GrayOffset, part.x, part.width);
  ComplementSamples({bytes.data(), 1, static_cast<ptrdiff_t>(bytes.size())}, {&kWholeByte, 1});
}

}  // namespace

void Invert1(REALobject instance) {
  const ImageClassData *image = RecordOf(instance);
  if (image != nullptr) Invert5(instance, 0, 0, image->Width, image->Height);
}

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

}  // namespace zvk
