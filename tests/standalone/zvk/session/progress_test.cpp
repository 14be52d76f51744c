#include "standalone/zvk/session/progress.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/ioctl.h>
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

TEST_F(Progress, ShowsATextOfItsOwnAtOnce) {
  ProgressLine line(
      terminal_, [](double seconds) { return std::to_string(static_cast<int>(seconds * 10)); }, Clock());
  Pass(milliseconds(200));
  line.Update();
  Pass(milliseconds(99));
  line.Update();
  Pass(milliseconds(1));
  line.Update();
  EXPECT_EQ(Written(), "\r\x1b[K2\r\x1b[K3");
}

TEST_F(Progress, IsHiddenUntilTheNextUpdate) {
  ProgressLine line(
      terminal_, [](double) { return "text"; }, Clock());
  line.Hide();
  line.Update();
  line.Hide();
  line.Hide();
  line.Update();
  EXPECT_EQ(Written(), "\r\x1b[Ktext\r\x1b[K\r\x1b[Ktext");
}

TEST_F(Progress, IsCutWhereTheTerminalEnds) {
  const winsize size = {.ws_row = 24, .ws_col = 6, .ws_xpixel = 0, .ws_ypixel = 0};
  ASSERT_EQ(ioctl(terminal_, TIOCSWINSZ, &size), 0);
  std::string text = "01234";
  ProgressLine line(
      terminal_, [&](double) { return text; }, Clock());
  line.Update();
  line.Hide();
  text = "012345";
  line.Update();
  EXPECT_EQ(Written(), "\r\x1b[K01234\r\x1b[K\r\x1b[K01234");
}

TEST_F(Progress, ShowsNothingWhereThereIsNoTerminal) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  {
    ProgressLine line(ends[1], "counting", Clock());
    ProgressLine other(
        ends[1], [](double) { return "text"; }, Clock());
    Pass(milliseconds(5000));
    line.Update();
    other.Update();
    other.Hide();
  }
  close(ends[1]);
  EXPECT_EQ(ReadToEnd(ends[0]), "");
  close(ends[0]);
}

}  // namespace
}  // namespace standalone
