// What a batch is to do: which files, and which file is made from each.
#pragma once

#include <string>
#include <vector>

namespace standalone {

// A script's work on one file.
struct BatchJob {
  std::string input;
  std::string output;  // empty: none that is known

  bool operator==(const BatchJob &) const = default;
};

// The paths in a file, or in the standard input for "-": one a line, or separated by zero bytes if there is any. Throws
// std::runtime_error if it cannot be read.
std::vector<std::string> ReadFileList(const std::string &path);

// A job for each input, with its output by the pattern, if there is one. Throws UsageError if two outputs are the same
// file, or one is a folder, an input or the script, whichever way their paths are written.
std::vector<BatchJob> PlanJobs(const std::vector<std::string> &inputs, const std::string &outputPattern,
                               const std::string &script);

// True if the output is a file that is newer than both the input and the script.
bool IsUpToDate(const BatchJob &job, const std::string &script);

}  // namespace standalone
