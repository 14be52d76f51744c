#include "standalone/runtime/memory_block.h"

#include <gtest/gtest.h>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

TEST(MemoryBlockEntries, MakeAZeroFilledBlock) {
  Host host;
  auto block = Owned<MemoryBlock>::Adopt(ObjectAs<MemoryBlock>(Entry<REALobject(int32_t)>("newMemoryBlock")(3)));
  ASSERT_TRUE(block);
  EXPECT_EQ(block->Size(), 3);
  EXPECT_EQ(block->References(), 1);
  auto *const bytes = static_cast<uint8_t *>(Entry<void *(REALobject)>("memoryBlockGetPtr")(block));
  ASSERT_EQ(bytes, block->Data());
  EXPECT_EQ(bytes[0] | bytes[1] | bytes[2], 0);
}

TEST(MemoryBlockEntries, AllowAnEmptyBlockAndRefuseANegativeSize) {
  Host host;
  auto empty = Owned<Object>::Adopt(Entry<REALobject(int32_t)>("newMemoryBlock")(0));
  ASSERT_TRUE(empty);
  EXPECT_NE(Entry<void *(REALobject)>("memoryBlockGetPtr")(empty), nullptr);
  EXPECT_EQ(Entry<REALobject(int32_t)>("newMemoryBlock")(-1), nullptr);
}

TEST(MemoryBlockEntries, CoverForeignMemoryWithoutCopying) {
  Host host;
  uint8_t foreign[4] = {1, 2, 3, 4};
  auto block = Owned<MemoryBlock>::Adopt(ObjectAs<MemoryBlock>(Entry<REALobject(void *)>("PtrToMemoryBlock")(foreign)));
  EXPECT_EQ(block->Data(), foreign);
  EXPECT_EQ(block->Size(), MemoryBlock::kUnknownSize);
  block.Reset();
  EXPECT_EQ(foreign[3], 4);
}

TEST(MemoryBlockEntries, GiveNoAddressOfWhatIsNoBlock) {
  Host host;
  auto other = Owned<Object>::Adopt(host.Classes().NewInstance("FolderItem"));
  EXPECT_EQ(Entry<void *(REALobject)>("memoryBlockGetPtr")(other), nullptr);
  EXPECT_EQ(Entry<void *(REALobject)>("memoryBlockGetPtr")(nullptr), nullptr);
}

TEST(MemoryBlock, TellsItsSizeByName) {
  Host host;
  auto block = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(9));
  int32_t size = 0;
  EXPECT_TRUE(block->GetInteger("size", &size));
  EXPECT_EQ(size, 9);
  EXPECT_FALSE(block->GetInteger("Length", &size));
}

TEST(MemoryBlockDeathTest, OfAFencedHostFaultsBehindItsEnd) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  Host host({.fenced = true});
  auto block = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(10));
  volatile uint8_t *const bytes = block->Data();
  bytes[9] = 1;
  EXPECT_DEATH(bytes[10] = 1, "");
}

}  // namespace
}  // namespace standalone
