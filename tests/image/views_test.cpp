#include "image/views.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"
#include "tests/support/plugin_host.h"

namespace zvk {
namespace {

using standalone::Object;
using standalone::Owned;

class Views : public testing::Test {
 protected:
  Owned<Object> New(int32_t width, int32_t height, int32_t format) {
    auto image = host_.New("PictureZVK");
    ImageConstructor(image, width, height, format);
    return image;
  }

  // The same in a file of which a few rows are mapped at a time.
  Owned<Object> NewInFile(int32_t width, int32_t height, int32_t format) {
    auto image = host_.New("PictureZVK");
    ImageConstructorFile(image, width, height, format, 0, nullptr);
    EXPECT_TRUE(RecordOf(image)->Valid);
    return image;
  }

  static ImageClassData &Record(const Owned<Object> &image) { return *RecordOf(image); }
  static uint8_t *Row(const Owned<Object> &image, int32_t index) {
    ImageClassData *record = RecordOf(image);
    return record->GetRow(record, index);
  }

  PluginHost host_;
};

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

// --- mapped files ---

TEST_F(Views, AViewOfAFileHasABlockOfItsOwnAndLeavesTheFileToItsParent) {
  auto source = NewInFile(10, 100, ImageFormatRGBA);
  const auto view = Adopt(GreenChannel(source));
  const ImageClassData &record = Record(view);
  EXPECT_TRUE(record.IsMapping && record.IsMapped);
  EXPECT_FALSE(record.RemoveFile);
  EXPECT_EQ(record.FileHandle, Record(source).FileHandle);
  EXPECT_EQ(record.MappedFirstRow, 0);
  EXPECT_NE(record.Buffer, Record(source).Buffer);
  Row(view, 99)[4 * 3 + 1] = 55;
  EXPECT_EQ(Row(source, 99)[4 * 3 + 1], 55);
  source.Reset();  // the view keeps it alive
  EXPECT_EQ(Row(view, 99)[4 * 3 + 1], 55);
}

TEST_F(Views, AMirroredViewOfAFileStartsAtTheBottom) {
  const auto source = NewInFile(10, 100, ImageFormatG);
  Row(source, 99)[0] = 12;
  const auto mirrored = Adopt(GetMirroredView(source));
  EXPECT_EQ(Row(mirrored, 0)[0], 12);
  EXPECT_EQ(Record(mirrored).GetRow, GetRowMappingMirrored);
  EXPECT_EQ(Record(Adopt(GetMirroredView(mirrored))).GetRow, GetRowMapping);
}

TEST_F(Views, TheBlockSizeOfAViewIsItsOwn) {
  const auto source = NewInFile(4096, 10000, ImageFormatG);
  const auto view = Adopt(ClipImage1(source));
  const int32_t before = Record(source).MappingBlockSize;
  SetMemBlockSize(view, 0, 32000000);
  EXPECT_EQ(Record(source).MappingBlockSize, before);
  EXPECT_NE(Record(view).MappingBlockSize, before);
}

TEST_F(Views, AViewWhoseBlockCannotBeMappedIsThereAllTheSame) {
  const auto source = NewInFile(10, 100, ImageFormatG);
  faults::Files files;
  files.FailAll(faults::FileCall::kMap);
  const auto view = Adopt(GrayChannel(source));
  ASSERT_TRUE(view);
  EXPECT_TRUE(Record(view).Valid && Record(view).IsMapping);
  EXPECT_FALSE(Record(view).IsMapped);
  EXPECT_EQ(Record(view).Buffer, nullptr);
  EXPECT_EQ(GetMemory(view, 0), nullptr);
}

TEST_F(Views, AMirroredViewOfAFileMapsTheTopAndThenTheBottom) {
  const auto source = NewInFile(10, 10000, ImageFormatG);
  const faults::Files files;
  const auto mirrored = Adopt(GetMirroredView(source));
  const auto maps = files.Records(faults::FileCall::kMap);
  ASSERT_EQ(maps.size(), 2u);
  EXPECT_EQ(maps[0].offset, 0);
  EXPECT_EQ(maps[1].offset, (10000 - 4096) * 4096);
}

TEST_F(Views, TheMemoryOfAFileIsItsPresentBlock) {
  const auto source = NewInFile(10, 10000, ImageFormatG);
  Row(source, 9999);
  const auto memory = AdoptMemoryBlock(GetMemory(source, 0));
  EXPECT_EQ(memory->Data(), Row(source, 10000 - 4096));
}

TEST_F(Views, ThreadsMayWalkViewsOfOneFileAtTheSameTime) {
  const auto source = NewInFile(10, 10000, ImageFormatGA);
  const auto gray = Adopt(GrayChannel(source));
  const auto alpha = Adopt(AlphaChannel(source));
  const auto walk = [](ImageClassData *view, int32_t step) {
    for (int32_t row = 0; row < 10000; ++row) {
      view->GetRow(view, row)[view->GrayOffset] = static_cast<uint8_t>(row * step);
    }
  };
  std::thread first(walk, &Record(gray), 3);
  std::thread second(walk, &Record(alpha), 7);
  first.join();
  second.join();
  int32_t wrong = 0;
  for (int32_t row = 0; row < 10000; ++row) {
    const uint8_t *pixel = Row(source, row);
    wrong += pixel[0] != static_cast<uint8_t>(row * 3) || pixel[1] != static_cast<uint8_t>(row * 7);
  }
  EXPECT_EQ(wrong, 0);
}

// --- row tables ---

TEST_F(Views, AViewOfARowTableHasNoTableAndNoRows) {
  uint8_t pixels[8] = {};
  uint8_t *table[] = {pixels, pixels + 4};
  const auto source = New(1, 2, ImageFormatRGBA);
  ImageClassData &record = Record(source);
  std::free(record.Buffer);
  record.Buffer = nullptr;
  record.OwnsBuffer = false;
  record.RowTable = table;
  record.GetRow = GetRowGDImage;
  for (REALobject (*const make)(REALobject) : {RedChannel, RGBChannel, ClipImage1, GetMirroredView}) {
    const auto view = Adopt(make(source));
    ASSERT_TRUE(view);
    EXPECT_EQ(Record(view).RowTable, nullptr);
    EXPECT_EQ(Row(view, 0), nullptr);
    EXPECT_FALSE(IsUsable(Record(view)));
    EXPECT_EQ(ClipImage1(view), nullptr);
    EXPECT_EQ(GetMirroredView(view), nullptr);
  }
}

// --- images without rows ---

TEST_F(Views, AnImageWithoutRowsHasNoViews) {
  const auto closed = New(4, 4, ImageFormatCMYKA);
  ImageDestructor(closed);
  const auto fresh = host_.New("PictureZVK");
  for (const auto *image : {&closed, &fresh}) {
    EXPECT_EQ(AlphaChannel(*image), nullptr);
    EXPECT_EQ(CMYKChannel(*image), nullptr);
    EXPECT_EQ(ClipImage1(*image), nullptr);
    EXPECT_EQ(ClipImage5(*image, 0, 0, 1, 1), nullptr);
    EXPECT_EQ(GetMirroredView(*image), nullptr);
    EXPECT_EQ(Clone(*image), nullptr);
    EXPECT_EQ(GetMemory(*image, 0), nullptr);
  }
  EXPECT_EQ(Channel(closed, 0), nullptr);
  EXPECT_EQ(host_.TakeException(), std::nullopt);
  EXPECT_EQ(Channel(fresh, 0), nullptr);  // an image that has no channel to count
  EXPECT_EQ(host_.TakeException()->message,
            "Parameter index to method Channel is too big. Range is 0 to -1, but value is 0.");
  EXPECT_EQ(RedChannel(nullptr), nullptr);
  EXPECT_EQ(Channel(nullptr, 0), nullptr);
}

// --- clone and memory ---

TEST_F(Views, ACloneIsASecondOwnerOfTheSamePixels) {
  const auto source = New(4, 3, ImageFormatBGRA);
  const auto clone = Adopt(Clone(source));
  ASSERT_TRUE(clone);
  const ImageClassData &record = Record(clone);
  EXPECT_EQ(record.Buffer, Record(source).Buffer);
  EXPECT_TRUE(record.OwnsBuffer && record.Valid && record.HasAlpha && record.HasRed && record.IsRGB);
  EXPECT_EQ(record.Parent, nullptr);
  EXPECT_EQ(record.RedOffset, 2);
  EXPECT_EQ(record.ChannelCount, 4);
  EXPECT_EQ(record.ChannelOffsets[3], 3);
  EXPECT_EQ(record.ImageFormat, ImageFormatBGRA);
  EXPECT_EQ(record.TotalSize, Record(source).TotalSize);
  EXPECT_EQ(source->References(), 1);
  Record(clone).OwnsBuffer = false;  // one of the two must give up the buffer
}

TEST_F(Views, ACloneOfAFileOrOfNothingIsNil) {
  EXPECT_EQ(Clone(NewInFile(10, 10, ImageFormatG)), nullptr);
  EXPECT_EQ(Clone(New(10, 10, 14)), nullptr);
  EXPECT_EQ(Clone(nullptr), nullptr);
}

TEST_F(Views, ACloneOfARefusedSizeAbandonsItsInstance) {
  host_.AllowLeaks();
  const auto block = host_.NewMemoryBlock(40);
  const auto source = host_.New("PictureZVK");
  ImageConstructorMemory(source, block, 4, 3, ImageFormatG, -4);
  EXPECT_EQ(Clone(source), nullptr);
  int32_t pictures = 0;
  for (const auto &leak : host_->Leaks()) pictures += leak.what == "PictureZVK" ? leak.count : 0;
  EXPECT_EQ(pictures, 2);  // the source and the abandoned one
}

TEST_F(Views, ACloneGoesByTheSizeIn32Bits) {
  const auto block = host_.NewMemoryBlock(40);
  const auto source = host_.New("PictureZVK");
  // 2 x -2147483647 is -4294967294, and 2 in 32 bits.
  ImageConstructorMemory(source, block, 4, 2, ImageFormatG, -2147483647);
  const auto clone = Adopt(Clone(source));
  ASSERT_TRUE(clone);
  EXPECT_EQ(Record(clone).MemoryTarget, nullptr);
  EXPECT_EQ(Record(clone).TotalSize, -4294967294);
  Record(clone).OwnsBuffer = false;  // the buffer is the block's
}

TEST_F(Views, ACloneOfAClipHasItsPlaceAndNotItsParent) {
  const auto source = New(20, 15, ImageFormatACMYK);
  const auto clip = Adopt(ClipImage5(source, 3, 4, 5, 6));
  const auto mirrored = Adopt(GetMirroredView(clip));
  const auto clone = Adopt(Clone(mirrored));
  const ImageClassData &record = Record(clone);
  EXPECT_EQ(record.Width, 5);
  EXPECT_EQ(record.Height, 6);
  EXPECT_EQ(record.UnclippedHeight, 15);
  EXPECT_EQ(record.RowOffset, 4);
  EXPECT_EQ(record.RowSize, 128);
  EXPECT_EQ(record.TotalSize, 1920);
  EXPECT_EQ(record.PixelSize, 5);
  EXPECT_EQ(record.BitsPerComponent, 8);
  EXPECT_EQ(record.AlphaOffset, 15);
  EXPECT_EQ(record.CyanOffset, 16);
  EXPECT_EQ(record.BlackOffset, 19);
  EXPECT_EQ(record.ChannelCount, 5);
  EXPECT_EQ(record.ChannelOffsets[4], 4);
  EXPECT_TRUE(record.IsCMYK && record.HasCyan && record.HasMagenta && record.HasYellow && record.HasBlack);
  EXPECT_FALSE(record.IsGray || record.IsRGB || record.HasRed || record.HasGray);
  EXPECT_EQ(record.GetRow, GetRowLinearMirrored);
  EXPECT_EQ(record.MappingBase, nullptr);
  EXPECT_EQ(record.MappedRowCount, 0);
  EXPECT_EQ(record.Parent, nullptr);
  Record(clone).OwnsBuffer = false;  // one of the two must give up the buffer
}

TEST_F(Views, ClosingACloneFreesTheBufferUnderItsSource) {
  const auto source = New(4, 3, ImageFormatG);
  const auto clone = Adopt(Clone(source));
  const void *buffer = Record(source).Buffer;
  Record(source).OwnsBuffer = false;
  const faults::Heap heap;
  ImageDestructor(clone);
  const auto freed = heap.Freed();
  EXPECT_EQ(std::count(freed.begin(), freed.end(), buffer), 1);
}

TEST_F(Views, MemoryIsTheStartOfTheStorage) {
  const auto source = New(10, 10, ImageFormatG);
  const auto clip = Adopt(ClipImage5(source, 3, 3, 2, 2));
  const auto memory = AdoptMemoryBlock(GetMemory(clip, 0));
  ASSERT_TRUE(memory);
  EXPECT_EQ(memory->Data(), Record(source).Buffer);
  EXPECT_EQ(memory->Size(), standalone::MemoryBlock::kUnknownSize);
}

}  // namespace
}  // namespace zvk
