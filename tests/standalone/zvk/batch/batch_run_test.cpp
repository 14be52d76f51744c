#include "standalone/zvk/batch/batch_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "tests/standalone/processes/waiting.h"
#include "tests/standalone/zvk/clocked_program.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

namespace fs = std::filesystem;

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Seen from outside: as the command at work on three files.
class BatchRun : public ZvkProgram {
 protected:
  BatchRun() {
    for (const std::string name : {"a", "b", "c"}) Write(name, "input " + name);
  }

  std::vector<std::string> Arguments(const std::string &script, const std::vector<std::string> &more) const {
    Write("script.lua", script);
    std::vector<std::string> arguments = {"batch", "script.lua", "a", "b", "c"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }

  ProgramResult RunScript(const std::string &script, const std::vector<std::string> &more = {}) const {
    return Run(Arguments(script, more));
  }

  // Starts the command with the signals of a terminal as they are in one.
  pid_t StartScript(const std::string &script, const std::vector<std::string> &more) const {
    const std::vector<std::string> arguments = Arguments(script, more);
    const pid_t process = fork();
    if (process == 0) {
      for (const int number : {SIGINT, SIGTERM, SIGTSTP}) std::signal(number, SIG_DFL);
      if (chdir(folder_.c_str()) != 0 || freopen("errors", "w", stderr) == nullptr) _exit(127);
      Become(PICTUREZVK_ZVK, arguments);
    }
    return process;
  }

  std::set<std::string> Left() const {
    std::set<std::string> names = Names();
    for (const char *const name : {"a", "b", "c", "script.lua", "errors", "gate"}) names.erase(name);
    return names;
  }

  pid_t AwaitNumberIn(const std::string &name) const {
    AwaitThat([&] { return Read(name).find('\n') != std::string::npos; });
    return std::stoi(Read(name));
  }
};

using Strings = std::set<std::string>;

constexpr char kNoteProcess[] =
    R"(os.execute("echo $PPID > " .. arg[1] .. ".id.new; mv " .. arg[1] .. ".id.new " .. arg[1] .. ".id"))";

// Two at a time: the third starts when the second has failed, and lets the first one fail.
TEST_F(BatchRun, ListsTheFailuresInTheOrderOfTheFilesAndDoesTheRest) {
  const Gate gate(Path("gate"));
  const ProgramResult result = RunScript(R"(
    if arg[1] == "a" then io.open("gate") error("first\nand more") end
    if arg[1] == "b" then io.stderr:write("a note\n") os.exit(3) end
    io.open(arg[2], "w"):write("done")
    io.open("gate", "w")
  )",
                                         {"--jobs", "2", "--output", "{name}.out"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "zvk: a: exit code 1\n"
            "  zvk: script.lua:2: first\n"
            "  and more\n"
            "zvk: b: exit code 3\n"
            "  a note\n"
            "zvk: 1 done, 2 failed\n");
  EXPECT_EQ(Left(), Strings{"c.out"});
}

TEST_F(BatchRun, LeavesNothingHalfWritten) {
  Write("a.out", "whole");
  const ProgramResult result = RunScript(R"(
    local output = io.open(arg[2], "w")
    output:write("half")
    output:flush()
    if arg[1] == "a" then error("a stop") end
    if arg[1] == "b" then os.execute("kill -9 $PPID") end
    output:write(" and half")
  )",
                                         {"--output", "{name}.out"});
  EXPECT_EQ(result.errors,
            "zvk: a: exit code 1\n"
            "  zvk: script.lua:5: a stop\n"
            "zvk: b: killed by signal 9 (Killed)\n"
            "zvk: 1 done, 2 failed\n");
  EXPECT_EQ(Left(), (Strings{"a.out", "c.out"}));
  EXPECT_EQ(Read("a.out"), "whole");
  EXPECT_EQ(Read("c.out"), "half and half");
}

