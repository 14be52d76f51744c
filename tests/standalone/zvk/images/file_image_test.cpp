#include "standalone/zvk/images/file_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

// Temporary files go to a folder of the test's own.
class FileImage : public ZvkProgram {
 protected:
  FileImage() {
    std::filesystem::create_directory(Path("temporary"));
    setenv("TMPDIR", Path("temporary").c_str(), 1);
  }
  ~FileImage() override { unsetenv("TMPDIR"); }

  bool IsFolderEmpty() const { return std::filesystem::is_empty(Path("temporary")); }

  std::string ErrorOfImage(const PluginSession &session, Size size) const {
    try {
      NewFileImage(session, size, 1, 1);
    } catch (const std::runtime_error &error) {
      return error.what();
    }
    return "no error";
  }

  PluginSession session_{{.path = PICTUREZVK_LIBRARY}};
};

TEST_F(FileImage, IsAnImageInAFileWithoutAName) {
  const Value image = NewFileImage(session_, {10, 7}, 1, 1);
  EXPECT_TRUE(image.Get("Valid").AsBoolean());
  EXPECT_TRUE(image.Get("IsMapping").AsBoolean());
  EXPECT_EQ(image.Get("Width").AsInteger(), 10);
  EXPECT_EQ(image.Get("Height").AsInteger(), 7);
  EXPECT_EQ(image.Get("ImageFormat").AsInteger(), 1);
  EXPECT_EQ(image.Get("TotalSize").AsInt64(), 7 * 4096);
  EXPECT_TRUE(IsFolderEmpty());
}

// Rows of 4096 bytes. A block of 20000000 bytes has 4882 pages.
TEST_F(FileImage, HasABlockOfTheWantedSize) {
  EXPECT_EQ(NewFileImage(session_, {1000, 10000}, 1, 20000000).Get("MappingBlockSize").AsInteger(), 4882 * 4096);
  EXPECT_EQ(NewFileImage(session_, {1000, 10000}, 1, 1).Get("MappingBlockSize").AsInteger(), 4096 * 4096);
}

TEST_F(FileImage, IsRefusedWhereThereIsNoFolderForIt) {
  setenv("TMPDIR", Path("nowhere").c_str(), 1);
  EXPECT_EQ(ErrorOfImage(session_, {1, 1}), "TMPDIR names no folder; name one that has room for temporary files");
}

// The system refuses to let files grow beyond a million bytes, as a full disk would.
TEST_F(FileImage, IsRefusedWhereThereIsNoRoomForIt) {
  rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit tight = {1000000, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tight);
  EXPECT_EQ(ErrorOfImage(session_, {1000, 1000}),
            "no temporary file can be made in " + Path("temporary") +
                " (No space left on device); make room there, or name another folder by TMPDIR");
  EXPECT_EQ(ErrorOfImage(session_, {1000, 100}), "no error");
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, oldHandler);
  EXPECT_TRUE(IsFolderEmpty());
}

// More than the disk has: a file may be longer than there is room, but the room itself is asked for as well.
TEST_F(FileImage, IsRefusedWhereTheDiskIsTooSmall) {
  const std::filesystem::space_info space = std::filesystem::space(Path("temporary"));
  const int64_t rows = static_cast<int64_t>(space.capacity / (4096 * 1000)) + 1;
  ASSERT_LT(rows, 100'000'000);
  EXPECT_THAT(ErrorOfImage(session_, {1365 * 1000, static_cast<int32_t>(rows)}),
              testing::StartsWith("no temporary file can be made in " + Path("temporary") + " ("));
  EXPECT_TRUE(IsFolderEmpty());
}

}  // namespace
}  // namespace standalone
