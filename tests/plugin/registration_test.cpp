#include "plugin/registration.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "host/host_services.h"
#include "tests/support/faults.h"

namespace zvk::plugin {
namespace {

// The one class that the code under test handed to its host.
REALclassDefinition *registered = nullptr;
int registrations = 0;

void *Resolve(const char *name) {
  if (std::strcmp(name, "PluginRegisterClass") != 0) return nullptr;
  return reinterpret_cast<void *>(+[](REALclassDefinition *definition) {
    registered = definition;
    ++registrations;
  });
}

std::string Declaration(const char *name, int32_t number) {
  REALconstant constant{name, static_cast<uintptr_t>(number), 0, 0, nullptr};
  RewriteConstants(&constant, 1);
  EXPECT_EQ(constant.reserved, 0u);
  std::string text = constant.declaration;
  std::free(const_cast<char *>(constant.declaration));
  return text;
}

TEST(Registration, AConstantUpTo9IsWrittenInDecimalAndAboveInEightHexadecimalDigits) {
  EXPECT_EQ(Declaration("ScaleCubic", 7), "ScaleCubic = 7");
  EXPECT_EQ(Declaration("Zero", 0), "Zero = 0");
  EXPECT_EQ(Declaration("Nine", 9), "Nine = 9");
  EXPECT_EQ(Declaration("Ten", 10), "Ten = &h0000000A");
  EXPECT_EQ(Declaration("ImageFormatG", 11), "ImageFormatG = &h0000000B");
  EXPECT_EQ(Declaration("Large", 0x7ABCDEF0), "Large = &h7ABCDEF0");
}

TEST(Registration, AConstantTextIsZeroedMemoryOfTheNamesLengthPlus15) {
  faults::Heap heap;
  REALconstant constant{"Four", 4, 0, 0, nullptr};
  RewriteConstants(&constant, 1);
  const auto allocations = heap.Allocations();
  ASSERT_EQ(allocations.size(), 1u);
  EXPECT_TRUE(allocations[0].zeroed);
  EXPECT_EQ(allocations[0].count * allocations[0].size, 19u);
  EXPECT_EQ(constant.declaration, allocations[0].address);
  std::free(const_cast<char *>(constant.declaration));
}

TEST(Registration, AConstantWithoutMemoryForItsTextStaysAsItIs) {
  faults::Heap heap;
  heap.FailCallocAt(1);
  REALconstant constant{"Four", 4, 0, 0, nullptr};
  RewriteConstants(&constant, 1);
  EXPECT_STREQ(constant.declaration, "Four");
  EXPECT_EQ(constant.reserved, 4u);
}

uint32_t FixedPropertyFlag(double version, uint32_t flags) {
  rbversion = version;
  REALproperty property{};
  property.flags = flags;
  REALclassDefinition definition{};
  definition.properties = &property;
  definition.propertyCount = 1;
  FixConsoleFlags(&definition);
  return property.flags;
}

TEST(Registration, PictureEntriesAreConsoleSafeFrom2010029On) {
  EXPECT_EQ(FixedPropertyFlag(2010.029, 0x40002), 6u);
  EXPECT_EQ(FixedPropertyFlag(2013.03, 0x40002), 6u);
  EXPECT_EQ(FixedPropertyFlag(2010.028, 0x40002), 2u);
  EXPECT_EQ(FixedPropertyFlag(0, 0x40002), 2u);
}

TEST(Registration, TheCounterpartBitBecomes8AndTheInternalBitIsAlwaysCleared) {
  EXPECT_EQ(FixedPropertyFlag(2011, 0x80000), 8u);
  EXPECT_EQ(FixedPropertyFlag(2009, 0x80000), 0u);
  EXPECT_EQ(FixedPropertyFlag(2011, 0xC0000), 12u);
  EXPECT_EQ(FixedPropertyFlag(2011, 0x100004), 4u);
  EXPECT_EQ(FixedPropertyFlag(2009, 0x100006), 6u);
  EXPECT_EQ(FixedPropertyFlag(2011, 0), 0u);
  EXPECT_EQ(FixedPropertyFlag(2011, 6), 6u);
}

TEST(Registration, EveryFlagWordOfADefinitionIsSettled) {
  rbversion = 2012;
  REALmethodDefinition methods[2]{};
  REALmethodDefinition sharedMethods[1]{};
  REALproperty properties[2]{};
  REALproperty sharedProperties[1]{};
  for (auto &method : methods) method.flags = 0x40000;
  sharedMethods[0].flags = 0x40000;
  for (auto &property : properties) property.flags = 0x40000;
  sharedProperties[0].flags = 0x40000;
  REALclassDefinition definition{};
  definition.flags = 0x40000;
  definition.methods = methods;
  definition.methodCount = 2;
  definition.sharedMethods = sharedMethods;
  definition.sharedMethodCount = 1;
  definition.properties = properties;
  definition.propertyCount = 2;
  definition.sharedProperties = sharedProperties;
  definition.sharedPropertyCount = 1;
  FixConsoleFlags(&definition);
  EXPECT_EQ(definition.flags, 4u);
  EXPECT_EQ(methods[0].flags, 4u);
  EXPECT_EQ(methods[1].flags, 4u);
  EXPECT_EQ(sharedMethods[0].flags, 4u);
  EXPECT_EQ(properties[1].flags, 4u);
  EXPECT_EQ(sharedProperties[0].flags, 4u);
}

// A definition with something in every field, so that a conversion shows what it keeps.
struct Sample {
  Sample() {
    definition.version = 12;
    definition.name = "Sample";
    definition.superName = "Super";
    definition.dataSize = 284;
    definition.forSystemUse = 77;
    definition.constructor = this;
    definition.destructor = &definition;
    definition.properties = properties;
    definition.propertyCount = 2;
    definition.methods = methods;
    definition.methodCount = 2;
    definition.events = events;
    definition.eventCount = 2;
    definition.eventInstances = eventInstances;
    definition.eventInstanceCount = 1;
    definition.interfaces = "Some, Others";
    definition.attributes = attributes;
    definition.attributeCount = 1;
    definition.constants = constants;
    definition.constantCount = 2;
    definition.flags = 4;
    definition.sharedProperties = sharedProperties;
    definition.sharedPropertyCount = 1;
    definition.sharedMethods = sharedMethods;
    definition.sharedMethodCount = 1;
  }

