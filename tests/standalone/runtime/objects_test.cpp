#include "standalone/runtime/objects.h"

#include <gtest/gtest.h>

#include "standalone/runtime/memory_block.h"
#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;
using sample::SampleHost;

TEST(Objects, StartWithOneReferenceAndEndWithTheLast) {
  SampleHost host;
  Object *const object = host.New().Release();
  EXPECT_EQ(object->References(), 1);
  object->Lock();
  EXPECT_EQ(object->References(), 2);
  object->Unlock();
  EXPECT_EQ(sample::destroyed, 0);
  const REALobject handle = object->Handle();
  EXPECT_TRUE(IsLive(handle));
  object->Unlock();
  EXPECT_EQ(sample::destroyed, 1);
  EXPECT_FALSE(IsLive(handle));
}

TEST(Objects, AreCountedThroughTheEntries) {
  SampleHost host;
  auto object = host.New();
  Entry<void(REALobject)>("REALLockObject")(object);
  EXPECT_EQ(object->References(), 2);
  Entry<void(REALobject)>("REALUnlockObject")(object);
  EXPECT_EQ(object->References(), 1);
  Entry<void(REALobject)>("REALLockObject")(nullptr);
  Entry<void(REALobject)>("REALUnlockObject")(nullptr);
  EXPECT_TRUE(host.Misdeeds().empty());
}

TEST(Objects, AReferenceGivenBackTooOftenIsNotedAndDoesNoHarm) {
  SampleHost host;
  const REALobject handle = host.New().Release()->Handle();
  Entry<void(REALobject)>("REALUnlockObject")(handle);
  Entry<void(REALobject)>("REALUnlockObject")(handle);
  EXPECT_EQ(sample::destroyed, 1);
  EXPECT_EQ(host.Misdeeds().size(), 1u);
}

TEST(Objects, TheHandleIsTheAddressOfTheObject) {
  SampleHost host;
  auto object = host.New();
  EXPECT_EQ(static_cast<void *>(object.Handle()), static_cast<void *>(object.Get()));
  EXPECT_EQ(Object::From(object.Handle()), object.Get());
}

TEST(ObjectAs, GivesNilForAnotherKind) {
  SampleHost host;
  auto block = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(1));
  EXPECT_EQ(ObjectAs<MemoryBlock>(block.Handle()), block.Get());
  EXPECT_EQ(ObjectAs<MemoryBlock>(host.New().Handle()), nullptr);
  EXPECT_EQ(ObjectAs<MemoryBlock>(nullptr), nullptr);
}

TEST(LiveObjects, AreThoseMadeSinceInOrder) {
  SampleHost host;
  auto first = host.New();
  const uint64_t made = ObjectsMade();
  auto second = host.New();
  auto third = host.New();
  second.Reset();
  auto fourth = host.New();
  EXPECT_EQ(LiveObjects(made), (std::vector<Object *>{third.Get(), fourth.Get()}));
}

TEST(Owned, CopiesShareAndMovesHandOver) {
  SampleHost host;
  auto first = host.New();
  {
    Owned<Object> copy = first;
    EXPECT_EQ(first->References(), 2);
    Owned<Object> moved = std::move(copy);
    EXPECT_EQ(first->References(), 2);
    EXPECT_FALSE(copy);
    EXPECT_EQ(moved.Get(), first.Get());
    moved = moved;
    EXPECT_EQ(first->References(), 2);
  }
  EXPECT_EQ(first->References(), 1);
  auto shared = Owned<Object>::Share(first.Get());
  EXPECT_EQ(first->References(), 2);
  EXPECT_EQ(static_cast<REALobject>(Owned<Object>()), nullptr);
}

}  // namespace
}  // namespace standalone
