#include "standalone/lua/lua_values.h"

#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/lua/lua_call.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/strings.h"

namespace standalone {
namespace {

constexpr char kColorTable[] = "PictureZVK host color";
constexpr char kStringTable[] = "PictureZVK host string";
constexpr char kKnownObjects[] = "PictureZVK known objects";

struct NamedEncoding {
  const char *name;
  Encoding encoding;
};
constexpr NamedEncoding kEncodings[] = {
    {"None", Encoding::None},     {"UTF16", Encoding::UTF16}, {"Latin1", Encoding::Latin1}, {"ASCII", Encoding::ASCII},
    {"Binary", Encoding::Binary}, {"UTF8", Encoding::UTF8},   {"UTF32", Encoding::UTF32}};

std::string_view TextAt(lua_State *lua, int index) {
  size_t length = 0;
  const char *const text = lua_tolstring(lua, index, &length);
  return {text, length};
}

void PushBytes(lua_State *lua, std::string_view bytes) { lua_pushlstring(lua, bytes.data(), bytes.size()); }

// --- colours ---

Color *ColorAt(lua_State *lua, int index) { return UserdataAt<Color>(lua, index, kColorTable); }

uint32_t SampleAt(lua_State *lua, int index) {
  const lua_Integer sample = luaL_checkinteger(lua, index);
  luaL_argcheck(lua, sample >= 0 && sample <= 255, index, "a colour has red, green and blue of 0 to 255");
  return static_cast<uint32_t>(sample);
}

int NewColor(lua_State *lua) {
  if (lua_type(lua, 1) == LUA_TSTRING) {
    const std::string text(TextAt(lua, 1));
    unsigned rgb = 0;
    int length = 0;
    if (text.size() != 7 || std::sscanf(text.c_str(), "#%6x%n", &rgb, &length) != 1 || length != 7) {
      throw BindingError("'" + text + "' is no colour; write one as #rrggbb");
    }
    PushValue(lua, Color{rgb});
    return 1;
  }
  PushValue(lua, Color{SampleAt(lua, 1) << 16 | SampleAt(lua, 2) << 8 | SampleAt(lua, 3)});
  return 1;
}

int ColorField(lua_State *lua) {
  const uint32_t rgb = ColorAt(lua, 1)->rgb;
  const std::string_view name = luaL_checkstring(lua, 2);
  const int shift = name == "Red" ? 16 : name == "Green" ? 8 : name == "Blue" ? 0 : -1;
  if (shift < 0) throw BindingError("a colour has Red, Green and Blue, but no " + std::string(name));
  lua_pushinteger(lua, rgb >> shift & 255);
  return 1;
}

int ColorText(lua_State *lua) {
  char text[16] = {};
  std::snprintf(text, sizeof text, "#%06x", ColorAt(lua, 1)->rgb & 0xFFFFFF);
  lua_pushstring(lua, text);
  return 1;
}

int ColorsEqual(lua_State *lua) {
  const Color *const first = ColorAt(lua, 1);
  const Color *const second = ColorAt(lua, 2);
  lua_pushboolean(lua, first != nullptr && second != nullptr && *first == *second);
  return 1;
}

// --- strings ---

using HeldString = Owned<String>;

HeldString *StringAt(lua_State *lua, int index) { return UserdataAt<HeldString>(lua, index, kStringTable); }

// The string at a place, be it Lua's own or the host's.
HeldString HostStringAt(lua_State *lua, int index) {
  const HeldString *const held = StringAt(lua, index);
  if (held != nullptr) return *held;
  luaL_checktype(lua, index, LUA_TSTRING);
  return HeldString::Adopt(String::Make(TextAt(lua, index)));
}

int StringBytes(lua_State *lua) {
  PushBytes(lua, HostStringAt(lua, 1)->Bytes());
  return 1;
}

int StringLength(lua_State *lua) {
  lua_pushinteger(lua, static_cast<lua_Integer>(HostStringAt(lua, 1)->Bytes().size()));
  return 1;
}

int StringsEqual(lua_State *lua) {
  const HeldString first = HostStringAt(lua, 1);
  const HeldString second = HostStringAt(lua, 2);
  lua_pushboolean(lua, first->TextEncoding() == second->TextEncoding() && first->Bytes() == second->Bytes());
  return 1;
}

int EncodingOf(lua_State *lua) {
  lua_pushinteger(lua, static_cast<lua_Integer>(HostStringAt(lua, 1)->TextEncoding()));
  return 1;
}

Encoding EncodingAt(lua_State *lua, int index) {
  const lua_Integer code = luaL_checkinteger(lua, index);
  for (const NamedEncoding &known : kEncodings) {
    if (static_cast<lua_Integer>(known.encoding) == code) return known.encoding;
  }
  throw BindingError("there is no encoding " + std::to_string(code) + "; take one of the table Encodings");
}

void PushHostString(lua_State *lua, HeldString string) {
  PushUserdata<HeldString>(lua, kStringTable, std::move(string));
}

// The same bytes said to be of another encoding.
int DefineEncoding(lua_State *lua) {
  const Encoding encoding = EncodingAt(lua, 2);
  PushHostString(lua, HeldString::Adopt(String::Make(HostStringAt(lua, 1)->Bytes(), encoding)));
  return 1;
}

// The same text in the bytes of another encoding.
int ConvertEncoding(lua_State *lua) {
  const HeldString string = HostStringAt(lua, 1);
  const Encoding encoding = EncodingAt(lua, 2);
  std::string converted;
  ConvertText(string->Bytes(), string->TextEncoding(), encoding, &converted);
  PushHostString(lua, HeldString::Adopt(String::Make(converted, encoding)));
  return 1;
}

// Texts of an encoding that Lua does not know stay strings of the host. All others are Lua's own, bytes and all.
void PushString(lua_State *lua, const Value &value) {
  String *const string = String::From(value.AsString());
  const Encoding encoding = string == nullptr ? Encoding::UTF8 : string->TextEncoding();
  if (encoding == Encoding::UTF16 || encoding == Encoding::UTF32 || encoding == Encoding::Latin1) {
    PushHostString(lua, HeldString::Share(string));
  } else {
    PushBytes(lua, value.AsBytes());
  }
}

// --- objects ---

// The values of this table do not keep their objects from being collected.
void PushKnownObjects(lua_State *lua) {
  if (luaL_getsubtable(lua, LUA_REGISTRYINDEX, kKnownObjects)) return;
  lua_createtable(lua, 0, 1);
  lua_pushliteral(lua, "v");
  lua_setfield(lua, -2, "__mode");
  lua_setmetatable(lua, -2);
}

void PushObject(lua_State *lua, const Value &value) {
  PushKnownObjects(lua);
  if (lua_rawgetp(lua, -1, value.AsObject()) != LUA_TUSERDATA || ObjectAt(lua, -1)->IsNil()) {
    lua_pop(lua, 1);
    PushUserdata<Value>(lua, kObjectTable, value);
    lua_pushvalue(lua, -1);
    lua_rawsetp(lua, -3, value.AsObject());
  }
  lua_remove(lua, -2);
}

// --- arrays ---

void PushArray(lua_State *lua, const std::vector<int32_t> &values) {
  lua_createtable(lua, static_cast<int>(values.size()), 0);
  for (size_t i = 0; i < values.size(); ++i) {
    lua_pushinteger(lua, values[i]);
    lua_rawseti(lua, -2, static_cast<lua_Integer>(i) + 1);
  }
}

Value ArrayAt(lua_State *lua, int index) {
  std::vector<int32_t> values;
  const auto count = static_cast<lua_Integer>(lua_rawlen(lua, index));
  for (lua_Integer i = 1; i <= count; ++i) {
    lua_rawgeti(lua, index, i);
    int isInteger = 0;
    const lua_Integer number = lua_tointegerx(lua, -1, &isInteger);
    const bool fits = lua_type(lua, -1) == LUA_TNUMBER && isInteger != 0 &&
                      number >= std::numeric_limits<int32_t>::min() && number <= std::numeric_limits<int32_t>::max();
    lua_pop(lua, 1);
    if (!fits) throw BindingError("entry " + std::to_string(i) + " of an array is no integer of 32 bits");
    values.push_back(static_cast<int32_t>(number));
  }
  if (count == 0) {
    lua_pushnil(lua);
    if (lua_next(lua, lua_absindex(lua, index)) != 0) {
      lua_pop(lua, 2);
      throw BindingError("a table with names is no value of the host language; an array is a list of integers");
    }
  }
  return values;
}

void SetFunctions(lua_State *lua, const luaL_Reg *functions) { luaL_setfuncs(lua, functions, 0); }

}  // namespace

void OpenValues(lua_State *lua) {
  const luaL_Reg colorFunctions[] = {{"__index", Guarded<ColorField>},
                                     {"__tostring", Guarded<ColorText>},
                                     {"__eq", Guarded<ColorsEqual>},
                                     {nullptr, nullptr}};
  luaL_newmetatable(lua, kColorTable);
  SetFunctions(lua, colorFunctions);

  const luaL_Reg stringFunctions[] = {{"__gc", Collect<HeldString>},
                                      {"__tostring", Guarded<StringBytes>},
                                      {"__len", Guarded<StringLength>},
                                      {"__eq", Guarded<StringsEqual>},
                                      {nullptr, nullptr}};
  luaL_newmetatable(lua, kStringTable);
  SetFunctions(lua, stringFunctions);
  lua_pop(lua, 2);

  lua_register(lua, "Color", Guarded<NewColor>);
  lua_register(lua, "Encoding", Guarded<EncodingOf>);
  lua_register(lua, "DefineEncoding", Guarded<DefineEncoding>);
  lua_register(lua, "ConvertEncoding", Guarded<ConvertEncoding>);
  lua_register(lua, "LenB", Guarded<StringLength>);
  lua_newtable(lua);
  for (const NamedEncoding &known : kEncodings) {
    lua_pushinteger(lua, static_cast<lua_Integer>(known.encoding));
    lua_setfield(lua, -2, known.name);
  }
  lua_setglobal(lua, "Encodings");
}

void PushValue(lua_State *lua, const Value &value) {
  switch (value.GetKind()) {
    case Value::Kind::Nil:
      return lua_pushnil(lua);
    case Value::Kind::Integer:
    case Value::Kind::Int64:
      return lua_pushinteger(lua, value.AsInt64());
    case Value::Kind::Double:
      return lua_pushnumber(lua, value.AsDouble());
    case Value::Kind::Boolean:
      return lua_pushboolean(lua, value.AsBoolean());
    case Value::Kind::Color:
      PushUserdata<Color>(lua, kColorTable, value.AsColor());
      return;
    case Value::Kind::String:
      return PushString(lua, value);
    case Value::Kind::Object:
      return PushObject(lua, value);
    case Value::Kind::Array:
      return PushArray(lua, value.AsIntegers());
  }
}

Value ToValue(lua_State *lua, int index) {
  switch (lua_type(lua, index)) {
    case LUA_TNONE:
    case LUA_TNIL:
      return nullptr;
    case LUA_TBOOLEAN:
      return lua_toboolean(lua, index) != 0;
    case LUA_TNUMBER: {
      if (lua_isinteger(lua, index) == 0) return lua_tonumber(lua, index);
      const int64_t number = lua_tointeger(lua, index);
      const bool isShort =
          number >= std::numeric_limits<int32_t>::min() && number <= std::numeric_limits<int32_t>::max();
      return isShort ? Value(static_cast<int32_t>(number)) : Value(number);
    }
    case LUA_TSTRING:
      return TextAt(lua, index);
    case LUA_TTABLE:
      if (lua_getmetatable(lua, index) == 0) return ArrayAt(lua, index);
      lua_pop(lua, 1);
      break;
    case LUA_TUSERDATA:
      if (const Value *const object = ObjectAt(lua, index)) {
        if (object->IsNil()) throw BindingError("this object has been closed");
        return *object;
      }
      if (const Color *const color = ColorAt(lua, index)) return *color;
      if (const HeldString *const string = StringAt(lua, index)) return *string;
      break;
    default:
      break;
  }
  throw BindingError(std::string("a ") + luaL_typename(lua, index) + " of the script is no value of the host language");
}

Arguments ToArguments(lua_State *lua, int first) {
  Arguments arguments;
  for (int i = first; i <= lua_gettop(lua); ++i) arguments.push_back(ToValue(lua, i));
  return arguments;
}

Value *ObjectAt(lua_State *lua, int index) { return UserdataAt<Value>(lua, index, kObjectTable); }

}  // namespace standalone
