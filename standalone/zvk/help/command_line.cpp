#include "standalone/zvk/help/command_line.h"

#include <CLI/CLI.hpp>
#include <set>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

std::vector<std::string> NamesOf(const CLI::Option &option) {
  std::vector<std::string> names;
  for (const std::string &name : option.get_snames()) names.push_back("-" + name);
  for (const std::string &name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

// In the order of the names, so that it is the same every time.
std::vector<std::string> FirstNames(const std::set<CLI::Option *> &options) {
  std::set<std::string> names;
  for (const CLI::Option *const option : options) names.insert(NamesOf(*option).front());
  return {names.begin(), names.end()};
}

// Without what its checks add to it.
std::string TypeOf(const CLI::Option &option) {
  const std::string type = option.get_type_name();
  return type.substr(0, type.find(':'));
}

OptionLine ReadOption(CLI::Option &option) {
  OptionLine line = {NamesOf(option),
                     {},
                     option.get_items_expected_max() > 1,
                     OneLine(option.get_description()),
                     FirstNames(option.get_excludes()),
                     FirstNames(option.get_needs()),
                     {}};
  if (option.get_items_expected_max() > 0) line.value = TypeOf(option);
  line.kind = {line.value == "FILE" || line.value == "PATH" || line.value == "PATTERN", NotedChoice(option)};
  return line;
}

ArgumentLine ReadArgument(CLI::Option &option) {
  const std::optional<Choice> choice = NotedChoice(option);
  return {option.get_name(true),
          option.get_required(),
          option.get_items_expected_max() > 1,
          OneLine(option.get_description()),
          {!choice.has_value(), choice}};
}

}  // namespace

CommandLine ReadCommand(CLI::App &command) {
  CommandLine line = {command.get_name(),           command.get_description(), {}, {},
                      command.get_prefix_command(), command.get_footer()};
  for (CLI::Option *const option : command.get_options({})) {
    if (option->get_positional()) {
      line.arguments.push_back(ReadArgument(*option));
    } else {
      line.options.push_back(ReadOption(*option));
    }
  }
  return line;
}

std::vector<CommandLine> ReadCommands(CLI::App &program) {
  std::vector<CommandLine> lines;
  for (CLI::App *const command : program.get_subcommands({})) lines.push_back(ReadCommand(*command));
  return lines;
}

std::string UsageOf(const CommandLine &command) {
  std::string usage = "[OPTIONS]";
  for (const ArgumentLine &argument : command.arguments) {
    const std::string text = argument.name + (argument.isRepeated ? " ..." : "");
    usage += " " + (argument.isRequired ? text : "[" + text + "]");
  }
  return usage + (command.takesMore ? " ..." : "");
}

}  // namespace standalone
