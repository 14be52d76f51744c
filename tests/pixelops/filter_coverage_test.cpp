// Which channels of which images each filter writes.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "pixelops/box_blur.h"
#include "pixelops/diffuse_filter.h"
#include "pixelops/dither.h"
#include "pixelops/engrave_filter.h"
#include "pixelops/matrix_filter.h"
#include "pixelops/neon_filter.h"
#include "pixelops/oil_filter.h"
#include "pixelops/tone_filters.h"
#include "tests/pixelops/filter_testing.h"
#include "tests/support/naive_filters.h"

namespace zvk {
namespace {

using namespace filter_testing;

// What a filter is called with besides the images: an array of 256 falling numbers.
using FilterCall = REALobject (*)(REALobject self, REALobject dest, REALarray falling);

// A filter, and the channels that it writes of gray, RGB and CMYK images: without alpha, then with it.
struct Coverage {
  const char *name;
  FilterCall call;
  std::array<const char *, 2> gray;
  std::array<const char *, 2> rgb;
  std::array<const char *, 2> cmyk;

  friend std::ostream &operator<<(std::ostream &out, const Coverage &coverage) { return out << coverage.name; }
};

const Coverage kCoverage[] = {
    {"ApplyMatrix",
     [](REALobject self, REALobject dest, REALarray) { return PictureMatrix4(self, dest, 0, nullptr, 9); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"CMYK", "CMYKA"}},
    {"SolarizeFilter",
     [](REALobject self, REALobject dest, REALarray) { return SolarizeFilter(self, dest); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"CMYK", "CMYKA"}},
    {"GammaFilterG",
     [](REALobject self, REALobject dest, REALarray) { return GammaFilterG(self, dest, 2); },
     {"g", "g"},
     {"RGB", "RGB"},
     {"", ""}},
    {"GammaFilterGA",
     [](REALobject self, REALobject dest, REALarray) { return GammaFilterGA(self, dest, 2, 2); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"", ""}},
    {"GammaFilterRGB",
     [](REALobject self, REALobject dest, REALarray) { return GammaFilterRGB(self, dest, 2, 2, 2); },
     {"g", "g"},
     {"RGB", "RGB"},
     {"", ""}},
    {"GammaFilterRGBA",
     [](REALobject self, REALobject dest, REALarray) { return GammaFilterRGBA(self, dest, 2, 2, 2, 2); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"", ""}},
    {"GainFilter",
     [](REALobject self, REALobject dest, REALarray) { return GainFilter(self, dest, 0.7, 0.4); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"", ""}},
    {"TransferFilterG",
     [](REALobject self, REALobject dest, REALarray array) { return TransferFilterG(self, dest, array); },
     {"g", "g"},
     {"RGB", "RGB"},
     {"", ""}},
    {"TransferFilterGA",
     [](REALobject self, REALobject dest, REALarray array) { return TransferFilterGA(self, dest, array, array); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"", ""}},
    {"TransferFilterRGB",
     [](REALobject self, REALobject dest, REALarray array) {
       return TransferFilterRGB(self, dest, array, array, array);
     },
     {"g", "g"},
     {"RGB", "RGB"},
     {"", ""}},
    {"TransferFilterRGBA",
     [](REALobject self, REALobject dest, REALarray array) {
       return TransferFilterRGBA(self, dest, array, array, array, array);
     },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"", ""}},
    {"DitherFilter",
     [](REALobject self, REALobject dest, REALarray) { return DitherFilter(self, dest, 10, 3); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"", ""}},
    {"OilFilter",
     [](REALobject self, REALobject dest, REALarray) { return OilFilter(self, dest, 16, 1); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"CMYK", "CMYKA"}},
    {"DiffuseFilter",
     [](REALobject self, REALobject dest, REALarray) { return DifuseFilter(self, dest, 2); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"", ""}},
    {"EngraveFilter",
     [](REALobject self, REALobject dest, REALarray) { return EngraveFilter(self, dest, 1); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"", ""}},
    {"NeonFilter",
     [](REALobject self, REALobject dest, REALarray) { return NeonFilter(self, dest); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"CMYK", "CMYKA"}},
    {"BoxBlurFilter",
     [](REALobject self, REALobject dest, REALarray) { return BoxBlurFilter(self, dest, 1, true, true); },
     {"g", "gA"},
     {"RGB", "RGBA"},
     {"CMYK", "CMYKA"}},
};

class FilterCoverage : public FilterTest, public testing::WithParamInterface<Coverage> {
 protected:
  FilterCoverage() {
    std::vector<int32_t> values;
    for (int32_t v = 255; v >= 0; --v) values.push_back(v);
    falling_ = host_.NewArray(values);
  }

