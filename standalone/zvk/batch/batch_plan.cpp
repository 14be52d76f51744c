#include "standalone/zvk/batch/batch_plan.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <system_error>

#include "standalone/files/file_error.h"
#include "standalone/zvk/batch/output_pattern.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(std::istream &stream) {
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string ReadWhole(const std::string &path) {
  if (path == "-") return ReadAll(std::cin);
  std::error_code error;
  if (fs::is_directory(path, error)) throw std::runtime_error(path + ": is a folder; name a file with paths in it");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + ": cannot be read (" + SystemError(errno) + "); check the path");
  return ReadAll(file);
}

// One spelling for each file, be it there or not.
std::string Canonical(const std::string &path) {
  std::error_code error;
  const fs::path canonical = fs::weakly_canonical(fs::absolute(path, error), error);
  return error ? path : canonical.string();
}

void RefuseFolder(const BatchJob &job) {
  std::error_code error;
  if (fs::path(job.output).has_filename() && !fs::is_directory(job.output, error)) return;
  throw UsageError("the output of " + job.input + " is the folder '" + job.output + "'; name a file in it, such as '" +
                   (fs::path(job.output) / "{name}.png").string() + "'");
}

}  // namespace

std::vector<std::string> ReadFileList(const std::string &path) {
  const std::string text = ReadWhole(path);
  const char separator = text.find('\0') == std::string::npos ? '\n' : '\0';
  std::vector<std::string> files;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find(separator, start), text.size());
    if (end > start) files.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return files;
}

std::vector<BatchJob> PlanJobs(const std::vector<std::string> &inputs, const std::string &outputPattern,
                               const std::string &script) {
  std::vector<BatchJob> jobs;
  if (outputPattern.empty()) {
    for (const std::string &input : inputs) jobs.push_back({input, ""});
    return jobs;
  }
  std::map<std::string, std::string> read = {{Canonical(script), "the script"}};
  for (const std::string &input : inputs) read.emplace(Canonical(input), "the file " + input);
  std::map<std::string, std::string> made;
  for (const std::string &input : inputs) {
    const BatchJob job = {input, FillOutputPattern(outputPattern, input)};
    RefuseFolder(job);
    const std::string output = Canonical(job.output);
    if (const auto same = read.find(output); same != read.end()) {
      throw UsageError("the output of " + input + " is " + same->second + "; name another one with --output");
    }
    if (const auto [same, isNew] = made.emplace(output, input); !isNew) {
      if (same->second == input) throw UsageError("the file " + input + " is given twice; name it once");
      throw UsageError("the outputs of " + same->second + " and " + input + " are both " + job.output +
                       "; tell them apart in --output, by {extension} or {folder}, say");
    }
    jobs.push_back(job);
  }
  return jobs;
}

bool IsUpToDate(const BatchJob &job, const std::string &script) {
  std::error_code error;
  if (!fs::is_regular_file(job.output, error)) return false;
  const fs::file_time_type made = fs::last_write_time(job.output, error);
  for (const std::string &source : {job.input, script}) {
    if (error || made <= fs::last_write_time(source, error)) return false;
  }
  return !error;
}

}  // namespace standalone
