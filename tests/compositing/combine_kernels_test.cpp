#include "compositing/combine_kernels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/naive/combine.h"
#include "tests/scenes/row_log.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/yields.h"

namespace zvk::compositing {
namespace {

using scenes::Kind;
using scenes::StoredImage;
using scenes::YieldAlways;
using scenes::Yields;
using Bytes = std::vector<uint8_t>;

class CombineKernels : public testing::Test {
 protected:
  CombineKernels() : host_({.fenced = true}) {}

  StoredImage New(int32_t width, int32_t height, int32_t format, Kind kind = Kind::Block) {
    return {host_, kind, width, height, format};
  }
  StoredImage Filled(int32_t width, int32_t height, int32_t format, uint32_t seed, Kind kind = Kind::Block) {
    StoredImage image(host_, kind, width, height, format, static_cast<int32_t>(seed % 3));
    image.Fill(seed);
    return image;
  }
  // A single pixel of each, through the packed form.
  Bytes Combined(decltype(Case2pf) *kernel, int32_t destFormat, const Bytes &d, int32_t sourceFormat, const Bytes &s,
                 int32_t maskFormat, const Bytes &m) {
    StoredImage dest = New(1, 1, destFormat), source = New(1, 1, sourceFormat), mask = New(1, 1, maskFormat);
    dest.SetBytes(d);
    source.SetBytes(s);
    mask.SetBytes(m);
    kernel(dest.Record(), source.Record(), mask.Record(), 0, 0, 1, 1, 0, 0);
    EXPECT_EQ(source.Bytes(), s);
    EXPECT_EQ(mask.Bytes(), m);
    return dest.Bytes();
  }
  Bytes CombinedGray(decltype(Case2pf) *kernel, uint8_t d, uint8_t s, uint8_t m) {
    return Combined(kernel, ImageFormatG, {d}, ImageFormatG, {s}, ImageFormatG, {m});
  }

