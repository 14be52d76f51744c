#include "scaling/thread_workers.h"

#include <pthread.h>

#include <cstdio>

namespace zvk::scaling {

ThreadedPass HorizontalOnThreads(const ScalePasses &passes, const ScaleJob &job) {
  return {"PictureScale Horizontal", passes.Horizontal, kRoundTowardZero, job};
}

ThreadedPass VerticalOnThreads(const ScalePasses &passes, const ScaleJob &job) {
  return {"PictureScale Vertical", passes.Vertical, kRoundToNearest, job};
}

void PassWorker(int32_t FirstRow, int32_t LastRow, int32_t ThreadIndex, int8_t ViaDispatch, const void *Context) {
  const auto &pass = *static_cast<const ThreadedPass *>(Context);
  if (ThreadIndex >= 0 && ViaDispatch == 0) NameThread(pass.Name, ThreadIndex);
  if (FirstRow > LastRow) return;
  const int32_t end = LastRow + 1;
  pass.Pass(pass.Job, {FirstRow, end, nullptr}, pass.Rounding);
}

void NameThread(const char *pass, int32_t threadIndex) {
  constexpr size_t kLongestName = 15;  // of a thread on this system; a longer one is refused
  char text[32] = {};
  std::snprintf(text, sizeof text, "%s %d", pass, threadIndex);
  text[kLongestName] = '\0';
  pthread_setname_np(pthread_self(), text);
}

}  // namespace zvk::scaling
