#include "pixels/divide_by_255.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace zvk::pixels {
namespace {

TEST(DivideBy255, IsExactForEveryValueOfItsRange) {
  for (uint32_t value = 0; value <= 65535; ++value) ASSERT_EQ(DivideBy255(value), value / 255) << value;
}

}  // namespace
}  // namespace zvk::pixels