  PluginHost host_;
};

constexpr int32_t G = ImageFormatG, GA = ImageFormatGA, RGB = ImageFormatRGB, RGBA = ImageFormatRGBA;

// --- worked examples ---

TEST_F(CombineKernels, GrayThroughGrayIsInterpolated) {
  EXPECT_EQ(CombinedGray(Case2pf, 100, 200, 128), (Bytes{149}));
  EXPECT_EQ(CombinedGray(Case2pf, 100, 200, 255), (Bytes{100}));
  EXPECT_EQ(CombinedGray(Case2pf, 100, 200, 0), (Bytes{200}));
}

TEST_F(CombineKernels, GrayOfAPremultipliedSourceIsScaledAndAdded) {
  EXPECT_EQ(CombinedGray(Case2pt, 100, 200, 128), (Bytes{250}));
  EXPECT_EQ(CombinedGray(Case2pt, 200, 100, 255), (Bytes{44}));  // 300 wraps
}

TEST_F(CombineKernels, APremultipliedSourceOnColoursWithoutAlphaDoesNotReadThem) {
  for (const uint8_t old : {uint8_t{0}, uint8_t{99}, uint8_t{255}}) {
    EXPECT_EQ(Combined(Case2pt, RGB, {old, old, old}, RGB, {20, 20, 20}, RGB, {10, 10, 10}), (Bytes{30, 30, 30}));
    EXPECT_EQ(Combined(Case2pt, RGB, {old, old, old}, G, {100}, G, {200}), (Bytes{44, 44, 44}));
  }
}

TEST_F(CombineKernels, APremultipliedSourceOnColoursWithAlphaScalesTheAlphaInPlaceOfTheColours) {
  // (200 x 128) / 255 + 10, and (128 x 255) / 255 + 255 wraps.
  EXPECT_EQ(Combined(Case2pt, RGBA, {1, 2, 3, 128}, RGB, {10, 10, 10}, RGBA, {200, 200, 200, 255}),
            (Bytes{110, 110, 110, 127}));
}

TEST_F(CombineKernels, ColoursWithAlphaAreInterpolatedAllAlike) {
  EXPECT_EQ(Combined(Case2pf, RGBA, {50, 50, 50, 128}, RGB, {10, 10, 10}, RGBA, {200, 200, 200, 255}),
            (Bytes{41, 41, 41, 128}));
}

TEST_F(CombineKernels, WithoutAnyOtherAlphaASumLowersTheAlphaByOne) {
  EXPECT_EQ(Combined(Case2pt, RGBA, {0, 0, 0, 128}, RGB, {0, 0, 0}, G, {0}).back(), 127);
  EXPECT_EQ(Combined(Case2pt, RGBA, {0, 0, 0, 0}, RGB, {0, 0, 0}, G, {0}).back(), 255);
  EXPECT_EQ(Combined(Case2pt, GA, {5, 1}, G, {0}, RGB, {0, 0, 0}), (Bytes{0, 0}));
}

TEST_F(CombineKernels, AMaskWithoutAlphaKeepsTheAlphaOfAnInterpolation) {
  EXPECT_EQ(Combined(Case2pf, RGBA, {0, 0, 0, 77}, RGBA, {9, 9, 9, 200}, G, {0}), (Bytes{9, 9, 9, 77}));
  EXPECT_EQ(Combined(Case2pf, GA, {0, 77}, GA, {9, 200}, RGB, {0, 0, 0}), (Bytes{9, 77}));
}

TEST_F(CombineKernels, TheAlphaOfAGrayImageGoesByTheAlphaOfTheMask) {
  // The mask's gray is 0, its alpha 255: the gray becomes the source's, the alpha stays.
  EXPECT_EQ(Combined(Case2pf, GA, {10, 20}, GA, {30, 40}, GA, {0, 255}), (Bytes{30, 20}));
  EXPECT_EQ(Combined(Case2pf, GA, {10, 20}, GA, {30, 40}, GA, {255, 0}), (Bytes{10, 40}));
  EXPECT_EQ(Combined(Case2pt, GA, {10, 20}, GA, {30, 40}, GA, {0, 255}), (Bytes{30, 60}));
  EXPECT_EQ(Combined(Case2pt, GA, {10, 20}, GA, {30, 40}, GA, {255, 0}), (Bytes{40, 40}));
}

TEST_F(CombineKernels, AColouredMaskCountsChannelByChannelOrByItsLuma) {
  EXPECT_EQ(Combined(Case2pf, RGB, {1, 2, 3}, RGB, {10, 20, 30}, RGB, {255, 0, 255}), (Bytes{1, 20, 3}));
  EXPECT_EQ(Combined(Case2pf, G, {77}, G, {10}, RGB, {255, 255, 255}), (Bytes{77}));
  EXPECT_EQ(Combined(Case2pf, G, {255}, G, {0}, RGB, {255, 0, 0}), (Bytes{76}));
  EXPECT_EQ(Combined(Case2pf, G, {255}, RGB, {0, 255, 0}, G, {0}), (Bytes{150}));
}

TEST_F(CombineKernels, ChannelsAreTakenByNameAndNotByPlace) {
  EXPECT_EQ(Combined(Case2pf, ImageFormatABGR, {7, 0, 0, 0}, RGB, {1, 2, 3}, G, {0}), (Bytes{7, 3, 2, 1}));
  EXPECT_EQ(Combined(Case2pt, ImageFormatBGRX, {0, 0, 0, 7}, ImageFormatXRGB, {9, 1, 2, 3}, G, {0}),
            (Bytes{3, 2, 1, 7}));
}

// --- all combinations ---

constexpr int32_t kGrayFormats[] = {G, ImageFormat2of3, ImageFormat4of4, GA, ImageFormatAG};
constexpr int32_t kRGBFormats[] = {RGB, ImageFormatBGR, ImageFormatXRGB, RGBA, ImageFormatABGR};

std::vector<int32_t> KnownFormats() {
  std::vector<int32_t> formats(std::begin(kGrayFormats), std::end(kGrayFormats));
  formats.insert(formats.end(), std::begin(kRGBFormats), std::end(kRGBFormats));
  return formats;
}

// The kernels give what the tables say, for images whose rows are packed and for those that must go in order.
TEST_F(CombineKernels, EveryCombinationOfLayoutsGivesWhatTheTablesSay) {
  uint32_t seed = 0;
  for (const int32_t destFormat : KnownFormats()) {
    for (const int32_t sourceFormat : KnownFormats()) {
      for (const int32_t maskFormat : KnownFormats()) {
        StoredImage source = Filled(45, 3, sourceFormat, ++seed), mask = Filled(45, 3, maskFormat, ++seed);
        for (const Kind kind : {Kind::Block, Kind::File}) {
          for (const bool premultiplied : {false, true}) {
            StoredImage dest = Filled(44, 4, destFormat, ++seed, kind);
            const Bytes before = dest.Bytes(), sourceBefore = source.Bytes(), maskBefore = mask.Bytes();
            naive::combining::BlendNaively(dest.Record(), source.Record(), mask.Record(), premultiplied,
                                           {3, 1, 2, 0, 40, 3});
            const Bytes expected = dest.Bytes();
            dest.SetBytes(before);
            (premultiplied ? Case2pt : Case2pf)(dest.Record(), source.Record(), mask.Record(), 3, 1, 40, 3, 2, 0);
            ASSERT_EQ(dest.Bytes(), expected) << destFormat << ", " << sourceFormat << ", " << maskFormat;
            ASSERT_EQ(source.Bytes(), sourceBefore);
            ASSERT_EQ(mask.Bytes(), maskBefore);
          }
        }
      }
    }
  }
}

TEST_F(CombineKernels, RowsLongerThanATileGiveWhatTheTablesSay) {
  for (const int32_t destFormat : {RGB, int32_t{ImageFormatXBGR}, int32_t{ImageFormatAG}}) {
    StoredImage dest = Filled(3000, 2, destFormat, 1), source = Filled(3000, 2, RGBA, 2), mask = Filled(3000, 2, GA, 3);
    for (const bool premultiplied : {false, true}) {
      for (const int32_t width : {1023, 1024, 1025, 2048, 2990}) {
        const Bytes before = dest.Bytes();
        naive::combining::BlendNaively(dest.Record(), source.Record(), mask.Record(), premultiplied,
                                       {10, 0, 3, 0, width, 2});
        const Bytes expected = dest.Bytes();
        dest.SetBytes(before);
        (premultiplied ? Case2pt : Case2pf)(dest.Record(), source.Record(), mask.Record(), 10, 0, width, 2, 3, 0);
        ASSERT_EQ(dest.Bytes(), expected) << destFormat << ", " << width;
      }
    }
  }
}

TEST_F(CombineKernels, ImagesWithoutGrayOrColoursAreLeftAlone) {
  for (const int32_t odd : {int32_t{ImageFormatCMYK}, int32_t{ImageFormatCMYKA}, int32_t{ImageFormatBuffer},
                            int32_t{ImageFormatScaling3}}) {
    for (int place = 0; place < 3; ++place) {
      StoredImage dest = Filled(4, 2, place == 0 ? odd : RGB, 1), source = Filled(4, 2, place == 1 ? odd : RGB, 2);
      StoredImage mask = Filled(4, 2, place == 2 ? odd : RGB, 3);
      const Bytes before = dest.Bytes();
      YieldAlways(host_, dest);
      const int64_t yields = Yields(host_);
      scenes::RowLog log;
      log.Watch(dest.Record(), "d");
      for (const auto kernel : {Case2pf, Case2pt}) {
        kernel(dest.Record(), source.Record(), mask.Record(), 0, 0, 4, 2, 0, 0);
      }
      EXPECT_EQ(dest.Bytes(), before);
      EXPECT_EQ(log.Take(), "");
      EXPECT_EQ(Yields(host_), yields);
    }
  }
}

// --- order ---

TEST_F(CombineKernels, RowsAreAskedForInTurnAndDestYieldsAfterEach) {
  for (const int32_t format : {RGB, RGBA}) {
    StoredImage dest = Filled(4, 4, format, 1), source = Filled(4, 4, RGB, 2), mask = Filled(4, 4, G, 3);
    YieldAlways(host_, dest);
    const int64_t yields = Yields(host_);
    scenes::RowLog log;
    log.Watch(dest.Record(), "d");
    log.Watch(source.Record(), "s");
    log.Watch(mask.Record(), "m");
    Case2pt(dest.Record(), source.Record(), mask.Record(), 0, 0, 4, 2, 0, 2);
    EXPECT_EQ(log.Take(), "d0 s2 m2 d1 s3 m3");
    EXPECT_EQ(Yields(host_) - yields, 2);
  }
}

TEST_F(CombineKernels, ARowThatCannotBeHadIsLeftOut) {
  StoredImage dest = New(1, 4, G), source = New(1, 4, G), mask = New(1, 4, G);
  source.SetBytes({1, 2, 3, 4});
  {
    scenes::RowLog log;
    log.Watch(dest.Record(), "d");
    log.Watch(source.Record(), "s");
    log.Watch(mask.Record(), "m");
    log.Refuse(dest.Record(), 0);
    log.Refuse(source.Record(), 1);
    log.Refuse(mask.Record(), 2);
    Case2pf(dest.Record(), source.Record(), mask.Record(), 0, 0, 1, 4, 0, 0);
  }
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 0, 4}));
}

