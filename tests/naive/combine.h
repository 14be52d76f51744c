// Combine as plain nested loops, written from its tables alone, one sample at a time.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "tests/naive/samples.h"

namespace naive::combining {

struct Numbers {
  int32_t destX, destY, sourceX, sourceY, width, height;
};

// The rectangle in the order in which Combine tells its steps. False if nothing is to be combined.
inline bool FitNaively(Numbers &n, const ImageClassData &dest, const ImageClassData &image) {
  if (n.sourceX < 0) {
    n.width += n.sourceX;
    n.destX += n.sourceX;
    n.sourceX = 0;
  }
  if (n.sourceY < 0) {
    n.height += n.sourceY;
    n.destY += n.sourceY;
    n.sourceY = 0;
  }
  if (n.width < 0) {
    n.destX += n.width;
    n.width = -n.width;
  }
  if (n.height < 0) {
    n.destY += n.height;
    n.height = -n.height;
  }
  if (n.destX < 0) {
    n.width += n.destX;
    n.sourceX -= n.destX;
    n.destX = 0;
  }
  if (n.destY < 0) {
    n.height += n.destY;
    n.sourceY -= n.destY;
    n.destY = 0;
  }
  if (dest.Width <= n.destX) {
    n.width = 0;
  } else if (n.destX + n.width > dest.Width) {
    n.width = dest.Width - n.destX;
  }
  if (dest.Height <= n.destY) {
    n.height = 0;
  } else if (n.destY + n.height > dest.Height) {
    n.height = dest.Height - n.destY;
  }
  if (n.width + n.sourceX > image.Width) n.width = image.Width - n.sourceX;
  if (n.height + n.sourceY > image.Height) n.height = image.Height - n.sourceY;
  return n.width >= 1 && n.height >= 1;
}

// A pixel of an image, read whole.
struct Pixel {
  bool gray = false;  // else red, green and blue
  int g = 0;
  int c[3] = {};
  bool hasAlpha = false;
  int a = 0;

