#include "standalone/zvk/program.h"

#include <CLI/CLI.hpp>

#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"

namespace standalone {

std::shared_ptr<CLI::App> MakeProgram(const ProgressLine::Clock &clock) {
  auto program = std::make_shared<CLI::App>(
      "Scales, filters, turns and combines pictures with the PictureZVK plug-in, run by a stand-alone host.", "zvk");
  program->set_version_flag("--version", "zvk " ZVK_VERSION, "Print the version and exit");
  program->set_help_flag("-h,--help", "Print this help and exit");
  program->require_subcommand(1);
  program->footer(
      ExitCodesHelp({.workFailed = "the work failed"}) +
      "\n"
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
