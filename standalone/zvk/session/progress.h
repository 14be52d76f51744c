// The line that tells on a terminal how long work is going on.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace standalone {

// Shows one line of a terminal that tells how far the work is, and takes it away at the end. Nothing is ever written if
// the descriptor is no terminal. The work starts with the object.
class ProgressLine {
 public:
  // Tells the time, for the program by std::chrono::steady_clock::now.
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  // What the line says when the work has taken so many seconds.
  using Text = std::function<std::string(double seconds)>;

  // Shows "WHAT, 12.3 s", once the work has taken a second.
  ProgressLine(int descriptor, const std::string &what, Clock clock);

  // Shows the text from the first update on, as much of it as the terminal is wide.
  ProgressLine(int descriptor, Text text, Clock clock);

  ProgressLine(const ProgressLine &) = delete;
  ProgressLine &operator=(const ProgressLine &) = delete;
  ~ProgressLine();

  // Brings the line up to date, ten times a second at most; to be called as often as one likes while the work goes on.
  void Update();

  // Takes the line away, for something else to be written; the next update shows it again.
  void Hide();

 private:
  ProgressLine(int descriptor, Text text, std::chrono::seconds patience, Clock clock);

  void Write(const std::string &text) const;

  int descriptor_;
  bool isTerminal_;
  Text text_;
  std::chrono::seconds patience_;
  Clock clock_;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point shown_ = {};
  bool isShown_ = false;
};

}  // namespace standalone
