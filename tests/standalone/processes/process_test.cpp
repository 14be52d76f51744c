#include "standalone/processes/process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <stdexcept>
#include <string>

#include "tests/standalone/processes/waiting.h"

namespace standalone {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr size_t kAll = 1000;

std::unique_ptr<Process> StartShell(const std::string &command) {
  return std::make_unique<Process>("/bin/sh", std::vector<std::string>{"sh", "-c", command});
}

std::unique_ptr<Process> RunShell(const std::string &command) {
  std::unique_ptr<Process> process = StartShell(command);
  AwaitThat([&] { return process->HasEnded(); });
  return process;
}

// The number that the process prints first.
pid_t AwaitNumber(const Process &process) {
  AwaitThat([&] { return process.Output().Tail(kAll).find('\n') != std::string::npos; });
  return std::stoi(process.Output().Tail(kAll));
}

TEST(ProcessTest, TellsHowAProgramHasEnded) {
  EXPECT_TRUE(RunShell("exit 0")->HasSucceeded());
  const auto failed = RunShell("exit 3");
  EXPECT_FALSE(failed->HasSucceeded());
  EXPECT_EQ(failed->EndInWords(), "exit code 3");
  const auto killed = RunShell("kill -9 $$");
  EXPECT_FALSE(killed->HasSucceeded());
  EXPECT_EQ(killed->EndInWords(), "killed by signal 9 (Killed)");
}

TEST(ProcessTest, HasNotEndedWhileItRuns) {
  const auto process = StartShell("sleep 600");
  EXPECT_FALSE(process->HasEnded());
}

TEST(ProcessTest, CollectsOutputAndErrorsApartAndGivesNoInput) {
  const auto process = RunShell("cat; echo one; echo two >&2; echo three");
  EXPECT_EQ(process->Output().Tail(kAll), "one\nthree\n");
  EXPECT_EQ(process->Errors().Tail(kAll), "two\n");
}

TEST(ProcessTest, IsInAGroupOfItsOwn) {
  const auto process = RunShell("cut -d' ' -f1,5 /proc/$$/stat");
  const std::string numbers = process->Output().Tail(kAll);
  const std::string id = numbers.substr(0, numbers.find(' '));
  EXPECT_EQ(numbers, id + " " + id + "\n");
}

TEST(ProcessTest, GetsTheSignalsThatItsMakerHasBlocked) {
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  ASSERT_EQ(sigprocmask(SIG_BLOCK, &blocked, nullptr), 0);
  EXPECT_EQ(RunShell("kill -TERM $$; sleep 600")->EndInWords(), "killed by signal 15 (Terminated)");
  ASSERT_EQ(sigprocmask(SIG_UNBLOCK, &blocked, nullptr), 0);
}

TEST(ProcessTest, DoesNotHoldTheStreamsOfOthers) {
  const auto other = StartShell("sleep 600");
  // Nameless files are those of the process itself.
  const auto process = RunShell("ls -l /proc/$$/fd | grep -c '(deleted)'");
  EXPECT_EQ(process->Output().Tail(kAll), "2\n");
}

TEST(ProcessTest, SendsSignalsToAllThatItHasStarted) {
  const auto process = StartShell("sleep 600 & echo $!; wait");
  const pid_t started = AwaitNumber(*process);
  process->Signal(SIGSTOP);
  AwaitThat([&] { return StateOfProcess(started) == 'T'; });
  process->Signal(SIGCONT);
  AwaitThat([&] { return StateOfProcess(started) != 'T'; });
  process->Signal(SIGTERM);
  AwaitThat([&] { return process->HasEnded() && IsOver(started); });
  EXPECT_EQ(process->EndInWords(), "killed by signal 15 (Terminated)");
}

TEST(ProcessTest, EndsWithAllThatItHasStartedWhenItIsDestroyed) {
  auto process = StartShell("sleep 600 & echo $!; wait");
  const pid_t started = AwaitNumber(*process);
  process.reset();
  AwaitThat([&] { return IsOver(started); });
}

TEST(ProcessTest, EndsWhenItIsDestroyedEvenIfItWouldNot) {
  auto deaf = StartShell("trap '' TERM; echo $$; while :; do sleep 0.1; done");
  const pid_t deafId = AwaitNumber(*deaf);
  deaf.reset();
  EXPECT_TRUE(IsOver(deafId));

  auto stopped = StartShell("echo $$; exec sleep 600");
  const pid_t stoppedId = AwaitNumber(*stopped);
  stopped->Signal(SIGSTOP);
  AwaitThat([&] { return StateOfProcess(stoppedId) == 'T'; });
  stopped.reset();
  EXPECT_TRUE(IsOver(stoppedId));
}

TEST(ProcessTest, TellsThatAProgramCannotBeStarted) {
  try {
    const Process process("/nowhere/program", {"program"});
    FAIL() << "it was started";
  } catch (const std::runtime_error &error) {
    EXPECT_THAT(error.what(), StartsWith("a process cannot be started (No such file or directory); "));
  }
}

}  // namespace
}  // namespace standalone
