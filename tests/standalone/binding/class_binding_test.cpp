#include "standalone/binding/class_binding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "standalone/runtime/host.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/picture.h"
#include "tests/standalone/binding/gadget_testing.h"

namespace standalone {
namespace {

using testing::HasSubstr;
using Kind = Value::Kind;

// Of a class with one method, of the test's choice.
REALclassDefinition oddDefinition;
REALmethodDefinition oddMethod;

struct StartedHost : Host {
  StartedHost() { Start(gadgets::GadgetMain); }
};

class ClassBindingTest : public testing::Test {
 protected:
  ~ClassBindingTest() override {
    EXPECT_EQ(Describe(host_.Leaks()), "");
    EXPECT_TRUE(host_.Misdeeds().empty());
  }

  Value Block(int32_t size) { return Owned<MemoryBlock>::Adopt(MemoryBlock::Make(size)); }
  gadgets::GadgetData &Data(const Value &gadget) { return gadgets::DataOf(gadget.AsObject()->Handle()); }

  StartedHost host_;
  Bindings bindings_;
  ClassBinding &gadgets_ = ClassNamed("Gadget");
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

TEST_F(ClassBindingTest, ClassesAreFoundInAnyCaseAndOnlyOnce) {
  EXPECT_EQ(&ClassNamed("GADGET"), &gadgets_);
  EXPECT_EQ(gadgets_.Name(), "Gadget");
  EXPECT_EQ(gadgets_.Super(), nullptr);
  EXPECT_EQ(ErrorOf([] { ClassNamed("Widget"); }), "there is no class \"Widget\"");
}

TEST_F(ClassBindingTest, ConstantsAreFoundByName) {
  EXPECT_EQ(gadgets_.Constant("Seven").AsInteger(), 7);
  EXPECT_EQ(gadgets_.Constant("eleven").AsInteger(), 11);
  EXPECT_EQ(ErrorOf([this] { gadgets_.Constant("Twelve"); }), "Gadget has no constant \"Twelve\"");
}

TEST_F(ClassBindingTest, ConstructorsAreChosenByTheArguments) {
  EXPECT_EQ(gadgets_.New().Call("Number").AsInteger(), -1);
  EXPECT_EQ(gadgets::constructorRun, "plain");
  EXPECT_EQ(gadgets_.New({5}).Call("Number").AsInteger(), 5);
  EXPECT_EQ(gadgets::constructorRun, "number");
}

TEST_F(ClassBindingTest, AnInstanceCanBeMadeWithoutConstructor) {
  gadgets::constructorRun = "none";
  EXPECT_EQ(gadgets_.NewWithoutConstructor().Call("Number").AsInteger(), 0);
  EXPECT_EQ(gadgets::constructorRun, "none");
}

TEST_F(ClassBindingTest, AConstructorThatRaisesGivesNoInstance) {
  EXPECT_THROW(gadgets_.New({"text"}), HostException);
  EXPECT_TRUE(host_.Leaks().empty());
}

TEST_F(ClassBindingTest, AClassWithoutConstructorTakesNoArguments) {
  ClassBinding &makers = ClassNamed("Maker");
  EXPECT_FALSE(makers.New().IsNil());
  EXPECT_THAT(ErrorOf([&] { makers.New({1}); }), HasSubstr("Maker has no Constructor"));
}

TEST_F(ClassBindingTest, EveryTypeGoesInAndComesOut) {
  const Value gadget = gadgets_.New();
  EXPECT_EQ(gadget.Call("Twice", {int64_t{1} << 40}).AsInt64(), int64_t{1} << 41);
  EXPECT_EQ(gadget.Call("Half", {0.25}).AsDouble(), 0.125);
  EXPECT_FALSE(gadget.Call("Negate", {true}).AsBoolean());
  EXPECT_TRUE(gadget.Call("Negate", {false}).AsBoolean());
  EXPECT_EQ(gadget.Call("Mix", {Color{0x00FF10}}).AsColor().rgb, 0xFF00EFu);
  EXPECT_EQ(gadget.Call("Shout", {"hey"}).AsText(), "hey!");
  EXPECT_EQ(gadget.Call("NoText").GetKind(), Kind::String);
  EXPECT_EQ(gadget.Call("NoText").AsText(), "");
  EXPECT_EQ(gadget.Call("Sum", {std::vector<int32_t>{5, -2, 40}}).AsInteger(), 43);
  EXPECT_EQ(gadget.Call("Self").AsObject(), gadget.AsObject());
  EXPECT_TRUE(gadget.Call("Nothing").IsNil());
  EXPECT_EQ(gadget.Call("SizeOf", {Block(9)}).AsInteger(), 9);
  EXPECT_EQ(gadget.Call("SizeOf", {nullptr}).AsInteger(), -1);
}

TEST_F(ClassBindingTest, ResultsHoldOneReference) {
  const Value gadget = gadgets_.New();
  const Value same = gadget.Call("self");
  EXPECT_EQ(gadget.AsObject()->References(), 2);
}

TEST_F(ClassBindingTest, AnExactOverloadBeatsOneThatConverts) {
  const Value gadget = gadgets_.New();
  const auto picked = [&](const Arguments &arguments) { return gadget.Call("Pick", arguments).AsInteger(); };
  EXPECT_EQ(picked({3}), 1);
  EXPECT_EQ(picked({3.0}), 2);
  EXPECT_EQ(picked({3.5}), 2);
  EXPECT_EQ(picked({int64_t{3}}), 1);
  EXPECT_EQ(picked({int64_t{1} << 40}), 2);
  EXPECT_EQ(picked({Color{3}}), 3);
  EXPECT_EQ(picked({"3"}), 6);
  EXPECT_EQ(picked({3, 4}), 5);
}

TEST_F(ClassBindingTest, AnOverloadWithoutDefaultsToFillBeatsOneWith) {
  const Value gadget = gadgets_.New();
  EXPECT_EQ(gadget.Call("Pick", {Block(1)}).AsInteger(), 4);
  EXPECT_EQ(gadget.Call("Pick", {Block(1), false}).AsInteger(), 7);
  EXPECT_EQ(gadget.Call("Pick", {nullptr}).AsInteger(), 4);
}

TEST_F(ClassBindingTest, AnObjectOfNoOtherFittingClassGoesToVariant) {
  EXPECT_EQ(gadgets_.New().Call("Pick", {gadgets_.New()}).AsInteger(), 8);
}

TEST_F(ClassBindingTest, OptionalArgumentsAreFilledIn) {
  const Value gadget = gadgets_.New();
  EXPECT_EQ(gadget.Call("Describe").AsText(), "-10000,true,0.500000,nil,none,16");
  EXPECT_EQ(gadget.Call("Describe", {3, false}).AsText(), "3,false,0.500000,nil,none,16");
  EXPECT_EQ(gadget.Call("Describe", {3, false, 2, gadget, "some", Color{1}}).AsText(),
            "3,false,2.000000,object,some,1");
}

TEST_F(ClassBindingTest, ACallThatFitsNoneListsTheDeclarations) {
  const Value gadget = gadgets_.New();
  EXPECT_EQ(ErrorOf([&] {
              gadget.Call("Twice", {"x", gadget, nullptr});
            }),
            "Gadget.Twice does not take (String, Gadget, nil); there is\n  Twice(value as Int64) as Int64");
  EXPECT_EQ(ErrorOf([&] { gadgets_.New({true}); }),
            "Gadget.Constructor does not take (Boolean); there are\n  Constructor\n  Constructor(number as integer)\n"
            "  Constructor(text as string)");
  EXPECT_EQ(ErrorOf([&] { gadget.Call("Twice"); }),
            "Gadget.Twice does not take (); there is\n  Twice(value as Int64) as Int64");
  EXPECT_EQ(ErrorOf([&] { gadget.Call("Thrice"); }), "Gadget has no method \"Thrice\"");
}

TEST_F(ClassBindingTest, SharedMethodsTakeNoInstance) {
  EXPECT_EQ(gadgets_.Call("Add", {2, 3}).AsInteger(), 5);
  EXPECT_TRUE(gadgets_.Call("isshared").AsBoolean());
  EXPECT_EQ(ErrorOf([this] { gadgets_.Call("Number"); }), "Gadget has no shared method \"Number\"");
}

TEST_F(ClassBindingTest, AnInstanceReachesSharedMethodsUnlessItHasItsOwn) {
  const Value gadget = gadgets_.New();
  EXPECT_TRUE(gadget.Call("IsShared").AsBoolean());
  EXPECT_EQ(gadget.Call("Add", {2, 3}).AsInteger(), -1);
}

TEST_F(ClassBindingTest, AssignableMethodsTakeTheValueLast) {
  const Value gadget = gadgets_.New({10});
  EXPECT_EQ(gadget.Call("Slot", {5}).AsInteger(), 15);
  gadget.Assign("slot", {3}, 100);
  EXPECT_EQ(gadget.Call("Number").AsInteger(), 97);
  EXPECT_EQ(ErrorOf([&] { gadget.Assign("Slot", {3}, "x"); }),
            "Gadget.Slot does not take (Integer) = String; there is\n  Slot(index as integer) as integer");
  EXPECT_EQ(ErrorOf([&] { gadget.Assign("Twice", {3}, 1); }), "Gadget has no assignable method \"Twice\"");
}

TEST_F(ClassBindingTest, DirectFieldsAreReadAndWrittenByTheWidthOfTheirType) {
  const Value gadget = gadgets_.New();
  std::memset(&Data(gadget).flag, 0xCC, 2);
  gadget.Set("Number", -5);
  gadget.Set("Flag", true);
  gadget.Set("Wide", int64_t{-9} << 40);
  gadget.Set("Real", 1.5);
  gadget.Set("Tint", Color{0xABCDEF});
  EXPECT_EQ(Data(gadget).number, -5);
  EXPECT_EQ(Data(gadget).flag, 1);
  EXPECT_EQ(Data(gadget).neighbour, 0xCC);
  EXPECT_EQ(Data(gadget).wide, int64_t{-9} << 40);
  EXPECT_EQ(Data(gadget).real, 1.5);
  EXPECT_EQ(Data(gadget).tint, 0xABCDEFu);
  EXPECT_EQ(gadget.Get("number").AsInteger(), -5);
  EXPECT_TRUE(gadget.Get("flag").AsBoolean());
  EXPECT_EQ(gadget.Get("wide").AsInt64(), int64_t{-9} << 40);
  EXPECT_EQ(gadget.Get("real").AsDouble(), 1.5);
  EXPECT_EQ(gadget.Get("tint").AsColor().rgb, 0xABCDEFu);
  gadget.Set("Wide", 3);
  EXPECT_EQ(Data(gadget).wide, 3);
}

TEST_F(ClassBindingTest, ObjectFieldsHoldReferences) {
  const Value gadget = gadgets_.New();
  const Value partner = gadgets_.New();
  EXPECT_TRUE(gadget.Get("Partner").IsNil());
  gadget.Set("Partner", partner);
  EXPECT_EQ(partner.AsObject()->References(), 2);
  EXPECT_EQ(gadget.Get("Partner").AsObject(), partner.AsObject());
  EXPECT_EQ(partner.AsObject()->References(), 2);
  gadget.Set("Partner", partner);
  EXPECT_EQ(partner.AsObject()->References(), 2);
  gadget.Set("Partner", nullptr);
  EXPECT_EQ(partner.AsObject()->References(), 1);
  gadget.Set("Partner", gadgets_.New());
  EXPECT_EQ(gadget.Get("Partner").Call("Number").AsInteger(), -1);
}

TEST_F(ClassBindingTest, StringFieldsHoldReferences) {
  const Value gadget = gadgets_.New();
  EXPECT_EQ(gadget.Get("Label").AsText(), "");
  gadget.Set("Label", "first");
  gadget.Set("Label", "second");
  EXPECT_EQ(gadget.Get("Label").AsText(), "second");
}

TEST_F(ClassBindingTest, GettersAndSettersGetTheParam) {
  const Value gadget = gadgets_.New({4});
  gadgets::gotParam = 0;
  EXPECT_EQ(gadget.Get("Double").AsInteger(), 8);
  EXPECT_EQ(gadgets::gotParam, 77);
  gadgets::gotParam = 0;
  gadget.Set("Double", 20);
  EXPECT_EQ(gadgets::gotParam, 77);
  EXPECT_EQ(gadget.Call("Number").AsInteger(), 10);
  EXPECT_EQ(gadget.Get("Title").AsText(), "gadget 10");
}

TEST_F(ClassBindingTest, ASetterThatRaisesThrows) {
  const Value gadget = gadgets_.New({4});
  EXPECT_THROW(gadget.Set("Double", 3), HostException);
  EXPECT_EQ(gadget.Call("Number").AsInteger(), 4);
}

TEST_F(ClassBindingTest, PropertyErrorsSayWhatIsWrong) {
  const Value gadget = gadgets_.New();
  EXPECT_EQ(ErrorOf([&] { gadget.Set("fixed", 1); }), "Gadget.Fixed is read-only");
  EXPECT_EQ(ErrorOf([&] { gadget.Set("Title", "x"); }), "Gadget.Title is read-only");
  EXPECT_EQ(ErrorOf([&] { gadget.Set("Number", "x"); }), "Gadget.Number is of type Integer and does not take String");
  EXPECT_EQ(ErrorOf([&] { gadget.Set("Partner", Block(1)); }),
            "Gadget.Partner is of type Gadget and does not take MemoryBlock");
  EXPECT_EQ(ErrorOf([&] { gadget.Get("Nonsense"); }), "Gadget has no property or method \"Nonsense\"");
  EXPECT_EQ(ErrorOf([&] { gadget.Set("Nonsense", 1); }), "Gadget has no property \"Nonsense\" that takes Integer");
  EXPECT_EQ(ErrorOf([&] { Value().Get("Number"); }), "nil has no \"Number\"");
}

TEST_F(ClassBindingTest, PropertiesOfTheHostsOwnClassesAreReadable) {
  const Value picture = Owned<Picture>::Adopt(Picture::Make(4, 3));
  EXPECT_EQ(picture.Get("Width").AsInteger(), 4);
  EXPECT_EQ(picture.Get("height").AsInteger(), 3);
  EXPECT_FALSE(picture.Get("HasAlphaChannel").AsBoolean());
  const Value exception = ClassNamed("RuntimeException").New();
  exception.Set("Message", "text");
  exception.Set("ErrorNumber", 9);
  EXPECT_EQ(exception.Get("Message").AsText(), "text");
  EXPECT_EQ(exception.Get("ErrorNumber").AsInteger(), 9);
}

TEST_F(ClassBindingTest, HostExceptionsAreThrownAfterTheHandlerReturned) {
  const Value gadget = gadgets_.New();
  try {
    gadget.Call("Fail");
    FAIL() << "no exception";
  } catch (const HostException &exception) {
    EXPECT_EQ(exception.ClassName(), "OutOfBoundsException");
    EXPECT_EQ(exception.Message(), "it fails");
    EXPECT_EQ(exception.ErrorNumber(), 42);
    EXPECT_STREQ(exception.what(), "OutOfBoundsException: it fails");
  }
  EXPECT_EQ(gadget.Call("Number").AsInteger(), -1) << "the next call is not disturbed";
}

TEST_F(ClassBindingTest, TheResultOfAHandlerThatRaisedIsGivenBack) {
  const Value gadget = gadgets_.New();
  EXPECT_THROW(gadget.Call("FailWithResult"), HostException);
  EXPECT_EQ(gadget.AsObject()->References(), 1);
}

TEST_F(ClassBindingTest, EventsOfASubclassRunAsFunctions) {
  const Value base = gadgets_.New({1});
  ClassBinding &subclass =
      bindings_.DefineSubclass("MyMaker", "Maker",
                               {{"make",
                                 [&](const Value &maker, const Arguments &arguments) -> Value {
                                   EXPECT_EQ(maker.AsObject()->Type().Name(), "MyMaker");
                                   EXPECT_EQ(arguments.size(), 4u);
                                   EXPECT_EQ(arguments[1].AsText(), "name");
                                   EXPECT_EQ(arguments[2].AsDouble(), 0.75);
                                   EXPECT_EQ(arguments[3].AsObject(), base.AsObject());
                                   return gadgets_.New({arguments[0].AsInteger() * 2});
                                 }},
                                {"Count", [](const Value &, const Arguments &) -> Value { return int64_t{1} << 40; }}});
  EXPECT_EQ(subclass.Super(), &ClassNamed("Maker"));
  const Value maker = subclass.New();
  EXPECT_EQ(maker.Call("AskMake", {21, "name", 0.75, base}).Call("Number").AsInteger(), 42);
  EXPECT_EQ(maker.Call("AskCount").AsInt64(), int64_t{1} << 40);
  EXPECT_EQ(base.AsObject()->References(), 1);
}

TEST_F(ClassBindingTest, AnEventMayGiveNilAndWhatItWasGiven) {
  const Value base = gadgets_.New({1});
  bindings_.DefineSubclass("Nobody", "Maker",
                           {{"Make", [](const Value &, const Arguments &) -> Value { return nullptr; }}});
  EXPECT_TRUE(ClassNamed("Nobody").New().Call("AskMake", {1, "", 0.0, base}).IsNil());
  EXPECT_EQ(ClassNamed("Nobody").New().Call("AskCount").AsInt64(), -1) << "no handler for this one";
  bindings_.DefineSubclass("Echo", "Maker",
                           {{"Make", [](const Value &, const Arguments &arguments) { return arguments[3]; }}});
  EXPECT_EQ(ClassNamed("Echo").New().Call("AskMake", {1, "", 0.0, base}).AsObject(), base.AsObject());
  EXPECT_EQ(base.AsObject()->References(), 1);
}

TEST_F(ClassBindingTest, WhatAnEventThrowsComesOutOfTheCallThatLedToIt) {
  bindings_.DefineSubclass("Thrower", "Maker",
                           {{"Make", [](const Value &, const Arguments &) -> Value { throw std::range_error("mine"); }},
                            {"Count", [](const Value &, const Arguments &) -> Value { return "text"; }}});
  const Value maker = ClassNamed("Thrower").New();
  EXPECT_THROW(maker.Call("AskMake", {1, "", 0.0, nullptr}), std::range_error);
  EXPECT_EQ(ErrorOf([&] { maker.Call("AskCount"); }), "the handler of \"Count\" gave String, not Int64");
}

TEST_F(ClassBindingTest, AnExceptionOfACallInsideAnEventGoesThrough) {
  bindings_.DefineSubclass(
      "Failing", "Maker",
      {{"Make", [this](const Value &, const Arguments &) -> Value { return gadgets_.New().Call("FailWithResult"); }}});
  EXPECT_THROW(ClassNamed("Failing").New().Call("AskMake", {1, "", 0.0, nullptr}), HostException);
}

TEST_F(ClassBindingTest, AnUnknownEventIsRefused) {
  EXPECT_EQ(
      ErrorOf([this] {
        bindings_.DefineSubclass("X", "Maker", {{"Unmake", [](const Value &, const Arguments &) { return Value(); }}});
      }),
      "Maker has no event \"Unmake\"");
  EXPECT_EQ(ErrorOf([] { ClassNamed("X"); }), "there is no class \"X\"");
}

TEST_F(ClassBindingTest, SubclassesInherit) {
  bindings_.DefineSubclass("BetterGadget", "Gadget", {});
  ClassBinding &better = ClassNamed("bettergadget");
  const Value gadget = better.New({6});
  EXPECT_EQ(gadget.AsObject()->Type().Name(), "BetterGadget");
  EXPECT_EQ(gadget.Call("Number").AsInteger(), 6);
  EXPECT_EQ(gadget.Get("Double").AsInteger(), 12);
  EXPECT_EQ(better.Constant("Seven").AsInteger(), 7);
  EXPECT_EQ(better.Call("Add", {1, 2}).AsInteger(), 3);
  gadgets_.New().Set("Partner", gadget);
  EXPECT_TRUE(better.Methods().empty());
}

TEST_F(ClassBindingTest, TheTablesCanBeReadThrough) {
  ASSERT_EQ(gadgets_.Methods().size(),
            gadgets::gadgetDefinition.methodCount + gadgets::gadgetDefinition.sharedMethodCount);
  EXPECT_EQ(gadgets_.Methods()[25].text, "Slot(index as integer) as integer");
  EXPECT_NE(gadgets_.Methods()[25].setter, nullptr);
  EXPECT_EQ(gadgets_.Methods()[25].flags, 4u);
  EXPECT_TRUE(gadgets_.Methods().back().isShared);
  ASSERT_EQ(gadgets_.Properties().size(), gadgets::gadgetDefinition.propertyCount);
  EXPECT_EQ(gadgets_.Properties()[2].registered->name, "Wide");
  EXPECT_EQ(gadgets_.Properties()[2].type.kind, TypeKind::Int64);
  EXPECT_TRUE(gadgets_.Properties()[7].IsReadOnly());
  ASSERT_EQ(gadgets_.Constants().size(), 2u);
  EXPECT_EQ(gadgets_.Constants()[1].name, "Eleven");
  ASSERT_EQ(ClassNamed("Maker").Events().size(), 2u);
  EXPECT_EQ(ClassNamed("Maker").Events()[0].parameters[3].name, "Base");
}

TEST_F(ClassBindingTest, ATableThatCannotBeReadIsAnErrorOnUse) {
  oddMethod = {nullptr, nullptr, "Odd(a as integer = true)", 0, 0, nullptr};
  oddDefinition = {};
  oddDefinition.version = 12;
  oddDefinition.name = "Odd";
  oddDefinition.methods = &oddMethod;
  oddDefinition.methodCount = 1;
  host_.Classes().Register(&oddDefinition);
  try {
    ClassNamed("Odd");
    FAIL() << "no error";
  } catch (const DeclarationError &error) {
    EXPECT_STREQ(error.what(), "the default of \"a\" is no Integer in \"Odd(a as integer = true)\"");
  }
}

TEST_F(ClassBindingTest, ThereIsOneSetOfBindings) { EXPECT_THROW(Bindings(), BindingError); }

TEST(BindingsWithoutHost, AreRefused) {
  EXPECT_EQ(ErrorOf([] { Bindings(); }), "there is no host to bind; make one first");
  EXPECT_EQ(ErrorOf([] { ClassNamed("X"); }), "there are no bindings; make some for the host first");
}

}  // namespace
}  // namespace standalone
