// Completion of the command line in shells: scripts for them to read.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace standalone {

class PluginSession;

// The script for bash, which reads it by `source` or as the file "zvk" among its completions. It needs nothing but
// bash.
std::string BashCompletion(CLI::App &program, const PluginSession &session);

// The script for zsh, which reads it as the file "_zvk" in a folder of its fpath, or by `source` after compinit.
std::string ZshCompletion(CLI::App &program, const PluginSession &session);

}  // namespace standalone
