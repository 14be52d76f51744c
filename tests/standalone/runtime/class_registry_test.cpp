#include "standalone/runtime/class_registry.h"

#include <gtest/gtest.h>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Address;
using sample::Entry;
using sample::SampleHost;

TEST(Register, WritesTheOffsetAndTheHandlesIntoVersion12Records) {
  SampleHost host;
  const Class &type = host.Classes().Get("sample");
  EXPECT_EQ(host.definition.forSystemUse, type.DataOffset());
  EXPECT_GT(type.DataOffset(), sizeof(Object));
  EXPECT_EQ(type.DataOffset() % 16, 0u);
  EXPECT_NE(host.tables.events[0].forSystemUse, 0u);
  EXPECT_NE(host.tables.events[1].forSystemUse, 0u);
  EXPECT_NE(host.tables.events[0].forSystemUse, host.tables.events[1].forSystemUse);
  EXPECT_EQ(host.tables.events[1].attributeCount, 0u);
  EXPECT_EQ(host.Classes().Registered(), std::vector<const Class *>{&type});
}

TEST(Register, WritesTheOffsetAndTheHandlesIntoVersion9Records) {
  Host host({.version = 2011.0});
  sample::Tables9 tables;
  const sample::Definition9 definition(tables);
  Entry<void(REALclassDefinition *)>("PluginRegisterClass")(definition.Get());
  EXPECT_TRUE(host.Misdeeds().empty());
  EXPECT_EQ(definition.Get()->forSystemUse, host.Classes().Get("Sample").DataOffset());
  EXPECT_NE(tables.events[0].forSystemUse, 0u);
  EXPECT_NE(tables.events[1].forSystemUse, 0u);
  EXPECT_EQ(tables.events[1].declaration, std::string("Asked(a as integer, b as integer, c as integer) as Sample"));
}

TEST(Register, NotesATableThatItCannotTake) {
  SampleHost host;
  Entry<void(REALclassDefinition *)>("PluginRegisterClass")(&host.definition);  // the name is taken
  REALclassDefinition odd = host.tables.Definition(99);
  Entry<void(REALclassDefinition *)>("PluginRegisterClass")(&odd);
  REALclassDefinition orphan = host.tables.Definition(12);
  orphan.name = "Orphan";
  orphan.superName = "Nobody";
  Entry<void(REALclassDefinition *)>("PluginRegisterClass")(&orphan);
  EXPECT_EQ(host.Misdeeds().size(), 3u);
  EXPECT_EQ(host.Classes().Find("Orphan"), nullptr);
}

TEST(Register, ASubclassHasItsDataBehindThatOfTheClassAbove) {
  SampleHost host;
  REALclassDefinition derived{};
  derived.version = 12;
  derived.name = "Derived";
  derived.superName = "Sample";
  derived.dataSize = 5;
  const Class &type = host.Classes().Register(&derived);
  EXPECT_GE(type.DataOffset(), host.definition.forSystemUse + sizeof(sample::Record));
  EXPECT_EQ(type.DataOffset() % 16, 0u);
  EXPECT_EQ(type.DataEnd(), type.DataOffset() + 5);
  EXPECT_TRUE(type.IsA("Sample"));
  EXPECT_TRUE(type.IsA(host.Classes().Get("Sample")));
  EXPECT_FALSE(host.Classes().Get("Sample").IsA(type));
}

REALobject Handler(REALobject, int32_t, int32_t, int32_t) { return nullptr; }
REALobject OtherHandler(REALobject, int32_t, int32_t, int32_t) { return nullptr; }

void *HandlerOf(REALobject object, uintptr_t event) {
  return Entry<void *(REALobject, uintptr_t)>("GetEventInstance")(object, event);
}

