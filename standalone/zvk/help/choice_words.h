// The words that a value is chosen from, as the plug-in has them.
#pragma once

#include <string>
#include <vector>

#include "standalone/zvk/arguments/value_choice.h"

namespace standalone {

class PluginSession;

// All there is to choose from, each once.
std::vector<std::string> WordsOf(Choice choice, const PluginSession &session);

}  // namespace standalone
