// What the two ways of scaling a file, in memory and through temporary files, have in common.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "standalone/binding/value.h"
#include "standalone/files/orientation.h"
#include "standalone/zvk/arguments/size_argument.h"
#include "standalone/zvk/session/plugin_session.h"
#include "standalone/zvk/session/progress.h"

namespace standalone {

// A command line that has been understood.
struct ScaleJob {
  std::string input;
  std::string output;
  SizeArgument size;
  int32_t filter;
  std::optional<int32_t> threads;  // empty: the method for one thread
  bool isFast;                     // nearest pixels, with neither filter nor threads
  std::optional<int32_t> format;   // of the result; if it is not told, RGB, or RGBA for transparent pixels
  std::string formatName;
  uint32_t background;
  Orient orient;
  ProgressLine::Clock clock;
};

// The format of the result, by whether there is alpha to be scaled.
int32_t ResultFormat(const PluginSession &session, const ScaleJob &job, bool hasAlpha);

constexpr int32_t kMillisecondsBetweenYields = 100;

// True if an image has a format that colours can be scaled into.
bool CanBeScaledInto(const Value &image);

// Throws std::runtime_error if the result has a format that colours cannot be scaled into, or not that fast.
void RefuseUnsuitable(const Value &result, const ScaleJob &job);

// Eight bits of gray go to the byte at the gray offset. Of a 16-bit sample that must be the high one, the second: while
// this object lives, the result's gray is that byte.
class HighByteOfGray {
 public:
  explicit HighByteOfGray(const Value &result);
  HighByteOfGray(const HighByteOfGray &) = delete;
  HighByteOfGray &operator=(const HighByteOfGray &) = delete;
  ~HighByteOfGray();

 private:
  const Value &result_;
  bool isWide_;
};

// The whole result from the whole source, by the method that the job asks for: if not fast, by way of a temp image, or
// of one of the plug-in's own if it is nil. False if the plug-in refuses.
bool ScaleWhole(const Value &source, const Value &temp, const Value &result, const ScaleJob &job);

}  // namespace standalone
