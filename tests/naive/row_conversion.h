// The conversion of a row from one format to another in plain nested loops, by the list of formats of the tests.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tests/naive/formats.h"
#include "tests/naive/samples.h"

namespace naive {

// One side of a conversion: where the samples are, in bytes from the start of a pixel.
struct Side {
  int32_t pixelSize = 0;
  char family = 0;  // 'g', 'R' or 'C', or 0
  bool hasAlpha = false;
  std::map<char, int32_t> at;
};

inline Side SideOfFormat(int32_t format) {
  Side side;
  const std::string &pixel = kPixelsOfFormat.at(format);
  side.pixelSize = static_cast<int32_t>(pixel.size());
  for (size_t i = 0; i < pixel.size(); ++i) {
    if (pixel[i] == '.' || pixel[i] == '+') continue;
    side.at[pixel[i]] = static_cast<int32_t>(i);
    if (pixel[i] == 'g' || pixel[i] == 'R' || pixel[i] == 'C') side.family = pixel[i];
    if (pixel[i] == 'A') side.hasAlpha = true;
  }
  return side;
}

inline Side SideOfRecord(const ImageClassData &record) {
  Side side;
  side.pixelSize = record.PixelSize;
  side.family = record.IsCMYK ? 'C' : record.IsRGB ? 'R' : record.IsGray ? 'g' : 0;
  side.hasAlpha = record.HasAlpha;
  for (const char channel : std::string("gRGBACMYK")) side.at[channel] = OffsetOf(record, channel);
  return side;
}

inline const char *ColoursOf(char family) { return family == 'g' ? "g" : family == 'R' ? "RGB" : "CMYK"; }

// Converts pixel after pixel, all samples of one read before any is written. Returns what is to be raised; nothing has
// been written then. Without a family nothing is written and nothing raised.
inline std::string ConvertRow(const Side &from, const uint8_t *source, const Side &to, uint8_t *dest, int32_t width,
                              bool invertAlpha) {
  if (from.family == 0 || to.family == 0) return "";
  if (from.family == 'R' && to.family == 'C') return "Conversion from RGB to CMYK is not supported.";
  if (from.family == 'C' && to.family == 'R') return "Conversion from CMYK to RGB is not supported.";
  for (int64_t x = 0; x < width; ++x) {
    std::map<char, int> sample;
    for (const char *c = ColoursOf(from.family); *c != 0; ++c) sample[*c] = source[x * from.pixelSize + from.at.at(*c)];
    int alpha = 0;
    if (from.hasAlpha) alpha = source[x * from.pixelSize + from.at.at('A')];

    std::map<char, int> result;
    for (const char *c = ColoursOf(to.family); *c != 0; ++c) {
      if (from.family == to.family) {
        result[*c] = sample[*c];
      } else if (from.family == 'g') {
        result[*c] = sample['g'];
      } else if (from.family == 'C') {
        result[*c] = sample['K'];
      } else {
        result[*c] = (77 * sample['R'] + 151 * sample['G'] + 28 * sample['B']) / 256;
      }
    }
    for (const char *c = ColoursOf(to.family); *c != 0; ++c) {
      dest[x * to.pixelSize + to.at.at(*c)] = static_cast<uint8_t>(result[*c]);
    }
    if (from.hasAlpha && to.hasAlpha) {
      dest[x * to.pixelSize + to.at.at('A')] = static_cast<uint8_t>(invertAlpha ? 255 - alpha : alpha);
    }
  }
  return "";
}

}  // namespace naive
