// What `cmake --install` lays out, in a folder that is gone afterwards.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

class Installation : public ZvkProgram {
 protected:
  void SetUp() override { Install({"--prefix", Path("usr")}); }

  void Install(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--install", PICTUREZVK_BUILD});
    const ProgramResult result = Run(arguments, PICTUREZVK_CMAKE);
    ASSERT_EQ(result.exitCode, 0) << result.errors;
  }

  // The folder of the plug-in, which depends on the system: lib/picturezvk, or lib64/picturezvk, or the like.
  std::string Plugin(const std::string &prefix = "usr") const {
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(Path(prefix))) {
      if (entry.path().filename() == "libPictureZVK.so") return entry.path().string();
    }
    ADD_FAILURE() << "there is no plug-in in " << prefix;
    return "";
  }

  // The examples scaled by an installed program.
  void ExpectWorking(const std::string &prefix) const {
    const ProgramResult result = Run(
        {"scale", Path(prefix + "/share/doc/picturezvk/examples/coffee.png"), Path("small.png"), "40x30", "--leaks"},
        Path(prefix + "/bin/zvk"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "references not given back: none\n");
    EXPECT_EQ(ReadImage("small.png").size(), 30u);
    fs::remove(Path("small.png"));
  }
};

TEST_F(Installation, HasEverythingInItsPlace) {
  for (const char *const file :
       {"bin/zvk", "share/man/man1/zvk.1", "share/bash-completion/completions/zvk", "share/zsh/site-functions/_zvk",
        "share/doc/picturezvk/README.md", "share/doc/picturezvk/CHANGELOG.md", "share/doc/picturezvk/LICENSE",
        "share/doc/picturezvk/LICENSE-UNICODE.txt", "share/doc/picturezvk/docs/guide.md",
        "share/doc/picturezvk/docs/reference.md", "share/doc/picturezvk/docs/gallery.md",
        "share/doc/picturezvk/docs/images/gallery/OilFilter.jpg",
        "share/doc/picturezvk/docs/images/hubble_deep_field.jpg", "share/doc/picturezvk/examples/card.lua",
        "share/doc/picturezvk/examples/astronaut.png", "share/doc/picturezvk/examples/ORIGINS.md"}) {
    EXPECT_TRUE(fs::is_regular_file(Path(std::string("usr/") + file))) << file;
  }
  EXPECT_THAT(Plugin(), AllOf(StartsWith(Path("usr/lib")), testing::EndsWith("/picturezvk/libPictureZVK.so")));
  EXPECT_NE(fs::status(Path("usr/bin/zvk")).permissions() & fs::perms::others_exec, fs::perms::none);
  // Texts that pages are made of, and what scripts have made, stay behind.
  EXPECT_FALSE(fs::exists(Path("usr/share/doc/picturezvk/docs/reference")));
  EXPECT_FALSE(fs::exists(Path("usr/share/doc/picturezvk/examples/results")));
}

TEST_F(Installation, WorksAndTellsWhatTheProgramTells) {
  ExpectWorking("usr");
  const std::string program = Path("usr/bin/zvk");
  EXPECT_EQ(Read("usr/share/man/man1/zvk.1"), Run({"manual"}, program).output);
  EXPECT_EQ(Read("usr/share/bash-completion/completions/zvk"), Run({"completion", "bash"}, program).output);
  EXPECT_EQ(Read("usr/share/zsh/site-functions/_zvk"), Run({"completion", "zsh"}, program).output);
}

TEST_F(Installation, RunsAnExampleScript) {
  const std::string examples = Path("usr/share/doc/picturezvk/examples/");
  const ProgramResult result =
      Run({"run", examples + "card.lua", examples + "coffee.png", "card.png"}, Path("usr/bin/zvk"));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_TRUE(Names().contains("card.png"));
}

TEST_F(Installation, MayBeMoved) {
  fs::create_directories(Path("else where"));
  fs::rename(Path("usr"), Path("else where/zvk"));
  ExpectWorking("else where/zvk");
}

// It does not fall back on the plug-in of the build.
TEST_F(Installation, HasNoWayIntoTheBuild) {
  const std::string plugin = Plugin();
  fs::remove(plugin);
  const ProgramResult result = Run({"methods"}, Path("usr/bin/zvk"));
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, StartsWith("zvk: no plug-in at " + Path("usr/bin/libPictureZVK.so") + " or " + plugin));

  // Nor on its libraries.
  if (!fs::exists("/usr/bin/readelf")) GTEST_SKIP() << "readelf is not installed";
  const ProgramResult section = Run({"--dynamic", "--wide", Path("usr/bin/zvk")}, "/usr/bin/readelf");
  EXPECT_THAT(section.output, AllOf(HasSubstr("(NEEDED)"), Not(HasSubstr("RPATH")), Not(HasSubstr("RUNPATH"))));
}

TEST_F(Installation, GoesIntoAStagingFolder) {
  setenv("DESTDIR", Path("stage").c_str(), 1);
  Install({"--prefix", "/opt/pictures"});
  unsetenv("DESTDIR");
  ExpectWorking("stage/opt/pictures");
  EXPECT_THAT(Plugin("stage/opt/pictures"), StartsWith(Path("stage/opt/pictures/lib")));
}

}  // namespace
}  // namespace standalone
