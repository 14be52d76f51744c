// The program's command line in a process of the test's, with a clock of the test's.
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <exception>
#include <string>
#include <vector>

#include "standalone/zvk/program.h"
#include "standalone/zvk/session/messages.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {

// Moves on by a second each time it is asked.
inline ProgressLine::Clock HurryingClock() {
  return [now = std::chrono::steady_clock::time_point()]() mutable { return now += std::chrono::seconds(1); };
}

inline ProgressLine::Clock StandingClock() {
  return [] { return std::chrono::steady_clock::time_point(); };
}

// What the program does, given the arguments (whose first is a command that uses the plug-in) and the clock.
inline std::function<int()> WorkOf(std::vector<std::string> arguments, const ProgressLine::Clock &clock) {
  arguments.insert(arguments.end(), {"--plugin", PICTUREZVK_LIBRARY});
  return [arguments, clock] {
    try {
      // The last one is taken first.
      MakeProgram(clock)->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const std::exception &error) {
      PrintMessage(error.what());
      return 1;
    }
    return 0;
  };
}

}  // namespace standalone
