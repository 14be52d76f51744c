// Rows and whole images as strings in any format: packed pixels, row after row from the top, nothing between them.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::exchange {

// Handlers: a row, or all rows, as a new string of PixelSize x Width bytes a row; what the conversion does not write is
// zero. The string is tagged ASCII if no byte has its top bit set, else as bytes of no known encoding. Exceptions:
// "UnsupportedOperationException" (bad index; RGB to CMYK or back), "OutOfMemoryException" (no memory, or a size
// outside 1 to 2147483647). Nil then, and quietly for a refused format, one without colours, and an image that is not
// Valid or has no rows.
REALstring rbGetRowFS(REALobject instance, int32_t index, int32_t format);
REALstring rbGetAllFS(REALobject instance, int32_t format);

// Setters: the pixels of a row, or of all rows, from a string whose length is the caller's affair. Filler, and an alpha
// that the format has not, stay as they are. Exceptions as above, and "NilObjectException" for an empty string before
// anything else; after one nothing has been written.
void rbSetRowFS(REALobject instance, int32_t index, int32_t format, REALstring string);
void rbSetAllFS(REALobject instance, int32_t format, REALstring string);

}  // namespace zvk::exchange
