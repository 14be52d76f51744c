// Completion in real shells: what they offer is compared with what the help and the commands themselves tell.

#include "standalone/zvk/help/completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/standalone/zvk/help_texts.h"

namespace standalone {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

using Words = std::vector<std::string>;

// The lines that are not empty.
Words LinesOf(const std::string &text) {
  Words lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    std::erase(line, '\r');
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

// A terminal's commands start with escape and a bracket, and end with a letter.
std::string WithoutTerminalCommands(const std::string &text) {
  std::string rest;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\x1b') {
      rest += text[i];
      continue;
    }
    while (i < text.size() && std::isalpha(static_cast<unsigned char>(text[i])) == 0) ++i;
  }
  return rest;
}

// The first of each name, whatever its case.
Words Unique(const Words &words) {
  std::set<std::string> seen;
  Words unique;
  for (const std::string &word : words) {
    std::string small = word;
    std::ranges::transform(small, small.begin(), [](unsigned char letter) { return std::tolower(letter); });
    if (seen.insert(small).second) unique.push_back(word);
  }
  return unique;
}

class Completion : public HelpTexts {
 protected:
  // The script for a shell, as a file.
  std::string Script(const std::string &shell) const {
    const ProgramResult result = Run({"completion", shell});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    Write("completion." + shell, result.output);
    return Path("completion." + shell);
  }

  // Names of filters, formats and members as the program tells them otherwise.
  Words FilterNames() const {
    Words names;
    for (const std::string &line : LinesOf(Run({"filter", "--list"}).output)) names.push_back(FirstWord(line));
    return Unique(names);
  }
  Words FilterArguments() const {
    Words names;
    std::istringstream words(Run({"filter", "--list"}).output);
    for (std::string word; words >> word;) {
      if (word.front() == '[') word.erase(0, 1);
      if (word.find('=') != std::string::npos) names.push_back(word.substr(0, word.find('=') + 1));
    }
    return Unique(names);
  }
  // Classes are at the start of a line, members four letters from it; between them are headings.
  Words MemberNames() const {
    Words names;
    for (const std::string &line : LinesOf(Run({"methods"}).output)) {
      const size_t start = line.find_first_not_of(' ');
      const auto isLetter = [](unsigned char letter) { return std::isalnum(letter) != 0 || letter == '_'; };
      const auto name = line.begin() + static_cast<ptrdiff_t>(start);
      if (start == 0 || start == 4) names.emplace_back(name, std::find_if_not(name, line.end(), isLetter));
    }
    return Unique(names);
  }
};

const Words kScaleFilters = {"triangle", "box", "lanczos3", "lanczos8", "mitchell", "poly3", "cubic"};
const Words kFormats = {"RGB", "RGBA", "RGBX",   "ARGB", "XRGB", "BGR",  "BGRA", "BGRX", "ABGR", "XBGR", "G",
                        "GA",  "AG",   "Gray16", "1of3", "2of3", "3of3", "1of4", "2of4", "3of4", "4of4"};
const std::string kFiles = "<-o default>";
const std::string kNoSpace = "<-o nospace>";

class BashCompletionOf : public Completion {
 protected:
  BashCompletionOf() : script_(Script("bash")) {}

