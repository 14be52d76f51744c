// Functions of the host that are looked up by name on first use.
#pragma once

#include "host/layers.h"

namespace zvk::host {

// One function known by name, found through the door `Find` the first time that it is needed. While the door answers
// nil the slot stays empty: a call then returns zero without calling anybody, and the next call asks again.
template <auto Find, class Signature>
class LazyEntry;

template <auto Find, class Result, class... Arguments>
class LazyEntry<Find, Result(Arguments...)> {
 public:
  explicit constexpr LazyEntry(const char *name) : name_(name) {}
  LazyEntry(const LazyEntry &) = delete;
  LazyEntry &operator=(const LazyEntry &) = delete;

  // True if the function is there to be called.
  bool Resolves() {
    if (slot_ == nullptr) slot_ = reinterpret_cast<Result (*)(Arguments...)>(Find(name_));
    return slot_ != nullptr;
  }

  Result operator()(Arguments... arguments) { return Resolves() ? slot_(arguments...) : Result(); }

 private:
  const char *name_;
  Result (*slot_)(Arguments...) = nullptr;
};

}  // namespace zvk::host
