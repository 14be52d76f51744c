#include "standalone/processes/captured_stream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace standalone {
namespace {

class Captured : public testing::Test {
 protected:
  void Fill(const std::string &text) {
    ASSERT_EQ(write(stream_.Descriptor(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  // What CopyTo writes to an empty file.
  std::string Copied() const {
    const CapturedStream copy;
    stream_.CopyTo(copy.Descriptor());
    std::ifstream file("/proc/self/fd/" + std::to_string(copy.Descriptor()), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  CapturedStream stream_;
};

TEST_F(Captured, IsEmptyAtFirst) {
  EXPECT_TRUE(stream_.IsEmpty());
  EXPECT_EQ(Copied(), "");
  EXPECT_EQ(stream_.Tail(10), "");
  Fill("x");
  EXPECT_FALSE(stream_.IsEmpty());
}

TEST_F(Captured, IsCopiedWhole) {
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += std::to_string(i) + '\n';
  Fill(text);
  EXPECT_EQ(Copied(), text);
  EXPECT_EQ(Copied(), text);
}

TEST_F(Captured, EndsItsLastLine) {
  Fill("one\ntwo");
  EXPECT_EQ(Copied(), "one\ntwo\n");
}

TEST_F(Captured, HasATailOfWholeLines) {
  Fill("first\nsecond\nthird\n");
  EXPECT_EQ(stream_.Tail(19), "first\nsecond\nthird\n");
  EXPECT_EQ(stream_.Tail(18), "second\nthird\n");
  EXPECT_EQ(stream_.Tail(8), "third\n");
}

TEST_F(Captured, HasATailOfALineThatIsTooLong) {
  Fill("0123456789");
  EXPECT_EQ(stream_.Tail(4), "6789");
  Fill("\n");
  EXPECT_EQ(stream_.Tail(4), "789\n");
}

TEST_F(Captured, IsClosedInOtherPrograms) { EXPECT_EQ(fcntl(stream_.Descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC); }

TEST_F(Captured, TellsThatItCannotBePassedOn) {
  Fill("text");
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  try {
    stream_.CopyTo(full);
    ADD_FAILURE() << "it was written";
  } catch (const std::runtime_error &error) {
    EXPECT_STREQ(error.what(), "what a process has written cannot be passed on (No space left on device)");
  }
  close(full);
}

}  // namespace
}  // namespace standalone
