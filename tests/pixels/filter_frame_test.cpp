#include "pixels/filter_frame.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

#include "image/image_factory.h"
#include "tests/filters/filter_testing.h"

namespace zvk::pixels {
namespace {

using namespace filter_testing;

// A kernel that tells the images that it was run on.
struct Seen {
  const ImageClassData *source = nullptr;
  const ImageClassData *dest = nullptr;

  void operator()(ImageClassData &sourceImage, ImageClassData &destImage) {
    source = &sourceImage;
    dest = &destImage;
  }
};

class FilterFrame : public FilterTest {
 protected:
  Image Filter(const Image &self, const Image &dest, NewDest newDest = NewDest::SameSize) {
    seen_ = {};
    return Adopt(RunFilter(self, dest, newDest, seen_));
  }

  void ExpectRefused(const Image &self, const Image &dest) {
    const int32_t references = dest ? dest->References() : 0;
    EXPECT_FALSE(Filter(self, dest));
    EXPECT_EQ(seen_.source, nullptr);
    EXPECT_EQ(dest ? dest->References() : 0, references);
    ExpectNothingRaised();
  }

  Seen seen_;
};

// --- what is refused ---

TEST_F(FilterFrame, AnImageThatIsNotUsableIsRefused) {
  const Image dest = New(4, 3, ImageFormatRGB);
  const Image notValid = New(4, 3, ImageFormatRGB);
  Record(notValid).Valid = false;
  ExpectRefused(notValid, dest);
  const Image closed = New(4, 3, ImageFormatRGB);
  ImageDestructor(closed);
  ExpectRefused(closed, dest);
  ExpectRefused(host_.New("PictureZVK"), dest);
  ExpectRefused(Image(), dest);
  const Image whole = New(4, 3, ImageFormatRGB);
  ExpectRefused(Adopt(ClipImage5(whole, 5, 0, 2, 2)), dest);  // of width -1
  ExpectRefused(Adopt(ClipImage5(whole, 0, 3, 2, 2)), dest);  // of height 0
}

TEST_F(FilterFrame, AnImageOfWidthZeroIsServed) {
  const Image whole = New(4, 3, ImageFormatRGB), dest = New(4, 3, ImageFormatRGB);
  const Image clip = Adopt(ClipImage5(whole, 4, 0, 2, 2));
  ASSERT_EQ(Record(clip).Width, 0);
  EXPECT_TRUE(Filter(clip, dest));
  EXPECT_EQ(seen_.source, &Record(clip));
  // Without a dest there is none to be had of that width.
  ExpectRefused(clip, Image());
}

TEST_F(FilterFrame, SixteenBitSamplesAreRefused) {
  ExpectRefused(New(4, 3, ImageFormatGray16), New(4, 3, ImageFormatGray16));
  ExpectRefused(New(4, 3, ImageFormatGray16), Image());
}

TEST_F(FilterFrame, ADestOfSixteenBitSamplesIsNot) {
  const Image dest = New(4, 3, ImageFormatGray16);
  EXPECT_TRUE(Filter(New(4, 3, ImageFormatG), dest));
  EXPECT_EQ(seen_.dest, &Record(dest));
}

TEST_F(FilterFrame, ADestThatIsNotUsableIsRefusedAndItsReferenceGivenBack) {
  const Image self = New(4, 3, ImageFormatRGB);
  const Image notValid = New(4, 3, ImageFormatRGB);
  Record(notValid).Valid = false;
  ExpectRefused(self, notValid);
  const Image closed = New(4, 3, ImageFormatRGB);
  ImageDestructor(closed);
  ExpectRefused(self, closed);
  ExpectRefused(self, host_.New("PictureZVK"));
}

TEST_F(FilterFrame, ARefusedFilterTouchesNothingAndDoesNotYield) {
  const Image self = New(4, 3, ImageFormatGray16), dest = Noise(4, 3, ImageFormatGray16);
  Record(self).Yield.YieldTicks = Record(dest).Yield.YieldTicks = 1;
  const Grid before = PixelsOf(dest);
  int yields = 0;
  host_->onYield = [&] { ++yields; };
  ExpectRefused(self, dest);
  EXPECT_EQ(yields, 0);
  EXPECT_EQ(PixelsOf(dest), before);
}

TEST_F(FilterFrame, WithoutAnImageForANilDestTheResultIsNil) {
  const Image self = New(4, 3, ImageFormatRGB);
  Record(self).ImageFormat = 14;
  ExpectRefused(self, Image());
}

// --- the dest and its reference ---

TEST_F(FilterFrame, ADestComesBackWithAReferenceOfItsOwn) {
  const Image self = New(4, 3, ImageFormatRGB), dest = New(9, 1, ImageFormatCMYKA);
  const Image result = Filter(self, dest);
  EXPECT_EQ(result.Handle(), dest.Handle());
  EXPECT_EQ(dest->References(), 2);
  EXPECT_EQ(seen_.source, &Record(self));
  EXPECT_EQ(seen_.dest, &Record(dest));
}

TEST_F(FilterFrame, SelfMayBeTheDest) {
  const Image self = New(4, 3, ImageFormatRGB);
  const Image result = Filter(self, self);
  EXPECT_EQ(result.Handle(), self.Handle());
  EXPECT_EQ(self->References(), 2);
  EXPECT_EQ(seen_.source, seen_.dest);
}

TEST_F(FilterFrame, ANilDestIsANewImageOfTheSameSizeAndFormat) {
  const Image result = Filter(New(4, 3, ImageFormatABGR), Image());
  ASSERT_TRUE(result);
  EXPECT_EQ(result->References(), 1);
  EXPECT_EQ(std::tuple(Record(result).Width, Record(result).Height, Record(result).ImageFormat),
            std::tuple(4, 3, ImageFormatABGR));
  EXPECT_EQ(seen_.dest, &Record(result));
}

TEST_F(FilterFrame, ANilDestMayExchangeTheSides) {
  const Image result = Filter(New(4, 3, ImageFormatG), Image(), NewDest::ExchangedSides);
  ASSERT_TRUE(result);
  EXPECT_EQ(std::pair(Record(result).Width, Record(result).Height), std::pair(3, 4));
}

TEST_F(FilterFrame, AKernelThatFailsGivesNilAndTheReferenceGoesBack) {
  const Image self = New(4, 3, ImageFormatG), dest = New(4, 3, ImageFormatG);
  const auto run = [&](bool outcome) {
    return Adopt(RunFilter(self, dest, NewDest::SameSize, [&](ImageClassData &, ImageClassData &) { return outcome; }));
  };
  EXPECT_FALSE(run(false));
  EXPECT_EQ(dest->References(), 1);
  EXPECT_EQ(run(true).Handle(), dest.Handle());
}

// --- factories ---

class FilterFrameFactory : public FilterFrame {
 protected:
  FilterFrameFactory() {
    made = [] { return nullptr; };
    host_->Classes().DefineSubclass(
        "Maker", "PictureFactoryZVK",
        {{"NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK",
          reinterpret_cast<void *>(+[](REALobject, int32_t, int32_t, int32_t) { return made(); })}});
    factory_ = host_.New("Maker");
    SetFactory(factory_);
  }
  ~FilterFrameFactory() override {
    SetFactory(nullptr);
    made = nullptr;
  }

