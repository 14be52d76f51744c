// Code of the host that runs in a yield of a pass may give an image other storage. From the next row on, the pass
// must reach its rows as that storage wants it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>

#include "scaling/scale_engine.h"
#include "scaling/scale_passes.h"
#include "tests/scaling/scale_testing.h"
#include "tests/support/plugin_host.h"

namespace zvk::scaling {
namespace {

// Stands in for a mapped block of one row: an address holds only until the next fetch.
uint8_t *OnlyRow(ImageClassData *record, int32_t row) {
  static Bytes block;
  const uint8_t *stored = GetRowLinear(record, row);
  block.assign(stored, stored + record->RowSize);
  return block.data();
}

// The same for rows that are written: each goes back to its place when another one is fetched, or by PutRowBack.
Bytes writtenRow;
uint8_t *placeOfRow = nullptr;

void PutRowBack() {
  if (placeOfRow != nullptr) std::ranges::copy(writtenRow, placeOfRow);
  placeOfRow = nullptr;
}

uint8_t *OnlyRowWritten(ImageClassData *record, int32_t row) {
  PutRowBack();
  placeOfRow = GetRowLinear(record, row);
  writtenRow.assign(placeOfRow, placeOfRow + record->RowSize);
  return writtenRow.data();
}

class ScaleYield : public testing::Test {
 protected:
  ScaleYield() {
    static uint32_t ticks;
    ticks = 100;
    host_->SetEntry(
        "TickCount", +[]() -> uint32_t { return ++ticks; });
    host_->onYield = [this] {
      if (++yields_ == yieldToActIn_) act_();
    };
  }

  // Has `act` run in the yield of `image` with the given number, counted from 1.
  void ActInYield(const TestImage &image, int32_t number, std::function<void()> act) {
    image.Record().Yield.YieldTicks = 1;
    yieldToActIn_ = number;
    act_ = std::move(act);
  }

  PluginHost host_;
  int32_t yields_ = 0;
  int32_t yieldToActIn_ = 0;
  std::function<void()> act_;
};

TEST_F(ScaleYield, ATempThatBecomesAFileIsReadRowByRow) {
  constexpr int32_t kLanczos3 = 3;
  TestImage source(6, 20, ImageFormatRGB), dest(5, 15, ImageFormatRGB);
  source.FillNoise(1);
  TestImage temp = MakeTemp(dest, source, 5);
  const Outcome expected = NaiveOutcome(dest, source, temp, kLanczos3, 5, 15);
  // The destination is given time once, for 5 columns' lists, 20 rows and 15 rows' lists; then for each row of its own.
  ActInYield(dest, 1 + 5 + 20 + 15 + 4, [&] { temp.Map(OnlyRow); });
  ASSERT_TRUE(PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), kLanczos3, 5, 15));
  EXPECT_TRUE(temp.Record().IsMapping);
  EXPECT_EQ(dest.Storage(), expected.dest);
}

TEST_F(ScaleYield, RowsOfATempInAFileAreReadAnewBehindAYieldAlsoIfNoneComesAfterIt) {
  for (const bool isLast : {false, true}) {
    for (const int32_t format : {ImageFormatG, ImageFormatGray16}) {
      const bool isWide = format == ImageFormatGray16;
      const ScalePair &pair = isWide ? G16_to_G16 : G_to_G;
      TestImage source(32, 20, format), dest(32, 20, format), expected(32, 20, format),
          temp(32, 20, isWide ? ImageFormatScaling2 : ImageFormatScaling1);
      dest.Record().IsAllocated = true;
      ScaleTapTable table;
      ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleLanczos3), kVerticalAxis, 20, 0.999, 20, nullptr));
      // Pixel by pixel: five rows of one noise, the others of another one.
      const ScaleJob byPixel{&source.Record(), &expected.Record(), 20, 32, &temp.Record(), table.Lists()};
      const int32_t five = 5, end = 20;
      temp.FillNoise(3);
      PassesOf(pair).Vertical(byPixel, {0, five, nullptr}, kRoundToNearest);
      temp.FillNoise(9);
      PassesOf(pair).Vertical(byPixel, {five, end, nullptr}, kRoundToNearest);

      temp.FillNoise(3);
      temp.Map(GetRowLinear);
      yields_ = 0;
      ActInYield(dest, five, [&] {
        temp.FillNoise(9);
        if (isLast) dest.Record().Yield.YieldTicks = 0;
      });
      const ScaleJob told{&source.Record(), &dest.Record(), 20, 32, &temp.Record(), table.Lists()};
      const PassJob job(told, ShortenRows(told, pair));
      PassesOf(pair).Vertical(job, {0, end, &dest.Record()}, kRoundToNearest);
      EXPECT_EQ(dest.Storage(), expected.Storage()) << isLast << format;
    }
  }
}

