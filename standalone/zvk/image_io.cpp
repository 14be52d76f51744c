#include "standalone/zvk/image_io.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <stdexcept>

#include "standalone/gd/gd_picture.h"
#include "standalone/zvk/messages.h"

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

void RefuseUnknownExtension(const std::string &path) {
  if (HasKnownImageExtension(path)) return;
  throw UsageError(path + ": no known image extension; use one of " + KnownImageExtensions());
}

void NoteTransparency(const std::string &path) {
  PrintMessage(path + ": has transparent pixels; their colours are used as they stand and their alpha is dropped");
}

Value LoadImage(const PluginSession &session, const std::string &path) {
  LoadedPicture loaded = LoadPicture(path);
  if (loaded.hasTransparency) NoteTransparency(path);
  return session.Images().New({std::move(loaded.picture)});
}

void SaveImage(const Value &image, const std::string &path) {
  const Size size = SizeOf(image);
  if (std::max(size.width, size.height) > kLargestPictureSide) {
    throw std::runtime_error(path + ": " + Text(size) + " pixels are too many; a picture has at most " +
                             std::to_string(kLargestPictureSide) + " pixels each way");
  }
  const Value picture = image.Call("CopyPicture");
  if (picture.IsNil()) throw std::bad_alloc();
  SavePicture(*picture.As<Picture>(), path);
}

Size SizeOf(const Value &image) { return {image.Get("Width").AsInteger(), image.Get("Height").AsInteger()}; }

}  // namespace standalone
