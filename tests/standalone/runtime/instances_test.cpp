#include "standalone/runtime/instances.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/properties.h"
#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::RecordOf;
using sample::SampleHost;

TEST(Instances, HaveAlignedZeroFilledDataAtTheOffset) {
  SampleHost host;
  // Memory that was used before comes back dirty unless it is cleared.
  for (int round = 0; round < 3; ++round) {
    auto object = host.New();
    auto *const bytes = reinterpret_cast<uint8_t *>(&RecordOf(object));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(bytes) % 16, 0u);
    EXPECT_EQ(RecordOf(object).constructed, 1);
    RecordOf(object).constructed = 0;
    EXPECT_TRUE(std::all_of(bytes, bytes + sizeof(sample::Record), [](uint8_t byte) { return byte == 0; }));
    RecordOf(object).count = -1;
    RecordOf(object).flag = 0xFF;
  }
}

TEST(Instances, LeaveTheBytesFrom24OnToOtherPlugins) {
  Host host;
  host.Classes().Define("GWorldZVK", nullptr, Instance::Make);
  auto object = Owned<Object>::Adopt(host.Classes().NewInstance("GWorldZVK"));
  auto *const bytes = reinterpret_cast<uint8_t *>(object.Handle());
  std::fill(bytes + 24, bytes + kFirstDataOffset, uint8_t{0xAB});
  EXPECT_EQ(object->References(), 1);
  EXPECT_EQ(object->Type().Name(), "GWorldZVK");
}

TEST(Instances, GiveBackWhatThePropertyFieldsHold) {
  SampleHost host;
  auto held = host.New();
  auto kept = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(4));
  auto label = Owned<String>::Adopt(String::Make("label"));
  auto object = host.New();
  AssignObjectField(&RecordOf(object).held, held);
  AssignStringField(&RecordOf(object).label, label);
  RecordOf(object).kept = kept;  // the plug-in's own affair: read-only to the host
  EXPECT_EQ(held->References(), 2);
  EXPECT_EQ(label->References(), 2);
  object.Reset();
  EXPECT_EQ(held->References(), 1);
  EXPECT_EQ(label->References(), 1);
  EXPECT_EQ(kept->References(), 1);
}

std::vector<std::string> events;
REALobject watched = nullptr;

void BaseDestructor(REALobject instance) {
  // Taking and dropping a reference at the end does not end the instance again.
  Object::From(instance)->Lock();
  Object::From(instance)->Unlock();
  events.push_back("base");
}
void DerivedDestructor(REALobject) { events.push_back("derived"); }

TEST(Instances, RunTheDestructorsFromTheBottomUp) {
  Host host;
  events.clear();
  REALclassDefinition base{};
  base.version = 12;
  base.name = "Base";
  base.destructor = sample::Address(BaseDestructor);
  host.Classes().Register(&base);
  REALclassDefinition derived{};
  derived.version = 12;
  derived.name = "Derived";
  derived.superName = "Base";
  derived.destructor = sample::Address(DerivedDestructor);
  host.Classes().Register(&derived);
  host.Classes().DefineSubclass("Bottom", "Derived", {});
  Owned<Object>::Adopt(host.Classes().NewInstance("Bottom")).Reset();
  EXPECT_EQ(events, (std::vector<std::string>{"derived", "base"}));
  EXPECT_TRUE(host.Leaks().empty());
}

void LookAtField(REALobject instance) { watched = RecordOf(instance).held; }

TEST(Instances, TheDestructorStillSeesTheFields) {
  Host host;
  sample::Tables12 tables;
  REALclassDefinition definition = tables.Definition(12);
  definition.constructor = nullptr;
  definition.destructor = sample::Address(LookAtField);
  host.Classes().Register(&definition);
  sample::dataOffset = definition.forSystemUse;
  auto held = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(4));
  auto object = Owned<Object>::Adopt(host.Classes().NewInstance("Sample"));
  AssignObjectField(&RecordOf(object).held, held);
  watched = nullptr;
  object.Reset();
  EXPECT_EQ(watched, held.Handle());
  EXPECT_EQ(held->References(), 1);
}

std::vector<bool> wasTaken;  // whether there was something to close, each time
void CloseZero(REALobject) { wasTaken.push_back(close(0) == 0); }

TEST(Instances, AfterEachConstructorOrDestructorThatClosedItDescriptor0IsTakenAgain) {
  Host host;
  REALclassDefinition closer{};
  closer.version = 12;
  closer.name = "Closer";
  closer.constructor = sample::Address(CloseZero);
  closer.destructor = sample::Address(CloseZero);
  host.Classes().Register(&closer);
  REALclassDefinition derived = closer;
  derived.name = "Derived";
  derived.superName = "Closer";
  host.Classes().Register(&derived);
  wasTaken.clear();
  auto object = Owned<Object>::Adopt(host.Classes().NewInstance("Derived"));
  EXPECT_GE(fcntl(0, F_GETFD), 0);
  object.Reset();
  EXPECT_GE(fcntl(0, F_GETFD), 0);
  EXPECT_EQ(wasTaken, std::vector<bool>(4, true));
}

TEST(Instances, MayOutliveTheirHost) {
  Owned<Object> object;
  {
    SampleHost host;
    object = host.New();
  }
  EXPECT_EQ(object->Type().Name(), "Sample");
  object.Reset();
  EXPECT_EQ(sample::destroyed, 1);
}

}  // namespace
}  // namespace standalone