  int LumaOrGray() const { return gray ? g : (77 * c[0] + 151 * c[1] + 28 * c[2]) >> 8; }
  int Colour(int i) const { return gray ? g : c[i]; }
  int Alpha() const { return hasAlpha ? a : 255; }
};

inline Pixel PixelAt(ImageClassData &image, int32_t x, int32_t y) {
  Pixel pixel;
  pixel.gray = image.IsGray;
  if (image.IsGray) pixel.g = *SampleAt(image, x, y, image.GrayOffset);
  if (image.IsRGB) {
    pixel.c[0] = *SampleAt(image, x, y, image.RedOffset);
    pixel.c[1] = *SampleAt(image, x, y, image.GreenOffset);
    pixel.c[2] = *SampleAt(image, x, y, image.BlueOffset);
  }
  pixel.hasAlpha = image.HasAlpha;
  if (image.HasAlpha) pixel.a = *SampleAt(image, x, y, image.AlphaOffset);
  return pixel;
}

// Values are stored in 8 bits.
inline void SetPixel(ImageClassData &image, int32_t x, int32_t y, const Pixel &pixel, bool withAlpha) {
  const auto set = [&](int32_t offset, int value) { *SampleAt(image, x, y, offset) = static_cast<uint8_t>(value); };
  if (image.IsGray) {
    set(image.GrayOffset, pixel.g);
  } else {
    set(image.RedOffset, pixel.c[0]);
    set(image.GreenOffset, pixel.c[1]);
    set(image.BlueOffset, pixel.c[2]);
  }
  if (withAlpha && image.HasAlpha) set(image.AlphaOffset, pixel.a);
}

inline bool IsKnown(const ImageClassData &image) { return image.IsGray || image.IsRGB; }

// --- with a mask image ---

inline Pixel Interpolated(const Pixel &d, const Pixel &s, const Pixel &m) {
  Pixel result;
  if (d.gray) {
    const int mg = m.LumaOrGray();
    result.g = ((255 - mg) * s.LumaOrGray() + d.g * mg) / 255;
  } else {
    for (int i = 0; i < 3; ++i) {
      result.c[i] = ((255 - m.Colour(i)) * s.Colour(i) + d.c[i] * m.Colour(i)) / 255;
    }
  }
  result.a = ((255 - m.Alpha()) * s.Alpha() + d.Alpha() * m.Alpha()) / 255;
  return result;
}

inline Pixel Summed(const Pixel &d, const Pixel &s, const Pixel &m) {
  Pixel result;
  if (d.gray) {
    result.g = d.g * m.LumaOrGray() / 255 + s.LumaOrGray();
  } else {
    for (int i = 0; i < 3; ++i) result.c[i] = m.Colour(i) * d.Alpha() / 255 + s.Colour(i);
  }
  result.a = d.Alpha() * m.Alpha() / 255 + s.Alpha();
  return result;
}

inline void BlendNaively(ImageClassData &dest, ImageClassData &source, ImageClassData &mask, bool premultiplied,
                         const Numbers &n) {
  if (!IsKnown(dest) || !IsKnown(source) || !IsKnown(mask)) return;
  for (int32_t y = 0; y < n.height; ++y) {
    for (int32_t x = 0; x < n.width; ++x) {
      const Pixel d = PixelAt(dest, n.destX + x, n.destY + y);
      const Pixel s = PixelAt(source, n.sourceX + x, n.sourceY + y);
      const Pixel m = PixelAt(mask, n.sourceX + x, n.sourceY + y);
      SetPixel(dest, n.destX + x, n.destY + y, premultiplied ? Summed(d, s, m) : Interpolated(d, s, m), true);
    }
  }
}

// --- with a flat colour ---

inline int ComponentOf(int32_t colour, int i) { return colour >> (16 - 8 * i) & 255; }
inline int LumaOf(const int (&c)[3]) { return (77 * c[0] + 151 * c[1] + 28 * c[2]) >> 8; }

// The colour through the image.
inline Pixel ThroughImage(const Pixel &d, const Pixel &image, bool premultiplied, int32_t colour) {
  const int m = image.gray ? image.g : (image.c[0] + image.c[1] + image.c[2]) / 3;
  Pixel result;
  int t[3];
  for (int i = 0; i < 3; ++i) {
    const int component = ComponentOf(colour, i);
    const int own = d.gray ? d.g : d.c[i];
    t[i] = premultiplied ? own * m / 255 + component : ((255 - m) * component + m * own) / 255;
    result.c[i] = t[i];
  }
  result.g = LumaOf(t);
  return result;
}

// The image through the colour.
inline Pixel ThroughColour(const Pixel &d, const Pixel &image, bool premultiplied, int32_t colour) {
  const int components[3] = {ComponentOf(colour, 0), ComponentOf(colour, 1), ComponentOf(colour, 2)};
  const auto laidOn = [&](int own, int c, int s) {
    return premultiplied ? own * c / 255 + s : (own * c + s * (255 - c)) / 255;
  };
  Pixel result;
  result.g = laidOn(d.g, LumaOf(components), image.LumaOrGray());
  for (int i = 0; i < 3; ++i) result.c[i] = laidOn(d.c[i], components[i], image.Colour(i));
  return result;
}

inline void BlendFlatNaively(ImageClassData &dest, ImageClassData &image, bool premultiplied, bool imageIsMask,
                             int32_t colour, const Numbers &n) {
  if (!IsKnown(dest) || !IsKnown(image)) return;
  for (int32_t y = 0; y < n.height; ++y) {
    for (int32_t x = 0; x < n.width; ++x) {
      const Pixel d = PixelAt(dest, n.destX + x, n.destY + y), s = PixelAt(image, n.sourceX + x, n.sourceY + y);
      SetPixel(dest, n.destX + x, n.destY + y,
               imageIsMask ? ThroughImage(d, s, premultiplied, colour) : ThroughColour(d, s, premultiplied, colour),
               false);
    }
  }
}

}  // namespace naive::combining
