#include "standalone/zvk/arguments/mirror_direction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

TEST(MirrorDirection, HExchangesLeftAndRightAndVTopAndBottom) {
  EXPECT_THAT(MirrorDirections(), testing::ElementsAre("h", "v"));
  EXPECT_STREQ(MirrorMethod("h"), "HMirror");
  EXPECT_STREQ(MirrorMethod("v"), "VMirror");
}

TEST(MirrorDirection, RefusesAnyOtherWord) {
  for (const char *word : {"", "H", "hv", "left"}) EXPECT_THROW(MirrorMethod(word), UsageError) << word;
}

}  // namespace
}  // namespace standalone
