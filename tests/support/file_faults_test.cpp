#include "tests/support/file_faults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

using faults::FileCall;
using faults::FileRecord;
using faults::Files;

TEST(FileFaults, TheNthCallFailsWithItsErrorAndNoOther) {
  Files files;
  files.FailAt(FileCall::kOpen, 2, ENOSPC);
  const int first = open("/dev/null", O_RDWR);
  const int second = open("/dev/null", O_RDWR);
  const int error = errno;
  const int third = open("/dev/null", O_RDWR);
  EXPECT_GE(first, 0);
  EXPECT_EQ(second, -1);
  EXPECT_EQ(error, ENOSPC);
  EXPECT_GE(third, 0);
  EXPECT_EQ(close(first), 0);
  EXPECT_EQ(close(third), 0);
}

TEST(FileFaults, RecordsTellTheArgumentsInOrder) {
  Files files;
  for (const FileCall call : {FileCall::kOpen, FileCall::kTruncate, FileCall::kSeek, FileCall::kWrite, FileCall::kMap,
                              FileCall::kUnmap, FileCall::kClose, FileCall::kUnlink}) {
    files.FailAll(call);
  }
  EXPECT_EQ(open("name", O_RDWR | O_CREAT, 1638), -1);
  EXPECT_EQ(ftruncate(77, 1234), -1);
  EXPECT_EQ(lseek(77, 99, SEEK_SET), -1);
  EXPECT_EQ(write(77, "abc", 3), -1);
  EXPECT_EQ(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, 77, 8192), MAP_FAILED);
  EXPECT_EQ(munmap(nullptr, 4096), -1);
  EXPECT_EQ(close(77), -1);
  EXPECT_EQ(unlink("name"), -1);

  const std::vector<FileRecord> records = files.Records();
  ASSERT_EQ(records.size(), 8u);
  for (const FileRecord &record : records) EXPECT_TRUE(record.failed);
  EXPECT_EQ(records[0].path, "name");
  EXPECT_EQ(records[0].flags & (O_RDWR | O_CREAT), O_RDWR | O_CREAT);
  EXPECT_EQ(records[0].mode, 1638u);
  EXPECT_EQ(records[1].descriptor, 77);
  EXPECT_EQ(records[1].size, 1234);
  EXPECT_EQ(records[2].offset, 99);
  EXPECT_EQ(records[3].size, 3);
  EXPECT_EQ(records[4].size, 4096);
  EXPECT_EQ(records[4].offset, 8192);
  EXPECT_EQ(records[5].call, FileCall::kUnmap);
  EXPECT_EQ(records[6].descriptor, 77);
  EXPECT_EQ(records[7].path, "name");
  EXPECT_EQ(files.Records(FileCall::kMap).size(), 1u);
}

TEST(FileFaults, MappingsWithoutAFilePassBy) {
  Files files;
  files.FailAll(FileCall::kMap);
  void *mapping = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  EXPECT_NE(mapping, MAP_FAILED);
  EXPECT_TRUE(files.Records(FileCall::kMap).empty());
  EXPECT_EQ(munmap(mapping, 4096), 0);
}

TEST(FileFaults, WritesCanFallShortByOneByte) {
  const int file = open("/dev/null", O_WRONLY);
  Files files;
  files.ShortenWrites();
  EXPECT_EQ(write(file, "abcd", 4), 3);
  EXPECT_EQ(close(file), 0);
}

TEST(FileFaults, SeeksCanFallShortByOneByte) {
  const int file = open("/dev/zero", O_RDONLY);
  Files files;
  files.ShortenSeeks();
  EXPECT_EQ(lseek(file, 0, SEEK_SET), -1);
  EXPECT_EQ(close(file), 0);
}

TEST(FileFaults, MappingsOfFilesCanLandAtAddressZero) {
  Files files;
  files.MapAtZero();
  EXPECT_EQ(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, 77, 0), nullptr);
  EXPECT_EQ(files.Records(FileCall::kMap).size(), 1u);
  void *mapping = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  EXPECT_NE(mapping, nullptr);
  EXPECT_EQ(munmap(mapping, 4096), 0);
}

TEST(FileFaults, TheTemporaryNameIsWhatTheTestSays) {
  char buffer[L_tmpnam] = "unchanged";
  Files files;
  files.SetTemporaryName("");
  EXPECT_STREQ(tmpnam(buffer), "");
  files.FailAll(FileCall::kTemporaryName);
  EXPECT_EQ(tmpnam(buffer), nullptr);
  EXPECT_EQ(files.Records(FileCall::kTemporaryName).size(), 2u);
}

}  // namespace