TEST_F(ScaleYield, ATempThatBecomesAFileIsWrittenRowByRow) {
  for (const bool isLast : {false, true}) {
    for (const int32_t format : {ImageFormatG, ImageFormatGray16}) {
      const bool isWide = format == ImageFormatGray16;
      const ScalePair &pair = isWide ? G16_to_G16 : G_to_G;
      TestImage source(32, 20, format), dest(32, 20, format),
          temp(32, 20, isWide ? ImageFormatScaling2 : ImageFormatScaling1);
      source.FillNoise(3);
      source.Record().IsAllocated = true;
      ScaleTapTable table;
      ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 32, 1.0, 32, nullptr));
      yields_ = 0;
      ActInYield(dest, 2, [&] {
        temp.Map(OnlyRowWritten);
        if (isLast) dest.Record().Yield.YieldTicks = 0;
      });
      const ScaleJob told{&source.Record(), &dest.Record(), 20, 32, &temp.Record(), table.Lists()};
      const PassJob job(told, ShortenColumns(told, pair, kRoundToNearest, true));
      const int32_t end = 20;
      PassesOf(pair).Horizontal(job, {0, end, &dest.Record()}, kRoundToNearest);
      PutRowBack();
      temp.Record().GetRow = GetRowLinear;
      for (int32_t y = 0; y < 20; ++y) EXPECT_EQ(temp.Row(y, 32), source.Row(y, 32)) << isLast << format << ' ' << y;
    }
  }
}

TEST_F(ScaleYield, ASourceThatComesToLieUnderTheTempSeesWhatIsOverwritten) {
  TestImage source(3, 5, ImageFormatG), dest(3, 5, ImageFormatG), temp(3, 5, ImageFormatScaling1);
  for (int32_t y = 0; y < 5; ++y) {
    source.SetRow(y, {1, 2, 3});
    temp.SetRow(y, {7, 8, 9});
  }
  // Each column takes its neighbour to the left.
  ScaleTap taps[] = {{1.0f, 0}, {1.0f, 0}, {1.0f, 1}};
  const ScaleTapList lists[] = {{&taps[0], 1, 1.0f}, {&taps[1], 1, 1.0f}, {&taps[2], 1, 1.0f}};
  ActInYield(dest, 2, [&] { source.Record().Buffer = temp.Record().Buffer; });
  const ScaleJob told{&source.Record(), &dest.Record(), 5, 3, &temp.Record(), lists};
  const PassJob job(told, ShortenColumns(told, G_to_G, kRoundToNearest, true));
  const int32_t end = 5;
  PassesOf(G_to_G).Horizontal(job, {0, end, &dest.Record()}, kRoundToNearest);
  EXPECT_EQ(yields_, 5);
  for (int32_t y = 0; y < 2; ++y) EXPECT_EQ(temp.Row(y, 3), (Bytes{1, 1, 2})) << y;
  for (int32_t y = 2; y < 5; ++y) EXPECT_EQ(temp.Row(y, 3), (Bytes{7, 7, 7})) << y;
}

TEST_F(ScaleYield, ASourceThatGrowsIsReadToItsNewEnd) {
  TestImage source(3, 40, ImageFormatG), dest(3, 1, ImageFormatG), temp(3, 40, ImageFormatScaling1);
  source.FillNoise(1);
  source.Record().Height = 4;
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 3, 1.0, 3, nullptr));
  ActInYield(dest, 2, [&] {
    source.Record().Height = 39;
    dest.Record().Yield.YieldTicks = 0;  // and the rest may be made at once
  });
  const ScaleJob told{&source.Record(), &dest.Record(), 1, 3, &temp.Record(), table.Lists()};
  const PassJob job(told, ShortenColumns(told, G_to_G, kRoundToNearest, true));
  PassesOf(G_to_G).Horizontal(job, {0, source.Record().Height, &dest.Record()}, kRoundToNearest);
  EXPECT_EQ(yields_, 2);
  for (int32_t y = 0; y < 39; ++y) EXPECT_EQ(temp.Row(y, 3), source.Row(y, 3)) << y;
  EXPECT_EQ(temp.Row(39, 3), (Bytes{0, 0, 0}));
}

