// How an operation may reach the rows of its images, chosen once for a whole call.
#pragma once

#include <cstddef>
#include <cstdint>

#include "image/image_record.h"

namespace zvk::image {

// True if the bytes of the image's rows stay where they are between calls of GetRow: every storage but a mapped file.
inline bool HasFixedRows(const ImageClassData &image) { return !image.IsMapping; }

// True if rows of the two images may have a byte in common. Both must be usable. Only images that share nothing may be
// worked on in forms that reorder or buffer reads and writes. A mapped file may share with anything. Two row tables are
// taken to be the same rows or none.
bool SharesStorage(const ImageClassData &a, const ImageClassData &b);

// How many bytes the storage has from the start of a row on. A row of a table, or of a mapped block, counts by itself.
int64_t BytesFromRow(const ImageClassData &image, const uint8_t *row);

// True if an image still has the pixels of which `before` is a record: in a yield the host may have closed it, or have
// constructed it anew. Channels, which the host may move in its pixels, are not compared.
bool HasSamePixels(const ImageClassData &before, const ImageClassData &image);

}  // namespace zvk::image
