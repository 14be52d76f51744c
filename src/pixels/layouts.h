// The layouts that operations tell apart, a colour family with or without alpha, as lists of channels known at compile
// time: an operation is written once over such a list, and a visitor picks the list of an image at run time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "image/image_record.h"
#include "pixels/overlap.h"

namespace zvk::pixels {

enum class ColourFamily : uint8_t { Gray, RGB, CMYK };

// The field of the record that tells where a channel's sample lies in a pixel.
using ChannelOffset = int32_t ImageClassData::*;

// The colours of a family, in the order in which they are read and written.
template <ColourFamily>
inline constexpr std::array<ChannelOffset, 1> kColours{&ImageClassData::GrayOffset};
template <>
inline constexpr std::array<ChannelOffset, 3> kColours<ColourFamily::RGB>{
    &ImageClassData::RedOffset, &ImageClassData::GreenOffset, &ImageClassData::BlueOffset};
template <>
inline constexpr std::array<ChannelOffset, 4> kColours<ColourFamily::CMYK>{
    &ImageClassData::CyanOffset, &ImageClassData::MagentaOffset, &ImageClassData::YellowOffset,
    &ImageClassData::BlackOffset};

constexpr uint8_t ImageClassData::*FamilyFlag(ColourFamily family) {
  return family == ColourFamily::Gray  ? &ImageClassData::IsGray
         : family == ColourFamily::RGB ? &ImageClassData::IsRGB
                                       : &ImageClassData::IsCMYK;
}

// One layout; a value of it is what a visitor is called with.
template <ColourFamily kFamily, bool kAlpha>
struct Layout {
  static constexpr ColourFamily family = kFamily;
  static constexpr bool hasAlpha = kAlpha;
  static constexpr size_t colourCount = kColours<kFamily>.size();
  static constexpr size_t channelCount = colourCount + (kAlpha ? 1 : 0);

  // The colours, then alpha if there is one.
  static constexpr std::array<ChannelOffset, channelCount> channels = [] {
    std::array<ChannelOffset, channelCount> all{};
    for (size_t i = 0; i < colourCount; ++i) all[i] = kColours<kFamily>[i];
    if constexpr (kAlpha) all[colourCount] = &ImageClassData::AlphaOffset;
    return all;
  }();

  // Where an image of this layout keeps these channels: bytes from the start of a pixel.
  static constexpr std::array<int32_t, channelCount> OffsetsOf(const ImageClassData &image) {
    std::array<int32_t, channelCount> offsets{};
    for (size_t i = 0; i < channelCount; ++i) offsets[i] = image.*channels[i];
    return offsets;
  }

  // True if the pixels of both images are these channels and nothing else, in the same storage order, so that samples
  // which are all treated alike can be walked as one run of bytes: from FirstOffset(image) of the first pixel on,
  // channelCount bytes for each pixel.
  static constexpr bool PackedAlike(const ImageClassData &a, const ImageClassData &b) {
    if (a.PixelSize != channelCount || b.PixelSize != channelCount) return false;
    const auto offsetsOfA = OffsetsOf(a);
    const auto offsetsOfB = OffsetsOf(b);
    const int64_t shift = int64_t{offsetsOfB[0]} - offsetsOfA[0];
    for (size_t i = 1; i < channelCount; ++i) {
      if (offsetsOfB[i] - int64_t{offsetsOfA[i]} != shift) return false;
    }
    return SamplesAreSideBySide(offsetsOfA);
  }

  static constexpr int32_t FirstOffset(const ImageClassData &image) { return RangeOf(OffsetsOf(image)).lowest; }
};

// Calls `visit` once, with the layout of the first family in kOrder that the image says it has. Only the family flags
// and HasAlpha are asked, not the flags of the colours. False, without a call, for an image of none of them.
template <ColourFamily... kOrder, class Visitor>
bool VisitLayout(const ImageClassData &image, Visitor &&visit) {
  static_assert(sizeof...(kOrder) > 0);
  const auto tryFamily = [&]<ColourFamily kFamily>() {
    if (!(image.*FamilyFlag(kFamily))) return false;
    if (image.HasAlpha) {
      visit(Layout<kFamily, true>{});
    } else {
      visit(Layout<kFamily, false>{});
    }
    return true;
  };
  return (tryFamily.template operator()<kOrder>() || ...);
}

}  // namespace zvk::pixels
