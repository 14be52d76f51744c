#include "standalone/zvk/arguments/file_arguments.h"

#include <CLI/CLI.hpp>

#include "standalone/gd/image_file.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

void AddPathArgument(CLI::App &command, const char *name, std::string &path, const std::string &description) {
  command.add_option(name, path, description)->required()->type_name("");
}

}  // namespace

void AddInputArgument(CLI::App &command, std::string &path) {
  AddPathArgument(command, "IN", path, "Image file to read, whatever its name: PNG, JPEG, GIF, WebP, TIFF or BMP");
}

void AddOutputArgument(CLI::App &command, std::string &path) {
  AddPathArgument(command, "OUT", path,
                  "Image file to write, in the format of its extension:\n" + KnownImageExtensions() +
                      ".\nIt appears whole or not at all, and may be one that is read");
}

void AddOrientOption(CLI::App &command, Orient &orient) {
  command.add_flag_callback(
      "--no-orient", [&orient] { orient = Orient::AsStored; },
      "Take image files as they are stored, and not the way up that\ntheir EXIF data tell (or a TIFF file its field)");
}

void RefuseUnknownExtension(const std::string &path) {
  if (HasKnownImageExtension(path)) return;
  throw UsageError(path + ": no known image extension; use one of " + KnownImageExtensions());
}

}  // namespace standalone
