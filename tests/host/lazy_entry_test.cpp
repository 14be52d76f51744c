#include "host/lazy_entry.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace zvk::host {
namespace {

int lookUps = 0;
std::string lastName;
void *answer = nullptr;

void *Find(const char *name) {
  ++lookUps;
  lastName = name;
  return answer;
}

int32_t Twice(int32_t value) { return 2 * value; }
int32_t Thrice(int32_t value) { return 3 * value; }

TEST(LazyEntry, AMissingEntryReturnsZeroAndIsAskedForAgain) {
  LazyEntry<Find, int32_t(int32_t)> entry{"Twice"};
  EXPECT_EQ(entry(4), 0);
  EXPECT_EQ(entry(4), 0);
  EXPECT_FALSE(entry.Resolves());
  EXPECT_EQ(lookUps, 3);
  EXPECT_EQ(lastName, "Twice");
}

TEST(LazyEntry, AnEntryIsLookedUpOnceAndKeptForGood) {
  LazyEntry<Find, int32_t(int32_t)> entry{"Twice"};
  EXPECT_EQ(lookUps, 0);
  answer = reinterpret_cast<void *>(&Twice);
  EXPECT_EQ(entry(4), 8);
  answer = reinterpret_cast<void *>(&Thrice);
  EXPECT_EQ(entry(5), 10);
  EXPECT_TRUE(entry.Resolves());
  EXPECT_EQ(lookUps, 1);
}

TEST(LazyEntry, AnEntryThatAppearsLaterIsFound) {
  LazyEntry<Find, int32_t(int32_t)> entry{"Twice"};
  EXPECT_EQ(entry(4), 0);
  answer = reinterpret_cast<void *>(&Twice);
  EXPECT_EQ(entry(4), 8);
}

TEST(LazyEntry, AMissingEntryWithoutResultDoesNothing) {
  LazyEntry<Find, void()> entry{"Nothing"};
  entry();
  EXPECT_EQ(lookUps, 1);
}

}  // namespace
}  // namespace zvk::host
