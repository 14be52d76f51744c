// Names of output files, made from those of the input files: "out/{name}.png".
#pragma once

#include <string>

namespace standalone {

// What stands in a pattern for parts of an input's path, for help and messages.
extern const char kOutputPlaceholders[];

// The pattern with the parts of the input's path in the places of {name} (its file name without the extension),
// {extension} (without the dot), {file} (name and extension) and {folder} ("." for the current one). "{{" stands for a
// brace. Throws UsageError that names any other word in braces.
std::string FillOutputPattern(const std::string &pattern, const std::string &input);

}  // namespace standalone
