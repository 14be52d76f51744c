// The image files of a command line: those to read and to write, and how they are taken.
#pragma once

#include <string>

#include "standalone/files/orientation.h"

namespace CLI {
class App;
}

namespace standalone {

// Adds an image file that must be given to a command; the path must live as long as the command.
void AddFileArgument(CLI::App &command, const std::string &name, std::string &path, const std::string &description);

// Adds IN and OUT to a command, in this order; both must live as long as the command.
void AddInputArgument(CLI::App &command, std::string &path);
void AddOutputArgument(CLI::App &command, std::string &path);

// Adds --no-orient, which every command has that reads image files; `orient` must live as long as the command.
void AddOrientOption(CLI::App &command, Orient &orient);

// Throws UsageError if the path has no extension of an image file that SaveImage writes.
void RefuseUnknownExtension(const std::string &path);

// Throws std::runtime_error if there is no file of that path, which is to be a program in Lua.
void RefuseMissingScript(const std::string &path);

}  // namespace standalone
