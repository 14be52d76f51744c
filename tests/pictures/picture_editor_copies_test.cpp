#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/host_services.h"
#include "pictures/picture_editor.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::DrawnStorage;
using standalone::HostKind;
using standalone::PaletteStorage;
using standalone::Picture;

constexpr const char *kDrawPicture =
    "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, sx as Integer = 0, sy as "
    "Integer = 0, sw as Integer = -10000, sh as Integer = -10000)";

Owned<Picture> DrawnPicture(PluginHost &host, int32_t width, int32_t height) {
  auto picture = host.NewPicture(std::make_unique<DrawnStorage>(width, height));
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      picture->SetPixel(x, y, {static_cast<uint8_t>(10 * x + 1), static_cast<uint8_t>(10 * y + 2), 77});
    }
  }
  return picture;
}

// --- the snapshot of a picture without a bitmap ---

TEST(Snapshot, AReadPictureWithoutABitmapIsDrawnIntoANewOne) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(reader.Width, 5);
  EXPECT_EQ(reader.Height, 4);
  EXPECT_EQ(host->Calls("newPicture"), 1);
  EXPECT_TRUE(IsFree(*picture));
  auto *copy = standalone::ObjectAs<Picture>(reader.Picture);
  ASSERT_NE(copy, nullptr);
  ASSERT_NE(copy, picture.Get());
  EXPECT_EQ(copy->References(), 1);  // the editor's alone
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 5; ++x) EXPECT_EQ(copy->GetPixel(x, y), picture->GetPixel(x, y));
  }
  // Later changes do not show.
  picture->SetPixel(2, 2, {9, 9, 9});
  EXPECT_EQ(copy->GetPixel(2, 2), (Pixel{21, 22, 77}));
}

TEST(Snapshot, IsNotTakenForWritingOrForBoth) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = DrawnPicture(host, 5, 4);
  PictureEditor editor;
  EXPECT_FALSE(editor.GetPictureEditor(picture, 0, 1));
  EXPECT_FALSE(editor.GetPictureEditor(picture, 1, 1));
  EXPECT_FALSE(editor.GetPictureEditor(picture, 0, 0));
  EXPECT_EQ(host->Calls("newPicture"), 0);
  EXPECT_TRUE(IsFree(*picture));
}

TEST(Snapshot, IsNotTakenOfAPictureWithAlpha) {
  PluginHost host({.kind = HostKind::Desktop});
  host->SetEntry(
      "REALGetPropValueBool", +[](REALobject, const char *name, uint8_t *value) -> uint8_t {
        *value = std::string(name) == "HasAlphaChannel";
        return 1;
      });
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_TRUE(reader.HasAlpha);
  EXPECT_EQ(host->Calls("newPicture"), 0);
}

TEST(Snapshot, AFailedReadOfHasAlphaChannelCountsAsNo) {
  PluginHost host({.kind = HostKind::Desktop});
  host->SetEntry(
      "REALGetPropValueBool", +[](REALobject, const char *, uint8_t *value) -> uint8_t {
        *value = 1;
        return 0;
      });
  auto picture = host.NewPicture(MakeStorage(5, 4, 3));
  PictureReader reader;
  EXPECT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_FALSE(reader.HasAlpha);
}

TEST(Snapshot, IsNotTakenWithoutASize) {
  PluginHost host({.kind = HostKind::Desktop, .withheld = {"REALGetPropValueInt"}});
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(host->Calls("newPicture"), 0);
}

TEST(Snapshot, FailsWithoutANewPicture) {
  PluginHost host({.kind = HostKind::Desktop, .withheld = {"newPicture"}});
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_TRUE(IsFree(*picture));
}

TEST(Snapshot, IsTakenOnlyOnce) {
  PluginHost host({.kind = HostKind::Desktop});
  host->SetPictureFactory([](int32_t width, int32_t height) { return std::make_unique<DrawnStorage>(width, height); });
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  EXPECT_FALSE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(host->Calls("newPicture"), 1);
  EXPECT_EQ(reader.Picture, nullptr);
  EXPECT_TRUE(IsFree(*picture));
}

TEST(Snapshot, WithoutGraphicsNothingIsDrawn) {
  PluginHost host({.kind = HostKind::Desktop, .withheld = {"pluginPictureGraphicsGetter"}});
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(standalone::ObjectAs<Picture>(reader.Picture)->GetPixel(2, 2), (Pixel{255, 255, 255}));
  EXPECT_EQ(Locks(host), 2);  // both for the editor, none for a copy
}

