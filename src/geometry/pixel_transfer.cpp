#include "geometry/pixel_transfer.h"

#include <array>
#include <cstddef>
#include <span>

#include "image/rows.h"
#include "pixels/layouts.h"

namespace zvk::geometry {

namespace {

using Conversion = std::variant<SampleMover, GrayConversion>;

// The colour of the source that colour `i` of the destination is taken from, where nothing is computed.
template <class Dest, class Source>
constexpr size_t ColourFor(size_t i) {
  if constexpr (Source::family == Dest::family) return i;
  if constexpr (Source::family == ColourFamily::Gray) return 0;
  return 3;  // gray is the black ink as it stands
}

// Gray of one width into gray of another, without alpha. A sample becomes wider by being repeated, which multiplies it
// by 257, and narrower by losing its second byte.
SampleMover GrayMover(const ImageClassData &dest, const ImageClassData &source) {
  const int32_t from = source.GrayOffset, to = dest.GrayOffset;
  const int32_t secondFrom = source.BitsPerComponent == 16 ? from + 1 : from;
  const std::array moves{SampleMove{from, to}, SampleMove{secondFrom, to + 1}};
  return {source.PixelSize, dest.PixelSize, std::span(moves).first(dest.BitsPerComponent == 16 ? 2 : 1)};
}

// Offsets are bytes from the start of a pixel, in the order of the layout's channels.
template <class Dest, class Source>
std::optional<Conversion> MakeConversion(const ImageClassData &dest, const ImageClassData &source) {
  constexpr bool kAlpha = Dest::hasAlpha && Source::hasAlpha;
  constexpr bool kToGray = Dest::family == ColourFamily::Gray, kFromGray = Source::family == ColourFamily::Gray;
  const auto from = Source::OffsetsOf(source);
  const auto to = Dest::OffsetsOf(dest);
  const SampleMove alpha{from.back(), to.back()};
  if constexpr (kToGray && (Source::family == ColourFamily::RGB || (Source::family == ColourFamily::CMYK && kAlpha))) {
    // For CMYK with alpha, too, unlike without: there the three offsets are 0, and so gray is the pixel's first byte.
    return GrayConversion(source.PixelSize, {source.RedOffset, source.GreenOffset, source.BlueOffset}, dest.PixelSize,
                          to[0], kAlpha ? std::optional(alpha) : std::nullopt);
  } else if constexpr (kToGray && kFromGray && !kAlpha) {
    return GrayMover(dest, source);
  } else if constexpr (kToGray || kFromGray || Dest::family == Source::family) {
    std::array<SampleMove, Dest::colourCount + (kAlpha ? 1 : 0)> moves{};
    for (size_t i = 0; i < Dest::colourCount; ++i) {
      moves[i] = {from[ColourFor<Dest, Source>(i)], to[i]};
      // Gray goes into the black ink alone.
      moves[i].zero = kFromGray && Dest::family == ColourFamily::CMYK && i < 3;
    }
    if constexpr (kAlpha) moves.back() = alpha;
    return SampleMover(source.PixelSize, dest.PixelSize, moves);
  } else {
    return std::nullopt;
  }
}

template <class Visitor>
void VisitAnyLayout(const ImageClassData &image, Visitor &&visit) {
  VisitLayout<ColourFamily::Gray, ColourFamily::RGB, ColourFamily::CMYK>(image, visit);
}

}  // namespace

std::optional<PixelTransfer> PixelTransfer::Between(const ImageClassData &dest, const ImageClassData &source) {
  std::optional<Conversion> conversion;
  VisitAnyLayout(dest, [&]<class Dest>(Dest) {
    VisitAnyLayout(source, [&]<class Source>(Source) { conversion = MakeConversion<Dest, Source>(dest, source); });
  });
  if (!conversion) return std::nullopt;
  // Rows in memory tell by their addresses whether they overlap; two mappings of one file do not.
  return PixelTransfer(*conversion, !HasFixedRows(dest) || !HasFixedRows(source));
}

void PixelTransfer::Row(uint8_t *dest, const uint8_t *source, int32_t width) const {
  std::visit(
      [&](const auto &convert) {
        if (inOrder_) {
          convert.MoveInOrder(source, dest, width);
        } else {
          convert(source, dest, width);
        }
      },
      conversion_);
}

}  // namespace zvk::geometry
