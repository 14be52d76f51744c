#include "standalone/binding/value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "standalone/runtime/folder_item.h"
#include "standalone/runtime/host.h"
#include "standalone/runtime/memory_block.h"

namespace standalone {
namespace {

using Kind = Value::Kind;

constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();
constexpr int64_t kTwoTo53 = int64_t{1} << 53;

class ValueTest : public testing::Test {
 protected:
  Value Block(int32_t size) { return Owned<MemoryBlock>::Adopt(MemoryBlock::Make(size)); }

  Host host_;
};

template <class Function>
std::string ErrorOf(Function function) {
  try {
    function();
  } catch (const BindingError &error) {
    return error.what();
  }
  return "no error";
}

TEST_F(ValueTest, KnowsWhatItHolds) {
  EXPECT_EQ(Value().GetKind(), Kind::Nil);
  EXPECT_EQ(Value(nullptr).GetKind(), Kind::Nil);
  EXPECT_EQ(Value(7).GetKind(), Kind::Integer);
  EXPECT_EQ(Value(int64_t{7}).GetKind(), Kind::Int64);
  EXPECT_EQ(Value(7.0).GetKind(), Kind::Double);
  EXPECT_EQ(Value(true).GetKind(), Kind::Boolean);
  EXPECT_EQ(Value(Color{0x102030}).GetKind(), Kind::Color);
  EXPECT_EQ(Value("seven").GetKind(), Kind::String);
  EXPECT_EQ(Value(Owned<String>()).GetKind(), Kind::String);
  EXPECT_EQ(Block(3).GetKind(), Kind::Object);
  EXPECT_EQ(Value(Owned<MemoryBlock>()).GetKind(), Kind::Nil);
  EXPECT_EQ(Value(std::vector<int32_t>{1, 2}).GetKind(), Kind::Array);
  const Value asObject = Owned<Object>::Adopt(static_cast<Object *>(IntegerArray::Make({1, 2})));
  EXPECT_EQ(asObject.GetKind(), Kind::Array);
}

TEST_F(ValueTest, GivesBackWhatWentIn) {
  EXPECT_EQ(Value(-7).AsInteger(), -7);
  EXPECT_EQ(Value(int64_t{-7} << 40).AsInt64(), -7696581394432);
  EXPECT_EQ(Value(0.125).AsDouble(), 0.125);
  EXPECT_TRUE(Value(true).AsBoolean());
  EXPECT_EQ(Value(Color{0x102030}).AsColor().rgb, 0x102030u);
  EXPECT_EQ(Value("a\xC3\xA4").AsText(), "a\xC3\xA4");
  EXPECT_EQ(Value(std::string("a\0b", 3)).AsBytes(), std::string_view("a\0b", 3));
  EXPECT_EQ(Value(Owned<String>()).AsText(), "");
  EXPECT_EQ(Value(Owned<String>()).AsString(), nullptr);
  EXPECT_EQ(Value(std::vector<int32_t>{3, -1, 4}).AsIntegers(), (std::vector<int32_t>{3, -1, 4}));
  EXPECT_EQ(Block(3).As<MemoryBlock>()->Size(), 3);
  EXPECT_EQ(Value(nullptr).As<MemoryBlock>(), nullptr);
}

TEST_F(ValueTest, NumbersConvertWhereNothingIsLost) {
  EXPECT_EQ(Value(int64_t{7}).AsInteger(), 7);
  EXPECT_EQ(Value(-8.0).AsInteger(), -8);
  EXPECT_EQ(Value(7).AsInt64(), 7);
  EXPECT_EQ(Value(4294967296.0).AsInt64(), 4294967296);
  EXPECT_EQ(Value(7).AsDouble(), 7.0);
  EXPECT_EQ(Value(kTwoTo53).AsDouble(), 9007199254740992.0);
  EXPECT_EQ(ErrorOf([] { Value(int64_t{kLargest} + 1).AsInteger(); }), "this Int64 is no Integer");
  EXPECT_EQ(ErrorOf([] { Value(2.5).AsInteger(); }), "this Double is no Integer");
  EXPECT_EQ(ErrorOf([] { Value(std::nan("")).AsInt64(); }), "this Double is no Int64");
  EXPECT_EQ(ErrorOf([] { Value(9223372036854775808.0).AsInt64(); }), "this Double is no Int64");
  EXPECT_EQ(ErrorOf([] { Value(kTwoTo53 + 1).AsDouble(); }), "this Int64 is no Double");
}

TEST_F(ValueTest, OtherKindsDoNotConvert) {
  EXPECT_EQ(ErrorOf([] { Value("7").AsInteger(); }), "this String is no Integer");
  EXPECT_EQ(ErrorOf([] { Value(1).AsBoolean(); }), "this Integer is no Boolean");
  EXPECT_EQ(ErrorOf([] { Value(1).AsColor(); }), "this Integer is no Color");
  EXPECT_EQ(ErrorOf([] { Value().AsText(); }), "this nil is no String");
  EXPECT_EQ(ErrorOf([] { Value(true).AsObject(); }), "this Boolean is no object");
  EXPECT_EQ(ErrorOf([this] { Block(1).AsIntegers(); }), "this MemoryBlock is no Integer()");
  EXPECT_EQ(ErrorOf([this] { Block(1).As<FolderItem>(); }), "a MemoryBlock is another kind of object");
}

TEST_F(ValueTest, OwnsOneReferenceAndGivesItBack) {
  MemoryBlock *const block = MemoryBlock::Make(4);
  {
    const Value first = Owned<MemoryBlock>::Share(block);
    EXPECT_EQ(block->References(), 2);
    const Value second = first;
    EXPECT_EQ(block->References(), 3);
  }
  EXPECT_EQ(block->References(), 1);
  block->Unlock();
  EXPECT_TRUE(host_.Leaks().empty());
  {
    const Value values[] = {"text", std::vector<int32_t>{1}, Block(2)};
    EXPECT_EQ(host_.Leaks().size(), 3u);
  }
  EXPECT_TRUE(host_.Leaks().empty());
}

TEST_F(ValueTest, ExactTypesCostNothing) {
  EXPECT_EQ(ConversionCost(7, {TypeKind::Integer}), 0);
  EXPECT_EQ(ConversionCost(int64_t{7}, {TypeKind::Int64}), 0);
  EXPECT_EQ(ConversionCost(7.5, {TypeKind::Double}), 0);
  EXPECT_EQ(ConversionCost(true, {TypeKind::Boolean}), 0);
  EXPECT_EQ(ConversionCost(Color{1}, {TypeKind::Color}), 0);
  EXPECT_EQ(ConversionCost("x", {TypeKind::String}), 0);
  EXPECT_EQ(ConversionCost(Block(1), {TypeKind::Object, false, "memoryBLOCK"}), 0);
  EXPECT_EQ(ConversionCost(nullptr, {TypeKind::Object, false, "Anything"}), 0);
  EXPECT_EQ(ConversionCost(nullptr, {TypeKind::Integer, true}), 0);
  EXPECT_EQ(ConversionCost(std::vector<int32_t>{}, {TypeKind::Integer, true}), 0);
}

TEST_F(ValueTest, ConversionsAreOrdered) {
  const Type toInteger = {TypeKind::Integer};
  const Type toInt64 = {TypeKind::Int64};
  const Type toDouble = {TypeKind::Double};
  EXPECT_GT(ConversionCost(7, toInt64), 0);
  EXPECT_GT(ConversionCost(7, toDouble), ConversionCost(7, toInt64));
  EXPECT_GT(ConversionCost(int64_t{7}, toDouble), ConversionCost(int64_t{7}, toInteger));
  EXPECT_GT(ConversionCost(7.0, toInteger), 0);
  EXPECT_GT(ConversionCost(Block(1), {TypeKind::Object, false, "variant"}), 0);
}

TEST_F(ValueTest, WhatDoesNotFitIsNegative) {
  EXPECT_LT(ConversionCost(7.5, {TypeKind::Integer}), 0);
  EXPECT_LT(ConversionCost(int64_t{1} << 40, {TypeKind::Integer}), 0);
  EXPECT_LT(ConversionCost(kTwoTo53 + 1, {TypeKind::Double}), 0);
  EXPECT_LT(ConversionCost(std::numeric_limits<int64_t>::max(), {TypeKind::Double}), 0);
  EXPECT_LT(ConversionCost(1, {TypeKind::Boolean}), 0);
  EXPECT_LT(ConversionCost(1, {TypeKind::Color}), 0);
  EXPECT_LT(ConversionCost(nullptr, {TypeKind::String}), 0);
  EXPECT_LT(ConversionCost(nullptr, {TypeKind::Integer}), 0);
  EXPECT_LT(ConversionCost(Block(1), {TypeKind::Object, false, "FolderItem"}), 0);
  EXPECT_LT(ConversionCost(Block(1), {TypeKind::Integer, true}), 0);
  EXPECT_LT(ConversionCost(1, {TypeKind::Object, false, "variant"}), 0);
  EXPECT_LT(ConversionCost(std::vector<int32_t>{1}, {TypeKind::Integer}), 0);
  EXPECT_LT(ConversionCost(std::vector<int32_t>{1}, {TypeKind::Double, true}), 0);
}

TEST_F(ValueTest, LentReferencesAreSharedAndGivenOnesTaken) {
  const Type type = {TypeKind::Object, false, "MemoryBlock"};
  MemoryBlock *const block = MemoryBlock::Make(4);
  RawValue raw;
  raw.address = block->Handle();
  {
    const Value lent = FromRaw(raw, type, Reference::Lent);
    EXPECT_EQ(block->References(), 2);
    EXPECT_EQ(ToRaw(lent, type).address, block->Handle());
    EXPECT_EQ(block->References(), 2);
  }
  EXPECT_EQ(block->References(), 1);
  { const Value given = FromRaw(raw, type, Reference::Given); }
  EXPECT_TRUE(host_.Leaks().empty());
  EXPECT_TRUE(host_.Misdeeds().empty());
}

TEST_F(ValueTest, LiteralsBecomeTheSmallestFittingValue) {
  EXPECT_EQ(FromLiteral(int64_t{kLargest}).GetKind(), Kind::Integer);
  EXPECT_EQ(FromLiteral(int64_t{kLargest} + 1).GetKind(), Kind::Int64);
  EXPECT_EQ(FromLiteral(0.5).AsDouble(), 0.5);
  EXPECT_EQ(FromLiteral(std::monostate()).GetKind(), Kind::Nil);
  EXPECT_EQ(FromLiteral(std::string("x")).AsText(), "x");
  EXPECT_EQ(FromLiteral(Color{5}).AsColor().rgb, 5u);
  EXPECT_FALSE(FromLiteral(false).AsBoolean());
}

}  // namespace
}  // namespace standalone
