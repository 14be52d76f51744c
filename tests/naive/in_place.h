// The operations that change an image in place, as plain loops over samples. They share nothing with the plug-in but
// the record's fields and its rows.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/naive/samples.h"

namespace naive {

struct Rect {
  int32_t x, y, w, h;
};

inline int32_t Sum(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t Negative(int32_t a) { return static_cast<int32_t>(0u - static_cast<uint32_t>(a)); }

inline void FitSide(int32_t &position, int32_t &size, int32_t limit) {
  if (size < 0) {
    position = Sum(position, size);
    size = Negative(size);
  }
  if (position < 0) {
    size = Sum(size, position);
    position = 0;
  }
  if (position >= limit) size = 0;
  if (Sum(position, size) > limit) size = Sum(limit, Negative(position));
}

inline Rect Fit(Rect r, const ImageClassData &image) {
  FitSide(r.x, r.w, image.Width);
  FitSide(r.y, r.h, image.Height);
  return r;
}

inline bool Usable(const ImageClassData &image) { return image.Valid && image.Width >= 0 && image.Height >= 1; }

// The channels of the image with alpha where `alphaFirst` has it.
inline std::string Channels(const ImageClassData &image, bool alphaFirst) {
  const std::string channels = ChannelsOf(image);
  return alphaFirst && channels.ends_with('A') ? "A" + channels.substr(0, channels.size() - 1) : channels;
}

// Calls row(address) for each row of the fitted rectangle that the image really has and can give.
template <class Row>
void Rows(ImageClassData &image, const Rect &r, Row row) {
  for (int64_t y = r.y; y < int64_t{r.y} + r.h && y < image.Height; ++y) {
    uint8_t *address = image.GetRow(&image, static_cast<int32_t>(y));
    if (address != nullptr) row(address);
  }
}

// Calls pixel(address) for each pixel of the fitted rectangle that the image really has.
template <class Pixel>
void Pixels(ImageClassData &image, const Rect &r, Pixel pixel) {
  Rows(image, r, [&](uint8_t *row) {
    for (int64_t x = r.x; x < int64_t{r.x} + r.w && x < image.Width; ++x) pixel(row + x * image.PixelSize);
  });
}

// How a row is filled as one run; count 0: it is not. What of a run lies at or behind an `end` that is not nil is left
// out below.
struct Packed {
  int32_t count = 0;
  int32_t smallest = 0;
};

inline Packed PackedOf(const ImageClassData &image) {
  std::vector<int32_t> offsets;
  if (image.HasRed) offsets.push_back(image.RedOffset);
  if (image.HasGreen) offsets.push_back(image.GreenOffset);
  if (image.HasBlue) offsets.push_back(image.BlueOffset);
  if (image.HasGray) offsets.push_back(image.GrayOffset);
  if (image.HasAlpha) offsets.push_back(image.AlphaOffset);
  if (image.IsMapping || static_cast<int32_t>(offsets.size()) != image.PixelSize) return {};
  return {image.PixelSize, *std::min_element(offsets.begin(), offsets.end())};
}

inline void FillRect(ImageClassData &image, Rect r, int32_t value, const uint8_t *end) {
  r = Fit(r, image);
  if (!Usable(image) || r.w < 1 || r.h < 1) return;
  const auto byte = static_cast<uint8_t>(value);
  if (const Packed packed = PackedOf(image); packed.count > 0) {
    Rows(image, r, [&](uint8_t *row) {
      const int64_t width = std::min<int64_t>(r.w, int64_t{image.Width} - r.x);
      uint8_t *first = row + int64_t{r.x} * packed.count + packed.smallest;
      for (int64_t i = 0; i < packed.count * width; ++i) {
        if (end == nullptr || first + i < end) first[i] = byte;
      }
    });
    return;
  }
  Pixels(image, r, [&](uint8_t *pixel) {
    for (const char channel : Channels(image, false)) pixel[OffsetOf(image, channel)] = byte;
  });
}

inline void FillRectRGB(ImageClassData &image, Rect r, const std::array<int32_t, 3> &colour) {
  r = Fit(r, image);
  if (!Usable(image) || r.w < 1 || r.h < 1 || !image.HasRed || !image.HasGreen || !image.HasBlue) return;
  Pixels(image, r, [&](uint8_t *pixel) {
    pixel[image.RedOffset] = static_cast<uint8_t>(colour[0]);
    pixel[image.GreenOffset] = static_cast<uint8_t>(colour[1]);
    pixel[image.BlueOffset] = static_cast<uint8_t>(colour[2]);
  });
}

inline void FillRectRGBA(ImageClassData &image, Rect r, const std::array<int32_t, 3> &colour, int32_t alpha) {
  r = Fit(r, image);
  if (!image.HasAlpha) return FillRectRGB(image, r, colour);
  if (!Usable(image) || r.w < 1 || r.h < 1 || !image.HasRed || !image.HasGreen || !image.HasBlue) return;
  Pixels(image, r, [&](uint8_t *pixel) {
    pixel[image.RedOffset] = static_cast<uint8_t>(colour[0]);
    pixel[image.GreenOffset] = static_cast<uint8_t>(colour[1]);
    pixel[image.BlueOffset] = static_cast<uint8_t>(colour[2]);
    pixel[image.AlphaOffset] = static_cast<uint8_t>(alpha);
  });
}

inline bool FillRectApply(ImageClassData &image, Rect r, const std::array<int32_t, 3> &colour, int32_t alpha) {
  if (!image.Valid || (!image.IsRGB && !image.IsGray)) return false;
  r = Fit(r, image);
  const auto a = static_cast<uint32_t>(alpha);
  if (image.IsRGB) {
    const uint32_t p = (255 - a) * 257, q = a * 257;
    Pixels(image, r, [&](uint8_t *pixel) {
      for (size_t i = 0; i < 3; ++i) {
        uint8_t &sample = pixel[OffsetOf(image, "RGB"[i])];
        sample = static_cast<uint8_t>((sample * p + static_cast<uint32_t>(colour[i]) * q) >> 16);
      }
    });
    return true;
  }
  const uint32_t weighted = static_cast<uint32_t>(colour[0]) * 77 + static_cast<uint32_t>(colour[1]) * 151 +
                            static_cast<uint32_t>(colour[2]) * 28;
  const auto g = static_cast<uint32_t>(static_cast<int32_t>(weighted) / 256);
  Pixels(image, r, [&](uint8_t *pixel) {
    uint8_t &sample = pixel[image.GrayOffset];
    sample = static_cast<uint8_t>(((sample * (255 - a) + g * a) * 257) >> 16);
  });
  return true;
}

inline void FillRectRandom(ImageClassData &image, Rect r, const uint8_t *end) {
  r = Fit(r, image);
  if (!Usable(image) || r.w < 1 || r.h < 1) return;
  if (const Packed packed = PackedOf(image); packed.count > 0) {
    Rows(image, r, [&](uint8_t *row) {
      const int64_t width = std::min<int64_t>(r.w, int64_t{image.Width} - r.x);
      for (int64_t i = int64_t{r.x} * packed.count; i < width * packed.count; ++i) {
        uint8_t *byte = row + packed.smallest + i;
        if (end == nullptr || byte < end) *byte = static_cast<uint8_t>(std::rand());
      }
    });
    return;
  }
  Pixels(image, r, [&](uint8_t *pixel) {
    for (const char channel : Channels(image, !image.IsRGB)) {
      pixel[OffsetOf(image, channel)] = static_cast<uint8_t>(std::rand());
    }
  });
}

inline void ClearRect(ImageClassData &image) {
  if (!Usable(image)) return;
  Rows(image, {0, 0, image.Width, image.Height}, [&](uint8_t *row) {
    for (int32_t i = 0; i < image.RowSize; ++i) row[i] = 0;
  });
}

inline void ClearRect(ImageClassData &image, Rect r) {
  r = Fit(r, image);
  if (!Usable(image) || r.w < 1 || r.h < 1) return;
  Pixels(image, r, [&](uint8_t *pixel) {
    for (int32_t i = 0; i < image.PixelSize; ++i) pixel[i] = 0;
  });
}

// A 16-bit sample that begins with the last byte of a storage has no second one: rows may be shorter than their pixels.
// Those of a table or file never are.
inline void Invert(ImageClassData &image, Rect r) {
  r = Fit(r, image);
  if (!Usable(image) || r.w < 1 || r.h < 1) return;
  const bool words = image.IsGray && !image.HasAlpha && image.BitsPerComponent == 16;
  // Of rows that run backwards the top one is the last.
  const int64_t size = std::max<int64_t>(image.TotalSize, std::abs(image.RowSize));
  const uint8_t *const last = image.Buffer != nullptr && !image.IsMapping ? image.Buffer + size - 1 : nullptr;
  Pixels(image, r, [&](uint8_t *pixel) {
    for (const char channel : Channels(image, true)) {
      uint8_t *sample = pixel + OffsetOf(image, channel);
      sample[0] = 255 - sample[0];
      if (words && sample != last) sample[1] = 255 - sample[1];
    }
  });
}

inline bool AutoLevel(ImageClassData &image, Rect r) {
  if (image.BitsPerComponent == 16 || !image.IsRGB || !Usable(image)) return false;
  r = Fit(r, image);
  if (r.w < 1 || r.h < 1) return false;
  std::array<int64_t, 256> histogram{};
  int64_t total = 0;
  Pixels(image, r, [&](const uint8_t *pixel) {
    const double lum =
        pixel[image.BlueOffset] * 0.01 + (pixel[image.GreenOffset] * 0.813 + pixel[image.RedOffset] * 0.177);
    ++histogram[static_cast<size_t>(lum)];
    ++total;
  });
  const volatile float lowProduct = static_cast<float>(total) * 0.005F;
  const volatile float highProduct = static_cast<float>(total) * 0.995F;
  int32_t low = 0, high = 0;
  int64_t cum = 0;
  for (int32_t i = 0; i < 256; ++i) {
    cum += histogram[static_cast<size_t>(i)];
    if (cum <= static_cast<int64_t>(lowProduct)) low = i;
    if (cum <= static_cast<int64_t>(highProduct)) high = i;
  }
  Pixels(image, r, [&](uint8_t *pixel) {
    for (const char channel : {'R', 'G', 'B'}) {
      uint8_t &sample = pixel[OffsetOf(image, channel)];
      const int32_t v = sample;
      sample = v < low    ? uint8_t{0}
               : v > high ? uint8_t{255}
               : v == low ? uint8_t{0}
                          : static_cast<uint8_t>(std::trunc((v - low) * (255.0 / (high - low))));
    }
  });
  return true;
}

}  // namespace naive