TEST(Snapshot, WithoutADrawingMethodTheFallbackIsACopyOfGDRows) {
  PluginHost host({.kind = HostKind::Desktop, .version = 2011.0, .drawsPictures = false});
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(host->Questions("RuntimeGraphicsDrawPicture"), 1);
  // The copy asks for the given picture as a GD image, is refused and draws nothing.
  EXPECT_EQ(Locks(host), 3);
  EXPECT_EQ(standalone::ObjectAs<Picture>(reader.Picture)->GetPixel(2, 2), (Pixel{255, 255, 255}));
}

TEST(Snapshot, NewHostsAreNotAskedForTheOldDrawingFunction) {
  PluginHost host({.kind = HostKind::Desktop, .version = 2012.0, .drawsPictures = false});
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(host->Questions("RuntimeGraphicsDrawPicture"), 0);
  EXPECT_EQ(Locks(host), 3);
}

TEST(Snapshot, OnAHostOfNoKindTheCopyIsReachedAsAGDImage) {
  PluginHost host({.applicationClass = "", .drawsPictures = false});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  picture->SetPixel(3, 2, {1, 2, 3});
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(host->Calls("newPicture"), 1);
  auto *copy = standalone::ObjectAs<Picture>(reader.Picture);
  EXPECT_NE(copy, picture.Get());
  EXPECT_EQ(copy->GetPixel(3, 2), (Pixel{1, 2, 3}));
  EXPECT_TRUE(IsConsole);
  EXPECT_TRUE(IsFree(*picture));
}

TEST(Snapshot, WithoutANewPictureAHostOfNoKindIsAskedForTheGDImageOfThePictureItself) {
  PluginHost host({.withheld = {"newPicture"}, .applicationClass = ""});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(reader.Picture, picture.Handle());
  EXPECT_EQ(Locks(host), 2);
  EXPECT_EQ(picture->References(), 2);
  EXPECT_EQ(picture->LocksHeld(), 1);
}

TEST(Snapshot, OfAPictureWithAlphaIsNotTakenOnAHostOfNoKindEither) {
  PluginHost host({.applicationClass = ""});
  host->SetEntry(
      "REALGetPropValueBool", +[](REALobject, const char *, uint8_t *value) -> uint8_t { return *value = 1; });
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(reader.Picture, picture.Handle());
  EXPECT_EQ(reader.Layout, 8);
  EXPECT_FALSE(reader.AlphaRoute);
  EXPECT_EQ(host->Calls("newPicture"), 0);
}

// What a drawing method was called with.
REALobject drawnInto, drawnImage;
std::vector<int32_t> drawnNumbers;
std::string askedDeclaration;

void NoteDrawing(REALobject graphics, REALobject image, int32_t x, int32_t y, int32_t width, int32_t height,
                 int32_t sourceX, int32_t sourceY, int32_t sourceWidth, int32_t sourceHeight) {
  drawnInto = graphics;
  drawnImage = image;
  drawnNumbers = {x, y, width, height, sourceX, sourceY, sourceWidth, sourceHeight};
}

TEST(Snapshot, IsDrawnAtItsOwnSizeIntoAPictureOfDepth32WhoseGraphicsAreGivenBackFirst) {
  PluginHost host({.kind = HostKind::Desktop});
  static int32_t depth;
  static REALobject made, graphics;
  static std::vector<std::string> calls;
  host->SetEntry(
      "newPicture", +[](int32_t width, int32_t height, int32_t wantedDepth) -> REALobject {
        depth = wantedDepth;
        return made = Picture::Make(width, height)->Handle();
      });
  host->SetEntry(
      "pluginPictureGraphicsGetter", +[](REALobject picture) -> REALobject {
        return graphics = standalone::Graphics::Make(*standalone::ObjectAs<Picture>(picture))->Handle();
      });
  host->SetEntry(
      "REALLoadObjectMethod", +[](REALobject, const char *declaration) -> void * {
        askedDeclaration = declaration;
        return reinterpret_cast<void *>(NoteDrawing);
      });
  host->SetEntry(
      "REALLockObject", +[](REALobject object) {
        calls.emplace_back(object == made ? "hold picture" : "hold another");
        standalone::Object::From(object)->Lock();
      });
  host->SetEntry(
      "REALUnlockObject", +[](REALobject object) {
        calls.emplace_back(object == graphics ? "drop graphics" : object == made ? "drop picture" : "drop another");
        standalone::Object::From(object)->Unlock();
      });
  auto picture = DrawnPicture(host, 5, 4);
  PictureReader reader;
  ASSERT_TRUE(reader.GetPictureEditor(picture, 1, 0));
  EXPECT_EQ(depth, 32);
  EXPECT_EQ(askedDeclaration, kDrawPicture);
  EXPECT_EQ(drawnInto, graphics);
  EXPECT_EQ(drawnImage, picture.Handle());
  EXPECT_EQ(drawnNumbers, (std::vector<int32_t>{0, 0, 5, 4, 0, 0, 5, 4}));
  // The editor takes its reference before the maker's is dropped.
  EXPECT_EQ(calls, (std::vector<std::string>{"drop graphics", "hold picture", "drop picture"}));
}

