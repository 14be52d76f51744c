// The two passes of the resampler, compiled for each pair: one from the source to the temp image, one from there to the
// destination.
#pragma once

#include <algorithm>
#include <cstdint>

#include "image/image_record.h"
#include "scaling/scale_kernels.h"
#include "scaling/scale_pairs.h"
#include "scaling/scale_taps.h"

namespace zvk::scaling {

struct ShortTable;

// What the passes work on. Each reads what it needs.
struct ScaleJob {
  ImageClassData *Source;             // horizontal pass
  ImageClassData *Dest;               // vertical pass
  int32_t Height;                     // output rows
  int32_t Width;                      // output columns
  ImageClassData *Temp;               // written by the horizontal pass, read by the vertical one
  const ScaleTapList *Table;          // of the pass: a list for each output column or row
  const ShortTable *Short = nullptr;  // of the pass as well; nil: it works pixel by pixel
};

// How many columns of the source the lists of a job reach.
int32_t SourceColumns(const ScaleJob &job);

// The rows that one run of a pass makes, and who is given time after each.
struct ScaleRows {
  int32_t First;
  const int32_t &End;          // one beyond the last row; looked at again for each row
  ImageClassData *YieldImage;  // nil: nobody
};

using ScalePass = void (*)(const ScaleJob &job, const ScaleRows &rows, double rounding);

struct ScalePasses {
  const ScalePair *Pair;
  // Resamples rows of the source to the job's width, into the temp rows of the same numbers. Both images must have the
  // rows at first; those that one of them does not hold any more after a yield are left out.
  ScalePass Horizontal;
  // Resamples temp rows into rows of the destination, which must have them at first. After a yield, rows of the
  // destination that it does not hold any more are left out, and so are taps on temp rows that there are no more;
  // without any temp row nothing is written.
  ScalePass Vertical;
};

// The passes of one of the fifteen pairs.
const ScalePasses &PassesOf(const ScalePair &pair);

// Bytes that each column of an image must have room for. One that was constructed anew may have pixels that are smaller
// than a sample.
inline int32_t ColumnSize(const ImageClassData &image, int32_t sampleSize) {
  return std::max(image.PixelSize, sampleSize);
}

}  // namespace zvk::scaling
