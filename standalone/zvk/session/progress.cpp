#include "standalone/zvk/session/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

namespace standalone {
namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kPause{100};
constexpr char kStartOfClearLine[] = "\r\x1b[K";

std::string WithElapsedTime(const std::string &what, double seconds) {
  char time[32];
  std::snprintf(time, sizeof time, ", %.1f s", seconds);
  return what + time;
}

// As much of the text as fits on a line without the terminal going on to the next.
std::string Fitted(std::string text, int terminal) {
  winsize size = {};
  if (ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && text.size() >= size.ws_col) {
    text.resize(size.ws_col - size_t{1});
  }
  return text;
}

}  // namespace

ProgressLine::ProgressLine(int descriptor, Text text, std::chrono::seconds patience, Clock clock)
    : descriptor_(descriptor),
      isTerminal_(isatty(descriptor) == 1),
      text_(std::move(text)),
      patience_(patience),
      clock_(std::move(clock)),
      start_(clock_()) {}

ProgressLine::ProgressLine(int descriptor, const std::string &what, Clock clock)
    : ProgressLine(
          descriptor, [what](double seconds) { return WithElapsedTime(what, seconds); }, kPatience, std::move(clock)) {}

ProgressLine::ProgressLine(int descriptor, Text text, Clock clock)
    : ProgressLine(descriptor, std::move(text), std::chrono::seconds(0), std::move(clock)) {}

ProgressLine::~ProgressLine() { Hide(); }

void ProgressLine::Update() {
  if (!isTerminal_) return;
  const std::chrono::steady_clock::time_point now = clock_();
  const std::chrono::duration<double> elapsed = now - start_;
  if (elapsed < patience_ || (isShown_ && now - shown_ < kPause)) return;
  Write(kStartOfClearLine + Fitted(text_(elapsed.count()), descriptor_));
  isShown_ = true;
  shown_ = now;
}

void ProgressLine::Hide() {
  if (std::exchange(isShown_, false)) Write(kStartOfClearLine);
}

void ProgressLine::Write(const std::string &text) const {
  // A line that cannot be shown is no reason to stop the work.
  [[maybe_unused]] const ssize_t written = write(descriptor_, text.data(), text.size());
}

}  // namespace standalone
