#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "standalone/rows/row_reader.h"
#include "standalone/rows/row_writer.h"
#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/arguments/numbers.h"
#include "standalone/zvk/arguments/size_argument.h"
#include "standalone/zvk/arguments/value_choice.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/images/image_io.h"
#include "standalone/zvk/images/scale_in_files.h"
#include "standalone/zvk/images/scale_job.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

// Three of them, one for each image, are well below what a small machine has in memory.
constexpr char kDefaultBlock[] = "67108864";

struct ScaleRequest {
  std::string input;
  std::string output;
  std::string size;
  std::string filter = "lanczos3";
  bool isFast = false;
  std::optional<std::string> threads;
  std::string format;  // empty: by what the file has
  Orient orient = Orient::Upright;
  uint32_t background = kWhite;
  bool isInFile = false;
  std::string block = kDefaultBlock;
  PluginOptions plugin;
};

Value NewImage(const PluginSession &session, Size size, int32_t format) {
  const Arguments arguments = {size.width, size.height, format};
  if (!session.Images().Call("CanAllocateImage", arguments).AsBoolean()) {
    const int64_t bytes = session.Images().Call("CalculateMemory", arguments).AsInt64();
    throw std::runtime_error("a result of " + Text(size) + " pixels takes " + std::to_string(bytes) +
                             " bytes, more than an image can have; take a smaller size, or add --in-file");
  }
  return session.Images().New(arguments);
}

void ScaleImage(const Value &source, const Value &result, const ScaleJob &job) {
  const HighByteOfGray highByte(result);
  if (ScaleWhole(source, nullptr, result, job)) return;
  RefuseUnsuitable(result, job);
  const Size between = {result.Get("Width").AsInteger(), source.Get("Height").AsInteger()};
  throw std::runtime_error("there is not enough memory for the " + Text(between) +
                           " pixels between the two steps of scaling; take a smaller width, or add --in-file");
}

// With alpha if there is some and the result can have it.
Value LoadSource(const PluginSession &session, const ScaleJob &job) {
  const bool dropsAlpha = job.format && !HasAlpha(session.Images().New({1, 1, *job.format}));
  return dropsAlpha ? LoadOpaqueImage(session, job.input, job.background, job.orient)
                    : LoadImage(session, job.input, job.orient);
}

void ScaleInMemory(PluginSession &session, const ScaleJob &job) {
  Value original = LoadSource(session, job);
  // No alpha is scaled from an opaque original, whatever the result's format.
  const AlphaPlane alpha = HasAlpha(original) ? AlphaPlane::Keep : AlphaPlane::Drop;
  const Size size = CompleteSize(job.size, SizeOf(original));
  const Value result = NewImage(session, size, ResultFormat(session, job, HasAlpha(original)));
  result.Set("YieldTicks", -kMillisecondsBetweenYields);

  session.RunWithProgress("scaling to " + Text(size), job.clock,
                          [&](const PluginSession::MoveProgress &) { ScaleImage(original, result, job); });
  original = nullptr;  // its memory is free when the result becomes a picture
  SaveImage(result, job.output, job.background, alpha);
}

void RefuseOutput(const ScaleRequest &request) {
  if (request.isInFile && !HasKnownRowExtension(request.output)) {
    throw UsageError(request.output + ": no image extension that --in-file can write; use one of " +
                     KnownRowExtensions());
  }
  RefuseUnknownExtension(request.output);
}

void Scale(const ScaleRequest &request, const ProgressLine::Clock &clock) {
  const SizeArgument size = ParseSize(request.size, request.isInFile ? kLargestRowSide : kLargestPictureSide);
  const int32_t block = ParseNumber(request.block, "block", "number of bytes", 1, 2147483647);
  std::optional<int32_t> threads;
  if (request.threads) threads = ParseNumber(*request.threads, "threads", "number", 0, 32);
  RefuseOutput(request);
  PluginSession session(request.plugin);
  const int32_t filter = session.Choose("filter", "Scale", request.filter);
  std::optional<int32_t> format;
  if (!request.format.empty()) format = session.Choose("format", "ImageFormat", request.format);
  const ScaleJob job = {request.input,  request.output,     size,           filter, threads, request.isFast, format,
                        request.format, request.background, request.orient, clock};
  if (request.isInFile) {
    ScaleInFiles(session, job, block);
  } else {
    ScaleInMemory(session, job);
  }
}

}  // namespace

