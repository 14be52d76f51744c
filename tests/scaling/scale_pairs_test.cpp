#include "scaling/scale_pairs.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "image/image_formats.h"

namespace zvk::scaling {
namespace {

ImageClassData Record(int32_t format) {
  ImageClassData record{};
  InitImageClassData(&record, 4, 4, format);
  return record;
}

const ScalePair *PairOf(int32_t source, int32_t dest) { return FindScalePair(Record(source), Record(dest)); }

// How a pair sees a format.
std::string Kind(int32_t format) {
  if (format == 41) return "G16";
  if (format == 12 || format == 13) return "GA";
  if (format == 11 || (format >= 15 && format <= 21)) return "G";
  if (format == 2 || format == 4 || format == 7 || format == 9) return "RGBA";
  if (format >= 1 && format <= 10) return "RGB";
  if (format == 24 || format == 25 || format == 29 || format == 30) return "CMYKA";
  if (format >= 23 && format <= 32) return "CMYK";
  return "none";
}

// The whole decision, written out by kinds; what is not here is refused.
const std::map<std::string, const ScalePair *> kDecisions = {{"CMYKA CMYKA", &CMYKA_to_CMYKA},
                                                             {"CMYKA CMYK", &CMYK_to_CMYK},
                                                             {"CMYKA GA", &CMYKA_to_GA},
                                                             {"CMYKA G", &CMYK_to_G},
                                                             {"CMYKA G16", &CMYK_to_G},
                                                             {"CMYK CMYKA", &CMYK_to_CMYK},
                                                             {"CMYK CMYK", &CMYK_to_CMYK},
                                                             {"CMYK GA", &CMYK_to_G},
                                                             {"CMYK G", &CMYK_to_G},
                                                             {"CMYK G16", &CMYK_to_G},
                                                             {"RGBA RGBA", &RGBA_to_RGBA},
                                                             {"RGBA RGB", &RGB_to_RGB},
                                                             {"RGBA GA", &RGBA_to_GA},
                                                             {"RGBA G", &RGB_to_G},
                                                             {"RGBA G16", &RGB_to_G},
                                                             {"RGB RGBA", &RGB_to_RGB},
                                                             {"RGB RGB", &RGB_to_RGB},
                                                             {"RGB GA", &RGB_to_G},
                                                             {"RGB G", &RGB_to_G},
                                                             {"RGB G16", &RGB_to_G},
                                                             {"GA CMYKA", &GA_to_CMYKA},
                                                             {"GA CMYK", &G_to_CMYK},
                                                             {"GA RGBA", &GA_to_RGBA},
                                                             {"GA RGB", &G_to_RGB},
                                                             {"GA GA", &GA_to_GA},
                                                             {"GA G", &G_to_G},
                                                             {"GA G16", &G_to_G},
                                                             {"G CMYKA", &G_to_CMYK},
                                                             {"G CMYK", &G_to_CMYK},
                                                             {"G RGBA", &G_to_RGB},
                                                             {"G RGB", &G_to_RGB},
                                                             {"G GA", &G_to_G},
                                                             {"G G", &G_to_G},
                                                             {"G16 CMYKA", &G_to_CMYK},
                                                             {"G16 CMYK", &G_to_CMYK},
                                                             {"G16 RGBA", &G_to_RGB},
                                                             {"G16 RGB", &G_to_RGB},
                                                             {"G16 GA", &G_to_G},
                                                             {"G16 G16", &G16_to_G16}};

TEST(ScalePairs, TheDecisionForAllFormats) {
  for (int32_t source = 1; source <= 41; ++source) {
    for (int32_t dest = 1; dest <= 41; ++dest) {
      if (source == 14 || dest == 14) continue;
      const auto decision = kDecisions.find(Kind(source) + " " + Kind(dest));
      const ScalePair *expected = decision != kDecisions.end() ? decision->second : nullptr;
      EXPECT_EQ(PairOf(source, dest), expected) << source << " to " << dest;
    }
  }
}

TEST(ScalePairs, AByteOrderNeedsNoPairOfItsOwn) {
  EXPECT_EQ(PairOf(ImageFormatBGRA, ImageFormatARGB), &RGBA_to_RGBA);
  EXPECT_EQ(PairOf(ImageFormatKYMCA, ImageFormatACMYK), &CMYKA_to_CMYKA);
  EXPECT_EQ(PairOf(ImageFormatGA, ImageFormatAG), &GA_to_GA);
  EXPECT_EQ(PairOf(ImageFormat3of4, ImageFormatG), &G_to_G);
}

TEST(ScalePairs, Gray16GoesWithItselfOnlyAmongPlainGray) {
  EXPECT_EQ(PairOf(ImageFormatG, ImageFormatGray16), nullptr);
  EXPECT_EQ(PairOf(ImageFormatGray16, ImageFormatG), nullptr);
  EXPECT_EQ(PairOf(ImageFormatGray16, ImageFormat1of3), nullptr);
  EXPECT_EQ(PairOf(ImageFormatGray16, ImageFormatRGB), &G_to_RGB);
}

TEST(ScalePairs, NoColourModelIsConverted) {
  EXPECT_EQ(PairOf(ImageFormatRGB, ImageFormatCMYK), nullptr);
  EXPECT_EQ(PairOf(ImageFormatRGBA, ImageFormatCMYKA), nullptr);
  EXPECT_EQ(PairOf(ImageFormatCMYK, ImageFormatRGB), nullptr);
  EXPECT_EQ(PairOf(ImageFormatCMYKA, ImageFormatRGBA), nullptr);
}

TEST(ScalePairs, TempFormatsAndStrides) {
  struct Expected {
    const ScalePair &pair;
    int32_t format;
    int32_t stride;
  };
  for (const Expected &expected : {Expected{CMYKA_to_CMYKA, 37, 5},
                                   {CMYKA_to_GA, 34, 2},
                                   {RGBA_to_RGBA, 36, 4},
                                   {RGBA_to_GA, 34, 2},
                                   {GA_to_CMYKA, 37, 5},
                                   {GA_to_RGBA, 36, 4},
                                   {GA_to_GA, 34, 2},
                                   {G16_to_G16, 34, 2},
                                   {CMYK_to_CMYK, 36, 4},
                                   {CMYK_to_G, 33, 1},
                                   {RGB_to_RGB, 36, 4},
                                   {RGB_to_G, 33, 1},
                                   {G_to_CMYK, 36, 4},
                                   {G_to_RGB, 36, 4},
                                   {G_to_G, 33, 1}}) {
    EXPECT_EQ(expected.pair.ScaleTempFormat, expected.format);
    EXPECT_EQ(expected.pair.Stride, expected.stride);
  }
}

}  // namespace
}  // namespace zvk::scaling
