#include "standalone/zvk/progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace standalone {
namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kPause{100};
constexpr char kStartOfClearLine[] = "\r\x1b[K";

}  // namespace

ProgressLine::ProgressLine(int descriptor, std::string what, Clock clock)
    : descriptor_(descriptor),
      isTerminal_(isatty(descriptor) == 1),
      what_(std::move(what)),
      clock_(std::move(clock)),
      start_(clock_()) {}

ProgressLine::~ProgressLine() {
  if (isShown_) Write(kStartOfClearLine);
}

void ProgressLine::Update() {
  if (!isTerminal_) return;
  const std::chrono::steady_clock::time_point now = clock_();
  const std::chrono::duration<double> elapsed = now - start_;
  if (elapsed < kPatience || (isShown_ && now - shown_ < kPause)) return;
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, ", %.1f s", elapsed.count());
  Write(kStartOfClearLine + what_ + seconds);
  isShown_ = true;
  shown_ = now;
}

void ProgressLine::Write(const std::string &text) const {
  // A line that cannot be shown is no reason to stop the work.
  [[maybe_unused]] const ssize_t written = write(descriptor_, text.data(), text.size());
}

}  // namespace standalone
