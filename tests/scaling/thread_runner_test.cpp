#include "scaling/thread_runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <latch>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/faults.h"
#include "tests/support/plugin_host.h"
#include "tests/support/thread_faults.h"

namespace zvk::scaling {
namespace {

// One call of the worker, and what had happened before it.
struct Call {
  int32_t firstRow;
  int32_t lastRow;
  int32_t threadIndex;
  int32_t viaDispatch;
  std::thread::id thread;
  int yieldsBefore;
};

// Counts what the host sees, and notes all calls of the worker, which may do some work too.
class ThreadRunner : public testing::Test {
 protected:
  ThreadRunner() {
    host_->onYield = [this] {
      EXPECT_EQ(std::this_thread::get_id(), thisThread_) << "the host is called on its own thread only";
      ++yields_;
      const auto onYield = onYield_;  // which may set another one
      if (onYield) onYield();
    };
  }

  static void Work(int32_t firstRow, int32_t lastRow, int32_t threadIndex, int8_t viaDispatch, const void *context) {
    auto &test = *static_cast<ThreadRunner *>(const_cast<void *>(context));
    {
      const std::scoped_lock lock(test.mutex_);
      test.calls_.push_back({firstRow, lastRow, threadIndex, viaDispatch, std::this_thread::get_id(), test.yields_});
    }
    if (test.work_) test.work_(threadIndex);
  }

  // The calls in the order of their thread indices.
  std::vector<Call> Run(int32_t threadCount, int32_t rowCount) {
    calls_.clear();
    RunThreads(threadCount, rowCount, this, Work);
    std::ranges::sort(calls_, {}, &Call::threadIndex);
    return calls_;
  }

  // The ranges of rows, by thread index, which must count from 0 without a gap.
  std::vector<std::pair<int32_t, int32_t>> Ranges(int32_t threadCount, int32_t rowCount) {
    std::vector<std::pair<int32_t, int32_t>> ranges;
    for (const Call &call : Run(threadCount, rowCount)) {
      EXPECT_EQ(call.threadIndex, static_cast<int32_t>(ranges.size()));
      EXPECT_EQ(call.viaDispatch, 0);
      ranges.emplace_back(call.firstRow, call.lastRow);
    }
    return ranges;
  }

  void PutToWork(ThreadData &data) const {
    data.Context = this;
    data.Worker = Work;
  }

  bool IsHere(const Call &call) const { return call.thread == thisThread_; }

  PluginHost host_;
  const std::thread::id thisThread_ = std::this_thread::get_id();
  std::atomic<int> yields_ = 0;
  std::function<void()> onYield_;
  std::function<void(int32_t threadIndex)> work_;
  std::mutex mutex_;
  std::vector<Call> calls_;
};

using Rows = std::vector<std::pair<int32_t, int32_t>>;

// --- who does what ---

TEST_F(ThreadRunner, ANegativeCountRunsAllRowsInlineWithoutAYieldOrARecord) {
  for (const int32_t count : {-1, -7, INT32_MIN}) {
    const faults::Threads threads;
    const faults::Heap heap;
    const std::vector<Call> calls = Run(count, 10);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].firstRow, 0);
    EXPECT_EQ(calls[0].lastRow, 9);
    EXPECT_EQ(calls[0].threadIndex, -1);
    EXPECT_EQ(calls[0].viaDispatch, 0);
    EXPECT_TRUE(IsHere(calls[0]));
    EXPECT_EQ(threads.AttributesCalls(), 0);
    EXPECT_EQ(heap.CallocCalls(), 0);
  }
  EXPECT_EQ(yields_, 0);
}

TEST_F(ThreadRunner, OneThreadIsStillAThreadWhileTheCallerWaits) {
  const std::vector<Call> calls = Run(1, 10);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_FALSE(IsHere(calls[0]));
  EXPECT_EQ(calls[0].threadIndex, 0);
  EXPECT_GE(yields_, 1);
}

TEST_F(ThreadRunner, TheLastThreadTakesTheRemainder) {
  EXPECT_EQ(Ranges(4, 10), (Rows{{0, 1}, {2, 3}, {4, 5}, {6, 9}}));
  EXPECT_EQ(Ranges(4, 8), (Rows{{0, 1}, {2, 3}, {4, 5}, {6, 7}}));
  EXPECT_EQ(Ranges(1, 5), (Rows{{0, 4}}));
}

