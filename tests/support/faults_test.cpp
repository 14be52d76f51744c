#include "tests/support/faults.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {

// The compiler may drop a pair of malloc and free whose block nobody looks at.
void *Seen(void *address) {
  asm volatile("" : "+r"(address));
  return address;
}

TEST(Faults, TheNthCallocFromNowFailsAndNoOther) {
  faults::Heap heap;
  heap.FailCallocAt(2);
  void *first = Seen(std::calloc(3, 4));
  void *second = Seen(std::calloc(5, 6));
  void *third = Seen(std::calloc(7, 8));
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(second, nullptr);
  EXPECT_NE(third, nullptr);
  EXPECT_EQ(heap.CallocCalls(), 3);
  EXPECT_EQ(heap.Outstanding(), 2u);
  const std::vector<const void *> blocks = {first, third};
  std::free(first);
  std::free(third);
  EXPECT_EQ(heap.Outstanding(), 0u);
  EXPECT_EQ(heap.Freed(), blocks);
}

TEST(Faults, MallocFailsByItsSize) {
  faults::Heap heap;
  heap.FailMalloc([](std::size_t size) { return size > 100; });
  void *small = Seen(std::malloc(100));
  void *large = Seen(std::malloc(101));
  EXPECT_NE(small, nullptr);
  EXPECT_EQ(large, nullptr);
  EXPECT_EQ(heap.MallocCalls(), 2);
  std::free(small);
}

TEST(Faults, AllocationsTellWhatWasAskedFor) {
  faults::Heap heap;
  void *zeroed = Seen(std::calloc(3, 4));
  void *plain = Seen(std::malloc(5));
  const std::vector<faults::Allocation> calls = heap.Allocations();
  std::free(zeroed);
  std::free(plain);
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].count, 3u);
  EXPECT_EQ(calls[0].size, 4u);
  EXPECT_TRUE(calls[0].zeroed);
  EXPECT_EQ(calls[0].address, zeroed);
  EXPECT_EQ(calls[1].count, 1u);
  EXPECT_EQ(calls[1].size, 5u);
  EXPECT_FALSE(calls[1].zeroed);
  EXPECT_EQ(calls[1].address, plain);
}

TEST(Faults, EffectsEndWithTheirObject) {
  {
    faults::Heap heap;
    heap.FailCalloc([](std::size_t, std::size_t) { return true; });
    EXPECT_EQ(Seen(std::calloc(1, 1)), nullptr);
  }
  void *block = Seen(std::calloc(1, 1));
  EXPECT_NE(block, nullptr);
  std::free(block);

  // Through a pointer: the system declares that the answer never changes, so calls by name may be merged.
  int (*volatile ask)() = getpagesize;
  const int machinePage = ask();
  {
    faults::PageSize page(12345);
    EXPECT_EQ(ask(), 12345);
  }
  EXPECT_EQ(ask(), machinePage);
}

TEST(Faults, TheClockStandsAndCountsItsReaders) {
  faults::Clock clock(1000);
  std::time_t seconds = 0;
  EXPECT_EQ(time(&seconds), 1000);
  EXPECT_EQ(seconds, 1000);
  EXPECT_EQ(time(nullptr), 1000);
  EXPECT_EQ(clock.Calls(), 2);
}

TEST(Faults, SeedsAreRecordedAndTakeEffect) {
  srand(7);
  const int expected = rand();
  faults::Seeds seeds;
  srand(7);
  EXPECT_EQ(rand(), expected);
  srand(9);
  EXPECT_EQ(seeds.All(), (std::vector<unsigned>{7, 9}));
}

TEST(Faults, AdvicesAreRecordedAndFailOnDemand) {
  const auto page = static_cast<size_t>(getpagesize());
  void *const pages = mmap(nullptr, page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(pages, MAP_FAILED);
  {
    const faults::Advices advices;
    EXPECT_EQ(madvise(pages, page, MADV_NORMAL), 0);
    ASSERT_EQ(advices.All().size(), 1u);
    EXPECT_EQ(advices.All()[0].address, pages);
    EXPECT_EQ(advices.All()[0].size, page);
    EXPECT_EQ(advices.All()[0].advice, MADV_NORMAL);
  }
  {
    const faults::Advices advices(faults::Advices::Answer::kFailure);
    EXPECT_EQ(madvise(pages, page, MADV_NORMAL), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(advices.All().size(), 1u);
  }
  EXPECT_EQ(madvise(pages, page, MADV_NORMAL), 0);
  munmap(pages, page);
}

}  // namespace
