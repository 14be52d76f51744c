#include "standalone/zvk/session/messages.h"

#include <gtest/gtest.h>

namespace standalone {
namespace {

TEST(OneLine, MakesSpacesOfWhatWouldBreakOrSteer) {
  EXPECT_EQ(OneLine("a\nb\tc\x1B[2J\x7F"), "a b c [2J ");
  EXPECT_EQ(OneLine("gr\xC3\xB6\xC3\x9F"
                    "er"),
            "gr\xC3\xB6\xC3\x9F"
            "er");
}

TEST(AddToList, SeparatesWhatFollowsTheFirst) {
  std::string list;
  AddToList(list, ", ", "one");
  EXPECT_EQ(list, "one");
  AddToList(list, ", ", "two");
  AddToList(list, " or ", "three");
  EXPECT_EQ(list, "one, two or three");
}

}  // namespace
}  // namespace standalone
