// Where pixels live: the constructors in memory, the row accessors, and the destructor for every kind of storage.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk {

// Row accessors. The linear ones check no bounds; those over a row table give nil outside 0 to Height - 1 and for a
// nil table.
uint8_t *GetRowLinear(ImageClassData *record, int32_t index);
uint8_t *GetRowLinearMirrored(ImageClassData *record, int32_t index);
uint8_t *GetRowGDImage(ImageClassData *record, int32_t index);
uint8_t *GetRowGDImageMirrored(ImageClassData *record, int32_t index);

// A zero-filled image in memory of its own. Too large for 32 bits: quietly not Valid; no memory:
// "OutOfMemoryException".
void ImageConstructor(REALobject instance, int32_t width, int32_t height, int32_t format);

// An image over the caller's MemoryBlock, whose length is the caller's affair. Nil block: "NilObjectException"; more
// bytes than 32 bits reach: "OutOfBoundsException".
void ImageConstructorMemory(REALobject instance, REALobject block, int32_t width, int32_t height, int32_t format,
                            int32_t rowSize);

// Gives up storage and references. Serves "Close" and the host's destruction alike, so it may run twice.
void ImageDestructor(REALobject instance);

// Property getter.
int64_t GetTotalSizeInt64(REALobject instance, int32_t param);

}  // namespace zvk
