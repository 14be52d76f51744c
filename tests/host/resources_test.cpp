#include "host/resources.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/support/faults.h"

namespace zvk::host {
namespace {

constexpr int64_t kLeast = 4194304;

bool IsZero(const ZeroedBuffer<uint8_t> &buffer, int64_t size) {
  return std::all_of(buffer.Get(), buffer.Get() + size, [](uint8_t byte) { return byte == 0; });
}

TEST(Resources, LargeBlocksAskForLargePagesBehindTheirWholePages) {
  for (const int64_t size : {kLeast, kLeast + 1, kLeast + 4095, kLeast + 4096, 3 * kLeast + 777}) {
    const faults::Advices advices;
    const ZeroedBuffer<uint8_t> buffer(size);
    ASSERT_TRUE(buffer);
    const std::vector<faults::Advice> calls = advices.All();
    ASSERT_EQ(calls.size(), 1u) << size;
    EXPECT_EQ(calls[0].advice, MADV_HUGEPAGE);
    const uint8_t *const first = static_cast<const uint8_t *>(calls[0].address);
    const uint8_t *const end = first + calls[0].size;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(first) % 4096, 0u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(end) % 4096, 0u);
    // Inside the block, with less than a page left over at either end.
    EXPECT_GE(first, buffer.Get());
    EXPECT_LT(first, buffer.Get() + 4096);
    EXPECT_LE(end, buffer.Get() + size);
    EXPECT_GT(end, buffer.Get() + size - 4096);
    EXPECT_TRUE(IsZero(buffer, size));
  }
}

TEST(Resources, SmallerAndRefusedBlocksAskForNothing) {
  const faults::Advices advices;
  const ZeroedBuffer<uint8_t> buffer(kLeast - 1), none(0), refused(kLargestAllocation + 1);
  EXPECT_TRUE(buffer);
  EXPECT_FALSE(none);
  EXPECT_FALSE(refused);
  faults::Heap heap;
  heap.FailCallocAt(1);
  EXPECT_FALSE(ZeroedBuffer<uint8_t>(kLeast));
  EXPECT_TRUE(advices.All().empty());
}

TEST(Resources, ALargeBlockNeedsNoLargePages) {
  const faults::Advices advices(faults::Advices::Answer::kFailure);
  const ZeroedBuffer<uint8_t> buffer(kLeast);
  ASSERT_TRUE(buffer);
  EXPECT_EQ(advices.All().size(), 1u);
  EXPECT_TRUE(IsZero(buffer, kLeast));
}

}  // namespace
}  // namespace zvk::host
