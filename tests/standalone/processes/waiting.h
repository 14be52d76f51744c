// Waiting in tests for what other processes do: until it is done, and not for a time.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>

namespace standalone {

inline void AwaitThat(const std::function<bool()> &isSo) {
  while (!isSo()) usleep(1000);
}

// What the system tells of a process behind its name: the letter of its state, a space, the number of its parent ...;
// empty if there is no such process.
inline std::string StatusOfProcess(pid_t id) {
  std::ifstream file("/proc/" + std::to_string(id) + "/stat");
  std::string text;
  std::getline(file, text);
  const size_t nameEnd = text.rfind(')');
  return nameEnd == std::string::npos ? "" : text.substr(nameEnd + 2);
}

// The letter of the process's state (R, S, T, Z ...); 0 if there is no such process.
inline char StateOfProcess(pid_t id) { return StatusOfProcess(id).c_str()[0]; }

// The processes that a process has started and that it has not been told the end of.
inline std::set<pid_t> ChildrenOf(pid_t parent) {
  std::set<pid_t> children;
  for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    const std::string status = StatusOfProcess(std::stoi(name));
    if (!status.empty() && std::stoi(status.substr(1)) == parent) children.insert(std::stoi(name));
  }
  return children;
}

// A file that other programs wait at: whoever opens it for reading goes on when it is open here, or when somebody opens
// it for writing.
class Gate {
 public:
  explicit Gate(const std::string &path) : path_(path) { EXPECT_EQ(mkfifo(path.c_str(), 0600), 0); }
  Gate(const Gate &) = delete;
  Gate &operator=(const Gate &) = delete;
  ~Gate() {
    if (descriptor_ >= 0) close(descriptor_);
    unlink(path_.c_str());
  }

  void Open() {
    descriptor_ = open(path_.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_GE(descriptor_, 0);
  }

 private:
  std::string path_;
  int descriptor_ = -1;
};

// True if it neither runs nor will.
inline bool IsOver(pid_t id) {
  const char state = StateOfProcess(id);
  return state == '\0' || state == 'Z' || state == 'X';
}

}  // namespace standalone