TEST_F(CombineKernels, ViewsOfOneImageGoPixelAfterPixelInFilesToo) {
  for (const Kind kind : {Kind::Block, Kind::File}) {
    for (const int32_t format : {G, RGB, RGBA}) {
      StoredImage image = Filled(200, 1, format, 1, kind), mask = New(199, 1, G);  // takes the source as it is
      const Bytes before = image.Bytes();
      // The views of an image in a file have each a mapping of its own.
      const auto left = Adopt(ClipImage5(image, 0, 0, 199, 1)), right = Adopt(ClipImage5(image, 1, 0, 199, 1));
      Case2pf(*RecordOf(right), *RecordOf(left), mask.Record(), 0, 0, 199, 1, 0, 0);
      const Bytes after = image.Bytes();
      const auto pixelSize = static_cast<size_t>(image.Record().PixelSize);
      for (size_t i = 0; i < 200 * pixelSize; ++i) {
        const bool isAlpha = format == RGBA && i % 4 == 3;  // kept, as the mask has none
        ASSERT_EQ(after[i], before[isAlpha ? i : i % pixelSize]) << kind << ", " << format << ": " << i;
      }
    }
  }
}

TEST_F(CombineKernels, AMaskInsideTheDestinationIsReadBeforeItsPixelIsWritten) {
  StoredImage dest = New(2, 1, RGB), source = New(2, 1, RGB);
  dest.SetBytes({255, 10, 20, 0, 30, 40});
  source.SetBytes({1, 2, 3, 4, 5, 6});
  const auto mask = Adopt(RedChannel(dest));
  Case2pf(dest.Record(), source.Record(), *RecordOf(mask), 0, 0, 2, 1, 0, 0);
  EXPECT_EQ(dest.Bytes(), (Bytes{255, 10, 20, 4, 5, 6}));
}

