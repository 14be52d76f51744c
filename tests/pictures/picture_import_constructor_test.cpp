// The constructor over a host picture's own pixels.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <vector>

#include "host/host_services.h"
#include "image/image_formats.h"
#include "pictures/picture_import.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::GDStorage;
using standalone::HostKind;
using standalone::Picture;

Owned<standalone::Object> ImageOver(PluginHost &host, const Owned<Picture> &picture, bool useAlpha = false) {
  auto image = host.New("PictureZVK");
  ImageConstructorPicture(image, picture, useAlpha);
  return image;
}

// What both forms of storage have in common.
void ExpectImageOver(ImageClassData &record, Picture &picture, bool useAlpha, std::vector<int32_t> offsets) {
  EXPECT_TRUE(record.Valid);
  EXPECT_EQ(record.Target, picture.Handle());
  EXPECT_EQ(record.Width, picture.Width());
  EXPECT_EQ(record.Height, picture.Height());
  EXPECT_EQ(record.UnclippedHeight, picture.Height());
  EXPECT_EQ(record.PixelSize, 4);
  EXPECT_EQ((std::vector{record.RedOffset, record.GreenOffset, record.BlueOffset, record.AlphaOffset}), offsets);
  EXPECT_EQ(record.GrayOffset, 0);
  EXPECT_TRUE(record.IsRGB && record.HasRed && record.HasGreen && record.HasBlue);
  EXPECT_FALSE(record.IsGray || record.HasGray || record.IsCMYK);
  EXPECT_EQ(record.HasAlpha, useAlpha);
  EXPECT_EQ(record.MappingBase, nullptr);
  EXPECT_EQ(record.MappedFirstRow, -1);
  EXPECT_EQ(record.MappedLastRow, -1);
  EXPECT_FALSE(record.OwnsBuffer || record.RemoveFile || record.IsMapping || record.IsMapped);
  EXPECT_EQ(picture.References(), 2);
  EXPECT_EQ(picture.LocksHeld(), 0);
  for (int32_t y = 0; y < picture.Height(); ++y) EXPECT_EQ(record.GetRow(&record, y), picture.Storage().Row(y));
}

void ExpectNotValid(PluginHost &host, REALobject image, const Picture &picture) {
  EXPECT_FALSE(host.TakeException());
  EXPECT_FALSE(RecordOf(image)->Valid);
  EXPECT_EQ(RecordOf(image)->GetRow, nullptr);
  EXPECT_EQ(RecordOf(image)->Target, nullptr);
  EXPECT_TRUE(IsFree(picture));
}

TEST(PictureConstructor, ANilPictureRaisesAndLeavesTheImageNotValid) {
  PluginHost host;
  auto image = ImageOver(host, {});
  EXPECT_EQ(host.TakeException(), (standalone::RaisedException{"NilObjectException", "picture is nil", 0}));
  EXPECT_FALSE(RecordOf(image)->Valid);
}

struct BitmapCase {
  int32_t alphaInfo;
  bool useAlpha;
  int32_t format;
  std::vector<int32_t> offsets;  // red, green, blue, alpha
};

void PrintTo(const BitmapCase &bitmap, std::ostream *out) {
  *out << "alpha info " << bitmap.alphaInfo << (bitmap.useAlpha ? ", with alpha" : "");
}

class PictureConstructorOverBitmap : public testing::TestWithParam<BitmapCase> {};

INSTANTIATE_TEST_SUITE_P(PictureConstructor, PictureConstructorOverBitmap,
                         testing::Values(BitmapCase{1, false, 3, {0, 1, 2, 3}}, BitmapCase{5, false, 3, {0, 1, 2, 3}},
                                         BitmapCase{1, true, 2, {0, 1, 2, 3}}, BitmapCase{5, true, 2, {0, 1, 2, 3}},
                                         BitmapCase{2, false, 5, {1, 2, 3, 0}}, BitmapCase{6, false, 5, {1, 2, 3, 0}},
                                         BitmapCase{2, true, 4, {1, 2, 3, 0}}, BitmapCase{6, true, 4, {1, 2, 3, 0}}));

TEST_P(PictureConstructorOverBitmap, TheImageIsTheContextsPixels) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = host.NewPicture(MakeStorage(5, 4, GetParam().alphaInfo));
  auto image = ImageOver(host, picture, GetParam().useAlpha);
  ImageClassData &record = *RecordOf(image);
  ExpectImageOver(record, *picture, GetParam().useAlpha, GetParam().offsets);
  EXPECT_EQ(record.ImageFormat, GetParam().format);
  EXPECT_EQ(record.RowSize, 32);
  EXPECT_EQ(record.TotalSize, 4 * 32);
  EXPECT_EQ(record.Buffer, picture->Storage().Row(0));
  EXPECT_EQ(record.RowTable, nullptr);
  EXPECT_EQ(record.MappedRowCount, 4);
  EXPECT_EQ(record.GetRow, GetRowLinear);
  EXPECT_EQ(Locks(host), 0);  // only the older lock was asked for, and given back
  EXPECT_EQ(host->Calls("lockPictureDescription"), 1);
  EXPECT_EQ(Unlocks(host), 1);
}

