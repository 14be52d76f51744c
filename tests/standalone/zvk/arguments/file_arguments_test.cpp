#include "standalone/zvk/arguments/file_arguments.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

TEST(RefuseUnknownExtension, TakesThoseThatCanBeWritten) {
  for (const char *name : {"a.png", "a.JPG", "a.jpeg", "a.gif", "a.webp", "a.tif", "a.tiff", "a.bmp"}) {
    EXPECT_NO_THROW(RefuseUnknownExtension(name)) << name;
  }
  for (const char *name : {"a", "a.txt", ".png", "png"}) EXPECT_THROW(RefuseUnknownExtension(name), UsageError) << name;
}

TEST(RefuseMissingScript, TakesFilesOnly) {
  EXPECT_NO_THROW(RefuseMissingScript("/proc/self/exe"));
  for (const std::string path : {"/nowhere/script.lua", "/"}) {
    try {
      RefuseMissingScript(path);
      ADD_FAILURE() << path;
    } catch (const std::runtime_error &error) {
      EXPECT_EQ(error.what(), "there is no script " + path + "; name a file in Lua");
    }
  }
}

}  // namespace
}  // namespace standalone
