// Random scales by nearest pixels over random records, against the naive scaler: every byte of every storage.
#include <gtest/gtest.h>

#include <cstdint>

#include "scaling/fast_scale.h"
#include "tests/naive/fast_scale.h"
#include "tests/scaling/scale_generators.h"
#include "tests/scaling/scale_testing.h"

namespace zvk::scaling {
namespace {

void CheckAgainstNaive(const TestImage &dest, const TestImage &source, int32_t width, int32_t height) {
  const Bytes destBefore = dest.Storage(), sourceBefore = source.Storage();
  const bool result = ScalePictureFast(dest.Object(), source.Object(), width, height) != 0;
  const Bytes destAfter = dest.Storage(), sourceAfter = source.Storage();
  dest.Storage() = destBefore;
  source.Storage() = sourceBefore;
  RC_ASSERT(result == naive::ScaleFast(dest.Record(), source.Record(), width, height));
  RC_ASSERT(destAfter == dest.Storage());
  RC_ASSERT(sourceAfter == source.Storage());
}

TEST(FastScaleProperty, AnyImagesGiveTheNaiveBytes) {
  CheckCases([](Random &random) {
    const TestImage source = Image(random, AnySide(random), AnySide(random), AnyFormat(random)),
                    dest = Image(random, AnySide(random), AnySide(random), AnyFormat(random));
    CheckAgainstNaive(dest, source, random.Between(-1, 320), random.Between(-1, 320));
  });
}

TEST(FastScaleProperty, AKnownPairGivesTheNaiveBytes) {
  CheckCases([](Random &random) {
    const auto [sourceFormat, destFormat] = PairOfFormats(random);
    const TestImage source = Image(random, AnySide(random), AnySide(random), sourceFormat),
                    dest = Image(random, AnySide(random), AnySide(random), destFormat);
    CheckAgainstNaive(dest, source, random.Between(1, 320), random.Between(1, 320));
  });
}

TEST(FastScaleProperty, OneImageScaledIntoItselfGivesTheNaiveBytes) {
  CheckCases([](Random &random) {
    const TestImage image = Image(random, AnySide(random), AnySide(random), AnyFormat(random));
    CheckAgainstNaive(image, image, random.Between(1, 320), random.Between(1, 320));
  });
}

TEST(FastScaleProperty, ImagesThatShareStorageGiveTheNaiveBytes) {
  CheckCases([](Random &random) {
    // Two images at random places of one block, often of the same rows.
    const int32_t side = random.Between(1, 14);
    const int32_t rowSize = random.Between(20, 80);
    const TestImage block(rowSize + 100, 60, ImageFormatBuffer);
    const auto place = [&](int32_t format) {
      return TestImage(block, random.Between(0, 1) * random.Between(0, 200), side, side, format,
                       random.Between(0, 2) == 0 ? random.Between(5, 90) : rowSize);
    };
    const auto [sourceFormat, destFormat] = PairOfFormats(random);
    const TestImage source = place(sourceFormat), dest = place(destFormat);
    TestImage(block).FillNoise(random.Bits());
    CheckAgainstNaive(dest, source, random.Between(1, side), random.Between(1, side));
  });
}

}  // namespace
}  // namespace zvk::scaling
