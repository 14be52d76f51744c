// Image files as images of the plug-in and back: what every command that works in memory does first and last. A file
// with transparent pixels becomes an image with alpha, and such an image a file with alpha where there are such files.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "standalone/binding/value.h"
#include "standalone/files/orientation.h"
#include "standalone/gd/image_file.h"
#include "standalone/zvk/arguments/colour_argument.h"
#include "standalone/zvk/arguments/size_argument.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {

// The picture in the file, 8 bits a channel. If all of it is opaque, it is an image over a host picture, of red, green
// and blue without alpha. Else it is one of ImageFormatRGBA, in memory, whose alpha is 255 where the file is opaque.
// Alpha of PNG and TIFF files comes with all its bits, of others with the 7 that the GD library has. The image is
// upright, unless it is wanted as it is stored. Throws ImageFileError.
Value LoadImage(const PluginSession &session, const std::string &path, Orient orient = Orient::Upright);

// The same with alpha in any case.
Value LoadImageWithAlpha(const PluginSession &session, const std::string &path, Orient orient = Orient::Upright);

// The same without alpha in any case: transparent pixels are laid on the background, and that is told.
Value LoadOpaqueImage(const PluginSession &session, const std::string &path, uint32_t background,
                      Orient orient = Orient::Upright);

// Writes an image of gray, RGB or CMYK in the file format of the path's extension. If the image has alpha that is to be
// kept, and transparent pixels, it goes to PNG and TIFF files with all its bits and to WebP files with 7; in others
// the pixels are laid on the background, and that is told. The file appears whole or not at all. Throws ImageFileError,
// std::runtime_error if the image is larger than a picture can be, and std::bad_alloc.
void SaveImage(const Value &image, const std::string &path, uint32_t background, AlphaPlane alpha = AlphaPlane::Keep);

// Lays pixels of red, green, blue and alpha on the background: each colour becomes (colour x alpha + background x (255
// - alpha)) / 255, rounded down. `row` gets three bytes a pixel; it may start where `pixels` does.
void LayOnBackground(std::span<const uint8_t> pixels, uint32_t background, std::span<uint8_t> row);

// Tell that it is done: because of what a file is to become, or because of what it cannot hold.
void NoteLaidOnBackground(const std::string &path, uint32_t background);
void NoteNoTransparency(const std::string &path, uint32_t background);

// The size of an image, and whether it has a channel of alpha.
Size SizeOf(const Value &image);
bool HasAlpha(const Value &image);

}  // namespace standalone