TEST_F(BatchRun, CountsAScriptWithoutAnOutputAsFailed) {
  Write("b.out", "old");
  const ProgramResult result = RunScript(R"(
    if arg[1] == "a" then return end
    if arg[1] == "b" then os.execute("mkdir " .. arg[2]) return end
    io.open(arg[2], "w")
  )",
                                         {"--output", "{name}.out"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "zvk: a: the script ended well without an output; let it write to arg[2]\n"
            "zvk: b: the script ended well without an output; let it write to arg[2]\n"
            "zvk: 1 done, 2 failed\n");
  EXPECT_EQ(Left(), (Strings{"b.out", "c.out"}));
  EXPECT_EQ(Read("b.out"), "old");
}

TEST_F(BatchRun, CountsAnOutputOfWhatHasChangedMeanwhileAsFailed) {
  const ProgramResult result = RunScript(R"(
    io.open(arg[2], "w"):write("done")
    if arg[1] == "b" then io.open(arg[1], "a"):write("more") end
  )",
                                         {"--output", "{name}.out"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "zvk: b: the file or the script was changed meanwhile; run it again with --resume\n"
            "zvk: 2 done, 1 failed\n");
  EXPECT_EQ(Left(), (Strings{"a.out", "c.out"}));
}

TEST_F(BatchRun, BringsFilesBesideTheOutput) {
  const ProgramResult result = RunScript(R"(
    io.open(arg[2], "w"):write(arg[1])
    io.open(arg[2] .. ".more", "w"):write("more of " .. arg[1])
    if arg[1] == "b" then error("stop") end
  )",
                                         {"--output", "out/{name}"});
  EXPECT_THAT(result.errors, EndsWith("zvk: 2 done, 1 failed\n"));
  Strings names;
  for (const auto &entry : fs::directory_iterator(Path("out"))) names.insert(entry.path().filename());
  EXPECT_EQ(names, (Strings{"a", "a.more", "c", "c.more"}));
  EXPECT_EQ(Read("out/c.more"), "more of c");
}

