// A resampler in plain nested loops, slow and obvious: the judge of the one under test, with which it shares nothing
// but the record of an image. Used by the tests and, as the thing to be faster than, by the benchmark.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

#include "image/image_record.h"

namespace naive {

using zvk::image::ImageClassData;

// --- filters, by mode ---

inline double Window(int mode) {
  const double windows[] = {1.0, 0.5, 3.0, 8.0, 2.0, 4.0, 3.0};
  return windows[mode - 1];
}

inline double SineOverIt(double t) {
  if (t == 0.0) return 1.0;
  const double angle = t * 3.141592653589793;
  return std::sin(angle) / angle;
}

// The weight at a distance of 0 or more; empty outside the filter's range.
inline std::optional<double> Weight(int mode, double a) {
  const double a2 = a * a;
  const double a3 = a * a * a;
  switch (mode) {
    case 1:
      if (a < 1.0) return 1.0 - a;
      break;
    case 2:
      if (a <= 0.5) return 1.0;
      break;
    case 3:
      if (a < 3.0) return SineOverIt(a) * SineOverIt(a / 3.0);
      break;
    case 4:
      if (a < 8.0) return SineOverIt(a) * SineOverIt(a * 0.125);
      break;
    case 5:
      if (a < 1.0) return (7.0 * a3 - 12.0 * a2 + 5.333333333333333) / 6.0;
      if (a < 2.0) return (-2.3333333333333335 * a3 + 12.0 * a2 - 20.0 * a + 10.666666666666666) / 6.0;
      break;
    case 6:
      if (a < 1.0) return (1.25 * a - 2.25) * a * a + 1.0;
      if (a < 2.0) return ((-0.75 * a + 3.75) * a - 6.0) * a + 3.0;
      break;
    case 7:
      if (a <= 1.0) return 1.3333333333333333 * a3 - 2.3333333333333335 * a2 + 1.0;
      if (a <= 2.0) return -0.5833333333333334 * a3 + 3.0 * a2 - 4.916666666666667 * a + 2.5;
      if (a <= 3.0) return 0.08333333333333333 * a3 - 0.6666666666666666 * a2 + 1.75 * a - 1.5;
      break;
  }
  return {};
}

// --- taps ---

inline int32_t ToInteger(double value) {
  if (std::isnan(value) || value <= -2147483649.0 || value >= 2147483648.0) return INT32_MIN;
  return static_cast<int32_t>(value);
}

struct Taps {
  std::vector<int32_t> positions;
  std::vector<float> weights;
  float weightSum = 0;
};

// The taps of one output position on an axis scaled by `scale`, with `size` input positions.
inline Taps TapsAt(int mode, bool horizontal, double position, double scale, int32_t size) {
  Taps taps;
  const double centre = (position + 0.5) / scale;
  int32_t left;
  int32_t right;
  if (scale < 1.0) {
    left = ToInteger(centre - Window(mode) / scale);
    right = ToInteger(centre + Window(mode) / scale);
  } else if (horizontal) {
    left = ToInteger(std::floor(centre - Window(mode)));
    right = ToInteger(std::ceil(centre + Window(mode)));
  } else {
    left = ToInteger(centre - Window(mode));
    right = ToInteger(centre + Window(mode));
  }
  if (left < 0) left = 0;
  if (!(right < size)) right = size - 1;
  double sum = 0.0;
  for (int32_t j = left; j <= right; ++j) {
    double x = centre - j - 0.5;
    if (scale < 1.0) x = x * scale;
    const std::optional<double> weight = Weight(mode, std::fabs(x));
    if (!weight || *weight == 0.0) continue;
    taps.positions.push_back(j);
    taps.weights.push_back(static_cast<float>(*weight));
    sum += *weight;
  }
  taps.weightSum = static_cast<float>(sum);
  return taps;
}

inline std::vector<Taps> TapsOfAxis(int mode, bool horizontal, int32_t count, double scale, int32_t size) {
  std::vector<Taps> table;
  double position = 0.0;
  for (int32_t i = 0; i < count; ++i) {
    table.push_back(TapsAt(mode, horizontal, position, scale, size));
    position += 1.0;
  }
  return table;
}

// --- pairs ---

// One byte (or 16-bit sample) of the destination and the byte of the temp pixel that it comes from.
struct Output {
  int32_t destOffset;
  int32_t tempByte;
};

struct Pair {
  int32_t tempFormat = 0;
  int32_t stride = 0;
  std::vector<int32_t> sourceOffsets;  // what is read
  bool makesGray = false;              // the first three that are read become one
  std::vector<int32_t> tempBytes;      // where the results stand in the temp pixel
  std::vector<Output> outputs;
  bool wide = false;  // 16-bit samples
};

inline std::optional<Pair> PairFor(const ImageClassData &s, const ImageClassData &d) {
  const bool bothAlpha = s.HasAlpha && d.HasAlpha;
  Pair pair;
  // What a temp pixel holds, by the source's and the destination's family.
  if ((s.IsCMYK || s.IsGray) && !s.IsRGB && d.IsCMYK) {
    pair.tempFormat = bothAlpha ? 37 : 36;
    pair.stride = bothAlpha ? 5 : 4;
    pair.sourceOffsets = {s.CyanOffset, s.MagentaOffset, s.RedOffset, s.BlackOffset};
    pair.tempBytes = {0, 1, 2, 3};
    pair.outputs = {{d.CyanOffset, 0}, {d.MagentaOffset, 1}, {d.YellowOffset, 2}, {d.BlackOffset, 3}};
    if (bothAlpha) {
      pair.sourceOffsets.push_back(s.AlphaOffset);
      pair.tempBytes.push_back(4);
      pair.outputs.push_back({d.AlphaOffset, 4});
    }
    return pair;
  }
  if (s.IsCMYK) {
    if (d.IsRGB || !d.IsGray) return {};
    pair.tempFormat = bothAlpha ? 34 : 33;
    pair.stride = bothAlpha ? 2 : 1;
    pair.sourceOffsets = {s.BlackOffset};
    pair.tempBytes = {0};
    pair.outputs = {{d.GrayOffset, 0}};
    if (bothAlpha) {
      pair.sourceOffsets.push_back(s.AlphaOffset);
      pair.tempBytes.push_back(1);
      pair.outputs.push_back({d.AlphaOffset, 1});
    }
    return pair;
  }
  if (s.IsRGB) {
    if (d.IsCMYK) return {};
    pair.sourceOffsets = {s.RedOffset, s.GreenOffset, s.BlueOffset};
    if (bothAlpha) pair.sourceOffsets.push_back(s.AlphaOffset);
    if (d.IsRGB) {
      pair.tempFormat = 36;
      pair.stride = 4;
      pair.tempBytes = {0, 1, 2};
      pair.outputs = {{d.RedOffset, 0}, {d.GreenOffset, 1}, {d.BlueOffset, 2}};
      if (bothAlpha) {
        pair.tempBytes.push_back(3);
        pair.outputs.push_back({d.AlphaOffset, 3});
      }
      return pair;
    }
    if (d.IsGray) {
      pair.makesGray = true;
      pair.tempFormat = bothAlpha ? 34 : 33;
      pair.stride = bothAlpha ? 2 : 1;
      pair.tempBytes = {0};
      pair.outputs = {{d.GrayOffset, 0}};
      if (bothAlpha) {
        pair.tempBytes.push_back(1);
        pair.outputs.push_back({d.AlphaOffset, 1});
      }
      return pair;
    }
    return {};
  }
  if (!s.IsGray) return {};
  pair.sourceOffsets = {s.GrayOffset};
  if (d.IsRGB) {
    pair.tempFormat = 36;
    pair.stride = 4;
    pair.tempBytes = {1};
    pair.outputs = {{d.RedOffset, 1}, {d.GreenOffset, 1}, {d.BlueOffset, 1}};
    if (bothAlpha) {
      pair.sourceOffsets.push_back(s.AlphaOffset);
      pair.tempBytes.push_back(3);
      pair.outputs.push_back({d.AlphaOffset, 3});
    }
    return pair;
  }
  if (!d.IsGray) return {};
  pair.tempFormat = 33;
  pair.stride = 1;
  pair.tempBytes = {0};
  pair.outputs = {{d.GrayOffset, 0}};
  if (bothAlpha) {
    pair.tempFormat = 34;
    pair.stride = 2;
    return pair;
  }
  if (s.HasAlpha || d.HasAlpha) return pair;
  if (s.BitsPerComponent == 16 && d.BitsPerComponent == 16) {
    pair.tempFormat = 34;
    pair.stride = 2;
    pair.wide = true;
    return pair;
  }
  if (s.BitsPerComponent == 16 || d.BitsPerComponent == 16) return {};
  return pair;
}

// --- passes ---

inline double Sample(const uint8_t *address, bool wide) {
  if (!wide) return *address;
  uint16_t sample;
  std::memcpy(&sample, address, 2);
  return sample;
}

inline void PutSample(uint8_t *address, int32_t value, bool wide) {
  if (!wide) {
    *address = static_cast<uint8_t>(value);
    return;
  }
  const auto sample = static_cast<uint16_t>(value);
  std::memcpy(address, &sample, 2);
}

inline int32_t Finished(double sum, float weightSum, double rounding, bool wide) {
  const int32_t value = ToInteger(sum / double{weightSum} + rounding);
  const int32_t limit = wide ? 65535 : 255;
  if (value < 0) return 0;
  return value > limit ? limit : value;
}

inline void PassOverColumns(const Pair &pair, ImageClassData &source, ImageClassData &temp,
                            const std::vector<Taps> &table, double rounding = 0.5) {
  for (int32_t y = 0; y < source.Height; ++y) {
    const uint8_t *sourceRow = source.GetRow(&source, y);
    for (size_t x = 0; x < table.size(); ++x) {
      const Taps &taps = table[x];
      double sums[5] = {};
      for (size_t t = 0; t < taps.positions.size(); ++t) {
        const double w = taps.weights[t];
        if (w == 0.0) continue;
        const uint8_t *pixel = sourceRow + ptrdiff_t{taps.positions[t]} * source.PixelSize;
        double samples[5] = {};
        for (size_t c = 0; c < pair.sourceOffsets.size(); ++c) {
          samples[c] = Sample(pixel + pair.sourceOffsets[c], pair.wide);
        }
        if (pair.makesGray) {
          sums[0] += (samples[2] * 0.11 * w) + ((samples[1] * 0.59 * w) + (samples[0] * 0.3 * w));
          if (pair.tempBytes.size() == 2) sums[1] += samples[3] * w;
        } else {
          for (size_t c = 0; c < pair.tempBytes.size(); ++c) sums[c] += samples[c] * w;
        }
      }
      uint8_t pixel[5] = {};
      for (size_t c = 0; c < pair.tempBytes.size(); ++c) {
        PutSample(pixel + pair.tempBytes[c], Finished(sums[c], taps.weightSum, rounding, pair.wide), pair.wide);
      }
      uint8_t *tempRow = temp.GetRow(&temp, y);
      if (tempRow == nullptr) continue;
      for (int32_t i = 0; i < pair.stride; ++i) tempRow[static_cast<ptrdiff_t>(x) * pair.stride + i] = pixel[i];
    }
  }
}

inline void PassOverRows(const Pair &pair, ImageClassData &temp, ImageClassData &dest, const std::vector<Taps> &table,
                         int32_t width) {
  for (size_t y = 0; y < table.size(); ++y) {
    const Taps &taps = table[y];
    for (int32_t x = 0; x < width; ++x) {
      double sums[5] = {};  // by the byte of the temp pixel
      for (size_t t = 0; t < taps.positions.size(); ++t) {
        if (taps.weights[t] == 0.0f) continue;
        const uint8_t *tempRow = temp.GetRow(&temp, taps.positions[t]);
        if (tempRow == nullptr) continue;
        for (const int32_t byte : pair.tempBytes) {
          sums[byte] += Sample(tempRow + ptrdiff_t{x} * pair.stride + byte, pair.wide) * double{taps.weights[t]};
        }
      }
      uint8_t *destRow = dest.GetRow(&dest, static_cast<int32_t>(y));
      if (destRow == nullptr) continue;
      for (const Output &output : pair.outputs) {
        PutSample(destRow + ptrdiff_t{x} * dest.PixelSize + output.destOffset,
                  Finished(sums[output.tempByte], taps.weightSum, 0.5, pair.wide), pair.wide);
      }
    }
  }
}

// Scales usable images through a temp image that the caller has made. False for formats that form no pair.
inline bool Scale(ImageClassData &dest, ImageClassData &source, ImageClassData &temp, int mode, int32_t width,
                  int32_t height, double horizontalRounding = 0.5) {
  const std::optional<Pair> pair = PairFor(source, dest);
  if (!pair) return false;
  const double xscale = static_cast<double>(width) / source.Width;
  const double yscale = static_cast<double>(height) / source.Height;
  PassOverColumns(*pair, source, temp, TapsOfAxis(mode, true, width, xscale, source.Width), horizontalRounding);
  PassOverRows(*pair, temp, dest, TapsOfAxis(mode, false, height, yscale, temp.Height), width);
  return true;
}

}  // namespace naive
