#include "standalone/zvk/arguments/file_arguments.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "standalone/gd/image_file.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {

void AddFileArgument(CLI::App &command, const std::string &name, std::string &path, const std::string &description) {
  command.add_option(name, path, description)->required()->type_name("");
}

void AddInputArgument(CLI::App &command, std::string &path) {
  AddFileArgument(command, "IN", path, "Image file to read, whatever its name: PNG, JPEG, GIF, WebP, TIFF or BMP");
}

void AddOutputArgument(CLI::App &command, std::string &path) {
  AddFileArgument(command, "OUT", path,
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

void RefuseMissingScript(const std::string &path) {
  std::error_code error;
  if (std::filesystem::is_regular_file(path, error)) return;
  throw std::runtime_error("there is no script " + path + "; name a file in Lua");
}

}  // namespace standalone
