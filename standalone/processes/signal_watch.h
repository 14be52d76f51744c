// Signals taken where the program is ready for them, so that it can tidy up before it ends.
#pragma once

#include <chrono>
#include <csignal>

namespace standalone {

// Holds back, as long as it lives, the signals that ask the program to end or to stop (of those that are not ignored),
// the one of a broken pipe, and those that tell of the end of a process. Signals that came and were not taken by then
// have their effect at its end.
class SignalWatch {
 public:
  SignalWatch();
  SignalWatch(const SignalWatch &) = delete;
  SignalWatch &operator=(const SignalWatch &) = delete;
  ~SignalWatch();

  // Waits until a signal comes, or the time is over. Takes a signal and gives its number; 0 if there was none.
  int Wait(std::chrono::milliseconds longest) const;

  // Makes a signal that has been taken have its effect at the end after all.
  void PutBack(int number) const;

 private:
  sigset_t awaited_;
  sigset_t before_;
};

}  // namespace standalone
