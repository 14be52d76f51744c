#include "pixels/word_product.h"

#include <gtest/gtest.h>

namespace zvk::pixels {
namespace {

TEST(WordProduct, IsTheUpperHalfShifted) {
  EXPECT_EQ((WordProduct{65535, 0}(65535)), 65534);
  EXPECT_EQ((WordProduct{32768, 0}(7)), 3);
  EXPECT_EQ((WordProduct{32768, 2}(1000)), 125);
  EXPECT_EQ((WordProduct{0, 0}(65535)), 0);
}

TEST(WordDivision, DividesEveryValueByEveryDivisorOfAWindow) {
  for (uint32_t divisor = 2; divisor <= 257; ++divisor) {
    const WordDivision divide(static_cast<uint16_t>(divisor));
    for (uint32_t value = 0; value < 65535; ++value) {
      ASSERT_EQ(divide(static_cast<uint16_t>(value)), value / divisor) << value << " / " << divisor;
    }
  }
}

// Between two steps of the quotient nothing changes, so both sides of each step are enough.
TEST(WordDivision, DividesByEveryDivisor) {
  for (uint32_t divisor = 2; divisor <= 65535; ++divisor) {
    const WordDivision divide(static_cast<uint16_t>(divisor));
    for (uint32_t step = divisor; step < 65535; step += divisor) {
      ASSERT_EQ(divide(static_cast<uint16_t>(step)), step / divisor) << step << " / " << divisor;
      ASSERT_EQ(divide(static_cast<uint16_t>(step - 1)), step / divisor - 1) << step - 1 << " / " << divisor;
    }
    ASSERT_EQ(divide(65534), 65534 / divisor) << divisor;
  }
}

}  // namespace
}  // namespace zvk::pixels
