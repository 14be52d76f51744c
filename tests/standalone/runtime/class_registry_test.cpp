#include "standalone/runtime/class_registry.h"

#include <gtest/gtest.h>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Address;
using sample::Entry;
using sample::SampleHost;

void ExpectSample(const RegisteredClass &read) {
  EXPECT_EQ(read.name, "Sample");
  EXPECT_EQ(read.superName, "");
  EXPECT_EQ(read.interfaces, "Readable");
  EXPECT_EQ(read.flags, 4u);
  EXPECT_EQ(read.dataSize, sizeof(sample::Record));
  EXPECT_EQ(read.constructor, Address(sample::Construct));
  EXPECT_EQ(read.destructor, Address(sample::Destruct));

  ASSERT_EQ(read.properties.size(), 8u);
  EXPECT_EQ(read.properties[3].name, "Kept");
  EXPECT_EQ(read.properties[3].type, "MemoryBlock");
  EXPECT_EQ(read.properties[3].group, "");
  EXPECT_EQ(read.properties[3].flags, 6u);
  EXPECT_EQ(read.properties[3].getter, REALstandardAccessor);
  EXPECT_EQ(read.properties[3].setter, nullptr);
  EXPECT_EQ(read.properties[3].param, static_cast<int32_t>(offsetof(sample::Record, kept)));
  EXPECT_EQ(read.properties[5].getter, Address(sample::GetDoubled));
  EXPECT_EQ(read.properties[5].setter, Address(sample::SetDoubled));

  ASSERT_EQ(read.methods.size(), 2u);
  EXPECT_EQ(read.methods[1].declaration, "Item(index as integer) as integer");
  EXPECT_EQ(read.methods[1].function, Address(sample::GetItem));
  EXPECT_EQ(read.methods[1].setter, Address(sample::SetItem));
  EXPECT_EQ(read.methods[1].flags, 0x40000u);

  ASSERT_EQ(read.sharedMethods.size(), 1u);
  EXPECT_EQ(read.sharedMethods[0].declaration, "Answer as integer");
  ASSERT_EQ(read.events.size(), 2u);
  EXPECT_EQ(read.events[1].declaration, "Asked(a as integer, b as integer, c as integer) as Sample");
  ASSERT_EQ(read.constants.size(), 2u);
  EXPECT_EQ(read.constants[0].declaration, "One = 1");
  EXPECT_EQ(read.constants[1].declaration, "Big = &h0000000B");
  EXPECT_EQ(read.constants[1].flags, 4u);
  EXPECT_TRUE(read.sharedProperties.empty());
}

TEST(ReadDefinition, ReadsTheNewerRecordsOfVersions10To12) {
  sample::Tables12 tables;
  for (const uint32_t version : {10u, 11u, 12u}) {
    const RegisteredClass read = ReadDefinition(tables.Definition(version));
    EXPECT_EQ(read.version, version);
    ExpectSample(read);
  }
}

TEST(ReadDefinition, ReadsTheOlderRecordsOfVersion9AndNothingBehindTheSharedMethods) {
  sample::Tables9 tables;
  const sample::Definition9 definition(tables);
  const RegisteredClass read = ReadDefinition(*definition.Get());
  EXPECT_EQ(read.version, 9u);
  ExpectSample(read);
}

TEST(ReadDefinition, TakesANilTableAsEmptyWhateverItsCount) {
  sample::Tables12 tables;
  REALclassDefinition definition = tables.Definition(12);
  definition.methods = nullptr;
  EXPECT_TRUE(ReadDefinition(definition).methods.empty());
}

TEST(ReadDefinition, RefusesAnUnknownVersionAndAMissingName) {
  sample::Tables12 tables;
  REALclassDefinition definition = tables.Definition(13);
  EXPECT_THROW(ReadDefinition(definition), ClassError);
  definition = tables.Definition(8);
  EXPECT_THROW(ReadDefinition(definition), ClassError);
  definition = tables.Definition(12);
  definition.name = nullptr;
  EXPECT_THROW(ReadDefinition(definition), ClassError);
}

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

TEST(PluginNewInstance, KnowsTheExceptionsUnlessTheyAreMissing) {
  Host host({.missingClasses = {"NilObjectException"}});
  const auto make = Entry<REALobject(const char *)>("PluginNewInstance");
  EXPECT_EQ(make("NilObjectException"), nullptr);
  for (const char *const name :
       {"RuntimeException", "OutOfBoundsException", "OutOfMemoryException", "UnsupportedOperationException"}) {
    auto made = Owned<Object>::Adopt(make(name));
    ASSERT_TRUE(made) << name;
    EXPECT_TRUE(made->Type().IsA("RuntimeException")) << name;
  }
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