void AddScaleCommand(CLI::App &program, const ProgressLine::Clock &clock) {
  const auto request = std::make_shared<ScaleRequest>();
  CLI::App &command = *program.add_subcommand("scale", "Scale an image file into another one");
  AddInputArgument(command, request->input);
  AddOutputArgument(command, request->output);
  NoteChoice(command
                 .add_option(
                     "SIZE", request->size,
                     "WIDTHxHEIGHT in pixels, 1 to 32767 each way (up to 100000000\nwith --in-file); WIDTHx or xHEIGHT "
                     "keeps the proportions")
                 ->required()
                 ->type_name(""),
             Choice::Free);
  CLI::Option *const filter =
      command
          .add_option("--filter", request->filter,
                      "Resampling filter: triangle, box, lanczos3, lanczos8,\nmitchell, poly3 or cubic [default: " +
                          request->filter + "]")
          ->type_name("NAME");
  NoteChoice(filter, Choice::ScaleFilters);
  CLI::Option *const fast = command
                                .add_flag("--fast", request->isFast,
                                          "Take the nearest pixel for each one instead of filtering: much\nfaster, "
                                          "and rough. Not for Gray16")
                                ->excludes(filter);
  CLI::Option *const threads =
      command
          .add_option("--threads", request->threads,
                      "Filter on that many threads, 1 to 32, or with 0 on one for each\nprocessor. Between the two "
                      "steps fractions are then dropped\ninstead of rounded, so the result is a little darker than "
                      "by\ndefault, and the same for any number [default: filter on one\nthread, and round]")
          ->type_name("N")
          ->excludes(fast);
  CLI::Option *const format =
      command
          .add_option("--format", request->format,
                      "Pixel format of the result while it is made. In colour:\n"
                      "RGB, RGBA, RGBX, ARGB, XRGB, BGR, BGRA, BGRX, ABGR or XBGR;\n"
                      "in gray: G, GA, AG, Gray16, 1of3, 2of3, 3of3, 1of4, 2of4,\n"
                      "3of4 or 4of4. The file gets 8 bits a channel, and alpha if both\n"
                      "IN and the format have it [default: RGB, or RGBA if IN has\ntransparent pixels]")
          ->type_name("NAME");
  NoteChoice(format, Choice::PixelFormats);
  CLI::Option *const inFile = command.add_flag(
      "--in-file", request->isInFile,
      "For pictures larger than memory: keep all pixels in temporary\nfiles, and read and write the pictures row by "
      "row. IN and OUT\nare PNG, JPEG or TIFF. The result is the same");
  inFile->excludes(threads);
  command
      .add_option(
          "--block", request->block,
          "With --in-file: how many bytes of each temporary file are in\nmemory at a time, 1 to 2147483647. Less "
          "than 16777216 is taken\nas that. Each pixel of the result is made from a column of the\nintermediate "
          "image: WIDTH of 4 bytes by the rows that the filter\nlooks at (lanczos3: 6 times the shrinking). If a "
          "block does not\nhold them, it is moved to and fro for every pixel, which takes\nvery long [default: " +
              request->block + "]")
      ->type_name("BYTES")
      ->needs(inFile);
  AddOrientOption(command, request->orient);
  AddBackgroundOption(command, request->background);
  AddPluginOptions(command, request->plugin);
  command.footer(HelpFooter(
      "Names of filters and formats are taken in any case. The plug-in's other formats, CMYK and\n"
      "the like, are refused, as it does not scale colours into them.\n" +
          std::string(kTransparencyHelp) +
          "\n"
          "On a terminal a progress line shows the elapsed time of work over a second. Temporary files are\n"
          "in the folder TMPDIR, else in /tmp, and are gone afterwards, also if the work failed; they take\n"
          "3 bytes (4 with alpha) for each pixel of IN (twice while it is turned by 90 degrees) and OUT, and\n"
          "4 for each of WIDTH by the height of IN.",
      {"zvk scale photo.jpg small.jpg 640x480", "zvk scale photo.jpg wide.png 1920x --filter mitchell",
       "zvk scale photo.jpg gray.png x300 --format G", "zvk scale photo.jpg photo.jpg 50x50 --filter box --leaks",
       "zvk scale photo.jpg large.png 9000x --filter lanczos8 --threads 0",
       "zvk scale photo.jpg preview.png 200x --fast", "zvk scale satellite.tif overview.png 6000x --in-file"},
      kOutWholeOrAsBefore));
  command.callback([request, clock] { Scale(*request, clock); });
}

}  // namespace standalone