  Image Call(const Image &self, const Image &dest) {
    return Adopt(GetParam().call(self, dest, falling_->ArrayHandle()));
  }

  // The filter changes all of these channels of a dest of the format and no other byte of it.
  void ExpectWritten(int32_t format, const std::string &channels) {
    SCOPED_TRACE(testing::Message() << "format " << format << ", channels \"" << channels << "\"");
    const int32_t size = 24;
    const Image self = Noise(size, size, format, 1), dest = Noise(size, size, format, 2);
    const Image before = Noise(size, size, format, 2);
    const int32_t pixelSize = Record(self).PixelSize;
    EXPECT_EQ(Call(self, dest).Handle(), dest.Handle());
    const Image made = Call(self, Image());
    ASSERT_TRUE(made);

    std::vector<bool> isWritten(static_cast<size_t>(pixelSize), false);
    for (const char channel : channels) isWritten[static_cast<size_t>(naive::OffsetOf(Record(self), channel))] = true;
    for (int32_t byte = 0; byte < pixelSize; ++byte) {
      const int changed = Differing(dest, before, byte), nonZero = Differing(made, New(size, size, format), byte);
      if (isWritten[static_cast<size_t>(byte)]) {
        EXPECT_GT(changed, size * size / 4) << "byte " << byte;
        EXPECT_GT(nonZero, size * size / 8) << "byte " << byte;
      } else {
        EXPECT_EQ(changed, 0) << "byte " << byte;
        EXPECT_EQ(nonZero, 0) << "byte " << byte;
      }
    }
    // Behind the pixels of a row.
    for (int32_t y = 0; y < size; ++y) {
      const auto first = ptrdiff_t{size} * pixelSize, end = ptrdiff_t{Record(dest).RowSize};
      EXPECT_EQ(Bytes(Row(dest, y) + first, Row(dest, y) + end), Bytes(Row(before, y) + first, Row(before, y) + end));
    }
  }

  // In how many pixels the images differ in this byte.
  static int Differing(const Image &a, const Image &b, int32_t byte) {
    int count = 0;
    for (int32_t y = 0; y < Record(a).Height; ++y) {
      for (int32_t x = 0; x < Record(a).Width; ++x) {
        const ptrdiff_t at = ptrdiff_t{x} * Record(a).PixelSize + byte;
        if (Row(a, y)[at] != Row(b, y)[at]) ++count;
      }
    }
    return count;
  }

  standalone::Owned<standalone::IntegerArray> falling_;
};

INSTANTIATE_TEST_SUITE_P(Filters, FilterCoverage, testing::ValuesIn(kCoverage),
                         [](const auto &info) { return info.param.name; });

TEST_P(FilterCoverage, OfGrayImages) {
  for (const int32_t format : {ImageFormatG, ImageFormat3of4}) ExpectWritten(format, GetParam().gray[0]);
  for (const int32_t format : {ImageFormatGA, ImageFormatAG}) ExpectWritten(format, GetParam().gray[1]);
}

TEST_P(FilterCoverage, OfRGBImages) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatBGRX, ImageFormatXRGB}) {
    ExpectWritten(format, GetParam().rgb[0]);
  }
  for (const int32_t format : {ImageFormatRGBA, ImageFormatABGR}) ExpectWritten(format, GetParam().rgb[1]);
}

TEST_P(FilterCoverage, OfCMYKImages) {
  for (const int32_t format : {ImageFormatCMYK, ImageFormatXKYMC}) ExpectWritten(format, GetParam().cmyk[0]);
  for (const int32_t format : {ImageFormatCMYKA, ImageFormatAKYMC}) ExpectWritten(format, GetParam().cmyk[1]);
}

TEST_P(FilterCoverage, OfSixteenBitsAndOfNoFamily) {
  const Image dest = Noise(24, 24, ImageFormatGray16);
  const Grid before = PixelsOf(dest);
  EXPECT_FALSE(Call(Noise(24, 24, ImageFormatGray16, 2), dest));
  EXPECT_EQ(PixelsOf(dest), before);
  for (const int32_t format : {ImageFormatBuffer, ImageFormatScaling3}) ExpectWritten(format, "");
}

TEST_P(FilterCoverage, TwoYieldsAndNoMore) {
  const Image self = Noise(24, 24, ImageFormatRGB), dest = Noise(24, 24, ImageFormatRGB);
  host_->SetClock({.ticks = 100});
  int yields = 0;
  host_->onYield = [&] {
    ++yields;
    host_->SetClock({.ticks = 100 + 10 * static_cast<uint32_t>(yields)});
  };
  Record(self).Yield.YieldTicks = Record(dest).Yield.YieldTicks = 1;
  EXPECT_TRUE(Call(self, dest));
  EXPECT_EQ(yields, 2);
}

}  // namespace
}  // namespace zvk
