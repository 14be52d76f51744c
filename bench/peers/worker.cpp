#include "bench/peers/worker.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "standalone/runtime/standard_input.h"

namespace zvk::peers {
namespace {

// False at the end of the stream.
bool ReadLine(std::FILE *stream, std::string *line) {
  line->clear();
  int c = std::fgetc(stream);
  for (; c != '\n' && c != EOF; c = std::fgetc(stream)) *line += static_cast<char>(c);
  return c != EOF;
}

}  // namespace

Worker::Worker(std::vector<std::string> words) : name_(words.front()) {
  std::array<int, 2> in{}, out{};
  if (pipe2(in.data(), O_CLOEXEC) != 0 || pipe2(out.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe to " + name_);
  }
  toWorker_.reset(fdopen(in[1], "w"));
  fromWorker_.reset(fdopen(out[0], "r"));

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  std::vector<char *> arguments;
  for (std::string &word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const int error = posix_spawnp(&id_, words.front().c_str(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  if (error != 0) throw std::runtime_error("cannot start " + name_);
}

Worker::~Worker() {
  toWorker_.reset();
  waitpid(id_, nullptr, 0);
}

Task Worker::Prepare(const std::string &words, std::span<const uint8_t> pixels) {
  if (Ask("prepare " + words, pixels) != "ready") throw std::runtime_error(name_ + " cannot do " + words);
  return {[this] {
            Seconds seconds{};
            std::istringstream(Ask("run")) >> seconds.processor >> seconds.wall;
            return seconds;
          },
          [this] {
            std::istringstream answer(Ask("levels"));
            return std::vector<double>(std::istream_iterator<double>(answer), {});
          }};
}

std::string Worker::Ask(const std::string &line, std::span<const uint8_t> pixels) {
  std::fprintf(toWorker_.get(), "%s\n", line.c_str());
  std::fwrite(pixels.data(), 1, pixels.size(), toWorker_.get());
  std::fflush(toWorker_.get());
  std::string answer;
  if (!ReadLine(fromWorker_.get(), &answer)) throw std::runtime_error(name_ + " has ended early");
  return answer;
}

void Work(const std::function<Task(const std::string &words)> &prepare) {
  const standalone::StandardInput input;
  const Stream lines(fdopen(dup(input.Descriptor()), "r"));
  const std::string prefix = "prepare ";
  Task task;
  for (std::string line; ReadLine(lines.get(), &line);) {
    if (line.starts_with(prefix)) {
      task = {};
      task = prepare(line.substr(prefix.size()));
      std::cout << "ready";
    } else if (line == "run") {
      const Seconds seconds = task.run();
      std::cout << seconds.processor << ' ' << seconds.wall;
    } else {
      for (const double level : task.levels()) std::cout << level << ' ';
    }
    std::cout << std::endl;
  }
}

}  // namespace zvk::peers
