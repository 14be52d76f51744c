#include "filters/tone_filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/filters/filter_testing.h"
#include "tests/filters/tone_lists.h"
#include "tests/naive/filters.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

// What a sample becomes.
using Curve = std::function<int(int)>;

Curve Power(double gamma) {
  return [gamma](int v) {
    const double value = std::pow(v / 255.0, 1.0 / gamma) * 255.0 + 0.5;
    return value < 0 ? 0 : value >= 256 ? 255 : static_cast<int>(value);
  };
}

class ToneFilters : public FilterTest {
 protected:
  using Filter = std::function<REALobject(REALobject self, REALobject dest)>;

  // The filter sends each of these channels of an image of the format through its curve, and changes nothing else.
  void ExpectCurves(int32_t format, const Filter &filter, const std::map<char, Curve> &curves) {
    SCOPED_TRACE(format);
    const Image self = Noise(70, 9, format, 1), dest = Noise(70, 9, format, 2), expected = Noise(70, 9, format, 2);
    naive::MapPixels(Record(self), Record(expected), [&](char channel, int sample, int32_t, int32_t) {
      return curves.contains(channel) ? curves.at(channel)(sample) : -1;
    });
    EXPECT_EQ(Adopt(filter(self, dest)).Handle(), dest.Handle());
    EXPECT_EQ(PixelsOf(dest), PixelsOf(expected));

    // What is not written stays zero in a new image.
    const Image zero = New(70, 9, format);
    naive::MapPixels(Record(self), Record(zero), [&](char channel, int sample, int32_t, int32_t) {
      return curves.contains(channel) ? curves.at(channel)(sample) : -1;
    });
    const Image made = Adopt(filter(self, nullptr));
    ASSERT_TRUE(made);
    EXPECT_EQ(Record(made).ImageFormat, format);
    EXPECT_EQ(PixelsOf(made), PixelsOf(zero));
    EXPECT_EQ(made->References(), 1);
  }

  // The same for all images of a family: packed, with filler, in another order.
  void ExpectCurves(char family, bool alpha, const Filter &filter, const std::map<char, Curve> &curves) {
    const std::map<std::pair<char, bool>, std::vector<int32_t>> formats = {
        {{'g', false}, {ImageFormatG, ImageFormat2of3, ImageFormat4of4}},
        {{'g', true}, {ImageFormatGA, ImageFormatAG}},
        {{'R', false}, {ImageFormatRGB, ImageFormatBGR, ImageFormatXBGR}},
        {{'R', true}, {ImageFormatRGBA, ImageFormatARGB, ImageFormatBGRA, ImageFormatABGR}},
        {{'C', false}, {ImageFormatCMYK, ImageFormatKYMC, ImageFormatXCMYK}},
        {{'C', true}, {ImageFormatCMYKA, ImageFormatAKYMC}}};
    for (const int32_t format : formats.at({family, alpha})) ExpectCurves(format, filter, curves);
  }

  // The gray byte that a filter makes of a sample.
  int GrayOf(uint8_t sample, const Filter &filter) {
    return Row(Adopt(filter(New(1, 1, ImageFormatG, {{sample}}), nullptr)), 0)[0];
  }

  standalone::Owned<standalone::IntegerArray> Array(const Curve &curve, int count = 256) {
    std::vector<int32_t> values;
    for (int v = 0; v < count; ++v) values.push_back(curve(v));
    return host_.NewArray(values);
  }
};

// --- solarize ---

