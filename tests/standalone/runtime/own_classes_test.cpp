#include "standalone/runtime/own_classes.h"

#include <gtest/gtest.h>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

TEST(PluginNewInstance, KnowsTheExceptionsUnlessTheyAreMissing) {
  Host host({.missingClasses = {"NilObjectException"}});
  const auto make = Entry<REALobject(const char *)>("PluginNewInstance");
  EXPECT_EQ(make("NilObjectException"), nullptr);
  for (const char *const name :
       {"RuntimeException", "OutOfBoundsException", "OutOfMemoryException", "UnsupportedOperationException"}) {
    auto made = Owned<Object>::Adopt(make(name));
    ASSERT_TRUE(made) << name;
    EXPECT_TRUE(made->Type().IsA("RuntimeException")) << name;
  }
}

}  // namespace
}  // namespace standalone
