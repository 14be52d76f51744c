// Random scales over random records, against the naive scaler: every byte of every storage.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <vector>

#include "scaling/scale_engine.h"
#include "tests/scaling/scale_testing.h"

namespace zvk {
namespace {

int32_t Between(int32_t first, int32_t last) { return *rc::gen::inRange<int32_t>(first, last + 1); }

int32_t Format() {
  const int32_t format = Between(1, 40);
  return format == 14 ? 41 : format;
}

// Mostly small; now and then wide enough for several stretches, or high enough for several batches.
int32_t Side() { return *rc::gen::oneOf(rc::gen::inRange(1, 12), rc::gen::inRange(1, 45), rc::gen::inRange(1, 320)); }

// An image of at least the given size: rows tight, padded, of odd length or running backwards; now and then a part of a
// larger image, upside down, with a channel moved, or like a mapped file.
TestImage Image(int32_t width, int32_t height, int32_t format) {
  const int32_t left = Between(0, 3), top = Between(0, 3);
  const int32_t storedWidth = width + left + Between(0, 3), storedHeight = height + top + Between(0, 3);
  ImageClassData described{};
  InitImageClassData(&described, 1, 1, format);
  const int32_t rowSize = storedWidth * described.PixelSize + Between(0, 1) * Between(0, 70);
  TestImage image(storedWidth, storedHeight, format, Between(0, 2) == 0 ? -rowSize : rowSize);
  image.FillNoise(static_cast<uint32_t>(Between(0, 1000000)));
  ImageClassData &record = image.Record();
  if (Between(0, 3) == 0) {
    for (int32_t ImageClassData::*offset :
         {&ImageClassData::RedOffset, &ImageClassData::GreenOffset, &ImageClassData::BlueOffset,
          &ImageClassData::GrayOffset, &ImageClassData::AlphaOffset}) {
      // A wide sample needs two bytes.
      if (record.BitsPerComponent == 8) record.*offset = Between(0, record.PixelSize - 1);
    }
  }
  if (Between(0, 1) == 0) image.Clip(left, top, width, height);
  if (Between(0, 3) == 0) image.Mirror();
  if (Between(0, 4) == 0) record.IsMapping = true;
  return image;
}

TestImage TempFor(const TestImage &dest, const TestImage &source, int32_t width) {
  const auto pair = naive::PairFor(source.Record(), dest.Record());
  return Image(width, source.Record().Height, pair ? pair->tempFormat : ImageFormatScaling1);
}

void CheckAgainstNaive(const TestImage &dest, const TestImage &source, const TestImage &temp, int32_t mode,
                       int32_t width, int32_t height) {
  const Outcome outcome = OutcomeOf(dest, source, temp, [&] {
    return PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), mode, width, height) != 0;
  });
  RC_ASSERT(outcome == NaiveOutcome(dest, source, temp, mode, width, height));
}

RC_GTEST_PROP(ScaleProperty, AnyImagesGiveTheNaiveBytes, ()) {
  const int32_t width = Side(), height = Side();
  const TestImage source = Image(Side(), Side(), Format()), dest = Image(width, height, Format());
  CheckAgainstNaive(dest, source, TempFor(dest, source, width), Between(1, 7), width, height);
}

RC_GTEST_PROP(ScaleProperty, AKnownPairGivesTheNaiveBytes, ()) {
  const std::vector<int32_t> colours = {1, 2, 4, 6, 9, 10}, grays = {11, 12, 13, 16, 20}, inks = {23, 24, 25, 30, 32};
  const auto pair = *rc::gen::elementOf(
      std::vector<std::pair<std::vector<int32_t>, std::vector<int32_t>>>{{colours, colours},
                                                                         {colours, grays},
                                                                         {grays, colours},
                                                                         {grays, grays},
                                                                         {grays, inks},
                                                                         {inks, inks},
                                                                         {inks, grays},
                                                                         {{41}, {41}}});
  const int32_t width = Side(), height = Side();
  const TestImage source = Image(Side(), Side(), *rc::gen::elementOf(pair.first));
  const TestImage dest = Image(width, height, *rc::gen::elementOf(pair.second));
  CheckAgainstNaive(dest, source, TempFor(dest, source, width), Between(1, 7), width, height);
}

RC_GTEST_PROP(ScaleProperty, OneImageScaledIntoItselfGivesTheNaiveBytes, ()) {
  const TestImage image = Image(Side(), Side(), Format());
  const int32_t width = Between(1, image.Record().Width), height = Between(1, image.Record().Height);
  CheckAgainstNaive(image, image, TempFor(image, image, width), Between(1, 7), width, height);
}

RC_GTEST_PROP(ScaleProperty, ImagesThatShareStorageGiveTheNaiveBytes, ()) {
  // Three images at random places of one block, often of the same rows.
  const int32_t side = Between(1, 14);
  const int32_t rowSize = Between(20, 80);
  const TestImage block(rowSize + 100, 60, ImageFormatBuffer);
  const auto place = [&](int32_t format) {
    return TestImage(block, Between(0, 3) == 0 ? Between(0, 200) : 0, side, side, format,
                     Between(0, 2) == 0 ? Between(5, 90) : rowSize);
  };
  const TestImage source = place(Format()), dest = place(Format());
  const auto pair = naive::PairFor(source.Record(), dest.Record());
  const TestImage temp = place(pair ? pair->tempFormat : ImageFormatScaling1);
  TestImage(block).FillNoise(static_cast<uint32_t>(Between(0, 1000000)));
  CheckAgainstNaive(dest, source, temp, Between(1, 7), Between(1, side), Between(1, side));
}

}  // namespace
}  // namespace zvk
