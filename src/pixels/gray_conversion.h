// Pixels of red, green and blue into gray ones, with or without alpha: rows of any two layouts.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "pixels/gray_reader.h"
#include "pixels/sample_mover.h"

namespace zvk::pixels {

class GrayConversion {
 public:
  // `gray` is the offset in the pixel that is written; `alpha` the way of alpha, if it is moved.
  GrayConversion(int32_t sourcePixelSize, const std::array<int32_t, 3> &colours, int32_t destPixelSize, int32_t gray,
                 const std::optional<SampleMove> &alpha);

  // Converts `width` pixels. No other byte changes.
  void operator()(const uint8_t *source, uint8_t *dest, int32_t width) const;

  // The same in the plain order, which decides the bytes where the rows overlap: pixel after pixel, all samples of one
  // read before any is written.
  void MoveInOrder(const uint8_t *source, uint8_t *dest, int32_t width) const;

 private:
  // Alpha is read into bytes of its own and written from there, like gray.
  struct Alpha {
    SampleMove move;
    SampleMover read;
    SampleMover write;
  };

  std::array<int32_t, 3> colours_;
  int32_t gray_;
  GrayReader readGray_;
  SampleMover writeGray_;
  std::optional<Alpha> alpha_;
  PixelReach source_;
  PixelReach dest_;
};

}  // namespace zvk::pixels
