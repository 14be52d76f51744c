#include "standalone/zvk/help/choice_words.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>

#include "standalone/runtime/names.h"
#include "standalone/zvk/arguments/filter_forms.h"
#include "standalone/zvk/arguments/mirror_direction.h"
#include "standalone/zvk/help/class_members.h"
#include "standalone/zvk/images/scale_job.h"
#include "standalone/zvk/session/plugin_session.h"

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
  std::set<std::string, NameOrder> seen;
  Words unique;
  std::ranges::copy_if(words, std::back_inserter(unique),
                       [&](const std::string &word) { return seen.insert(word).second; });
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

// One row for each choice, in their order.
constexpr Words (*kWords[])(const PluginSession &session) = {Free,         Shells,  Directions,      ScaleFilters,
                                                             PixelFormats, Filters, FilterArguments, Members};
static_assert(std::size(kWords) == static_cast<size_t>(Choice::Members) + 1);

}  // namespace

std::vector<std::string> WordsOf(Choice choice, const PluginSession &session) {
  return Unique(kWords[static_cast<size_t>(choice)](session));
}

}  // namespace standalone
