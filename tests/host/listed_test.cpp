#include "host/listed.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace zvk::host {
namespace {

struct Item : Listed<Item> {
  explicit Item(int number) : number(number) {}
  int number;
};

struct Other : Listed<Other> {};

std::vector<int> Numbers() {
  std::vector<int> numbers;
  Item::ForEach([&](const Item &item) { numbers.push_back(item.number); });
  return numbers;
}

TEST(Listed, WhatIsAliveIsFoundTheNewestFirst) {
  EXPECT_EQ(Numbers(), (std::vector<int>{}));
  const Item one(1);
  const Other other;
  {
    const Item two(2), three(3);
    EXPECT_EQ(Numbers(), (std::vector<int>{3, 2, 1}));
  }
  EXPECT_EQ(Numbers(), (std::vector<int>{1}));
}

TEST(Listed, ObjectsMayEndInAnyOrder) {
  std::optional<Item> one(1), two(2), three(3);
  two.reset();
  EXPECT_EQ(Numbers(), (std::vector<int>{3, 1}));
  one.reset();
  EXPECT_EQ(Numbers(), (std::vector<int>{3}));
  one.emplace(4);
  three.reset();
  EXPECT_EQ(Numbers(), (std::vector<int>{4}));
  one.reset();
  EXPECT_EQ(Numbers(), (std::vector<int>{}));
}

}  // namespace
}  // namespace zvk::host
