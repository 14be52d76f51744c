// Steps that the methods of the row exchange share.
#pragma once

#include <cstdint>
#include <optional>

#include "host/resources.h"
#include "image/image_record.h"
#include "pixels/conversion.h"

namespace zvk::exchange {

// The record of an instance whose rows may be asked for as bytes, RowSize of them; nil if it is not Valid or has no
// rows (never constructed, or closed).
ImageClassData *ReadableRecord(REALobject instance);

// The record of an instance whose rows may be asked for as pixels; nil also if its row has wrapped in 32 bits.
ImageClassData *ConvertibleRecord(REALobject instance);

// The address of a caller's block; nil for a nil block or one without an address.
uint8_t *BytesOfBlock(REALobject block);

// A new MemoryBlock, held by one reference, and its address; both nil if the host could not make it.
struct NewBlock {
  ObjectReference block;
  uint8_t *bytes = nullptr;
};
NewBlock MakeBlock(int32_t size);

// Bytes of a row of the layout without padding: a 32-bit product that wraps.
inline int32_t PackedRowSize(const ImageClassData &layout) { return layout.PixelSize * layout.Width; }
// True if it has wrapped, so that no buffer of this size would hold the row.
inline bool PackedRowSizeWraps(const ImageClassData &layout) {
  return PackedRowSize(layout) != int64_t{layout.PixelSize} * layout.Width;
}

// How the pixels of `source` become pixels of `dest`, by the rules of the exchange. Of both records only the family,
// HasAlpha, PixelSize and the offsets count. Empty if either has no family; empty after an
// "UnsupportedOperationException" between RGB and CMYK.
std::optional<PixelConversion> ConversionBetween(const ImageClassData &source, const ImageClassData &dest,
                                                 const ConversionRules &rules = {});

// "OutOfMemoryException" with the size in place of the "%lld" of the text.
void RaiseOutOfMemory(const char *text, int64_t size);
// The same in the words for a converted row, which whole images use as well.
inline void RaiseNoMemoryForRow(int64_t size) {
  RaiseOutOfMemory("Failed to allocate %lld bytes of memory for row.", size);
}

}  // namespace zvk::exchange
