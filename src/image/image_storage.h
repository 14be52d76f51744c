// Where pixels live: the constructors in memory, the row accessors, and the destructor for every kind of storage.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::image {

// Row accessors. The linear ones check no bounds; those over a row table give nil outside 0 to Height - 1 and for a
// nil table.
uint8_t *GetRowLinear(ImageClassData *record, int32_t index);
uint8_t *GetRowLinearMirrored(ImageClassData *record, int32_t index);
uint8_t *GetRowGDImage(ImageClassData *record, int32_t index);
uint8_t *GetRowGDImageMirrored(ImageClassData *record, int32_t index);

// Gives up what an earlier construction of the same instance holds, its storage and its references. The record is then
// as the host creates it, but for what the host program has set: the yield fields, Factory and DebugPictureEnabled.
void StartAnew(ImageClassData &record);

// The start of a construction by size: starts the record anew and fills in the format's fields. False if the record is
// nil or a size is not above zero, with nothing written, and for a format that is refused.
bool BeginConstruction(ImageClassData *record, int32_t width, int32_t height, int32_t format);

// A zero-filled image in memory of its own. Too large for 32 bits: quietly not Valid; no memory:
// "OutOfMemoryException".
void ImageConstructor(REALobject instance, int32_t width, int32_t height, int32_t format);

// An image over the caller's MemoryBlock, whose length is the caller's affair. Nil block: "NilObjectException"; more
// bytes than 32 bits reach: "OutOfBoundsException".
void ImageConstructorMemory(REALobject instance, REALobject block, int32_t width, int32_t height, int32_t format,
                            int32_t rowSize);

// Gives up storage and references, after threads that work on the pixels have ended. Serves "Close" and the host's
// destruction alike, so it may run twice.
void ImageDestructor(REALobject instance);

// Property getter.
int64_t GetTotalSizeInt64(REALobject instance, int32_t param);

}  // namespace zvk::image
