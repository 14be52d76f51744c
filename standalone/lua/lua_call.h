// Functions that Lua calls, and values of Lua's that C++ keeps. The Lua library in use is the one compiled as C++: its
// errors are C++ exceptions of a type of its own, so that destructors run on their way.
#pragma once

#include <exception>
#include <lua.hpp>
#include <memory>
#include <new>
#include <utility>

namespace standalone {

// A value of the script's that is kept from being collected, whatever it is.
class LuaReference {
 public:
  // Takes the value off the top of the stack.
  explicit LuaReference(lua_State *lua);

  // Pushes the value.
  void Push(lua_State *lua) const;

 private:
  std::shared_ptr<const int> key_;
};

// The error of a script, on its way through frames of C++ and of a plug-in.
class ScriptFailure : public std::exception {
 public:
  explicit ScriptFailure(LuaReference value) : value_(std::move(value)) {}

  const LuaReference &Value() const { return value_; }
  const char *what() const noexcept override { return "the script failed"; }

 private:
  LuaReference value_;
};

// Says which state there is, before anything is done with it; nil before it is closed. From then on references can
// still be dropped, and nothing more.
void NoteState(lua_State *main);

// The state in which Lua calls C++ at present, where handlers of events run; nil if it calls none.
lua_State *RunningState();

// Notes the state for as long as it lives.
class Running {
 public:
  explicit Running(lua_State *lua);
  Running(const Running &) = delete;
  Running &operator=(const Running &) = delete;
  ~Running();

 private:
  lua_State *before_;
};

// Pushes what a C++ exception is to a script: the error value that it carries, an exception of the host language with
// its class, message, number and place, or a text with the place.
void PushError(lua_State *lua, const std::exception &error);

// A function as Lua wants it: what it throws becomes Lua's error.
template <int (*kFunction)(lua_State *)>
int Guarded(lua_State *lua) {
  const Running running(lua);
  try {
    return kFunction(lua);
  } catch (const std::exception &error) {
    PushError(lua, error);
  }
  return lua_error(lua);
}

// Pushes a new userdata that holds the C++ value, with the metatable of that name.
template <class T>
void PushUserdata(lua_State *lua, const char *table, T value) {
  new (lua_newuserdatauv(lua, sizeof(T), 0)) T(std::move(value));
  luaL_setmetatable(lua, table);
}

// The C++ value of such a userdata; nil for anything else.
template <class T>
T *UserdataAt(lua_State *lua, int index, const char *table) {
  return static_cast<T *>(luaL_testudata(lua, index, table));
}

// A __gc that ends the C++ value.
template <class T>
int Collect(lua_State *lua) {
  static_cast<T *>(lua_touserdata(lua, 1))->~T();
  return 0;
}

// Makes host exceptions print as text. To be called once for a state.
void OpenErrors(lua_State *lua);

}  // namespace standalone
