#include "standalone/zvk/session/plugin_session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "standalone/zvk/session/messages.h"
#include "tests/standalone/zvk/clocked_program.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string ErrorOfChoice(const PluginSession &session, std::string_view prefix, std::string_view name) {
  try {
    session.Choose("thing", prefix, name);
  } catch (const UsageError &error) {
    return error.what();
  }
  return "no error";
}

TEST(PluginSession, FindsTheNumbersOfConstantsByTheNamesThatUsersGive) {
  const PluginSession session({.path = PICTUREZVK_LIBRARY});
  const char *const filters[] = {"triangle", "box", "lanczos3", "lanczos8", "mitchell", "poly3", "cubic"};
  int32_t number = 0;
  for (const char *name : filters) EXPECT_EQ(session.Choose("filter", "Scale", name), ++number);
  EXPECT_EQ(session.Choose("format", "ImageFormat", "RGB"), 1);
  EXPECT_EQ(session.Choose("format", "ImageFormat", "bgra"), 7);
  EXPECT_EQ(session.Choose("format", "ImageFormat", "Gray16"), 41);
  EXPECT_EQ(session.Choose("format", "ImageFormat", "4of4"), 21);
  EXPECT_EQ(session.Choose("format", "ImageFormat", "RofBGR"), 17);
}

TEST(PluginSession, ListsTheChoicesForANameThatIsNone) {
  const PluginSession session({.path = PICTUREZVK_LIBRARY});
  EXPECT_EQ(ErrorOfChoice(session, "Scale", "sharp"),
            "unknown thing 'sharp'; choose one of Triangle, Box, Lanczos3, Lanczos8, Mitchell, Poly3, Cubic");
  EXPECT_THAT(ErrorOfChoice(session, "Scale", ""), StartsWith("unknown thing ''"));
  // The name of no format is no choice, and a second name for a format is not listed.
  const std::string formats = ErrorOfChoice(session, "ImageFormat", "Unknown");
  EXPECT_THAT(formats, StartsWith("unknown thing 'Unknown'; choose one of RGB, RGBA, RGBX, ARGB, "));
  EXPECT_THAT(formats, HasSubstr(", 2of3, "));
  EXPECT_THAT(formats, testing::Not(HasSubstr("RofRGB")));
}

TEST(PluginSession, LetsWorkBeWatchedAndStopsWatchingAtItsEnd) {
  PluginSession session({.path = PICTUREZVK_LIBRARY});
  bool isWatched = false;
  session.RunWithProgress("testing", StandingClock(), [&](const PluginSession::MoveProgress &move) {
    isWatched = static_cast<bool>(Host::Current().onYield) && static_cast<bool>(move);
  });
  EXPECT_TRUE(isWatched);
  EXPECT_FALSE(Host::Current().onYield);
  EXPECT_THROW(
      session.RunWithProgress("testing", StandingClock(), [](const auto &) { throw std::runtime_error("stop"); }),
      std::runtime_error);
  EXPECT_FALSE(Host::Current().onYield);
}

TEST(PluginSession, TakesTheFactoryFromThePluginAtItsEndAndTellsWhatIsLeft) {
  testing::internal::CaptureStdout();
  Owned<Object> kept;
  {
    const PluginSession session({.path = PICTUREZVK_LIBRARY, .reportsLeaks = true});
    ClassNamed("PictureFactoryZVK").Call("SetFactory", {ClassNamed("PictureFactoryZVK").New()});
    kept = Owned<Object>::Share(session.Images().New({1, 1, session.Images().Constant("ImageFormatG")}).AsObject());
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "references not given back: 1 PictureZVK\n");
  kept.Release();  // its class is gone with the host
}

class WatchedSession : public ZvkProgram {
 protected:
  // What a terminal shows while the work is done, in a process of its own, on images that never yield by themselves.
  ProgramResult Watch(const std::function<void(const Value &source, const Value &dest,
                                               const PluginSession::MoveProgress &move)> &work) const {
    return RunProcessOnTerminal([&] {
      PluginSession session({.path = PICTUREZVK_LIBRARY});
      const Value format = session.Images().Constant("ImageFormatRGB");
      const Value source = session.Images().New({9, 7, format});
      const Value dest = session.Images().New({5, 4, format});
      session.RunWithProgress("testing", HurryingClock(),
                              [&](const PluginSession::MoveProgress &move) { work(source, dest, move); });
      return 0;
    });
  }
};

constexpr char kShown[] = "\r\x1b[Ktesting, 1.0 s\r\x1b[K";

TEST_F(WatchedSession, MovesTheLineWhenTheWorkSaysSo) {
  const ProgramResult result =
      Watch([](const Value &, const Value &, const PluginSession::MoveProgress &move) { move(); });
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, kShown);
}

