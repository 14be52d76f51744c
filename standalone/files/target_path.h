// Where a file that is to be replaced really is.
#pragma once

#include <string>

namespace standalone {

// The path behind symbolic links, so that the file they lead to is replaced and not the link. Throws ImageFileError
// that names the path as it was given, unless there is a regular file that may be written, or nothing.
std::string ReplaceablePath(const std::string &path);

}  // namespace standalone
