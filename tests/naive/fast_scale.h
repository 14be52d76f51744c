// A scaler by nearest pixels in plain loops, slow and obvious: the judge of the one under test, and the thing that it
// is to be faster than.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "image/image_record.h"

namespace naive {

using zvk::image::ImageClassData;

// Where the bytes of a destination pixel come from.
struct FastRule {
  // Destination offset and source offset.
  std::vector<std::pair<int32_t, int32_t>> copies;
  std::vector<int32_t> zeroes;        // destination offsets
  std::optional<int32_t> grayOffset;  // in the destination: gray of the source's colours
};

// Empty for formats that are refused.
inline std::optional<FastRule> FastRuleFor(const ImageClassData &s, const ImageClassData &d) {
  if (s.BitsPerComponent == 16 || d.BitsPerComponent == 16) return {};
  const bool sourceAlpha = s.HasAlpha != 0;
  const bool destAlpha = d.HasAlpha != 0;
  FastRule rule;
  if (s.IsCMYK && d.IsCMYK) {
    rule.copies = {{d.CyanOffset, s.CyanOffset},
                   {d.MagentaOffset, s.MagentaOffset},
                   {d.YellowOffset, s.YellowOffset},
                   {d.BlackOffset, s.BlackOffset}};
    if (sourceAlpha && destAlpha) rule.copies.emplace_back(d.AlphaOffset, s.AlphaOffset);
  } else if (s.IsCMYK && d.IsGray) {
    rule.copies = {{d.GrayOffset, s.BlackOffset}};
    if (sourceAlpha && destAlpha) rule.copies.emplace_back(d.AlphaOffset, s.AlphaOffset);
  } else if (s.IsRGB && d.IsRGB) {
    rule.copies = {{d.RedOffset, s.RedOffset}, {d.GreenOffset, s.GreenOffset}, {d.BlueOffset, s.BlueOffset}};
    if (sourceAlpha && destAlpha) rule.copies.emplace_back(d.AlphaOffset, s.AlphaOffset);
  } else if (s.IsRGB && d.IsGray) {
    rule.grayOffset = d.GrayOffset;
    if (sourceAlpha && destAlpha) rule.copies = {{d.AlphaOffset, s.AlphaOffset}};
  } else if (s.IsGray && d.IsCMYK) {
    if (sourceAlpha != destAlpha) return {};
    rule.zeroes = {d.CyanOffset, d.MagentaOffset, d.YellowOffset};
    rule.copies = {{d.BlackOffset, s.GrayOffset}};
  } else if (s.IsGray && d.IsRGB) {
    rule.copies = {{d.RedOffset, s.GrayOffset}, {d.GreenOffset, s.GrayOffset}, {d.BlueOffset, s.GrayOffset}};
  } else if (s.IsGray && d.IsGray) {
    rule.copies = {{d.GrayOffset, s.GrayOffset}};
    if (sourceAlpha && destAlpha) rule.copies.emplace_back(d.AlphaOffset, s.AlphaOffset);
  } else {
    return {};
  }
  return rule;
}

// Scales usable images that hold one family each.
inline bool ScaleFast(ImageClassData &dest, ImageClassData &source, int32_t width, int32_t height) {
  const std::optional<FastRule> rule = FastRuleFor(source, dest);
  const int32_t w = std::min(dest.Width, width);
  const int32_t h = std::min(dest.Height, height);
  if (!rule || w < 1 || h < 1) return false;
  const double xstep = static_cast<double>(source.Width) / w;
  const double ystep = static_cast<double>(source.Height) / h;
  double v = 0.0;
  for (int32_t y = 0; y < h; ++y) {
    uint8_t *destRow = dest.GetRow(&dest, y);
    const uint8_t *sourceRow = source.GetRow(&source, static_cast<int32_t>(ystep * v));
    double u = 0.0;
    for (int32_t x = 0; x < w; ++x) {
      const uint8_t *from = sourceRow + ptrdiff_t{static_cast<int32_t>(xstep * u)} * source.PixelSize;
      uint8_t *to = destRow + ptrdiff_t{x} * dest.PixelSize;
      // All is read before anything is written, in the order of the channels: gray before alpha, black last.
      uint8_t read[5] = {};
      int32_t gray = 0;
      for (size_t i = 0; i < rule->copies.size(); ++i) read[i] = from[rule->copies[i].second];
      if (rule->grayOffset) {
        gray = (77 * from[source.RedOffset] + 151 * from[source.GreenOffset] + 28 * from[source.BlueOffset]) >> 8;
        to[*rule->grayOffset] = static_cast<uint8_t>(gray);
      }
      for (const int32_t offset : rule->zeroes) to[offset] = 0;
      for (size_t i = 0; i < rule->copies.size(); ++i) to[rule->copies[i].first] = read[i];
      u += 1.0;
    }
    v += 1.0;
  }
  return true;
}

}  // namespace naive
