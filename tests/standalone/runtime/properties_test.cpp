#include "standalone/runtime/properties.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;
using sample::RecordOf;
using sample::SampleHost;

TEST(Properties, StandardAccessorsReadAndWriteTheField) {
  SampleHost host;
  auto object = host.New();
  EXPECT_TRUE(SetIntegerProperty(*object, "count", 7));
  EXPECT_EQ(RecordOf(object).count, 7);
  RecordOf(object).count = 9;
  int32_t count = 0;
  EXPECT_TRUE(GetIntegerProperty(*object, "Count", &count));
  EXPECT_EQ(count, 9);
  RecordOf(object).flag = 1;
  bool flag = false;
  EXPECT_TRUE(GetBooleanProperty(*object, "Flag", &flag));
  EXPECT_TRUE(flag);
}

TEST(Properties, AccessorsOfTheirOwnGetTheInstanceAndTheParameter) {
  SampleHost host;
  auto object = host.New();
  RecordOf(object).count = 20;
  int32_t doubled = 0;
  EXPECT_TRUE(GetIntegerProperty(*object, "Doubled", &doubled));
  EXPECT_EQ(doubled, 41);
  EXPECT_TRUE(SetIntegerProperty(*object, "Doubled", 61));
  EXPECT_EQ(RecordOf(object).count, 30);
  RecordOf(object).count = 3;
  bool isOdd = false;
  EXPECT_TRUE(GetBooleanProperty(*object, "IsOdd", &isOdd));
  EXPECT_TRUE(isOdd);
}

TEST(Properties, TextFieldsHoldAReferenceOfTheirOwn) {
  SampleHost host;
  auto object = host.New();
  auto text = Owned<String>::Adopt(String::Make("abc"));
  EXPECT_TRUE(SetTextProperty(*object, "Label", text.Get()));
  EXPECT_EQ(text->References(), 2);
  Owned<String> read;
  EXPECT_TRUE(GetTextProperty(*object, "Label", &read));
  EXPECT_EQ(read.Get(), text.Get());
  EXPECT_EQ(text->References(), 3);
  EXPECT_TRUE(SetTextProperty(*object, "Label", nullptr));
  EXPECT_EQ(text->References(), 2);
}

TEST(Properties, AGettersTextIsHandedOver) {
  SampleHost host;
  auto object = host.New();
  Owned<String> title;
  EXPECT_TRUE(GetTextProperty(*object, "Title", &title));
  EXPECT_EQ(title->Text(), "title");
  EXPECT_EQ(title->References(), 1);
  EXPECT_TRUE(SetTextProperty(*object, "Title", title.Get()));
  EXPECT_EQ(RecordOf(object).count, 1);
}

TEST(Properties, OfAnotherTypeOrUnknownOrReadOnlyAreRefused) {
  SampleHost host;
  auto object = host.New();
  int32_t integer = 5;
  bool boolean = true;
  EXPECT_FALSE(GetIntegerProperty(*object, "Flag", &integer));
  EXPECT_FALSE(GetBooleanProperty(*object, "Count", &boolean));
  EXPECT_FALSE(GetIntegerProperty(*object, "Nothing", &integer));
  EXPECT_FALSE(SetIntegerProperty(*object, "Label", 1));
  EXPECT_FALSE(SetTextProperty(*object, "Count", nullptr));
  EXPECT_EQ(integer, 5);
  EXPECT_TRUE(boolean);
}

TEST(Properties, ANilSetterMakesANumberReadOnly) {
  Host host;
  sample::Tables12 tables;
  tables.properties[0].setter = nullptr;
  REALclassDefinition definition = tables.Definition(12);
  definition.constructor = nullptr;
  host.Classes().Register(&definition);
  auto object = Owned<Object>::Adopt(host.Classes().NewInstance("Sample"));
  EXPECT_FALSE(SetIntegerProperty(*object, "Count", 1));
  int32_t count = -1;
  EXPECT_TRUE(GetIntegerProperty(*object, "Count", &count));
  EXPECT_EQ(count, 0);
}

TEST(Properties, AreFoundInTheClassAbove) {
  SampleHost host;
  host.Classes().DefineSubclass("Sub", "Sample", {});
  auto object = host.New("Sub");
  EXPECT_TRUE(SetIntegerProperty(*object, "Count", 3));
  EXPECT_EQ(RecordOf(object).count, 3);
}

TEST(PropertyEntries, ReadAndWriteByName) {
  SampleHost host;
  auto object = host.New();
  EXPECT_EQ(Entry<uint8_t(REALobject, const char *, int32_t)>("REALSetPropValueInt")(object, "Count", 8), 1);
  int32_t count = 0;
  EXPECT_EQ(Entry<uint8_t(REALobject, const char *, int32_t *)>("REALGetPropValueInt")(object, "Count", &count), 1);
  EXPECT_EQ(count, 8);
  RecordOf(object).flag = 77;
  uint8_t flag = 0;
  EXPECT_EQ(Entry<uint8_t(REALobject, const char *, uint8_t *)>("REALGetPropValueBool")(object, "Flag", &flag), 1);
  EXPECT_EQ(flag, 1);
  auto text = Owned<String>::Adopt(String::Make("abc"));
  EXPECT_EQ(Entry<uint8_t(REALobject, const char *, REALstring)>("REALSetPropValueString")(object, "Label", text), 1);
  EXPECT_EQ(RecordOf(object).label, text.Handle());

  EXPECT_EQ(Entry<uint8_t(REALobject, const char *, int32_t *)>("REALGetPropValueInt")(object, "None", &count), 0);
  EXPECT_EQ(Entry<uint8_t(REALobject, const char *, int32_t *)>("REALGetPropValueInt")(nullptr, "Count", &count), 0);
  EXPECT_EQ(Entry<uint8_t(REALobject, const char *, uint8_t *)>("REALGetPropValueBool")(object, "None", &flag), 0);
  EXPECT_EQ(count, 8);
}

int32_t GetByClosingZero(REALobject, int32_t) { return close(0); }
void SetByClosingZero(REALobject, int32_t, int32_t) { close(0); }

TEST(Properties, AfterAnAccessorThatClosedItDescriptor0IsTakenAgain) {
  Host host;
  sample::Tables12 tables;
  tables.properties[5].getter = sample::Address(GetByClosingZero);
  tables.properties[5].setter = sample::Address(SetByClosingZero);
  REALclassDefinition definition = tables.Definition(12);
  host.Classes().Register(&definition);
  sample::dataOffset = definition.forSystemUse;
  const auto object = Owned<Object>::Adopt(host.Classes().NewInstance("Sample"));
  int32_t closed = -1;
  ASSERT_TRUE(GetIntegerProperty(*object, "Doubled", &closed));
  EXPECT_EQ(closed, 0);
  EXPECT_GE(fcntl(0, F_GETFD), 0);
  ASSERT_TRUE(SetIntegerProperty(*object, "Doubled", 1));
  EXPECT_GE(fcntl(0, F_GETFD), 0);
}

}  // namespace
}  // namespace standalone
