// What the help of the program tells of commands and options, for tests of whatever else tells of them.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {

class HelpTexts : public ZvkProgram {
 protected:
  // The commands, in the order of the help.
  std::vector<std::string> Commands() const {
    std::vector<std::string> commands;
    std::istringstream help(Run({"--help"}).output);
    bool isList = false;
    for (std::string line; std::getline(help, line) && !(isList && line.empty());) {
      if (isList) commands.push_back(FirstWord(line));
      isList = isList || line == "Subcommands:";
    }
    EXPECT_GE(commands.size(), 12u);
    return commands;
  }

  // The names of a command's options, "-h" and "--help" among them; of the program itself for no command.
  std::set<std::string> Options(const std::string &command) const {
    const ProgramResult result = command.empty() ? Run({"--help"}) : Run({command, "--help"});
    std::set<std::string> options;
    std::istringstream help(result.output);
    bool isList = false;
    for (std::string line; std::getline(help, line) && !(isList && line.empty());) {
      if (isList && line.starts_with("  -")) {
        std::istringstream names(FirstWord(line));
        for (std::string name; std::getline(names, name, ',');) options.insert(name);
      }
      isList = isList || line == "Options:";
    }
    EXPECT_TRUE(options.contains("--help")) << command;
    return options;
  }

  static std::string FirstWord(const std::string &line) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    return word;
  }
};

}  // namespace standalone