// --- masks ---

class MaskOfEveryLayout : public testing::TestWithParam<int32_t> {
 protected:
  PluginHost host_{HostOf(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(AddPictureMask, MaskOfEveryLayout, testing::ValuesIn(kLayouts));

TEST_P(MaskOfEveryLayout, TheMaskPictureIsDrawnIntoTheMask) {
  // By the drawing method on a desktop, by a copy of rows on a console.
  MakeNewPicturesOf(host_, GetParam());
  auto picture = host_.NewPicture(MakeStorage(5, 4, GetParam()));
  auto maskPicture = NewFilledPicture(host_, 5, 4, GetParam());
  AddPictureMask(picture, maskPicture, 5, 4);
  ASSERT_NE(picture->Mask(), nullptr);
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 5; ++x) {
      const Pixel mask = picture->Mask()->GetPixel(x, y);
      const Pixel expected = maskPicture->GetPixel(x, y);
      EXPECT_EQ(mask.red, expected.red);
      EXPECT_EQ(mask.green, expected.green);
      EXPECT_EQ(mask.blue, expected.blue);
    }
  }
  EXPECT_EQ(picture->Mask()->References(), 1);
  EXPECT_EQ(picture->Mask()->LocksHeld(), 0);
  EXPECT_TRUE(IsFree(*maskPicture));
}

TEST(AddPictureMask, DoesNothingWithoutPicturesOrSize) {
  PluginHost host;
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto maskPicture = NewFilledPicture(host, 5, 4, kGD);
  AddPictureMask(nullptr, maskPicture, 5, 4);
  AddPictureMask(picture, nullptr, 5, 4);
  AddPictureMask(picture, maskPicture, 0, 4);
  AddPictureMask(picture, maskPicture, 5, 0);
  AddPictureMask(picture, maskPicture, -5, 4);
  AddPictureMask(picture, maskPicture, 5, -4);
  EXPECT_EQ(host->Calls("REALGetPictureMask"), 0);
  EXPECT_EQ(picture->Mask(), nullptr);
}

TEST(AddPictureMask, DoesNothingOnAHostWithoutMasks) {
  PluginHost host({.withheld = {"REALGetPictureMask"}});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto maskPicture = NewFilledPicture(host, 5, 4, kGD);
  AddPictureMask(picture, maskPicture, 5, 4);
  EXPECT_EQ(Locks(host), 0);
  EXPECT_EQ(host->Calls("pluginPictureGraphicsGetter"), 0);
}

TEST(AddPictureMask, WithoutGraphicsRowsAreCopied) {
  PluginHost host({.withheld = {"pluginPictureGraphicsGetter"}});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto maskPicture = NewFilledPicture(host, 5, 4, kGD);
  AddPictureMask(picture, maskPicture, 5, 4);
  ASSERT_NE(picture->Mask(), nullptr);
  EXPECT_EQ(BytesAt(*picture->Mask(), 4, 3), BytesAt(*maskPicture, 4, 3));
  EXPECT_EQ(host->Questions("RuntimeGraphicsDrawPicture"), 0);
}

TEST(AddPictureMask, WithNilGraphicsRowsAreCopied) {
  PluginHost host;
  host->SetEntry(
      "pluginPictureGraphicsGetter", +[](REALobject) -> REALobject { return nullptr; });
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto maskPicture = NewFilledPicture(host, 5, 4, kGD);
  AddPictureMask(picture, maskPicture, 5, 4);
  EXPECT_EQ(BytesAt(*picture->Mask(), 4, 3), BytesAt(*maskPicture, 4, 3));
}

TEST(AddPictureMask, AnOldHostWithoutTheMethodIsAskedForItsDrawingFunction) {
  PluginHost host({.version = 2011.0});
  auto picture = host.NewPicture(MakeStorage(5, 4, kGD));
  auto maskPicture = NewFilledPicture(host, 5, 4, kGD);
  AddPictureMask(picture, maskPicture, 5, 4);
  EXPECT_EQ(host->Questions("RuntimeGraphicsDrawPicture"), 1);
  EXPECT_EQ(BytesAt(*picture->Mask(), 4, 3), BytesAt(*maskPicture, 4, 3));
}

TEST(AddPictureMask, TheDrawingMethodIsCalledWithTheGivenSizeOnBothSides) {
  PluginHost host({.kind = HostKind::Desktop});
  static std::vector<int32_t> sizes;
  static std::string declaration;
  static REALobject drawn;
  using Draw = void (*)(REALobject, REALobject, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
  static const Draw draw = [](REALobject, REALobject image, int32_t x, int32_t y, int32_t w, int32_t h, int32_t sx,
                              int32_t sy, int32_t sw, int32_t sh) {
    drawn = image;
    sizes = {x, y, w, h, sx, sy, sw, sh};
  };
  host->SetEntry(
      "REALLoadObjectMethod", +[](REALobject, const char *text) -> void * {
        declaration = text;
        return reinterpret_cast<void *>(draw);
      });
  auto picture = host.NewPicture(MakeStorage(5, 4, 6));
  auto maskPicture = NewFilledPicture(host, 5, 4, 6);
  AddPictureMask(picture, maskPicture, 512, 300);
  EXPECT_EQ(declaration, kDrawPicture);
  EXPECT_EQ(drawn, maskPicture.Handle());
  EXPECT_EQ(sizes, (std::vector<int32_t>{0, 0, 512, 300, 0, 0, 512, 300}));
}

// --- copies of GD rows ---

bool Copy(Picture &dest, Picture &source, int32_t width, int32_t height) {
  return OwnCopy(dest.Handle(), source.Handle(), 0, 0, width, height, 0, 0, width, height);
}

TEST(OwnCopy, CopiesEveryByteAndClearsTheDestinationsCache) {
  PluginHost host;
  auto source = NewFilledPicture(host, 5, 4, kGD, 1);
  auto dest = NewFilledPicture(host, 5, 4, kGD, 2);
  EXPECT_TRUE(Copy(*dest, *source, 5, 4));
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 5; ++x) EXPECT_EQ(BytesAt(*dest, x, y), BytesAt(*source, x, y));
  }
  EXPECT_EQ(dest->CacheClears(), 1);
  EXPECT_EQ(source->CacheClears(), 0);
  EXPECT_TRUE(IsFree(*dest));
  EXPECT_TRUE(IsFree(*source));
}

