#include "standalone/runtime/standard_input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace standalone {
namespace {

bool IsNullDevice(int descriptor) {
  struct stat opened = {};
  struct stat null = {};
  return fstat(descriptor, &opened) == 0 && stat("/dev/null", &null) == 0 && opened.st_rdev == null.st_rdev &&
         S_ISCHR(opened.st_mode);
}

// Puts a pipe with one byte in it on descriptor 0 and the old standard input back at the end.
class PipedInput {
 public:
  PipedInput() : saved_(dup(0)) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_EQ(write(ends[1], "x", 1), 1);
    dup2(ends[0], 0);
    close(ends[0]);
    close(ends[1]);
  }
  ~PipedInput() {
    dup2(saved_, 0);
    close(saved_);
  }

 private:
  int saved_;
};

TEST(StandardInput, MovesAwayFrom0AndComesBack) {
  const PipedInput piped;
  {
    const StandardInput moved;
    EXPECT_TRUE(IsNullDevice(0));
    EXPECT_GE(moved.Descriptor(), 3);
    char byte = 0;
    EXPECT_EQ(read(moved.Descriptor(), &byte, 1), 1);
    EXPECT_EQ(byte, 'x');
  }
  EXPECT_FALSE(IsNullDevice(0));
  EXPECT_GE(fcntl(0, F_GETFD), 0);
}

TEST(StandardInput, OfAProgramWithoutOneIsTheNullDevice) {
  const PipedInput piped;
  close(0);
  const StandardInput moved;
  EXPECT_EQ(moved.Descriptor(), -1);
  EXPECT_TRUE(IsNullDevice(0));
}

TEST(KeepDescriptorZeroTaken, PutsTheNullDeviceThereOnlyIfNothingElseIs) {
  const PipedInput piped;
  KeepDescriptorZeroTaken();
  EXPECT_FALSE(IsNullDevice(0));
  close(0);
  KeepDescriptorZeroTaken();
  EXPECT_TRUE(IsNullDevice(0));
}

}  // namespace
}  // namespace standalone
