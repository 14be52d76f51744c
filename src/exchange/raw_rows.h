// Rows as they lie in the storage: the bytes themselves, or a copy of them, in the image's own layout.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::exchange {

// Handler: a MemoryBlock of unknown size laid over a row, valid for as long as the row's address is. A bad index raises
// "OutOfBoundsException". Nil then, and for an image that is not Valid or has no rows.
REALobject rbGetRow(REALobject instance, int32_t index);

// Handler: a new MemoryBlock with a copy of the RowSize bytes of a row, padding included and whatever the clip. A bad
// index raises "OutOfBoundsException", no memory "OutOfMemoryException". Nil then, for a RowSize below 1, and for an
// image that is not Valid or has no rows.
REALobject rbGetRowCopy(REALobject instance, int32_t index);

// Setter: copies RowSize bytes from the block, whose length is the caller's affair, to the row. A bad index raises
// "OutOfBoundsException", then a nil block "NilObjectException". An image without rows is left alone.
void rbSetRow(REALobject instance, int32_t index, REALobject block);

}  // namespace zvk::exchange
