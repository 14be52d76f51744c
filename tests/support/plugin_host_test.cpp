#include "tests/support/plugin_host.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "host/host_services.h"

namespace {

using standalone::Object;
using standalone::Owned;

TEST(PluginHost, RunsThePluginAndMakesInstances) {
  PluginHost host({.version = 2013.03});
  EXPECT_EQ(host->PluginVersion(), 12);
  auto image = host.New("PictureZVK");
  ASSERT_TRUE(image);
  EXPECT_EQ(image->References(), 1);
  EXPECT_FALSE(host.New("Nobody"));
}

TEST(PluginHost, MakesWhatHandlersTake) {
  PluginHost host;
  auto block = host.NewMemoryBlock({1, 2, 3});
  EXPECT_EQ(block->Size(), 3);
  EXPECT_EQ(block->Data()[2], 3);
  EXPECT_EQ(host.NewString("abc")->Text(), "abc");
  EXPECT_EQ(host.NewArray({4, 5})->Values(), (std::vector<int32_t>{4, 5}));
  EXPECT_EQ(host.NewFolderItem("/a/b")->Path(), "/a/b");
  EXPECT_EQ(host.NewPicture(4, 3)->Height(), 3);
  EXPECT_EQ(host.NewPicture(std::make_unique<standalone::DrawnStorage>(2, 1))->Width(), 2);
  EXPECT_EQ(host.NewPicture(0, 3).Get(), nullptr);
}

TEST(PluginHost, TakesWhatThePluginRaises) {
  PluginHost host;
  EXPECT_EQ(host.TakeException(), std::nullopt);
  zvk::host::RaiseException("NilObjectException", "nothing there");
  EXPECT_EQ(host.TakeException(), (standalone::RaisedException{"NilObjectException", "nothing there", 0}));
}

TEST(PluginHost, ComplainsAboutWhatIsLeftOver) {
  Object *left = nullptr;
  EXPECT_NONFATAL_FAILURE(
      {
        PluginHost host;
        left = host.New("PictureZVK").Release();
      },
      "1 PictureZVK");
  left->Unlock();
}

TEST(PluginHost, ComplainsAboutAnExceptionThatNobodyTook) {
  EXPECT_NONFATAL_FAILURE(
      {
        PluginHost host;
        zvk::host::RaiseException("NilObjectException", "nothing there");
      },
      "nothing there");
}

TEST(PluginHost, ComplainsAboutAReferenceGivenBackTooOften) {
  EXPECT_NONFATAL_FAILURE(
      {
        PluginHost host;
        const REALobject ended = host.New("PictureZVK").Handle();
        zvk::host::REALUnlockObject(ended);
      },
      "has ended");
}

TEST(PluginHost, SaysNothingWhereLeaksAreAllowed) {
  Object *left = nullptr;
  {
    PluginHost host;
    host.AllowLeaks();
    left = host.New("PictureZVK").Release();
  }
  left->Unlock();
}

TEST(Adopt, TakesOverAResultsReference) {
  PluginHost host;
  auto picture = AdoptPicture(host.NewPicture(1, 1).Release()->Handle());
  EXPECT_EQ(picture->References(), 1);
  auto block = AdoptMemoryBlock(host.NewMemoryBlock(4).Release()->Handle());
  EXPECT_EQ(block->Size(), 4);
  EXPECT_EQ(Adopt(host.NewString("a").Release()->Handle())->Text(), "a");
  EXPECT_FALSE(AdoptPicture(nullptr));
  EXPECT_FALSE(Adopt(REALobject{nullptr}));
}

}  // namespace
