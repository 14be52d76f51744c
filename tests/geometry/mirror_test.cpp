#include "geometry/mirror.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "image/views.h"
#include "tests/geometry/turn_testing.h"
#include "tests/support/faults.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;

constexpr auto kInPlace = {HMirrorSelf, VMirrorSelf, Rotate180Self};

class Mirror : public testing::Test {
 protected:
  ~Mirror() override { EXPECT_FALSE(host_.TakeException()); }

  Owned<Object> Gray(const std::vector<Bytes> &rows) {
    auto image = NewImage(host_, static_cast<int32_t>(rows[0].size()), static_cast<int32_t>(rows.size()), ImageFormatG);
    SetGrid(image, 'g', rows);
    return image;
  }

  PluginHost host_{{.fenced = true}};
};

// --- what moves where ---

TEST_F(Mirror, LeftAndRightChangePlaces) {
  const auto image = Gray({{1, 2, 3, 4}, {5, 6, 7, 8}});
  HMirrorSelf(image);
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{4, 3, 2, 1}, {8, 7, 6, 5}}));
}

TEST_F(Mirror, TheMiddleColumnStays) {
  const auto image = Gray({{1, 2, 3}, {4, 5, 6}});
  HMirrorSelf(image);
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{3, 2, 1}, {6, 5, 4}}));
}

TEST_F(Mirror, AnImageOfOneColumnIsItsOwnMirror) {
  const StoredImage storage = Stored(host_, Kind::Block, 1, 4, ImageFormatRGBX, 3);
  const Bytes before = storage.Bytes();
  HMirrorSelf(storage.Image());
  EXPECT_EQ(storage.Bytes(), before);
}

TEST_F(Mirror, TopAndBottomChangePlaces) {
  const auto image = Gray({{1, 2}, {3, 4}, {5, 6}, {7, 8}});
  VMirrorSelf(image);
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{7, 8}, {5, 6}, {3, 4}, {1, 2}}));
}

TEST_F(Mirror, TheMiddleRowStays) {
  const auto image = Gray({{1, 2}, {3, 4}, {5, 6}});
  VMirrorSelf(image);
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{5, 6}, {3, 4}, {1, 2}}));
}

TEST_F(Mirror, FillerStaysWhereItIs) {
  const auto image = NewImage(host_, 2, 2, ImageFormatRGBX);
  ImageClassData &record = *RecordOf(image);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t i = 0; i < 8; ++i) record.GetRow(&record, y)[i] = static_cast<uint8_t>(10 * y + i);
  }
  const auto row = [&](int32_t y) { return Bytes(record.GetRow(&record, y), record.GetRow(&record, y) + 8); };
  VMirrorSelf(image);
  EXPECT_EQ(row(0), (Bytes{10, 11, 12, 3, 14, 15, 16, 7}));
  EXPECT_EQ(row(1), (Bytes{0, 1, 2, 13, 4, 5, 6, 17}));
  HMirrorSelf(image);
  EXPECT_EQ(row(0), (Bytes{14, 15, 16, 3, 10, 11, 12, 7}));
  EXPECT_EQ(row(1), (Bytes{4, 5, 6, 13, 0, 1, 2, 17}));
  Rotate180Self(image);
  EXPECT_EQ(row(0), (Bytes{0, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(row(1), (Bytes{10, 11, 12, 13, 14, 15, 16, 17}));
}

TEST_F(Mirror, TwiceMirroredIsTheOriginal) {
  for (const int32_t format : kFamilyFormats) {
    const StoredImage storage = Stored(host_, Kind::Block, 301, 5, format, 2);
    const Bytes before = storage.Bytes();
    HMirrorSelf(storage.Image());
    EXPECT_NE(storage.Bytes(), before);
    HMirrorSelf(storage.Image());
    EXPECT_EQ(storage.Bytes(), before) << format;
    VMirrorSelf(storage.Image());
    EXPECT_NE(storage.Bytes(), before);
    VMirrorSelf(storage.Image());
    EXPECT_EQ(storage.Bytes(), before) << format;
  }
}

TEST_F(Mirror, AHalfTurnOfAnEvenHeightIsExact) {
  const auto image = Gray({{1, 2, 3}, {4, 5, 6}});
  Rotate180Self(image);
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{6, 5, 4}, {3, 2, 1}}));
}

