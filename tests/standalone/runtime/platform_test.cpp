#include <gtest/gtest.h>

#include "standalone/runtime/picture_storage.h"
#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

constexpr const char *kContextFunctions[] = {"CGBitmapContextGetData",
                                             "CGBitmapContextGetBitsPerPixel",
                                             "CGBitmapContextGetWidth",
                                             "CGBitmapContextGetHeight",
                                             "CGBitmapContextGetBytesPerRow",
                                             "CGBitmapContextGetAlphaInfo",
                                             "UnlockPixels"};

TEST(BitmapContextFunctions, AreThereOnADesktopOnly) {
  {
    Host host({.kind = HostKind::Console});
    for (const char *const name : kContextFunctions) EXPECT_EQ(Host::Resolve(name), nullptr) << name;
  }
  Host host({.kind = HostKind::Desktop});
  for (const char *const name : kContextFunctions) EXPECT_NE(Host::Resolve(name), nullptr) << name;
}

TEST(BitmapContextFunctions, ReadTheContext) {
  Host host({.kind = HostKind::Desktop});
  BitmapStorage storage(5, 3, {.alphaInfo = 0x2004, .bytesPerRow = 64});
  void *const context = &storage.Context();
  EXPECT_EQ(Entry<void *(void *)>("CGBitmapContextGetData")(context), storage.Row(0));
  EXPECT_EQ(Entry<size_t(void *)>("CGBitmapContextGetBitsPerPixel")(context), 32u);
  EXPECT_EQ(Entry<size_t(void *)>("CGBitmapContextGetWidth")(context), 5u);
  EXPECT_EQ(Entry<size_t(void *)>("CGBitmapContextGetHeight")(context), 3u);
  EXPECT_EQ(Entry<size_t(void *)>("CGBitmapContextGetBytesPerRow")(context), 64u);
  EXPECT_EQ(Entry<uint32_t(void *)>("CGBitmapContextGetAlphaInfo")(context), 0x2004u);
  EXPECT_EQ(Entry<void *(void *)>("CGBitmapContextGetData")(nullptr), nullptr);
  EXPECT_EQ(Entry<size_t(void *)>("CGBitmapContextGetWidth")(nullptr), 0u);
}

TEST(BitmapContextFunctions, UnlockPixelsIsCounted) {
  Host host({.kind = HostKind::Desktop});
  Entry<void(void *)>("UnlockPixels")(&host);
  EXPECT_EQ(host.Calls("UnlockPixels"), 1);
}

TEST(Clocks, AreThereOnlyOnceTheyAreSet) {
  Host host;
  for (const char *const name : {"TickCount", "AudioGetCurrentHostTime", "AudioConvertHostTimeToNanos"}) {
    EXPECT_EQ(Host::Resolve(name), nullptr) << name;
  }
  HostClock &clock = host.SetClock({.ticks = 5, .nanoseconds = 49'000'000});
  const auto ticks = Entry<uint32_t()>("TickCount");
  const auto now = Entry<uint64_t()>("AudioGetCurrentHostTime");
  const auto toNanos = Entry<uint64_t(uint64_t)>("AudioConvertHostTimeToNanos");
  EXPECT_EQ(ticks(), 5u);
  EXPECT_EQ(toNanos(now()), 49'000'000u);
  EXPECT_NE(now(), 49'000'000u);  // in a unit of its own
  clock.ticks = 7;
  clock.nanoseconds = 50'000'000;
  EXPECT_EQ(ticks(), 7u);
  EXPECT_EQ(toNanos(now()), 50'000'000u);
}

TEST(Clocks, SetAgainShowTheNewTime) {
  Host host;
  host.SetClock({.ticks = 5});
  host.Resolve("TickCount");
  const HostClock &again = host.SetClock({.ticks = 6});
  EXPECT_EQ(again.ticks, 6u);
  EXPECT_EQ(Entry<uint32_t()>("TickCount")(), 6u);
}

}  // namespace
}  // namespace standalone
