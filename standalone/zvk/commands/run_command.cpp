#include <CLI/CLI.hpp>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standalone/lua/host_classes.h"
#include "standalone/lua/script.h"
#include "standalone/runtime/host_state.h"
#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

struct RunRequest {
  std::optional<std::string> code;
  std::optional<unsigned> seed;
  Orient orient = Orient::Upright;
  PluginOptions plugin;
};

void RunScript(const RunRequest &request, std::vector<std::string> arguments) {
  std::string file;
  if (!request.code) {
    if (arguments.empty()) throw UsageError("there is no script; name a file, or give the code with -e CODE");
    file = arguments.front();
    arguments.erase(arguments.begin());
    if (file.size() > 1 && file.front() == '-') {
      throw UsageError("there is no option '" + file + "'; 'zvk run --help' tells how it is used");
    }
    RefuseMissingScript(file);
  }
  const PluginSession session(request.plugin);
  DescribeHostClasses(HostState::Current(), request.orient);
  // After loading, for the plug-in takes the time as its seed.
  if (request.seed) srand(*request.seed);
  Script script;
  if (request.code) {
    script.RunText(*request.code, arguments);
  } else {
    script.RunFile(file, arguments);
  }
}

}  // namespace

void AddRunCommand(CLI::App &program) {
  const auto request = std::make_shared<RunRequest>();
  CLI::App &command = *program.add_subcommand("run", "Run a program in Lua that uses the plug-in's classes");
  // What follows the script is the script's own, options among it.
  command.prefix_command();
  command.add_option("-e", request->code, "Run this code in place of a file")->type_name("CODE");
  command.add_option("--seed", request->seed, "Make what is random the same in each run")->type_name("N");
  AddOrientOption(command, request->orient);
  AddPluginOptions(command, request->plugin);
  command.footer(HelpFooter(
      "zvk run [OPTIONS] SCRIPT.lua [ARG ...]\n"
      "zvk run [OPTIONS] -e CODE [ARG ...]\n"
      "\n"
      "The classes are globals, here and in 'zvk methods'. The script's arguments are in the table arg.\n"
      "\n"
      "  image = PictureZVK(640, 480, PictureZVK.ImageFormatRGB)   make an image; constants stand on the class\n"
      "  image:FillRectRGB(Color\"#ff8000\")                         call a method\n"
      "  image.YieldTicks = 2                                      read and set properties\n"
      "  image:SetRow(3, image:Row(4))                             assign to a method: Set before its name\n"
      "  picture = Picture.Open(\"in.png\")                          a picture of the host, from a file\n"
      "  image:CopyPicture():Save(\"out.png\")                       and into one",
      {"zvk run examples/thumbnails.lua examples build/thumbnails",
       "zvk run -e 'print(PictureZVK.CalculateMemory(60000, 60000, PictureZVK.ImageFormatRGB))'"},
      {.workFailed = "the script failed"}));
  command.callback([request, &command] { RunScript(*request, command.remaining()); });
}

}  // namespace standalone