TEST_F(Mirror, AHalfTurnOfHeightThreeMakesTheMiddleRowTheReversalOfTheRowBelowAsItWas) {
  const auto image = Gray({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  Rotate180Self(image);
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{9, 8, 7}, {9, 8, 7}, {3, 2, 1}}));
}

TEST_F(Mirror, AHalfTurnOfHeightFiveTakesTheRowBelowTheMiddle) {
  const auto image = Gray({{1, 2}, {3, 4}, {5, 6}, {7, 8}, {9, 10}});
  Rotate180Self(image);
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{10, 9}, {8, 7}, {8, 7}, {4, 3}, {2, 1}}));
}

TEST_F(Mirror, AHalfTurnOfOneRowZeroesItsSamplesAndNotItsFiller) {
  const StoredImage storage = Stored(host_, Kind::Block, 3, 1, ImageFormatXRGB);
  storage.SetBytes({9, 1, 2, 3, 8, 4, 5, 6, 7, 7, 7, 7});
  Rotate180Self(storage.Image());
  EXPECT_EQ(storage.Bytes(), (Bytes{9, 0, 0, 0, 8, 0, 0, 0, 7, 0, 0, 0}));
}

TEST_F(Mirror, AnImageOfNoFamilyStays) {
  for (const int32_t format : {int32_t{ImageFormatBuffer}, int32_t{ImageFormatScaling4}}) {
    const StoredImage storage = Stored(host_, Kind::Block, 4, 3, format);
    const Bytes before = storage.Bytes();
    for (const auto move : kInPlace) move(storage.Image());
    EXPECT_EQ(storage.Bytes(), before);
  }
}

TEST_F(Mirror, ASampleThatTwoChannelsShareChangesItsPlaceTwice) {
  const StoredImage storage = Stored(host_, Kind::Block, 2, 1, ImageFormatRGB);
  storage.SetBytes({1, 2, 3, 4, 5, 6});
  storage.Record().GreenOffset = storage.Record().RedOffset;
  HMirrorSelf(storage.Image());
  EXPECT_EQ(storage.Bytes(), (Bytes{1, 2, 6, 4, 5, 3}));
}

TEST_F(Mirror, ChannelsOfNeighbouringPixelsThatShareASampleMoveInOrder) {
  // In a part of an image a moved channel may lie in another pixel than the others.
  const StoredImage storage = Stored(host_, Kind::Block, 8, 2, ImageFormatRGB),
                    same = Stored(host_, Kind::Block, 8, 2, ImageFormatRGB);
  const auto view = Adopt(ClipImage5(storage.Image(), 1, 0, 6, 2)), twin = Adopt(ClipImage5(same.Image(), 1, 0, 6, 2));
  for (const auto &image : {view, twin}) RecordOf(image)->GreenOffset = 0;
  HMirrorSelf(view);
  naive::HMirror(*RecordOf(twin));
  EXPECT_EQ(storage.Bytes(), same.Bytes());
  VMirrorSelf(view);
  naive::ExchangeHalves(*RecordOf(twin), false);
  EXPECT_EQ(storage.Bytes(), same.Bytes());
  Rotate180Self(view);
  naive::ExchangeHalves(*RecordOf(twin), true);
  EXPECT_EQ(storage.Bytes(), same.Bytes());
}

