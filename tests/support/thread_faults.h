// Records the threads that the code under test starts, makes starting them fail and holds them back. As in faults.h the
// linker sends the calls here, and every effect ends with the object that asked for it.
#pragma once

#include <pthread.h>

#include <chrono>
#include <cstddef>
#include <ctime>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace faults {

// A name that a thread was given, and the thread that asked for it.
struct NamedThread {
  std::thread::id caller;
  std::string name;
};

// Watches pthread_create, pthread_attr_init, pthread_detach, pthread_setname_np and nanosleep for as long as it lives.
// One at a time. What is made to fail answers EAGAIN and does nothing.
class Threads {
 public:
  Threads();
  ~Threads();
  Threads(const Threads &) = delete;
  Threads &operator=(const Threads &) = delete;

  // Makes the call fail that is `nth` from the making of this object (1 is the first one); may be said several times.
  void FailCreateAt(int nth);
  void FailAttributesAt(int nth);
  // What a thread does before it takes a name, wait say, and before it sleeps. To be set before there are threads.
  void BeforeName(std::function<void(const std::string &name)> act) { beforeName_ = std::move(act); }
  void BeforeSleep(std::function<void()> act) { beforeSleep_ = std::move(act); }

  // The stack sizes asked for, in the order of the calls of pthread_create, failed ones too; 0 without attributes.
  std::vector<size_t> StackSizes() const;
  int AttributesCalls() const;
  int DetachCalls() const;
  // In the order of the calls, those that the system refused too.
  std::vector<NamedThread> Names() const;

  // How long each sleep was to be, in their order; it is there when the sleep begins.
  std::vector<std::chrono::nanoseconds> Sleeps() const;

  // What the wrapped calls ask and tell; not for tests.
  bool RefusesCreate(const pthread_attr_t *attributes);
  bool RefusesAttributes();
  void RecordDetach();
  void RecordName(const char *name);
  void RecordSleep(const timespec &length);

 private:
  std::function<void(const std::string &name)> beforeName_;
  std::function<void()> beforeSleep_;
  mutable std::mutex mutex_;
  std::set<int> failingCreates_;
  std::set<int> failingAttributes_;
  std::vector<size_t> stackSizes_;
  int attributesCalls_ = 0;
  int detachCalls_ = 0;
  std::vector<NamedThread> names_;
  std::vector<std::chrono::nanoseconds> sleeps_;
};

// Lets sysconf answer `count` when it is asked for the processors.
class Processors {
 public:
  explicit Processors(long count);
  ~Processors();
  Processors(const Processors &) = delete;
  Processors &operator=(const Processors &) = delete;
};

}  // namespace faults
