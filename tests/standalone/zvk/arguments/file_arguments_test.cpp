#include "standalone/zvk/arguments/file_arguments.h"

#include <gtest/gtest.h>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

TEST(RefuseUnknownExtension, TakesThoseThatCanBeWritten) {
  for (const char *name : {"a.png", "a.JPG", "a.jpeg", "a.gif", "a.webp", "a.tif", "a.tiff", "a.bmp"}) {
    EXPECT_NO_THROW(RefuseUnknownExtension(name)) << name;
  }
  for (const char *name : {"a", "a.txt", ".png", "png"}) EXPECT_THROW(RefuseUnknownExtension(name), UsageError) << name;
}

}  // namespace
}  // namespace standalone
