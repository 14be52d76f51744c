// The command line program: one line for each command, exit codes, and errors as single lines.

#include <CLI/CLI.hpp>
#include <exception>
#include <new>
#include <string>

#include "standalone/binding/class_binding.h"
#include "standalone/lua/script.h"
#include "standalone/zvk/combine_command.h"
#include "standalone/zvk/filter_command.h"
#include "standalone/zvk/fuzz_command.h"
#include "standalone/zvk/info_command.h"
#include "standalone/zvk/messages.h"
#include "standalone/zvk/methods_command.h"
#include "standalone/zvk/mirror_command.h"
#include "standalone/zvk/rotate_command.h"
#include "standalone/zvk/run_command.h"
#include "standalone/zvk/scale_command.h"
#include "standalone/zvk/sheet_command.h"

namespace {

constexpr int kWorkFailed = 1;
constexpr int kWrongCommandLine = 2;
constexpr char kNoMemory[] = "there is not enough memory; free some, or take a smaller picture";

using AddCommand = void (*)(CLI::App &program);
// clang-format off
constexpr AddCommand kCommands[] = {
    standalone::AddScaleCommand,
    standalone::AddFilterCommand,
    standalone::AddRotateCommand,
    standalone::AddMirrorCommand,
    standalone::AddCombineCommand,
    standalone::AddSheetCommand,
    standalone::AddInfoCommand,
    standalone::AddRunCommand,
    standalone::AddMethodsCommand,
    standalone::AddFuzzCommand,
};
// clang-format on

int Report(const std::string &message, int exitCode) {
  standalone::PrintMessage(message);
  return exitCode;
}

int Run(int argc, char **argv) {
  CLI::App program(
      "Scales, filters, turns and combines pictures with the PictureZVK plug-in, run by a stand-alone host.", "zvk");
  program.set_version_flag("--version", "zvk " ZVK_VERSION, "Print the version and exit");
  program.set_help_flag("-h,--help", "Print this help and exit");
  program.require_subcommand(1);
  program.footer(
      "Exit codes:\n"
      "  0  done\n"
      "  1  the work failed\n"
      "  2  the command line is wrong\n"
      "\n"
      "Errors are one line each on the standard error stream. 'zvk COMMAND --help' tells more of a command.");
  for (const AddCommand add : kCommands) add(program);

  try {
    program.parse(argc, argv);
    return 0;
  } catch (const CLI::ParseError &error) {
    // Help and the version come as errors of their own.
    if (error.get_exit_code() == 0) return program.exit(error);
    std::string command = "zvk";
    for (const CLI::App *used : program.get_subcommands()) command += " " + used->get_name();
    std::string problem = error.what();
    if (program.get_subcommands().empty() && !program.remaining().empty()) {
      problem = "there is no command or option '" + program.remaining().front() + "'";
    }
    return Report(problem + "; '" + command + " --help' tells how it is used", kWrongCommandLine);
  } catch (const standalone::UsageError &error) {
    return Report(error.what(), kWrongCommandLine);
  } catch (const standalone::ScriptError &error) {
    standalone::PrintMessageWithList(error.what());
    return kWorkFailed;
  } catch (const std::bad_alloc &) {
    return Report(kNoMemory, kWorkFailed);
  } catch (const standalone::HostException &error) {
    return Report(error.ClassName() == "OutOfMemoryException" ? kNoMemory : error.what(), kWorkFailed);
  } catch (const std::exception &error) {
    return Report(error.what(), kWorkFailed);
  }
}

}  // namespace

int main(int argc, char **argv) { return Run(argc, argv); }
