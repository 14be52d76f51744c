#include "pictures/picture_editor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/host_services.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::BitmapStorage;
using standalone::GDStorage;
using standalone::HostKind;
using standalone::PaletteStorage;
using standalone::Picture;

void ExpectEmpty(const PictureEditor &editor) {
  EXPECT_EQ(editor.Picture, nullptr);
  EXPECT_EQ(editor.PixMap, nullptr);
  EXPECT_FALSE(editor.DescriptionLocked);
  EXPECT_EQ(editor.Reserved, 0);
}

// --- attaching ---

class EveryLayout : public testing::TestWithParam<int32_t> {
 protected:
  PluginHost host_{HostOf(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(PictureEditor, EveryLayout, testing::ValuesIn(kLayouts));

TEST_P(EveryLayout, AnAttachedEditorShowsThePictureAndHoldsIt) {
  auto picture = host_.NewPicture(MakeStorage(5, 4, GetParam()));
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(reader.Width, 5);
  EXPECT_EQ(reader.Height, 4);
  EXPECT_EQ(reader.PixelBytes, 4);
  EXPECT_EQ(reader.Layout, GetParam());
  EXPECT_EQ(reader.RowBytes, GetParam() == kGD ? 20 : 32);
  EXPECT_EQ(reader.BaseAddress, picture->Storage().Row(0));
  EXPECT_EQ(reader.RowAddress, reader.BaseAddress);
  EXPECT_EQ(reader.Row, 0);
  EXPECT_EQ(reader.Column, 0);
  EXPECT_EQ(reader.Picture, picture.Handle());
  EXPECT_TRUE(reader.DescriptionLocked);
  EXPECT_FALSE(reader.HasAlpha);
  EXPECT_FALSE(reader.AlphaRoute);
  EXPECT_TRUE(reader.ForReading);
  EXPECT_FALSE(reader.ForWriting);
  EXPECT_EQ(picture->References(), 2);
  EXPECT_EQ(picture->LocksHeld(), 1);

  reader.ReleasePicture();
  ExpectEmpty(reader);
  EXPECT_TRUE(IsFree(*picture));
  EXPECT_EQ(picture->CacheClears(), 0);
}

TEST_P(EveryLayout, TheCursorWalksTheRowsAndReturnsToTheFirst) {
  auto picture = host_.NewPicture(MakeStorage(5, 3, GetParam()));
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  reader.Column = 3;
  reader.NextRow();
  EXPECT_EQ(reader.RowAddress, picture->Storage().Row(1));
  EXPECT_EQ(reader.Row, 1);
  EXPECT_EQ(reader.Column, 0);
  reader.NextRow();
  EXPECT_EQ(reader.RowAddress, picture->Storage().Row(2));
  reader.NextRow();
  EXPECT_EQ(reader.RowAddress, picture->Storage().Row(0));
  reader.NextRow();
  EXPECT_EQ(reader.RowAddress, picture->Storage().Row(0));
}

TEST_P(EveryLayout, AttachingTwiceLetsGoOfTheFirstPicture) {
  auto first = host_.NewPicture(MakeStorage(5, 4, GetParam()));
  auto second = host_.NewPicture(MakeStorage(3, 2, GetParam()));
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(first, 1, 0));
  reader.NextRow();
  ASSERT_TRUE(reader.GetPictureEditor(second, 1, 0));
  EXPECT_TRUE(IsFree(*first));
  EXPECT_EQ(reader.Picture, second.Handle());
  EXPECT_EQ(reader.Width, 3);
  EXPECT_EQ(reader.Row, 0);
  EXPECT_EQ(reader.RowAddress, second->Storage().Row(0));
}

TEST_P(EveryLayout, ANilPictureGivesFalseAndLeavesTheEditorEmpty) {
  auto picture = host_.NewPicture(MakeStorage(5, 4, GetParam()));
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(nullptr, 1, 0));
  ExpectEmpty(reader);
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_FALSE(reader.GetPictureEditor(nullptr, 1, 0));
  ExpectEmpty(reader);
  EXPECT_TRUE(IsFree(*picture));
}

TEST_P(EveryLayout, TheEditorKeepsThePictureAliveAlone) {
  auto picture = host_.NewPicture(MakeStorage(5, 4, GetParam()));
  PictureWriter writer;
  ASSERT_TRUE(writer.GetPictureEditor(picture, 0, 1));
  Picture &kept = *picture;
  picture.Reset();
  EXPECT_EQ(kept.References(), 1);
  auto result = AdoptPicture(writer.RenderPictureWriter());
  EXPECT_EQ(result.Get(), &kept);
  ExpectEmpty(writer);
  EXPECT_TRUE(IsFree(*result));
  EXPECT_EQ(result->CacheClears(), 2);
}

TEST_P(EveryLayout, TheDestructorReleasesAndClearsTheCacheOfAWrittenPictureOnce) {
  auto picture = host_.NewPicture(MakeStorage(5, 4, GetParam()));
  {
    PictureWriter writer;
    ASSERT_TRUE(writer.GetPictureEditor(picture, 0, 1));
    EXPECT_TRUE(writer.ForWriting);
    EXPECT_FALSE(writer.ForReading);
    writer.ReleasePicture();
    EXPECT_EQ(picture->CacheClears(), 1);
  }
  EXPECT_TRUE(IsFree(*picture));
  EXPECT_EQ(picture->CacheClears(), 1);
}

TEST(PictureEditor, APremultipliedBitmapWithAlphaIsAccepted) {
  PluginHost host({.kind = HostKind::Desktop});
  for (const int32_t layout : {1, 2}) {
    auto picture = host.NewPicture(MakeStorage(5, 4, layout, true));
    PictureReader reader;
    ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
    EXPECT_EQ(reader.Layout, layout);
    EXPECT_TRUE(reader.HasAlpha);
    EXPECT_TRUE(reader.AlphaRoute);
  }
}

TEST(PictureEditor, OtherBitmapsWithAlphaAreRefusedAndKeepTheirLock) {
  PluginHost host({.kind = HostKind::Desktop});
  for (const int32_t layout : {0, 3, 4, 5, 6, 7}) {
    auto picture = host.NewPicture(MakeStorage(5, 4, layout, true));
    {
      PictureReader reader;
      EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
      ExpectEmpty(reader);
    }
    EXPECT_EQ(picture->References(), 1);
    EXPECT_EQ(picture->LocksHeld(), 1);
    picture->UnlockDescription();
  }
}

TEST(PictureEditor, AlphaInfoZeroAndSevenAreRefusedAndKeepTheirLock) {
  PluginHost host({.kind = HostKind::Desktop});
  for (const int32_t layout : {0, 7}) {
    auto picture = host.NewPicture(MakeStorage(5, 4, layout));
    PictureReader reader;
    EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
    EXPECT_EQ(picture->References(), 1);
    EXPECT_EQ(picture->LocksHeld(), 1);
    picture->UnlockDescription();
  }
}

TEST(PictureEditor, OnlyTheLowThreeBitsOfTheAlphaInfoCount) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = host.NewPicture(MakeStorage(5, 4, 0x2000 | 6));
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(reader.Layout, 6);
}

