// Random scales on threads over random records, against the naive scaler: every byte of every storage.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>

#include "scaling/scale_engine.h"
#include "tests/scaling/scale_generators.h"
#include "tests/scaling/scale_testing.h"

namespace zvk::scaling {
namespace {

int32_t ThreadCount() { return *rc::gen::element<int32_t>(-1, 1, 2, 3, 7, 32); }

void CheckAgainstNaive(const TestImage &dest, int32_t threads, const TestImage &source, const TestImage &temp,
                       int32_t mode, int32_t width, int32_t height) {
  const Outcome outcome = OutcomeOf(dest, source, temp, [&] {
    return PictureScaleZVKMT(dest.Object(), threads, source.Object(), temp.Object(), mode, width, height) != 0;
  });
  // A file is scaled on one thread, which rounds in both passes.
  const double rounding = source.Record().IsMapping || dest.Record().IsMapping ? 0.5 : 0.0;
  RC_ASSERT(outcome == NaiveOutcome(dest, source, temp, mode, width, height, rounding));
}

RC_GTEST_PROP(ScaleThreadsProperty, AnyImagesGiveTheNaiveBytes, ()) {
  const int32_t width = Side(), height = Side();
  const TestImage source = Image(Side(), Side(), Format()), dest = Image(width, height, Format());
  CheckAgainstNaive(dest, ThreadCount(), source, TempFor(dest, source, width), Between(1, 7), width, height);
}

RC_GTEST_PROP(ScaleThreadsProperty, AKnownPairGivesTheNaiveBytes, ()) {
  const auto [sourceFormat, destFormat] = PairOfFormats();
  const int32_t width = Side(), height = Side();
  const TestImage source = Image(Side(), Side(), sourceFormat), dest = Image(width, height, destFormat);
  CheckAgainstNaive(dest, ThreadCount(), source, TempFor(dest, source, width), Between(1, 7), width, height);
}

RC_GTEST_PROP(ScaleThreadsProperty, OneImageScaledIntoItselfGivesTheNaiveBytes, ()) {
  const TestImage image = Image(Side(), Side(), Format());
  const int32_t width = Between(1, image.Record().Width), height = Between(1, image.Record().Height);
  CheckAgainstNaive(image, ThreadCount(), image, TempFor(image, image, width), Between(1, 7), width, height);
}

}  // namespace
}  // namespace zvk::scaling
