#include "standalone/binding/caller.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

namespace standalone {
namespace {

const Type kNone = {};
const Type kInteger = {TypeKind::Integer};
const Type kInt64 = {TypeKind::Int64};
const Type kDouble = {TypeKind::Double};
const Type kBoolean = {TypeKind::Boolean};
const Type kColor = {TypeKind::Color};
const Type kString = {TypeKind::String};
const Type kObject = {TypeKind::Object, false, "Thing"};
const Type kArray = {TypeKind::Integer, true};

RawValue Integer(int32_t value) {
  RawValue raw;
  raw.integer = value;
  return raw;
}

RawValue Int64(int64_t value) {
  RawValue raw;
  raw.int64 = value;
  return raw;
}

RawValue Real(double value) {
  RawValue raw;
  raw.real = value;
  return raw;
}

RawValue Boolean(bool value) {
  RawValue raw;
  raw.boolean = value;
  return raw;
}

RawValue Color(uint32_t value) {
  RawValue raw;
  raw.color = value;
  return raw;
}

RawValue Address(void *value) {
  RawValue raw;
  raw.address = value;
  return raw;
}

template <class Function>
void *AddressOf(Function *function) {
  return reinterpret_cast<void *>(function);
}

struct Seen {
  void *instance;
  int32_t integer;
  int64_t int64;
  double real;
  uint8_t boolean;
  uint32_t color;
  void *string;
  void *array;
};
Seen seen;

extern "C" void TakeOneOfEach(void *instance, int32_t integer, int64_t int64, double real, uint8_t boolean,
                              uint32_t color, void *string, void *array) {
  seen = {instance, integer, int64, real, boolean, color, string, array};
}

TEST(CallShape, HandsOverOneArgumentOfEveryType) {
  int32_t places[3];
  const CallShape shape({kObject, kInteger, kInt64, kDouble, kBoolean, kColor, kString, kArray}, kNone);
  const std::vector<RawValue> arguments = {Address(&places[0]), Integer(-7),        Int64(int64_t{-5} << 40),
                                           Real(-0.125),        Boolean(true),      Color(0xFF8000AA),
                                           Address(&places[1]), Address(&places[2])};
  shape.Call(AddressOf(TakeOneOfEach), arguments);
  EXPECT_EQ(seen.instance, &places[0]);
  EXPECT_EQ(seen.integer, -7);
  EXPECT_EQ(seen.int64, -5497558138880);
  EXPECT_EQ(seen.real, -0.125);
  EXPECT_EQ(seen.boolean, 1);
  EXPECT_EQ(seen.color, 0xFF8000AAu);
  EXPECT_EQ(seen.string, &places[1]);
  EXPECT_EQ(seen.array, &places[2]);
}

extern "C" double SumOfMany(int32_t a, double b, int32_t c, double d, int32_t e, double f, int32_t g, double h,
                            int32_t i, double j, int32_t k, double l, int32_t m, double n, int32_t o, double p,
                            int32_t q, double r, uint8_t s) {
  return a + 2 * b + 3 * c + 4 * d + 5 * e + 6 * f + 7 * g + 8 * h + 9 * i + 10 * j + 11 * k + 12 * l + 13 * m +
         14 * n + 15 * o + 16 * p + 17 * q + 18 * r + 19 * s;
}

// More of either kind than there are registers, so that some go over the stack.
TEST(CallShape, HandsOverMoreArgumentsThanFitRegisters) {
  std::vector<Type> types;
  std::vector<RawValue> arguments;
  double expected = 0;
  for (int i = 0; i < 18; ++i) {
    types.push_back(i % 2 == 0 ? kInteger : kDouble);
    arguments.push_back(i % 2 == 0 ? Integer(100 - i) : Real(i + 0.5));
    expected += (i + 1) * (i % 2 == 0 ? 100 - i : i + 0.5);
  }
  types.push_back(kBoolean);
  arguments.push_back(Boolean(true));
  EXPECT_EQ(CallShape(types, kDouble).Call(AddressOf(SumOfMany), arguments).real, expected + 19);
}

extern "C" int32_t SmallestInteger() { return std::numeric_limits<int32_t>::min(); }
extern "C" int64_t SmallestInt64() { return std::numeric_limits<int64_t>::min(); }
extern "C" double AThird() { return 1.0 / 3.0; }
extern "C" uint8_t Not(uint8_t value) { return value == 0; }
extern "C" uint32_t White() { return 0x00FFFFFF; }
extern "C" void *Same(void *value) { return value; }

TEST(CallShape, GivesResultsOfEveryType) {
  EXPECT_EQ(CallShape({}, kInteger).Call(AddressOf(SmallestInteger), {}).integer, std::numeric_limits<int32_t>::min());
  EXPECT_EQ(CallShape({}, kInt64).Call(AddressOf(SmallestInt64), {}).int64, std::numeric_limits<int64_t>::min());
  EXPECT_EQ(CallShape({}, kDouble).Call(AddressOf(AThird), {}).real, 1.0 / 3.0);
  EXPECT_EQ(CallShape({}, kColor).Call(AddressOf(White), {}).color, 0xFFFFFFu);
  const CallShape isNot({kBoolean}, kBoolean);
  EXPECT_EQ(isNot.Call(AddressOf(Not), std::vector<RawValue>{Boolean(true)}).boolean, 0);
  EXPECT_EQ(isNot.Call(AddressOf(Not), std::vector<RawValue>{Boolean(false)}).boolean, 1);
  int place = 0;
  for (const Type &type : {kObject, kString, kArray}) {
    EXPECT_EQ(CallShape({type}, type).Call(AddressOf(Same), std::vector<RawValue>{Address(&place)}).address, &place);
    EXPECT_EQ(CallShape({type}, type).Call(AddressOf(Same), std::vector<RawValue>{Address(nullptr)}).address, nullptr);
  }
}

// Only the byte itself counts, whatever stands above it in the register.
TEST(CallShape, AnyByteButZeroIsTrue) {
  const CallShape shape({kInteger}, kBoolean);
  using Narrow = uint8_t (*)(int32_t);
  const Narrow narrow = [](int32_t value) { return static_cast<uint8_t>(value); };
  EXPECT_EQ(shape.Call(AddressOf(narrow), std::vector<RawValue>{Integer(0x80)}).boolean, 1);
  EXPECT_EQ(shape.Call(AddressOf(narrow), std::vector<RawValue>{Integer(0x7FFFFF00)}).boolean, 0);
}

TEST(CallShape, RefusesTheWrongNumberOfArguments) {
  EXPECT_THROW(CallShape({kInteger}, kNone).Call(AddressOf(SmallestInteger), {}), std::logic_error);
}

TEST(Callback, IsCalledWithEveryTypeAndGivesItsResultBack) {
  std::vector<RawValue> got;
  const std::vector<Type> types = {kObject, kInteger, kInt64, kDouble, kBoolean, kColor, kString, kArray};
  Callback callback(types, kDouble, [&](std::span<const RawValue> arguments) {
    got.assign(arguments.begin(), arguments.end());
    return Real(2.5);
  });
  int32_t places[3];
  using Function = double (*)(void *, int32_t, int64_t, double, uint8_t, uint32_t, void *, void *);
  const auto function = reinterpret_cast<Function>(callback.Address());
  EXPECT_EQ(function(&places[0], -9, int64_t{1} << 50, 0.75, 1, 0x123456, &places[1], &places[2]), 2.5);
  ASSERT_EQ(got.size(), 8u);
  EXPECT_EQ(got[0].address, &places[0]);
  EXPECT_EQ(got[1].integer, -9);
  EXPECT_EQ(got[2].int64, int64_t{1} << 50);
  EXPECT_EQ(got[3].real, 0.75);
  EXPECT_EQ(got[4].boolean, 1);
  EXPECT_EQ(got[5].color, 0x123456u);
  EXPECT_EQ(got[6].address, &places[1]);
  EXPECT_EQ(got[7].address, &places[2]);
}

TEST(CallShape, AfterACallThatClosedItDescriptor0IsTakenAgain) {
  const int saved = dup(0);
  const CallShape shape({kInteger}, kInteger);
  EXPECT_EQ(shape.Call(AddressOf(close), std::vector<RawValue>{Integer(0)}).integer, 0);
  EXPECT_GE(fcntl(0, F_GETFD), 0);
  dup2(saved, 0);
  close(saved);
}

TEST(Callback, GivesShortResultsBackWhole) {
  Callback negative({}, kInteger, [](std::span<const RawValue>) { return Integer(-2); });
  EXPECT_EQ(reinterpret_cast<int32_t (*)()>(negative.Address())(), -2);
  Callback yes({}, kBoolean, [](std::span<const RawValue>) { return Boolean(true); });
  EXPECT_EQ(reinterpret_cast<uint8_t (*)()>(yes.Address())(), 1);
  Callback red({}, kColor, [](std::span<const RawValue>) { return Color(0xFFFF0000); });
  EXPECT_EQ(reinterpret_cast<uint32_t (*)()>(red.Address())(), 0xFFFF0000u);
  int place = 0;
  Callback object({}, kObject, [&](std::span<const RawValue>) { return Address(&place); });
  EXPECT_EQ(reinterpret_cast<void *(*)()>(object.Address())(), &place);
  int calls = 0;
  Callback nothing({}, kNone, [&](std::span<const RawValue>) {
    ++calls;
    return RawValue();
  });
  reinterpret_cast<void (*)()>(nothing.Address())();
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace standalone
