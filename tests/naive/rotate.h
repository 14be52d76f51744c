// A rotation by three shears in plain nested loops, row by row and column by column, slow and obvious: the judge of the
// one under test, with which it shares nothing but the record of an image and where new images come from. Used by the
// tests and, as the thing to be faster than, by the benchmark.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "host/host_services.h"
#include "image/image_factory.h"
#include "image/image_record.h"

namespace naive {

using zvk::image::ImageClassData;
using zvk::image::RecordOf;

// Backgrounds by channel, as a caller gives them.
struct RotateBackground {
  int32_t red = 0, green = 0, blue = 0, alpha = 0, gray = 0, cyan = 0, magenta = 0, yellow = 0, black = 0;
};

// One channel of a shear: where both sides keep it, and its background.
struct ShearedChannel {
  int32_t ImageClassData::*offset;
  uint8_t background;
};

inline std::vector<ShearedChannel> ShearedChannels(const ImageClassData &base, const RotateBackground &all) {
  const auto byte = [](int32_t value) { return static_cast<uint8_t>(value & 255); };
  const ShearedChannel alpha{&ImageClassData::AlphaOffset, byte(all.alpha)};
  const ShearedChannel gray{&ImageClassData::GrayOffset, byte(all.gray)};
  const std::vector<ShearedChannel> colours{{&ImageClassData::RedOffset, byte(all.red)},
                                            {&ImageClassData::GreenOffset, byte(all.green)},
                                            {&ImageClassData::BlueOffset, byte(all.blue)}};
  const std::vector<ShearedChannel> inks{{&ImageClassData::CyanOffset, byte(all.cyan)},
                                         {&ImageClassData::MagentaOffset, byte(all.magenta)},
                                         {&ImageClassData::YellowOffset, byte(all.yellow)},
                                         {&ImageClassData::BlackOffset, byte(all.black)}};
  std::vector<ShearedChannel> channels;
  if (base.IsGray) {
    if (base.HasAlpha) channels.push_back(alpha);
    channels.push_back(gray);
  } else if (base.IsRGB) {
    channels = colours;
    if (base.HasAlpha) channels.push_back(alpha);
  } else if (base.IsCMYK) {
    if (base.HasAlpha) channels.push_back(alpha);
    channels.insert(channels.end(), inks.begin(), inks.end());
  }
  return channels;
}

inline uint8_t &Sample(ImageClassData &image, int64_t x, int64_t y, const ShearedChannel &channel) {
  return image.GetRow(&image, static_cast<int32_t>(y))[x * image.PixelSize + image.*channel.offset];
}

inline uint8_t Cut(double value) { return static_cast<uint8_t>(static_cast<int32_t>(value)); }

inline void SkewRow(ImageClassData &source, ImageClassData &dest, int32_t row, int32_t offset, double weight,
                    const std::vector<ShearedChannel> &channels) {
  for (int32_t x = 0; x < dest.Width; ++x) {
    for (const ShearedChannel &channel : channels) Sample(dest, x, row, channel) = channel.background;
  }
  uint8_t left[5] = {};
  for (size_t c = 0; c < channels.size(); ++c) left[c] = Cut(channels[c].background * weight);
  for (int32_t x = 0; x < source.Width; ++x) {
    uint8_t moved[5] = {};
    for (size_t c = 0; c < channels.size(); ++c) {
      const uint8_t p = Sample(source, x, row, channels[c]);
      const uint8_t oldleft = left[c];
      left[c] = Cut(p * weight);
      moved[c] = static_cast<uint8_t>(p + oldleft - left[c]);
    }
    if (offset + x < 0 || offset + x >= dest.Width) continue;
    for (size_t c = 0; c < channels.size(); ++c) Sample(dest, offset + x, row, channels[c]) = moved[c];
  }
  const int32_t last = source.Width + offset;
  if (last < 0 || last >= dest.Width) return;
  for (size_t c = 0; c < channels.size(); ++c) {
    const uint8_t background = channels[c].background;
    Sample(dest, last, row, channels[c]) = Cut(background - (background * weight - left[c]));
  }
}

inline void SkewColumn(ImageClassData &source, ImageClassData &dest, int32_t column, double f, int32_t rows,
                       const std::vector<ShearedChannel> &channels) {
  const auto offset = static_cast<int32_t>(std::floor(f));
  const double weight = f - offset;
  for (int32_t y = 0; y < dest.Height; ++y) {
    for (const ShearedChannel &channel : channels) Sample(dest, column, y, channel) = channel.background;
  }
  uint8_t left[5] = {};
  for (size_t c = 0; c < channels.size(); ++c) left[c] = Cut(channels[c].background * weight);
  for (int32_t y = 0; y < source.Height; ++y) {
    uint8_t moved[5] = {};
    for (size_t c = 0; c < channels.size(); ++c) {
      const uint8_t p = Sample(source, column, y, channels[c]);
      const uint8_t oldleft = left[c];
      left[c] = Cut(p * weight);
      moved[c] = static_cast<uint8_t>(p + oldleft - left[c]);
    }
    if (offset + y < 0 || offset + y >= rows) continue;
    for (size_t c = 0; c < channels.size(); ++c) Sample(dest, column, offset + y, channels[c]) = moved[c];
  }
  const int32_t last = offset + source.Height - 1;
  if (last < 0 || last >= rows) return;
  for (size_t c = 0; c < channels.size(); ++c) {
    const uint8_t background = channels[c].background;
    Sample(dest, column, last, channels[c]) = Cut(background - (background * weight - left[c]));
  }
}

// The image turned by an angle up to 45 degrees, or above 315; empty if an image could not be made. Images are usable,
// and nobody has to be given time.
inline zvk::host::ObjectReference RotateByShears(REALobject base, double a, const RotateBackground &background) {
  ImageClassData &image = *RecordOf(base);
  const std::vector<ShearedChannel> channels = ShearedChannels(image, background);
  if (channels.empty()) return {};
  const int32_t width = image.Width;
  const int32_t height = image.Height;
  const double r = a * 3.141592653589793 / 180;
  const double s = std::sin(r);
  const double t = std::tan(r * 0.5);
  const double c = std::cos(r);

  const int32_t width1 = width + static_cast<int32_t>(std::fabs(t) * height);
  const zvk::host::ObjectReference first = CreatePicture(&image, width1, height, image.ImageFormat);
  if (!first) return {};
  ImageClassData &one = *RecordOf(first.Get());
  for (int32_t u = 0; u < height; ++u) {
    const int32_t k = t >= 0 ? u : u - height;
    const double skew = (k + 0.5) * t;
    const auto i = static_cast<int32_t>(std::floor(skew));
    SkewRow(image, one, u, i, skew - i, channels);
  }

  const int32_t height2 = static_cast<int32_t>(height * c + width * std::fabs(s)) + 1;
  const zvk::host::ObjectReference second = CreatePicture(&image, width1, height2, image.ImageFormat);
  if (!second) return {};
  ImageClassData &two = *RecordOf(second.Get());
  double f = s > 0 ? (width - 1) * s : -((width - width1) * s);
  for (int32_t u = 0; u < width1; ++u) {
    SkewColumn(one, two, u, f, height2, channels);
    f = f - s;
  }

  const int32_t width3 = static_cast<int32_t>(width * c + height * std::fabs(s)) + 1;
  const int32_t height3 = static_cast<int32_t>(height * c + width * std::fabs(s)) + 1;
  zvk::host::ObjectReference third = CreatePicture(&image, width3, height3, two.ImageFormat);
  if (!third) return {};
  const double x = (width - 1) * s;
  f = s >= 0 ? -(x * t) : (-(height3 - 1) - x) * t;
  for (int32_t u = 0; u < height3; ++u) {
    const auto i = static_cast<int32_t>(std::floor(f));
    SkewRow(two, *RecordOf(third.Get()), u, i, f - i, channels);
    f = f + t;
  }
  return third;
}

}  // namespace naive
