#include "standalone/zvk/batch/batch_run.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <list>
#include <memory>
#include <optional>
#include <utility>

#include "standalone/files/file_error.h"
#include "standalone/files/part_folder.h"
#include "standalone/processes/process.h"
#include "standalone/zvk/batch/batch_progress.h"

namespace standalone {
namespace {

constexpr std::chrono::milliseconds kBetweenUpdates{100};
constexpr size_t kMostErrorBytes = 8192;

// What tells a file from an earlier state of it.
struct FileState {
  dev_t device;
  ino_t number;
  off_t size;
  int64_t seconds;
  int64_t nanoseconds;

  bool operator==(const FileState &) const = default;
};

std::optional<FileState> StateOf(const std::string &path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return {};
  return FileState{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

// The job whose process is running. Its folder goes after the process that may still write there.
struct Running {
  const BatchJob &job;
  std::optional<FileState> inputState;
  std::optional<FileState> scriptState;
  std::unique_ptr<PartFolder> place;  // of the output, if there is one
  std::unique_ptr<Process> process;
};

// Messages of files begin with their names, which here stand before the reason anyway.
std::string WithoutName(const std::string &message, const std::string &name) {
  const std::string start = name + ": ";
  return message.rfind(start, 0) == 0 ? message.substr(start.size()) : message;
}

class Batch {
 public:
  Batch(const BatchSettings &settings, const std::vector<BatchJob> &jobs, const SignalWatch &signals)
      : settings_(settings), jobs_(jobs), signals_(signals) {}

  BatchResult Run() {
    while (result_.signal == 0 && (next_ < jobs_.size() || !running_.empty())) {
      while (running_.size() < settings_.processes && next_ < jobs_.size()) Start(jobs_[next_++]);
      line_.Update();
      const int signal = running_.empty() ? 0 : signals_.Wait(kBetweenUpdates);
      TakeEnded();
      if (signal == SIGTSTP) {
        Pause();
      } else if (signal != SIGCHLD) {
        result_.signal = signal;
      }
    }
    // All at once, before each is waited for.
    for (const Running &running : running_) running.process->Signal(SIGTERM);
    // All jobs are in one array.
    std::sort(result_.failures.begin(), result_.failures.end(),
              [](const BatchFailure &one, const BatchFailure &other) { return one.job < other.job; });
    return std::move(result_);
  }

 private:
  void Start(const BatchJob &job) {
    try {
      SizeOfFile(job.input);
      Running running = {job, StateOf(job.input), StateOf(settings_.script), nullptr, nullptr};
      std::vector<std::string> words = {"zvk", "run"};
      words.insert(words.end(), settings_.options.begin(), settings_.options.end());
      words.insert(words.end(), {settings_.script, job.input});
      if (!job.output.empty()) {
        running.place = std::make_unique<PartFolder>(job.output);
        words.push_back(running.place->FilePath());
      }
      words.insert(words.end(), settings_.arguments.begin(), settings_.arguments.end());
      running.process = std::make_unique<Process>(settings_.program, words);
      running_.push_back(std::move(running));
    } catch (const ImageFileError &error) {
      result_.failures.push_back({&job, WithoutName(error.what(), job.input), ""});
    }
  }

  void TakeEnded() {
    for (auto running = running_.begin(); running != running_.end();) {
      if (running->process->HasEnded()) {
        Finish(*running);
        running = running_.erase(running);
      } else {
        ++running;
      }
    }
  }

  void Finish(const Running &running) {
    PassOn(running.process->Output(), STDOUT_FILENO);
    std::string problem = ProblemOf(running);
    if (problem.empty()) {
      PassOn(running.process->Errors(), STDERR_FILENO);
      ++result_.done;
    } else {
      result_.failures.push_back({&running.job, std::move(problem), running.process->Errors().Tail(kMostErrorBytes)});
    }
  }

  void PassOn(const CapturedStream &stream, int descriptor) {
    if (stream.IsEmpty()) return;
    line_.Hide();
    stream.CopyTo(descriptor);
  }

  // Puts the output in its place; why not, if it cannot.
  std::string ProblemOf(const Running &running) const {
    if (!running.process->HasSucceeded()) return running.process->EndInWords();
    if (running.place == nullptr) return "";
    if (!running.place->HasFile()) return "the script ended well without an output; let it write to arg[2]";
    // Its output would be newer than what it was not made from.
    const bool isSame =
        StateOf(running.job.input) == running.inputState && StateOf(settings_.script) == running.scriptState;
    if (!isSame) return "the file or the script was changed meanwhile; run it again with --resume";
    try {
      running.place->Commit();
    } catch (const ImageFileError &error) {
      return error.what();
    }
    return "";
  }

  // Stops with all that is running, and goes on with it.
  void Pause() {
    line_.Hide();
    for (const Running &running : running_) running.process->Signal(SIGSTOP);
    raise(SIGSTOP);
    for (const Running &running : running_) running.process->Signal(SIGCONT);
  }

  const BatchSettings &settings_;
  const std::vector<BatchJob> &jobs_;
  const SignalWatch &signals_;
  size_t next_ = 0;
  std::list<Running> running_;
  BatchResult result_;
  ProgressLine line_{STDERR_FILENO,
                     [this](double seconds) {
                       const size_t failed = result_.failures.size();
                       return BatchProgress(result_.done + failed, failed, jobs_.size(), seconds);
                     },
                     settings_.clock};
};

}  // namespace

BatchResult RunBatch(const BatchSettings &settings, const std::vector<BatchJob> &jobs, const SignalWatch &signals) {
  return Batch(settings, jobs, signals).Run();
}

}  // namespace standalone
