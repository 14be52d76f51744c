// Which channels of which images each filter writes.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "filters/box_blur.h"
#include "filters/diffuse_filter.h"
#include "filters/dither.h"
#include "filters/engrave_filter.h"
#include "filters/fractional_blur.h"
#include "filters/matrix_filter.h"
#include "filters/neon_filter.h"
#include "filters/oil_filter.h"
#include "filters/stamp_filter.h"
#include "filters/tone_filters.h"
#include "filters/unsharp.h"
#include "geometry/rotate.h"
#include "geometry/turns.h"
#include "tests/filters/filter_testing.h"
#include "tests/naive/filters.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;
using namespace geometry;  // whose turns have a dest as filters have

// What a filter is called with besides the images: an array of 256 falling numbers.
using FilterCall = REALobject (*)(REALobject self, REALobject dest, REALarray falling);

// The channels that a filter writes of gray, RGB and CMYK images: without alpha, then with it.
struct Channels {
  std::array<const char *, 2> gray;
  std::array<const char *, 2> rgb;
  std::array<const char *, 2> cmyk;
};

constexpr Channels kAll = {{"g", "gA"}, {"RGB", "RGBA"}, {"CMYK", "CMYKA"}};
constexpr Channels kNoInks = {{"g", "gA"}, {"RGB", "RGBA"}, {"", ""}};
constexpr Channels kNoInksNoAlpha = {{"g", "g"}, {"RGB", "RGB"}, {"", ""}};
// Red, green and blue of an image of inks lie at offset 0.
constexpr Channels kInksAsRGB = {{"g", "gA"}, {"RGB", "RGBA"}, {"RGB", "RGBA"}};

enum class Result : uint8_t {
  Dest,             // dest, or a new image for a nil dest
  DestOrNil,        // the same, and nil for an image of no family
  AlwaysANewImage,  // what becomes of a dest is a by-product
};

struct Coverage {
  const char *name;
  Channels channels;
  FilterCall call;
  Result result = Result::Dest;

  friend std::ostream &operator<<(std::ostream &out, const Coverage &coverage) { return out << coverage.name; }
};

// clang-format off
#define CALL(call) [](REALobject self, REALobject dest, [[maybe_unused]] REALarray array) { return call; }

const Coverage kCoverage[] = {
    {"ApplyMatrix", kAll, CALL(PictureMatrix4(self, dest, 0, nullptr, 9))},
    {"SolarizeFilter", kAll, CALL(SolarizeFilter(self, dest))},
    {"GammaFilterG", kNoInksNoAlpha, CALL(GammaFilterG(self, dest, 2))},
    {"GammaFilterGA", kNoInks, CALL(GammaFilterGA(self, dest, 2, 2))},
    {"GammaFilterRGB", kNoInksNoAlpha, CALL(GammaFilterRGB(self, dest, 2, 2, 2))},
    {"GammaFilterRGBA", kNoInks, CALL(GammaFilterRGBA(self, dest, 2, 2, 2, 2))},
    {"GainFilter", kNoInks, CALL(GainFilter(self, dest, 0.7, 0.4))},
    {"TransferFilterG", kNoInksNoAlpha, CALL(TransferFilterG(self, dest, array))},
    {"TransferFilterGA", kNoInks, CALL(TransferFilterGA(self, dest, array, array))},
    {"TransferFilterRGB", kNoInksNoAlpha, CALL(TransferFilterRGB(self, dest, array, array, array))},
    {"TransferFilterRGBA", kNoInks, CALL(TransferFilterRGBA(self, dest, array, array, array, array))},
    {"OilFilter", kAll, CALL(OilFilter(self, dest, 16, 1))},
    {"DiffuseFilter", kNoInks, CALL(DifuseFilter(self, dest, 2))},
    {"EngraveFilter", kNoInks, CALL(EngraveFilter(self, dest, 1))},
    {"NeonFilter", kAll, CALL(NeonFilter(self, dest))},
    {"StampFilter", kNoInksNoAlpha, CALL(StampFilter(self, dest, 3, 0.5, 0.2, 0x102030, 0xF0E0D0)), Result::AlwaysANewImage},
    {"BoxBlurFilter", kAll, CALL(BoxBlurFilter(self, dest, 1, true, true))},
    {"BoxBlurFilterOnce", kAll, CALL(BoxBlurFilter2(self, dest, 1, 1, true, true))},
    {"BoxBlurFractionalFilter", kInksAsRGB, CALL(BoxBlurFractionalFilter(self, dest, 0.7)), Result::DestOrNil},
    {"DitherFilter", kNoInks, CALL(DitherFilter(self, dest, 10, 3))},
    {"Rotate180", kAll, CALL(Rotate180(self, dest))},
    {"Rotate90", kAll, CALL(Rotate90fast(self, dest))},
    {"Rotate90slow", kAll, CALL(Rotate90(self, dest))},
    {"Rotate270", kAll, CALL(Rotate270fast(self, dest))},
    {"Rotate270slow", kAll, CALL(Rotate270(self, dest))},
};