TEST(PictureConstructor, OtherAlphaInfoLeavesTheImageNotValidWithoutAWord) {
  PluginHost host({.kind = HostKind::Desktop});
  // Taken whole: 9 and 0x2006 are not 1 and 6.
  for (const int32_t alphaInfo : {0, 3, 4, 7, 9, 0x2006}) {
    auto picture = host.NewPicture(MakeStorage(5, 4, alphaInfo));
    auto image = ImageOver(host, picture);
    ExpectNotValid(host, image, *picture);
    EXPECT_EQ(RecordOf(image)->PixelSize, 4);
    EXPECT_EQ(RecordOf(image)->Width, 0);
  }
  EXPECT_EQ(Locks(host), 0);
}

TEST(PictureConstructor, TheHeightOfTheStorageIsTheDescriptions) {
  PluginHost host({.kind = HostKind::Desktop});
  uint8_t pixels[48] = {};
  standalone::BitmapContext context{pixels, 3, 2, 32, 16, 6};
  auto picture = NewOddPicture(host, 8, &context);  // described as 5 x 4
  auto image = ImageOver(host, picture);
  EXPECT_EQ(RecordOf(image)->Width, 3);
  EXPECT_EQ(RecordOf(image)->Height, 2);
  EXPECT_EQ(RecordOf(image)->TotalSize, 4 * 16);
}

TEST(PictureConstructor, TheOlderLocksAnswerIsNotLookedAt) {
  PluginHost host({.kind = HostKind::Desktop});
  static standalone::Picture *described;
  host->SetEntry(
      "lockPictureDescription", +[](REALobject, REALpictureDescription *description) -> uint8_t {
        described->Storage().Describe(8, description);
        return 0;
      });
  host->SetEntry(
      "unlockPictureDescription", +[](REALobject) {});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  described = picture.Get();
  auto image = ImageOver(host, picture);
  EXPECT_TRUE(RecordOf(image)->Valid);
}

TEST(PictureConstructor, WithoutTheOlderLockADesktopsImageIsNotValid) {
  PluginHost host({.kind = HostKind::Desktop, .withheld = {"lockPictureDescription"}});
  // The host counts an unlock without a lock as a misdeed; here it is part of the course.
  host->SetEntry(
      "unlockPictureDescription", +[](REALobject) {});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  auto image = ImageOver(host, picture);
  ExpectNotValid(host, image, *picture);
}

TEST(PictureConstructor, AContextWithoutPixelsGivesNoImage) {
  PluginHost host({.kind = HostKind::Desktop, .withheld = {"CGBitmapContextGetData"}});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  auto image = ImageOver(host, picture);
  ExpectNotValid(host, image, *picture);
}

TEST(PictureConstructor, OverAGDImageTheNumbersSayXRGBAndTheOffsetsBGR) {
  PluginHost host;
  for (const bool useAlpha : {false, true}) {
    auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
    auto image = ImageOver(host, picture, useAlpha);
    ImageClassData &record = *RecordOf(image);
    ExpectImageOver(record, *picture, useAlpha, {2, 1, 0, 3});
    EXPECT_EQ(record.ImageFormat, useAlpha ? ImageFormatARGB : ImageFormatXRGB);
    EXPECT_EQ(record.RowSize, 20);
    EXPECT_EQ(record.TotalSize, 80);
    EXPECT_EQ(record.Buffer, nullptr);
    EXPECT_EQ(record.RowTable, dynamic_cast<GDStorage &>(picture->Storage()).Image().trueColorRows);
    EXPECT_EQ(record.MappedRowCount, 0);
    EXPECT_EQ(record.GetRow, GetRowGDImage);
  }
  EXPECT_EQ(host->Calls("lockPictureDescription"), 0);
}

TEST(PictureConstructor, AGDImageWithPaletteRowsIsTakenAllTheSame) {
  PluginHost host;
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  GDImage &gd = dynamic_cast<GDStorage &>(picture->Storage()).Image();
  gd.paletteRows = gd.trueColorRows;
  auto image = ImageOver(host, picture);
  EXPECT_TRUE(RecordOf(image)->Valid);
  gd.paletteRows = nullptr;
}

