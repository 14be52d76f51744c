// The library's one exported function.
#pragma once

#include "abi/host_layouts.h"

namespace zvk::plugin {

// Stores the resolver (entry name in, function address out), finds out the host's version, fits the class tables to it
// and registers both classes.
void StartPlugin(REALresolver resolver);

}  // namespace zvk::plugin

// Called by the host on loading the library: starts the plug-in. A second call in a process does nothing.
extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver);
