#include "standalone/zvk/help/choice_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

using testing::ElementsAre;

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
