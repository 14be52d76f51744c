// A pass of the resampler as threads run it: each over some of the rows, without time for the host.
#pragma once

#include <cstdint>

#include "scaling/scale_passes.h"

namespace zvk::scaling {

// What PassWorker works on.
struct ThreadedPass {
  const char *Name;  // of the threads; the index of each is put behind it
  ScalePass Pass;
  double Rounding;
  const ScaleJob &Job;
};

// Unlike on the single thread nothing is rounded here: the temp values lie half a step lower on average.
ThreadedPass HorizontalOnThreads(const ScalePasses &passes, const ScaleJob &job);
ThreadedPass VerticalOnThreads(const ScalePasses &passes, const ScaleJob &job);

// The worker for RunThreads, whose context is a ThreadedPass. A thread of the runner's own is named even if it has no
// rows.
void PassWorker(int32_t FirstRow, int32_t LastRow, int32_t ThreadIndex, int8_t ViaDispatch, const void *Context);

// Names the current thread by a pass and an index, as far as the system takes the text: its first 15 characters.
void NameThread(const char *pass, int32_t threadIndex);

}  // namespace zvk::scaling
