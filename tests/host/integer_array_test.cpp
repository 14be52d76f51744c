#include "host/integer_array.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/support/plugin_host.h"

namespace zvk::host {
namespace {

using Entries = std::array<int32_t, 4>;

class IntegerArray : public testing::Test {
 protected:
  Entries Read(REALarray array) {
    Entries entries = {90, 91, 92, 93};
    ReadIntegerArray(array, entries);
    return entries;
  }
  Entries Read(std::vector<int32_t> values) { return Read(host_.NewArray(std::move(values))->ArrayHandle()); }

  PluginHost host_;
};

TEST_F(IntegerArray, AsManyElementsAreCopiedAsThereAre) {
  EXPECT_EQ(Read({-5, 2147483647}), (Entries{-5, 2147483647, 92, 93}));
  EXPECT_EQ(Read({1, 2, 3, 4}), (Entries{1, 2, 3, 4}));
}

TEST_F(IntegerArray, ElementsBeyondTheEntriesAreDropped) {
  EXPECT_EQ(Read({1, 2, 3, 4, 5, 6}), (Entries{1, 2, 3, 4}));
  EXPECT_EQ(host_->Calls("RuntimeDirectReadIntArray"), 4);
}

TEST_F(IntegerArray, AnEmptyArrayCopiesNothing) {
  EXPECT_EQ(Read(std::vector<int32_t>{}), (Entries{90, 91, 92, 93}));
  EXPECT_EQ(host_->Calls("RuntimeUBound"), 1);
  EXPECT_EQ(host_->Calls("RuntimeDirectReadIntArray"), 0);
}

TEST_F(IntegerArray, ANilArrayIsHandedToTheHost) {
  EXPECT_EQ(Read(nullptr), (Entries{90, 91, 92, 93}));
  EXPECT_EQ(host_->Calls("RuntimeUBound"), 1);
}

TEST_F(IntegerArray, TheLargestLastIndexIsNoNegativeCount) {
  host_->SetEntry(
      "RuntimeUBound", +[](REALarray) -> int32_t { return INT32_MAX; });
  host_->SetEntry(
      "RuntimeDirectReadIntArray", +[](REALarray, int32_t index) -> int32_t { return index + 7; });
  EXPECT_EQ(Read({1}), (Entries{7, 8, 9, 10}));
}

// A missing entry answers zero, which as a last index means one element.
TEST_F(IntegerArray, WithoutAnAnswerForTheLastIndexThereIsOneElement) {
  host_->Withhold("RuntimeUBound");
  EXPECT_EQ(Read({5, 6}), (Entries{5, 91, 92, 93}));
}

TEST_F(IntegerArray, WithoutTheEntryThatReadsAllElementsAreZero) {
  host_->Withhold("RuntimeDirectReadIntArray");
  EXPECT_EQ(Read({5, 6}), (Entries{0, 0, 92, 93}));
}

}  // namespace
}  // namespace zvk::host
