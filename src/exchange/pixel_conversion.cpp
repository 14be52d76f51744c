#include "exchange/pixel_conversion.h"

#include <array>
#include <cstddef>

#include "host/host_services.h"
#include "pixels/layouts.h"

namespace zvk::exchange {

namespace {

// The colour of the source that colour `i` of the destination is taken from, where nothing is computed.
template <class Source, class Dest>
constexpr size_t ColourFor(size_t i) {
  if constexpr (Source::family == Dest::family) return i;
  if constexpr (Source::family == ColourFamily::Gray) return 0;  // gray into every colour, inks too
  return 3;                                                      // gray is the black ink as it stands
}

template <class Source, class Dest>
constexpr const char *Refusal() {
  if constexpr (Source::family == ColourFamily::RGB && Dest::family == ColourFamily::CMYK) {
    return "Conversion from RGB to CMYK is not supported.";
  }
  if constexpr (Source::family == ColourFamily::CMYK && Dest::family == ColourFamily::RGB) {
    return "Conversion from CMYK to RGB is not supported.";
  }
  return nullptr;
}

// Offsets are bytes from the start of a pixel, in the order of the layout's channels.
template <class Source, class Dest>
auto MakeConversion(const ImageClassData &source, const ImageClassData &dest, bool invertAlpha) {
  constexpr bool kMovesAlpha = Source::hasAlpha && Dest::hasAlpha;
  const auto from = Source::OffsetsOf(source);
  const auto to = Dest::OffsetsOf(dest);
  const SampleMove alpha{from.back(), to.back(), invertAlpha};
  if constexpr (Source::family == ColourFamily::RGB && Dest::family == ColourFamily::Gray) {
    return GrayConversion(source.PixelSize, {from[0], from[1], from[2]}, dest.PixelSize, to[0],
                          kMovesAlpha ? std::optional(alpha) : std::nullopt);
  } else {
    std::array<SampleMove, Dest::colourCount + (kMovesAlpha ? 1 : 0)> moves;
    for (size_t i = 0; i < Dest::colourCount; ++i) moves[i] = {from[ColourFor<Source, Dest>(i)], to[i]};
    if constexpr (kMovesAlpha) moves.back() = alpha;
    return SampleMover(source.PixelSize, dest.PixelSize, moves);
  }
}

// Calls `visit` with the layout of an image, in the order in which the exchange asks for its family.
template <class Visitor>
void VisitExchangeLayout(const ImageClassData &image, Visitor &&visit) {
  VisitLayout<ColourFamily::CMYK, ColourFamily::RGB, ColourFamily::Gray>(image, visit);
}

}  // namespace

std::optional<PixelConversion> PixelConversion::Between(const ImageClassData &source, const ImageClassData &dest,
                                                        bool invertAlpha) {
  std::optional<PixelConversion> conversion;
  VisitExchangeLayout(source, [&]<class Source>(Source) {
    VisitExchangeLayout(dest, [&]<class Dest>(Dest) {
      if constexpr (Refusal<Source, Dest>() != nullptr) {
        RaiseException("UnsupportedOperationException", Refusal<Source, Dest>());
      } else {
        conversion = PixelConversion(MakeConversion<Source, Dest>(source, dest, invertAlpha));
      }
    });
  });
  return conversion;
}

void PixelConversion::ConvertRow(const uint8_t *source, uint8_t *dest, int32_t width) const {
  std::visit([&](const auto &convert) { convert(source, dest, width); }, conversion_);
}

}  // namespace zvk::exchange
