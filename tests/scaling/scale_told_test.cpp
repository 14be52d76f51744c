// Whole scales in short arithmetic beside the same in the told one, which is the definition: thousands of random jobs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "scaling/scale_engine.h"
#include "scaling/scale_filters.h"
#include "scaling/scale_passes.h"
#include "scaling/scale_taps.h"
#include "tests/scaling/scale_generators.h"
#include "tests/scaling/scale_host.h"

namespace zvk::scaling {
namespace {

// Jobs of each test, of which ctest runs several at a time.
constexpr int32_t kTests = 8;
constexpr int32_t kJobs = 500;

class ScalesAsTold : public ScaleHost, public testing::WithParamInterface<int32_t> {};
INSTANTIATE_TEST_SUITE_P(Hundreds, ScalesAsTold, testing::Range(0, kTests));

// Noise, flat areas with noise, extremes, or a slope.
void Draw(Random &random, const TestImage &image) {
  const int32_t kind = random.Between(0, 3);
  const uint8_t level = random.Byte();
  for (int32_t y = 0; y < image.Record().Height; ++y) {
    uint8_t *pixel = image.Pixel(0, y);
    for (int32_t i = 0; i < image.Record().Width * image.Record().PixelSize; ++i) {
      if (kind == 0) pixel[i] = static_cast<uint8_t>(random.Bits());
      if (kind == 1) pixel[i] = random.OneIn(40) ? random.Byte() : level;
      if (kind == 2) pixel[i] = random.OneIn(2) ? 255 : 0;
      if (kind == 3) pixel[i] = static_cast<uint8_t>(i + 3 * y);
    }
  }
}

// The passes without lists in short form: pixel by pixel, in double.
void ScaleAsTold(const TestImage &dest, const TestImage &source, const TestImage &temp, int32_t mode, double rounding) {
  const ImageClassData &from = source.Record(), &to = dest.Record();
  const ScalePasses &passes = PassesOf(*FindScalePair(from, to));
  ScaleTapTable table;
  ScaleJob job{&source.Record(), &dest.Record(), to.Height, to.Width, &temp.Record(), nullptr};
  ASSERT_TRUE(table.Build(*FindScaleFilter(mode), kHorizontalAxis, to.Width, static_cast<double>(to.Width) / from.Width,
                          from.Width, nullptr));
  job.Table = table.Lists();
  passes.Horizontal(job, {0, from.Height, nullptr}, rounding);
  ASSERT_TRUE(table.Build(*FindScaleFilter(mode), kVerticalAxis, to.Height,
                          static_cast<double>(to.Height) / from.Height, from.Height, nullptr));
  job.Table = table.Lists();
  passes.Vertical(job, {0, to.Height, nullptr}, kRoundToNearest);
}

TEST_P(ScalesAsTold, HundredsOfRandomJobsGiveTheToldBytes) {
  for (int32_t number = 0; number < kJobs; ++number) {
    Random random(static_cast<uint32_t>(GetParam() * kJobs + number));
    const auto [sourceFormat, destFormat] = PairOfFormats(random);
    const int32_t longest = random.Of({20, 60, 300});
    const TestImage source(random.Between(1, longest), random.Between(1, 6000 / longest), sourceFormat);
    const TestImage dest(random.Between(1, longest), random.Between(1, 6000 / longest), destFormat);
    Draw(random, source);
    const TestImage temp = MakeTemp(dest, source, dest.Record().Width);
    const int32_t mode = random.Between(ScaleTriangle, ScaleCubic);
    const bool threaded = random.OneIn(3);
    ScaleAsTold(dest, source, temp, mode, threaded ? kRoundTowardZero : kRoundToNearest);
    const Bytes told = dest.Storage(), toldTemp = temp.Storage();
    std::ranges::fill(dest.Storage(), 0);
    std::ranges::fill(temp.Storage(), 0);
    if (random.OneIn(4)) dest.Record().Yield.YieldTicks = 1;
    const int32_t width = dest.Record().Width, height = dest.Record().Height;
    ASSERT_TRUE(threaded ? PictureScaleZVKMT(dest.Object(), random.Between(1, 3), source.Object(), temp.Object(), mode,
                                             width, height)
                         : PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), mode, width, height));
    ASSERT_EQ(temp.Storage(), toldTemp) << number;
    ASSERT_EQ(dest.Storage(), told) << number;
  }
}

}  // namespace
}  // namespace zvk::scaling