  static inline std::function<REALobject()> made;
  Image factory_;
};

TEST_F(FilterFrameFactory, ANilDestIsAskedOfTheFactories) {
  const Image large = New(9, 8, ImageFormatCMYK);
  made = [&] { return Image(large).Release()->Handle(); };
  const Image result = Filter(New(4, 3, ImageFormatG), Image());
  EXPECT_EQ(result.Handle(), large.Handle());
  EXPECT_EQ(large->References(), 2);
}

TEST_F(FilterFrameFactory, AnImageThatAYieldHasMadeSmallerIsRefused) {
  const Image large = New(4, 5, ImageFormatG);
  made = [&] { return Image(large).Release()->Handle(); };
  Record(large).Yield.YieldTicks = 1;
  host_->onYield = [&] {
    ImageDestructor(large);
    ImageConstructor(large, 4, 2, ImageFormatG);
  };
  ExpectRefused(New(4, 3, ImageFormatG), Image());
  EXPECT_EQ(large->References(), 1);
}

TEST_F(FilterFrameFactory, TheSidesCountAsTheyWereAskedFor) {
  const Image large = New(3, 4, ImageFormatG);
  made = [&] { return Image(large).Release()->Handle(); };
  EXPECT_TRUE(Filter(New(4, 3, ImageFormatG), Image(), NewDest::ExchangedSides));
  EXPECT_EQ(seen_.dest, &Record(large));
}

// --- yields ---

class FilterFrameYield : public FilterFrame {
 protected:
  FilterFrameYield() : self_(New(4, 3, ImageFormatG)), dest_(New(4, 3, ImageFormatG)) {
    host_->SetClock({.ticks = 100});
    Record(self_).Yield.YieldTicks = Record(dest_).Yield.YieldTicks = 1;
  }

