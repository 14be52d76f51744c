#include <gtest/gtest.h>

#include "standalone/runtime/picture.h"
#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

constexpr const char *kDrawPicture =
    "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, sx as Integer = 0, "
    "sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)";

using DrawPicture = void(REALobject, REALobject, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                         int32_t);

DrawPicture *Load(REALobject graphics) {
  return reinterpret_cast<DrawPicture *>(
      Entry<void *(REALobject, const char *)>("REALLoadObjectMethod")(graphics, kDrawPicture));
}

Owned<Object> GraphicsOf(REALobject picture) {
  return Owned<Object>::Adopt(Entry<REALobject(REALobject)>("pluginPictureGraphicsGetter")(picture));
}

// A picture whose pixel at x, y is red x + 1, green y + 1, blue 77.
Owned<Picture> Numbered(int32_t width, int32_t height) {
  auto picture = Owned<Picture>::Adopt(Picture::Make(std::make_unique<DrawnStorage>(width, height)));
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      picture->SetPixel(x, y, {static_cast<uint8_t>(x + 1), static_cast<uint8_t>(y + 1), 77, 50});
    }
  }
  return picture;
}

Owned<Picture> Blank(int32_t width, int32_t height) {
  return Owned<Picture>::Adopt(Picture::Make(std::make_unique<GDStorage>(width, height)));
}

constexpr Pixel kBlack = {0, 0, 0, 255};

TEST(Graphics, HoldsItsPictureAndHasOneReference) {
  Host host({.kind = HostKind::Desktop});
  auto picture = Blank(1, 1);
  auto graphics = GraphicsOf(picture);
  EXPECT_EQ(graphics->References(), 1);
  EXPECT_EQ(picture->References(), 2);
  graphics.Reset();
  EXPECT_EQ(picture->References(), 1);
  EXPECT_FALSE(GraphicsOf(nullptr));
}

TEST(Graphics, DrawsOnADesktopAndOnAConsoleOnlyAtWish) {
  {
    Host host({.kind = HostKind::Desktop});
    EXPECT_NE(Load(GraphicsOf(Blank(1, 1))), nullptr);
    host.Withhold("DrawPicture");
    EXPECT_EQ(Load(GraphicsOf(Blank(1, 1))), nullptr);
  }
  {
    Host host({.kind = HostKind::Console});
    EXPECT_EQ(Load(GraphicsOf(Blank(1, 1))), nullptr);
  }
  {
    Host host({.kind = HostKind::Console, .drawsPictures = true});
    EXPECT_NE(Load(GraphicsOf(Blank(1, 1))), nullptr);
  }
  Host host({.kind = HostKind::Desktop, .drawsPictures = false});
  EXPECT_EQ(Load(GraphicsOf(Blank(1, 1))), nullptr);
}

TEST(DrawPictureMethod, CopiesTheWholePictureOpaque) {
  Host host({.kind = HostKind::Desktop});
  auto source = Numbered(3, 2);
  auto target = Blank(3, 2);
  auto graphics = GraphicsOf(target);
  Load(graphics)(graphics, source, 0, 0, 3, 2, 0, 0, 3, 2);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 3; ++x) {
      EXPECT_EQ(target->GetPixel(x, y), (Pixel{static_cast<uint8_t>(x + 1), static_cast<uint8_t>(y + 1), 77, 255}));
    }
  }
}

TEST(DrawPictureMethod, TakesMinus10000AsTheWholeSize) {
  Host host({.kind = HostKind::Desktop});
  auto source = Numbered(3, 2);
  auto target = Blank(3, 2);
  auto graphics = GraphicsOf(target);
  Load(graphics)(graphics, source, 0, 0, 3, 2, 0, 0, -10000, -10000);
  EXPECT_EQ(target->GetPixel(2, 1), (Pixel{3, 2, 77, 255}));
}

TEST(DrawPictureMethod, LeavesOutWhatLiesOutsideEitherPicture) {
  Host host({.kind = HostKind::Desktop});
  auto source = Numbered(3, 3);
  auto target = Blank(3, 3);
  auto graphics = GraphicsOf(target);
  Load(graphics)(graphics, source, -1, 1, 3, 3, 1, 0, 3, 3);  // target column c, row r shows source c + 2, r - 1
  EXPECT_EQ(target->GetPixel(0, 0), kBlack);
  EXPECT_EQ(target->GetPixel(0, 1), (Pixel{3, 1, 77, 255}));
  EXPECT_EQ(target->GetPixel(0, 2), (Pixel{3, 2, 77, 255}));
  EXPECT_EQ(target->GetPixel(1, 1), kBlack);  // source column 3 is not there
  EXPECT_EQ(target->GetPixel(2, 1), kBlack);  // outside the target rectangle
}

TEST(DrawPictureMethod, ScalesToTheNearestPixel) {
  Host host({.kind = HostKind::Desktop});
  auto source = Numbered(2, 1);
  auto target = Blank(4, 1);
  auto graphics = GraphicsOf(target);
  Load(graphics)(graphics, source, 0, 0, 4, 1, 0, 0, 2, 1);
  EXPECT_EQ(target->GetPixel(0, 0).red, 1);
  EXPECT_EQ(target->GetPixel(1, 0).red, 1);
  EXPECT_EQ(target->GetPixel(2, 0).red, 2);
  EXPECT_EQ(target->GetPixel(3, 0).red, 2);
}

TEST(DrawPictureMethod, DrawsNothingForNilOrAnEmptyRectangle) {
  Host host({.kind = HostKind::Desktop});
  auto target = Blank(2, 2);
  auto graphics = GraphicsOf(target);
  Load(graphics)(graphics, nullptr, 0, 0, 2, 2, 0, 0, 2, 2);
  Load(graphics)(graphics, Numbered(2, 2), 0, 0, 0, 2, 0, 0, 2, 2);
  Load(graphics)(graphics, Numbered(2, 2), 0, 0, -2, 2, 0, 0, 2, 2);
  EXPECT_EQ(target->GetPixel(0, 0), kBlack);
  EXPECT_EQ(target->GetPixel(1, 1), kBlack);
}

TEST(LoadObjectMethod, FindsTheMethodsOfRegisteredClasses) {
  sample::SampleHost host;
  auto object = host.New();
  const auto load = Entry<void *(REALobject, const char *)>("REALLoadObjectMethod");
  EXPECT_EQ(load(object, "Twice(Value As Integer) As Integer"), sample::Address(sample::Twice));
  EXPECT_EQ(load(object, "Thrice(value as integer) as integer"), nullptr);
  EXPECT_EQ(load(object, nullptr), nullptr);
  EXPECT_EQ(load(nullptr, "Twice(value as integer) as integer"), nullptr);
}

}  // namespace
}  // namespace standalone
