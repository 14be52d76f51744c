#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>

#include "standalone/zvk/arguments/value_choice.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/completion.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

struct CompletionRequest {
  std::string shell;
  PluginOptions plugin;
};

void PrintCompletion(CLI::App &program, const CompletionRequest &request) {
  if (request.shell != "bash" && request.shell != "zsh") {
    throw UsageError("there is no completion for the shell '" + request.shell + "'; write bash or zsh");
  }
  const PluginSession session(request.plugin);
  const std::string script =
      request.shell == "bash" ? BashCompletion(program, session) : ZshCompletion(program, session);
  std::fputs(script.c_str(), stdout);
}

}  // namespace

void AddCompletionCommand(CLI::App &program) {
  const auto request = std::make_shared<CompletionRequest>();
  CLI::App &command =
      *program.add_subcommand("completion", "Print a script that lets a shell complete the command line of zvk");
  NoteChoice(command.add_option("SHELL", request->shell, "bash or zsh")->required()->type_name(""), Choice::Shells);
  AddPluginOptions(command, request->plugin);
  command.footer(
      HelpFooter("Completed are commands, options, the names of filters, formats and members as the plug-in has them,\n"
                 "and files. A shell reads the script by the commands below, the first of them for bash, or from the\n"
                 "place where 'cmake --install' has put it.",
                 {"source <(zvk completion bash)", "source <(zvk completion zsh)"},
                 {.workFailed = "the plug-in cannot be loaded"}));
  command.callback([request, &program] { PrintCompletion(program, *request); });
}

}  // namespace standalone
