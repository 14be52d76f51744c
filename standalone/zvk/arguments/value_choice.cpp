#include "standalone/zvk/arguments/value_choice.h"

#include <CLI/CLI.hpp>
#include <cstddef>
#include <iterator>

namespace standalone {
namespace {

// A note is the name of a check that all values pass. One for each choice, in their order.
constexpr const char *kNotes[] = {"free",          "shells",  "directions",       "scale filters",
                                  "pixel formats", "filters", "filter arguments", "members"};
static_assert(std::size(kNotes) == static_cast<size_t>(Choice::Members) + 1);

bool HasCheck(CLI::Option &option, const char *name) {
  try {
    option.get_validator(name);
    return true;
  } catch (const CLI::OptionNotFound &) {
    return false;
  }
}

}  // namespace

void NoteChoice(CLI::Option *option, Choice choice) {
  const char *const note = kNotes[static_cast<size_t>(choice)];
  option->check(CLI::Validator([](std::string &) { return std::string(); }, "", note));
}

std::optional<Choice> NotedChoice(CLI::Option &option) {
  for (size_t i = 0; i < std::size(kNotes); ++i) {
    if (HasCheck(option, kNotes[i])) return static_cast<Choice>(i);
  }
  return std::nullopt;
}

}  // namespace standalone
