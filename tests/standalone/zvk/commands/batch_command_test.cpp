#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "standalone/zvk/commands/commands.h"
#include "tests/standalone/files/exif_testing.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::StartsWith;

// The output is the input and what the further arguments are.
constexpr char kCopy[] = R"(
  local input, output = assert(io.open(arg[1], "rb")), assert(io.open(arg[2], "wb"))
  output:write(input:read("a"), table.concat(arg, ",", 3))
  output:close()
)";

class BatchCommand : public ZvkProgram {
 protected:
  BatchCommand() { Write("copy.lua", kCopy); }

  std::vector<std::string> With(const std::vector<std::string> &arguments) const {
    std::vector<std::string> all = {"batch", "copy.lua"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
  }

  void ExpectDone(const std::vector<std::string> &arguments, const std::string &summary) const {
    const ProgramResult result = Run(With(arguments));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zvk: " + summary + "\n");
  }

  void ExpectRefusal(const std::vector<std::string> &arguments, int exitCode, const std::string &message) const {
    ExpectFailure(With(arguments), exitCode, message);
  }

  // Puts the last change of a file so far before the start of the test.
  void MakeOld(const std::string &name, std::chrono::seconds age) const {
    fs::last_write_time(Path(name), start_ - age);
  }

 private:
  const fs::file_time_type start_ = fs::file_time_type::clock::now();
};

using std::chrono::hours;

TEST_F(BatchCommand, RunsTheScriptOnEachFile) {
  Write("a.txt", "one");
  Write("b.txt", "two");
  ExpectDone({"a.txt", "b.txt", "--output", "out/{name}.copy"}, "2 done, 0 failed");
  EXPECT_EQ(Read("out/a.copy"), "one");
  EXPECT_EQ(Read("out/b.copy"), "two");
  EXPECT_EQ(Names(), (std::set<std::string>{"copy.lua", "a.txt", "b.txt", "out"}));
}

TEST_F(BatchCommand, TakesOptionsBeforeTheFilesToo) {
  Write("a.txt", "one");
  ExpectDone({"--jobs", "2", "--output", "{name}.copy", "a.txt"}, "1 done, 0 failed");
  ExpectDone({"-j1", "--output={name}.copy", "a.txt"}, "1 done, 0 failed");
  EXPECT_EQ(Read("a.copy"), "one");
}

TEST_F(BatchCommand, HandsFurtherArgumentsToTheScript) {
  Write("a.txt", "one");
  ExpectDone({"--arg", "x y", "--arg=-2", "--arg", "--seed", "--output", "{name}.copy", "a.txt"}, "1 done, 0 failed");
  EXPECT_EQ(Read("a.copy"), "onex y,-2,--seed");
}

TEST_F(BatchCommand, HandsThemOnAfterTheFileWhereThereIsNoOutput) {
  Write("a.txt", "one");
  Write("tell.lua", "print(#arg, arg[0], arg[1], arg[2])");
  const ProgramResult result = Run({"batch", "tell.lua", "a.txt", "--arg", "more"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, "2\ttell.lua\ta.txt\tmore\n");
  EXPECT_EQ(result.errors, "zvk: 1 done, 0 failed\n");
}

TEST_F(BatchCommand, SeedsEachFileAsRunDoes) {
  Write("random.lua", R"(
    local image = PictureZVK(64, 64, PictureZVK.ImageFormatRGB)
    image:FillRectRandom()
    io.open(arg[2], "wb"):write(image:DataStringInFormat(PictureZVK.ImageFormatRGB))
  )");
  Write("a.txt", "");
  Write("b.txt", "");
  ASSERT_EQ(Run({"run", "--seed", "7", "random.lua", "", "alone"}).errors, "");
  ASSERT_EQ(Run({"run", "--seed", "8", "random.lua", "", "other"}).errors, "");
  EXPECT_EQ(Run({"batch", "random.lua", "a.txt", "b.txt", "--seed", "7", "--output", "{name}.out"}).exitCode, 0);
  EXPECT_EQ(Read("a.out"), Read("alone"));
  EXPECT_EQ(Read("b.out"), Read("alone"));
  EXPECT_NE(Read("a.out"), Read("other"));
}

TEST_F(BatchCommand, OpensPicturesUprightOrAsTheyAreStored) {
  WriteImage("plain.jpg", 16, 8, [](int, int) { return 0x808080; });
  constexpr int kTurned = 6;
  Write("turned.jpg", JpegWithExif(Read("plain.jpg"), Exif(kTurned, true)));
  Write("tell.lua", "print(Picture.Open(arg[1]).Width)");
  EXPECT_EQ(Run({"batch", "tell.lua", "turned.jpg"}).output, "8\n");
  EXPECT_EQ(Run({"batch", "tell.lua", "turned.jpg", "--no-orient"}).output, "16\n");
}

TEST_F(BatchCommand, UsesThePluginThatIsNamed) {
  Write("a.txt", "one");
  fs::copy_file(PICTUREZVK_LIBRARY, Path("other.so"));
  Write("tell.lua", R"(
    for line in io.lines("/proc/self/maps") do
      if line:find("PictureZVK.so", 1, true) or line:find("other.so", 1, true) then print(line:match("[^/]+$")) break end
    end
  )");
  EXPECT_EQ(Run({"batch", "tell.lua", "a.txt", "--plugin", "other.so"}).output, "other.so\n");
  EXPECT_EQ(Run({"batch", "tell.lua", "a.txt"}).output, "libPictureZVK.so\n");
}

TEST_F(BatchCommand, TellsWhatIsLeftOfEachFile) {
  Write("a.txt", "one");
  Write("b.txt", "two");
  EXPECT_EQ(Run(With({"a.txt", "b.txt", "--output", "{name}.copy", "--leaks"})).output,
            "references not given back: none\nreferences not given back: none\n");
}

TEST_F(BatchCommand, WorksOnFilesOfAList) {
  Write("a.txt", "one");
  Write("b c.txt", "two");
  Write("list", "a.txt\nb c.txt\n");
  ExpectDone({"--files-from", "list", "--output", "{name}.copy"}, "2 done, 0 failed");
  EXPECT_EQ(Read("b c.copy"), "two");
  Write("d.txt", "three");
  ExpectDone({"d.txt", "--files-from", "list", "--output", "{name}.more"}, "3 done, 0 failed");
  EXPECT_EQ(Read("d.more"), "three");
  EXPECT_EQ(Read("a.more"), "one");
}

TEST_F(BatchCommand, WorksOnFilesOfItsStandardInput) {
  Write("a.txt", "one");
  Write("b.txt", "two");
  const ProgramResult result = Run(
      {"-c", "printf 'a.txt\\0b.txt\\0' | \"$0\" batch copy.lua --files-from - --output '{name}.copy'", PICTUREZVK_ZVK},
      "/bin/sh");
  EXPECT_EQ(result.errors, "zvk: 2 done, 0 failed\n");
  EXPECT_EQ(Read("b.copy"), "two");
}

TEST_F(BatchCommand, HasNothingToDoForAnEmptyList) {
  ExpectDone({"--files-from", "/dev/null", "--output", "{name}.copy"}, "0 done, 0 failed");
}

TEST_F(BatchCommand, LeavesOutWhatIsDoneOnRequest) {
  for (const std::string name : {"a", "b", "c", "d"}) Write(name + ".txt", "new");
  for (const std::string name : {"a", "b", "c"}) Write(name + ".copy", "old");
  MakeOld("copy.lua", hours(4));
  for (const std::string name : {"a", "b", "c", "d"}) MakeOld(name + ".txt", hours(3));
  MakeOld("a.copy", hours(2));
  MakeOld("b.copy", hours(3) + std::chrono::seconds(1));  // older than its input
  MakeOld("c.copy", hours(5));                            // older than the script as well
  const std::vector<std::string> arguments = {"--resume", "--output",    "{name}.copy", "a.txt",
                                              "b.txt",    "nowhere.txt", "c.txt",       "d.txt"};
  const ProgramResult result = Run(With(arguments));
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "zvk: nowhere.txt: no such file; check the path\nzvk: 3 done, 1 up to date, 1 failed\n");
  EXPECT_EQ(Read("a.copy"), "old");
  for (const std::string name : {"b", "c", "d"}) EXPECT_EQ(Read(name + ".copy"), "new") << name;

  ExpectDone({"--resume", "--output", "{name}.copy", "a.txt", "b.txt", "c.txt", "d.txt"},
             "0 done, 4 up to date, 0 failed");
  MakeOld("copy.lua", hours(1));  // and newer than a.copy
  ExpectDone({"--resume", "--output", "{name}.copy", "a.txt", "b.txt", "c.txt", "d.txt"},
             "1 done, 3 up to date, 0 failed");
  EXPECT_EQ(Read("a.copy"), "new");
}

TEST_F(BatchCommand, DoesEverythingAnewUnlessItIsToldNotTo) {
  Write("a.txt", "new");
  Write("a.copy", "old");
  MakeOld("copy.lua", hours(3));
  MakeOld("a.txt", hours(2));
  ExpectDone({"--output", "{name}.copy", "a.txt"}, "1 done, 0 failed");
  EXPECT_EQ(Read("a.copy"), "new");
}

TEST_F(BatchCommand, ListsWhatThereIsToDoAndDoesNothing) {
  for (const std::string name : {"a.txt", "b.txt", "a.copy"}) Write(name, name);
  MakeOld("copy.lua", hours(3));
  MakeOld("a.txt", hours(2));
  const ProgramResult all = Run(With({"b.txt", "a.txt", "--output", "{name}.copy", "--list"}));
  EXPECT_EQ(all.output, "b.txt\na.txt\n");
  EXPECT_EQ(all.errors, "");
  const ProgramResult rest = Run(With({"b.txt", "a.txt", "--output", "{name}.copy", "--list", "--resume"}));
  EXPECT_EQ(rest.output, "b.txt\n");
  EXPECT_EQ(Names(), (std::set<std::string>{"copy.lua", "a.txt", "b.txt", "a.copy"}));
  EXPECT_EQ(Read("a.copy"), "a.copy");
}

TEST_F(BatchCommand, RefusesACommandLineThatIsWrongBeforeItStarts) {
  Write("a.txt", "one");
  Write("b.txt", "two");
  ExpectRefusal({}, 2, "there are no files to work on; name some, or a list of them with --files-from FILE");
  ExpectRefusal({"a.txt", "--resume"}, 2, "--resume looks at the outputs; tell where they are with --output PATTERN");
  ExpectRefusal({"a.txt", "b.txt", "--output", "x"}, 2, "the outputs of a.txt and b.txt are both x; tell them apart");
  ExpectRefusal({"a.txt", "b.txt", "--output", "{file}"}, 2, "the output of a.txt is the file a.txt; ");
  ExpectRefusal({"a.txt", "--output", "{base}.png"}, 2, "there is no {base} for '{base}.png'; write {name}, ");
  ExpectRefusal({"a.txt", "--jobs", "0"}, 2, "--jobs: ");
  ExpectRefusal({"a.txt", "--files-from", "nowhere"}, 1, "nowhere: cannot be read (No such file or directory); ");
}

TEST_F(BatchCommand, TellsWhatWouldFailForEachFileOnce) {
  Write("a.txt", "one");
  Write("b.txt", "two");
  Write("wrong.lua", "print(");
  ExpectFailure({"batch", "nowhere.lua", "a.txt", "b.txt"}, 1, "there is no script nowhere.lua; name a file in Lua");
  ExpectFailure({"batch", "wrong.lua", "a.txt", "b.txt"}, 1, "wrong.lua:1: unexpected symbol near <eof>");
  ExpectRefusal({"a.txt", "b.txt", "--plugin", "nowhere.so"}, 1, "");
  EXPECT_THAT(Run(With({"a.txt", "--plugin", "nowhere.so"})).errors, HasSubstr("name a working plug-in with --plugin"));
}

TEST_F(BatchCommand, MakesThePicturesThatRunMakes) {
  const std::string examples = PICTUREZVK_EXAMPLES;
  const std::string script = examples + "/sharpen.lua";
  const std::vector<std::string> names = {"astronaut.png", "coffee.png", "moon.png", "rocket.jpg"};
  std::vector<std::string> arguments = {"batch", script, "--jobs", "3", "--arg", "0.8", "--output", "batch/{name}.png"};
  for (const std::string &name : names) arguments.push_back(examples + "/" + name);
  EXPECT_EQ(Run(arguments).errors, "zvk: 4 done, 0 failed\n");
  for (const std::string &name : names) {
    ASSERT_EQ(Run({"run", script, examples + "/" + name, "alone.png", "0.8"}).errors, "");
    EXPECT_EQ(Read("batch/" + fs::path(name).stem().string() + ".png"), Read("alone.png")) << name;
  }
}

}  // namespace
}  // namespace standalone
