#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "standalone/zvk/arguments/colour_argument.h"
#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/arguments/numbers.h"
#include "standalone/zvk/arguments/value_choice.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/images/image_io.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

struct RotateRequest {
  std::string input;
  std::string output;
  std::string angle;
  Orient orient = Orient::Upright;
  std::string background;  // empty: by what the file has
  PluginOptions plugin;
};

// Less than a full turn either way.
double ParseAngle(const std::string &text) {
  const std::optional<double> degrees = ReadNumber<double>(text);
  if (!degrees || !std::isfinite(*degrees)) {
    throw UsageError("angle '" + text + "' is not understood; write degrees, as in 90 or -12.5");
  }
  return std::fmod(*degrees, 360);
}

ColourArgument BackgroundOf(const RotateRequest &request) {
  if (request.background.empty()) return {kWhite, std::nullopt};
  ColourArgument colour = ParseColour("--background", request.background, true);
  colour.alpha = colour.alpha.value_or(kOpaque);
  return colour;
}

// What lies in the corners decides whether an opaque picture needs alpha, too.
Value LoadSource(const PluginSession &session, const RotateRequest &request, const ColourArgument &background) {
  const bool hasClearCorners = background.alpha.value_or(kOpaque) != kOpaque;
  return hasClearCorners ? LoadImageWithAlpha(session, request.input, request.orient)
                         : LoadImage(session, request.input, request.orient);
}

void Rotate(const RotateRequest &request) {
  const double angle = ParseAngle(request.angle);
  const ColourArgument background = BackgroundOf(request);
  RefuseUnknownExtension(request.output);
  const PluginSession session(request.plugin);
  const Value image = LoadSource(session, request, background);
  // Alpha of the corners counts in an image with alpha only.
  const int32_t red = background.rgb >> 16 & 255, green = background.rgb >> 8 & 255, blue = background.rgb & 255;
  const int32_t alpha = background.alpha.value_or(kClear);
  const Value result = image.Call("Rotate", {angle, red, green, blue, alpha});
  if (result.IsNil()) {
    throw std::runtime_error(request.input + ": there is not enough memory to rotate its " + Text(SizeOf(image)) +
                             " pixels; take a smaller picture");
  }
  SaveImage(result, request.output, background.rgb);
}

}  // namespace

void AddRotateCommand(CLI::App &program) {
  const auto request = std::make_shared<RotateRequest>();
  CLI::App &command = *program.add_subcommand("rotate", "Rotate an image file by any angle");
  AddInputArgument(command, request->input);
  AddOutputArgument(command, request->output);
  NoteChoice(
      command
          .add_option(
              "ANGLE", request->angle,
              "Degrees to the left (counter-clockwise), or to the right if\nnegative; 90, 180 and 270 move pixels "
              "without changing them")
          ->required()
          ->type_name(""),
      Choice::Free);
  AddOrientOption(command, request->orient);
  command
      .add_option("--background", request->background,
                  "The colour of the corners that the turned picture leaves free;\nAA is their alpha, 00 (clear) to FF "
                  "(opaque, if it is left out)\n[default: #FFFFFF, clear if IN has transparent pixels]")
      ->type_name("#RRGGBB[AA]");
  AddPluginOptions(command, request->plugin);
  command.footer(HelpFooter("The result is as large as the turned picture needs.\n" + std::string(kTransparencyHelp),
                            {"zvk rotate photo.jpg upright.jpg 90", "zvk rotate scan.png straight.png -1.5",
                             "zvk rotate photo.jpg tilted.jpg 10 --background #202020",
                             "zvk rotate photo.jpg tilted.png 10 --background #FFFFFF00"},
                            kOutWholeOrAsBefore));
  command.callback([request] { Rotate(*request); });
}

}  // namespace standalone
