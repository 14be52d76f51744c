#include "standalone/lua/lua_classes.h"

#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "standalone/lua/lua_call.h"
#include "standalone/lua/lua_values.h"
#include "standalone/runtime/names.h"

namespace standalone {
namespace {

constexpr char kClassTable[] = "PictureZVK host class";
constexpr std::string_view kAssignPrefix = "Set";
constexpr char kClose[] = "Close";
constexpr char kConstructor[] = "Constructor";

// --- collecting in time ---

// A script's garbage looks small to Lua, as it sees of an image only a handle. So a full collection is made whenever
// the memory in use has grown by as much as was left after the last one, and by 64 MB at least.
void CollectIfGrown(lua_State *lua) {
  constexpr size_t kSmallestGrowth = size_t{64} << 20;
  static size_t limit = kSmallestGrowth;
  const auto memoryInUse = [] {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
  };
  if (memoryInUse() < limit) return;
  lua_gc(lua, LUA_GCCOLLECT);
  limit = 2 * memoryInUse() + kSmallestGrowth;
}

// --- what a class has ---

template <class Has>
bool AnyClass(const ClassBinding &type, Has &&has) {
  for (const ClassBinding *each = &type; each != nullptr; each = each->Super()) {
    if (has(*each)) return true;
  }
  return false;
}

template <class Wanted>
bool HasMethod(const ClassBinding &type, std::string_view name, Wanted &&wanted) {
  return AnyClass(type, [&](const ClassBinding &each) {
    return std::ranges::any_of(each.Methods(), [&](const BoundMethod &method) {
      return NamesEqual(method.declaration.name, name) && wanted(method);
    });
  });
}

bool HasConstant(const ClassBinding &type, std::string_view name) {
  return AnyClass(type, [&](const ClassBinding &each) {
    return std::ranges::any_of(each.Constants(),
                               [&](const ConstantDeclaration &constant) { return NamesEqual(constant.name, name); });
  });
}

bool HasProperty(const ClassBinding &type, std::string_view name) {
  return AnyClass(type, [&](const ClassBinding &each) {
    return std::ranges::any_of(
        each.Properties(), [&](const BoundProperty &property) { return NamesEqual(property.registered->name, name); });
  });
}

// The name of the method that a member named "SetRow" assigns to; empty if the class has none.
std::string_view AssignedMethod(const ClassBinding &type, std::string_view name) {
  if (name.size() <= kAssignPrefix.size() || !NamesEqual(name.substr(0, kAssignPrefix.size()), kAssignPrefix)) {
    return {};
  }
  const std::string_view method = name.substr(kAssignPrefix.size());
  return HasMethod(type, method, [](const BoundMethod &each) { return each.setter != nullptr; }) ? method
                                                                                                 : std::string_view();
}

const ClassBinding &ClassOf(const Value &object) { return ClassNamed(object.AsObject()->Type().Name()); }

std::string_view NameAt(lua_State *lua, int index) {
  if (lua_type(lua, index) != LUA_TSTRING) {
    throw BindingError(std::string("a member has a name, not a ") + luaL_typename(lua, index));
  }
  size_t length = 0;
  const char *const name = lua_tolstring(lua, index, &length);
  return {name, length};
}

// --- objects ---

// The object of a method's call, whose name is the function's first upvalue.
const Value &CalledObject(lua_State *lua, std::string_view name) {
  const Value *const object = ObjectAt(lua, 1);
  if (object == nullptr) {
    throw BindingError("call " + std::string(name) + " with a colon, as in object:" + std::string(name) + "(...)");
  }
  if (object->IsNil()) throw BindingError("this object has been closed");
  return *object;
}

int CallMethod(lua_State *lua) {
  const std::string_view name = NameAt(lua, lua_upvalueindex(1));
  // A copy: an event's handler may close the object.
  const Value object = CalledObject(lua, name);
  const Value result = object.Call(name, ToArguments(lua, 2));
  PushValue(lua, result);
  if (result.GetKind() == Value::Kind::Object) CollectIfGrown(lua);
  return 1;
}

int AssignMethod(lua_State *lua) {
  const std::string_view name = NameAt(lua, lua_upvalueindex(1));
  const Value object = CalledObject(lua, std::string(kAssignPrefix) + std::string(name));
  Arguments arguments = ToArguments(lua, 2);
  if (arguments.empty()) throw BindingError("there is no value to assign to " + std::string(name));
  const Value assigned = std::move(arguments.back());
  arguments.pop_back();
  object.Assign(name, arguments, assigned);
  return 0;
}

// Gives the object back before it is collected. A class with a Close of its own has it called first.
int CloseObject(lua_State *lua) {
  Value *const held = ObjectAt(lua, 1);
  if (held == nullptr || held->IsNil()) return 0;
  const Value object = std::exchange(*held, Value());
  if (HasMethod(ClassOf(object), kClose, [](const BoundMethod &) { return true; })) object.Call(kClose);
  return 0;
}

void PushNamedFunction(lua_State *lua, std::string_view name, lua_CFunction function) {
  lua_pushlstring(lua, name.data(), name.size());
  lua_pushcclosure(lua, function, 1);
}

int IndexObject(lua_State *lua) {
  const std::string_view name = NameAt(lua, 2);
  const Value object = ToValue(lua, 1);
  const ClassBinding &type = ClassOf(object);
  if (NamesEqual(name, kConstructor)) {
    throw BindingError("an object is constructed once; call the class for another one");
  }
  if (HasMethod(type, name, [](const BoundMethod &method) { return !method.isShared; })) {
    PushNamedFunction(lua, name, Guarded<CallMethod>);
  } else if (const std::string_view assigned = AssignedMethod(type, name);
             !assigned.empty() && !HasProperty(type, name)) {
    PushNamedFunction(lua, assigned, Guarded<AssignMethod>);
  } else if (NamesEqual(name, kClose)) {
    lua_pushcfunction(lua, Guarded<CloseObject>);
  } else if (HasConstant(type, name)) {
    PushValue(lua, type.Constant(name));
  } else {
    PushValue(lua, object.Get(name));
  }
  return 1;
}

int AssignProperty(lua_State *lua) {
  const std::string_view name = NameAt(lua, 2);
  ToValue(lua, 1).Set(name, ToValue(lua, 3));
  return 0;
}

int ObjectText(lua_State *lua) {
  const Value *const object = ObjectAt(lua, 1);
  if (object->IsNil()) {
    lua_pushliteral(lua, "closed object");
  } else {
    lua_pushfstring(lua, "%s: %p", object->AsObject()->Type().Name().c_str(),
                    static_cast<const void *>(object->AsObject()));
  }
  return 1;
}

int ObjectsEqual(lua_State *lua) {
  const Value *const first = ObjectAt(lua, 1);
  const Value *const second = ObjectAt(lua, 2);
  lua_pushboolean(lua, first != nullptr && second != nullptr && first->AsObject() == second->AsObject());
  return 1;
}

// --- subclasses ---

// A function of the script as the handler of an event.
EventHandler HandlerAt(lua_State *lua, int index) {
  lua_pushvalue(lua, index);
  return [function = LuaReference(lua)](const Value &instance, const Arguments &arguments) {
    lua_State *const running = RunningState();
    if (running == nullptr) throw BindingError("the script with the handler of this event has ended");
    luaL_checkstack(running, static_cast<int>(arguments.size()) + LUA_MINSTACK, "too many arguments");
    function.Push(running);
    PushValue(running, instance);
    for (const Value &argument : arguments) PushValue(running, argument);
    if (lua_pcall(running, static_cast<int>(arguments.size()) + 1, 1, 0) != LUA_OK)
      throw ScriptFailure(LuaReference(running));
    const Value result = ToValue(running, -1);
    lua_pop(running, 1);
    return result;
  };
}

// A table of functions named after the events of the class becomes a subclass, and one instance of it.
Value NewOfSubclass(lua_State *lua, const ClassBinding &type, int table) {
  static int made = 0;
  std::map<std::string, EventHandler> handlers;
  lua_pushnil(lua);
  while (lua_next(lua, table) != 0) {
    const std::string name(NameAt(lua, -2));
    if (lua_isfunction(lua, -1) == 0) {
      throw BindingError("the handler of the event " + name + " is a " + luaL_typename(lua, -1) + ", not a function");
    }
    handlers.emplace(name, HandlerAt(lua, lua_gettop(lua)));
    lua_pop(lua, 1);
  }
  return Bindings::Current().DefineSubclass(type.Name() + "#" + std::to_string(++made), type.Name(), handlers).New();
}

// --- classes ---

using HeldClass = const ClassBinding *;

const ClassBinding &ClassAt(lua_State *lua) {
  const HeldClass *const type = UserdataAt<HeldClass>(lua, 1, kClassTable);
  if (type == nullptr) throw BindingError("this is no class");
  return **type;
}

int CallClass(lua_State *lua) {
  const ClassBinding &type = ClassAt(lua);
  const bool isSubclass = lua_gettop(lua) == 2 && lua_istable(lua, 2) != 0 &&
                          AnyClass(type, [](const ClassBinding &each) { return !each.Events().empty(); });
  PushValue(lua, isSubclass ? NewOfSubclass(lua, type, 2) : type.New(ToArguments(lua, 2)));
  CollectIfGrown(lua);
  return 1;
}

int CallShared(lua_State *lua) {
  const ClassBinding &type = **static_cast<HeldClass *>(lua_touserdata(lua, lua_upvalueindex(2)));
  PushValue(lua, type.Call(NameAt(lua, lua_upvalueindex(1)), ToArguments(lua, 1)));
  CollectIfGrown(lua);
  return 1;
}

int IndexClass(lua_State *lua) {
  const ClassBinding &type = ClassAt(lua);
  const std::string_view name = NameAt(lua, 2);
  if (HasConstant(type, name)) {
    PushValue(lua, type.Constant(name));
  } else if (HasMethod(type, name, [](const BoundMethod &method) { return method.isShared; })) {
    lua_pushvalue(lua, 2);
    lua_pushvalue(lua, 1);
    lua_pushcclosure(lua, Guarded<CallShared>, 2);
  } else {
    throw BindingError(type.Name() + " has no constant or shared method \"" + std::string(name) + "\"");
  }
  return 1;
}

int AssignToClass(lua_State *lua) { throw BindingError("nothing can be assigned to the class " + ClassAt(lua).Name()); }

int ClassText(lua_State *lua) {
  lua_pushfstring(lua, "class %s", ClassAt(lua).Name().c_str());
  return 1;
}

}  // namespace

void OpenClasses(lua_State *lua, const std::vector<const ClassBinding *> &classes) {
  const luaL_Reg objectFunctions[] = {{"__gc", Collect<Value>},
                                      {"__close", Guarded<CloseObject>},
                                      {"__index", Guarded<IndexObject>},
                                      {"__newindex", Guarded<AssignProperty>},
                                      {"__tostring", Guarded<ObjectText>},
                                      {"__eq", Guarded<ObjectsEqual>},
                                      {nullptr, nullptr}};
  luaL_newmetatable(lua, kObjectTable);
  luaL_setfuncs(lua, objectFunctions, 0);

  const luaL_Reg classFunctions[] = {{"__call", Guarded<CallClass>},
                                     {"__index", Guarded<IndexClass>},
                                     {"__newindex", Guarded<AssignToClass>},
                                     {"__tostring", Guarded<ClassText>},
                                     {nullptr, nullptr}};
  luaL_newmetatable(lua, kClassTable);
  luaL_setfuncs(lua, classFunctions, 0);
  lua_pop(lua, 2);

  for (const ClassBinding *const type : classes) {
    PushUserdata<HeldClass>(lua, kClassTable, type);
    lua_setglobal(lua, type->Name().c_str());
  }
}

}  // namespace standalone
