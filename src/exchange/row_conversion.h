// Rows as memory blocks in any format: packed pixels of the caller's choice, converted from and to the image's own.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::exchange {

// Handler: a new MemoryBlock of PixelSize x Width bytes with a row in the format. What the conversion does not write,
// filler and an alpha that the image has not, keeps the block's first bytes. Exceptions: "OutOfBoundsException" (bad
// index), "OutOfMemoryException", "UnsupportedOperationException" (RGB to CMYK or back). Nil then, and quietly for a
// refused format, one without colours, and an image that is not Valid or has no rows.
REALobject rbGetRowF(REALobject instance, int32_t index, int32_t format);

// Handler: the same, with alpha complemented on its way if `invertAlpha`; a bad index then raises
// "UnsupportedOperationException".
REALobject rbGetRowFI(REALobject instance, int32_t index, int32_t format, uint8_t invertAlpha);

// Setter: writes Width packed pixels of the format from the block, whose length is the caller's affair, into a row.
// Filler, and an alpha that the format has not, stay as they are. Exceptions as above, and "NilObjectException" for a
// nil block before anything else; after one nothing has been written.
void rbSetRowF(REALobject instance, int32_t index, int32_t format, REALobject block);

// Setter: the same, with alpha complemented on its way if `invertAlpha`; a bad index then raises
// "UnsupportedOperationException".
void rbSetRowFI(REALobject instance, int32_t index, int32_t format, uint8_t invertAlpha, REALobject block);

}  // namespace zvk::exchange
