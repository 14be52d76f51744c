#include "standalone/zvk/value_choice.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>
#include <utility>

#include "standalone/zvk/filter_forms.h"
#include "standalone/zvk/methods_command.h"
#include "standalone/zvk/mirror_command.h"
#include "standalone/zvk/plugin_session.h"
#include "standalone/zvk/scale_job.h"

namespace standalone {
namespace {

using Words = std::vector<std::string>;

std::string InSmallLetters(std::string word) {
  std::ranges::transform(word, word.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return word;
}

// The first of each, as names are taken in any case.
Words Unique(const Words &words) {
  std::set<std::string> seen;
  Words unique;
  std::ranges::copy_if(words, std::back_inserter(unique),
                       [&](const std::string &word) { return seen.insert(InSmallLetters(word)).second; });
  return unique;
}

Words Free(const PluginSession &) { return {}; }

Words Shells(const PluginSession &) { return {"bash", "zsh"}; }

Words Directions(const PluginSession &) { return MirrorDirections(); }

// As everybody writes them.
Words ScaleFilters(const PluginSession &session) {
  Words words = session.Choices("Scale");
  std::ranges::transform(words, words.begin(), InSmallLetters);
  return words;
}

Words PixelFormats(const PluginSession &session) {
  Words words = session.Choices("ImageFormat");
  std::erase_if(words, [&](const std::string &word) {
    const Value format = session.Images().Constant("ImageFormat" + word);
    return !CanBeScaledInto(session.Images().New({1, 1, format}));
  });
  return words;
}

Words Filters(const PluginSession &session) {
  Words words;
  for (const MethodDeclaration *const filter : FiltersOf(session.Images())) words.push_back(filter->name);
  return words;
}

Words FilterArguments(const PluginSession &session) {
  Words words;
  for (const MethodDeclaration *const filter : FiltersOf(session.Images())) {
    for (const Parameter &parameter : NamedParameters(*filter)) words.push_back(parameter.name + "=");
  }
  return words;
}

Words Members(const PluginSession &) { return MemberNames(); }

// A note is the name of a check that all values pass. One row for each choice, in their order.
constexpr struct {
  const char *note;
  Words (*words)(const PluginSession &session);
} kChoices[] = {
    {"free", Free},
    {"shells", Shells},
    {"directions", Directions},
    {"scale filters", ScaleFilters},
    {"pixel formats", PixelFormats},
    {"filters", Filters},
    {"filter arguments", FilterArguments},
    {"members", Members},
};
static_assert(std::size(kChoices) == static_cast<size_t>(Choice::Members) + 1);

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
  const char *const note = kChoices[static_cast<size_t>(choice)].note;
  option->check(CLI::Validator([](std::string &) { return std::string(); }, "", note));
}

std::optional<Choice> NotedChoice(CLI::Option &option) {
  for (size_t i = 0; i < std::size(kChoices); ++i) {
    if (HasCheck(option, kChoices[i].note)) return static_cast<Choice>(i);
  }
  return std::nullopt;
}

std::vector<std::string> WordsOf(Choice choice, const PluginSession &session) {
  return Unique(kChoices[static_cast<size_t>(choice)].words(session));
}

}  // namespace standalone
