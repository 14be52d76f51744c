// A list of what is alive.
#pragma once

#include "host/layers.h"

namespace zvk::host {

// Base of a class T whose objects are to be found while they live. Not locked: they begin and end on the host's own
// thread. They need not end in the reverse order, as a host may have threads of its own that take turns in yields.
template <class T>
class Listed {
 public:
  Listed(const Listed &) = delete;
  Listed &operator=(const Listed &) = delete;

  // Calls visit(object) for all of them, the newest one first; `visit` must neither make nor end one.
  template <class Visitor>
  static void ForEach(Visitor &&visit) {
    for (Listed *item = newest_; item != nullptr; item = item->older_) visit(static_cast<T &>(*item));
  }

 protected:
  Listed() : older_(newest_) { newest_ = this; }
  ~Listed() {
    Listed **link = &newest_;
    while (*link != this) link = &(*link)->older_;
    *link = older_;
  }

 private:
  inline static Listed *newest_ = nullptr;

  Listed *older_;
};

}  // namespace zvk::host
