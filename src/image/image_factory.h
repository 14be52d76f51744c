// New images for the system's own use, which the host program may supply through a factory.
#pragma once

#include <cstdint>

#include "host/resources.h"
#include "image/image_record.h"

namespace zvk::image {

// An image of at least the given size: from the factory of `record` (may be nil), else from the global factory, else
// constructed in memory. A factory's answer may be larger and of any format. Empty if no source gives a usable one.
ObjectReference CreatePicture(const ImageClassData *record, int32_t width, int32_t height, int32_t format);

// True if the host program has a say in the images that are made for `record`. Else they are in memory, of the very
// size and format, and nobody else knows of them.
bool HasFactory(const ImageClassData &record);

// Handlers: the same for a host program, which gets the one reference; nil if there is none.
REALobject CreatePictureLocal(REALobject instance, int32_t width, int32_t height, int32_t format);
REALobject CreatePictureGlobal(int32_t width, int32_t height, int32_t format);

// Replaces the global factory, of which one reference is held; nil removes it.
void SetFactory(REALobject factory);

}  // namespace zvk::image