  Image self_;
  Image dest_;
};

TEST_F(FilterFrameYield, OnceOnSelfAndThenOnceOnTheDest) {
  // The clock of an image that has yielded stands at the present.
  std::vector<std::pair<int32_t, int32_t>> clocks;
  host_->onYield = [&] {
    EXPECT_EQ(seen_.source, nullptr);
    clocks.emplace_back(Record(self_).Yield.LastYieldTime, Record(dest_).Yield.LastYieldTime);
  };
  EXPECT_TRUE(Filter(self_, dest_));
  EXPECT_EQ(clocks, (std::vector<std::pair<int32_t, int32_t>>{{0, 0}, {100, 0}}));
  EXPECT_EQ(Record(dest_).Yield.LastYieldTime, 100);
}

TEST_F(FilterFrameYield, AnImageThatDoesNotAskForItGetsNoYield) {
  int yields = 0;
  host_->onYield = [&] { ++yields; };
  Record(self_).Yield.YieldTicks = 0;
  EXPECT_TRUE(Filter(self_, dest_));
  EXPECT_EQ(yields, 1);
  Record(dest_).Yield.YieldTicks = 0;
  EXPECT_TRUE(Filter(self_, dest_));
  EXPECT_EQ(yields, 1);
}

TEST_F(FilterFrameYield, SelfYieldsThoughTheDestIsRefused) {
  int yields = 0;
  host_->onYield = [&] { ++yields; };
  Record(dest_).Valid = false;
  ExpectRefused(self_, dest_);
  EXPECT_EQ(yields, 1);
}

TEST_F(FilterFrameYield, AnImageThatAYieldHasClosedIsRefused) {
  for (const Image &closed : {self_, dest_}) {
    const Image self = New(4, 3, ImageFormatG), dest = New(4, 3, ImageFormatG);
    Record(dest).Yield.YieldTicks = 1;
    host_->onYield = [&] { ImageDestructor(closed.Handle() == self_.Handle() ? self : dest); };
    ExpectRefused(self, dest);
  }
}

TEST_F(FilterFrameYield, AViewThatAYieldTakesThePixelsFromIsRefused) {
  for (const bool isSource : {true, false}) {
    const Image parent = New(4, 3, ImageFormatG), view = Adopt(ClipImage1(parent)), other = New(4, 3, ImageFormatG);
    Record(other).Yield.YieldTicks = 1;
    host_->onYield = [&] { ImageDestructor(parent); };
    ExpectRefused(isSource ? view : other, isSource ? other : view);
  }
}

TEST_F(FilterFrameYield, ADestThatAYieldHasMadeTooSmallIsRefused) {
  for (const auto &[width, height] : {std::pair{1, 1}, {3, 3}, {4, 2}}) {
    const Image self = New(4, 3, ImageFormatG), dest = New(4, 3, ImageFormatG);
    Record(self).Yield.YieldTicks = 1;
    host_->onYield = [&] { ImageConstructor(dest, width, height, ImageFormatG); };
    ExpectRefused(self, dest);
  }
}

TEST_F(FilterFrameYield, ADestThatASourceHasOutgrownInAYieldIsRefused) {
  host_->onYield = [&] { ImageConstructor(self_, 5, 3, ImageFormatG); };
  ExpectRefused(self_, dest_);
}

TEST_F(FilterFrameYield, ADestThatWasTooSmallFromTheStartIsTheCallersAffair) {
  const Image whole = New(4, 3, ImageFormatG);
  const Image small = Adopt(ClipImage5(whole, 0, 0, 1, 1));
  int yields = 0;
  host_->onYield = [&] { ++yields; };
  EXPECT_TRUE(Filter(self_, small));
  EXPECT_EQ(yields, 1);
  EXPECT_EQ(seen_.dest, &Record(small));
}

TEST_F(FilterFrameYield, ADestThatAYieldHasConstructedAnewWithRoomIsServed) {
  host_->onYield = [&] { ImageConstructor(dest_, 7, 9, ImageFormatG); };
  Record(dest_).Yield.YieldTicks = 0;
  EXPECT_TRUE(Filter(self_, dest_));
  EXPECT_EQ(Record(dest_).Width, 7);
}

TEST_F(FilterFrameYield, AnImageThatAYieldHasGivenSixteenBitsIsRefused) {
  host_->onYield = [&] {
    ImageDestructor(self_);
    ImageConstructor(self_, 4, 3, ImageFormatGray16);
  };
  ExpectRefused(self_, dest_);
}

// --- rows ---

}  // namespace
}  // namespace zvk::pixels