TEST_F(ThreadRunner, WithFewerRowsThanThreadsTheLastOneDoesAllTheWork) {
  EXPECT_EQ(Ranges(4, 3), (Rows{{0, -1}, {0, -1}, {0, -1}, {0, 2}}));
  EXPECT_EQ(Ranges(2, 0), (Rows{{0, -1}, {0, -1}}));
}

TEST_F(ThreadRunner, EveryRowIsDealtOnce) {
  for (int32_t threadCount = 1; threadCount <= 32; threadCount += 5) {
    for (const int32_t rowCount : {1, 31, 32, 33, 1000}) {
      std::vector<int> dealt(static_cast<size_t>(rowCount));
      for (const auto &[first, last] : Ranges(threadCount, rowCount)) {
        for (int32_t row = first; row <= last; ++row) ++dealt[row];
      }
      EXPECT_EQ(dealt, std::vector<int>(static_cast<size_t>(rowCount), 1)) << threadCount << " " << rowCount;
    }
  }
}

TEST_F(ThreadRunner, ZeroTakesAThreadForEachProcessor) {
  const faults::Processors processors(3);
  EXPECT_EQ(Ranges(0, 9), (Rows{{0, 2}, {3, 5}, {6, 8}}));
}

TEST_F(ThreadRunner, TheNumberOfProcessorsIsNotCutAt32) {
  const faults::Processors processors(40);
  EXPECT_EQ(Run(0, 80).size(), 40u);
}

TEST_F(ThreadRunner, WithoutANumberOfProcessorsThereIsOneThread) {
  const faults::Processors processors(-1);
  EXPECT_EQ(Ranges(0, 9), (Rows{{0, 8}}));
}

TEST_F(ThreadRunner, AskingForMoreThan32GivesThat) {
  for (const int32_t count : {32, 33, 100, INT32_MAX}) EXPECT_EQ(Run(count, 64).size(), 32u);
}

TEST_F(ThreadRunner, AllThreadsRunAtOnce) {
  // Each waits for all others, so one after the other would take for ever.
  std::latch all(7);
  work_ = [&](int32_t) { all.arrive_and_wait(); };
  EXPECT_EQ(Run(7, 7).size(), 7u);
}

TEST_F(ThreadRunner, WhatWorkersHaveWrittenIsThereAfterwards) {
  std::vector<int32_t> written(32);
  work_ = [&](int32_t threadIndex) { written[threadIndex] = threadIndex + 1; };
  for (int run = 0; run < 20; ++run) {
    Run(32, 32);
    for (int32_t i = 0; i < 32; ++i) EXPECT_EQ(std::exchange(written[i], 0), i + 1);
  }
}

// --- threads ---

TEST_F(ThreadRunner, ThreadsHaveAStackOf2MebibytesAndAreDetached) {
  const faults::Threads threads;
  Run(3, 9);
  EXPECT_EQ(threads.StackSizes(), (std::vector<size_t>{0x200000, 0x200000, 0x200000}));
  EXPECT_EQ(threads.DetachCalls(), 3);
}

TEST_F(ThreadRunner, TheRowsOfAThreadThatCannotBeStartedAreDoneHereBeforeTheFirstYield) {
  for (const bool attributes : {false, true}) {
    faults::Threads threads;
    if (attributes) {
      threads.FailAttributesAt(3);
    } else {
      threads.FailCreateAt(3);
    }
    yields_ = 0;
    const std::vector<Call> calls = Run(4, 10);
    ASSERT_EQ(calls.size(), 4u);
    for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(IsHere(calls[i]), i == 2) << i;
    EXPECT_EQ(calls[2].firstRow, 4);
    EXPECT_EQ(calls[2].lastRow, 5);
    EXPECT_EQ(calls[2].viaDispatch, 0);
    EXPECT_EQ(calls[2].yieldsBefore, 0);
    EXPECT_EQ(threads.StackSizes().size(), attributes ? 3u : 4u);
    EXPECT_EQ(threads.DetachCalls(), 3);
  }
}