TEST(PictureEditor, ABitmapOfAnotherDepthIsRefusedAndItsLockGivenBack) {
  PluginHost host({.kind = HostKind::Desktop});
  for (const bool hasAlpha : {false, true}) {
    auto picture =
        host.NewPicture(std::make_unique<BitmapStorage>(5, 4, standalone::BitmapLayout{2, 64, 40, hasAlpha}));
    PictureReader reader;
    EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
    ExpectEmpty(reader);
    EXPECT_TRUE(IsFree(*picture));
  }
}

TEST(PictureEditor, ABitmapOfAnotherDepthAndRefusedAlphaInfoKeepsItsLock) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = host.NewPicture(std::make_unique<BitmapStorage>(5, 4, standalone::BitmapLayout{3, 24, 20, true}));
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(picture->LocksHeld(), 1);
  picture->UnlockDescription();
}

TEST(PictureEditor, AContextWithoutPixelsIsRefusedAndItsLockGivenBack) {
  PluginHost host({.kind = HostKind::Desktop, .withheld = {"CGBitmapContextGetData"}});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_TRUE(IsFree(*picture));
}

TEST(PictureEditor, ADescriptionOfAnotherTypeOrWithoutDataIsGivenBack) {
  PluginHost host({.kind = HostKind::Desktop});
  standalone::BitmapContext context{&context, 5, 4, 32, 20, 6};
  auto otherType = NewOddPicture(host, 9, &context);
  auto noData = NewOddPicture(host, 8, nullptr);
  for (Picture *picture : {otherType.Get(), noData.Get()}) {
    PictureReader reader;
    EXPECT_FALSE(reader.GetPictureEditor(picture->Handle(), 1, 0));
    ExpectEmpty(reader);
    EXPECT_TRUE(IsFree(*picture));
    EXPECT_EQ(picture->LocksTaken(), 1);
  }
}