TEST(OwnCopy, PositionsAreIgnored) {
  PluginHost host;
  auto source = NewFilledPicture(host, 5, 4, kGD, 1);
  auto dest = NewFilledPicture(host, 5, 4, kGD, 2);
  EXPECT_TRUE(OwnCopy(dest, source, 2, 3, 5, 4, -7, 1000, 5, 4));
  EXPECT_EQ(BytesAt(*dest, 0, 0), BytesAt(*source, 0, 0));
  EXPECT_EQ(BytesAt(*dest, 4, 3), BytesAt(*source, 4, 3));
}

TEST(OwnCopy, CopiesOnlyTheSizeAskedFor) {
  PluginHost host;
  auto source = NewFilledPicture(host, 5, 4, kGD, 1);
  auto dest = host.NewPicture(MakeStorage(5, 4, kGD));
  EXPECT_TRUE(Copy(*dest, *source, 2, 3));
  EXPECT_EQ(BytesAt(*dest, 1, 2), BytesAt(*source, 1, 2));
  EXPECT_EQ(dest->GetPixel(2, 2), (Pixel{0, 0, 0}));
  EXPECT_EQ(dest->GetPixel(1, 3), (Pixel{0, 0, 0}));
}

TEST(OwnCopy, IsCutAtWhatThePicturesHave) {
  PluginHost host;
  auto source = NewFilledPicture(host, 5, 4, kGD, 1);
  auto dest = NewFilledPicture(host, 5, 4, kGD, 2);
  EXPECT_TRUE(Copy(*dest, *source, INT32_MAX, INT32_MAX));
  EXPECT_EQ(BytesAt(*dest, 4, 3), BytesAt(*source, 4, 3));
}

