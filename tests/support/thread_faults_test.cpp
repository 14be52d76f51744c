#include "tests/support/thread_faults.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

void *Nothing(void *) { return nullptr; }

TEST(ThreadFaults, TheToldCallsFailAndNoOther) {
  faults::Threads threads;
  threads.FailCreateAt(2);
  pthread_t first;
  pthread_t second;
  pthread_t third;
  ASSERT_EQ(pthread_create(&first, nullptr, Nothing, nullptr), 0);
  EXPECT_EQ(pthread_create(&second, nullptr, Nothing, nullptr), EAGAIN);
  ASSERT_EQ(pthread_create(&third, nullptr, Nothing, nullptr), 0);
  EXPECT_EQ(pthread_join(first, nullptr), 0);
  EXPECT_EQ(pthread_detach(third), 0);
  EXPECT_EQ(threads.StackSizes(), (std::vector<size_t>{0, 0, 0}));
  EXPECT_EQ(threads.DetachCalls(), 1);
}

TEST(ThreadFaults, StackSizesAreRecorded) {
  faults::Threads threads;
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 0x200000), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, Nothing, nullptr), 0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
  EXPECT_EQ(threads.StackSizes(), (std::vector<size_t>{0x200000}));
}

TEST(ThreadFaults, SleepsAreRecorded) {
  const faults::Threads threads;
  std::this_thread::sleep_for(std::chrono::microseconds(1500));
  std::this_thread::sleep_for(std::chrono::nanoseconds(1));
  EXPECT_EQ(threads.Sleeps(),
            (std::vector<std::chrono::nanoseconds>{std::chrono::microseconds(1500), std::chrono::nanoseconds(1)}));
}

TEST(ThreadFaults, AttributesFailWhenTold) {
  faults::Threads threads;
  threads.FailAttributesAt(1);
  pthread_attr_t attributes;
  EXPECT_EQ(pthread_attr_init(&attributes), EAGAIN);
  EXPECT_EQ(pthread_attr_init(&attributes), 0);
  EXPECT_EQ(threads.AttributesCalls(), 2);
  EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
}

void *NameItself(void *) {
  EXPECT_EQ(pthread_setname_np(pthread_self(), "worker"), 0);
  EXPECT_EQ(pthread_setname_np(pthread_self(), "more than sixteen"), ERANGE);
  return nullptr;
}

TEST(ThreadFaults, NamesAreRecordedWithTheThreadThatGivesThem) {
  faults::Threads threads;
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, nullptr, NameItself, nullptr), 0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  const std::vector<faults::NamedThread> names = threads.Names();
  ASSERT_EQ(names.size(), 2u);
  EXPECT_EQ(names[0].name, "worker");
  EXPECT_EQ(names[1].name, "more than sixteen");
  EXPECT_NE(names[0].caller, std::this_thread::get_id());
}

TEST(ThreadFaults, AThreadDoesWhatItIsToldBeforeItTakesAName) {
  faults::Threads threads;
  std::vector<std::string> names;
  threads.BeforeName([&](const std::string &name) {
    names.push_back(name);
    EXPECT_EQ(threads.Names().size(), names.size() - 1);
  });
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, nullptr, NameItself, nullptr), 0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  EXPECT_EQ(names, (std::vector<std::string>{"worker", "more than sixteen"}));
}

TEST(ThreadFaults, AThreadDoesWhatItIsToldBeforeItSleeps) {
  int sleeps = 0;
  {
    faults::Threads threads;
    threads.BeforeSleep([&] { ++sleeps; });
    std::this_thread::sleep_for(std::chrono::nanoseconds(1));
    EXPECT_EQ(sleeps, 1);
  }
  std::this_thread::sleep_for(std::chrono::nanoseconds(1));
  EXPECT_EQ(sleeps, 1);
}

TEST(ThreadFaults, TheNumberOfProcessorsIsReplacedForAWhile) {
  const long real = sysconf(_SC_NPROCESSORS_ONLN);
  const long page = sysconf(_SC_PAGESIZE);
  for (const long count : {-1L, 3L, 1000L}) {
    const faults::Processors processors(count);
    EXPECT_EQ(sysconf(_SC_NPROCESSORS_ONLN), count);
    EXPECT_EQ(sysconf(_SC_PAGESIZE), page);
  }
  EXPECT_EQ(sysconf(_SC_NPROCESSORS_ONLN), real);
}

}  // namespace
