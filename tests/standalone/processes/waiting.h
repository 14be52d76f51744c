// Waiting in tests for what other processes do: until it is done, and not for a time.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>

namespace standalone {

inline void AwaitThat(const std::function<bool()> &isSo) {
  while (!isSo()) usleep(1000);
}

// The letter of the process's state (R, S, T, Z ...); 0 if there is no such process.
inline char StateOfProcess(pid_t id) {
  std::ifstream file("/proc/" + std::to_string(id) + "/stat");
  std::string text;
  std::getline(file, text);
  const size_t nameEnd = text.rfind(')');
  return nameEnd == std::string::npos ? '\0' : text[nameEnd + 2];
}

// True if it neither runs nor will.
inline bool IsOver(pid_t id) {
  const char state = StateOfProcess(id);
  return state == '\0' || state == 'Z' || state == 'X';
}

}  // namespace standalone
