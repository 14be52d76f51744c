#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "standalone/zvk/arguments/colour_argument.h"
#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/arguments/numbers.h"
#include "standalone/zvk/arguments/size_argument.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/images/image_io.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

constexpr int32_t kNoColour = -1;

struct CombineRequest {
  std::string base;
  std::string image;
  std::string output;
  std::string mask;  // empty: none
  std::string place = "0,0";
  bool isPremultiplied = false;
  std::string fore;   // empty: none
  std::string cover;  // empty: none
  Orient orient = Orient::Upright;
  uint32_t background = kWhite;
  PluginOptions plugin;
};

struct Place {
  int32_t x;
  int32_t y;
};

Place ParsePlace(const std::string &text) {
  const std::string_view words = text;
  const size_t comma = std::min(words.find(','), words.size());
  const std::optional<int32_t> x = ReadNumber<int32_t>(words.substr(0, comma));
  const std::optional<int32_t> y = ReadNumber<int32_t>(words.substr(std::min(comma + 1, words.size())));
  if (!x || !y) {
    throw UsageError("--at '" + text + "' is not understood; write X,Y in pixels, as in 10,-20");
  }
  return {*x, *y};
}

int32_t ParseColourOrNone(const char *option, const std::string &text) {
  return text.empty() ? kNoColour : static_cast<int32_t>(ParseColour(option, text).rgb);
}

// What is laid on the base.
struct Layer {
  Value image;
  Value mask;  // nil: none
};

// The mask that an image's own alpha is: that alpha turned round, as 255 keeps the base. All channels of the mask are
// it, so that the base becomes opaque where the image is.
Value MaskOfAlpha(const PluginSession &session, const Value &image) {
  const Value format = session.Images().Constant("ImageFormatRGBA");
  const Size size = SizeOf(image);
  Value mask = session.Images().New({size.width, size.height, format});
  for (int32_t y = 0; y < size.height; ++y) {
    mask.Assign("RowInFormat", {y, format, true}, image.Call("RowInFormat", {y, format}));
  }
  for (const char *colour : {"RedOffset", "GreenOffset", "BlueOffset"}) mask.Set(colour, mask.Get("AlphaOffset"));
  return mask;
}

void RefuseSize(const CombineRequest &request, const Value &image, const Value &mask) {
  if (SizeOf(mask) == SizeOf(image)) return;
  throw std::runtime_error(request.mask + ": is " + Text(SizeOf(mask)) + " pixels, but " + request.image + " is " +
                           Text(SizeOf(image)) + "; a mask must be as large as the IMAGE it goes with, so scale one");
}

Layer LoadLayer(const PluginSession &session, const CombineRequest &request) {
  if (!request.mask.empty()) {
    Layer layer = {LoadImage(session, request.image, request.orient), LoadImage(session, request.mask, request.orient)};
    RefuseSize(request, layer.image, layer.mask);
    return layer;
  }
  // Neither way of combining with a colour looks at alpha.
  if (!request.fore.empty() || !request.cover.empty()) {
    return {LoadOpaqueImage(session, request.image, request.background, request.orient), nullptr};
  }
  const Value image = LoadImage(session, request.image, request.orient);
  if (!HasAlpha(image)) return {image, nullptr};
  return {image.Call("RGBChannels"), MaskOfAlpha(session, image)};
}

[[noreturn]] void FailOnRefusal(const CombineRequest &request, Place place, Size base, Size image) {
  const bool isOutside = place.x >= base.width || place.y >= base.height || int64_t{place.x} + image.width <= 0 ||
                         int64_t{place.y} + image.height <= 0;
  if (!isOutside) {
    throw std::runtime_error(request.base + ": the plug-in does not combine it with " + request.image +
                             "; take other pictures");
  }
  throw std::runtime_error(request.image + ": its " + Text(image) + " pixels at " + std::to_string(place.x) + "," +
                           std::to_string(place.y) + " lie outside " + request.base + " of " + Text(base) +
                           " pixels; choose another place with --at");
}

