// Random scales over random records, against the naive scaler: every byte of every storage.
#include <gtest/gtest.h>

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

TEST(ScaleProperty, AnyImagesGiveTheNaiveBytes) {
  CheckCases([](Random &random) {
    const int32_t width = AnySide(random), height = AnySide(random);
    const TestImage source = Image(random, AnySide(random), AnySide(random), AnyFormat(random)),
                    dest = Image(random, width, height, AnyFormat(random));
    CheckAgainstNaive(dest, source, TempFor(random, dest, source, width), random.Between(1, 7), width, height);
  });
}

TEST(ScaleProperty, AKnownPairGivesTheNaiveBytes) {
  CheckCases([](Random &random) {
    const auto [sourceFormat, destFormat] = PairOfFormats(random);
    const int32_t width = AnySide(random), height = AnySide(random);
    const TestImage source = Image(random, AnySide(random), AnySide(random), sourceFormat),
                    dest = Image(random, width, height, destFormat);
    CheckAgainstNaive(dest, source, TempFor(random, dest, source, width), random.Between(1, 7), width, height);
  });
}

TEST(ScaleProperty, OneImageScaledIntoItselfGivesTheNaiveBytes) {
  CheckCases([](Random &random) {
    const TestImage image = Image(random, AnySide(random), AnySide(random), AnyFormat(random));
    const int32_t width = random.Between(1, image.Record().Width), height = random.Between(1, image.Record().Height);
    CheckAgainstNaive(image, image, TempFor(random, image, image, width), random.Between(1, 7), width, height);
  });
}

TEST(ScaleProperty, ImagesThatShareStorageGiveTheNaiveBytes) {
  CheckCases([](Random &random) {
    // Three images at random places of one block, often of the same rows.
    const int32_t side = random.Between(1, 14);
    const int32_t rowSize = random.Between(20, 80);
    const TestImage block(rowSize + 100, 60, ImageFormatBuffer);
    const auto place = [&](int32_t format, bool isWide) {
      const ptrdiff_t position = random.Between(0, 3) == 0 ? random.Between(0, 200) : 0;
      const int32_t size = random.Between(0, 2) == 0 ? random.Between(5, 90) : rowSize;
      // No wide sample is cut by the end of the last row: what becomes of that one is a test of its own.
      return TestImage(block, position, side, side, format, isWide ? size / 2 * 2 : size);
    };
    const auto anywhere = [&] {
      const int32_t format = AnyFormat(random);
      return place(format, format == ImageFormatGray16);
    };
    const TestImage source = anywhere(), dest = anywhere();
    const auto pair = naive::PairFor(source.Record(), dest.Record());
    const TestImage temp = place(pair ? pair->tempFormat : ImageFormatScaling1, pair && pair->wide);
    TestImage(block).FillNoise(random.Bits());
    CheckAgainstNaive(dest, source, temp, random.Between(1, 7), random.Between(1, side), random.Between(1, side));
  });
}

}  // namespace
}  // namespace zvk::scaling