TEST(DefineSubclass, FindsItsHandlersByTheEventsHandle) {
  SampleHost host;
  host.Classes().DefineSubclass("ByName", "Sample", {{"asked", Address(Handler)}});
  host.Classes().DefineSubclass("ByDeclaration", "Sample",
                                {{"Asked(a as integer, b as integer, c as integer) as Sample", Address(OtherHandler)}});
  host.Classes().DefineSubclass("Inheriting", "ByName", {});
  host.Classes().DefineSubclass("Overriding", "ByName", {{"Asked", Address(OtherHandler)}});
  const uintptr_t closed = host.tables.events[0].forSystemUse;
  const uintptr_t asked = host.tables.events[1].forSystemUse;

  EXPECT_EQ(HandlerOf(host.New("ByName"), asked), Address(Handler));
  EXPECT_EQ(HandlerOf(host.New("ByName"), closed), nullptr);
  EXPECT_EQ(HandlerOf(host.New("ByDeclaration"), asked), Address(OtherHandler));
  EXPECT_EQ(HandlerOf(host.New("Inheriting"), asked), Address(Handler));
  EXPECT_EQ(HandlerOf(host.New("Overriding"), asked), Address(OtherHandler));
  EXPECT_EQ(HandlerOf(host.New("Sample"), asked), nullptr);
  EXPECT_EQ(HandlerOf(host.New("ByName"), 0), nullptr);
  EXPECT_EQ(HandlerOf(nullptr, asked), nullptr);
  EXPECT_TRUE(host.New("Overriding")->Type().IsA("Sample"));
}

TEST(DefineSubclass, RefusesWhatItCannotPlace) {
  SampleHost host;
  EXPECT_THROW(host.Classes().DefineSubclass("Sub", "Nobody", {}), ClassError);
  EXPECT_THROW(host.Classes().DefineSubclass("Sub", "Sample", {{"Opened", Address(Handler)}}), ClassError);
  EXPECT_THROW(host.Classes().DefineSubclass("Sample", "Sample", {}), ClassError);
  EXPECT_EQ(host.Classes().Find("Sub"), nullptr);
}

TEST(Register, ARegisteredSubclassBringsItsOwnEventHandlers) {
  SampleHost host;
  REALeventInstance instances[] = {{"Asked", Address(Handler)}};
  REALclassDefinition derived{};
  derived.version = 12;
  derived.name = "Derived";
  derived.superName = "Sample";
  derived.eventInstances = instances;
  derived.eventInstanceCount = 1;
  host.Classes().Register(&derived);
  EXPECT_EQ(HandlerOf(host.New("Derived"), host.tables.events[1].forSystemUse), Address(Handler));
}

TEST(PluginNewInstance, MakesAnInstanceWithOneReferenceOrNil) {
  SampleHost host;
  const auto make = Entry<REALobject(const char *)>("PluginNewInstance");
  auto made = Owned<Object>::Adopt(make("Sample"));
  ASSERT_TRUE(made);
  EXPECT_EQ(made->References(), 1);
  EXPECT_EQ(made->Type().Name(), "Sample");
  EXPECT_EQ(make("Nobody"), nullptr);
  EXPECT_EQ(make("Picture"), nullptr);
  EXPECT_EQ(make(nullptr), nullptr);
}

bool HasClass(const char *name) { return Entry<void *(const char *)>("pluginObjectType")(name) != nullptr; }

TEST(PluginObjectType, TellsTheApplicationByTheKindOfHost) {
  {
    Host host({.kind = HostKind::Desktop});
    EXPECT_TRUE(HasClass("Application"));
    EXPECT_FALSE(HasClass("ConsoleApplication"));
    EXPECT_FALSE(HasClass("WebApplication"));
  }
  {
    Host host({.kind = HostKind::Console});
    EXPECT_FALSE(HasClass("Application"));
    EXPECT_TRUE(HasClass("ConsoleApplication"));
  }
  {
    Host host({.applicationClass = "WebApplication"});
    EXPECT_FALSE(HasClass("ConsoleApplication"));
    EXPECT_TRUE(HasClass("WebApplication"));
  }
  Host host({.applicationClass = ""});
  EXPECT_FALSE(HasClass("Application") || HasClass("ConsoleApplication") || HasClass("WebApplication"));
}

}  // namespace
}  // namespace standalone