TEST(PictureEditor, AGDImageIsReachedThroughItsTableOfRows) {
  PluginHost host;
  auto picture = host.NewPicture(MakeStorage(5, 3, kGD));
  auto &storage = dynamic_cast<GDStorage &>(picture->Storage());
  // Rows in any order: the first in memory is shown last.
  std::swap(storage.Image().trueColorRows[0], storage.Image().trueColorRows[2]);
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(reader.RowPointers, storage.Image().trueColorRows);
  for (int32_t y = 0; y < 3; ++y) {
    EXPECT_EQ(reader.RowAddress, storage.Image().trueColorRows[y]);
    reader.NextRow();
  }
  reader.ReleasePicture();
  std::swap(storage.Image().trueColorRows[0], storage.Image().trueColorRows[2]);
}

TEST(PictureEditor, AGDImageThatIsNoTrueColourImageIsRefusedAndItsLockGivenBack) {
  PluginHost host;
  auto palette = host.NewPicture(std::make_unique<PaletteStorage>(5, 4));
  auto notTrueColour = host.NewPicture(MakeStorage(5, 4, kGD));
  dynamic_cast<GDStorage &>(notTrueColour->Storage()).Image().trueColor = 0;
  auto withPalette = host.NewPicture(MakeStorage(5, 4, kGD));
  GDImage &paletteImage = dynamic_cast<GDStorage &>(withPalette->Storage()).Image();
  paletteImage.paletteRows = paletteImage.trueColorRows;
  GDImage noRows{};
  noRows.trueColor = 1;
  auto withoutRows = NewOddPicture(host, 10, &noRows);
  auto otherType = NewOddPicture(host, 8, &paletteImage);
  for (Picture *picture : {palette.Get(), notTrueColour.Get(), withPalette.Get(), withoutRows.Get(), otherType.Get()}) {
    PictureReader reader;
    EXPECT_FALSE(reader.GetPictureEditor(picture->Handle(), 1, 0));
    ExpectEmpty(reader);
    EXPECT_TRUE(IsFree(*picture));
    EXPECT_EQ(picture->LocksTaken(), 1);
  }
  paletteImage.paletteRows = nullptr;
}

TEST(PictureEditor, ABitmapIsAsLargeAsItsContextWhateverTheDescriptionSays) {
  PluginHost host({.kind = HostKind::Desktop});
  uint8_t pixels[32] = {};
  standalone::BitmapContext context{pixels, 3, 2, 32, 16, 6};
  auto picture = NewOddPicture(host, 8, &context);  // described as 5 x 4
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(reader.Width, 3);
  EXPECT_EQ(reader.Height, 2);
  EXPECT_EQ(reader.RowBytes, 16);
  EXPECT_EQ(reader.BaseAddress, pixels);
}

TEST(PictureEditor, AGDImageIsAsLargeAsItsDescriptionSays) {
  PluginHost host;
  uint8_t *rows[4] = {};
  GDImage image{};
  image.width = 3;
  image.height = 2;
  image.trueColor = 1;
  image.trueColorRows = rows;
  auto picture = NewOddPicture(host, 10, &image);  // described as 5 x 4
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(reader.Width, 5);
  EXPECT_EQ(reader.Height, 4);
  EXPECT_EQ(reader.RowBytes, 20);
}

// --- classification ---

TEST(HostClassification, AnApplicationMakesADesktop) {
  PluginHost host({.kind = HostKind::Desktop});
  ClassifyHost();
  EXPECT_TRUE(IsDesktop);
  EXPECT_FALSE(IsConsole);
}

