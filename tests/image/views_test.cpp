#include "image/views.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>
#include <vector>

#include "image/image_formats.h"
#include "tests/scenes/image_test.h"

namespace zvk::image {
namespace {

using scenes::ImageTest;
using standalone::Object;
using standalone::Owned;

class Views : public ImageTest {};

// --- channels ---

TEST_F(Views, AChannelThatTheImageLacksIsNil) {
  const auto rgb = New(4, 3, ImageFormatRGB);
  EXPECT_EQ(AlphaChannel(rgb), nullptr);
  EXPECT_EQ(GrayChannel(rgb), nullptr);
  EXPECT_EQ(CyanChannel(rgb), nullptr);
  const auto gray = New(4, 3, ImageFormatG);
  EXPECT_EQ(RedChannel(gray), nullptr);
  EXPECT_EQ(host_.TakeException(), std::nullopt);
}

TEST_F(Views, OfAnImageWhoseRowHasWrappedAreNil) {
  const auto image = New((1 << 30) + 10, 1, ImageFormatRGBA);
  EXPECT_EQ(RedChannel(image), nullptr);
  EXPECT_EQ(ClipImage5(image, 1000, 0, 5, 1), nullptr);
}

TEST_F(Views, OfAnImageThatIsClosedOrNeverConstructedAreNil) {
  const auto closed = New(4, 3, ImageFormatRGBA);
  ImageDestructor(closed);
  ASSERT_TRUE(Record(closed).Valid);
  const auto fresh = host_.New("PictureZVK");
  for (REALobject image : {closed.Handle(), fresh.Handle()}) {
    EXPECT_EQ(AlphaChannel(image), nullptr);
    EXPECT_EQ(ClipImage1(image), nullptr);
    EXPECT_EQ(GetMirroredView(image), nullptr);
    EXPECT_EQ(Clone(image), nullptr);
  }
}

TEST_F(Views, AChannelViewIsAGrayImageWithThePixelSizeOfItsParent) {
  const auto source = New(4, 3, ImageFormatBGRA);
  const auto view = Adopt(RedChannel(source));
  ASSERT_TRUE(view);
  const ImageClassData &record = Record(view);
  EXPECT_EQ(record.ImageFormat, 11);
  EXPECT_EQ(record.PixelSize, 4);
  EXPECT_EQ(record.GrayOffset, 2);
  EXPECT_EQ(record.ChannelCount, 1);
  EXPECT_EQ(record.ChannelOffsets[0], 2);
  EXPECT_TRUE(record.IsGray && record.HasGray);
  EXPECT_FALSE(record.IsRGB || record.HasRed || record.OwnsBuffer);
  EXPECT_EQ(record.Parent, source.Handle());
  EXPECT_EQ(source->References(), 2);
  EXPECT_EQ(view->References(), 1);
  Row(view, 1)[3 * 4 + record.GrayOffset] = 77;
  EXPECT_EQ(Row(source, 1)[3 * 4 + 2], 77);
}

TEST_F(Views, EachChannelHasItsOffset) {
  const auto inks = New(2, 2, ImageFormatAKYMC);
  const std::pair<REALobject (*)(REALobject), int32_t> cases[] = {
      {AlphaChannel, 0}, {BlackChannel, 1}, {YellowChannel, 2}, {MagentaChannel, 3}, {CyanChannel, 4}};
  for (const auto &[channel, offset] : cases) {
    const auto view = Adopt(channel(inks));
    ASSERT_TRUE(view);
    EXPECT_EQ(Record(view).GrayOffset, offset);
    EXPECT_EQ(Record(view).PixelSize, 5);
  }
  const auto colours = New(2, 2, ImageFormatXBGR);
  EXPECT_EQ(Record(Adopt(BlueChannel(colours))).GrayOffset, 1);
  EXPECT_EQ(Record(Adopt(GreenChannel(colours))).GrayOffset, 2);
  EXPECT_EQ(Record(Adopt(RedChannel(colours))).GrayOffset, 3);
}

TEST_F(Views, AChannelOf16BitsStays16BitGray) {
  const auto source = New(4, 3, ImageFormatGray16);
  const auto view = Adopt(GrayChannel(source));
  EXPECT_EQ(Record(view).ImageFormat, 41);
  EXPECT_EQ(Record(view).BitsPerComponent, 16);
  // Two bytes a pixel alone do not make 16 bits.
  EXPECT_EQ(Record(Adopt(GrayChannel(New(4, 3, ImageFormatGA)))).ImageFormat, 11);
}

TEST_F(Views, ChannelGoesByTheListAndNotByTheNamedOffset) {
  const auto source = New(4, 3, ImageFormatRGB);
  SetRedOffset(source, 0, 2);
  EXPECT_EQ(Record(Adopt(Channel(source, 0))).GrayOffset, 0);
  EXPECT_EQ(Record(Adopt(RedChannel(source))).GrayOffset, 2);
}

TEST_F(Views, ABadChannelIndexRaises) {
  const auto source = New(4, 3, ImageFormatG);
  EXPECT_EQ(Channel(source, 2), nullptr);
  EXPECT_EQ(host_.TakeException()->message,
            "Parameter index to method Channel is too big. Range is 0 to 0, but value is 2.");
  EXPECT_EQ(Channel(source, -1), nullptr);
  EXPECT_EQ(host_.TakeException()->message,
            "Parameter index to method Channel is too small. Range is 0 to 0, but value is -1.");
  EXPECT_EQ(Channel(source, 1), nullptr);
  EXPECT_EQ(host_.TakeException()->className, "OutOfBoundsException");
}

TEST_F(Views, AChannelViewDoesNotTakeTheMemoryBlockAndAClipDoes) {
  const auto block = host_.NewMemoryBlock(100);
  const auto source = host_.New("PictureZVK");
  ImageConstructorMemory(source, block, 4, 3, ImageFormatRGB, 12);
  const auto channel = Adopt(RedChannel(source));
  EXPECT_EQ(Record(channel).MemoryTarget, nullptr);
  EXPECT_EQ(block->References(), 2);
  const auto clip = Adopt(ClipImage1(source));
  EXPECT_EQ(Record(clip).MemoryTarget, block.Handle());
  EXPECT_EQ(block->References(), 3);
}

TEST_F(Views, AViewHoldsTheTarget) {
  const auto target = host_.NewMemoryBlock(1);
  const auto source = New(4, 3, ImageFormatRGB);
  REALLockObject(target);
  Record(source).Target = target;
  {
    const auto channel = Adopt(RedChannel(source));
    const auto colours = Adopt(RGBChannel(source));
    const auto clip = Adopt(ClipImage1(source));
    EXPECT_EQ(Record(channel).Target, target.Handle());
    EXPECT_EQ(target->References(), 5);
  }
  EXPECT_EQ(target->References(), 2);
}

// What was locked, in order.
std::vector<REALobject> locked;

TEST_F(Views, AClipLocksParentBlockAndTargetInThisOrder) {
  host_.AllowLeaks();  // nothing is really locked
  locked.clear();
  host_->SetEntry(
      "REALLockObject", +[](REALobject object) { locked.push_back(object); });
  host_->SetEntry(
      "REALUnlockObject", +[](REALobject) {});
  const auto block = host_.NewMemoryBlock(100);
  const auto target = host_.NewMemoryBlock(1);
  const auto source = New(4, 3, ImageFormatRGB);
  Record(source).MemoryTarget = block;
  Record(source).Target = target;
  const auto clip = Adopt(ClipImage1(source));
  EXPECT_EQ(locked, (std::vector<REALobject>{source, block, target}));
  locked.clear();
  const auto colours = Adopt(RGBChannel(source));
  EXPECT_EQ(locked, (std::vector<REALobject>{source, target}));
  locked.clear();
  const auto mirrored = Adopt(GetMirroredView(clip));
  EXPECT_EQ(locked, (std::vector<REALobject>{clip, block, target}));
}

TEST_F(Views, WithoutNewInstanceThereAreNoViews) {
  const auto rgb = New(4, 3, ImageFormatRGB);
  const auto cmyk = New(4, 3, ImageFormatCMYK);
  host_->SetEntry(
      "PluginNewInstance", +[](const char *) -> REALobject { return nullptr; });
  EXPECT_EQ(RedChannel(rgb), nullptr);
  EXPECT_EQ(Channel(rgb, 0), nullptr);
  EXPECT_EQ(RGBChannel(rgb), nullptr);
  EXPECT_EQ(CMYKChannel(cmyk), nullptr);
  EXPECT_EQ(ClipImage1(rgb), nullptr);
  EXPECT_EQ(ClipImage5(rgb, 0, 0, 1, 1), nullptr);
  EXPECT_EQ(GetMirroredView(rgb), nullptr);
  EXPECT_EQ(Clone(rgb), nullptr);
  EXPECT_EQ(host_.TakeException(), std::nullopt);
  EXPECT_EQ(rgb->References(), 1);
}

TEST_F(Views, AViewOfAnImageThatIsNotValidIsNotValid) {
  const auto source = New(4, 3, ImageFormatRGB);
  Record(source).Valid = false;
  EXPECT_FALSE(Record(Adopt(RedChannel(source))).Valid);
  EXPECT_FALSE(Record(Adopt(RGBChannel(source))).Valid);
  EXPECT_FALSE(Record(Adopt(ClipImage1(source))).Valid);
  EXPECT_EQ(Clone(source), nullptr);
}

// --- the colours alone ---

TEST_F(Views, TheColoursOfAnImageWithFiller) {
  const auto source = New(4, 3, ImageFormatXBGR);
  const auto view = Adopt(RGBChannel(source));
  const ImageClassData &record = Record(view);
  EXPECT_EQ(record.ImageFormat, 6);
  EXPECT_EQ(record.PixelSize, 4);
  EXPECT_EQ(record.ChannelCount, 3);
  EXPECT_EQ(record.ChannelOffsets[0], 1);
  EXPECT_EQ(record.ChannelOffsets[1], 2);
  EXPECT_EQ(record.ChannelOffsets[2], 3);
  EXPECT_EQ(record.RedOffset, 3);
  EXPECT_EQ(record.BlueOffset, 1);
  EXPECT_EQ(record.BitsPerComponent, 8);
  EXPECT_TRUE(record.IsRGB);
  EXPECT_FALSE(record.HasRed || record.HasGreen || record.HasBlue || record.HasAlpha);  // only the offsets are set
  EXPECT_EQ(record.Parent, source.Handle());
}

TEST_F(Views, TheColoursOfEachFormatOrTheirAbsence) {
  for (int32_t format = 1; format <= 41; ++format) {
    if (format == 14) continue;
    const auto source = New(2, 2, format);
    const auto rgb = Adopt(RGBChannel(source));
    const auto cmyk = Adopt(CMYKChannel(source));
    const int32_t rgbFormat = format <= 5 ? 1 : format <= 10 ? 6 : 0;
    const int32_t cmykFormat = format < 23 || format > 32 ? 0 : format <= 27 ? 23 : 28;
    ASSERT_EQ(static_cast<bool>(rgb), rgbFormat != 0) << format;
    ASSERT_EQ(static_cast<bool>(cmyk), cmykFormat != 0) << format;
    if (rgb) {
      EXPECT_EQ(Record(rgb).ImageFormat, rgbFormat);
    }
    if (cmyk) {
      EXPECT_EQ(Record(cmyk).ImageFormat, cmykFormat);
      EXPECT_EQ(Record(cmyk).ChannelCount, 4);
    }
  }
}

TEST_F(Views, TheInksInStorageOrder) {
  const auto cmyk = Adopt(CMYKChannel(New(2, 2, ImageFormatACMYK)));
  for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(Record(cmyk).ChannelOffsets[i], 1 + i);
  EXPECT_EQ(Record(cmyk).CyanOffset, 1);
  EXPECT_EQ(Record(cmyk).MagentaOffset, 2);
  EXPECT_EQ(Record(cmyk).YellowOffset, 3);
  EXPECT_EQ(Record(cmyk).BlackOffset, 4);
  EXPECT_EQ(Record(cmyk).AlphaOffset, 0);
  EXPECT_FALSE(Record(cmyk).HasCyan || Record(cmyk).HasBlack);
  const auto kymc = Adopt(CMYKChannel(New(2, 2, ImageFormatAKYMC)));
  for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(Record(kymc).ChannelOffsets[i], 1 + i);
  EXPECT_EQ(Record(kymc).BlackOffset, 1);
  EXPECT_EQ(Record(kymc).CyanOffset, 4);
}

TEST_F(Views, ColoursOfAnUnknownFormatNumberAreNil) {
  const auto source = New(2, 2, ImageFormatRGB);
  Record(source).ImageFormat = 11;
  const int64_t made = host_->Calls("PluginNewInstance");
  EXPECT_EQ(RGBChannel(source), nullptr);
  EXPECT_EQ(host_->Calls("PluginNewInstance"), made + 1);  // made, and given back
  EXPECT_EQ(source->References(), 1);
}

TEST_F(Views, AClipOfTheColoursAloneHasNoFlagsToGoByAndLosesTheOffsets) {
  const auto source = New(4, 3, ImageFormatXBGR);
  const auto colours = Adopt(RGBChannel(source));
  const auto clip = Adopt(ClipImage5(colours, 1, 0, 2, 2));
  EXPECT_TRUE(Record(clip).IsRGB);
  EXPECT_EQ(Record(clip).RedOffset, 0);
  EXPECT_EQ(Record(clip).GreenOffset, 0);
  EXPECT_EQ(Record(clip).BlueOffset, 0);
  EXPECT_EQ(Record(clip).ChannelOffsets[0], 1);
}

// --- rectangles ---

struct Clipped {
  int32_t x, y, width, height;
  int32_t column, row, expectedWidth, expectedHeight;
};

TEST_F(Views, ARectangleIsTurnedRoundAndCut) {
  const Clipped cases[] = {
      {-5, -5, 10, 10, 0, 0, 5, 5}, {10, 10, -20, -20, 0, 0, 10, 10}, {5, 6, 100, 100, 5, 6, 15, 9},
      {20, 0, 5, 5, 20, 0, 0, 5},   {23, 0, 5, 5, 23, 0, -3, 5},      {0, 17, 5, 5, 0, 17, 5, -2},
      {0, 0, 20, 15, 0, 0, 20, 15}, {3, 4, 0, 0, 3, 4, 0, 0},         {-10, 0, 5, 5, 0, 0, -5, 5},
  };
  for (const Clipped &c : cases) {
    const auto source = New(20, 15, ImageFormatG);
    const auto view = Adopt(ClipImage5(source, c.x, c.y, c.width, c.height));
    ASSERT_TRUE(view);
    EXPECT_EQ(Record(view).GrayOffset, c.column) << c.x << " " << c.width;
    EXPECT_EQ(Record(view).RowOffset, c.row);
    EXPECT_EQ(Record(view).Width, c.expectedWidth) << c.x << " " << c.width;
    EXPECT_EQ(Record(view).Height, c.expectedHeight);
    EXPECT_EQ(Record(view).UnclippedHeight, 15);
    EXPECT_EQ(Record(view).TotalSize, Record(source).TotalSize);
    EXPECT_EQ(IsUsable(Record(view)), c.expectedWidth >= 0 && c.expectedHeight >= 1);
  }
}

// Sums of position and size beyond 2147483647 wrap below zero, so the fit does not cut these.
TEST_F(Views, AClipWhoseSumsWrapIsNoLargerThanTheImage) {
  const Clipped cases[] = {
      {0, 5, 20, INT32_MAX, 0, 5, 20, 10},
      {5, 0, INT32_MAX, 10, 5, 0, 15, 10},
      {5, 5, INT32_MAX, INT32_MAX, 5, 5, 15, 10},
      {INT32_MIN, 0, INT32_MIN, 5, 0, 0, INT32_MIN, 5},  // the size cannot be turned round
  };
  for (const Clipped &c : cases) {
    for (const auto &source : {New(20, 15, ImageFormatG), NewInFile(20, 15, ImageFormatG)}) {
      const auto view = Adopt(ClipImage5(source, c.x, c.y, c.width, c.height));
      ASSERT_TRUE(view);
      EXPECT_EQ(Record(view).GrayOffset, c.column);
      EXPECT_EQ(Record(view).RowOffset, c.row);
      EXPECT_EQ(Record(view).Width, c.expectedWidth) << c.x << " " << c.width;
      EXPECT_EQ(Record(view).Height, c.expectedHeight) << c.y << " " << c.height;
    }
  }
}

// An image width below zero less a position wraps to a size far above zero.
TEST_F(Views, AClipOfASourceOfNegativeSizeIsNeverLarge) {
  const auto source = New(20, 15, ImageFormatG);
  const auto beyond = Adopt(ClipImage5(source, 23, 17, 5, 5));
  ASSERT_EQ(Record(beyond).Width, -3);
  ASSERT_EQ(Record(beyond).Height, -2);
  const auto again = Adopt(ClipImage5(beyond, INT32_MAX, INT32_MAX, 5, 5));
  EXPECT_LE(Record(again).Width, 0);
  EXPECT_LE(Record(again).Height, 0);
}

TEST_F(Views, AClipMovesTheNamedOffsetsAndNotTheList) {
  const auto source = New(20, 15, ImageFormatRGB);
  const auto view = Adopt(ClipImage5(source, 3, 0, 5, 5));
  EXPECT_EQ(Record(view).RedOffset, 9);
  EXPECT_EQ(Record(view).GreenOffset, 10);
  EXPECT_EQ(Record(view).BlueOffset, 11);
  EXPECT_EQ(Record(view).AlphaOffset, 0);
  for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(Record(view).ChannelOffsets[i], i);
  EXPECT_EQ(Record(view).ImageFormat, 1);
  EXPECT_TRUE(Record(view).IsRGB && Record(view).HasRed && Record(view).HasGreen && Record(view).HasBlue);
  EXPECT_EQ(Record(Adopt(Channel(view, 0))).GrayOffset, 0);
  EXPECT_EQ(Record(Adopt(RedChannel(view))).GrayOffset, 9);
}

TEST_F(Views, AClipOfAClipAddsUp) {
  const auto source = New(20, 15, ImageFormatRGB);
  const auto outer = Adopt(ClipImage5(source, 3, 2, 10, 10));
  const auto inner = Adopt(ClipImage5(outer, 4, 5, 3, 3));
  EXPECT_EQ(Record(inner).RedOffset, 21);
  EXPECT_EQ(Record(inner).RowOffset, 7);
  EXPECT_EQ(Record(inner).Parent, outer.Handle());
  Row(inner, 1)[Record(inner).RedOffset + 2 * 3] = 99;
  EXPECT_EQ(Row(source, 8)[9 * 3], 99);
}

TEST_F(Views, AClipOfASourceOfNegativeSizeStaysNegative) {
  const auto source = New(20, 15, ImageFormatG);
  const auto beyond = Adopt(ClipImage5(source, 23, 0, 5, 5));
  EXPECT_EQ(Record(beyond).Width, -3);
  const auto again = Adopt(ClipImage1(beyond));  // -3 turns to 3 from -3, cut at 0, and 0 lies beyond -3
  EXPECT_EQ(Record(again).Width, -3);
  EXPECT_EQ(Record(again).Height, 5);
}

TEST_F(Views, AClipOfAllNineChannelsMovesEach) {
  constexpr int32_t ImageClassData::*kOffsets[] = {
      &ImageClassData::RedOffset,     &ImageClassData::GreenOffset,  &ImageClassData::BlueOffset,
      &ImageClassData::GrayOffset,    &ImageClassData::AlphaOffset,  &ImageClassData::CyanOffset,
      &ImageClassData::MagentaOffset, &ImageClassData::YellowOffset, &ImageClassData::BlackOffset};
  constexpr uint8_t ImageClassData::*kFlags[] = {
      &ImageClassData::HasRed,     &ImageClassData::HasGreen,  &ImageClassData::HasBlue,
      &ImageClassData::HasGray,    &ImageClassData::HasAlpha,  &ImageClassData::HasCyan,
      &ImageClassData::HasMagenta, &ImageClassData::HasYellow, &ImageClassData::HasBlack};
  for (int i = 0; i < 9; ++i) {
    const auto source = New(20, 15, ImageFormatScaling5);
    ImageClassData *record = RecordOf(source);
    ASSERT_NE(record, nullptr);
    record->*kFlags[i] = true;
    for (int j = 0; j < 9; ++j) record->*kOffsets[j] = 3;
    const auto clip = Adopt(ClipImage5(source, 4, 0, 5, 5));
    for (int j = 0; j < 9; ++j) {
      EXPECT_EQ(Record(clip).*kFlags[j], i == j);
      EXPECT_EQ(Record(clip).*kOffsets[j], i == j ? 23 : 0) << i << " " << j;
    }
  }
}

// --- rows in reverse ---

TEST_F(Views, AMirroredViewShowsTheRowsInReverseAndTwiceIsTheRightWayUp) {
  const auto source = New(4, 5, ImageFormatG);
  const auto mirrored = Adopt(GetMirroredView(source));
  const auto twice = Adopt(GetMirroredView(mirrored));
  for (int32_t y = 0; y < 5; ++y) {
    EXPECT_EQ(Row(mirrored, y), Row(source, 4 - y));
    EXPECT_EQ(Row(twice, y), Row(source, y));
  }
}

TEST_F(Views, AClipOfAMirroredViewCountsFromItsOwnBottom) {
  const auto source = New(4, 6, ImageFormatG);
  const auto mirrored = Adopt(GetMirroredView(source));
  const auto clip = Adopt(ClipImage5(mirrored, 0, 1, 4, 3));
  // Storage rows 1 to 3 upwards, and not rows 4 to 2 as the mirrored image shows them.
  EXPECT_EQ(Row(clip, 0), Row(source, 3));
  EXPECT_EQ(Row(clip, 2), Row(source, 1));
}

}  // namespace
}  // namespace zvk::image
