// Values of the host language as Lua values, and back. What Lua has itself (nil, booleans, numbers, bytes, text in
// UTF-8) is Lua's own; colours, texts in other encodings, and objects are userdata.
#pragma once

#include <lua.hpp>

#include "standalone/binding/declaration.h"
#include "standalone/binding/value.h"

namespace standalone {

// Adds the globals Color, Encodings, Encoding, DefineEncoding, ConvertEncoding and LenB. To be called once for a state,
// before any other function here.
void OpenValues(lua_State *lua);

// Pushes the value. An object that is known to Lua already is the same userdata again.
void PushValue(lua_State *lua, const Value &value);

// The value at a place of the stack. Whole numbers are integers of 32 bits if they fit, else of 64; a table is an array
// of its integers from 1 on. Throws BindingError for what the host language has no value for.
Value ToValue(lua_State *lua, int index);

// The arguments from a place of the stack to its top.
Arguments ToArguments(lua_State *lua, int first);

// The object of a userdata of PushValue; nil if there is something else at that place. An empty value: the script has
// closed the object.
Value *ObjectAt(lua_State *lua, int index);

// The name of the metatable that all objects share.
inline constexpr char kObjectTable[] = "PictureZVK host object";

}  // namespace standalone
