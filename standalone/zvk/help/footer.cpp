#include "standalone/zvk/help/footer.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "standalone/zvk/session/exit_codes.h"

namespace standalone {
namespace {

// The heads of lists.
constexpr char kExamples[] = "Examples:";
constexpr char kExitCodes[] = "Exit codes:";

}  // namespace

const char kTransparencyHelp[] =
    "Transparent pixels of a file stay so. Alpha has 8 bits in PNG and TIFF files and 7 bits in WebP;\n"
    "where OUT has none, pixels are laid on --background.";

std::string ExitCodesHelp(const ExitMeanings &meanings) {
  std::string help = kExitCodes;
  for (const auto &[code, meaning] : {std::pair{kDone, meanings.done}, std::pair{kWorkFailed, meanings.workFailed},
                                      std::pair{kWrongCommandLine, meanings.wrongCommandLine}}) {
    if (meaning != nullptr) help += "\n  " + std::to_string(code) + "  " + meaning;
  }
  return help;
}

std::string HelpFooter(const std::string &text, const std::vector<std::string> &examples,
                       const ExitMeanings &meanings) {
  std::string footer = text + "\n\n" + kExamples + "\n";
  for (const std::string &example : examples) footer += "  " + example + "\n";
  return footer + "\n" + ExitCodesHelp(meanings);
}

FooterLines ReadFooter(const std::string &footer) {
  std::vector<FooterLines::Lines> paragraphs(1);
  std::istringstream lines(footer);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) {
      paragraphs.back().push_back(line);
    } else if (!paragraphs.back().empty()) {
      paragraphs.emplace_back();
    }
  }
  FooterLines result;
  for (FooterLines::Lines &paragraph : paragraphs) {
    const std::string head = paragraph.empty() ? "" : paragraph.front();
    FooterLines::Lines *const list = head == kExamples    ? &result.examples
                                     : head == kExitCodes ? &result.exitCodes
                                                          : nullptr;
    if (list == nullptr) {
      result.paragraphs.push_back(std::move(paragraph));
      continue;
    }
    for (size_t i = 1; i < paragraph.size(); ++i) {
      list->push_back(paragraph[i].substr(std::min(paragraph[i].find_first_not_of(' '), paragraph[i].size())));
    }
  }
  return result;
}

}  // namespace standalone
