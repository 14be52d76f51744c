#include "standalone/processes/signal_watch.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>

namespace standalone {
namespace {

bool IsIgnored(int number) {
  struct sigaction action = {};
  sigaction(number, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

}  // namespace

SignalWatch::SignalWatch() {
  sigemptyset(&awaited_);
  sigaddset(&awaited_, SIGCHLD);
  // Even those that are ignored come to who waits for them: a program that is to outlive its terminal must not.
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
    if (!IsIgnored(number)) sigaddset(&awaited_, number);
  }
  // Where the end of processes is ignored, the system forgets how they ended.
  std::signal(SIGCHLD, SIG_DFL);
  sigset_t blocked = awaited_;
  sigaddset(&blocked, SIGPIPE);
  sigprocmask(SIG_BLOCK, &blocked, &before_);
}

SignalWatch::~SignalWatch() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

int SignalWatch::Wait(std::chrono::milliseconds longest) const {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
  const timespec time = {.tv_sec = seconds.count(), .tv_nsec = std::chrono::nanoseconds(longest - seconds).count()};
  return std::max(0, sigtimedwait(&awaited_, nullptr, &time));
}

void SignalWatch::PutBack(int number) const { kill(getpid(), number); }

}  // namespace standalone
