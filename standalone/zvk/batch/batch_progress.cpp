#include "standalone/zvk/batch/batch_progress.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace standalone {
namespace {

constexpr size_t kCells = 20;

// In the unit of time in which it is 1 or more, if there is one.
std::string RateText(double aSecond) {
  struct Unit {
    const char *name;
    double seconds;
  };
  constexpr Unit kUnits[] = {{"a second", 1}, {"a minute", 60}, {"an hour", 3600}};
  const Unit *unit = kUnits;
  while (unit != std::end(kUnits) - 1 && aSecond * unit->seconds < 1) ++unit;
  char text[64];
  std::snprintf(text, sizeof text, "%.1f %s", aSecond * unit->seconds, unit->name);
  return text;
}

// In the two largest units that are needed.
std::string TimeText(double time) {
  const auto seconds = static_cast<int64_t>(std::ceil(time));
  const std::string minutes = std::to_string(seconds / 60 % 60) + " min";
  if (seconds >= 3600) return std::to_string(seconds / 3600) + " h " + minutes;
  const std::string rest = std::to_string(seconds % 60) + " s";
  return seconds >= 60 ? minutes + " " + rest : rest;
}

}  // namespace

std::string BatchProgress(size_t ended, size_t failed, size_t total, double seconds) {
  const size_t filled = total == 0 ? kCells : ended * kCells / total;
  std::string text = "[" + std::string(filled, '#') + std::string(kCells - filled, '-') + "] " + std::to_string(ended) +
                     " of " + std::to_string(total);
  if (failed > 0) text += ", " + std::to_string(failed) + " failed";
  if (ended > 0 && seconds > 0) {
    const double rate = static_cast<double>(ended) / seconds;
    text += ", " + RateText(rate) + ", " + TimeText(static_cast<double>(total - ended) / rate) + " left";
  }
  return text;
}

}  // namespace standalone
