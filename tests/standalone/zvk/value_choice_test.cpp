#include "standalone/zvk/value_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "standalone/zvk/plugin_session.h"

namespace standalone {
namespace {

using testing::ElementsAre;

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

TEST(Choices, AreThoseOfThePlugin) {
  const PluginSession session({.path = PICTUREZVK_LIBRARY});
  EXPECT_THAT(WordsOf(Choice::Free, session), ElementsAre());
  EXPECT_THAT(WordsOf(Choice::Shells, session), ElementsAre("bash", "zsh"));
  EXPECT_THAT(WordsOf(Choice::Directions, session), ElementsAre("h", "v"));
  EXPECT_THAT(WordsOf(Choice::ScaleFilters, session),
              ElementsAre("triangle", "box", "lanczos3", "lanczos8", "mitchell", "poly3", "cubic"));
  // None of inks, none without colours.
  EXPECT_THAT(
      WordsOf(Choice::PixelFormats, session),
      testing::UnorderedElementsAre("RGB", "RGBA", "RGBX", "ARGB", "XRGB", "BGR", "BGRA", "BGRX", "ABGR", "XBGR", "G",
                                    "GA", "AG", "Gray16", "1of3", "2of3", "3of3", "1of4", "2of4", "3of4", "4of4"));
  EXPECT_THAT(WordsOf(Choice::Filters, session), testing::IsSupersetOf({"OilFilter", "GammaFilter", "ApplyMatrix"}));
  // A name in two cases is one.
  const std::vector<std::string> arguments = WordsOf(Choice::FilterArguments, session);
  EXPECT_THAT(arguments, testing::IsSupersetOf({"levels=", "origpixels=", "Radius=", "gamma="}));
  EXPECT_THAT(arguments, testing::Not(testing::Contains("radius=")));
  EXPECT_THAT(WordsOf(Choice::Members, session), testing::IsSupersetOf({"PictureZVK", "Scale", "Width", "ScaleLanczos3",
                                                                        "Picture", "FolderItem", "Open"}));
}

}  // namespace
}  // namespace standalone
