#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "standalone/gd/gd_picture.h"
#include "standalone/rows/row_reader.h"
#include "standalone/runtime/picture.h"
#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/arguments/size_argument.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

constexpr int64_t kSmallestPage = 4096;
constexpr int64_t kBytesOfPicturePixel = 4;

// How a picture of each orientation becomes upright.
constexpr int kUpright = 1;
constexpr const char *kTurns[] = {"",
                                  "upright",
                                  "mirrored left to right",
                                  "turned by 180 degrees",
                                  "mirrored top to bottom",
                                  "turned to the left and mirrored top to bottom",
                                  "turned to the right",
                                  "turned to the right and mirrored top to bottom",
                                  "turned to the left"};

struct InfoRequest {
  std::string input;
  Orient orient = Orient::Upright;
  PluginOptions plugin;
};

// The beginning of a file where that is enough, else the whole picture is looked at.
RowsHeader ReadHeader(const std::string &path) {
  try {
    return OpenRows(path)->Header();
  } catch (const NotByRowsError &) {
    const LoadedPicture loaded = LoadPicture(path, Orient::AsStored);
    return {loaded.format, loaded.picture->Width(), loaded.picture->Height(), false, loaded.hasTransparency};
  }
}

std::string FormatName(const RowsHeader &header) {
  return header.isGray ? (header.hasAlpha ? "GA" : "G") : (header.hasAlpha ? "RGBA" : "RGB");
}

void PrintLine(const char *what, const std::string &text) { std::printf("%-20s %s\n", what, text.c_str()); }

std::string StorageText(int64_t rowBytes, int64_t allBytes) {
  return std::to_string(rowBytes) + " bytes a row, " + std::to_string(allBytes) + " bytes";
}

void Info(const InfoRequest &request) {
  const PluginSession session(request.plugin);
  RowsHeader header = ReadHeader(request.input);
  const Size stored = {header.width, header.height};
  const int orientation = StoredOrientation(request.input);
  if (request.orient == Orient::Upright && TurnOf(orientation).exchangesSides) std::swap(header.width, header.height);
  const ClassBinding &images = session.Images();
  const Value format = images.Constant("ImageFormat" + FormatName(header));
  const Arguments arguments = {header.width, header.height, format};
  const int64_t pixelBytes = images.New({1, 1, format}).Get("PixelSize").AsInteger();

  PrintLine("size", Text({header.width, header.height}) + " pixels");
  if (orientation != kUpright) {
    const std::string turn = kTurns[orientation];
    PrintLine("orientation", std::to_string(orientation) + (request.orient == Orient::Upright
                                                                ? ", " + turn + " from " + Text(stored) + " pixels"
                                                                : ", to be " + turn));
  }
  PrintLine("file", std::string(header.format));
  PrintLine("format", FormatName(header) + ", " + std::to_string(pixelBytes) +
                          (pixelBytes == 1 ? " byte a pixel" : " bytes a pixel"));

  const int64_t rowBytes = images.Call("CalculateMemory", {header.width, 1, format}).AsInt64();
  const int64_t allBytes = images.Call("CalculateMemory", arguments).AsInt64();
  const bool fits = images.Call("CanAllocateImage", arguments).AsBoolean();
  PrintLine("in memory",
            StorageText(rowBytes, allBytes) + (fits ? ", can be allocated" : ", more than an image can have"));

  // A row in a file starts on a page, and a page follows the last row.
  const int64_t page = std::max<int64_t>(kSmallestPage, sysconf(_SC_PAGESIZE));
  const int64_t fileRowBytes = (header.width * pixelBytes + page - 1) / page * page;
  PrintLine("in a file",
            StorageText(fileRowBytes, fileRowBytes * header.height) + " and " + std::to_string(page) + " at the end");

  const int64_t pictureRowBytes = header.width * kBytesOfPicturePixel;
  PrintLine("over a host picture",
            std::max(header.width, header.height) > kLargestPictureSide
                ? "none, a picture has at most " + std::to_string(kLargestPictureSide) + " pixels each way"
                : StorageText(pictureRowBytes, pictureRowBytes * header.height));
}

}  // namespace

void AddInfoCommand(CLI::App &program) {
  const auto request = std::make_shared<InfoRequest>();
  CLI::App &command = *program.add_subcommand("info", "Tell what an image file holds and what its pixels take");
  AddFileArgument(command, "IN", request->input,
                  "Image file to look at, whatever its name: PNG, JPEG, GIF, WebP, TIFF or BMP");
  AddOrientOption(command, request->orient);
  AddPluginOptions(command, request->plugin);
  command.footer(
      HelpFooter("Prints the size of the upright picture, the orientation of the stored one if that is another,\n"
                 "the kind of file, the pixel format that fits it, and how many bytes an image of that format\n"
                 "takes: in memory, in a file (as with 'zvk scale --in-file') and over a host picture, which has\n"
                 "4 bytes a pixel whatever the format. Of large PNG, JPEG and TIFF files only the beginning is\n"
                 "read.",
                 {"zvk info photo.jpg", "zvk info satellite.tif"}, {.workFailed = "IN cannot be read"}));
  command.callback([request] { Info(*request); });
}

}  // namespace standalone