TEST_F(ScaleYield, OffsetsThatMoveCountFromTheNextRowOn) {
  TestImage source(1, 4, ImageFormatRGB), dest(1, 4, ImageFormatRGB), temp(1, 4, ImageFormatScaling4);
  for (int32_t y = 0; y < 4; ++y) source.SetRow(y, {10, 20, 30});
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 1, 1.0, 1, nullptr));
  ActInYield(dest, 2, [&] { source.Record().RedOffset = 2; });
  const ScaleJob told{&source.Record(), &dest.Record(), 4, 1, &temp.Record(), table.Lists()};
  const PassJob job(told, ShortenColumns(told, RGB_to_RGB, kRoundToNearest, true));
  const int32_t end = 4;
  PassesOf(RGB_to_RGB).Horizontal(job, {0, end, &dest.Record()}, kRoundToNearest);
  for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(temp.Row(y, 1), (Bytes{y < 2 ? uint8_t{10} : uint8_t{30}, 20, 30, 0})) << y;
}

// The images of both passes, and what they hold where nothing is written.
struct ClosedImages {
  ClosedImages() {
    for (int32_t y = 0; y < 5; ++y) source.SetRow(y, {1, 2});
    for (int32_t y = 0; y < 5; ++y) temp.SetRow(y, {7, 7});
    for (int32_t y = 0; y < 5; ++y) dest.SetRow(y, {9, 9});
  }

  // Looks behind the record, which may have been closed.
  static void ExpectRows(TestImage &image, const Bytes &firstTwo, const Bytes &others) {
    image.Record().GetRow = GetRowLinear;
    for (int32_t y = 0; y < 5; ++y) EXPECT_EQ(image.Row(y, 2), y < 2 ? firstTwo : others) << y;
  }

  TestImage source{2, 5, ImageFormatG}, temp{2, 5, ImageFormatScaling1}, dest{2, 5, ImageFormatG};
};

TEST_F(ScaleYield, AnImageThatIsClosedHasNoFurtherRowsInTheHorizontalPass) {
  for (const bool mapped : {false, true}) {
    for (const bool closesSource : {false, true}) {
      ClosedImages images;
      images.source.Record().IsMapping = mapped;
      ScaleTapTable table;
      ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 2, 1.0, 2, nullptr));
      yields_ = 0;
      ActInYield(images.dest, 2, [&] { (closesSource ? images.source : images.temp).Record().GetRow = nullptr; });
      const ScaleJob told{&images.source.Record(), nullptr, 0, 2, &images.temp.Record(), table.Lists()};
      const PassJob job(told, ShortenColumns(told, G_to_G, kRoundToNearest, true));
      const int32_t end = 5;
      PassesOf(G_to_G).Horizontal(job, {0, end, &images.dest.Record()}, kRoundToNearest);
      EXPECT_EQ(yields_, 5);
      ClosedImages::ExpectRows(images.temp, {1, 2}, {7, 7});
    }
  }
}

TEST_F(ScaleYield, AnImageThatIsClosedHasNoFurtherRowsInTheVerticalPass) {
  for (const bool mapped : {false, true}) {
    for (const bool closesTemp : {false, true}) {
      ClosedImages images;
      images.temp.Record().IsMapping = mapped;
      ScaleTapTable table;
      ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kVerticalAxis, 5, 1.0, 5, nullptr));
      yields_ = 0;
      ActInYield(images.dest, 2, [&] { (closesTemp ? images.temp : images.dest).Record().GetRow = nullptr; });
      const ScaleJob told{nullptr, &images.dest.Record(), 5, 2, &images.temp.Record(), table.Lists()};
      const PassJob job(told, ShortenRows(told, G_to_G));
      const int32_t end = 5;
      PassesOf(G_to_G).Vertical(job, {0, end, &images.dest.Record()}, kRoundToNearest);
      EXPECT_EQ(yields_, 5);
      ClosedImages::ExpectRows(images.dest, {7, 7}, {9, 9});
    }
  }
}

}  // namespace
}  // namespace zvk::scaling
