// What is compared: tasks of one library each, side by side in a row of the table.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/peers/view.h"

namespace zvk::peers {

// The time that a task has taken: of the processor in all threads of its process, and on the wall.
struct Seconds {
  double processor;
  double wall;
};

// A task with all its images, ready to be done again and again. `levels` are those of the last result, see TileLevels.
struct Task {
  std::function<Seconds()> run;
  std::function<std::vector<double>()> levels;
};

// Makes the images of a task, which live as long as the task.
using Preparation = std::function<Task()>;

// A task of this process.
Task TimedTask(std::function<void()> work, std::function<View()> result);

// A remark on a task that is not quite the one of the others.
struct Note {
  const char *text;
  bool comparable;  // true if it may still be the fastest of its row
};

inline constexpr Note kPlanes{"on planes; what it takes to make planes of pixels and pixels of planes is not counted",
                              true};
inline constexpr Note kAlphaWritten{"writes an alpha of 255, where ours leaves alpha alone", true};
inline constexpr Note kNoAntialias{"interpolates between neighbours, without antialiasing", false};
inline constexpr Note kSharperCubic{"the cubic of b = 0 and c = 1/2, which is as wide as Mitchell's", true};
inline constexpr Note kOtherKernel{"another kernel", false};
inline constexpr Note kCentres{"takes the pixel nearest to the centre, ours the one under the upper left corner",
                               false};
inline constexpr Note kOnePass{"one bilinear pass, ours three shears", true};
inline constexpr Note kFreshCopy{"into a new image, ours in place", false};

struct Contestant {
  std::string library;
  Preparation prepare;
  const Note *note = nullptr;
  std::string cpu = {};  // ours only: runs in a process of its own, with this as PICTUREZVK_CPU
};

enum class Clock : uint8_t { Processor, Wall };

// A row of the table. Ratios are the first contestant's time over that of each other one.
struct Row {
  std::string section;
  std::string name;
  std::vector<Contestant> contestants;
  Clock clock = Clock::Processor;
};

// All rows. `divisor` makes all images smaller, in both directions.
std::vector<Row> Rows(int32_t divisor);

}  // namespace zvk::peers
