// Images in a file: only one block of rows is mapped at any moment, so an image can be far larger than the address
// space. The file is scratch space without a header, truncated and deleted at Close.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::image {

// Row accessors of a mapped image: the row's address, after moving the record's block if the row is not in it; nil if
// that block cannot be mapped. An address lasts until the next miss on the same record, SetMemBlockSize or Close. No
// bounds check: a row past the end gives an address beyond the last block.
uint8_t *GetRowMapping(ImageClassData *record, int32_t index);
uint8_t *GetRowMappingMirrored(ImageClassData *record, int32_t index);

// A zero-filled image in the file of `folderItem`, which is overwritten, or in a temporary file for nil or an item
// whose path cannot be got. `blockSize` is the wanted length of the mapped block in bytes. No name for a temporary file
// raises "OutOfMemoryException" or "UnsupportedOperationException"; every other failure quietly leaves the image not
// Valid. Nothing of a file that could not be prepared stays behind.
void ImageConstructorFile(REALobject instance, int32_t width, int32_t height, int32_t format, int32_t blockSize,
                          REALobject folderItem);

// Property setter of MappingBlockSize: `value` is in bytes; a block has at least five rows and ends on a page, so the
// value read back may differ. Maps a new block at once. An image without rows is left alone, and so is one whose five
// rows cannot be counted in 32 bits.
void SetMemBlockSize(REALobject instance, int32_t param, int32_t value);

}  // namespace zvk::image
