// Image files as images of the plug-in and back: what every command that works in memory does first and last.
#pragma once

#include <string>

#include "standalone/binding/value.h"
#include "standalone/zvk/plugin_session.h"
#include "standalone/zvk/size_argument.h"

namespace CLI {
class App;
}

namespace standalone {

// Adds IN and OUT to a command, in this order; both must live as long as the command.
void AddInputArgument(CLI::App &command, std::string &path);
void AddOutputArgument(CLI::App &command, std::string &path);

// Throws UsageError if the path has no extension of an image file that SaveImage writes.
void RefuseUnknownExtension(const std::string &path);

// Tells that the colours of the file are taken without the alpha it has.
void NoteTransparency(const std::string &path);

// The picture in the file as an image over a host picture: red, green and blue, 8 bits each, without alpha. Alpha in
// the file is dropped, and that is told. Throws ImageFileError.
Value LoadImage(const PluginSession &session, const std::string &path);

// Writes an image of gray, RGB or CMYK, without alpha, in the file format of the path's extension. The file appears
// whole or not at all. Throws ImageFileError, std::runtime_error if the image is larger than a picture can be, and
// std::bad_alloc.
void SaveImage(const Value &image, const std::string &path);

// The size of an image.
Size SizeOf(const Value &image);

}  // namespace standalone
