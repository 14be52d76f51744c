// What the program says to whoever runs it by the number that it ends with.
#pragma once

namespace standalone {

enum ExitCode : int {
  kDone = 0,
  kWorkFailed = 1,
  kWrongCommandLine = 2,
};

}  // namespace standalone
