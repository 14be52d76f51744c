// Gray from red, green and blue: the one conversion of rows that computes something.
#pragma once

#include <array>
#include <cstdint>

#include "pixels/sample_mover.h"

namespace zvk::pixels {

// Reads pixels of red, green and blue as gray, with the weights 77, 151 and 28 of 256, rounded down.
class GrayReader {
 public:
  // The offsets of red, green and blue in a pixel.
  GrayReader(int32_t pixelSize, const std::array<int32_t, 3> &offsets);

  // Reads `width` pixels into as many bytes of `gray`, which must not overlap the row.
  void operator()(const uint8_t *source, uint8_t *gray, int32_t width) const;

  // The same pixel by pixel.
  void ReadPlain(const uint8_t *source, uint8_t *gray, int32_t width) const;

  // The same eight pixels at once. Returns how many it has read, from the first one on; the rest is to be read yet. 0
  // where the machine cannot, or where the pixels lie too far apart.
  int32_t ReadShuffled(const uint8_t *source, uint8_t *gray, int32_t width) const;

 private:
  static constexpr int32_t kPixelsPerShuffle = 4;

  void RunShuffles(const uint8_t *source, uint8_t *gray, int32_t steps) const;

  std::array<int32_t, 3> offsets_;
  PixelReach reach_;
};

}  // namespace zvk::pixels