TEST_F(CombineKernels, ChannelsAtOnePlaceAreWrittenInOrderAndAlphaLast) {
  StoredImage dest = New(1, 1, RGBA), source = New(1, 1, RGBA), mask = New(1, 1, ImageFormatGA);
  SetGreenOffset(dest, 0, 0);
  SetBlueOffset(dest, 0, 1);
  SetAlphaOffset(dest, 0, 1);
  source.SetBytes({1, 2, 3, 4});
  Case2pf(dest.Record(), source.Record(), mask.Record(), 0, 0, 1, 1, 0, 0);
  EXPECT_EQ(dest.Bytes(), (Bytes{2, 4, 0, 0}));
}

TEST_F(CombineKernels, AMappedImageIsCombinedWithRowsOfItsOwnThatItsBlockDoesNotHold) {
  StoredImage image = New(2, 9000, G, Kind::File);
  ImageClassData &record = image.Record();
  for (int32_t y = 0; y < 9000; ++y) *naive::SampleAt(record, 0, y, 0) = static_cast<uint8_t>(y);
  StoredImage mask = Filled(2, 9000, G, 0);
  mask.SetBytes(Bytes(18000, 0));
  Case2pf(record, record, mask.Record(), 0, 10, 2, 5, 0, 8990);
  for (int32_t y = 0; y < 20; ++y) {
    EXPECT_EQ(*naive::SampleAt(record, 0, y, 0), static_cast<uint8_t>(y >= 10 && y < 15 ? y + 8980 : y));
  }
}

TEST_F(CombineKernels, AnImageThatTheHostClosesInAYieldEndsThem) {
  for (int closed = 0; closed < 3; ++closed) {
    StoredImage dest = New(2, 4, G), source = Filled(2, 4, G, 2), mask = Filled(2, 4, G, 3);
    const StoredImage *images[] = {&dest, &source, &mask};
    YieldAlways(host_, dest);
    int32_t yields = 0;
    host_->onYield = [&] {
      if (++yields == 2) ImageDestructor(*images[closed]);
    };
    Case2pf(dest.Record(), source.Record(), mask.Record(), 0, 0, 2, 4, 0, 0);
    EXPECT_EQ(yields, 2);
    host_->onYield = nullptr;
  }
}

}  // namespace
}  // namespace zvk::compositing