TEST_F(WatchedSession, MovesTheLineWhenAnImageYields) {
  const ProgramResult result = Watch([](const Value &, const Value &dest, const PluginSession::MoveProgress &) {
    dest.Call("Invert");
    dest.Set("YieldTicks", -1);
    dest.Call("Invert");
  });
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, StartsWith(kShown));
}

TEST_F(WatchedSession, MovesTheLineWhileThreadsWork) {
  const ProgramResult result = Watch([](const Value &source, const Value &dest, const PluginSession::MoveProgress &) {
    dest.Call("ScaleMT", {1, source, nullptr, 1, 5, 4});
  });
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, StartsWith(kShown));
}

TEST_F(WatchedSession, ShowsNothingWhileNobodyYields) {
  const ProgramResult result = Watch([](const Value &source, const Value &dest, const PluginSession::MoveProgress &) {
    dest.Call("Scale", {source, nullptr, 1, 5, 4});
  });
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, "");
}

using PluginChoice = ZvkProgram;

TEST_F(PluginChoice, NamesAPluginThatIsNotThere) {
  const ProgramResult result = Run({"scale", "a.png", "b.png", "1x1", "--plugin", "nowhere.so"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, StartsWith("zvk: "));
  EXPECT_THAT(result.errors, HasSubstr("nowhere.so"));
  EXPECT_THAT(result.errors, HasSubstr("; name a working plug-in with --plugin PATH\n"));
}

TEST_F(PluginChoice, NamesAPluginThatIsNone) {
  Write("text.so", "no library");
  for (const std::string library : {"text.so", "/lib/x86_64-linux-gnu/libm.so.6"}) {
    const ProgramResult result = Run({"scale", "a.png", "b.png", "1x1", "--plugin", library});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr(library));
    EXPECT_THAT(result.errors, HasSubstr("; name a working plug-in with --plugin PATH\n"));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1);
  }
}

TEST_F(PluginChoice, LooksBesideTheProgramFirst) {
  std::filesystem::create_directories(Path("bin"));
  std::filesystem::copy_file(PICTUREZVK_ZVK, Path("bin/zvk"));
  WriteImage("in.png", 2, 2, [](int, int) { return 0x123456; });
  const ProgramResult missing = Run({"scale", "in.png", "out.png", "1x1"}, Path("bin/zvk"));
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_THAT(missing.errors, StartsWith("zvk: no plug-in at " + Path("bin/libPictureZVK.so") + " or " + Path("lib")));
  EXPECT_THAT(missing.errors, HasSubstr("; build it, or name one with --plugin PATH\n"));
  EXPECT_FALSE(Names().contains("out.png"));

  std::filesystem::copy_file(PICTUREZVK_LIBRARY, Path("bin/libPictureZVK.so"));
  EXPECT_EQ(Run({"scale", "in.png", "out.png", "1x1"}, Path("bin/zvk")).exitCode, 0);
  EXPECT_EQ(ReadImage("out.png"), Colours({{0x123456}}));
}

// Where it is installed is told by the message of a program that finds none.
TEST_F(PluginChoice, LooksWhereItIsInstalledNext) {
  std::filesystem::create_directories(Path("bin"));
  std::filesystem::copy_file(PICTUREZVK_ZVK, Path("bin/zvk"));
  WriteImage("in.png", 2, 2, [](int, int) { return 0x123456; });
  const std::string message = Run({"scale", "in.png", "out.png", "1x1"}, Path("bin/zvk")).errors;
  const size_t start = message.find(" or ") + 4;
  const std::filesystem::path installed = message.substr(start, message.find(';') - start);
  ASSERT_THAT(installed.string(), StartsWith(Path("lib")));
  std::filesystem::create_directories(installed.parent_path());
  std::filesystem::copy_file(PICTUREZVK_LIBRARY, installed);
  EXPECT_EQ(Run({"scale", "in.png", "out.png", "1x1"}, Path("bin/zvk")).errors, "");
  EXPECT_EQ(ReadImage("out.png"), Colours({{0x123456}}));
}

TEST_F(PluginChoice, TakesThePluginThatIsNamed) {
  std::filesystem::copy_file(PICTUREZVK_LIBRARY, Path("other.so"));
  WriteImage("in.png", 2, 2, [](int, int) { return 0x123456; });
  EXPECT_EQ(Run({"scale", "in.png", "out.png", "1x1", "--plugin", "other.so"}).errors, "");
  EXPECT_EQ(ReadImage("out.png"), Colours({{0x123456}}));
}

}  // namespace
}  // namespace standalone
