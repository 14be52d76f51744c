// Images whose pixels are in temporary files.
#pragma once

#include <cstdint>

#include "standalone/binding/value.h"
#include "standalone/zvk/arguments/size_argument.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {

// A new image of black pixels in a file of the folder for temporary files (TMPDIR, else /tmp). The file has its room on
// the disk from the start and no name, so nothing of it is left when the program ends, however it ends. `blockSize` is
// the wanted size in bytes of the part of the file that is in memory, 1 or more. Sides are 1 to kLargestRowSide. Throws
// std::runtime_error if there is no such file to be had.
Value NewFileImage(const PluginSession &session, Size size, int32_t format, int32_t blockSize);

}  // namespace standalone
