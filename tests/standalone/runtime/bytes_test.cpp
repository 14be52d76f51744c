#include "standalone/runtime/bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>

namespace standalone {
namespace {

class BytesTest : public testing::TestWithParam<bool> {};

TEST_P(BytesTest, AreZeroAndWritable) {
  for (const size_t size : {size_t{1}, size_t{4095}, size_t{4096}, size_t{4097}, size_t{100000}}) {
    const Bytes bytes(size, GetParam());
    auto *const first = static_cast<uint8_t *>(bytes.Data());
    EXPECT_EQ(bytes.Size(), size);
    EXPECT_TRUE(std::all_of(first, first + size, [](uint8_t byte) { return byte == 0; }));
    std::fill(first, first + size, uint8_t{0xFF});
  }
}

TEST_P(BytesTest, OfSizeZeroHaveAnAddress) {
  const Bytes bytes(0, GetParam());
  EXPECT_NE(bytes.Data(), nullptr);
}

TEST_P(BytesTest, ThrowWhereThereIsNoMemory) { EXPECT_THROW(Bytes(SIZE_MAX / 2, GetParam()), std::bad_alloc); }

INSTANTIATE_TEST_SUITE_P(Heap, BytesTest, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Fenced, BytesTest, testing::Values(true));

TEST(FencedBytesDeathTest, FaultRightBehindTheEndAndAPageBeforeTheStart) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const Bytes bytes(4096 + 5, true);
  auto *const first = static_cast<volatile uint8_t *>(bytes.Data());
  EXPECT_DEATH(first[4096 + 5] = 1, "");
  EXPECT_DEATH(first[-4096] = 1, "");
}

}  // namespace
}  // namespace standalone
