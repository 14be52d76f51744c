// The command line program: exit codes, and errors as single lines.

#include <CLI/CLI.hpp>
#include <chrono>
#include <exception>
#include <memory>
#include <new>
#include <string>

#include "standalone/binding/class_binding.h"
#include "standalone/lua/script.h"
#include "standalone/zvk/program.h"
#include "standalone/zvk/session/exit_codes.h"
#include "standalone/zvk/session/messages.h"

namespace {

constexpr char kNoMemory[] = "there is not enough memory; free some, or take a smaller picture";

int Report(const std::string &message, standalone::ExitCode exitCode) {
  standalone::PrintMessage(message);
  return exitCode;
}

int Run(int argc, char **argv) {
  const std::shared_ptr<CLI::App> program = standalone::MakeProgram(std::chrono::steady_clock::now);
  try {
    program->parse(argc, argv);
    return standalone::kDone;
  } catch (const CLI::ParseError &error) {
    // Help and the version come as errors of their own.
    if (error.get_exit_code() == 0) return program->exit(error);
    std::string command = "zvk";
    for (const CLI::App *used : program->get_subcommands()) command += " " + used->get_name();
    std::string problem = error.what();
    if (program->get_subcommands().empty() && !program->remaining().empty()) {
      problem = "there is no command or option '" + program->remaining().front() + "'";
    }
    return Report(problem + "; '" + command + " --help' tells how it is used", standalone::kWrongCommandLine);
  } catch (const standalone::UsageError &error) {
    return Report(error.what(), standalone::kWrongCommandLine);
  } catch (const standalone::ScriptError &error) {
    standalone::PrintMessageWithList(error.what());
    return standalone::kWorkFailed;
  } catch (const std::bad_alloc &) {
    return Report(kNoMemory, standalone::kWorkFailed);
  } catch (const standalone::HostException &error) {
    return Report(error.ClassName() == "OutOfMemoryException" ? kNoMemory : error.what(), standalone::kWorkFailed);
  } catch (const std::exception &error) {
    return Report(error.what(), standalone::kWorkFailed);
  }
}

}  // namespace

int main(int argc, char **argv) { return Run(argc, argv); }
