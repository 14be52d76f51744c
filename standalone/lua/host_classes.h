// What a program of the host language finds in the host's own classes: pictures with files, pixels and a mask, memory
// blocks with bytes, numbers and strings, folder items. Told as declarations with functions behind them, in the host's
// own names, so that they are called like the members of any plug-in's class.
#pragma once

#include "standalone/files/orientation.h"
#include "standalone/runtime/host_state.h"

namespace standalone {

// Gives the classes Picture, Graphics, MemoryBlock and FolderItem of the host their members, and adds IOException. To
// be called once for a host, before its bindings look at these classes. Pictures are opened as `orient` tells.
void DescribeHostClasses(HostState &host, Orient orient = Orient::Upright);

}  // namespace standalone
