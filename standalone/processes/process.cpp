#include "standalone/processes/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace standalone {
namespace {

constexpr std::chrono::milliseconds kPause{10};
constexpr int kPausesBeforeKilling = 200;  // 2 seconds in all

// How a process is to be started, for posix_spawn.
class SpawnSettings {
 public:
  SpawnSettings(int output, int errors) {
    Check(posix_spawn_file_actions_init(&actions));
    Check(posix_spawnattr_init(&attributes));
    Check(posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
    Check(posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO));
    Check(posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO));
    // The caller may have blocked signals that are to end a program.
    sigset_t none;
    sigemptyset(&none);
    Check(posix_spawnattr_setsigmask(&attributes, &none));
    Check(posix_spawnattr_setpgroup(&attributes, 0));
    Check(posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP));
  }
  SpawnSettings(const SpawnSettings &) = delete;
  SpawnSettings &operator=(const SpawnSettings &) = delete;
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }

  static void Check(int error) {
    if (error == 0) return;
    throw std::runtime_error("a process cannot be started (" + std::generic_category().message(error) +
                             "); start fewer at a time");
  }

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

}  // namespace

Process::Process(const std::string &program, const std::vector<std::string> &words) {
  const SpawnSettings settings(output_.Descriptor(), errors_.Descriptor());
  std::vector<char *> arguments;
  for (const std::string &word : words) arguments.push_back(const_cast<char *>(word.c_str()));
  arguments.push_back(nullptr);
  SpawnSettings::Check(
      posix_spawn(&id_, program.c_str(), &settings.actions, &settings.attributes, arguments.data(), environ));
}

Process::~Process() {
  if (hasEnded_) return;
  Signal(SIGTERM);
  Signal(SIGCONT);  // should it have been stopped
  siginfo_t end = {};
  for (int i = 0; i < kPausesBeforeKilling && end.si_pid == 0; ++i) {
    // Not taken from the system yet: until then nobody else can get the number of the group.
    waitid(P_PID, static_cast<id_t>(id_), &end, WEXITED | WNOHANG | WNOWAIT);
    if (end.si_pid == 0) std::this_thread::sleep_for(kPause);
  }
  Signal(SIGKILL);
  waitpid(id_, &status_, 0);
}

bool Process::HasEnded() {
  if (!hasEnded_) hasEnded_ = waitpid(id_, &status_, WNOHANG) == id_;
  return hasEnded_;
}

void Process::Signal(int number) const {
  if (!hasEnded_) kill(-id_, number);
}

std::string Process::EndInWords() const {
  if (WIFEXITED(status_)) return "exit code " + std::to_string(WEXITSTATUS(status_));
  const int number = WTERMSIG(status_);
  const char *const name = sigdescr_np(number);
  return "killed by signal " + std::to_string(number) + (name == nullptr ? "" : " (" + std::string(name) + ")");
}

}  // namespace standalone