TEST_F(Mirror, RowsOfATableThatOverlapAreWrittenOneAfterTheOther) {
  const auto makeImage = [this] {
    StoredImage image = scenes::NoisyImage(host_, Kind::Table, 90, 2, ImageFormatG, {.gap = 40});
    image.Record().RowTable[1] = image.Record().RowTable[0] + 7;
    return image;
  };
  const StoredImage storage = makeImage(), same = makeImage();
  VMirrorSelf(storage);
  naive::ExchangeHalves(same.Record(), false);
  EXPECT_EQ(storage.Bytes(), same.Bytes());
}

// --- refusals ---

TEST_F(Mirror, SixteenBitGrayIsNeverMovedAndGetsNoTime) {
  const auto image = NewImage(host_, 4, 4, ImageFormatGray16);
  ImageClassData &record = *RecordOf(image);
  const Bytes noise = Noise(static_cast<size_t>(record.TotalSize), 5);
  std::copy(noise.begin(), noise.end(), record.Buffer);
  YieldAlways(host_, image);
  for (const auto move : kInPlace) move(image);
  EXPECT_EQ(Bytes(record.Buffer, record.Buffer + record.TotalSize), noise);
  EXPECT_EQ(Yields(host_), 0);
}

TEST_F(Mirror, AnImageThatIsNotUsableIsLeftAlone) {
  const auto empty = host_.New("PictureZVK");
  const auto closed = NewImage(host_, 4, 4, ImageFormatRGB);
  ImageDestructor(closed);
  const auto parent = NewImage(host_, 4, 4, ImageFormatRGB);
  const auto negative = Adopt(ClipImage5(parent, 6, 0, 1, 4));
  const auto low = Adopt(ClipImage5(parent, 0, 4, 4, 1));
  const StoredImage table = Stored(host_, Kind::Table, 4, 4, ImageFormatRGB);
  const auto tableView = Adopt(ClipImage1(table.Image()));
  const StoredImage invalid = Stored(host_, Kind::Block, 4, 4, ImageFormatRGB);
  invalid.Record().Valid = false;
  const Bytes before = invalid.Bytes();
  for (const auto move : kInPlace) {
    move(nullptr);
    for (const auto &image : {empty, closed, negative, low, tableView, invalid.Image()}) move(image);
  }
  EXPECT_EQ(invalid.Bytes(), before);
}

TEST_F(Mirror, AnImageOfNoColumnsIsLeftAlone) {
  const StoredImage storage = Stored(host_, Kind::Block, 4, 4, ImageFormatRGB);
  const Bytes before = storage.Bytes();
  const auto none = Adopt(ClipImage5(storage.Image(), 4, 0, 4, 4));
  ASSERT_EQ(RecordOf(none)->Width, 0);
  for (const auto move : kInPlace) move(none);
  EXPECT_EQ(storage.Bytes(), before);
}

TEST_F(Mirror, RowsThatRunBackwardsAreMirroredAndNotExchanged) {
  const StoredImage storage = Stored(host_, Kind::Backwards, 3, 2, ImageFormatG, 1);
  storage.SetBytes({4, 5, 6, 0, 1, 2, 3});
  VMirrorSelf(storage.Image());
  Rotate180Self(storage.Image());
  EXPECT_EQ(storage.Bytes(), (Bytes{4, 5, 6, 0, 1, 2, 3}));
  HMirrorSelf(storage.Image());
  EXPECT_EQ(storage.Bytes(), (Bytes{6, 5, 4, 0, 3, 2, 1}));
}

TEST_F(Mirror, WithoutMemoryForTwoRowsNothingIsDoneAndNothingRaised) {
  const StoredImage storage = Stored(host_, Kind::Block, 40, 4, ImageFormatRGB);
  const Bytes before = storage.Bytes();
  for (const auto move : {VMirrorSelf, Rotate180Self}) {
    for (const int nth : {1, 2}) {
      faults::Heap heap;
      heap.FailCallocAt(nth);
      move(storage.Image());
      EXPECT_EQ(heap.Outstanding(), 0u);
    }
    EXPECT_EQ(storage.Bytes(), before);
  }
}

