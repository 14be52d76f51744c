#include "standalone/zvk/program.h"

#include <CLI/CLI.hpp>

#include "standalone/zvk/commands/batch_command.h"
#include "standalone/zvk/commands/combine_command.h"
#include "standalone/zvk/commands/completion_command.h"
#include "standalone/zvk/commands/filter_command.h"
#include "standalone/zvk/commands/fuzz_command.h"
#include "standalone/zvk/commands/info_command.h"
#include "standalone/zvk/commands/manual_command.h"
#include "standalone/zvk/commands/methods_command.h"
#include "standalone/zvk/commands/mirror_command.h"
#include "standalone/zvk/commands/rotate_command.h"
#include "standalone/zvk/commands/run_command.h"
#include "standalone/zvk/commands/scale_command.h"
#include "standalone/zvk/commands/sheet_command.h"

namespace standalone {

std::shared_ptr<CLI::App> MakeProgram(const ProgressLine::Clock &clock) {
  auto program = std::make_shared<CLI::App>(
      "Scales, filters, turns and combines pictures with the PictureZVK plug-in, run by a stand-alone host.", "zvk");
  program->set_version_flag("--version", "zvk " ZVK_VERSION, "Print the version and exit");
  program->set_help_flag("-h,--help", "Print this help and exit");
  program->require_subcommand(1);
  program->footer(
      "Exit codes:\n"
      "  0  done\n"
      "  1  the work failed\n"
      "  2  the command line is wrong\n"
      "\n"
      "Errors are one line each on the standard error stream. 'zvk COMMAND --help' tells more of a command.");
  AddScaleCommand(*program, clock);
  AddFilterCommand(*program);
  AddRotateCommand(*program);
  AddMirrorCommand(*program);
  AddCombineCommand(*program);
  AddSheetCommand(*program);
  AddInfoCommand(*program);
  AddRunCommand(*program);
  AddBatchCommand(*program, clock);
  AddMethodsCommand(*program);
  AddFuzzCommand(*program);
  AddCompletionCommand(*program);
  AddManualCommand(*program);
  return program;
}

}  // namespace standalone
