#include "tests/support/thread_faults.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <stdexcept>

namespace faults {
namespace {

std::atomic<Threads *> activeThreads = nullptr;
std::atomic<bool> processorsReplaced = false;
std::atomic<long> processors = 0;

}  // namespace

Threads::Threads() {
  Threads *none = nullptr;
  if (!activeThreads.compare_exchange_strong(none, this)) throw std::logic_error("faults::Threads: one at a time");
}

Threads::~Threads() { activeThreads = nullptr; }

void Threads::FailCreateAt(int nth) {
  std::scoped_lock lock(mutex_);
  failingCreates_.insert(nth);
}

void Threads::FailAttributesAt(int nth) {
  std::scoped_lock lock(mutex_);
  failingAttributes_.insert(nth);
}

std::vector<size_t> Threads::StackSizes() const {
  std::scoped_lock lock(mutex_);
  return stackSizes_;
}

int Threads::AttributesCalls() const {
  std::scoped_lock lock(mutex_);
  return attributesCalls_;
}

int Threads::DetachCalls() const {
  std::scoped_lock lock(mutex_);
  return detachCalls_;
}

std::vector<NamedThread> Threads::Names() const {
  std::scoped_lock lock(mutex_);
  return names_;
}

std::vector<std::chrono::nanoseconds> Threads::Sleeps() const {
  std::scoped_lock lock(mutex_);
  return sleeps_;
}

bool Threads::RefusesCreate(const pthread_attr_t *attributes) {
  std::scoped_lock lock(mutex_);
  size_t stackSize = 0;
  if (attributes != nullptr) pthread_attr_getstacksize(attributes, &stackSize);
  stackSizes_.push_back(stackSize);
  return failingCreates_.contains(static_cast<int>(stackSizes_.size()));
}

bool Threads::RefusesAttributes() {
  std::scoped_lock lock(mutex_);
  return failingAttributes_.contains(++attributesCalls_);
}

void Threads::RecordDetach() {
  std::scoped_lock lock(mutex_);
  ++detachCalls_;
}

void Threads::RecordName(const char *name) {
  if (beforeName_) beforeName_(name);
  std::scoped_lock lock(mutex_);
  names_.push_back({std::this_thread::get_id(), name});
}

void Threads::RecordSleep(const timespec &length) {
  {
    std::scoped_lock lock(mutex_);
    sleeps_.push_back(std::chrono::seconds(length.tv_sec) + std::chrono::nanoseconds(length.tv_nsec));
  }
  if (beforeSleep_) beforeSleep_();
}

Processors::Processors(long count) {
  processors = count;
  processorsReplaced = true;
}

Processors::~Processors() { processorsReplaced = false; }

}  // namespace faults

// The linker's names: a call of f arrives at __wrap_f, and __real_f is the system's.
extern "C" {
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*start)(void *), void *argument);
int __real_pthread_attr_init(pthread_attr_t *attributes);
int __real_pthread_detach(pthread_t thread);
int __real_pthread_setname_np(pthread_t thread, const char *name);
int __real_nanosleep(const timespec *length, timespec *rest);
long __real_sysconf(int name);

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*start)(void *), void *argument) {
  faults::Threads *threads = faults::activeThreads;
  if (threads != nullptr && threads->RefusesCreate(attributes)) return EAGAIN;
  return __real_pthread_create(thread, attributes, start, argument);
}

int __wrap_pthread_attr_init(pthread_attr_t *attributes) {
  faults::Threads *threads = faults::activeThreads;
  if (threads != nullptr && threads->RefusesAttributes()) return EAGAIN;
  return __real_pthread_attr_init(attributes);
}

int __wrap_pthread_detach(pthread_t thread) {
  faults::Threads *threads = faults::activeThreads;
  if (threads != nullptr) threads->RecordDetach();
  return __real_pthread_detach(thread);
}

int __wrap_pthread_setname_np(pthread_t thread, const char *name) {
  faults::Threads *threads = faults::activeThreads;
  if (threads != nullptr) threads->RecordName(name);
  return __real_pthread_setname_np(thread, name);
}

int __wrap_nanosleep(const timespec *length, timespec *rest) {
  faults::Threads *threads = faults::activeThreads;
  if (threads != nullptr) threads->RecordSleep(*length);
  return __real_nanosleep(length, rest);
}

long __wrap_sysconf(int name) {
  if (name == _SC_NPROCESSORS_ONLN && faults::processorsReplaced) return faults::processors;
  return __real_sysconf(name);
}
}