TEST(HostClassification, AWebApplicationMakesAConsole) {
  PluginHost host({.applicationClass = "WebApplication"});
  ClassifyHost();
  EXPECT_FALSE(IsDesktop);
  EXPECT_TRUE(IsConsole);
}

TEST(HostClassification, AConsoleApplicationMakesAConsole) {
  PluginHost host;
  ClassifyHost();
  EXPECT_FALSE(IsDesktop);
  EXPECT_TRUE(IsConsole);
}

TEST(HostClassification, TheThreeClassesAreAskedInOrderAndOnlyOnce) {
  PluginHost host;
  static std::vector<std::string> asked;
  host->SetEntry(
      "pluginObjectType", +[](const char *name) -> void * {
        asked.emplace_back(name);
        return &asked;  // has them all
      });
  ClassifyHost();
  EXPECT_TRUE(IsDesktop);
  EXPECT_FALSE(IsConsole);
  ClassifyHost();
  EXPECT_EQ(asked, (std::vector<std::string>{"Application", "WebApplication", "ConsoleApplication"}));
}

TEST(HostClassification, AHostOfNoKindIsADesktopOnceABitmapWasDescribed) {
  PluginHost host({.kind = HostKind::Desktop, .applicationClass = ""});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  PictureReader reader;
  EXPECT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_TRUE(IsDesktop);
  EXPECT_FALSE(IsConsole);
}

TEST(HostClassification, AHostOfNoKindIsAConsoleOnceAGDImageWasDescribed) {
  PluginHost host({.applicationClass = ""});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  PictureWriter writer;
  EXPECT_TRUE(writer.GetPictureEditor(picture, 0, 1));
  EXPECT_EQ(writer.Layout, 8);
  EXPECT_EQ(Locks(host), 2);
  EXPECT_TRUE(IsConsole);
  EXPECT_FALSE(IsDesktop);
  // From now on the bitmap is not asked for.
  EXPECT_TRUE(writer.GetPictureEditor(picture, 0, 1));
  EXPECT_EQ(Locks(host), 3);
}

TEST(HostClassification, AHostOfNoKindIsKnownEvenIfThePictureIsRefused) {
  PluginHost host({.applicationClass = ""});
  auto palette = host.NewPicture(std::make_unique<PaletteStorage>(5, 4));
  PictureWriter writer;
  EXPECT_FALSE(writer.GetPictureEditor(palette, 0, 1));
  EXPECT_TRUE(IsConsole);
}

TEST(HostClassification, ADesktopIsNotAskedForAGDImage) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  PictureWriter writer;
  EXPECT_FALSE(writer.GetPictureEditor(picture, 0, 1));
  EXPECT_EQ(Locks(host), 1);
  EXPECT_TRUE(IsFree(*picture));
}

TEST(HostClassification, AConsoleIsNotAskedForABitmap) {
  PluginHost host;
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(Locks(host), 1);
  EXPECT_TRUE(IsFree(*picture));
}

// --- locks that fail ---

TEST(FailedLock, IsGivenBackAllTheSameOnHostsBefore2012) {
  PluginHost host({.version = 2011.04});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(Locks(host), 1);
  EXPECT_EQ(Unlocks(host), 1);
}

TEST(FailedLock, IsNotGivenBackFrom2012On) {
  PluginHost host({.version = 2012.0});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(Locks(host), 1);
  EXPECT_EQ(Unlocks(host), 0);
}

TEST(FailedLock, IsGivenBackOnBothRoutesOfAnOldHost) {
  PluginHost host({.version = 2010.0, .applicationClass = ""});
  auto picture = NewOddPicture(host, 0, nullptr);
  PictureWriter writer;
  EXPECT_FALSE(writer.GetPictureEditor(picture, 0, 1));
  EXPECT_EQ(Locks(host), 2);
  EXPECT_EQ(Unlocks(host), 2);
  EXPECT_FALSE(IsDesktop);
  EXPECT_FALSE(IsConsole);
}

TEST(FailedLock, IsWhatAMissingEntryCountsAs) {
  PluginHost host({.kind = HostKind::Desktop, .withheld = {"REALLockPictureDescription"}});
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  PictureWriter writer;
  EXPECT_FALSE(writer.GetPictureEditor(picture, 0, 1));
  EXPECT_EQ(host->Calls("lockPictureDescription"), 0);
  EXPECT_EQ(Unlocks(host), 0);
  EXPECT_TRUE(IsFree(*picture));
}

