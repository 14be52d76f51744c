// The directions that an image is mirrored in, as a command line names them.
#pragma once

#include <string>
#include <vector>

namespace standalone {

// All that there are.
std::vector<std::string> MirrorDirections();

// The method of the image class that mirrors in the direction. Throws UsageError if there is none of that name.
const char *MirrorMethod(const std::string &direction);

}  // namespace standalone
