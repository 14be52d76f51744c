// The classes of the host's own, which every host has before any plug-in is loaded.
#pragma once

#include <set>
#include <string>

#include "standalone/runtime/class_registry.h"

namespace standalone {

// Adds them to the registry, without those in `missing`. A class whose superclass is missing comes from the next one
// above.
void DefineOwnClasses(ClassRegistry &classes, const std::set<std::string> &missing);

}  // namespace standalone