TEST_F(ToneFilters, SolarizeServesAllFamiliesAndAlpha) {
  const std::vector<int> list = SolarizeList();
  const Curve curve = [&](int v) { return list[static_cast<size_t>(v)]; };
  const auto filter = [](REALobject self, REALobject dest) { return SolarizeFilter(self, dest); };
  ExpectCurves('g', false, filter, {{'g', curve}});
  ExpectCurves('g', true, filter, {{'g', curve}, {'A', curve}});
  ExpectCurves('R', false, filter, {{'R', curve}, {'G', curve}, {'B', curve}});
  ExpectCurves('R', true, filter, {{'R', curve}, {'G', curve}, {'B', curve}, {'A', curve}});
  ExpectCurves('C', false, filter, {{'C', curve}, {'M', curve}, {'Y', curve}, {'K', curve}});
  ExpectCurves('C', true, filter, {{'C', curve}, {'M', curve}, {'Y', curve}, {'K', curve}, {'A', curve}});
}

TEST_F(ToneFilters, SolarizeMapsTheEndsToWhiteAndTheMiddleToBlack) {
  const auto filter = [](REALobject self, REALobject dest) { return SolarizeFilter(self, dest); };
  EXPECT_EQ(GrayOf(0, filter), 255);
  EXPECT_EQ(GrayOf(127, filter), 0);
  EXPECT_EQ(GrayOf(128, filter), 0);
  EXPECT_EQ(GrayOf(255, filter), 255);
}

// --- gamma ---

TEST_F(ToneFilters, OneGammaServesAllColoursAndLeavesAlpha) {
  const auto filter = [](REALobject self, REALobject dest) { return GammaFilterG(self, dest, 1.8); };
  const std::map<char, Curve> colours = {{'R', Power(1.8)}, {'G', Power(1.8)}, {'B', Power(1.8)}};
  ExpectCurves('g', false, filter, {{'g', Power(1.8)}});
  ExpectCurves('g', true, filter, {{'g', Power(1.8)}});
  ExpectCurves('R', false, filter, colours);
  ExpectCurves('R', true, filter, colours);
}

TEST_F(ToneFilters, AGammaForAlphaIsForAlphaAlone) {
  const auto filter = [](REALobject self, REALobject dest) { return GammaFilterGA(self, dest, 1.8, 0.6); };
  const std::map<char, Curve> curves = {{'R', Power(1.8)}, {'G', Power(1.8)}, {'B', Power(1.8)}, {'A', Power(0.6)}};
  ExpectCurves('g', false, filter, {{'g', Power(1.8)}});
  ExpectCurves('g', true, filter, {{'g', Power(1.8)}, {'A', Power(0.6)}});
  ExpectCurves('R', false, filter, curves);
  ExpectCurves('R', true, filter, curves);
}

TEST_F(ToneFilters, EachColourHasItsOwnOfThreeGammas) {
  const auto filter = [](REALobject self, REALobject dest) { return GammaFilterRGB(self, dest, 1.8, 0.6, 2.5); };
  const std::map<char, Curve> colours = {{'R', Power(1.8)}, {'G', Power(0.6)}, {'B', Power(2.5)}};
  ExpectCurves('R', false, filter, colours);
  ExpectCurves('R', true, filter, colours);
}

TEST_F(ToneFilters, EachChannelHasItsOwnOfFourGammas) {
  const auto filter = [](REALobject self, REALobject dest) { return GammaFilterRGBA(self, dest, 1.8, 0.6, 2.5, 3.0); };
  const std::map<char, Curve> curves = {{'R', Power(1.8)}, {'G', Power(0.6)}, {'B', Power(2.5)}, {'A', Power(3.0)}};
  ExpectCurves('R', false, filter, curves);
  ExpectCurves('R', true, filter, curves);
}

