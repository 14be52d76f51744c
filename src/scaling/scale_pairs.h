// The fifteen pairs of source and destination formats that the resampler knows. A pair is a description from which its
// passes are compiled: what is read, what a pixel of the temp image holds, and what is written.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>

#include "image/image_formats.h"
#include "image/image_record.h"
#include "pixels/layouts.h"

namespace zvk::scaling {

// Up to five things, one for each channel of a pixel, usable at compile time.
template <class T>
struct ChannelList {
  constexpr ChannelList(std::initializer_list<T> list) : count(static_cast<int32_t>(list.size())) {
    int32_t i = 0;
    for (const T &item : list) items[i++] = item;
  }
  constexpr const T *begin() const { return items.data(); }
  constexpr const T *end() const { return items.data() + count; }
  constexpr T operator[](int32_t index) const { return items[index]; }

  std::array<T, 5> items{};
  int32_t count;
};

// A channel of the destination, and which of the pair's values it gets.
struct ScaleWrite {
  ChannelOffset channel = nullptr;
  int32_t value = 0;
};

// What the horizontal pass makes of the samples that it reads.
enum class ScaleValues : uint8_t {
  kSamples,       // each sample is a value of its own
  kGrayOfColour,  // red, green and blue become one gray value; a fourth sample stays as it is
};

struct ScalePair {
  int32_t ScaleTempFormat;
  int32_t Stride;                   // bytes of a temp pixel
  ChannelList<ChannelOffset> Read;  // samples that the horizontal pass reads, in order
  ChannelList<int32_t> TempBytes;   // where in a temp pixel each value lies; its other bytes are written 0
  ChannelList<ScaleWrite> Write;    // what the vertical pass writes, in order
  ScaleValues Values = ScaleValues::kSamples;
  int32_t SampleSize = 1;  // bytes; values are cut to what fits
};

// The third ink comes through RedOffset, which is 0 in a CMYK image: yellow is resampled from the pixel's first byte.
// A gray image has all four at 0, so read as inks it gives its first byte four times over.
inline constexpr ChannelList<ChannelOffset> kInksRead{&ImageClassData::CyanOffset, &ImageClassData::MagentaOffset,
                                                      &ImageClassData::RedOffset, &ImageClassData::BlackOffset};
inline constexpr ChannelList<ChannelOffset> kInksAndAlphaRead{
    &ImageClassData::CyanOffset, &ImageClassData::MagentaOffset, &ImageClassData::RedOffset,
    &ImageClassData::BlackOffset, &ImageClassData::AlphaOffset};
inline constexpr ChannelList<ScaleWrite> kInksWritten{{&ImageClassData::CyanOffset, 0},
                                                      {&ImageClassData::MagentaOffset, 1},
                                                      {&ImageClassData::YellowOffset, 2},
                                                      {&ImageClassData::BlackOffset, 3}};
inline constexpr ChannelList<ScaleWrite> kInksAndAlphaWritten{{&ImageClassData::CyanOffset, 0},
                                                              {&ImageClassData::MagentaOffset, 1},
                                                              {&ImageClassData::YellowOffset, 2},
                                                              {&ImageClassData::BlackOffset, 3},
                                                              {&ImageClassData::AlphaOffset, 4}};
inline constexpr ChannelList<ChannelOffset> kColourRead{&ImageClassData::RedOffset, &ImageClassData::GreenOffset,
                                                        &ImageClassData::BlueOffset};
inline constexpr ChannelList<ChannelOffset> kColourAndAlphaRead{
    &ImageClassData::RedOffset, &ImageClassData::GreenOffset, &ImageClassData::BlueOffset,
    &ImageClassData::AlphaOffset};
inline constexpr ChannelList<ScaleWrite> kGrayWritten{{&ImageClassData::GrayOffset, 0}};
inline constexpr ChannelList<ScaleWrite> kGrayAndAlphaWritten{{&ImageClassData::GrayOffset, 0},
                                                              {&ImageClassData::AlphaOffset, 1}};

inline constexpr ScalePair CMYKA_to_CMYKA{.ScaleTempFormat = ImageFormatScaling5,
                                          .Stride = 5,
                                          .Read = kInksAndAlphaRead,
                                          .TempBytes = {0, 1, 2, 3, 4},
                                          .Write = kInksAndAlphaWritten};
inline constexpr ScalePair CMYKA_to_GA{.ScaleTempFormat = ImageFormatScaling2,
                                       .Stride = 2,
                                       .Read = {&ImageClassData::BlackOffset, &ImageClassData::AlphaOffset},
                                       .TempBytes = {0, 1},
                                       .Write = kGrayAndAlphaWritten};
inline constexpr ScalePair RGBA_to_RGBA{.ScaleTempFormat = ImageFormatScaling4,
                                        .Stride = 4,
                                        .Read = kColourAndAlphaRead,
                                        .TempBytes = {0, 1, 2, 3},
                                        .Write = {{&ImageClassData::RedOffset, 0},
                                                  {&ImageClassData::GreenOffset, 1},
                                                  {&ImageClassData::BlueOffset, 2},
                                                  {&ImageClassData::AlphaOffset, 3}}};
inline constexpr ScalePair RGBA_to_GA{.ScaleTempFormat = ImageFormatScaling2,
                                      .Stride = 2,
                                      .Read = kColourAndAlphaRead,
                                      .TempBytes = {0, 1},
                                      .Write = kGrayAndAlphaWritten,
                                      .Values = ScaleValues::kGrayOfColour};
// Reads a gray image as inks, without inversion: white is full ink, and "AG" gives its alpha.
inline constexpr const ScalePair &GA_to_CMYKA = CMYKA_to_CMYKA;
// Gray stands in the second byte of the temp pixel.
inline constexpr ScalePair GA_to_RGBA{.ScaleTempFormat = ImageFormatScaling4,
                                      .Stride = 4,
                                      .Read = {&ImageClassData::GrayOffset, &ImageClassData::AlphaOffset},
                                      .TempBytes = {1, 3},
                                      .Write = {{&ImageClassData::RedOffset, 0},
                                                {&ImageClassData::GreenOffset, 0},
                                                {&ImageClassData::BlueOffset, 0},
                                                {&ImageClassData::AlphaOffset, 1}}};
// Carries gray only: the destination's alpha stays as it was.
inline constexpr ScalePair GA_to_GA{.ScaleTempFormat = ImageFormatScaling2,
                                    .Stride = 2,
                                    .Read = {&ImageClassData::GrayOffset},
                                    .TempBytes = {0},
                                    .Write = kGrayWritten};
inline constexpr ScalePair G16_to_G16{.ScaleTempFormat = ImageFormatScaling2,
                                      .Stride = 2,
                                      .Read = {&ImageClassData::GrayOffset},
                                      .TempBytes = {0},
                                      .Write = kGrayWritten,
                                      .SampleSize = 2};
inline constexpr ScalePair CMYK_to_CMYK{.ScaleTempFormat = ImageFormatScaling4,
                                        .Stride = 4,
                                        .Read = kInksRead,
                                        .TempBytes = {0, 1, 2, 3},
                                        .Write = kInksWritten};
inline constexpr ScalePair CMYK_to_G{.ScaleTempFormat = ImageFormatScaling1,
                                     .Stride = 1,
                                     .Read = {&ImageClassData::BlackOffset},
                                     .TempBytes = {0},
                                     .Write = kGrayWritten};
inline constexpr ScalePair RGB_to_RGB{
    .ScaleTempFormat = ImageFormatScaling4,
    .Stride = 4,
    .Read = kColourRead,
    .TempBytes = {0, 1, 2},
    .Write = {{&ImageClassData::RedOffset, 0}, {&ImageClassData::GreenOffset, 1}, {&ImageClassData::BlueOffset, 2}}};
inline constexpr ScalePair RGB_to_G{.ScaleTempFormat = ImageFormatScaling1,
                                    .Stride = 1,
                                    .Read = kColourRead,
                                    .TempBytes = {0},
                                    .Write = kGrayWritten,
                                    .Values = ScaleValues::kGrayOfColour};
// Reads a gray image as inks, like GA_to_CMYKA.
inline constexpr const ScalePair &G_to_CMYK = CMYK_to_CMYK;
// Gray stands in the second byte of the temp pixel, as in GA_to_RGBA.
inline constexpr ScalePair G_to_RGB{
    .ScaleTempFormat = ImageFormatScaling4,
    .Stride = 4,
    .Read = {&ImageClassData::GrayOffset},
    .TempBytes = {1},
    .Write = {{&ImageClassData::RedOffset, 0}, {&ImageClassData::GreenOffset, 0}, {&ImageClassData::BlueOffset, 0}}};
inline constexpr ScalePair G_to_G{.ScaleTempFormat = ImageFormatScaling1,
                                  .Stride = 1,
                                  .Read = {&ImageClassData::GrayOffset},
                                  .TempBytes = {0},
                                  .Write = kGrayWritten};

// The pair for two images, by their colour families and alpha alone; nil where the system converts nothing.
const ScalePair *FindScalePair(const ImageClassData &source, const ImageClassData &dest);

}  // namespace zvk::scaling
