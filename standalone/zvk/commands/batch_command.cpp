#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "standalone/lua/script.h"
#include "standalone/processes/signal_watch.h"
#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/batch/batch_plan.h"
#include "standalone/zvk/batch/batch_run.h"
#include "standalone/zvk/batch/output_pattern.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

constexpr char kThisProgram[] = "/proc/self/exe";  // which has the command `run`, too
constexpr unsigned kMostProcesses = 4096;

struct BatchRequest {
  std::string script;
  std::vector<std::string> files;
  std::optional<std::string> fileList;
  std::string output;
  std::vector<std::string> arguments;
  std::optional<unsigned> seed;
  unsigned processes = std::max(1U, std::thread::hardware_concurrency());
  bool resumes = false;
  bool onlyLists = false;
  Orient orient = Orient::Upright;
  PluginOptions plugin;
};

std::vector<std::string> InputsOf(const BatchRequest &request) {
  std::vector<std::string> inputs = request.files;
  if (request.fileList) {
    for (std::string &path : ReadFileList(*request.fileList)) inputs.push_back(std::move(path));
  } else if (inputs.empty()) {
    throw UsageError("there are no files to work on; name some, or a list of them with --files-from FILE");
  }
  return inputs;
}

// What would fail for each file alike is found before there is any process.
void CheckWhatAllNeed(const BatchRequest &request) {
  RefuseMissingScript(request.script);
  CheckScript(request.script);
  const PluginSession session({.path = request.plugin.path});
}

BatchSettings SettingsOf(const BatchRequest &request, const ProgressLine::Clock &clock) {
  BatchSettings settings = {.program = kThisProgram,
                            .script = request.script,
                            .options = {},
                            .arguments = request.arguments,
                            .processes = request.processes,
                            .clock = clock};
  if (request.seed) settings.options.insert(settings.options.end(), {"--seed", std::to_string(*request.seed)});
  if (request.orient == Orient::AsStored) settings.options.emplace_back("--no-orient");
  if (!request.plugin.path.empty()) {
    settings.options.insert(settings.options.end(), {"--plugin", request.plugin.path});
  }
  if (request.plugin.reportsLeaks) settings.options.emplace_back("--leaks");
  return settings;
}

void PrintFailures(const std::vector<BatchFailure> &failures) {
  for (const BatchFailure &failure : failures) {
    std::string message = OneLine(failure.job->input) + ": " + OneLine(failure.reason);
    std::istringstream lines(failure.errors);
    for (std::string line; std::getline(lines, line);) message += "\n  " + line;
    PrintMessageWithList(message);
  }
}

void RunBatchCommand(const BatchRequest &request, const ProgressLine::Clock &clock) {
  if (request.resumes && request.output.empty()) {
    throw UsageError("--resume looks at the outputs; tell where they are with --output PATTERN");
  }
  std::vector<BatchJob> jobs = PlanJobs(InputsOf(request), request.output, request.script);
  CheckWhatAllNeed(request);
  size_t upToDate = 0;
  if (request.resumes) {
    upToDate = std::erase_if(jobs, [&](const BatchJob &job) { return IsUpToDate(job, request.script); });
  }
  if (request.onlyLists) {
    for (const BatchJob &job : jobs) std::printf("%s\n", job.input.c_str());
    return;
  }

  const SignalWatch signals;
  const BatchResult result = RunBatch(SettingsOf(request, clock), jobs, signals);
  PrintFailures(result.failures);
  const size_t left = jobs.size() - result.done - result.failures.size();
  std::string summary = std::to_string(result.done) + " done";
  if (request.resumes) summary += ", " + std::to_string(upToDate) + " up to date";
  summary += ", " + std::to_string(result.failures.size()) + " failed";
  if (result.signal != 0) {
    PrintMessage("stopped: " + summary + ", " + std::to_string(left) + " left");
    signals.PutBack(result.signal);
  } else if (!result.failures.empty()) {
    throw std::runtime_error(summary);
  } else {
    PrintMessage(summary);
  }
}

}  // namespace

void AddBatchCommand(CLI::App &program, const ProgressLine::Clock &clock) {
  const auto request = std::make_shared<BatchRequest>();
  CLI::App &command = *program.add_subcommand("batch", "Run a program in Lua over many files, several at a time");
  command.add_option("SCRIPT", request->script, "The program, as for 'zvk run'")->required()->type_name("");
  command.add_option("FILE", request->files, "Files to work on")->type_name("");
  command
      .add_option("--files-from", request->fileList,
                  "More of them from a file, one a line (or separated by\nzero bytes); - is the standard input")
      ->type_name("FILE");
  command
      .add_option("--output", request->output,
                  "Where the output of a file goes, with {name}, {extension},\n{file} or {folder} for parts of its "
                  "path; missing folders are\nmade")
      ->type_name("PATTERN");
  command.add_option("--arg", request->arguments, "A further argument of the script; may be given several times")
      ->allow_extra_args(false)
      ->type_name("TEXT");
  command.add_option("-j,--jobs", request->processes, "Files at a time [default: as many as processors]")
      ->check(CLI::Range(1U, kMostProcesses))
      ->type_name("N");
  command.add_flag("--resume", request->resumes, "Leave out files whose output is newer than they and the script");
  command.add_flag("--list", request->onlyLists, "Only print the files that there are to work on, one a line");
  command.add_option("--seed", request->seed, "Make what is random the same for each file and in each run")
      ->type_name("N");
  AddOrientOption(command, request->orient);
  AddPluginOptions(command, request->plugin);
  command.footer(HelpFooter(
      "Each file has a process of its own, which runs 'zvk run SCRIPT INPUT OUTPUT [ARG ...]': in the\n"
      "script arg[1] is the file, and arg[2] a path to write the output to. Without --output the further\n"
      "arguments follow the file. An output appears when its script has ended well, or not at all; other\n"
      "files that the script writes beside arg[2] come with it.\n"
      "\n"
      "What scripts print comes when each has ended. A file that fails does not stop the others; those\n"
      "that failed are told at the end. On a terminal a line shows how far it is.",
      {"zvk batch examples/sharpen.lua --output 'sharp/{name}.png' photos/*.jpg",
       "zvk batch examples/sharpen.lua --output 'sharp/{name}.png' --resume --jobs 8 --arg 0.8 photos/*.jpg",
       "find photos -name '*.jpg' | zvk batch mark.lua --output '{folder}/marked/{name}.png' --files-from -"},
      {.done = "done, for every file",
       .workFailed = "a file failed, or all of it; the outputs of files that failed are as they were before",
       .wrongCommandLine = kWrongAndNothingDone}));
  command.callback([request, clock] { RunBatchCommand(*request, clock); });
}

}  // namespace standalone
