// The passes of the resampler as threads run them: for each pair a worker that runs the horizontal pass over some rows
// and one that runs the vertical pass. What a filter decides is in the table, so they serve all filters.
#pragma once

#include <cstdint>

#include "scaling/scale_passes.h"
#include "scaling/thread_runner.h"

namespace zvk::scaling {

// Names the current thread by a pass and an index, as far as the system takes the text: its first 15 characters.
void NameThread(const char *pass, int32_t threadIndex);

// Workers for RunThreads, whose context is a ScaleJob with all that the pass needs. They give no time to the host.
// A thread of the runner's own is named even if it has no rows.

template <const ScalePair &Pair>
void HorizontalWorker(int32_t FirstRow, int32_t LastRow, int32_t ThreadIndex, int8_t ViaDispatch, const void *Context) {
  if (ThreadIndex >= 0 && ViaDispatch == 0) NameThread("PictureScale Horizontal", ThreadIndex);
  if (FirstRow > LastRow) return;
  const int32_t end = LastRow + 1;
  // Unlike on the single thread nothing is rounded: the temp values lie half a step lower on average.
  HorizontalPass<Pair>(*static_cast<const ScaleJob *>(Context), {FirstRow, end, nullptr}, kRoundTowardZero);
}

template <const ScalePair &Pair>
void VerticalWorker(int32_t FirstRow, int32_t LastRow, int32_t ThreadIndex, int8_t ViaDispatch, const void *Context) {
  if (ThreadIndex >= 0 && ViaDispatch == 0) NameThread("PictureScale Vertical", ThreadIndex);
  if (FirstRow > LastRow) return;
  const int32_t end = LastRow + 1;
  VerticalPass<Pair>(*static_cast<const ScaleJob *>(Context), {FirstRow, end, nullptr});
}

}  // namespace zvk::scaling
