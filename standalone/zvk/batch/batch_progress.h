// How far a batch is, in a line for a terminal.
#pragma once

#include <cstddef>
#include <string>

namespace standalone {

// So many of the files have ended, some of them have failed, after so many seconds: "[#####---------------] 10 of 40, 1
// failed, 2.5 a second, 12 s left". Rate and time left are told once a file has ended; the rate is the mean so far.
std::string BatchProgress(size_t ended, size_t failed, size_t total, double seconds);

}  // namespace standalone
