// From the host's folder item to the path of its file.
#pragma once

#include "host/resources.h"

namespace zvk::host::paths {

// The item's path in canonically decomposed UTF-8, zero-terminated; the file need not exist. Empty if no path can be
// got: the host refuses it, it is empty or malformed, or there is no memory.
ZeroedBuffer<char> FolderItemPath(REALobject item);

}  // namespace zvk::host::paths
