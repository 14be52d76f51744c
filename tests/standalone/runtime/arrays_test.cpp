#include "standalone/runtime/arrays.h"

#include <gtest/gtest.h>

#include "standalone/runtime/memory_block.h"
#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

TEST(ArrayEntries, GiveTheLastIndexAndTheElements) {
  Host host;
  auto array = Owned<IntegerArray>::Adopt(IntegerArray::Make({7, -8, 2147483647}));
  const auto bound = Entry<int32_t(REALarray)>("RuntimeUBound");
  const auto read = Entry<int32_t(REALarray, int32_t)>("RuntimeDirectReadIntArray");
  EXPECT_EQ(bound(array->ArrayHandle()), 2);
  EXPECT_EQ(read(array->ArrayHandle(), 0), 7);
  EXPECT_EQ(read(array->ArrayHandle(), 1), -8);
  EXPECT_EQ(read(array->ArrayHandle(), 2), 2147483647);
  EXPECT_EQ(read(array->ArrayHandle(), 3), 0);
  EXPECT_EQ(read(array->ArrayHandle(), -1), 0);
}

TEST(ArrayEntries, TakeNilAndTheEmptyArrayAsWithoutElements) {
  Host host;
  auto empty = Owned<IntegerArray>::Adopt(IntegerArray::Make({}));
  const auto bound = Entry<int32_t(REALarray)>("RuntimeUBound");
  EXPECT_EQ(bound(empty->ArrayHandle()), -1);
  EXPECT_EQ(bound(nullptr), -1);
  EXPECT_EQ(Entry<int32_t(REALarray, int32_t)>("RuntimeDirectReadIntArray")(nullptr, 0), 0);
}

}  // namespace
}  // namespace standalone
