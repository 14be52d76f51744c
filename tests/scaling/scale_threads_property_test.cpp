// Random scales on threads over random records, against the naive scaler: every byte of every storage.
#include <gtest/gtest.h>

#include <cstdint>

#include "scaling/scale_engine.h"
#include "tests/scaling/scale_generators.h"
#include "tests/scaling/scale_testing.h"

namespace zvk::scaling {
namespace {

int32_t ThreadCount(Random &random) { return random.Of({-1, 1, 2, 3, 7, 32}); }

void CheckAgainstNaive(const TestImage &dest, int32_t threads, const TestImage &source, const TestImage &temp,
                       int32_t mode, int32_t width, int32_t height) {
  const Outcome outcome = OutcomeOf(dest, source, temp, [&] {
    return PictureScaleZVKMT(dest.Object(), threads, source.Object(), temp.Object(), mode, width, height) != 0;
  });
  // A file is scaled on one thread, which rounds in both passes.
  const double rounding = source.Record().IsMapping || dest.Record().IsMapping ? 0.5 : 0.0;
  RC_ASSERT(outcome == NaiveOutcome(dest, source, temp, mode, width, height, rounding));
}

TEST(ScaleThreadsProperty, AnyImagesGiveTheNaiveBytes) {
  CheckCases([](Random &random) {
    const int32_t width = AnySide(random), height = AnySide(random);
    const TestImage source = Image(random, AnySide(random), AnySide(random), AnyFormat(random)),
                    dest = Image(random, width, height, AnyFormat(random));
    CheckAgainstNaive(dest, ThreadCount(random), source, TempFor(random, dest, source, width), random.Between(1, 7),
                      width, height);
  });
}

TEST(ScaleThreadsProperty, AKnownPairGivesTheNaiveBytes) {
  CheckCases([](Random &random) {
    const auto [sourceFormat, destFormat] = PairOfFormats(random);
    const int32_t width = AnySide(random), height = AnySide(random);
    const TestImage source = Image(random, AnySide(random), AnySide(random), sourceFormat),
                    dest = Image(random, width, height, destFormat);
    CheckAgainstNaive(dest, ThreadCount(random), source, TempFor(random, dest, source, width), random.Between(1, 7),
                      width, height);
  });
}

TEST(ScaleThreadsProperty, OneImageScaledIntoItselfGivesTheNaiveBytes) {
  CheckCases([](Random &random) {
    const TestImage image = Image(random, AnySide(random), AnySide(random), AnyFormat(random));
    const int32_t width = random.Between(1, image.Record().Width), height = random.Between(1, image.Record().Height);
    CheckAgainstNaive(image, ThreadCount(random), image, TempFor(random, image, image, width), random.Between(1, 7),
                      width, height);
  });
}

}  // namespace
}  // namespace zvk::scaling
