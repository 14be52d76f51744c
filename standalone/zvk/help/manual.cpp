#include "standalone/zvk/help/manual.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>
#include <vector>

#include "standalone/zvk/help/command_line.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

using Lines = FooterLines::Lines;

// --- the language of man(7) ---

constexpr size_t kLineBytes = 76;

// What is printed as the letters are.
std::string Escaped(const std::string &text) {
  std::string escaped;
  for (const char letter : text) {
    switch (letter) {
      case '\\':
        escaped += "\\e";
        break;
      case '-':
        escaped += "\\-";
        break;
      case '\'':
        escaped += "\\(aq";
        break;
      case '`':
        escaped += "\\(ga";
        break;
      case '^':
        escaped += "\\(ha";
        break;
      case '~':
        escaped += "\\(ti";
        break;
      default:
        escaped += letter;
    }
  }
  return escaped;
}

// A line that is no command of the language, whatever it starts with.
std::string Line(const std::string &text) { return (text.starts_with('.') ? "\\&" : "") + Escaped(text); }

// Running text, in lines that editors show whole.
std::string Text(const std::string &text) {
  std::string lines;
  std::string line;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (!line.empty() && line.size() + 1 + Escaped(word).size() > kLineBytes) {
      lines += std::exchange(line, "") + "\n";
    }
    line += line.empty() ? Line(word) : " " + Escaped(word);
  }
  return lines + line;
}

std::string Bold(const std::string &text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(const std::string &text) { return "\\fI" + Escaped(text) + "\\fR"; }

void AddSection(std::string &page, const std::string &name) { page += ".SH " + name + "\n"; }
void AddItem(std::string &page, const std::string &head, const std::string &text) {
  page += ".TP\n" + head + "\n" + text + "\n";
}

// Lines that stay as they are.
void AddLines(std::string &page, const Lines &lines) {
  page += ".PP\n.nf\n";
  for (const std::string &line : lines) page += Line(line) + "\n";
  page += ".fi\n";
}

// A text as it is within a sentence, as a sentence.
std::string Sentence(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return Text(text + ".");
}

// --- paragraphs of help ---

// Lines of a list, and command lines, stay lines; others become running text.
void AddParagraph(std::string &page, const Lines &paragraph) {
  const auto staysLine = [](const std::string &line) { return line.starts_with(' ') || line.starts_with("zvk "); };
  for (size_t i = 0; i < paragraph.size();) {
    Lines alike;
    const bool stay = staysLine(paragraph[i]);
    for (; i < paragraph.size() && staysLine(paragraph[i]) == stay; ++i) alike.push_back(paragraph[i]);
    if (stay) {
      AddLines(page, alike);
      continue;
    }
    std::string text;
    for (const std::string &line : alike) text += line + " ";
    page += ".PP\n" + Text(text) + "\n";
  }
}

// --- sections ---

// "-h", "--help" and what stands for a value.
std::string Head(const OptionLine &option) {
  std::string head;
  for (const std::string &name : option.names) {
    AddToList(head, ", ", Bold(name) + (option.value.empty() ? "" : " " + Italic(option.value)));
  }
  return head;
}

std::string Listed(const Lines &names) {
  std::string text;
  for (size_t i = 0; i < names.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + Bold(names[i]);
  }
  return text;
}

void AddOptions(std::string &page, const CommandLine &command) {
  for (const OptionLine &option : command.options) {
    std::string text = Sentence(option.description);
    if (!option.excludes.empty()) text += "\nNot together with " + Listed(option.excludes) + ".";
    if (!option.needs.empty()) text += "\nOnly with " + Listed(option.needs) + ".";
    AddItem(page, Head(option), text);
  }
}

void AddCommand(std::string &page, const CommandLine &command) {
  page += ".SS " + Text(command.name) + "\n";
  page +=
      ".B zvk " + Text(command.name) + "\n" + Text(UsageOf(command)) + "\n.PP\n" + Sentence(command.description) + "\n";
  for (const ArgumentLine &argument : command.arguments) {
    AddItem(page, Italic(argument.name), Sentence(argument.description));
  }
  AddOptions(page, command);
  for (const Lines &paragraph : ReadFooter(command.footer).paragraphs) AddParagraph(page, paragraph);
}

void AddExitStatus(std::string &page, const CommandLine &program) {
  AddSection(page, "EXIT STATUS");
  for (const std::string &line : ReadFooter(program.footer).exitCodes) {
    AddItem(page, Bold(line.substr(0, 1)), Sentence(line.substr(3)));
  }
}

}  // namespace

std::string Manual(CLI::App &app) {
  const CommandLine program = ReadCommand(app);
  const std::vector<CommandLine> commands = ReadCommands(app);
  std::string page = ".TH ZVK 1 \"\" \"PictureZVK " ZVK_VERSION "\" \"User Commands\"\n";

  AddSection(page, "NAME");
  page += "zvk \\- scale, filter, turn and combine pictures\n";
  AddSection(page, "SYNOPSIS");
  page += ".B zvk\n.I COMMAND\n[\\fIOPTIONS\\fR] [\\fIARGUMENTS\\fR]\n.br\n";
  page += ".B zvk\n\\fB\\-\\-help\\fR | \\fB\\-\\-version\\fR\n";

  AddSection(page, "DESCRIPTION");
  page += Text(program.description) + "\n";
  for (const Lines &paragraph : ReadFooter(program.footer).paragraphs) AddParagraph(page, paragraph);
  AddOptions(page, program);

  AddSection(page, "COMMANDS");
  for (const CommandLine &command : commands) AddCommand(page, command);

  AddExitStatus(page, program);

  AddSection(page, "ENVIRONMENT");
  AddItem(page, Bold("TMPDIR"),
          "The folder of the temporary files of\n" + Bold("zvk scale --in-file") + ",\n" + Text("/tmp") +
              " if it is not set.");

  AddSection(page, "FILES");
  AddItem(page, Italic("libPictureZVK.so"),
          "The plug\\-in. It is looked for beside the program, then in the folder\n" + Italic(ZVK_LIBRARY_FOLDER) +
              "\nfrom there; the option " + Bold("--plugin") + " names another one.");

  AddSection(page, "EXAMPLES");
  page += "Some of each command:\n";
  for (const CommandLine &command : commands) {
    const Lines examples = ReadFooter(command.footer).examples;
    if (!examples.empty()) AddLines(page, examples);
  }

  AddSection(page, "SEE ALSO");
  page +=
      Text(
          "The guide, and the reference of the classes that scripts use. They are installed with the program, in the "
          "folder") +
      "\n" + Italic("share/doc/picturezvk") + ".\n";
  return page;
}

}  // namespace standalone
