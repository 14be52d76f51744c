// How pixels of one layout become pixels of another one: the one matrix of conversions between gray, RGB and CMYK, with
// and without alpha, settled once for any number of rows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>

#include "image/image_record.h"
#include "pixels/gray_conversion.h"
#include "pixels/layouts.h"
#include "pixels/sample_mover.h"

namespace zvk::pixels {

// One side of a conversion. Offsets are bytes from the start of a pixel.
struct PixelLayout {
  static constexpr size_t kMostChannels = 5;

  ColourFamily family;
  bool hasAlpha;
  bool hasWideSamples;                           // of 16 bits
  int32_t pixelSize;                             // distance between two pixels
  std::array<int32_t, kMostChannels> offsets{};  // the colours in the order of the family, then alpha if there is one
  std::array<int32_t, 3> redGreenBlue{};         // what the record says of these colours, whatever the family

  size_t ColourCount() const { return family == ColourFamily::Gray ? 1 : family == ColourFamily::RGB ? 3 : 4; }
  size_t ChannelCount() const { return ColourCount() + (hasAlpha ? 1 : 0); }
  int32_t Alpha() const { return offsets[ColourCount()]; }
};

// The layout of an image, of the first family in kOrder that it says it has; empty for an image of none of them.
template <ColourFamily... kOrder>
std::optional<PixelLayout> PixelLayoutOf(const ImageClassData &image) {
  std::optional<PixelLayout> layout;
  VisitLayout<kOrder...>(image, [&]<class L>(L) {
    layout = PixelLayout{L::family,       L::hasAlpha, image.BitsPerComponent == 16,
                         image.PixelSize, {},          {image.RedOffset, image.GreenOffset, image.BlueOffset}};
    const auto offsets = L::OffsetsOf(image);
    for (size_t i = 0; i < L::channelCount; ++i) layout->offsets[i] = offsets[i];
  });
  return layout;
}

// Where the operations that convert differ.
struct ConversionRules {
  bool complementsAlpha = false;  // alpha arrives as 255 - alpha
  // Gray becomes the black ink, and the other inks 0; else gray becomes every ink as it is.
  bool grayIsBlackAlone = false;
  // Samples of 16 bits keep both bytes, or are widened or narrowed, between gray images of which one at least has no
  // alpha; else their first byte is all that is read or written.
  bool keepsWideSamples = false;
  // Between inks and gray that both have alpha, gray is that of the bytes at the offsets of red, green and blue: in an
  // image of inks the first byte of a pixel. Else it is the black ink as it is.
  bool inksWithAlphaAreColours = false;
  // By their addresses one cannot tell whether rows overlap: two mappings of one file may. Else that is looked at.
  bool alwaysInOrder = false;
};

class PixelConversion {
 public:
  // Alpha is moved if both sides have it; else the destination's alpha is not written, and filler never is. Empty
  // between RGB and CMYK, for which no conversion is defined.
  static std::optional<PixelConversion> Between(const PixelLayout &source, const PixelLayout &dest,
                                                const ConversionRules &rules);

  // Converts `width` pixels from the addresses of the first ones. Where the rows overlap it goes pixel after pixel, all
  // samples of one read before any is written.
  void ConvertRow(const uint8_t *source, uint8_t *dest, int32_t width) const;

  // If pixels are copied whole, without a byte left out, how far the samples lie behind their place in the destination;
  // else empty.
  std::optional<int32_t> ShiftOfCopy() const;

 private:
  using Conversion = std::variant<SampleMover, GrayConversion>;
  PixelConversion(const Conversion &conversion, bool inOrder) : conversion_(conversion), inOrder_(inOrder) {}

  Conversion conversion_;
  bool inOrder_;
};

}  // namespace zvk::pixels
