#include "standalone/runtime/classes.h"

#include <gtest/gtest.h>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Address;

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

}  // namespace
}  // namespace standalone
