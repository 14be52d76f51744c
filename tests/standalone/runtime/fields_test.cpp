#include "standalone/runtime/fields.h"

#include <gtest/gtest.h>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::SampleHost;

TEST(KindOfField, TakesUnknownTypesAsClasses) {
  EXPECT_EQ(KindOfField("INTEGER"), FieldKind::Integer);
  EXPECT_EQ(KindOfField("Color"), FieldKind::Integer);
  EXPECT_EQ(KindOfField("boolean"), FieldKind::Boolean);
  EXPECT_EQ(KindOfField("String"), FieldKind::String);
  EXPECT_EQ(KindOfField("Double"), FieldKind::Other);
  EXPECT_EQ(KindOfField("Int64"), FieldKind::Other);
  EXPECT_EQ(KindOfField("variant"), FieldKind::Object);
  EXPECT_EQ(KindOfField("Sample"), FieldKind::Object);
}

TEST(AssignObjectField, TakesTheNewReferenceBeforeItDropsTheOld) {
  SampleHost host;
  auto value = host.New();
  REALobject field = nullptr;
  AssignObjectField(&field, value);
  Object *const only = value.Release();
  only->Unlock();  // the field's reference is the last
  AssignObjectField(&field, only->Handle());
  EXPECT_EQ(sample::destroyed, 0);
  EXPECT_EQ(only->References(), 1);
  AssignObjectField(&field, nullptr);
  EXPECT_EQ(sample::destroyed, 1);
  EXPECT_EQ(field, nullptr);
}

}  // namespace
}  // namespace standalone