TEST(PictureConstructor, AGDImageWithoutTrueColourRowsIsNot) {
  PluginHost host;
  auto palette = host.NewPicture(std::make_unique<standalone::PaletteStorage>(5, 4));
  auto notTrueColour = host.NewPicture(MakeStorage(5, 4, kGD));
  dynamic_cast<GDStorage &>(notTrueColour->Storage()).Image().trueColor = 0;
  GDImage noRows{};
  noRows.trueColor = 1;
  auto withoutRows = NewOddPicture(host, 10, &noRows);
  auto withoutData = NewOddPicture(host, 10, nullptr);
  GDImage bitmap{};
  auto ofOtherType = NewOddPicture(host, 8, &bitmap);
  for (const Owned<Picture> &picture : {palette, notTrueColour, withoutRows, withoutData, ofOtherType}) {
    auto image = host.New("PictureZVK");
    ImageConstructorPicture(image, picture, false);
    EXPECT_FALSE(RecordOf(image)->Valid);
    EXPECT_EQ(RecordOf(image)->Target, nullptr);
    EXPECT_EQ(picture->LocksHeld(), 0);
    EXPECT_EQ(picture->LocksTaken(), 1);
  }
}

TEST(PictureConstructor, AFailedLockIsGivenBackOnHostsBefore2012) {
  PluginHost host({.version = 2011.0});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  auto image = ImageOver(host, picture);
  ExpectNotValid(host, image, *picture);
  EXPECT_EQ(Locks(host), 1);
  EXPECT_EQ(Unlocks(host), 1);
}

TEST(PictureConstructor, OnAHostOfNoKindAGDImageIsFoundAfterTheBitmap) {
  PluginHost host({.applicationClass = ""});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto image = ImageOver(host, picture);
  EXPECT_EQ(host->Calls("lockPictureDescription"), 1);
  ExpectImageOver(*RecordOf(image), *picture, false, {2, 1, 0, 3});
  EXPECT_TRUE(IsConsole);
}

TEST(PictureConstructor, OnAHostOfNoKindABitmapsImageStaysThoughThereIsNoGDImage) {
  PluginHost host({.kind = HostKind::Desktop, .applicationClass = ""});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  auto image = ImageOver(host, picture);
  ExpectImageOver(*RecordOf(image), *picture, false, {1, 2, 3, 0});
  EXPECT_EQ(Locks(host), 1);
  EXPECT_FALSE(IsDesktop);
  EXPECT_FALSE(IsConsole);
}

TEST(PictureConstructor, OfTwoDescriptionsTheGDImageWinsAndOneReferenceIsTaken) {
  PluginHost host({.kind = HostKind::Desktop, .applicationClass = ""});
  static uint8_t pixels[64];
  static standalone::BitmapContext context{pixels, 4, 4, 32, 16, 6};
  host->SetEntry(
      "lockPictureDescription", +[](REALobject, REALpictureDescription *description) -> uint8_t {
        *description = {8, &context, 4, 4, 32, 0, nullptr};
        return 1;
      });
  host->SetEntry(
      "unlockPictureDescription", +[](REALobject picture) {
        auto *locked = standalone::ObjectAs<Picture>(picture);
        if (locked->LocksHeld() > 0) locked->UnlockDescription();
      });
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto image = ImageOver(host, picture);
  ExpectImageOver(*RecordOf(image), *picture, false, {2, 1, 0, 3});
  EXPECT_EQ(RecordOf(image)->Buffer, nullptr);
}

TEST(PictureConstructor, TheImageHoldsThePictureUntilItIsClosed) {
  PluginHost host;
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto image = ImageOver(host, picture);
  EXPECT_EQ(picture->References(), 2);
  ImageDestructor(image);
  EXPECT_EQ(picture->References(), 1);
  EXPECT_EQ(RecordOf(image)->Target, nullptr);
}

TEST(PictureConstructor, WritesGoIntoThePictureAndTheHostIsNotTold) {
  PluginHost host;
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto image = ImageOver(host, picture);
  ImageClassData &record = *RecordOf(image);
  *SampleAt(record, 3, 2, record.RedOffset) = 11;
  *SampleAt(record, 3, 2, record.BlueOffset) = 33;
  EXPECT_EQ(picture->GetPixel(3, 2), (Pixel{11, 0, 33}));
  EXPECT_EQ(picture->CacheClears(), 0);
}

TEST(PictureConstructor, WithUseAlphaThePicturesFourthByteIsTheAlphaChannel) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = host.NewPicture(MakeStorage(2, 1, 2));
  SetBytesAt(*picture, 1, 0, {77, 1, 2, 3});
  auto image = ImageOver(host, picture, true);
  ImageClassData &record = *RecordOf(image);
  EXPECT_TRUE(record.HasAlpha);
  EXPECT_EQ(*SampleAt(record, 1, 0, record.AlphaOffset), 77);
  auto opaque = ImageOver(host, picture, false);
  EXPECT_FALSE(RecordOf(opaque)->HasAlpha);
}

}  // namespace
}  // namespace zvk::pictures
