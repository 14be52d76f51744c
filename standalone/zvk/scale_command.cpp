#include "standalone/zvk/scale_command.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "standalone/gd/gd_picture.h"
#include "standalone/runtime/picture.h"
#include "standalone/zvk/messages.h"
#include "standalone/zvk/plugin_session.h"
#include "standalone/zvk/size_argument.h"

namespace standalone {
namespace {

constexpr int32_t kMillisecondsBetweenYields = 100;

struct ScaleRequest {
  std::string input;
  std::string output;
  std::string size;
  std::string filter = "lanczos3";
  std::string format = "RGB";
  PluginOptions plugin;
};

std::string Text(Size size) { return std::to_string(size.width) + " x " + std::to_string(size.height); }

Value NewImage(const PluginSession &session, Size size, int32_t format) {
  const Arguments arguments = {size.width, size.height, format};
  if (!session.Images().Call("CanAllocateImage", arguments).AsBoolean()) {
    const int64_t bytes = session.Images().Call("CalculateMemory", arguments).AsInt64();
    throw std::runtime_error("a result of " + Text(size) + " pixels takes " + std::to_string(bytes) +
                             " bytes, more than an image can have; take a smaller size");
  }
  return session.Images().New(arguments);
}

// `source` has colours.
[[noreturn]] void ExplainRefusal(const Value &source, const Value &result, const ScaleRequest &request) {
  if (!result.Get("IsRGB").AsBoolean() && !result.Get("IsGray").AsBoolean()) {
    throw std::runtime_error("an RGB picture cannot be scaled into " + request.format +
                             "; take a format of red, green and blue or of gray, such as RGB or G");
  }
  const Size between = {result.Get("Width").AsInteger(), source.Get("Height").AsInteger()};
  throw std::runtime_error("there is not enough memory for the " + Text(between) +
                           " pixels between the two steps of scaling; take a smaller width");
}

void ScaleImage(const Value &source, const Value &result, int32_t filter, const ScaleRequest &request) {
  // Eight bits of gray go to the byte at the gray offset. Of a 16-bit sample that must be the high one, the second.
  const bool isWide = result.Get("BitsPerComponent").AsInteger() == 16;
  if (isWide) result.Set("GrayOffset", 1);
  const Arguments arguments = {source, nullptr, filter, result.Get("Width"), result.Get("Height")};
  if (!result.Call("Scale", arguments).AsBoolean()) ExplainRefusal(source, result, request);
  if (isWide) result.Set("GrayOffset", 0);
}

void Scale(const ScaleRequest &request) {
  const SizeArgument wanted = ParseSize(request.size);
  if (!HasKnownImageExtension(request.output)) {
    throw UsageError(request.output + ": no known image extension; use one of " + KnownImageExtensions());
  }
  PluginSession session(request.plugin);
  const int32_t filter = session.Choose("filter", "Scale", request.filter);
  const int32_t format = session.Choose("format", "ImageFormat", request.format);

  LoadedPicture original = LoadPicture(request.input);
  if (original.hasTransparency) {
    PrintMessage(request.input +
                 ": has transparent pixels; their colours are used as they stand and their alpha is dropped");
  }
  const Size size = CompleteSize(wanted, {original.picture->Width(), original.picture->Height()});
  const Value result = NewImage(session, size, format);
  result.Set("YieldTicks", -kMillisecondsBetweenYields);

  Value picture;
  session.RunWithProgress("scaling to " + Text(size), [&] {
    // The original is no longer needed when the result becomes a picture.
    ScaleImage(session.Images().New({std::move(original.picture)}), result, filter, request);
    picture = result.Call("CopyPicture");
  });
  if (picture.IsNil()) throw std::bad_alloc();
  SavePicture(*picture.As<Picture>(), request.output);
}

}  // namespace

void AddScaleCommand(CLI::App &program) {
  const auto request = std::make_shared<ScaleRequest>();
  CLI::App &command = *program.add_subcommand("scale", "Scale an image file into another one");
  const auto positional = [&command](const char *name, std::string &value, const std::string &description) {
    command.add_option(name, value, description)->required()->type_name("");
  };
  positional("IN", request->input, "Image file to read, whatever its name: PNG, JPEG, GIF, WebP, TIFF or BMP");
  positional("OUT", request->output,
             "Image file to write, in the format of its extension:\n" + KnownImageExtensions() +
                 ".\nIt appears whole or not at all, and may be the same file as IN");
  positional("SIZE", request->size,
             "WIDTHxHEIGHT in pixels, 1 to 32767 each way;\nWIDTHx or xHEIGHT keeps the proportions");
  command
      .add_option("--filter", request->filter,
                  "Resampling filter: triangle, box, lanczos3, lanczos8,\nmitchell, poly3 or cubic [default: " +
                      request->filter + "]")
      ->type_name("NAME");
  command
      .add_option("--format", request->format,
                  "Pixel format of the result while it is made. In colour:\n"
                  "RGB, RGBA, RGBX, ARGB, XRGB, BGR, BGRA, BGRX, ABGR or XBGR;\n"
                  "in gray: G, GA, AG, Gray16, 1of3, 2of3, 3of3, 1of4, 2of4,\n"
                  "3of4 or 4of4. The file gets 8 bits a channel and no alpha\n[default: " +
                      request->format + "]")
      ->type_name("NAME");
  AddPluginOptions(command, request->plugin);
  command.footer(
      "Names of filters and formats are taken in any case. The plug-in's other formats, CMYK and\n"
      "the like, are refused, as it does not scale colours into them. The alpha of IN is dropped.\n"
      "On a terminal a progress line shows the elapsed time of work over a second.\n"
      "\n"
      "Examples:\n"
      "  zvk scale photo.jpg small.jpg 640x480\n"
      "  zvk scale photo.jpg wide.png 1920x --filter mitchell\n"
      "  zvk scale photo.jpg gray.png x300 --format G\n"
      "  zvk scale photo.jpg photo.jpg 50x50 --filter box --leaks\n"
      "\n"
      "Exit codes:\n"
      "  0  done\n"
      "  1  the work failed; OUT is as it was before\n"
      "  2  the command line is wrong; nothing was done");
  command.callback([request] { Scale(*request); });
}

}  // namespace standalone