void Combine(const CombineRequest &request) {
  const Place place = ParsePlace(request.place);
  const int32_t fore = ParseColourOrNone("--fore", request.fore);
  const int32_t cover = ParseColourOrNone("--cover", request.cover);
  if (request.isPremultiplied && request.mask.empty() && fore == kNoColour && cover == kNoColour) {
    throw UsageError("--premultiplied has no meaning by itself; add --mask, --fore or --cover");
  }
  RefuseUnknownExtension(request.output);

  const PluginSession session(request.plugin);
  const Value base = LoadImage(session, request.base, request.orient);
  const Layer layer = LoadLayer(session, request);
  const Size size = SizeOf(layer.image);
  const bool usesColours = cover != kNoColour;
  const Value isDone = base.Call("Combine", {layer.image, request.isPremultiplied, layer.mask, place.x, place.y, 0, 0,
                                             size.width, size.height, usesColours, fore, cover});
  if (!isDone.AsBoolean()) FailOnRefusal(request, place, SizeOf(base), size);
  SaveImage(base, request.output, request.background);
}

}  // namespace

void AddCombineCommand(CLI::App &program) {
  const auto request = std::make_shared<CombineRequest>();
  CLI::App &command = *program.add_subcommand("combine", "Lay an image file on another one");
  AddFileArgument(command, "BASE", request->base, "Image file to lay the other one on; OUT is as large");
  AddFileArgument(command, "IMAGE", request->image, "Image file to lay on it");
  AddOutputArgument(command, request->output);
  CLI::Option *const mask =
      command
          .add_option("--mask", request->mask,
                      "Image file as large as IMAGE that tells where BASE is kept\n(white), where IMAGE covers it "
                      "(black), and what mixes (gray);\nof a mask in colour each channel is one for itself")
          ->type_name("FILE");
  command
      .add_option(
          "--at", request->place,
          "Where the top left corner of IMAGE goes in BASE; what hangs\nover is cut [default: " + request->place + "]")
      ->type_name("X,Y");
  command.add_flag(
      "--premultiplied", request->isPremultiplied,
      "What is laid on has been multiplied by its coverage: it is\nadded. Sums above 255 wrap. With --mask, "
      "colours of BASE count\nfor nothing, only its alpha and the mask's samples do");
  CLI::Option *const fore = command
                                .add_option("--fore", request->fore,
                                            "Lay this colour on BASE where IMAGE is black, and keep BASE where\nit is "
                                            "white: IMAGE is the mask")
                                ->type_name("#RRGGBB");
  CLI::Option *const cover =
      command
          .add_option("--cover", request->cover,
                      "Lay IMAGE on BASE evenly, in each channel as far as this colour\ntells: FF keeps BASE, 00 gives "
                      "IMAGE, 80 half of each")
          ->type_name("#RRGGBB");
  mask->excludes(fore)->excludes(cover);
  fore->excludes(cover);
  AddOrientOption(command, request->orient);
  AddBackgroundOption(command, request->background);
  AddPluginOptions(command, request->plugin);
  command.footer(
      HelpFooter("Without --mask, --fore and --cover IMAGE covers BASE as far as its own alpha tells, wholly if it\n"
                 "is opaque. With --mask the mask alone tells, and IMAGE's alpha counts only towards that of a\n"
                 "transparent BASE; with --fore and --cover IMAGE is laid on --background first.\n" +
                     std::string(kTransparencyHelp),
                 {"zvk combine photo.jpg logo.png marked.jpg --at 20,20",
                  "zvk combine sea.jpg sky.jpg horizon.png --mask gradient.png",
                  "zvk combine photo.jpg stencil.png stamped.jpg --fore #C00000",
                  "zvk combine first.jpg second.jpg mixed.jpg --cover #808080"},
                 kOutWholeOrAsBefore));
  command.callback([request] { Combine(*request); });
}

}  // namespace standalone
