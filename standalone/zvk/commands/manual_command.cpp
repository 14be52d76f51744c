#include <CLI/CLI.hpp>
#include <cstdio>

#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/help/manual.h"

namespace standalone {

void AddManualCommand(CLI::App &program) {
  CLI::App &command = *program.add_subcommand("manual", "Print the manual page of zvk");
  command.footer(
      HelpFooter("Prints the source of the page, which 'man' reads. Where zvk has been installed, 'man zvk' is enough.",
                 {"zvk manual | man -l -", "zvk manual > zvk.1"}, {}));
  command.callback([&program] { std::fputs(Manual(program).c_str(), stdout); });
}

}  // namespace standalone
