// Random scales by nearest pixels over random records, against the naive scaler: every byte of every storage.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

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

RC_GTEST_PROP(FastScaleProperty, AnyImagesGiveTheNaiveBytes, ()) {
  const TestImage source = Image(Side(), Side(), Format()), dest = Image(Side(), Side(), Format());
  CheckAgainstNaive(dest, source, Between(-1, 320), Between(-1, 320));
}

RC_GTEST_PROP(FastScaleProperty, AKnownPairGivesTheNaiveBytes, ()) {
  const auto [sourceFormat, destFormat] = PairOfFormats();
  const TestImage source = Image(Side(), Side(), sourceFormat), dest = Image(Side(), Side(), destFormat);
  CheckAgainstNaive(dest, source, Between(1, 320), Between(1, 320));
}

RC_GTEST_PROP(FastScaleProperty, OneImageScaledIntoItselfGivesTheNaiveBytes, ()) {
  const TestImage image = Image(Side(), Side(), Format());
  CheckAgainstNaive(image, image, Between(1, 320), Between(1, 320));
}

RC_GTEST_PROP(FastScaleProperty, ImagesThatShareStorageGiveTheNaiveBytes, ()) {
  // Two images at random places of one block, often of the same rows.
  const int32_t side = Between(1, 14);
  const int32_t rowSize = Between(20, 80);
  const TestImage block(rowSize + 100, 60, ImageFormatBuffer);
  const auto place = [&](int32_t format) {
    return TestImage(block, Between(0, 1) * Between(0, 200), side, side, format,
                     Between(0, 2) == 0 ? Between(5, 90) : rowSize);
  };
  const auto [sourceFormat, destFormat] = PairOfFormats();
  const TestImage source = place(sourceFormat), dest = place(destFormat);
  TestImage(block).FillNoise(static_cast<uint32_t>(Between(0, 1000000)));
  CheckAgainstNaive(dest, source, Between(1, side), Between(1, side));
}

}  // namespace
}  // namespace zvk::scaling