TEST_F(ThreadRunner, WithoutAnyThreadAllIsDoneHereInOrderWithOneYield) {
  faults::Threads threads;
  for (int nth = 1; nth <= 4; ++nth) threads.FailCreateAt(nth);
  RunThreads(4, 10, this, Work);
  ASSERT_EQ(calls_.size(), 4u);
  for (int32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(calls_[i].threadIndex, i);
    EXPECT_TRUE(IsHere(calls_[i]));
    EXPECT_EQ(calls_[i].yieldsBefore, 0);
  }
  EXPECT_EQ(yields_, 1);
  EXPECT_EQ(threads.DetachCalls(), 0);
}

// --- time for the host ---

TEST_F(ThreadRunner, TheHostGetsTimeAboutEveryMillisecondWhileThreadsWork) {
  constexpr size_t kSleeps = 20;
  const faults::Threads threads;
  std::vector<size_t> sleepsBefore;
  std::latch enough(1);
  onYield_ = [&] {
    sleepsBefore.push_back(threads.Sleeps().size());
    if (sleepsBefore.back() == kSleeps) enough.count_down();
  };
  work_ = [&](int32_t) { enough.wait(); };
  Run(1, 1);
  // Two come at once, the others after a pause each.
  ASSERT_GE(sleepsBefore.size(), kSleeps + 2);
  EXPECT_EQ(sleepsBefore[0], 0u);
  for (size_t i = 1; i < sleepsBefore.size(); ++i) EXPECT_EQ(sleepsBefore[i], i - 1);
  for (const auto &sleep : threads.Sleeps()) EXPECT_EQ(sleep, std::chrono::milliseconds(1));
}

TEST_F(ThreadRunner, ThreadsAreWaitedForWithoutAYieldEntry) {
  host_->Withhold("REALYieldToRB");
  const faults::Threads threads;
  // Until the caller has begun to wait.
  work_ = [&](int32_t) {
    while (threads.Sleeps().empty()) std::this_thread::yield();
  };
  EXPECT_EQ(Run(3, 9).size(), 3u);
  EXPECT_EQ(yields_, 0);
}

TEST_F(ThreadRunner, AYieldMayRunThreadsItself) {
  onYield_ = [&] {
    onYield_ = nullptr;
    RunThreads(2, 4, this, Work);
  };
  EXPECT_EQ(Run(3, 9).size(), 5u);
}

// --- waiting in a yield ---

// Has threads work until the host's thread sleeps in its wait for them.
class HeldThreads {
 public:
  explicit HeldThreads(std::function<void(int32_t)> &work) {
    work = [this](int32_t) {
      while (!mayEnd_) std::this_thread::yield();
      ++ended_;
    };
    threads_.BeforeSleep([this] {
      if (letsGo_) mayEnd_ = true;
    });
  }

  void LetGoInNextSleep(bool letsGo) { letsGo_ = letsGo; }
  int Ended() const { return ended_; }

 private:
  faults::Threads threads_;
  std::atomic<bool> mayEnd_ = false;
  std::atomic<int> ended_ = 0;
  bool letsGo_ = false;  // of the host's thread, which alone sleeps
};

TEST_F(ThreadRunner, CodeInAYieldMayAwaitTheThreadsOfARunWithoutTheHost) {
  HeldThreads held(work_);
  onYield_ = [&] {
    if (held.Ended() > 0) return;
    held.LetGoInNextSleep(true);
    const int before = yields_;
    AwaitThreads(this);
    EXPECT_EQ(held.Ended(), 3);
    EXPECT_EQ(yields_, before);
    held.LetGoInNextSleep(false);
    AwaitThreads(this);  // which they need not be any more
  };
  EXPECT_EQ(Run(3, 9).size(), 3u);
  EXPECT_EQ(held.Ended(), 3);
}

TEST_F(ThreadRunner, ThreadsOfAnotherContextAreNotAwaited) {
  const int other = 0;
  AwaitThreads(this);
  std::atomic<bool> mayEnd = false;
  work_ = [&](int32_t) {
    while (!mayEnd) std::this_thread::yield();
  };
  onYield_ = [&] {
    AwaitThreads(&other);
    EXPECT_FALSE(mayEnd);
    onYield_ = nullptr;
    mayEnd = true;
  };
  EXPECT_EQ(Run(3, 9).size(), 3u);
}

