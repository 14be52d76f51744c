// What the program says to its user beside its results: lines on the standard error stream, and the errors that become
// such lines.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace standalone {

// The command line itself is wrong. Any other std::exception is work that failed. The message is one line that names
// what is wrong and the way out.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The text as one line: control characters (in the name of a file, say) become spaces, so that they neither break the
// line nor steer the terminal.
std::string OneLine(std::string text);

// Adds to a list for people, or for a shell.
void AddToList(std::string &list, std::string_view separator, std::string_view more);

// Writes "zvk: MESSAGE" as one line.
void PrintMessage(const std::string &message);

// The same for a message of several lines: the first is the message, the others a list that follows it.
void PrintMessageWithList(const std::string &message);

}  // namespace standalone
