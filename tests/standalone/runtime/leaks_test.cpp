#include "standalone/runtime/leaks.h"

#include <gtest/gtest.h>

#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/picture.h"
#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;
using sample::SampleHost;

TEST(Leaks, ListWhatIsAliveByClassAndCount) {
  SampleHost host;
  EXPECT_TRUE(host.Leaks().empty());
  auto first = host.New();
  auto second = host.New();
  second->Lock();
  auto string = Owned<String>::Adopt(String::Make("abc"));
  EXPECT_EQ(host.Leaks(), (std::vector<Leak>{{"Sample", 2}, {"String", 1}}));
  second->Unlock();
  second.Reset();
  string.Reset();
  EXPECT_EQ(host.Leaks(), (std::vector<Leak>{{"Sample", 1}}));
}

TEST(Leaks, CountSubclassesByTheirOwnName) {
  SampleHost host;
  host.Classes().DefineSubclass("Sub", "Sample", {});
  auto object = host.New("Sub");
  EXPECT_EQ(host.Leaks(), (std::vector<Leak>{{"Sub", 1}}));
}

TEST(Leaks, LeaveOutWhatWasThereBefore) {
  auto old = Owned<String>::Adopt(String::Make("old"));
  SampleHost host;
  EXPECT_TRUE(host.Leaks().empty());
}

TEST(Leaks, ListDescriptionLocksEvenOfPicturesThatHaveEnded) {
  Host host;
  auto picture = Owned<Picture>::Adopt(Picture::Make(2, 2));
  REALpictureDescription description{};
  const auto lock = Entry<uint8_t(REALobject, REALpictureDescription *, int32_t)>("REALLockPictureDescription");
  EXPECT_EQ(lock(picture, &description, 10), 1);
  EXPECT_EQ(lock(picture, &description, 10), 1);
  EXPECT_EQ(host.Leaks(), (std::vector<Leak>{{"Picture", 1}, {"description lock", 2}}));
  Entry<void(REALobject)>("unlockPictureDescription")(picture);
  picture.Reset();
  EXPECT_EQ(host.Leaks(), (std::vector<Leak>{{"description lock", 1}}));
}

TEST(Leaks, ListStringDataThatHasNotComeBack) {
  Host host;
  auto string = Owned<String>::Adopt(String::Make("abc"));
  REALstringData data{};
  Entry<uint8_t(REALstring, uint32_t, REALstringData *)>("PluginGetStringData")(string, 65535, &data);
  string.Reset();
  EXPECT_EQ(host.Leaks(), (std::vector<Leak>{{"String", 1}, {"string data", 1}}));
  Entry<void(REALstringData *)>("PluginDisposeStringData")(&data);
  EXPECT_TRUE(host.Leaks().empty());
}

TEST(Describe, PutsLeaksOnOneLine) {
  EXPECT_EQ(Describe({}), "");
  EXPECT_EQ(Describe({{"Picture", 2}, {"String", 1}}), "2 Picture, 1 String");
}

}  // namespace
}  // namespace standalone