TEST_F(ThreadRunner, TheThreadsOfARunAreAwaitedInAYieldOfAnotherOne) {
  HeldThreads held(work_);
  const int inner = 0;
  onYield_ = [&] {
    onYield_ = [&] {
      onYield_ = nullptr;
      held.LetGoInNextSleep(true);
      AwaitThreads(this);
      EXPECT_EQ(held.Ended(), 3);
    };
    RunThreads(2, 4, &inner, [](int32_t, int32_t, int32_t, int8_t, const void *) {});
  };
  EXPECT_EQ(Run(3, 9).size(), 3u);
}

// --- memory ---

TEST_F(ThreadRunner, WithoutMemoryForTheRecordsNothingHappens) {
  const faults::Threads threads;
  faults::Heap heap;
  heap.FailCallocAt(1);
  EXPECT_TRUE(Run(4, 10).empty());
  EXPECT_EQ(threads.AttributesCalls(), 0);
  EXPECT_EQ(yields_, 0);
}

TEST_F(ThreadRunner, AThreadWithoutAMutexWorksLikeTheOthers) {
  for (int nth = 2; nth <= 5; ++nth) {
    faults::Heap heap;
    heap.FailCallocAt(nth);
    EXPECT_EQ(Ranges(4, 10), (Rows{{0, 1}, {2, 3}, {4, 5}, {6, 9}}));
    EXPECT_EQ(heap.CallocCalls(), 5);
  }
  faults::Heap heap;
  heap.FailCalloc([calls = 0](size_t, size_t) mutable { return ++calls > 1; });
  EXPECT_EQ(Run(4, 10).size(), 4u);
  EXPECT_EQ(heap.Outstanding(), 0u);
}

TEST_F(ThreadRunner, TheRecordsAreFreedAndTheMutexesStay) {
  const faults::Heap heap;
  Run(4, 10);
  EXPECT_EQ(heap.Outstanding(), 4u);
  Run(3, 10);
  EXPECT_EQ(heap.Outstanding(), 7u);
}

// --- one thread ---

TEST_F(ThreadRunner, AThreadHandsItsRecordToTheWorkerAndIsDone) {
  ThreadData data{};
  PutToWork(data);
  data.ThreadIndex = 5;
  data.FirstRow = 3;
  data.LastRow = 8;
  data.ViaDispatch = true;
  EXPECT_EQ(threadfunction(&data), nullptr);
  EXPECT_TRUE(data.Done);
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].firstRow, 3);
  EXPECT_EQ(calls_[0].lastRow, 8);
  EXPECT_EQ(calls_[0].threadIndex, 5);
  EXPECT_EQ(calls_[0].viaDispatch, 1);
}

TEST_F(ThreadRunner, AThreadWithoutAWorkerIsDoneToo) {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  for (pthread_mutex_t *const guard : {static_cast<pthread_mutex_t *>(nullptr), &mutex}) {
    ThreadData data{};
    data.Mutex = guard;
    EXPECT_EQ(threadfunction(&data), nullptr);
    EXPECT_TRUE(data.Done);
  }
  EXPECT_EQ(pthread_mutex_trylock(&mutex), 0) << "left locked";
  pthread_mutex_unlock(&mutex);
}

TEST_F(ThreadRunner, ALaunchedRecordSaysSo) {
  ThreadData data{};
  PutToWork(data);
  InitThread(2, data);
  EXPECT_EQ(data.ThreadIndex, 2);
  EXPECT_TRUE(data.Started);
  EXPECT_TRUE(data.NeedsDetach);
  EXPECT_FALSE(data.ViaDispatch);
  ASSERT_NE(data.Mutex, nullptr);
  EXPECT_EQ(pthread_join(data.ThreadHandle, nullptr), 0);
  EXPECT_TRUE(data.Done);
}

TEST_F(ThreadRunner, ARecordThatIsNotLaunchedSaysSo) {
  for (const bool attributes : {false, true}) {
    faults::Threads threads;
    if (attributes) {
      threads.FailAttributesAt(1);
    } else {
      threads.FailCreateAt(1);
    }
    ThreadData data{};
    PutToWork(data);
    InitThread(2, data);
    EXPECT_EQ(data.ThreadIndex, 2);
    EXPECT_NE(data.Mutex, nullptr);
    EXPECT_FALSE(data.Started);
    EXPECT_FALSE(data.NeedsDetach);
    EXPECT_FALSE(data.Done);
    EXPECT_TRUE(calls_.empty());
  }
}

}  // namespace
}  // namespace zvk::scaling
