// What the values of options and arguments are chosen from, where the program or its plug-in knows it: told with the
// declaration of an option, and asked for by completion.
#pragma once

#include <cstdint>
#include <optional>

namespace CLI {
class Option;
}

namespace standalone {

enum class Choice : uint8_t {
  Free,             // nothing that could be listed: a size, an angle
  Shells,           // of which completion is made
  Directions,       // of mirroring
  ScaleFilters,     // of resampling
  PixelFormats,     // that colours can be scaled into
  Filters,          // methods of the image class that filter
  FilterArguments,  // their names, each with "="
  Members,          // classes, and their properties, methods, events and constants
};

// Notes with an option what its value is chosen from. Nothing is checked by it. An option without a note takes what its
// type says, an argument a file.
void NoteChoice(CLI::Option *option, Choice choice);

// What has been noted.
std::optional<Choice> NotedChoice(CLI::Option &option);

}  // namespace standalone
