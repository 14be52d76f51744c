#include "tests/support/faults.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace faults {
namespace {

std::atomic<Heap *> activeHeap = nullptr;
std::atomic<int> pageSize = 0;  // 0 while nobody replaces the machine's
std::atomic<bool> clockStands = false;
std::atomic<std::time_t> clockSeconds = 0;
std::atomic<int> clockCalls = 0;
std::mutex seedsMutex;
bool seedsRecorded = false;
std::vector<unsigned> seeds;
std::mutex advicesMutex;
bool advicesRecorded = false;
bool advicesFail = false;
std::vector<Advice> advices;

// A refusal of the nth call from now and of no other.
Heap::Refusal RefuseNth(int nth) {
  return [remaining = nth](std::size_t, std::size_t) mutable { return --remaining == 0; };
}

}  // namespace

Heap::Heap() {
  Heap *none = nullptr;
  if (!activeHeap.compare_exchange_strong(none, this)) throw std::logic_error("faults::Heap: one at a time");
}

Heap::~Heap() { activeHeap = nullptr; }

void Heap::FailCalloc(Refusal refuse) {
  std::scoped_lock lock(mutex_);
  refuseCalloc_ = std::move(refuse);
}

void Heap::FailMalloc(std::function<bool(std::size_t size)> refuse) {
  std::scoped_lock lock(mutex_);
  refuseMalloc_ = refuse ? [refuse](std::size_t, std::size_t size) { return refuse(size); } : Refusal();
}

void Heap::FailCallocAt(int nth) { FailCalloc(RefuseNth(nth)); }

void Heap::FailMallocAt(int nth) {
  std::scoped_lock lock(mutex_);
  refuseMalloc_ = RefuseNth(nth);
}

std::vector<Allocation> Heap::Allocations() const {
  std::scoped_lock lock(mutex_);
  return allocations_;
}

int Heap::CallocCalls() const { return CallsOf(true); }

int Heap::MallocCalls() const { return CallsOf(false); }

std::vector<const void *> Heap::Freed() const {
  std::scoped_lock lock(mutex_);
  return freed_;
}

std::size_t Heap::Outstanding() const {
  std::scoped_lock lock(mutex_);
  return live_.size();
}

bool Heap::Refuses(std::size_t count, std::size_t size, bool zeroed) {
  std::scoped_lock lock(mutex_);
  const Refusal &refuse = zeroed ? refuseCalloc_ : refuseMalloc_;
  return refuse && refuse(count, size);
}

void Heap::Record(const Allocation &allocation) {
  std::scoped_lock lock(mutex_);
  allocations_.push_back(allocation);
  if (allocation.address != nullptr) live_.insert(allocation.address);
}

void Heap::RecordFree(void *address) {
  std::scoped_lock lock(mutex_);
  freed_.push_back(address);
  live_.erase(address);
}

int Heap::CallsOf(bool zeroed) const {
  std::scoped_lock lock(mutex_);
  return static_cast<int>(
      std::ranges::count_if(allocations_, [zeroed](const Allocation &call) { return call.zeroed == zeroed; }));
}

Advices::Advices(Answer answer) {
  std::scoped_lock lock(advicesMutex);
  advices.clear();
  advicesRecorded = true;
  advicesFail = answer == Answer::kFailure;
}

Advices::~Advices() {
  std::scoped_lock lock(advicesMutex);
  advicesRecorded = advicesFail = false;
}

std::vector<Advice> Advices::All() const {
  std::scoped_lock lock(advicesMutex);
  return advices;
}

PageSize::PageSize(int bytes) { pageSize = bytes; }

PageSize::~PageSize() { pageSize = 0; }

Clock::Clock(std::time_t seconds) {
  clockSeconds = seconds;
  clockCalls = 0;
  clockStands = true;
}

Clock::~Clock() { clockStands = false; }

int Clock::Calls() const { return clockCalls; }

Seeds::Seeds() {
  std::scoped_lock lock(seedsMutex);
  seeds.clear();
  seedsRecorded = true;
}

Seeds::~Seeds() {
  std::scoped_lock lock(seedsMutex);
  seedsRecorded = false;
}

std::vector<unsigned> Seeds::All() const {
  std::scoped_lock lock(seedsMutex);
  return seeds;
}

}  // namespace faults

// The linker's names: a call of f arrives at __wrap_f, and __real_f is the system's.
extern "C" {
void *__real_calloc(std::size_t count, std::size_t size);
void *__real_malloc(std::size_t size);
void __real_free(void *address);
int __real_getpagesize();
std::time_t __real_time(std::time_t *seconds);
void __real_srand(unsigned seed);
int __real_madvise(void *address, std::size_t size, int advice);

void *__wrap_calloc(std::size_t count, std::size_t size) {
  faults::Heap *heap = faults::activeHeap;
  if (heap == nullptr) return __real_calloc(count, size);
  void *address = heap->Refuses(count, size, true) ? nullptr : __real_calloc(count, size);
  heap->Record({count, size, true, address});
  return address;
}

void *__wrap_malloc(std::size_t size) {
  faults::Heap *heap = faults::activeHeap;
  if (heap == nullptr) return __real_malloc(size);
  void *address = heap->Refuses(1, size, false) ? nullptr : __real_malloc(size);
  heap->Record({1, size, false, address});
  return address;
}

void __wrap_free(void *address) {
  faults::Heap *heap = faults::activeHeap;
  if (heap != nullptr && address != nullptr) heap->RecordFree(address);
  __real_free(address);
}

int __wrap_getpagesize() {
  const int bytes = faults::pageSize;
  return bytes != 0 ? bytes : __real_getpagesize();
}

std::time_t __wrap_time(std::time_t *seconds) {
  if (!faults::clockStands) return __real_time(seconds);
  ++faults::clockCalls;
  if (seconds != nullptr) *seconds = faults::clockSeconds;
  return faults::clockSeconds;
}

void __wrap_srand(unsigned seed) {
  {
    std::scoped_lock lock(faults::seedsMutex);
    if (faults::seedsRecorded) faults::seeds.push_back(seed);
  }
  __real_srand(seed);
}

int __wrap_madvise(void *address, std::size_t size, int advice) {
  {
    std::scoped_lock lock(faults::advicesMutex);
    if (faults::advicesRecorded) faults::advices.push_back({address, size, advice});
    if (faults::advicesFail) {
      errno = EINVAL;
      return -1;
    }
  }
  return __real_madvise(address, size, advice);
}
}
