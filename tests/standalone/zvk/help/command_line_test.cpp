#include "standalone/zvk/help/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace standalone {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CommandLines : public testing::Test {
 protected:
  CommandLines() {
    program_.set_help_flag("-h,--help", "Print this help");
    CLI::App &paint = *program_.add_subcommand("paint", "Paint a picture");
    paint.footer("Examples:\n  paint");
    paint.add_option("IN", text_, "The\npicture")->required();
    NoteChoice(paint.add_option("COLOUR", words_, "Its colours"), Choice::Filters);
    CLI::Option *const size = paint.add_option("-s,--size", number_, "How large")->check(CLI::Range(1, 9));
    size->type_name("N");
    CLI::Option *const fast = paint.add_flag("--fast", flag_, "Be quick")->excludes(size);
    paint.add_option("--mask", text_, "What to leave")->type_name("FILE")->needs(fast);
    paint.add_option("--layer", words_, "A layer")->allow_extra_args(false)->type_name("PATTERN");
    NoteChoice(paint.add_option("--style", text_, "How")->type_name("PATH"), Choice::Free);
    CLI::App &open = *program_.add_subcommand("open", "Go on");
    open.prefix_command();
  }

  CLI::App program_{"Paints", "painter"};
  std::string text_;
  std::vector<std::string> words_;
  int number_ = 0;
  bool flag_ = false;
};

TEST_F(CommandLines, HaveTheCommandsInTheirOrder) {
  const std::vector<CommandLine> commands = ReadCommands(program_);
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].name, "paint");
  EXPECT_EQ(commands[0].description, "Paint a picture");
  EXPECT_EQ(commands[0].footer, "Examples:\n  paint");
  EXPECT_FALSE(commands[0].takesMore);
  EXPECT_EQ(commands[1].name, "open");
  EXPECT_TRUE(commands[1].takesMore);
  EXPECT_EQ(ReadCommand(program_).options.at(0).names, (std::vector<std::string>{"-h", "--help"}));
}

TEST_F(CommandLines, TellArguments) {
  const std::vector<ArgumentLine> arguments = ReadCommands(program_)[0].arguments;
  ASSERT_EQ(arguments.size(), 2u);
  EXPECT_EQ(arguments[0].name, "IN");
  EXPECT_EQ(arguments[0].description, "The picture");
  EXPECT_TRUE(arguments[0].isRequired);
  EXPECT_FALSE(arguments[0].isRepeated);
  EXPECT_TRUE(arguments[0].kind.isFile);
  EXPECT_EQ(arguments[1].name, "COLOUR");
  EXPECT_FALSE(arguments[1].isRequired);
  EXPECT_TRUE(arguments[1].isRepeated);
  EXPECT_FALSE(arguments[1].kind.isFile);
  EXPECT_EQ(arguments[1].kind.choice, Choice::Filters);
}

TEST_F(CommandLines, TellOptionsWithWhatGoesWithThem) {
  const std::vector<OptionLine> options = ReadCommands(program_)[0].options;
  ASSERT_EQ(options.size(), 6u);
  EXPECT_THAT(options[1].names, ElementsAre("-s", "--size"));
  EXPECT_EQ(options[1].value, "N");
  EXPECT_THAT(options[1].excludes, ElementsAre("--fast"));
  EXPECT_FALSE(options[1].kind.isFile);
  EXPECT_EQ(options[1].kind.choice, std::nullopt);
  EXPECT_EQ(options[2].value, "");
  EXPECT_THAT(options[2].excludes, ElementsAre("-s"));
  EXPECT_THAT(options[2].needs, IsEmpty());
  EXPECT_EQ(options[3].value, "FILE");
  EXPECT_TRUE(options[3].kind.isFile);
  EXPECT_THAT(options[3].needs, ElementsAre("--fast"));
  EXPECT_FALSE(options[3].isRepeated);
  EXPECT_TRUE(options[4].isRepeated);
  EXPECT_TRUE(options[4].kind.isFile);
  EXPECT_EQ(options[5].kind.choice, Choice::Free);
}

TEST_F(CommandLines, TellHowACommandIsCalled) {
  const std::vector<CommandLine> commands = ReadCommands(program_);
  EXPECT_EQ(UsageOf(commands[0]), "[OPTIONS] IN [COLOUR ...]");
  EXPECT_EQ(UsageOf(commands[1]), "[OPTIONS] ...");
}

}  // namespace
}  // namespace standalone
