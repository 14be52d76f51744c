// The library's one exported function.
#pragma once

#include "host/host_layouts.h"

// Called once by the host on loading the library. Stores the resolver (entry name in, function address out), finds out
// the host's version, fits the class tables to it and registers both classes.
extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALresolver resolver);