TEST(OwnCopy, WithNoRowsToCopyIsTrue) {
  PluginHost host;
  auto source = NewFilledPicture(host, 5, 4, kGD, 1);
  auto dest = host.NewPicture(MakeStorage(5, 4, kGD));
  EXPECT_TRUE(Copy(*dest, *source, 5, 0));
  EXPECT_TRUE(Copy(*dest, *source, 5, -3));
  EXPECT_TRUE(Copy(*dest, *source, -5, 4));
  EXPECT_EQ(dest->GetPixel(0, 0), (Pixel{0, 0, 0}));
  EXPECT_EQ(dest->CacheClears(), 3);
}

TEST(OwnCopy, WithDifferingSizesOrNilTouchesNeitherPicture) {
  PluginHost host;
  auto source = NewFilledPicture(host, 5, 4, kGD, 1);
  auto dest = NewFilledPicture(host, 5, 4, kGD, 2);
  EXPECT_FALSE(OwnCopy(dest, source, 0, 0, 5, 4, 0, 0, 4, 4));
  EXPECT_FALSE(OwnCopy(dest, source, 0, 0, 5, 4, 0, 0, 5, 3));
  EXPECT_FALSE(OwnCopy(nullptr, source, 0, 0, 5, 4, 0, 0, 5, 4));
  EXPECT_FALSE(OwnCopy(dest, nullptr, 0, 0, 5, 4, 0, 0, 5, 4));
  EXPECT_EQ(Locks(host), 0);
  EXPECT_EQ(dest->CacheClears(), 0);
}

TEST(OwnCopy, BetweenPicturesOfDifferentSizeIsFalseAndClearsTheCache) {
  PluginHost host;
  auto source = NewFilledPicture(host, 5, 4, kGD);
  for (const auto &[width, height] : {std::pair(4, 4), std::pair(5, 5)}) {
    auto dest = host.NewPicture(MakeStorage(width, height, kGD));
    EXPECT_FALSE(Copy(*dest, *source, 4, 4));
    EXPECT_EQ(dest->GetPixel(0, 0), (Pixel{0, 0, 0}));
    EXPECT_EQ(dest->CacheClears(), 1);
    EXPECT_TRUE(IsFree(*dest));
    EXPECT_TRUE(IsFree(*source));
  }
}

TEST(OwnCopy, WithAPaletteImageOnEitherSideIsFalseAndClearsTheCache) {
  PluginHost host;
  auto trueColour = NewFilledPicture(host, 5, 4, kGD);
  auto palette = host.NewPicture(std::make_unique<PaletteStorage>(5, 4));
  EXPECT_FALSE(Copy(*palette, *trueColour, 5, 4));
  EXPECT_EQ(palette->CacheClears(), 1);
  EXPECT_FALSE(Copy(*trueColour, *palette, 5, 4));
  EXPECT_EQ(trueColour->CacheClears(), 1);
  EXPECT_TRUE(IsFree(*trueColour));
  EXPECT_TRUE(IsFree(*palette));
}

TEST(OwnCopy, ASourceThatCannotBeDescribedLeavesTheDestinationAlone) {
  PluginHost host({.version = 2011.0});
  auto source = host.NewPicture(MakeStorage(5, 4, 6));
  auto dest = host.NewPicture(MakeStorage(5, 4, kGD));
  EXPECT_FALSE(Copy(*dest, *source, 5, 4));
  EXPECT_EQ(dest->LocksTaken(), 0);
  EXPECT_EQ(dest->CacheClears(), 0);
  EXPECT_EQ(Unlocks(host), 1);  // the balance of an old host
}

TEST(OwnCopy, ADestinationThatCannotBeDescribedStillHasItsCacheCleared) {
  PluginHost host({.version = 2011.0});
  auto source = NewFilledPicture(host, 5, 4, kGD);
  auto dest = host.NewPicture(MakeStorage(5, 4, 6));
  EXPECT_FALSE(Copy(*dest, *source, 5, 4));
  EXPECT_EQ(dest->CacheClears(), 1);
  EXPECT_EQ(Unlocks(host), 2);  // the balance, and the source's lock
  EXPECT_TRUE(IsFree(*source));
}

TEST(OwnCopy, ADescriptionOfAnotherTypeIsNotReadAsAGDImage) {
  PluginHost host;
  uint8_t anything[4] = {};
  auto source = NewOddPicture(host, 8, anything);
  auto dest = host.NewPicture(MakeStorage(5, 4, kGD));
  EXPECT_FALSE(Copy(*dest, *source, 5, 4));
  EXPECT_EQ(source->LocksHeld(), 0);
}

}  // namespace
}  // namespace zvk::pictures
