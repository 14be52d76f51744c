#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <string>

#include "standalone/zvk/arguments/colour_argument.h"
#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/arguments/mirror_direction.h"
#include "standalone/zvk/arguments/value_choice.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/images/image_io.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

struct MirrorRequest {
  std::string input;
  std::string output;
  std::string direction;
  Orient orient = Orient::Upright;
  uint32_t background = kWhite;
  PluginOptions plugin;
};

void Mirror(const MirrorRequest &request) {
  const char *const method = MirrorMethod(request.direction);
  RefuseUnknownExtension(request.output);
  const PluginSession session(request.plugin);
  const Value image = LoadImage(session, request.input, request.orient);
  image.Call(method);
  SaveImage(image, request.output, request.background);
}

}  // namespace

void AddMirrorCommand(CLI::App &program) {
  const auto request = std::make_shared<MirrorRequest>();
  CLI::App &command = *program.add_subcommand("mirror", "Mirror an image file");
  AddInputArgument(command, request->input);
  AddOutputArgument(command, request->output);
  NoteChoice(
      command.add_option("DIRECTION", request->direction, "h exchanges left and right, v exchanges top and bottom")
          ->required()
          ->type_name(""),
      Choice::Directions);
  AddOrientOption(command, request->orient);
  AddBackgroundOption(command, request->background);
  AddPluginOptions(command, request->plugin);
  command.footer(HelpFooter(kTransparencyHelp,
                            {"zvk mirror photo.jpg mirrored.jpg h", "zvk mirror logo.png upside_down.png v"},
                            kOutWholeOrAsBefore));
  command.callback([request] { Mirror(*request); });
}

}  // namespace standalone
