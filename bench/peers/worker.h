// A process that does tasks when it is told to. It reads lines and answers each with one:
//   "prepare ...", with the pixels behind it if the words promise some: "ready"
//   "run": seconds of the processor and of the wall
//   "levels": those of the result, see TileLevels
#pragma once

#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "bench/peers/contest.h"

namespace zvk::peers {

struct StreamCloser {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

class Worker {
 public:
  // The program is looked for in PATH. Throws std::runtime_error if it cannot be started. It ends at the end of its
  // input, which is the end of this process.
  explicit Worker(std::vector<std::string> words);
  Worker(const Worker &) = delete;
  Worker &operator=(const Worker &) = delete;
  ~Worker();

  // The task that the words describe; the worker has one at a time. Throws std::runtime_error if it fails.
  Task Prepare(const std::string &words, std::span<const uint8_t> pixels = {});

  // What the worker answers. Throws std::runtime_error if it has ended.
  std::string Ask(const std::string &line, std::span<const uint8_t> pixels = {});

 private:
  std::string name_;
  pid_t id_;
  Stream toWorker_;
  Stream fromWorker_;
};

// The other side, on standard input and output, until the input ends; descriptor 0 may be closed by a task. What
// follows "prepare " is for `prepare`.
void Work(const std::function<Task(const std::string &words)> &prepare);

}  // namespace zvk::peers