  REALattribute attributes[1] = {{"attribute", "value"}};
  REALproperty properties[2] = {
      {"", "First", "Integer", 6, this, nullptr, 12, "editor", 3, this, 1, attributes},
      {"", "Second", "Boolean", 2, nullptr, this, 16, nullptr, 0, nullptr, 0, nullptr},
  };
  REALproperty sharedProperties[1] = {{"g", "Shared", "Double", 6, this, this, 0, nullptr, 0, nullptr, 0, nullptr}};
  REALmethodDefinition methods[2] = {{this, nullptr, "One", 4, 1, attributes}, {nullptr, this, "Two", 0, 0, nullptr}};
  REALmethodDefinition sharedMethods[1] = {{this, this, "Three", 4, 0, nullptr}};
  REALevent events[2] = {{"Opened", 0, 1, attributes}, {"Closed", 0, 0, nullptr}};
  REALeventInstance eventInstances[1] = {{"Event", this}};
  REALconstant constants[2] = {{"A = 1", 0, 5, 1, attributes}, {"B = 2", 0, 6, 0, nullptr}};
  REALclassDefinition definition{};
};

// A sample that is never destroyed, as the host keeps pointers into what was registered, and a leak checker looks for
// the older tables through it.
Sample &NewSample() {
  static auto &samples = *new std::vector<std::unique_ptr<Sample>>;
  return *samples.emplace_back(std::make_unique<Sample>());
}

TEST(Registration, ADataSizeIsRoundedUpToAMultipleOf16ForAnyHost) {
  gResolver = Resolve;
  for (const int32_t version : {9, 10, 11, 12}) {
    CurrentREALControlVersion = version;
    Sample &sample = NewSample();
    MyREALRegisterClass(&sample.definition);
    EXPECT_EQ(sample.definition.dataSize, 288u);
    EXPECT_EQ(sample.definition.version, static_cast<uint32_t>(version));
  }
  EXPECT_EQ(registrations, 4);
}

TEST(Registration, AboveVersion9TheDefinitionGoesAsItIs) {
  gResolver = Resolve;
  for (const int32_t version : {10, 11, 12}) {
    CurrentREALControlVersion = version;
    Sample &sample = NewSample();
    REALclassDefinition expected = sample.definition;
    expected.version = static_cast<uint32_t>(version);
    expected.dataSize = 288;
    MyREALRegisterClass(&sample.definition);
    EXPECT_EQ(registered, &sample.definition);
    EXPECT_EQ(std::memcmp(&sample.definition, &expected, sizeof expected), 0);
  }
}

// The address at `index` words from the start of a record.
template <class Value>
Value Word(const void *record, size_t index) {
  Value value;
  std::memcpy(&value, static_cast<const char *>(record) + index * sizeof(void *), sizeof value);
  return value;
}

TEST(Registration, Version9GetsTheSameDefinitionAddressWithOlderRecords) {
  gResolver = Resolve;
  CurrentREALControlVersion = 9;
  Sample &sample = NewSample();
  const REALclassDefinition &definition = sample.definition;
  const auto properties = std::to_array(sample.properties);
  const auto methods = std::to_array(sample.methods);
  const auto constants = std::to_array(sample.constants);
  MyREALRegisterClass(&sample.definition);
  ASSERT_EQ(registered, &sample.definition);

  // The newer tables are left as they were.
  EXPECT_EQ(std::memcmp(sample.properties, properties.data(), sizeof sample.properties), 0);
  EXPECT_EQ(std::memcmp(sample.methods, methods.data(), sizeof sample.methods), 0);
  EXPECT_EQ(std::memcmp(sample.constants, constants.data(), sizeof sample.constants), 0);
  EXPECT_STREQ(sample.events[0].declaration, "Opened");
  EXPECT_EQ(sample.events[0].attributeCount, 1u);

  EXPECT_EQ(definition.version, 9u);
  EXPECT_STREQ(definition.name, "Sample");
  EXPECT_STREQ(definition.superName, "Super");
  EXPECT_EQ(definition.forSystemUse, 77u);
  EXPECT_EQ(definition.constructor, &sample);
  EXPECT_EQ(definition.destructor, &sample.definition);
  EXPECT_EQ(definition.eventInstances, sample.eventInstances);
  EXPECT_EQ(definition.eventInstanceCount, 1u);
  EXPECT_STREQ(definition.interfaces, "Some, Others");
  EXPECT_EQ(definition.attributes, nullptr);
  EXPECT_EQ(definition.attributeCount, 0u);
  EXPECT_EQ(definition.flags, 4u);
  EXPECT_EQ(definition.propertyCount, 2u);
  EXPECT_EQ(definition.sharedPropertyCount, 1u);
  EXPECT_EQ(definition.methodCount, 2u);
  EXPECT_EQ(definition.sharedMethodCount, 1u);
  EXPECT_EQ(definition.eventCount, 2u);
  EXPECT_EQ(definition.constantCount, 2u);

  // Records of 10, 4, 2 and 3 words, each word as it was.
  const void *second = reinterpret_cast<const void *const *>(definition.properties) + 10;
  EXPECT_STREQ(Word<const char *>(definition.properties, 1), "First");
  EXPECT_EQ(Word<int32_t>(definition.properties, 6), 12);
  EXPECT_EQ(Word<void *>(definition.properties, 9), &sample);
  EXPECT_STREQ(Word<const char *>(second, 1), "Second");
  EXPECT_EQ(Word<void *>(second, 5), &sample);
  EXPECT_EQ(Word<int32_t>(second, 6), 16);
  EXPECT_STREQ(Word<const char *>(definition.sharedProperties, 1), "Shared");

  EXPECT_STREQ(Word<const char *>(definition.methods, 2), "One");
  EXPECT_STREQ(Word<const char *>(definition.methods, 4 + 2), "Two");
  EXPECT_EQ(Word<void *>(definition.methods, 4 + 1), &sample);
  EXPECT_EQ(Word<uint32_t>(definition.methods, 3), 4u);
  EXPECT_STREQ(Word<const char *>(definition.sharedMethods, 2), "Three");

  EXPECT_STREQ(Word<const char *>(definition.events, 0), "Opened");
  EXPECT_STREQ(Word<const char *>(definition.events, 2), "Closed");

  EXPECT_STREQ(Word<const char *>(definition.constants, 0), "A = 1");
  EXPECT_EQ(Word<uint32_t>(definition.constants, 2), 5u);
  EXPECT_STREQ(Word<const char *>(definition.constants, 3), "B = 2");
  EXPECT_EQ(Word<uint32_t>(definition.constants, 5), 6u);
}

TEST(Registration, OnVersion9TheNewerEventRecordPointsAtTheOneTheHostKnows) {
  gResolver = Resolve;
  CurrentREALControlVersion = 9;
  Sample &sample = NewSample();
  MyREALRegisterClass(&sample.definition);
  const auto *older = reinterpret_cast<const char *>(sample.definition.events);
  EXPECT_EQ(sample.events[0].forSystemUse, reinterpret_cast<uintptr_t>(older));
  EXPECT_EQ(sample.events[1].forSystemUse, reinterpret_cast<uintptr_t>(older + 2 * sizeof(void *)));
  EXPECT_EQ(Word<uintptr_t>(older, 1), 0u);
}

TEST(Registration, EmptyTablesStayNil) {
  gResolver = Resolve;
  CurrentREALControlVersion = 9;
  REALclassDefinition definition{};
  REALproperty property{};
  definition.name = "Empty";
  definition.properties = &property;  // a table of no entries
  faults::Heap heap;
  MyREALRegisterClass(&definition);
  EXPECT_EQ(definition.properties, nullptr);
  EXPECT_EQ(definition.methods, nullptr);
  EXPECT_EQ(definition.events, nullptr);
  EXPECT_EQ(definition.constants, nullptr);
  EXPECT_EQ(definition.sharedMethods, nullptr);
  EXPECT_EQ(definition.sharedProperties, nullptr);
  EXPECT_EQ(FixProperties(&property, 0), nullptr);
  EXPECT_EQ(FixProperties(nullptr, 3), nullptr);
}

TEST(Registration, WithoutTheHostsEntryAClassIsSilentlyNotRegistered) {
  gResolver = [](const char *) -> void * { return nullptr; };
  CurrentREALControlVersion = 12;
  Sample &sample = NewSample();
  MyREALRegisterClass(&sample.definition);
  EXPECT_EQ(registrations, 0);
}

}  // namespace
}  // namespace zvk::plugin
