// Random scales over random records, against the naive scaler: every byte of every storage.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <vector>

#include "scaling/scale_engine.h"
#include "tests/scaling/scale_generators.h"
#include "tests/scaling/scale_testing.h"

namespace zvk::scaling {
namespace {

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
  const auto [sourceFormat, destFormat] = PairOfFormats();
  const int32_t width = Side(), height = Side();
  const TestImage source = Image(Side(), Side(), sourceFormat), dest = Image(width, height, destFormat);
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
}  // namespace zvk::scaling
