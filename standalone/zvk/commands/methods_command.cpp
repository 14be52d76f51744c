#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/zvk/arguments/value_choice.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/class_members.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

struct MethodsRequest {
  std::string name;
  PluginOptions plugin;
};

void PrintClass(const ClassBinding &type) {
  std::printf("%s\n", type.Name().c_str());
  const char *heading = "";
  for (const ClassMember &member : MembersOf(type)) {
    if (std::string_view(heading) != member.heading) {
      heading = member.heading;
      std::printf("  %s\n", heading);
    }
    std::printf("    %s\n", member.text.c_str());
  }
}

void PrintMethods(const MethodsRequest &request) {
  const PluginSession session(request.plugin);
  const std::vector<const ClassBinding *> classes = ScriptClasses();
  bool isFound = false;
  for (const ClassBinding *const type : classes) {
    if (request.name.empty() || NamesEqual(type->Name(), request.name)) {
      PrintClass(*type);
      isFound = true;
    }
  }
  if (isFound) return;
  for (const ClassBinding *const type : classes) {
    for (const ClassMember &member : MembersOf(*type)) {
      if (!NamesEqual(member.name, request.name)) continue;
      std::printf("%s.%s\n", type->Name().c_str(), member.text.c_str());
      isFound = true;
    }
  }
  if (!isFound) {
    throw UsageError("there is no class and no member '" + request.name + "'; 'zvk methods' lists all there are");
  }
}

}  // namespace

void AddMethodsCommand(CLI::App &program) {
  const auto request = std::make_shared<MethodsRequest>();
  CLI::App &command = *program.add_subcommand("methods", "Print the classes that scripts can use");
  NoteChoice(
      command.add_option("NAME", request->name, "Print only this class, or all members of this name")->type_name(""),
      Choice::Members);
  AddPluginOptions(command, request->plugin);
  command.footer(
      HelpFooter("Prints the plug-in's classes as it has registered them, and the members of the host's own classes\n"
                 "that scripts of 'zvk run' have. Names are taken in any case.",
                 {"zvk methods PictureZVK", "zvk methods Scale"}, {.workFailed = "the plug-in cannot be loaded"}));
  command.callback([request] { PrintMethods(*request); });
}

}  // namespace standalone
