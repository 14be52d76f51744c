#include "standalone/runtime/picture.h"

#include <gtest/gtest.h>

#include <cstring>

#include "standalone/runtime/properties.h"
#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

uint8_t Lock(REALobject picture, REALpictureDescription *description, int32_t type) {
  return Entry<uint8_t(REALobject, REALpictureDescription *, int32_t)>("REALLockPictureDescription")(picture,
                                                                                                     description, type);
}

uint8_t OldLock(REALobject picture, REALpictureDescription *description) {
  return Entry<uint8_t(REALobject, REALpictureDescription *)>("lockPictureDescription")(picture, description);
}

void Unlock(REALobject picture) { Entry<void(REALobject)>("unlockPictureDescription")(picture); }

Owned<Picture> NewPicture(int32_t width, int32_t height) {
  const auto make = Entry<REALobject(int32_t, int32_t, int32_t)>("newPicture");
  return Owned<Picture>::Adopt(ObjectAs<Picture>(make(width, height, 32)));
}

TEST(NewPicture, HasTheFormOfTheHost) {
  REALpictureDescription description{};
  {
    Host host({.kind = HostKind::Console});
    auto picture = NewPicture(3, 2);
    EXPECT_EQ(Lock(picture, &description, 8), 0);
    EXPECT_EQ(Lock(picture, &description, 10), 1);
    EXPECT_EQ(picture->GetPixel(0, 0), (Pixel{0, 0, 0, 255}));
    Unlock(picture);
  }
  Host host({.kind = HostKind::Desktop, .newPictureLayout = {.alphaInfo = 5}});
  auto picture = NewPicture(3, 2);
  EXPECT_EQ(Lock(picture, &description, 10), 0);
  EXPECT_EQ(Lock(picture, &description, 8), 1);
  EXPECT_EQ(static_cast<BitmapContext *>(description.data)->alphaInfo, 5u);
  EXPECT_EQ(picture->GetPixel(0, 0), (Pixel{255, 255, 255, 255}));
  EXPECT_EQ(picture->Width(), 3);
  EXPECT_EQ(picture->Height(), 2);
  EXPECT_EQ(picture->References(), 1);
  Unlock(picture);
}

TEST(NewPicture, OfNoSizeIsNil) {
  Host host;
  EXPECT_FALSE(NewPicture(0, 1));
  EXPECT_FALSE(NewPicture(1, -1));
}

TEST(NewPicture, ComesFromAReplacedFactory) {
  Host host;
  host.SetPictureFactory([](int32_t width, int32_t height) { return std::make_unique<DrawnStorage>(width, height); });
  auto picture = NewPicture(2, 1);
  EXPECT_NE(dynamic_cast<DrawnStorage *>(&picture->Storage()), nullptr);
  host.SetPictureFactory([](int32_t, int32_t) { return nullptr; });
  EXPECT_FALSE(NewPicture(2, 1));
  host.SetPictureFactory([](int32_t, int32_t) -> std::unique_ptr<PictureStorage> { throw std::bad_alloc(); });
  EXPECT_FALSE(NewPicture(2, 1));
}

TEST(PictureProperties, TellSizeAndAlpha) {
  Host host({.kind = HostKind::Desktop});
  auto plain = NewPicture(3, 2);
  auto alpha = Owned<Picture>::Adopt(
      Picture::Make(std::make_unique<BitmapStorage>(3, 2, BitmapLayout{.alphaInfo = 1, .hasAlphaChannel = true})));
  int32_t size = 0;
  EXPECT_TRUE(GetIntegerProperty(*plain, "Width", &size));
  EXPECT_EQ(size, 3);
  EXPECT_TRUE(GetIntegerProperty(*plain, "height", &size));
  EXPECT_EQ(size, 2);
  bool hasAlpha = true;
  EXPECT_TRUE(GetBooleanProperty(*plain, "HasAlphaChannel", &hasAlpha));
  EXPECT_FALSE(hasAlpha);
  EXPECT_TRUE(GetBooleanProperty(*alpha, "HasAlphaChannel", &hasAlpha));
  EXPECT_TRUE(hasAlpha);
  EXPECT_FALSE(GetIntegerProperty(*plain, "Depth", &size));
}

TEST(DescriptionLocks, AreCounted) {
  Host host;
  auto picture = NewPicture(1, 1);
  REALpictureDescription description{};
  Lock(picture, &description, 10);
  Lock(picture, &description, 10);
  EXPECT_EQ(picture->LocksHeld(), 2);
  Unlock(picture);
  Unlock(picture);
  EXPECT_EQ(picture->LocksHeld(), 0);
  EXPECT_EQ(picture->LocksTaken(), 2);
  EXPECT_TRUE(host.Misdeeds().empty());
  Unlock(picture);
  EXPECT_EQ(host.Misdeeds().size(), 1u);
  EXPECT_EQ(picture->LocksHeld(), 0);
  EXPECT_EQ(Lock(nullptr, &description, 10), 0);
}

