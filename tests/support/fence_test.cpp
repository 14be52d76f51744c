#include "tests/support/fence.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using fence::Block;
using fence::Side;

uint8_t Read(const uint8_t *address) { return *static_cast<const volatile uint8_t *>(address); }

TEST(FenceDeathTest, ReadingPastTheEndFaults) {
  const Block block(10);
  EXPECT_EQ(Read(block.Data() + 9), 0);
  EXPECT_DEATH(Read(block.Data() + 10), "");
}

TEST(FenceDeathTest, ReadingBeforeTheStartFaults) {
  const Block block(10, Side::kBefore);
  EXPECT_EQ(Read(block.Data()), 0);
  EXPECT_DEATH(Read(block.Data() - 1), "");
}

TEST(FenceDeathTest, AnEmptyBlockHasNoReadableByte) {
  const Block block(0);
  EXPECT_DEATH(Read(block.Data()), "");
}

TEST(Fence, EveryByteOfABlockOfSeveralPagesCanBeWritten) {
  const Block block(3 * 4096 + 1);
  std::fill_n(block.Data(), block.Size(), uint8_t{0xA5});
  EXPECT_EQ(std::count(block.Data(), block.Data() + block.Size(), 0xA5), 3 * 4096 + 1);
}

}  // namespace