  // What bash offers for the last of the words. Where files are to be completed by bash itself, that is kFiles.
  Words Offered(const Words &words) const {
    Words arguments = {"-c",
                       "compopt() { echo \"<$*>\"; }; source \"$0\"; COMP_WORDS=(\"$@\") COMP_CWORD=$(($# - 1)); _zvk; "
                       "printf '%s\\n' \"${COMPREPLY[@]}\"",
                       script_, "zvk"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const ProgramResult result = Run(arguments, "/bin/bash");
    EXPECT_EQ(result.errors, "");
    return LinesOf(result.output);
  }

  const std::string script_;
};

TEST_F(BashCompletionOf, HasNothingThatBashDoesNotUnderstand) {
  const ProgramResult result = Run({"-n", script_}, "/bin/bash");
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(LinesOf(Run({"-c", "source \"$0\"; complete -p zvk", script_}, "/bin/bash").output),
              ElementsAre("complete -F _zvk zvk"));
}

TEST_F(BashCompletionOf, CommandsOffersAll) {
  EXPECT_THAT(Offered({""}), ElementsAreArray(Commands()));
  EXPECT_THAT(Offered({"sc"}), ElementsAre("scale"));
  EXPECT_THAT(Offered({"m"}), ElementsAre("mirror", "methods", "manual"));
  EXPECT_THAT(Offered({"nothing"}), IsEmpty());
}

TEST_F(BashCompletionOf, OptionsOffersAllOfTheCommand) {
  EXPECT_THAT(Offered({"-"}), UnorderedElementsAreArray(Options("")));
  for (const std::string &command : Commands()) {
    EXPECT_THAT(Offered({command, "-"}), UnorderedElementsAreArray(Options(command))) << command;
  }
  EXPECT_THAT(Offered({"scale", "a.png", "--f"}), ElementsAre("--filter", "--fast", "--format"));
  EXPECT_THAT(Offered({"scale", "--filter", "box", "--fa"}), ElementsAre("--fast"));
}

TEST_F(BashCompletionOf, ValuesOffersWhatThePluginHas) {
  EXPECT_THAT(Offered({"scale", "--filter", ""}), ElementsAreArray(kScaleFilters));
  EXPECT_THAT(Offered({"scale", "a.png", "b.png", "--filter", "LAN"}), ElementsAre("lanczos3", "lanczos8"));
  EXPECT_THAT(Offered({"scale", "--format", ""}), UnorderedElementsAreArray(kFormats));
  EXPECT_THAT(Offered({"filter", ""}), ElementsAreArray(FilterNames()));
  EXPECT_THAT(Offered({"filter", "oil"}), ElementsAre("OilFilter"));
  EXPECT_THAT(Offered({"methods", ""}), UnorderedElementsAreArray(MemberNames()));
  EXPECT_THAT(Offered({"methods", "scalem"}), ElementsAre("ScaleMT", "ScaleMitchell"));
  EXPECT_THAT(Offered({"mirror", "a.png", "b.png", ""}), ElementsAre("h", "v"));
  EXPECT_THAT(Offered({"completion", ""}), ElementsAre("bash", "zsh"));
}

// Bash gives "--name=value" as three words, and the last of them need not have been begun.
TEST_F(BashCompletionOf, ValuesBehindAnEqualsSignAreValues) {
  EXPECT_THAT(Offered({"scale", "--filter", "=", "lan"}), ElementsAre("lanczos3", "lanczos8"));
  EXPECT_THAT(Offered({"scale", "--filter", "="}), ElementsAreArray(kScaleFilters));
  EXPECT_THAT(Offered({"scale", "--filter", "=", "box", "a.png", "b.png", "1x1", "--fa"}), ElementsAre("--fast"));
  EXPECT_THAT(Offered({"mirror", "--background", "=", "#FFF", "a.png", "b.png", ""}), ElementsAre("h", "v"));
}

TEST_F(BashCompletionOf, FiltersArgumentsOffersNamesAndThenFiles) {
  Words offered = Offered({"filter", "OilFilter", "a.png", "b.png", ""});
  EXPECT_THAT(offered, Contains(kNoSpace));
  std::erase(offered, kNoSpace);
  EXPECT_THAT(offered, ElementsAreArray(FilterArguments()));
  EXPECT_THAT(Offered({"filter", "OilFilter", "a.png", "b.png", "levels", "=", "4", "ran"}),
              ElementsAre(kNoSpace, "range="));
  EXPECT_THAT(Offered({"filter", "UnsharpFilter", "a.png", "b.png", "origpixels", "=", "so"}), ElementsAre(kFiles));
}

TEST_F(BashCompletionOf, FilesIsLeftToBash) {
  for (const Words &words : std::vector<Words>{{"scale", "ph"},
                                               {"scale", "a.png", ""},
                                               {"scale", "--fast", "a.png", ""},
                                               {"scale", "--filter", "box", ""},
                                               {"scale", "--plugin", ""},
                                               {"filter", "OilFilter", ""},
                                               {"combine", "a.png", "b.png", "c.png", "--mask", ""},
                                               {"sheet", "a.png", "b.png", "c.png", "d.png", ""},
                                               {"run", ""},
                                               {"run", "a.lua", "b.png", "c"},
                                               {"info", ""}}) {
    EXPECT_THAT(Offered(words), ElementsAre(kFiles)) << testing::PrintToString(words);
  }
}

TEST_F(BashCompletionOf, WhatNobodyCanKnowOffersNothing) {
  for (const Words &words : std::vector<Words>{{"scale", "a.png", "b.png", ""},
                                               {"scale", "a.png", "b.png", "1x1", ""},
                                               {"scale", "--threads", ""},
                                               {"rotate", "a.png", "b.png", ""},
                                               {"mirror", "a.png", "b.png", "h", ""},
                                               {"fuzz", ""},
                                               {"manual", ""},
                                               {"skale", ""}}) {
    EXPECT_THAT(Offered(words), IsEmpty()) << testing::PrintToString(words);
  }
}

// A zsh with its completion runs in a terminal of its own, where a key is pressed and what is offered is printed.
constexpr char kZshOuter[] = R"(
zmodload zsh/zpty
zpty inner zsh -f -i
zpty -w inner "source ./inner.zsh"
zpty -r -m inner text '*READY*'
zpty -w -n inner "$1"$'\t'
text=''
while zpty -r inner part; do text+=$part; done
print -r -- "${${text#*<<<}%%>>>*}"
)";
constexpr char kZshInner[] = R"(
PROMPT='' RPS1=''
unsetopt prompt_sp prompt_cr
autoload -Uz compinit && compinit -u -D
source ./completion.zsh
bindkey '^I' complete-word
compadd() {
    local -a found
    if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then builtin compadd "$@"; return; fi
    builtin compadd -O found "$@"
    print -rl -- $found
    builtin compadd "$@"
}
start() { print -r '<<<' }
stop() { print -r '>>>'; exit }
compprefuncs=(start) comppostfuncs=(stop)
print READ''Y
)";

