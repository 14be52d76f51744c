// How the pixels of one image become pixels of another one when they are copied.
#pragma once

#include <cstdint>
#include <optional>
#include <variant>

#include "image/image_record.h"
#include "pixels/gray_conversion.h"
#include "pixels/sample_mover.h"

namespace zvk::geometry {

// The conversion of rows, settled once for a whole copy by families, HasAlpha, PixelSize, BitsPerComponent and offsets.
class PixelTransfer {
 public:
  // Empty where no conversion is defined: between RGB and CMYK, and for an image of no family. Alpha is moved if both
  // images have it; else the destination's alpha, like filler, is not written.
  static std::optional<PixelTransfer> Between(const ImageClassData &dest, const ImageClassData &source);

  // Converts `width` pixels from the addresses of the first one. Where the samples may overlap in memory it goes pixel
  // after pixel, all samples of one read before any is written.
  void Row(uint8_t *dest, const uint8_t *source, int32_t width) const;

 private:
  using Conversion = std::variant<SampleMover, GrayConversion>;
  PixelTransfer(const Conversion &conversion, bool inOrder) : conversion_(conversion), inOrder_(inOrder) {}

  Conversion conversion_;
  bool inOrder_;  // addresses do not tell whether rows overlap
};

}  // namespace zvk::geometry