TEST_F(Mirror, TheTwoRowsAreOfTheRowSizeAndAreGivenBack) {
  const StoredImage storage = Stored(host_, Kind::Block, 40, 4, ImageFormatRGB, 7);
  faults::Heap heap;
  VMirrorSelf(storage.Image());
  std::vector<size_t> sizes;
  for (const faults::Allocation &allocation : heap.Allocations()) sizes.push_back(allocation.count * allocation.size);
  EXPECT_EQ(sizes, (std::vector<size_t>{127, 127}));
  EXPECT_EQ(heap.Outstanding(), 0u);
}

TEST_F(Mirror, PixelsBeyondAShortRowSizeStayOutOfTheExchange) {
  // Rows of four pixels, three bytes apart.
  const StoredImage storage = Stored(host_, Kind::Block, 4, 2, ImageFormatG, -1);
  storage.SetBytes({1, 2, 3, 4, 5, 6, 7});
  VMirrorSelf(storage.Image());
  // Put aside: 1 2 3 and 4 5 6. The upper row is written first, then the lower one, which begins with its last pixel.
  EXPECT_EQ(storage.Bytes(), (Bytes{4, 5, 6, 1, 2, 3, 7}));
  storage.SetBytes({1, 2, 3, 4, 5, 6, 7});
  Rotate180Self(storage.Image());
  // Pixels 1 to 3 of each row become 6 5 4 and 3 2 1.
  EXPECT_EQ(storage.Bytes(), (Bytes{1, 6, 5, 4, 3, 2, 1}));
}

// --- order of fetches ---

TEST_F(Mirror, EveryRowIsFetchedOnceForLeftAndRight) {
  for (const int32_t width : {0, 1, 4}) {
    const StoredImage storage = Stored(host_, Kind::Block, 4, 3, ImageFormatRGB);
    ImageClassData &record = storage.Record();
    record.Width = width;
    RowLog log;
    log.WatchAsMapped(record, "r");
    HMirrorSelf(storage.Image());
    EXPECT_EQ(log.Take(), "r0 r1 r2");
  }
}

TEST_F(Mirror, RowsAreFetchedAnewForWriting) {
  const StoredImage storage = Stored(host_, Kind::Block, 4, 5, ImageFormatRGB);
  ImageClassData &record = storage.Record();
  RowLog log;
  log.WatchAsMapped(record, "r");
  VMirrorSelf(storage.Image());
  EXPECT_EQ(log.Take(), "r0 r4 r0 r4 r1 r3 r1 r3");
  Rotate180Self(storage.Image());
  EXPECT_EQ(log.Take(), "r0 r4 r0 r4 r1 r3 r1 r3 r2");
}

TEST_F(Mirror, ARowThatCannotBeMappedIsLeftOut) {
  const StoredImage storage = Stored(host_, Kind::Block, 2, 4, ImageFormatG);
  RowLog rows;
  const auto prepared = [&](const StoredImage &image) {
    image.SetBytes({1, 2, 3, 4, 5, 6, 7, 8});
    image.Record().IsMapping = true;
    rows.Refuse(image.Record(), 1);
  };
  prepared(storage);
  HMirrorSelf(storage.Image());
  EXPECT_EQ(storage.Bytes(), (Bytes{2, 1, 3, 4, 6, 5, 8, 7}));
  prepared(storage);
  VMirrorSelf(storage.Image());
  EXPECT_EQ(storage.Bytes(), (Bytes{7, 8, 3, 4, 5, 6, 1, 2}));
  prepared(storage);
  Rotate180Self(storage.Image());
  EXPECT_EQ(storage.Bytes(), (Bytes{8, 7, 3, 4, 5, 6, 2, 1}));
  // As the middle row it is not written.
  prepared(storage);
  storage.Record().Height = 3;
  Rotate180Self(storage.Image());
  EXPECT_EQ(storage.Bytes(), (Bytes{6, 5, 3, 4, 2, 1, 7, 8}));
}

// --- yields ---