class ZshCompletionOf : public Completion {
 protected:
  void SetUp() override {
    for (const char *const path : {"/bin/zsh", "/usr/bin/zsh"}) {
      if (std::filesystem::exists(path)) zsh_ = path;
    }
    if (zsh_.empty()) GTEST_SKIP() << "zsh is not installed";
    Script("zsh");
    Write("outer.zsh", kZshOuter);
    Write("inner.zsh", kZshInner);
  }

  // What zsh offers at the end of the line, by name.
  Words Offered(const std::string &line) const {
    const ProgramResult result = Run({"-f", "outer.zsh", line}, zsh_);
    EXPECT_EQ(result.exitCode, 0) << line;
    Words words = LinesOf(WithoutTerminalCommands(result.output));
    std::ranges::sort(words);
    return words;
  }

  std::string zsh_;
};

TEST_F(ZshCompletionOf, HasNothingThatZshDoesNotUnderstand) {
  const ProgramResult result = Run({"-f", "-n", "completion.zsh"}, zsh_);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
}

TEST_F(ZshCompletionOf, CommandsAndOptionsOffersAll) {
  EXPECT_THAT(Offered("zvk "), UnorderedElementsAreArray(Commands()));
  EXPECT_THAT(Offered("zvk -"), UnorderedElementsAreArray(Options("")));
  for (const std::string &command : Commands()) {
    EXPECT_THAT(Offered("zvk " + command + " -"), UnorderedElementsAreArray(Options(command))) << command;
  }
}

TEST_F(ZshCompletionOf, ValuesOffersWhatThePluginHas) {
  EXPECT_THAT(Offered("zvk scale --filter "), UnorderedElementsAreArray(kScaleFilters));
  EXPECT_THAT(Offered("zvk scale a.png --filter=lan"), ElementsAre("lanczos3", "lanczos8"));
  EXPECT_THAT(Offered("zvk scale --format "), UnorderedElementsAreArray(kFormats));
  EXPECT_THAT(Offered("zvk filter "), UnorderedElementsAreArray(FilterNames()));
  EXPECT_THAT(Offered("zvk filter OilFilter a.png b.png "), UnorderedElementsAreArray(FilterArguments()));
  EXPECT_THAT(Offered("zvk mirror a.png b.png "), ElementsAre("h", "v"));
  EXPECT_THAT(Offered("zvk completion "), ElementsAre("bash", "zsh"));
}

TEST_F(ZshCompletionOf, OptionsOffersThoseThatStillMakeSense) {
  EXPECT_THAT(Offered("zvk scale --filter box --f"), ElementsAre("--format"));
  EXPECT_THAT(Offered("zvk batch a.lua --arg one --ar"), ElementsAre("--arg"));
  EXPECT_THAT(Offered("zvk batch a.lua -j 3 --jo"), IsEmpty());
}

TEST_F(ZshCompletionOf, FilesOffersThoseThatThereAre) {
  Write("photo.jpg", "");
  for (const std::string line :
       {"zvk scale ph", "zvk scale a.png ph", "zvk scale --plugin ph", "zvk filter OilFilter ph",
        "zvk filter UnsharpFilter a.png b.png origpixels=ph", "zvk sheet a.png b.png c.png ph", "zvk run ph",
        "zvk run a.lua ph", "zvk batch a.lua --output ph", "zvk combine a.png b.png c.png --mask ph"}) {
    EXPECT_THAT(Offered(line), ElementsAre("photo.jpg")) << line;
  }
  for (const std::string line : {"zvk scale a.png b.png ph", "zvk scale --threads ph", "zvk fuzz ph"}) {
    EXPECT_THAT(Offered(line), IsEmpty()) << line;
  }
}

TEST_F(Completion, TellsOfAShellThatItDoesNotKnow) {
  const ProgramResult result = Run({"completion", "tcsh"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "zvk: there is no completion for the shell 'tcsh'; write bash or zsh\n");
  EXPECT_EQ(Run({"completion"}).errors, "zvk: SHELL is required; 'zvk completion --help' tells how it is used\n");
}

TEST_F(Completion, NamesAPluginThatIsNotThere) {
  const ProgramResult result = Run({"completion", "bash", "--plugin", "nowhere.so"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, HasSubstr("; name a working plug-in with --plugin PATH\n"));
}

TEST_F(Completion, LeavesNothingBehind) {
  for (const std::string shell : {"bash", "zsh"}) {
    EXPECT_THAT(Run({"completion", shell, "--leaks"}).output, testing::EndsWith("references not given back: none\n"));
  }
}

}  // namespace
}  // namespace standalone
