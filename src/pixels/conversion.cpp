#include "pixels/conversion.h"

#include <span>

namespace zvk::pixels {

namespace {

bool IsDefined(ColourFamily source, ColourFamily dest) {
  return source == dest || source == ColourFamily::Gray || dest == ColourFamily::Gray;
}

// The colour of the source that colour `i` of the destination is taken from, where nothing is computed.
size_t ColourFor(ColourFamily source, ColourFamily dest, size_t i) {
  if (source == dest) return i;
  return source == ColourFamily::Gray ? 0 : 3;  // gray into every colour; the black ink into gray
}

// Gray of one width into gray of another, without alpha. A sample becomes wider by being repeated, which multiplies it
// by 257, and narrower by losing its second byte.
SampleMover WideGrayMover(const PixelLayout &source, const PixelLayout &dest) {
  const int32_t from = source.offsets[0];
  const int32_t to = dest.offsets[0];
  const std::array moves{SampleMove{from, to}, SampleMove{source.hasWideSamples ? from + 1 : from, to + 1}};
  return {source.pixelSize, dest.pixelSize, std::span(moves).first(dest.hasWideSamples ? 2 : 1)};
}

}  // namespace

std::optional<PixelConversion> PixelConversion::Between(const PixelLayout &source, const PixelLayout &dest,
                                                        const ConversionRules &rules) {
  if (!IsDefined(source.family, dest.family)) return std::nullopt;
  const bool toGray = dest.family == ColourFamily::Gray;
  const bool fromGray = source.family == ColourFamily::Gray;
  const bool movesAlpha = source.hasAlpha && dest.hasAlpha;
  const SampleMove alpha{source.Alpha(), dest.Alpha(), rules.complementsAlpha};

  const bool readsColours = source.family == ColourFamily::RGB ||
                            (source.family == ColourFamily::CMYK && movesAlpha && rules.inksWithAlphaAreColours);
  if (toGray && readsColours) {
    const GrayConversion gray(source.pixelSize, source.redGreenBlue, dest.pixelSize, dest.offsets[0],
                              movesAlpha ? std::optional(alpha) : std::nullopt);
    return PixelConversion(gray, rules.alwaysInOrder);
  }
  if (toGray && fromGray && !movesAlpha && rules.keepsWideSamples) {
    return PixelConversion(WideGrayMover(source, dest), rules.alwaysInOrder);
  }
  std::array<SampleMove, PixelLayout::kMostChannels> moves{};
  const size_t colours = dest.ColourCount();
  for (size_t i = 0; i < colours; ++i) {
    moves[i] = {source.offsets[ColourFor(source.family, dest.family, i)], dest.offsets[i]};
    moves[i].zero = rules.grayIsBlackAlone && fromGray && dest.family == ColourFamily::CMYK && i < 3;
  }
  if (movesAlpha) moves[colours] = alpha;
  return PixelConversion(
      SampleMover(source.pixelSize, dest.pixelSize, std::span(moves).first(colours + (movesAlpha ? 1 : 0))),
      rules.alwaysInOrder);
}

void PixelConversion::ConvertRow(const uint8_t *source, uint8_t *dest, int32_t width) const {
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

std::optional<int32_t> PixelConversion::ShiftOfCopy() const {
  const auto *mover = std::get_if<SampleMover>(&conversion_);
  return mover != nullptr ? mover->ShiftOfCopy() : std::nullopt;
}

}  // namespace zvk::pixels
