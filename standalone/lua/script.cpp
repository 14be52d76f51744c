#include "standalone/lua/script.h"

#include <lua.hpp>
#include <new>

#include "standalone/binding/class_binding.h"
#include "standalone/lua/lua_call.h"
#include "standalone/lua/lua_classes.h"
#include "standalone/lua/lua_values.h"

namespace standalone {
namespace {

int Open(lua_State *lua) {
  luaL_openlibs(lua);
  OpenErrors(lua);
  OpenValues(lua);
  // The host's own that a program uses by name.
  OpenClasses(lua, RegisteredClassesAnd({"Picture", "MemoryBlock", "FolderItem"}));
  return 0;
}

// The error value on top of the stack as a text, whatever it is; the value is popped.
std::string TakeErrorText(lua_State *lua) {
  size_t length = 0;
  const char *const text = luaL_tolstring(lua, -1, &length);
  const std::string message(text, length);
  lua_pop(lua, 2);
  return message;
}

}  // namespace

void CheckScript(const std::string &path) {
  const std::unique_ptr<lua_State, decltype(&lua_close)> lua(luaL_newstate(), lua_close);
  if (lua == nullptr) throw std::bad_alloc();
  if (luaL_loadfile(lua.get(), path.c_str()) != LUA_OK) throw ScriptError(TakeErrorText(lua.get()));
}

Script::Script() : lua_(luaL_newstate()) {
  if (lua_ == nullptr) throw std::bad_alloc();
  NoteState(lua_);
  lua_pushcfunction(lua_, Guarded<Open>);
  if (lua_pcall(lua_, 0, 0, 0) != LUA_OK) throw ScriptError(TakeErrorText(lua_));
}

Script::~Script() {
  NoteState(nullptr);
  lua_close(lua_);
}

void Script::RunFile(const std::string &path, const std::vector<std::string> &arguments) {
  Run(luaL_loadfile(lua_, path.c_str()), path, arguments);
}

void Script::RunText(const std::string &text, const std::vector<std::string> &arguments) {
  Run(luaL_loadbuffer(lua_, text.data(), text.size(), "=(command line)"), "(command line)", arguments);
}

void Script::Run(int loaded, const std::string &name, const std::vector<std::string> &arguments) {
  if (loaded != LUA_OK) throw ScriptError(TakeErrorText(lua_));
  lua_createtable(lua_, static_cast<int>(arguments.size()), 1);
  lua_pushlstring(lua_, name.data(), name.size());
  lua_rawseti(lua_, -2, 0);
  for (size_t i = 0; i < arguments.size(); ++i) {
    lua_pushlstring(lua_, arguments[i].data(), arguments[i].size());
    lua_rawseti(lua_, -2, static_cast<lua_Integer>(i) + 1);
  }
  lua_setglobal(lua_, "arg");
  if (lua_pcall(lua_, 0, 0, 0) != LUA_OK) throw ScriptError(TakeErrorText(lua_));
}

}  // namespace standalone
