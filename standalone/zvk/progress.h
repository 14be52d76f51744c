// The line that tells on a terminal that long work is still going on.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace standalone {

// Shows "WHAT, 12.3 s" in one line of a terminal once the work has taken a second, and takes it away at the end.
class ProgressLine {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  // The work starts now. Nothing is ever written if the descriptor is no terminal. `what` fits on a line.
  ProgressLine(int descriptor, std::string what, Clock clock = std::chrono::steady_clock::now);
  ProgressLine(const ProgressLine &) = delete;
  ProgressLine &operator=(const ProgressLine &) = delete;
  ~ProgressLine();

  // Brings the line up to date, ten times a second at most; to be called as often as one likes while the work goes on.
  void Update();

 private:
  void Write(const std::string &text) const;

  int descriptor_;
  bool isTerminal_;
  std::string what_;
  Clock clock_;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point shown_ = {};
  bool isShown_ = false;
};

}  // namespace standalone
