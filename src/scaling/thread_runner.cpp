#include "scaling/thread_runner.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <span>
#include <thread>

#include "host/host_services.h"
#include "host/listed.h"
#include "host/resources.h"

namespace zvk::scaling {

namespace {

constexpr int32_t kMostThreads = 32;  // that a caller can ask for
constexpr size_t kStackSize = 0x200000;
constexpr std::chrono::milliseconds kPause{1};

// --- mutexes ---

// Mutexes are neither destroyed nor freed. They hang on one list, so that whoever looks for lost memory finds them.
struct KeptMutex {
  pthread_mutex_t mutex;
  KeptMutex *next;
};

KeptMutex *keptMutexes = nullptr;

// Nil if there is no memory for one.
pthread_mutex_t *NewMutex() {
  KeptMutex *const kept = ZeroedBuffer<KeptMutex>(1).Release();
  if (kept == nullptr) return nullptr;
  pthread_mutex_init(&kept->mutex, nullptr);
  kept->next = keptMutexes;
  keptMutexes = kept;
  return &kept->mutex;
}

class DoneLock {
 public:
  // A nil mutex locks nothing.
  explicit DoneLock(pthread_mutex_t *mutex) : mutex_(mutex) {
    if (mutex_ != nullptr) pthread_mutex_lock(mutex_);
  }
  DoneLock(const DoneLock &) = delete;
  DoneLock &operator=(const DoneLock &) = delete;
  ~DoneLock() {
    if (mutex_ != nullptr) pthread_mutex_unlock(mutex_);
  }

 private:
  pthread_mutex_t *mutex_;
};

// --- steps of a run ---

int32_t ProcessorCount() {
  const long count = sysconf(_SC_NPROCESSORS_ONLN);
  return count >= 1 ? static_cast<int32_t>(count) : 1;
}

bool IsDone(const ThreadData &data) {
  const DoneLock lock(data.Mutex);
  return data.Done;
}

void AwaitDone(const ThreadData &data, bool givesTime) {
  while (!IsDone(data)) {
    if (givesTime) REALYieldToRB();
    std::this_thread::sleep_for(kPause);
  }
}

// What RunThreads waits for.
struct Run : Listed<Run> {
  Run(std::span<const ThreadData> threads, const void *context) : threads(threads), context(context) {}

  void Await(bool givesTime) const {
    for (const ThreadData &data : threads) {
      if (data.Started) AwaitDone(data, givesTime);
    }
  }

  const std::span<const ThreadData> threads;
  const void *const context;
};

}  // namespace

void *threadfunction(void *data) {
  auto &record = *static_cast<ThreadData *>(data);
  if (record.Worker != nullptr) {
    record.Worker(record.FirstRow, record.LastRow, record.ThreadIndex, static_cast<int8_t>(record.ViaDispatch),
                  record.Context);
  }
  // The record may be gone as soon as Done can be seen.
  const DoneLock lock(record.Mutex);
  record.Done = true;
  return nullptr;
}

void InitThread(int32_t index, ThreadData &data) {
  data.ThreadIndex = index;
  data.Mutex = NewMutex();
  data.ViaDispatch = false;  // before the thread that reads it exists

  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return;
  pthread_attr_setstacksize(&attributes, kStackSize);
  if (pthread_create(&data.ThreadHandle, &attributes, threadfunction, &data) == 0) {
    data.Started = true;
    data.NeedsDetach = true;
  }
  pthread_attr_destroy(&attributes);
}

void RunThreads(int32_t ThreadCount, int32_t RowCount, const void *Context, RowWorker Worker) {
  if (ThreadCount < 0) {
    Worker(0, RowCount - 1, -1, 0, Context);
    return;
  }
  int32_t count = std::min(ThreadCount, kMostThreads);
  if (count == 0) count = ProcessorCount();  // however many
  const ZeroedBuffer<ThreadData> records(count);
  if (!records) return;
  const std::span threads(records.Get(), static_cast<size_t>(count));

  const int32_t rowsEach = RowCount / count;
  for (int32_t i = 0; i < count; ++i) {
    ThreadData &data = threads[i];
    data.FirstRow = i * rowsEach;
    data.LastRow = data.FirstRow + rowsEach - 1;
    data.Context = Context;
    data.Worker = Worker;
  }
  threads.back().LastRow = RowCount - 1;

  for (int32_t i = 0; i < count; ++i) InitThread(i, threads[i]);
  for (ThreadData &data : threads) {
    if (!data.Started) threadfunction(&data);
  }
  {
    const Run run(threads, Context);
    REALYieldToRB();
    run.Await(true);
  }
  for (ThreadData &data : threads) {
    if (!data.Started) continue;
    if (data.NeedsDetach) pthread_detach(data.ThreadHandle);
    data.ThreadHandle = {};
  }
}

void AwaitThreads(const void *Context) {
  Run::ForEach([&](const Run &run) {
    if (run.context == Context) run.Await(false);
  });
}

}  // namespace zvk::scaling