TEST(FailedLock, OfAPictureWithAlphaIsGivenBackAndTheGDImageIsTriedNext) {
  PluginHost host({.version = 2011.0, .applicationClass = ""});
  host->SetEntry(
      "REALGetPropValueBool", +[](REALobject, const char *, uint8_t *value) -> uint8_t { return *value = 1; });
  auto picture = NewOddPicture(host, 0, nullptr);
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(Locks(host), 2);
  EXPECT_EQ(Unlocks(host), 2);
  EXPECT_EQ(host->Calls("newPicture"), 0);
}

// --- release and render ---

TEST(PictureEditor, ReleaseGivesTheLockBackThenClearsTheCacheThenDropsTheReference) {
  PluginHost host;
  static std::vector<std::string> calls;
  host->SetEntry(
      "unlockPictureDescription", +[](REALobject picture) {
        calls.emplace_back("unlock");
        standalone::ObjectAs<Picture>(picture)->UnlockDescription();
      });
  host->SetEntry(
      "REALPictureClearCache", +[](REALobject) { calls.emplace_back("clear"); });
  host->SetEntry(
      "REALUnlockObject", +[](REALobject picture) {
        calls.emplace_back("drop");
        standalone::ObjectAs<Picture>(picture)->Unlock();
      });
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  PictureWriter writer;
  ASSERT_TRUE(writer.GetPictureEditor(picture, 0, 1));
  writer.ReleasePicture();
  EXPECT_EQ(calls, (std::vector<std::string>{"unlock", "clear", "drop"}));
  calls.clear();
  ASSERT_TRUE(writer.GetPictureEditor(picture, 1, 0));
  writer.ReleasePicture();
  EXPECT_EQ(calls, (std::vector<std::string>{"unlock", "drop"}));
}

TEST(PictureEditor, AReleasedPixMapIsUnlocked) {
  PluginHost host;
  static std::vector<void *> unlocked;
  host->SetEntry(
      "UnlockPixels", +[](void *pixMap) { unlocked.push_back(pixMap); });
  int pixMap = 0;
  {
    PictureEditor editor;
    editor.PixMap = &pixMap;
    editor.ReleasePicture();
    ExpectEmpty(editor);
  }
  EXPECT_EQ(unlocked, std::vector<void *>{&pixMap});
}

TEST(PictureEditor, MissingEntriesAreSkippedOnRelease) {
  PluginHost host({.withheld = {"unlockPictureDescription", "REALPictureClearCache"}});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  PictureWriter writer;
  ASSERT_TRUE(writer.GetPictureEditor(picture, 0, 1));
  writer.ReleasePicture();
  ExpectEmpty(writer);
  EXPECT_EQ(picture->References(), 1);
  EXPECT_EQ(picture->LocksHeld(), 1);
  picture->UnlockDescription();
}

TEST(RenderPictureWriter, AnEmptyWriterGivesNil) {
  PluginHost host;
  PictureWriter writer;
  EXPECT_EQ(writer.RenderPictureWriter(), nullptr);
}

TEST(RenderPictureWriter, WithoutAPictureTheBufferOfTheDescriptionBecomesOne) {
  PluginHost host;
  static std::vector<int64_t> built;
  static standalone::Picture *made;
  host->SetEntry(
      "REALBuildPictureFromBuffer",
      +[](int32_t width, int32_t height, int32_t type, void *buffer, int32_t rowBytes) -> REALobject {
        built = {width, height, type, static_cast<uint8_t *>(buffer)[0], rowBytes};
        return made->Handle();
      });
  made = Picture::Make(MakeStorage(3, 2, kGD));
  uint8_t buffer[40] = {123};
  PictureWriter writer;
  writer.Description.pixelBuffer = buffer;
  writer.Width = 3;
  writer.Height = 2;
  writer.RowBytes = 20;
  auto result = AdoptPicture(writer.RenderPictureWriter());
  EXPECT_EQ(result.Get(), made);
  EXPECT_EQ(built, (std::vector<int64_t>{3, 2, 1, 123, 20}));
}

}  // namespace
}  // namespace zvk::pictures
