// What stands under the options in the help of a command: what there is to say of it, examples, and what its exit codes
// mean. Written by the commands, and read again by whoever tells of them elsewhere.
#pragma once

#include <string>
#include <vector>

namespace standalone {

// What the exit codes mean; no text for a command without work that could fail.
struct ExitMeanings {
  const char *done = "done";
  const char *workFailed = nullptr;
  const char *wrongCommandLine = "the command line is wrong";
};

constexpr char kWrongAndNothingDone[] = "the command line is wrong; nothing was done";

// Those of a command that writes the image file OUT.
constexpr ExitMeanings kOutWholeOrAsBefore = {.workFailed = "the work failed; OUT is as it was before",
                                              .wrongCommandLine = kWrongAndNothingDone};

// What a command's help says about files with transparent pixels.
extern const char kTransparencyHelp[];

// A list of the exit codes, a line each.
std::string ExitCodesHelp(const ExitMeanings &meanings);

// The whole footer: the text, which may have several lines, the examples, which are command lines, and the exit codes.
std::string HelpFooter(const std::string &text, const std::vector<std::string> &examples, const ExitMeanings &meanings);

// A footer in lines.
struct FooterLines {
  using Lines = std::vector<std::string>;

  std::vector<Lines> paragraphs;  // without the two that follow
  Lines examples;
  Lines exitCodes;  // "0  done"
};

FooterLines ReadFooter(const std::string &footer);

}  // namespace standalone
