// Mirroring and the half turn in place. Whole pixels change their places; filler keeps its own.
#pragma once

#include "image/image_record.h"

namespace zvk::geometry {

// Handlers. They yield on the image once, then after each row or pair of rows. An image that is not usable, has 16-bit
// samples or belongs to no family of colours is left as it is, without a word.

// Left and right change places.
void HMirrorSelf(REALobject instance);

// Top and bottom change places. Also refused: an image whose RowSize is below 1. Without memory for two rows nothing is
// done.
void VMirrorSelf(REALobject instance);

// Half a turn, with the same refusals. The middle row of an odd height does not get its own reversal: it becomes the
// reversal of the row below it as that was before, or zero in the samples of an image of one row.
void Rotate180Self(REALobject instance);

}  // namespace zvk::geometry