TEST_F(ToneFilters, TheGammaOfAGrayImageIsAWholeNumber) {
  // The gammas without their fractions, 77, 151 and 28 of 256 of them, without the fraction of that.
  const struct {
    double red, green, blue;
    int gray;
  } cases[] = {{1.8, 1.8, 1.8, 1}, {2.9, 2.9, 2.9, 2}, {4, 2, 9, 3},   {3.9, 2.9, 1.9, 2},
               {0, 0, 9.9, 0},     {0, 1.9, 4, 1},     {1, 1, 0.9, 0}, {-3, -3, -3, -3}};
  for (const auto &[red, green, blue, gray] : cases) {
    SCOPED_TRACE(testing::Message() << red << ", " << green << ", " << blue);
    const auto three = [&](REALobject self, REALobject dest) { return GammaFilterRGB(self, dest, red, green, blue); };
    const auto four = [&](REALobject self, REALobject dest) {
      return GammaFilterRGBA(self, dest, red, green, blue, 0.6);
    };
    const Image ramp = Ramp(ImageFormatG);
    const Image expected = Adopt(GammaFilterG(ramp, nullptr, gray));
    EXPECT_EQ(PixelsOf(Adopt(three(ramp, nullptr))), PixelsOf(expected));
    EXPECT_EQ(PixelsOf(Adopt(four(ramp, nullptr))), PixelsOf(expected));
    if (gray < 1) continue;
    ExpectCurves('g', true, three, {{'g', Power(gray)}});
    ExpectCurves('g', true, four, {{'g', Power(gray)}, {'A', Power(0.6)}});
  }
}

TEST_F(ToneFilters, AGrayImageIsLeftByGammasBetweenOneAndTwoAndBlackenedBelowOne) {
  const Image ramp = Ramp(ImageFormatG);
  EXPECT_EQ(PixelsOf(Adopt(GammaFilterRGB(ramp, nullptr, 1.8, 1.8, 1.8))), PixelsOf(ramp));
  Bytes black(256, 0);
  black[255] = 255;
  EXPECT_EQ(PixelsOf(Adopt(GammaFilterRGB(ramp, nullptr, 0.8, 0.8, 0.8))), Grid{black});
}

TEST_F(ToneFilters, AGammaThatIsNoIntegerCountsAsTheLeast) {
  // The least times 77 and times 151 wrap to themselves and together to zero, and times 28 to zero.
  const Image ramp = Ramp(ImageFormatG);
  const Image zero = Adopt(GammaFilterG(ramp, nullptr, 0));
  for (const double none : {std::nan(""), 1e10, -1e10}) {
    EXPECT_EQ(PixelsOf(Adopt(GammaFilterRGB(ramp, nullptr, none, none, none))), PixelsOf(zero));
  }
  // Once it is not undone: -2147483648 / 256.
  const Image least = Adopt(GammaFilterG(ramp, nullptr, -8388608));
  EXPECT_EQ(PixelsOf(Adopt(GammaFilterRGB(ramp, nullptr, 1e10, 0, 0))), PixelsOf(least));
}

TEST_F(ToneFilters, AGammaOfOneIsTheIdentity) {
  for (const int32_t format : {ImageFormatG, ImageFormatRGB}) {
    const Image ramp = Ramp(format);
    EXPECT_EQ(PixelsOf(Adopt(GammaFilterG(ramp, nullptr, 1.0))), PixelsOf(ramp));
  }
}

TEST_F(ToneFilters, NoGammaServesInks) {
  for (const bool alpha : {false, true}) {
    ExpectCurves('C', alpha, [](REALobject self, REALobject dest) { return GammaFilterG(self, dest, 2); }, {});
    ExpectCurves('C', alpha, [](REALobject self, REALobject dest) { return GammaFilterGA(self, dest, 2, 2); }, {});
    ExpectCurves('C', alpha, [](REALobject self, REALobject dest) { return GammaFilterRGB(self, dest, 2, 2, 2); }, {});
    ExpectCurves('C', alpha, [](REALobject self, REALobject dest) { return GammaFilterRGBA(self, dest, 2, 2, 2, 2); },
                 {});
  }
}

// --- gain ---

