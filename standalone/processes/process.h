// A program that runs beside this one.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "standalone/processes/captured_stream.h"

namespace standalone {

// Starts a program in a process group of its own, so that signals of the terminal do not reach it, with no input, and
// with its output and its errors collected. Ends it, and all that it has started, when it is destroyed before its end.
class Process {
 public:
  // `words` are the program's arguments from its own name on. Throws std::runtime_error if it cannot be started.
  Process(const std::string &program, const std::vector<std::string> &words);
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;
  ~Process();

  // True once the program has ended; does not wait.
  bool HasEnded();

  // Sends a signal to the program, if it has not ended, and to all that it has started.
  void Signal(int number) const;

  // Of a program that has ended: true if its exit code was 0, and the end in words: "exit code 1", "killed by signal 9
  // (Killed)".
  bool HasSucceeded() const { return status_ == 0; }
  std::string EndInWords() const;

  const CapturedStream &Output() const { return output_; }
  const CapturedStream &Errors() const { return errors_; }

 private:
  CapturedStream output_;
  CapturedStream errors_;
  pid_t id_ = 0;
  bool hasEnded_ = false;
  int status_ = 0;
};

}  // namespace standalone
