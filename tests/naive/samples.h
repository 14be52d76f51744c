// Where the samples of an image lie, by the letters of its channels: g is gray, K black. The plain loops reach all
// samples this way, one at a time, and share nothing with the code under test but the record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "image/image_record.h"

namespace naive {

using zvk::image::ImageClassData;

// The channels that an image has. Colours first, then A; none without a family.
inline std::string ChannelsOf(const ImageClassData &image) {
  const char *const colours = image.IsGray ? "g" : image.IsRGB ? "RGB" : image.IsCMYK ? "CMYK" : "";
  return std::string(colours) + (*colours != 0 && image.HasAlpha ? "A" : "");
}

inline int32_t OffsetOf(const ImageClassData &image, char channel) {
  switch (channel) {
    case 'R':
      return image.RedOffset;
    case 'G':
      return image.GreenOffset;
    case 'B':
      return image.BlueOffset;
    case 'C':
      return image.CyanOffset;
    case 'M':
      return image.MagentaOffset;
    case 'Y':
      return image.YellowOffset;
    case 'K':
      return image.BlackOffset;
    case 'A':
      return image.AlphaOffset;
    default:
      return image.GrayOffset;
  }
}

// The address of a byte of a pixel; nil where the row cannot be had. Asks the image for the row each time, as its block
// may have moved.
inline uint8_t *SampleAt(ImageClassData &image, int64_t x, int32_t y, int32_t offset) {
  uint8_t *const row = image.GetRow(&image, y);
  return row == nullptr ? nullptr : row + x * image.PixelSize + offset;
}
inline uint8_t *SampleAt(ImageClassData &image, int64_t x, int32_t y, char channel) {
  return SampleAt(image, x, y, OffsetOf(image, channel));
}

}  // namespace naive
