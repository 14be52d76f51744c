// Makes system calls of the code under test fail or answer what a test wants, and records them. The linker sends the
// calls of a test binary's own objects here (--wrap); calls inside shared libraries are not touched. Every effect ends
// with the object that asked for it.
#pragma once

#include <cstddef>
#include <ctime>
#include <functional>
#include <mutex>
#include <unordered_set>
#include <vector>

namespace faults {

// One call of calloc or malloc. For malloc `count` is 1 and `zeroed` false; `address` is nil for a call that failed.
struct Allocation {
  std::size_t count;
  std::size_t size;
  bool zeroed;
  void *address;
};

// Watches calloc, malloc and free in all threads for as long as it lives, and can make the first two fail. One at a
// time.
class Heap {
 public:
  using Refusal = std::function<bool(std::size_t count, std::size_t size)>;

  Heap();
  ~Heap();
  Heap(const Heap &) = delete;
  Heap &operator=(const Heap &) = delete;

  // From now on calls that `refuse` says true to answer nil. An empty function refuses nothing.
  void FailCalloc(Refusal refuse);
  void FailMalloc(std::function<bool(std::size_t size)> refuse);
  // Lets the call that is `nth` from now answer nil (1 is the next one), and no other.
  void FailCallocAt(int nth);
  void FailMallocAt(int nth);

  // The calls since this object was made, failed ones too, in order.
  std::vector<Allocation> Allocations() const;
  int CallocCalls() const;
  int MallocCalls() const;
  // The addresses given to free, in order, without nil.
  std::vector<const void *> Freed() const;
  // How many blocks were handed out since this object was made and have not come back.
  std::size_t Outstanding() const;

  // What the wrapped calls ask and tell; not for tests.
  bool Refuses(std::size_t count, std::size_t size, bool zeroed);
  void Record(const Allocation &allocation);
  void RecordFree(void *address);

 private:
  int CallsOf(bool zeroed) const;

  mutable std::mutex mutex_;
  Refusal refuseCalloc_;
  Refusal refuseMalloc_;
  std::vector<Allocation> allocations_;
  std::vector<const void *> freed_;
  std::unordered_set<const void *> live_;
};

// One call of madvise.
struct Advice {
  void *address;
  std::size_t size;
  int advice;
};

// Records the calls of madvise, and lets all of them fail if asked to.
class Advices {
 public:
  enum class Answer { kSystems, kFailure };

  explicit Advices(Answer answer = Answer::kSystems);
  ~Advices();
  Advices(const Advices &) = delete;
  Advices &operator=(const Advices &) = delete;

  // The calls since this object was made, failed ones too, in order.
  std::vector<Advice> All() const;
};

// Lets getpagesize answer `bytes`.
class PageSize {
 public:
  explicit PageSize(int bytes);
  ~PageSize();
  PageSize(const PageSize &) = delete;
  PageSize &operator=(const PageSize &) = delete;
};

// Lets time answer `seconds`.
class Clock {
 public:
  explicit Clock(std::time_t seconds);
  ~Clock();
  Clock(const Clock &) = delete;
  Clock &operator=(const Clock &) = delete;

  // How often the time was asked for since this object was made.
  int Calls() const;
};

// Records the calls of srand, which take effect as ever.
class Seeds {
 public:
  Seeds();
  ~Seeds();
  Seeds(const Seeds &) = delete;
  Seeds &operator=(const Seeds &) = delete;

  // The seeds since this object was made, in order.
  std::vector<unsigned> All() const;
};

}  // namespace faults
