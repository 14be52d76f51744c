#include "scaling/scale_pairs.h"

namespace zvk::scaling {

namespace {

const ScalePair *PairOfInks(bool alpha, const ImageClassData &dest) {
  if (dest.IsCMYK) return alpha && dest.HasAlpha ? &CMYKA_to_CMYKA : &CMYK_to_CMYK;
  if (dest.IsRGB) return nullptr;
  if (dest.IsGray) return alpha && dest.HasAlpha ? &CMYKA_to_GA : &CMYK_to_G;
  return nullptr;
}

const ScalePair *PairOfColour(bool alpha, const ImageClassData &dest) {
  if (dest.IsCMYK) return nullptr;
  if (dest.IsRGB) return alpha && dest.HasAlpha ? &RGBA_to_RGBA : &RGB_to_RGB;
  if (dest.IsGray) return alpha && dest.HasAlpha ? &RGBA_to_GA : &RGB_to_G;
  return nullptr;
}

const ScalePair *PairOfGray(bool alpha, const ImageClassData &source, const ImageClassData &dest) {
  if (dest.IsCMYK) return alpha && dest.HasAlpha ? &GA_to_CMYKA : &G_to_CMYK;
  if (dest.IsRGB) return alpha && dest.HasAlpha ? &GA_to_RGBA : &G_to_RGB;
  if (!dest.IsGray) return nullptr;
  if (alpha) return dest.HasAlpha ? &GA_to_GA : &G_to_G;
  if (dest.HasAlpha) return &G_to_G;
  // Wide samples count only between two images of nothing but gray; elsewhere they go through a pair of bytes.
  const bool wideSource = source.BitsPerComponent == 16;
  const bool wideDest = dest.BitsPerComponent == 16;
  if (wideSource != wideDest) return nullptr;
  return wideSource ? &G16_to_G16 : &G_to_G;
}

}  // namespace

const ScalePair *FindScalePair(const ImageClassData &source, const ImageClassData &dest) {
  if (source.IsCMYK) return PairOfInks(source.HasAlpha, dest);
  if (source.IsRGB) return PairOfColour(source.HasAlpha, dest);
  if (source.IsGray) return PairOfGray(source.HasAlpha, source, dest);
  return nullptr;
}

}  // namespace zvk::scaling
