// Programs in Lua 5.4 that use the classes of the running host.
//
//   Host host;
//   host.Load("libPictureZVK.so");
//   DescribeHostClasses(host);
//   const Bindings bindings;
//   Script script;
//   script.RunText("print(PictureZVK(4, 3, PictureZVK.ImageFormatRGB).RowSize)", {});
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct lua_State;

namespace standalone {

// A script that failed. The message says where, then what: "script.lua:12: OutOfBoundsException: Index too big". It has
// more lines where it lists the calls that there are.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws ScriptError unless the file can be read and is a program; does not run it, and needs no host.
void CheckScript(const std::string &path);

// One state of Lua with its standard libraries. All classes that plug-ins have registered, and those of the host's own
// that have members, are globals. One at a time; made after the bindings and gone before them, with all objects that
// the script still held.
class Script {
 public:
  Script();
  Script(const Script &) = delete;
  Script &operator=(const Script &) = delete;
  ~Script();

  // Runs a file, or a text; `arguments` are in the global "arg" from 1 on, and the file's name at 0. Throws
  // ScriptError.
  void RunFile(const std::string &path, const std::vector<std::string> &arguments);
  void RunText(const std::string &text, const std::vector<std::string> &arguments);

 private:
  void Run(int loaded, const std::string &name, const std::vector<std::string> &arguments);

  lua_State *lua_;
};

}  // namespace standalone
