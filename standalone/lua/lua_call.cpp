#include "standalone/lua/lua_call.h"

#include <string>

#include "standalone/binding/class_binding.h"

namespace standalone {
namespace {

constexpr char kExceptionTable[] = "PictureZVK host exception";

lua_State *open = nullptr;
lua_State *running = nullptr;

void SetField(lua_State *lua, const char *name, const std::string &text) {
  lua_pushlstring(lua, text.data(), text.size());
  lua_setfield(lua, -2, name);
}

// "script.lua:12: OutOfBoundsException: Index too big".
int ExceptionText(lua_State *lua) {
  lua_getfield(lua, 1, "Where");
  lua_getfield(lua, 1, "Class");
  lua_getfield(lua, 1, "Message");
  size_t length = 0;
  lua_tolstring(lua, -1, &length);
  if (length > 0) {
    lua_pushliteral(lua, ": ");
    lua_insert(lua, -2);
  }
  lua_concat(lua, length > 0 ? 4 : 3);
  return 1;
}

}  // namespace

LuaReference::LuaReference(lua_State *lua)
    : key_(new int(luaL_ref(lua, LUA_REGISTRYINDEX)), [](const int *key) {
        if (open != nullptr) luaL_unref(running != nullptr ? running : open, LUA_REGISTRYINDEX, *key);
        delete key;
      }) {}

void LuaReference::Push(lua_State *lua) const { lua_rawgeti(lua, LUA_REGISTRYINDEX, *key_); }

void NoteState(lua_State *main) { open = main; }

void PushError(lua_State *lua, const std::exception &error) {
  if (const auto *const failure = dynamic_cast<const ScriptFailure *>(&error)) {
    failure->Value().Push(lua);
    return;
  }
  if (const auto *const raised = dynamic_cast<const HostException *>(&error)) {
    lua_createtable(lua, 0, 4);
    SetField(lua, "Class", raised->ClassName());
    SetField(lua, "Message", raised->Message());
    lua_pushinteger(lua, raised->ErrorNumber());
    lua_setfield(lua, -2, "ErrorNumber");
    luaL_where(lua, 1);
    lua_setfield(lua, -2, "Where");
    luaL_setmetatable(lua, kExceptionTable);
    return;
  }
  luaL_where(lua, 1);
  lua_pushstring(lua, error.what());
  lua_concat(lua, 2);
}

lua_State *RunningState() { return running; }

Running::Running(lua_State *lua) : before_(std::exchange(running, lua)) {}

Running::~Running() { running = before_; }

void OpenErrors(lua_State *lua) {
  luaL_newmetatable(lua, kExceptionTable);
  lua_pushcfunction(lua, Guarded<ExceptionText>);
  lua_setfield(lua, -2, "__tostring");
  lua_pushliteral(lua, "HostException");
  lua_setfield(lua, -2, "__name");
  lua_pop(lua, 1);
}

}  // namespace standalone
