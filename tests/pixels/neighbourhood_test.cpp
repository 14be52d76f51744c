#include "pixels/neighbourhood.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/filters/filter_testing.h"

namespace zvk::pixels {
namespace {

using namespace filter_testing;
using Gray = Layout<ColourFamily::Gray, false>;
using RGB = Layout<ColourFamily::RGB, false>;
using RGBA = Layout<ColourFamily::RGB, true>;

class Neighbourhood : public FilterTest {};

TEST_F(Neighbourhood, APlaceBeyondAnEdgeIsTheEdge) {
  EXPECT_EQ(PlaceAt(3, 2, 10), 5);
  EXPECT_EQ(PlaceAt(3, -3, 10), 0);
  EXPECT_EQ(PlaceAt(3, -4, 10), 0);
  EXPECT_EQ(PlaceAt(3, 6, 10), 9);
  EXPECT_EQ(PlaceAt(3, 7, 10), 9);
  EXPECT_EQ(PlaceAt(0, INT32_MAX, 10), 9);
}

TEST_F(Neighbourhood, ASumThatWrapsIsBeyondTheOtherEdge) {
  EXPECT_EQ(PlaceAt(1, INT32_MAX, 10), 0);
  EXPECT_EQ(PlaceAt(INT32_MAX, INT32_MAX, INT32_MAX), 0);
}

// --- rows as samples ---

TEST_F(Neighbourhood, SamplesStandInTheOrderOfTheLayoutOrOfThePixelsIfThoseArePacked) {
  const Image image = New(2, 1, ImageFormatBGR, {{1, 2, 3, 4, 5, 6}});
  Bytes samples(6);
  const SampleRows<RGB> loose(Record(image), false), packed(Record(image), true);
  EXPECT_EQ(loose.Read(Row(image, 0), 2, samples.data()), samples.data());
  EXPECT_EQ(samples, (Bytes{3, 2, 1, 6, 5, 4}));
  EXPECT_EQ(packed.Read(Row(image, 0), 2, samples.data()), Row(image, 0));
  packed.Copy(Row(image, 0), 2, samples.data());
  EXPECT_EQ(samples, (Bytes{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(loose.PlaceOf(0), 0);
  EXPECT_EQ(packed.PlaceOf(0), 2);
}

TEST_F(Neighbourhood, OfAClipTheRowsBeginWithItsFirstPixel) {
  const Image clip = Adopt(ClipImage5(New(3, 1, ImageFormatGA, {{1, 2, 3, 4, 5, 6}}), 1, 0, 2, 1));
  const SampleRows<Layout<ColourFamily::Gray, true>> rows(Record(clip), true);
  EXPECT_EQ(rows.Read(Row(clip, 0), 2, nullptr), Row(clip, 0) + 2);
}

TEST_F(Neighbourhood, WhatIsWrittenGoesToItsPlace) {
  const Image image = New(2, 1, ImageFormatXBGR, {{7, 7, 7, 7, 8, 8, 8, 8}});
  Bytes buffer(6);
  SampleRows<RGB>(Record(image), false).Write(Row(image, 0), 2, buffer.data(), [](uint8_t *samples) {
    std::copy_n(Bytes{1, 2, 3, 4, 5, 6}.begin(), 6, samples);
  });
  EXPECT_EQ(PixelsOf(image), (Grid{{7, 3, 2, 1, 8, 6, 5, 4}}));
}

TEST_F(Neighbourhood, OfChannelsInOnePlaceTheLastOneStays) {
  const Image image = New(2, 1, ImageFormatG, {{0, 0}});
  Bytes buffer(6);
  SampleRows<RGB>(Record(image), false).Write(Row(image, 0), 2, buffer.data(), [](uint8_t *samples) {
    std::copy_n(Bytes{1, 2, 3, 4, 5, 6}.begin(), 6, samples);
  });
  EXPECT_EQ(PixelsOf(image), (Grid{{3, 6}}));
}

TEST_F(Neighbourhood, ACopyWithinARowIsZeroBehindIt) {
  const Image image = New(3, 1, ImageFormatBGR, {{1, 2, 3, 4, 5, 6, 7, 8, 9}});
  const auto copied = [&](bool packed, int64_t rowBytes, int32_t columns) {
    Bytes samples(static_cast<size_t>(3 * columns), 77);
    SampleRows<RGB>(Record(image), packed).CopyWithin(Row(image, 0), rowBytes, columns, samples.data());
    return samples;
  };
  EXPECT_EQ(copied(true, 9, 3), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(copied(true, 9, 4), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0}));
  EXPECT_EQ(copied(true, 5, 3), (Bytes{1, 2, 3, 4, 5, 0, 0, 0, 0}));
  EXPECT_EQ(copied(false, 5, 3), (Bytes{3, 2, 1, 0, 5, 4, 0, 0, 0}));
  EXPECT_EQ(copied(false, 0, 2), (Bytes{0, 0, 0, 0, 0, 0}));
}

// An offset that has wrapped in a clip of a very wide image leads to bytes before the row.
TEST_F(Neighbourhood, ACopyWithinARowIsZeroBeforeIt) {
  const Image image = New(4, 1, ImageFormatG, {{1, 2, 3, 4}});
  Record(image).GrayOffset = -2;
  Bytes samples(4, 77);
  SampleRows<Gray>(Record(image), false).CopyWithin(Row(image, 0), 4, 4, samples.data());
  EXPECT_EQ(samples, (Bytes{0, 0, 1, 2}));
  Record(image).GrayOffset = 0;
}

}  // namespace
}  // namespace zvk::pixels