TEST_F(BatchRun, GivesTheScriptThePathOfAFileOfTheOutputsName) {
  const ProgramResult result = RunScript(R"(
    io.open(arg[2], "w"):write(arg[2]:match("[^/]+$"))
  )",
                                         {"--output", "out/{name}.text"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(Read("out/b.text"), "b.text");
}

TEST_F(BatchRun, NamesAnOutputThatCannotBe) {
  fs::create_directory(Path("b.out"));
  Write("file", "");
  const std::string script = R"(io.open(arg[2], "w"):write("done"))";
  EXPECT_EQ(RunScript(script, {"--output", "file/{name}"}).errors,
            "zvk: a: file/a: cannot be written (Not a directory); check its folder and who may write there\n"
            "zvk: b: file/b: cannot be written (Not a directory); check its folder and who may write there\n"
            "zvk: c: file/c: cannot be written (Not a directory); check its folder and who may write there\n"
            "zvk: 0 done, 3 failed\n");
  EXPECT_EQ(Left(), (Strings{"b.out", "file"}));
}

TEST_F(BatchRun, KeepsMessagesToTheirLines) {
  Write("x\ny\x1b[2J", "");
  const ProgramResult result = Run({"batch", "-", "x\ny\x1b[2J"});
  EXPECT_EQ(result.errors, "zvk: there is no script -; name a file in Lua\n");
  Write("script.lua", R"(io.stderr:write("\27[2J red\n") os.exit(1))");
  EXPECT_EQ(Run({"batch", "script.lua", "x\ny\x1b[2J"}).errors,
            "zvk: x y [2J: exit code 1\n   [2J red\nzvk: 0 done, 1 failed\n");
}

TEST_F(BatchRun, TellsTheEndOfLongErrors) {
  const ProgramResult result = RunScript(R"(
    for i = 1, 100000 do io.stderr:write("line " .. i .. "\n") end
    os.exit(1)
  )");
  EXPECT_LT(result.errors.size(), size_t{40'000});
  EXPECT_THAT(result.errors, AllOf(StartsWith("zvk: a: exit code 1\n  line "), HasSubstr("\n  line 99999\n"),
                                   HasSubstr("  line 100000\nzvk: b: "), Not(HasSubstr(" line 1\n"))));
}

TEST_F(BatchRun, PassesOnWhatScriptsPrintOneAfterAnother) {
  const ProgramResult result = RunScript(R"(
    for i = 1, 1000 do print(arg[1], i) io.stdout:flush() end
    io.write("end of ", arg[1])
    if arg[1] == "b" then os.exit(1) end
  )",
                                         {"--jobs", "3"});
  std::string rest = result.output;
  for (const std::string name : {"a", "b", "c"}) {
    std::string text;
    for (int i = 1; i <= 1000; ++i) text += name + "\t" + std::to_string(i) + "\n";
    text += "end of " + name + "\n";
    const size_t start = rest.find(text);
    ASSERT_NE(start, std::string::npos) << name;
    rest.erase(start, text.size());
  }
  EXPECT_EQ(rest, "");
  EXPECT_EQ(result.errors, "zvk: b: exit code 1\nzvk: 2 done, 1 failed\n");
}

TEST_F(BatchRun, PassesOnTheNotesOfScriptsThatEndWell) {
  const ProgramResult result = RunScript(R"(io.stderr:write("note on " .. arg[1] .. "\n"))", {"--jobs", "1"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "note on a\nnote on b\nnote on c\nzvk: 3 done, 0 failed\n");
}

TEST_F(BatchRun, GivesScriptsNoInput) {
  EXPECT_EQ(RunScript(R"(print(io.read("a") == ""))").output, "true\ntrue\ntrue\n");
}

TEST_F(BatchRun, RunsAsManyAtATimeAsItIsToldAndNoMore) {
  Gate gate(Path("gate"));
  const pid_t process = StartScript(std::string(kNoteProcess) + " io.open('gate')", {"--jobs", "2"});
  const std::set<pid_t> scripts = {AwaitNumberIn("a.id"), AwaitNumberIn("b.id")};
  // It stops when it has started all that it will.
  ASSERT_EQ(kill(process, SIGTSTP), 0);
  int status = 0;
  ASSERT_EQ(waitpid(process, &status, WUNTRACED), process);
  ASSERT_TRUE(WIFSTOPPED(status));
  EXPECT_EQ(ChildrenOf(process), scripts);
  ASSERT_EQ(kill(process, SIGCONT), 0);
  gate.Open();
  ASSERT_EQ(waitpid(process, &status, 0), process);
  EXPECT_EQ(Read("errors"), "zvk: 3 done, 0 failed\n");
}

TEST_F(BatchRun, ShowsOnATerminalHowFarItIs) {
  const ProgramResult result = RunOnTerminal(Arguments(R"(print(arg[1] .. " is done"))", {"--jobs", "1"}));
  EXPECT_EQ(result.exitCode, 0);
  const std::string clear = "\r\x1b[K";
  EXPECT_THAT(result.output, StartsWith(clear + "[--------------------] 0 of 3" + clear));
  // Nothing is written into the line.
  for (const std::string name : {"a", "b", "c"}) EXPECT_THAT(result.output, HasSubstr(clear + name + " is done\r\n"));
  EXPECT_THAT(result.output, EndsWith("c is done\r\nzvk: 3 done, 0 failed\r\n"));
}

TEST_F(BatchRun, MovesTheLineWithEachFileThatHasEnded) {
  Write("script.lua", R"(print(arg[1] .. " is done"))");
  const std::vector<BatchJob> jobs = {{"a", ""}, {"b", ""}, {"c", ""}};
  const BatchSettings settings = {.program = PICTUREZVK_ZVK,
                                  .script = "script.lua",
                                  .options = {},
                                  .arguments = {},
                                  .processes = 1,
                                  .clock = StandingClock()};
  const ProgramResult result = RunProcessOnTerminal([&] {
    const SignalWatch signals;
    return static_cast<int>(RunBatch(settings, jobs, signals).failures.size());
  });
  EXPECT_EQ(result.exitCode, 0);
  const std::string clear = "\r\x1b[K";
  EXPECT_EQ(result.output, clear + "[--------------------] 0 of 3" + clear + "a is done\r\n" +  //
                               clear + "[######--------------] 1 of 3" + clear + "b is done\r\n" + clear +
                               "[#############-------] 2 of 3" + clear + "c is done\r\n");
}

TEST_F(BatchRun, EndsAllScriptsWhenItIsAskedToEnd) {
  for (const int number : {SIGINT, SIGTERM}) {
    const pid_t process = StartScript(
        std::string("io.open(arg[2], 'w'):write('half'):flush() ") + kNoteProcess + " os.execute('sleep 600')",
        {"--jobs", "2", "--output", "out/{name}"});
    const pid_t scripts[] = {AwaitNumberIn("a.id"), AwaitNumberIn("b.id")};
    ASSERT_EQ(kill(process, number), 0);
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), number);
    for (const pid_t script : scripts) EXPECT_TRUE(IsOver(script));
    EXPECT_EQ(Read("errors"), "zvk: stopped: 0 done, 0 failed, 3 left\n");
    EXPECT_EQ(Left(), (Strings{"a.id", "b.id", "out"}));
    EXPECT_TRUE(fs::is_empty(Path("out")));
    fs::remove(Path("a.id"));
    fs::remove(Path("b.id"));
  }
}

TEST_F(BatchRun, TellsOfWhatHasEndedBeforeItIsAskedToEnd) {
  const pid_t process =
      StartScript(std::string("if arg[1] == 'a' then return end if arg[1] == 'b' then error('no') end ") +
                      kNoteProcess + " os.execute('sleep 600')",
                  {"--jobs", "1"});
  AwaitNumberIn("c.id");
  ASSERT_EQ(kill(process, SIGINT), 0);
  ASSERT_EQ(waitpid(process, nullptr, 0), process);
  EXPECT_EQ(Read("errors"), "zvk: b: exit code 1\n  zvk: script.lua:1: no\nzvk: stopped: 1 done, 1 failed, 1 left\n");
}

TEST_F(BatchRun, PausesAndGoesOnWithItsScripts) {
  Gate gate(Path("gate"));
  // Waits by itself: a shell that is stopped while it starts a program is not seen as stopped.
  const pid_t process = StartScript(std::string(kNoteProcess) + " io.open('gate')", {"--jobs", "1"});
  const pid_t script = AwaitNumberIn("a.id");
  ASSERT_EQ(kill(process, SIGTSTP), 0);
  int status = 0;
  ASSERT_EQ(waitpid(process, &status, WUNTRACED), process);
  EXPECT_TRUE(WIFSTOPPED(status));
  AwaitThat([&] { return StateOfProcess(script) == 'T'; });
  ASSERT_EQ(kill(process, SIGCONT), 0);
  gate.Open();
  ASSERT_EQ(waitpid(process, &status, 0), process);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(Read("errors"), "zvk: 3 done, 0 failed\n");
}

TEST_F(BatchRun, EndsWhenNobodyReadsWhatItPrints) {
  std::signal(SIGPIPE, SIG_DFL);
  Write("script.lua", R"(io.open(arg[2], "w"):write("done") io.write(("x"):rep(1 << 20)))");
  const ProgramResult result = Run({"-c",
                                    "{ \"$0\" batch script.lua a b c --jobs 1 --output '{name}.out'; echo $? > code; } "
                                    "| head -c 1",
                                    PICTUREZVK_ZVK},
                                   "/bin/sh");
  EXPECT_EQ(result.output, "x");
  EXPECT_EQ(Read("code"), std::to_string(128 + SIGPIPE) + "\n");
  EXPECT_EQ(Left(), Strings{"code"});
}

}  // namespace
}  // namespace standalone