TEST_F(Mirror, TimeIsGivenOnceAtTheStartAndAfterEachRowOrPair) {
  const StoredImage storage = Stored(host_, Kind::Block, 4, 5, ImageFormatRGB);
  YieldAlways(host_, storage.Image());
  HMirrorSelf(storage.Image());
  EXPECT_EQ(Yields(host_), 1 + 5);
  VMirrorSelf(storage.Image());
  EXPECT_EQ(Yields(host_), 6 + 1 + 2);
  Rotate180Self(storage.Image());
  EXPECT_EQ(Yields(host_), 9 + 1 + 2);
}

TEST_F(Mirror, AnImageThatIsClosedMeanwhileIsTouchedNoMore) {
  for (const auto move : kInPlace) {
    for (const int last : {1, 2, 3}) {
      const auto image = NewImage(host_, 4, 5, ImageFormatRGB);
      YieldAlways(host_, image);
      int yields = 0;
      host_->onYield = [&] {
        if (++yields == last) ImageDestructor(image);
      };
      move(image);
      EXPECT_EQ(yields, last);
      host_->onYield = nullptr;
    }
  }
}

TEST_F(Mirror, AViewWhoseParentIsClosedMeanwhileIsTouchedNoMore) {
  for (const auto move : kInPlace) {
    for (const int last : {1, 2, 3}) {
      const auto image = NewImage(host_, 4, 5, ImageFormatRGB), view = Adopt(ClipImage1(image));
      YieldAlways(host_, view);
      int yields = 0;
      host_->onYield = [&] {
        if (++yields == last) ImageDestructor(image);
      };
      move(view);
      EXPECT_EQ(yields, last);
      host_->onYield = nullptr;
    }
  }
}

TEST_F(Mirror, AnImageThatIsConstructedAnewMeanwhileIsMovedAsItThenIs) {
  for (const auto move : kInPlace) {
    for (const int32_t format : {int32_t{ImageFormatRGB}, int32_t{ImageFormatG}, int32_t{ImageFormatCMYKA}}) {
      for (const auto &[width, height] : {std::pair{2, 4}, {300, 7}, {16, 8}}) {
        const auto image = NewImage(host_, 16, 8, ImageFormatRGBA);
        YieldAlways(host_, image);
        int yields = 0;
        host_->onYield = [&, width = width, height = height] {
          if (++yields != 2) return;
          ImageDestructor(image);
          ImageConstructor(image, width, height, format);
        };
        move(image);
        EXPECT_GE(yields, 2);
        EXPECT_TRUE(RecordOf(image)->Valid);
        host_->onYield = nullptr;
      }
    }
  }
}

TEST_F(Mirror, AnImageThatIsConstructedAnewWithoutColoursOrInSixteenBitsMeanwhileIsTouchedNoMore) {
  // The same RowSize before and after.
  for (const auto &[format, width] : {std::pair{int32_t{ImageFormatScaling8}, 256}, {ImageFormatGray16, 1024}}) {
    for (const auto move : kInPlace) {
      for (const int last : {1, 2}) {
        const auto image = NewImage(host_, 2048, 4, ImageFormatG);
        YieldAlways(host_, image);
        int yields = 0;
        Bytes before;
        host_->onYield = [&, format = format, width = width] {
          if (++yields != last) return;
          ImageDestructor(image);
          ImageConstructor(image, width, 4, format);
          uint8_t *pixels = RecordOf(image)->Buffer;
          for (int32_t i = 0; i < 4 * 2048; ++i) pixels[i] = static_cast<uint8_t>(i % 251);
          before.assign(pixels, pixels + 4 * 2048);
        };
        move(image);
        host_->onYield = nullptr;
        EXPECT_EQ(yields, last);
        ASSERT_EQ(RecordOf(image)->RowSize, 2048);
        const uint8_t *pixels = RecordOf(image)->Buffer;
        EXPECT_EQ(Bytes(pixels, pixels + 4 * 2048), before);
      }
    }
  }
}

}  // namespace
}  // namespace zvk::geometry