TEST(DescriptionLocks, ThatFailCountOnHostsBelow2012Only) {
  REALpictureDescription description{};
  for (const auto &[version, held] : {std::pair<std::optional<double>, int>{2012.0, 0}, {2011.99, 1}, {{}, 1}}) {
    Host host({.version = version});
    auto picture = NewPicture(1, 1);
    EXPECT_EQ(Lock(picture, &description, 8), 0);
    EXPECT_EQ(picture->LocksHeld(), held);
    EXPECT_EQ(picture->LocksTaken(), 0);
    if (held > 0) Unlock(picture);
  }
}

TEST(DescriptionLocks, OfTheOlderEntryDescribeAnyFormAndAlwaysCount) {
  Host host({.kind = HostKind::Desktop});
  REALpictureDescription description{};
  auto bitmap = NewPicture(1, 1);
  EXPECT_EQ(OldLock(bitmap, &description), 1);
  EXPECT_EQ(description.type, 8u);
  Unlock(bitmap);
  auto drawn = Owned<Picture>::Adopt(Picture::Make(std::make_unique<DrawnStorage>(1, 1)));
  EXPECT_EQ(OldLock(drawn, &description), 0);
  EXPECT_EQ(description.data, nullptr);
  EXPECT_EQ(drawn->LocksHeld(), 1);
  Unlock(drawn);
  EXPECT_TRUE(host.Misdeeds().empty());
}

TEST(PictureClearCache, IsCounted) {
  Host host;
  auto picture = NewPicture(1, 1);
  Entry<void(REALobject)>("REALPictureClearCache")(picture);
  Entry<void(REALobject)>("REALPictureClearCache")(picture);
  EXPECT_EQ(picture->CacheClears(), 2);
  EXPECT_EQ(host.Calls("REALPictureClearCache"), 2);
}

TEST(PictureMask, IsMadeOnlyOnDemand) {
  Host host;
  const auto getMask = Entry<REALobject(REALobject, uint8_t)>("REALGetPictureMask");
  auto picture = NewPicture(3, 2);
  EXPECT_EQ(getMask(picture, 0), nullptr);
  EXPECT_EQ(getMask(nullptr, 1), nullptr);
  auto mask = Owned<Picture>::Adopt(ObjectAs<Picture>(getMask(picture, 1)));
  ASSERT_TRUE(mask);
  EXPECT_EQ(mask->References(), 2);  // the picture's and the caller's
  EXPECT_EQ(mask->Width(), 3);
  EXPECT_EQ(mask->Height(), 2);
  EXPECT_EQ(mask->GetPixel(2, 1), (Pixel{255, 255, 255, 255}));
  EXPECT_EQ(Owned<Object>::Adopt(getMask(picture, 0)).Get(), mask.Get());
  EXPECT_EQ(Owned<Object>::Adopt(getMask(picture, 1)).Get(), mask.Get());
  picture.Reset();
  EXPECT_EQ(mask->References(), 1);
}

TEST(BuildPictureFromBuffer, CopiesTheRows) {
  const auto build = [](int32_t width, int32_t height, int32_t type, void *buffer, int32_t rowBytes) {
    const auto entry = Entry<REALobject(int32_t, int32_t, int32_t, void *, int32_t)>("REALBuildPictureFromBuffer");
    return Owned<Picture>::Adopt(ObjectAs<Picture>(entry(width, height, type, buffer, rowBytes)));
  };
  uint8_t buffer[2][12] = {{0, 1, 2, 3, 0, 4, 5, 6, 99, 99, 99, 99}, {0, 7, 8, 9, 0, 10, 11, 12, 99, 99, 99, 99}};
  Host host({.kind = HostKind::Desktop});  // bytes filler, R, G, B
  auto picture = build(2, 2, 1, buffer, 12);
  ASSERT_TRUE(picture);
  buffer[1][1] = 0;
  EXPECT_EQ(picture->GetPixel(1, 0), (Pixel{4, 5, 6, 255}));
  EXPECT_EQ(picture->GetPixel(0, 1), (Pixel{7, 8, 9, 255}));
  EXPECT_FALSE(build(2, 2, 2, buffer, 12));
  EXPECT_FALSE(build(2, 2, 1, nullptr, 12));
  EXPECT_FALSE(build(4, 2, 1, buffer, 12));
}

}  // namespace
}  // namespace standalone
