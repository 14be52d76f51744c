#include "standalone/zvk/progress.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using std::chrono::milliseconds;

// A terminal without any change of line ends, and a clock that stands still.
class Progress : public testing::Test {
 protected:
  Progress() {
    termios settings = {};
    cfmakeraw(&settings);
    EXPECT_EQ(openpty(&reader_, &terminal_, nullptr, &settings, nullptr), 0);
  }
  ~Progress() override {
    close(reader_);
    if (terminal_ >= 0) close(terminal_);
  }

  ProgressLine::Clock Clock() {
    return [this] { return now_; };
  }
  void Pass(milliseconds time) { now_ += time; }

  // Everything that was written to the terminal, which is closed by this.
  std::string Written() {
    close(std::exchange(terminal_, -1));
    return ReadToEnd(reader_);
  }

  int terminal_ = -1;
  int reader_ = -1;
  std::chrono::steady_clock::time_point now_;
};

TEST_F(Progress, ShowsNothingWithinTheFirstSecond) {
  {
    ProgressLine line(terminal_, "counting", Clock());
    line.Update();
    Pass(milliseconds(999));
    line.Update();
  }
  EXPECT_EQ(Written(), "");
}

TEST_F(Progress, ShowsTheElapsedTimeFromASecondOnInTheSameLine) {
  ProgressLine line(terminal_, "counting", Clock());
  Pass(milliseconds(1000));
  line.Update();
  Pass(milliseconds(100));
  line.Update();
  Pass(milliseconds(61000));
  line.Update();
  EXPECT_EQ(Written(), "\r\x1b[Kcounting, 1.0 s\r\x1b[Kcounting, 1.1 s\r\x1b[Kcounting, 62.1 s");
}

TEST_F(Progress, MovesTenTimesASecondAtMost) {
  ProgressLine line(terminal_, "counting", Clock());
  Pass(milliseconds(1000));
  for (int i = 0; i < 150; ++i) {
    line.Update();
    Pass(milliseconds(1));
  }
  EXPECT_EQ(Written(), "\r\x1b[Kcounting, 1.0 s\r\x1b[Kcounting, 1.1 s");
}

TEST_F(Progress, TakesTheLineAwayAtTheEnd) {
  {
    ProgressLine line(terminal_, "counting", Clock());
    Pass(milliseconds(2500));
    line.Update();
  }
  EXPECT_EQ(Written(), "\r\x1b[Kcounting, 2.5 s\r\x1b[K");
}

TEST_F(Progress, ShowsNothingWhereThereIsNoTerminal) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  {
    ProgressLine line(ends[1], "counting", Clock());
    Pass(milliseconds(5000));
    line.Update();
  }
  close(ends[1]);
  EXPECT_EQ(ReadToEnd(ends[0]), "");
  close(ends[0]);
}

}  // namespace
}  // namespace standalone
