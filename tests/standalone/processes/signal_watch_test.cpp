#include "standalone/processes/signal_watch.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>

namespace standalone {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kNoTime{0};
constexpr std::chrono::hours kLong{1};

// Tests may run where a shell has ignored signals of the terminal.
class Signals : public testing::Test {
 protected:
  Signals() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGPIPE}) std::signal(number, SIG_DFL);
  }
};

TEST_F(Signals, AreTakenOneByOne) {
  const SignalWatch signals;
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
    raise(number);
    EXPECT_EQ(signals.Wait(kLong), number);
  }
  EXPECT_EQ(signals.Wait(kNoTime), 0);
}

TEST_F(Signals, AreNotAwaitedForever) {
  const SignalWatch signals;
  EXPECT_EQ(signals.Wait(milliseconds(1)), 0);
}

TEST_F(Signals, TellOfTheEndOfAProcessEvenWhereThatWasIgnored) {
  std::signal(SIGCHLD, SIG_IGN);
  const SignalWatch signals;
  const pid_t process = fork();
  if (process == 0) _exit(5);
  EXPECT_EQ(signals.Wait(kLong), SIGCHLD);
  int status = 0;
  EXPECT_EQ(waitpid(process, &status, 0), process);
  EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST_F(Signals, StayIgnoredWhereTheyAre) {
  std::signal(SIGHUP, SIG_IGN);
  const SignalWatch signals;
  raise(SIGHUP);
  EXPECT_EQ(signals.Wait(kNoTime), 0);
}

TEST_F(Signals, HaveTheirEffectAtTheEndIfTheyWerePutBackOrNotTaken) {
  EXPECT_EXIT(
      {
        const SignalWatch signals;
        raise(SIGINT);
        signals.PutBack(signals.Wait(kLong));
      },
      testing::KilledBySignal(SIGINT), "");
  EXPECT_EXIT(
      {
        const SignalWatch signals;
        raise(SIGTERM);
      },
      testing::KilledBySignal(SIGTERM), "");
}

TEST_F(Signals, OfABrokenPipeAreErrorsUntilTheEnd) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  EXPECT_EXIT(
      {
        const SignalWatch signals;
        if (write(ends[1], "x", 1) != -1 || errno != EPIPE || signals.Wait(kNoTime) != 0) _exit(1);
      },
      testing::KilledBySignal(SIGPIPE), "");
  close(ends[1]);
}

}  // namespace
}  // namespace standalone
