#include "standalone/zvk/arguments/value_choice.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>

namespace standalone {
namespace {

TEST(Choices, AreNotedWithAnOptionAndCheckNothing) {
  CLI::App program;
  std::string text;
  CLI::Option *const option = program.add_option("--name", text, "A name")->type_name("NAME");
  EXPECT_EQ(NotedChoice(*option), std::nullopt);
  option->check(CLI::Range(1, 2000));
  EXPECT_EQ(NotedChoice(*option), std::nullopt);
  const std::string type = option->get_type_name();
  for (const Choice choice : {Choice::PixelFormats, Choice::Free, Choice::Members}) {
    CLI::Option *const other =
        program.add_option("--other" + std::to_string(static_cast<int>(choice)), text, "")->check(CLI::Range(1, 2000));
    NoteChoice(other, choice);
    EXPECT_EQ(NotedChoice(*other), choice);
  }
  NoteChoice(option, Choice::Shells);
  EXPECT_EQ(option->get_type_name(), type);
  program.parse("--name 1234");
  EXPECT_EQ(text, "1234");
}

}  // namespace
}  // namespace standalone
