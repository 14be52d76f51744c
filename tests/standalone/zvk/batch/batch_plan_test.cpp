#include "standalone/zvk/batch/batch_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "standalone/zvk/session/messages.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

namespace fs = std::filesystem;

using Jobs = std::vector<BatchJob>;
using Strings = std::vector<std::string>;
using testing::StartsWith;

// In a folder of its own.
class BatchPlan : public ZvkProgram {
 protected:
  BatchPlan() { fs::current_path(folder_); }
  ~BatchPlan() override { fs::current_path("/"); }

  static std::string Refusal(const Strings &inputs, const std::string &pattern, const std::string &script = "s.lua") {
    try {
      PlanJobs(inputs, pattern, script);
    } catch (const UsageError &error) {
      return error.what();
    }
    return "no refusal";
  }

  // Makes a file that was last changed so many seconds after some moment.
  void Change(const std::string &name, int seconds) const {
    Write(name, name);
    fs::last_write_time(Path(name), moment_ + std::chrono::seconds(seconds));
  }

  fs::file_time_type moment_ = fs::file_time_type::clock::now() - std::chrono::hours(1);
};

TEST_F(BatchPlan, ReadsAListOfOnePathALine) {
  Write("list", "a.png\nb c.png\n\n d.png\r\nlast");
  EXPECT_EQ(ReadFileList("list"), (Strings{"a.png", "b c.png", " d.png\r", "last"}));
  Write("empty", "");
  EXPECT_EQ(ReadFileList("empty"), Strings{});
}

TEST_F(BatchPlan, ReadsAListThatIsSeparatedByZeroBytes) {
  using namespace std::string_literals;
  Write("list", "a.png\0two\nlines.png\0"s);
  EXPECT_EQ(ReadFileList("list"), (Strings{"a.png", "two\nlines.png"}));
}

TEST_F(BatchPlan, NamesAListThatCannotBeRead) {
  const auto errorOf = [](const std::string &path) -> std::string {
    try {
      ReadFileList(path);
    } catch (const std::runtime_error &error) {
      return error.what();
    }
    return "no error";
  };
  EXPECT_EQ(errorOf("nowhere"), "nowhere: cannot be read (No such file or directory); check the path");
  fs::create_directory("folder");
  EXPECT_EQ(errorOf("folder"), "folder: is a folder; name a file with paths in it");
}

TEST_F(BatchPlan, MakesAJobOfEachInputInTheirOrder) {
  EXPECT_EQ(PlanJobs({"b.jpg", "a.jpg"}, "out/{name}.png", "s.lua"),
            (Jobs{{"b.jpg", "out/b.png"}, {"a.jpg", "out/a.png"}}));
  EXPECT_EQ(PlanJobs({"b.jpg", "b.jpg"}, "", "s.lua"), (Jobs{{"b.jpg", ""}, {"b.jpg", ""}}));
  EXPECT_EQ(PlanJobs({}, "out/{name}.png", "s.lua"), Jobs{});
}

TEST_F(BatchPlan, RefusesTwoOutputsInOneFile) {
  EXPECT_EQ(Refusal({"a.jpg", "b.jpg", "a.png"}, "out/{name}.png"),
            "the outputs of a.jpg and a.png are both out/a.png; tell them apart in --output, by {extension} or "
            "{folder}, say");
  EXPECT_THAT(Refusal({"x/a.jpg", "x/../y/a.jpg"}, "out/{file}"),
              StartsWith("the outputs of x/a.jpg and x/../y/a.jpg"));
  EXPECT_EQ(Refusal({"a.jpg", "a.jpg"}, "out/{file}"), "the file a.jpg is given twice; name it once");
  fs::create_directory("real");
  fs::create_directory_symlink("real", "link");
  EXPECT_THAT(Refusal({"real/a.jpg", "link/a.jpg"}, "{folder}/{name}.png"),
              StartsWith("the outputs of real/a.jpg and "));
}

TEST_F(BatchPlan, RefusesAnOutputThatIsReadAsWell) {
  EXPECT_EQ(Refusal({"a.png"}, "{file}"), "the output of a.png is the file a.png; name another one with --output");
  EXPECT_EQ(Refusal({"a.png", "b.jpg", "b.png"}, "./{name}.png"),
            "the output of a.png is the file a.png; name another one with --output");
  EXPECT_EQ(Refusal({"b.jpg", "b.png"}, Path("{name}.png")),
            "the output of b.jpg is the file b.png; name another one with --output");
  EXPECT_EQ(Refusal({"s.png"}, "{name}.lua"), "the output of s.png is the script; name another one with --output");
}

TEST_F(BatchPlan, RefusesAnOutputThatIsAFolder) {
  fs::create_directory("out");
  EXPECT_EQ(Refusal({"a.png"}, "out"),
            "the output of a.png is the folder 'out'; name a file in it, such as 'out/{name}.png'");
  EXPECT_EQ(Refusal({"a.png"}, "new/"),
            "the output of a.png is the folder 'new/'; name a file in it, such as 'new/{name}.png'");
}

TEST_F(BatchPlan, TakesAnOutputForDoneThatIsNewerThanInputAndScript) {
  Change("in", 0);
  Change("script", 1);
  Change("out", 2);
  EXPECT_TRUE(IsUpToDate({"in", "out"}, "script"));
}

TEST_F(BatchPlan, DoesAnOutputAnewThatIsNotNewer) {
  Change("script", 0);
  Change("in", 2);
  Change("out", 1);
  EXPECT_FALSE(IsUpToDate({"in", "out"}, "script"));
  Change("in", 1);
  EXPECT_FALSE(IsUpToDate({"in", "out"}, "script"));
  Change("in", 0);
  EXPECT_TRUE(IsUpToDate({"in", "out"}, "script"));
  Change("script", 1);
  EXPECT_FALSE(IsUpToDate({"in", "out"}, "script"));
}

TEST_F(BatchPlan, DoesAnOutputAnewWhereAFileIsMissingOrIsAFolder) {
  Change("script", 0);
  Change("in", 0);
  EXPECT_FALSE(IsUpToDate({"in", "out"}, "script"));
  fs::create_directory("out");
  EXPECT_FALSE(IsUpToDate({"in", "out"}, "script"));
  fs::remove("out");
  Change("out", 1);
  EXPECT_FALSE(IsUpToDate({"nowhere", "out"}, "script"));
  EXPECT_FALSE(IsUpToDate({"in", "out"}, "nowhere"));
}

}  // namespace
}  // namespace standalone