#undef CALL
// clang-format on

constexpr int32_t kSide = 24;

// In how many pixels the images differ in this byte.
int Differing(const Image &a, const Image &b, int32_t byte) {
  int count = 0;
  for (int32_t y = 0; y < Record(a).Height; ++y) {
    for (int32_t x = 0; x < Record(a).Width; ++x) {
      const ptrdiff_t at = ptrdiff_t{x} * Record(a).PixelSize + byte;
      if (Row(a, y)[at] != Row(b, y)[at]) ++count;
    }
  }
  return count;
}

// Of both images of one format and size these channels differ, and no other byte does.
void ExpectChanged(const Image &image, const Image &before, const std::string &channels) {
  const int32_t pixelSize = Record(image).PixelSize;
  std::vector<bool> isWritten(static_cast<size_t>(pixelSize), false);
  for (const char channel : channels) isWritten[static_cast<size_t>(naive::OffsetOf(Record(image), channel))] = true;
  for (int32_t byte = 0; byte < pixelSize; ++byte) {
    const int changed = Differing(image, before, byte);
    if (isWritten[static_cast<size_t>(byte)]) {
      EXPECT_GT(changed, kSide * kSide / 8) << "byte " << byte;
    } else {
      EXPECT_EQ(changed, 0) << "byte " << byte;
    }
  }
  // Behind the pixels of a row.
  for (int32_t y = 0; y < Record(image).Height; ++y) {
    const auto first = ptrdiff_t{Record(image).Width} * pixelSize, end = ptrdiff_t{Record(image).RowSize};
    EXPECT_EQ(Bytes(Row(image, y) + first, Row(image, y) + end), Bytes(Row(before, y) + first, Row(before, y) + end));
  }
}

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
    const Image self = Noise(kSide, kSide, format, 1), dest = Noise(kSide, kSide, format, 2);
    const Image before = Noise(kSide, kSide, format, 2);
    const Image result = Call(self, dest);
    ASSERT_TRUE(result);
    EXPECT_EQ(result.Handle() == dest.Handle(), GetParam().result != Result::AlwaysANewImage);
    if (result.Handle() == dest.Handle()) {
      ExpectChanged(dest, before, channels);
    } else {
      ExpectChanged(result, New(kSide, kSide, format), channels);
    }
    const Image made = Call(self, Image());
    ASSERT_TRUE(made);
    ExpectChanged(made, New(kSide, kSide, format), channels);
  }

  standalone::Owned<standalone::IntegerArray> falling_;
};

INSTANTIATE_TEST_SUITE_P(Filters, FilterCoverage, testing::ValuesIn(kCoverage),
                         [](const auto &info) { return info.param.name; });

TEST_P(FilterCoverage, OfGrayImages) {
  const auto [plain, withAlpha] = GetParam().channels.gray;
  for (const int32_t format : {ImageFormatG, ImageFormat3of4}) ExpectWritten(format, plain);
  for (const int32_t format : {ImageFormatGA, ImageFormatAG}) ExpectWritten(format, withAlpha);
}

TEST_P(FilterCoverage, OfRGBImages) {
  const auto [plain, withAlpha] = GetParam().channels.rgb;
  for (const int32_t format : {ImageFormatRGB, ImageFormatBGRX, ImageFormatXRGB}) ExpectWritten(format, plain);
  for (const int32_t format : {ImageFormatRGBA, ImageFormatABGR}) ExpectWritten(format, withAlpha);
}

