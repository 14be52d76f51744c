#include "standalone/zvk/methods_command.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/lua/host_classes.h"
#include "standalone/runtime/host_state.h"
#include "standalone/zvk/messages.h"
#include "standalone/zvk/plugin_session.h"
#include "standalone/zvk/value_choice.h"

namespace standalone {
namespace {

struct MethodsRequest {
  std::string name;
  PluginOptions plugin;
};

// One line of a class: what kind of member, its name, and its declaration.
struct Member {
  const char *heading;
  std::string name;
  std::string text;
};

std::vector<Member> MembersOf(const ClassBinding &type) {
  std::vector<Member> members;
  for (const BoundProperty &property : type.Properties()) {
    members.push_back(
        {"Properties", property.registered->name,
         property.registered->name + " as " + property.type.Text() + (property.IsReadOnly() ? " (read-only)" : "")});
  }
  for (const BoundMethod &method : type.Methods()) {
    members.push_back({method.isShared ? "Shared methods" : "Methods", method.declaration.name,
                       method.text + (method.setter != nullptr ? " (can be assigned to)" : "")});
  }
  for (const RegisteredEvent &event : type.Type().Definition()->events) {
    members.push_back({"Events", ParseMethod(event.declaration).name, event.declaration});
  }
  for (const RegisteredConstant &constant : type.Type().Definition()->constants) {
    members.push_back({"Constants", ParseConstant(constant.declaration).name, constant.declaration});
  }
  return members;
}

std::vector<const ClassBinding *> Classes() {
  std::vector<const ClassBinding *> classes;
  for (const Class *const type : HostState::Current().Classes().Registered()) {
    classes.push_back(&ClassNamed(type->Name()));
  }
  for (const char *const name : {"Picture", "Graphics", "MemoryBlock", "FolderItem"}) {
    classes.push_back(&ClassNamed(name));
  }
  return classes;
}

void PrintClass(const ClassBinding &type) {
  std::printf("%s\n", type.Name().c_str());
  const char *heading = "";
  for (const Member &member : MembersOf(type)) {
    if (std::string_view(heading) != member.heading) {
      heading = member.heading;
      std::printf("  %s\n", heading);
    }
    std::printf("    %s\n", member.text.c_str());
  }
}

void PrintMethods(const MethodsRequest &request) {
  const PluginSession session(request.plugin);
  DescribeHostClasses(HostState::Current());
  bool isFound = false;
  for (const ClassBinding *const type : Classes()) {
    if (request.name.empty() || NamesEqual(type->Name(), request.name)) {
      PrintClass(*type);
      isFound = true;
    }
  }
  if (isFound) return;
  for (const ClassBinding *const type : Classes()) {
    for (const Member &member : MembersOf(*type)) {
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

std::vector<std::string> MemberNames() {
  DescribeHostClasses(HostState::Current());
  std::vector<std::string> names;
  for (const ClassBinding *const type : Classes()) {
    names.push_back(type->Name());
    for (const Member &member : MembersOf(*type)) names.push_back(member.name);
  }
  return names;
}

void AddMethodsCommand(CLI::App &program) {
  const auto request = std::make_shared<MethodsRequest>();
  CLI::App &command = *program.add_subcommand("methods", "Print the classes that scripts can use");
  NoteChoice(
      command.add_option("NAME", request->name, "Print only this class, or all members of this name")->type_name(""),
      Choice::Members);
  AddPluginOptions(command, request->plugin);
  command.footer(
      "Prints the plug-in's classes as it has registered them, and the members of the host's own classes\n"
      "that scripts of 'zvk run' have. Names are taken in any case.\n"
      "\n"
      "Examples:\n"
      "  zvk methods PictureZVK\n"
      "  zvk methods Scale\n"
      "\n"
      "Exit codes:\n"
      "  0  done\n"
      "  1  the plug-in cannot be loaded\n"
      "  2  the command line is wrong");
  command.callback([request] { PrintMethods(*request); });
}

}  // namespace standalone
