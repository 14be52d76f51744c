// Images made of a few bytes, and the pixels of the pictures that are made of them.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/pictures/picture_testing.h"

namespace picture_testing {

using Bytes = std::vector<uint8_t>;

// An image of one row with the given bytes as its pixels.
inline Owned<standalone::Object> RowImage(PluginHost &host, int32_t format, const Bytes &bytes) {
  auto probe = NewImage(host, 1, 1, format);
  const auto width = static_cast<int32_t>(bytes.size()) / zvk::image::RecordOf(probe)->PixelSize;
  auto image = NewImage(host, width, 1, format);
  std::memcpy(zvk::image::RecordOf(image)->Buffer, bytes.data(), bytes.size());
  return image;
}

// A picture's pixels of the top row, left to right.
inline std::vector<Pixel> TopRow(const standalone::Picture &picture) {
  std::vector<Pixel> pixels;
  for (int32_t x = 0; x < picture.Width(); ++x) pixels.push_back(picture.GetPixel(x, 0));
  return pixels;
}

inline Pixel Gray(uint8_t value) { return {value, value, value}; }

}  // namespace picture_testing