TEST_P(FilterCoverage, OfCMYKImages) {
  const auto [plain, withAlpha] = GetParam().channels.cmyk;
  for (const int32_t format : {ImageFormatCMYK, ImageFormatXKYMC}) ExpectWritten(format, plain);
  for (const int32_t format : {ImageFormatCMYKA, ImageFormatAKYMC}) ExpectWritten(format, withAlpha);
}

TEST_P(FilterCoverage, OfImagesOfNoFamily) {
  for (const int32_t format : {ImageFormatBuffer, ImageFormatScaling3}) {
    if (GetParam().result != Result::DestOrNil) {
      ExpectWritten(format, "");
      continue;
    }
    const Image dest = Noise(kSide, kSide, format, 2), before = Noise(kSide, kSide, format, 2);
    EXPECT_FALSE(Call(Noise(kSide, kSide, format), dest));
    ExpectChanged(dest, before, "");
    EXPECT_EQ(dest->References(), 1);
  }
}

TEST_P(FilterCoverage, SixteenBitSamplesAreRefused) {
  const Image dest = Noise(kSide, kSide, ImageFormatGray16), before = Noise(kSide, kSide, ImageFormatGray16);
  EXPECT_FALSE(Call(Noise(kSide, kSide, ImageFormatGray16, 2), dest));
  ExpectChanged(dest, before, "");
  EXPECT_FALSE(Call(dest, Image()));
}

TEST_P(FilterCoverage, TwoYieldsAndNoMore) {
  const Image self = Noise(kSide, kSide, ImageFormatRGB), dest = Noise(kSide, kSide, ImageFormatRGB);
  // A tick goes by whenever the clock is read.
  host_->SetEntry(
      "TickCount", +[]() -> uint32_t {
        static uint32_t ticks = 100;
        return ++ticks;
      });
  int yields = 0;
  host_->onYield = [&] { ++yields; };
  Record(self).Yield.YieldTicks = Record(dest).Yield.YieldTicks = 1;
  EXPECT_TRUE(Call(self, dest));
  // A dest that is a by-product is given time once more, when it is the source of what comes next.
  EXPECT_EQ(yields, GetParam().result == Result::AlwaysANewImage ? 3 : 2);
}

// --- filters of another form ---

const auto kSomeFormats = {ImageFormatG,    ImageFormat3of4, ImageFormatAG,    ImageFormatBGRX,
                           ImageFormatABGR, ImageFormatCMYK, ImageFormatXKYMC, ImageFormatAKYMC};

class RotateCoverage : public FilterTest {};

TEST_F(RotateCoverage, AllChannelsOfANewImage) {
  for (const int32_t format : kSomeFormats) {
    SCOPED_TRACE(format);
    const Image self = Noise(kSide, kSide, format);
    const Image result = Adopt(rbRotate(self, 30, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    ASSERT_TRUE(result);
    ASSERT_GT(Record(result).Width, kSide);
    ExpectChanged(result, New(Record(result).Width, Record(result).Height, format), naive::ChannelsOf(Record(result)));
  }
  for (const int32_t format : {ImageFormatBuffer, ImageFormatScaling3}) {
    EXPECT_EQ(rbRotate(Noise(kSide, kSide, format), 30, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr);
  }
}

// In place: the first image changes by the second one.
class UnsharpCoverage : public FilterTest {};

TEST_F(UnsharpCoverage, AllChannelsOfTheImageItself) {
  for (const int32_t format : kSomeFormats) {
    SCOPED_TRACE(format);
    const Image image = Noise(kSide, kSide, format, 1), before = Noise(kSide, kSide, format, 1);
    const Image blurred = Noise(kSide, kSide, format, 2);
    EXPECT_TRUE(unsharpFilter(image, blurred, 0.5, 1));
    // Of inks the byte where alpha would be is changed as well, also where there is no alpha.
    ExpectChanged(image, before, naive::ChannelsOf(Record(image)) + (Record(image).IsCMYK ? "A" : ""));
  }
}

}  // namespace
}  // namespace zvk::filters
