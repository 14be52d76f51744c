// The matrix of conversions: how the pixels of one record become pixels of another, settled once for any number of
// rows. Memory blocks and strings, in both directions, all go through here.
#pragma once

#include <cstdint>
#include <optional>
#include <variant>

#include "image/image_record.h"
#include "pixels/gray_conversion.h"
#include "pixels/sample_mover.h"

namespace zvk::exchange {

class PixelConversion {
 public:
  // How pixels of `source` become pixels of `dest`. Of both only the family, HasAlpha, PixelSize and the offsets count.
  // Alpha is moved if both have it, complemented if `invertAlpha`; else the destination's alpha is not written. Filler
  // never is. Empty if either has no family; empty after an "UnsupportedOperationException" between RGB and CMYK.
  static std::optional<PixelConversion> Between(const ImageClassData &source, const ImageClassData &dest,
                                                bool invertAlpha);

  // Converts `width` pixels. Where the rows overlap it goes pixel after pixel, all samples of one read before any is
  // written.
  void ConvertRow(const uint8_t *source, uint8_t *dest, int32_t width) const;

 private:
  using Conversion = std::variant<SampleMover, GrayConversion>;
  explicit PixelConversion(const Conversion &conversion) : conversion_(conversion) {}

  Conversion conversion_;
};

}  // namespace zvk::exchange