TEST_F(ToneFilters, GainServesGrayAndRGBWithOneCurveForAllChannels) {
  // Squares both halves of the curve, truncated.
  const Curve curve = [](int v) { return v < 128 ? 2 * v * v / 255 : 255 - (2 * (255 - v) * (255 - v) + 254) / 255; };
  const auto filter = [](REALobject self, REALobject dest) { return GainFilter(self, dest, 0.75, 0.5); };
  ExpectCurves('g', false, filter, {{'g', curve}});
  ExpectCurves('g', true, filter, {{'g', curve}, {'A', curve}});
  ExpectCurves('R', false, filter, {{'R', curve}, {'G', curve}, {'B', curve}});
  ExpectCurves('R', true, filter, {{'R', curve}, {'G', curve}, {'B', curve}, {'A', curve}});
  ExpectCurves('C', false, filter, {});
  ExpectCurves('C', true, filter, {});
}

TEST_F(ToneFilters, AGainAndBiasOfAHalfAreTheIdentity) {
  const Image ramp = Ramp(ImageFormatRGBA);
  EXPECT_EQ(PixelsOf(Adopt(GainFilter(ramp, nullptr, 0.5, 0.5))), PixelsOf(ramp));
}

// --- transfer ---

class Transfer : public ToneFilters {
 protected:
  // Four curves that differ everywhere.
  const Curve one_ = [](int v) { return 255 - v; };
  const Curve two_ = [](int v) { return v ^ 0x55; };
  const Curve three_ = [](int v) { return (v + 100) % 256; };
  const Curve four_ = [](int v) { return v / 2; };
  const standalone::Owned<standalone::IntegerArray> first_ = Array(one_);
  const standalone::Owned<standalone::IntegerArray> second_ = Array(two_);
  const standalone::Owned<standalone::IntegerArray> third_ = Array(three_);
  const standalone::Owned<standalone::IntegerArray> fourth_ = Array(four_);
};

TEST_F(Transfer, OneArrayServesAllColoursAndLeavesAlpha) {
  const auto filter = [&](REALobject self, REALobject dest) {
    return TransferFilterG(self, dest, first_->ArrayHandle());
  };
  ExpectCurves('g', false, filter, {{'g', one_}});
  ExpectCurves('g', true, filter, {{'g', one_}});
  ExpectCurves('R', false, filter, {{'R', one_}, {'G', one_}, {'B', one_}});
  ExpectCurves('R', true, filter, {{'R', one_}, {'G', one_}, {'B', one_}});
}

TEST_F(Transfer, AnArrayForAlphaIsForAlphaAlone) {
  const auto filter = [&](REALobject self, REALobject dest) {
    return TransferFilterGA(self, dest, first_->ArrayHandle(), fourth_->ArrayHandle());
  };
  ExpectCurves('g', false, filter, {{'g', one_}});
  ExpectCurves('g', true, filter, {{'g', one_}, {'A', four_}});
  ExpectCurves('R', false, filter, {{'R', one_}, {'G', one_}, {'B', one_}});
  ExpectCurves('R', true, filter, {{'R', one_}, {'G', one_}, {'B', one_}, {'A', four_}});
}

TEST_F(Transfer, OfThreeArraysEachColourHasItsOwnAndGrayTheGreenOne) {
  const auto filter = [&](REALobject self, REALobject dest) {
    return TransferFilterRGB(self, dest, first_->ArrayHandle(), second_->ArrayHandle(), third_->ArrayHandle());
  };
  ExpectCurves('g', false, filter, {{'g', two_}});
  ExpectCurves('g', true, filter, {{'g', two_}});
  ExpectCurves('R', false, filter, {{'R', one_}, {'G', two_}, {'B', three_}});
  ExpectCurves('R', true, filter, {{'R', one_}, {'G', two_}, {'B', three_}});
}

TEST_F(Transfer, OfFourArraysTheLastIsForAlpha) {
  const auto filter = [&](REALobject self, REALobject dest) {
    return TransferFilterRGBA(self, dest, first_->ArrayHandle(), second_->ArrayHandle(), third_->ArrayHandle(),
                              fourth_->ArrayHandle());
  };
  ExpectCurves('g', false, filter, {{'g', two_}});
  ExpectCurves('g', true, filter, {{'g', two_}, {'A', four_}});
  ExpectCurves('R', false, filter, {{'R', one_}, {'G', two_}, {'B', three_}});
  ExpectCurves('R', true, filter, {{'R', one_}, {'G', two_}, {'B', three_}, {'A', four_}});
}

