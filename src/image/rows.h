// How an operation may reach the rows of its images, chosen once for a whole call.
#pragma once

#include <cstddef>
#include <cstdint>

#include "image/image_record.h"

namespace zvk::image {

// True if the bytes of the image's rows stay where they are between calls of GetRow: every storage but a mapped file.
inline bool HasFixedRows(const ImageClassData &image) { return !image.IsMapping; }

// True if rows of the two images may have a byte in common. Both must be usable. Only images that share nothing may be
// worked on in forms that reorder or buffer reads and writes. A mapped file shares with whatever may be over the same
// file: with every image whose memory no image has allocated, as a host can map the file by itself, too. Two row tables
// are taken to be the same rows or none.
bool SharesStorage(const ImageClassData &a, const ImageClassData &b);

// True if rows of the two images may be the same bytes at different addresses: two mappings of one file.
inline bool MayBeMappedTwice(const ImageClassData &a, const ImageClassData &b) {
  return &a != &b && !(HasFixedRows(a) && HasFixedRows(b)) && SharesStorage(a, b);
}

// How many bytes the storage has from the start of a row on. A row of a table, or of a mapped block, counts by itself.
int64_t BytesFromRow(const ImageClassData &image, const uint8_t *row);

// True if an image still has the pixels of which `before` is a record: in a yield the host may have closed it, or have
// constructed it anew. Channels, which the host may move in its pixels, are not compared.
bool HasSamePixels(const ImageClassData &before, const ImageClassData &image);

}  // namespace zvk::image
