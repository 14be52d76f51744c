// The classes of the host as a script sees them. Everything here goes by the class tables: no class and no method is
// known by name.
//
//   image = PictureZVK(640, 480, PictureZVK.ImageFormatRGB)      a Constructor; constants stand on the class
//   image:FillRectRGB(Color"#ff8000")                            methods, overloaded, with optional arguments
//   image.YieldTicks = 2                                         properties
//   image:SetRow(3, image:Row(4))                                a method that can be assigned to, with Set before it
//   PictureZVK.CalculateMemory(640, 480, 1)                      shared methods
//   PictureFactoryZVK{NewPictureZVK = function(self, w, h, f) ... end}   an instance of a subclass with handlers
#pragma once

#include <lua.hpp>

#include "standalone/binding/class_binding.h"

namespace standalone {

// Makes each of the classes a global of its name. The values of the host language must be open.
void OpenClasses(lua_State *lua, const std::vector<const ClassBinding *> &classes);

}  // namespace standalone
