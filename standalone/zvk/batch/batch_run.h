// A batch at work: a process for each file, several at a time.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "standalone/processes/signal_watch.h"
#include "standalone/zvk/batch/batch_plan.h"
#include "standalone/zvk/session/progress.h"

namespace standalone {

struct BatchSettings {
  std::string program;  // the path of zvk
  std::string script;
  std::vector<std::string> options;    // of `zvk run`, before the script
  std::vector<std::string> arguments;  // of the script, after input and output
  size_t processes;                    // at a time, 1 or more
  ProgressLine::Clock clock;
};

struct BatchFailure {
  const BatchJob *job;
  std::string reason;  // in one line
  std::string errors;  // what the process wrote to its standard error stream, the end of it if it is long
};

struct BatchResult {
  size_t done = 0;
  std::vector<BatchFailure> failures;  // in the order of the jobs
  int signal = 0;                      // that has ended it early
};

// Works on all jobs, in their order, each by `zvk run` in a process of its own: arg[1] is the input, arg[2] the output,
// if there is one. An output appears whole, when its script has ended well, or not at all. What the processes write
// goes to the standard streams when each ends, the errors of those that fail excepted. A terminal shows how far it all
// is. Throws std::runtime_error if processes cannot be had, or what they write cannot be passed on.
BatchResult RunBatch(const BatchSettings &settings, const std::vector<BatchJob> &jobs, const SignalWatch &signals);

}  // namespace standalone
