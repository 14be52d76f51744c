#include "standalone/zvk/commands/manual_command.h"

#include <CLI/CLI.hpp>
#include <cstdio>

#include "standalone/zvk/help/manual.h"

namespace standalone {

void AddManualCommand(CLI::App &program) {
  CLI::App &command = *program.add_subcommand("manual", "Print the manual page of zvk");
  command.footer(
      "Prints the source of the page, which 'man' reads. Where zvk has been installed, 'man zvk' is enough.\n"
      "\n"
      "Examples:\n"
      "  zvk manual | man -l -\n"
      "  zvk manual > zvk.1\n"
      "\n"
      "Exit codes:\n"
      "  0  done\n"
      "  2  the command line is wrong");
  command.callback([&program] { std::fputs(Manual(program).c_str(), stdout); });
}

}  // namespace standalone