TEST_F(Transfer, NoArrayServesInks) {
  const REALarray array = first_->ArrayHandle();
  for (const bool alpha : {false, true}) {
    ExpectCurves('C', alpha, [&](REALobject self, REALobject dest) { return TransferFilterG(self, dest, array); }, {});
    ExpectCurves('C', alpha,
                 [&](REALobject self, REALobject dest) { return TransferFilterGA(self, dest, array, array); }, {});
    ExpectCurves('C', alpha,
                 [&](REALobject self, REALobject dest) { return TransferFilterRGB(self, dest, array, array, array); },
                 {});
    ExpectCurves(
        'C', alpha,
        [&](REALobject self, REALobject dest) { return TransferFilterRGBA(self, dest, array, array, array, array); },
        {});
  }
}

TEST_F(Transfer, AnEmptyOrNilArrayMakesEverySampleZero) {
  const Curve zero = [](int) { return 0; };
  const auto empty = host_.NewArray({});
  for (const REALarray array : {empty->ArrayHandle(), REALarray{nullptr}}) {
    const auto filter = [&](REALobject self, REALobject dest) { return TransferFilterGA(self, dest, array, array); };
    ExpectCurves('R', true, filter, {{'R', zero}, {'G', zero}, {'B', zero}, {'A', zero}});
    ExpectCurves('g', false, filter, {{'g', zero}});
  }
}

TEST_F(Transfer, AShortArrayMapsTheRestTo0) {
  const auto array = Array([](int v) { return v + 1; }, 100);
  const auto filter = [&](REALobject self, REALobject dest) {
    return TransferFilterG(self, dest, array->ArrayHandle());
  };
  EXPECT_EQ(GrayOf(99, filter), 100);
  EXPECT_EQ(GrayOf(100, filter), 0);
  EXPECT_EQ(GrayOf(255, filter), 0);
}

TEST_F(Transfer, OfALongArrayTheTailIsIgnoredAndTheLowByteIsStored) {
  std::vector<int32_t> values(300, 300);
  values[1] = -1;
  values[2] = 256;
  const auto array = host_.NewArray(values);
  const auto filter = [&](REALobject self, REALobject dest) {
    return TransferFilterG(self, dest, array->ArrayHandle());
  };
  EXPECT_EQ(GrayOf(0, filter), 44);
  EXPECT_EQ(GrayOf(1, filter), 255);
  EXPECT_EQ(GrayOf(2, filter), 0);
  EXPECT_EQ(GrayOf(255, filter), 44);
  EXPECT_EQ(host_->Calls("RuntimeDirectReadIntArray"), 4 * 256);
}

TEST_F(Transfer, AnImageThatIsRefusedReadsNoArray) {
  EXPECT_EQ(TransferFilterG(New(2, 2, ImageFormatGray16), nullptr, first_->ArrayHandle()), nullptr);
  EXPECT_EQ(host_->Calls("RuntimeUBound"), 0);
}

// --- dest ---

TEST_F(ToneFilters, SamplesGoWhereTheDestHasThem) {
  const Image self = New(1, 1, ImageFormatRGBA, {{1, 2, 3, 4}}), dest = New(1, 1, ImageFormatXBGR, {{9, 9, 9, 9}});
  EXPECT_TRUE(Adopt(GammaFilterGA(self, dest, 1, 1)));
  // Alpha goes where a dest without alpha says that its alpha is: at 0.
  EXPECT_EQ(PixelsOf(dest), (Grid{{4, 3, 2, 1}}));
  EXPECT_TRUE(Adopt(GammaFilterG(New(1, 1, ImageFormatG, {{77}}), dest, 1)));
  EXPECT_EQ(PixelsOf(dest), (Grid{{77, 3, 2, 1}}));
}

