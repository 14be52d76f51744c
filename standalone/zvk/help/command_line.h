// The command line as data: every command with its arguments and options, read from their declarations. Whatever tells
// of them (completion, the manual page) is made from here.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "standalone/zvk/arguments/value_choice.h"

namespace CLI {
class App;
}

namespace standalone {

// What a value is.
struct ValueKind {
  bool isFile = false;
  std::optional<Choice> choice;
};

struct OptionLine {
  std::vector<std::string> names;     // such as "-h" and "--help"
  std::string value;                  // what stands for its value, such as "NAME"; empty if it takes none
  bool isRepeated;                    // may be given several times
  std::string description;            // on one line
  std::vector<std::string> excludes;  // options that do not go with it, the first name of each
  std::vector<std::string> needs;     // options that it needs, likewise
  ValueKind kind;
};

struct ArgumentLine {
  std::string name;
  bool isRequired;
  bool isRepeated;
  std::string description;  // on one line
  ValueKind kind;
};

struct CommandLine {
  std::string name;
  std::string description;
  std::vector<OptionLine> options;
  std::vector<ArgumentLine> arguments;
  bool takesMore;      // words after all else, which are somebody else's
  std::string footer;  // the rest of its help, in lines
};

// The program itself, or one command.
CommandLine ReadCommand(CLI::App &command);

// All commands, in their order.
std::vector<CommandLine> ReadCommands(CLI::App &program);

// How the command is called: "[OPTIONS] IN OUT [FILE ...]".
std::string UsageOf(const CommandLine &command);

}  // namespace standalone
