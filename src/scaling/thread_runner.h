// The one place where the system makes threads. Rows are dealt to threads that live for the length of one call, while
// the calling thread, which is the host's own and the only one that ever calls the host, keeps giving the host time.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace zvk::scaling {

// Works on the rows from FirstRow to LastRow; LastRow below FirstRow means none. ThreadIndex counts the threads of a
// call from 0 and is -1 where the work runs inline. ViaDispatch is 1 on a thread of a pool that belongs to the system,
// which keeps its name, else 0. Context is the caller's, shared by all threads. A worker must not call the host.
using RowWorker = void (*)(int32_t FirstRow, int32_t LastRow, int32_t ThreadIndex, int8_t ViaDispatch,
                           const void *Context);

// One thread of a call.
struct ThreadData {
  int32_t ThreadIndex;
  pthread_t ThreadHandle;  // 0: none
  pthread_mutex_t *Mutex;  // guards Done; nil if there was no memory for it
  bool Started;            // a thread was launched
  std::atomic<bool> Done;  // the worker has returned
  bool ViaDispatch;        // launched on a pool of the system's; this system has none, so its threads are all our own
  bool NeedsDetach;
  int32_t FirstRow;
  int32_t LastRow;
  const void *Context;
  RowWorker Worker;
};

// Deals the rows 0 to RowCount - 1 in one range a thread, the last of which takes the remainder, and returns when all
// are done. ThreadCount below 0 runs all rows inline; 0 takes a thread for each processor; more than 32 count as 32. A
// thread that cannot be started has its rows worked on by the calling thread, before the wait. Nothing happens if there
// is no memory for the thread records.
void RunThreads(int32_t ThreadCount, int32_t RowCount, const void *Context, RowWorker Worker);

// Returns when the threads have ended that RunThreads has started with this Context and still waits for; at once if
// there are none. Calls nothing of the host: for code of the host's that runs in a yield of RunThreads and must not go
// on beside them.
void AwaitThreads(const void *Context);

// Launches the thread of a zero-filled record whose rows, context and worker are set; Started tells whether it came up.
void InitThread(int32_t index, ThreadData &data);

// What a thread runs: the worker of its ThreadData, then Done. Returns nil.
void *threadfunction(void *data);

}  // namespace zvk::scaling