TEST_F(ToneFilters, TheDestMayBeTheImageItself) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatBGRX, ImageFormatAKYMC}) {
    const Image self = Noise(90, 7, format);
    const Image expected = Noise(90, 7, format);
    EXPECT_TRUE(Adopt(SolarizeFilter(self, expected)));
    EXPECT_EQ(Adopt(SolarizeFilter(self, self)).Handle(), self.Handle());
    EXPECT_EQ(PixelsOf(self), PixelsOf(expected));
  }
}

// --- bytes that are samples twice over: each sample is read as the ones before it have left it ---

TEST_F(ToneFilters, AChannelMovedOntoAnotherOfTheDestItselfIsMappedAgain) {
  const Image self = New(2, 1, ImageFormatRGB, {{10, 20, 30, 40, 50, 60}});
  SetGreenOffset(self, 0, 0);
  // Red makes 235 of 10 and 175 of 40; green makes 214 and 95 of those.
  EXPECT_TRUE(Adopt(SolarizeFilter(self, self)));
  EXPECT_EQ(PixelsOf(self), (Grid{{214, 20, 195, 95, 50, 135}}));
}

TEST_F(ToneFilters, AnotherOrderOfTheSameBytesIsWrittenSampleAfterSample) {
  std::vector<int32_t> plusOne, plusTwo;
  for (int32_t i = 0; i < 256; ++i) plusOne.push_back(i + 1);
  for (int32_t i = 0; i < 256; ++i) plusTwo.push_back(i + 2);
  const auto one = host_.NewArray(plusOne), two = host_.NewArray(plusTwo);
  const auto mapped = [&](int32_t format, int32_t destFormat, const Bytes &bytes, const Filter &filter) {
    const auto block = host_.NewMemoryBlock(bytes);
    const Image self = host_.New("PictureZVK"), dest = host_.New("PictureZVK");
    ImageConstructorMemory(self, block, 1, 1, format, static_cast<int32_t>(bytes.size()));
    ImageConstructorMemory(dest, block, 1, 1, destFormat, static_cast<int32_t>(bytes.size()));
    EXPECT_TRUE(Adopt(filter(self, dest)));
    return Bytes(block->Data(), block->Data() + block->Size());
  };
  const auto transfer = [&](REALobject self, REALobject dest) {
    return TransferFilterGA(self, dest, one->ArrayHandle(), two->ArrayHandle());
  };
  // Red 10 goes to blue's place as 11, and from there back as 12.
  EXPECT_EQ(mapped(ImageFormatRGB, ImageFormatBGR, {10, 20, 30}, transfer), (Bytes{12, 21, 11}));
  // Gray 10 goes to alpha's place as 11, and from there to gray's as 13.
  EXPECT_EQ(mapped(ImageFormatGA, ImageFormatAG, {10, 20}, transfer), (Bytes{13, 11}));
  // Bytes R G B A as A R G B: 10 wanders through all of them, and alpha takes it to the first one.
  EXPECT_EQ(mapped(ImageFormatRGBA, ImageFormatARGB, {10, 20, 30, 40}, transfer), (Bytes{15, 11, 12, 13}));
  // Of A R G B as R G B A each colour is read before it is overwritten, and alpha takes what red has become.
  EXPECT_EQ(mapped(ImageFormatARGB, ImageFormatRGBA, {40, 10, 20, 30}, transfer), (Bytes{11, 21, 31, 13}));
  // Inks turned round: 10 becomes 235, and that 214; 20 becomes 215, and that 175.
  EXPECT_EQ(mapped(ImageFormatCMYK, ImageFormatKYMC, {10, 20, 30, 40}, SolarizeFilter), (Bytes{214, 175, 215, 235}));
}

}  // namespace
}  // namespace zvk::filters
