// Lists of taps in the form that a kernel takes: a record for each list, and the weights of all of them in one block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "host/resources.h"
#include "scaling/scale_taps.h"

namespace zvk::scaling {

// `List` has a member `firstWeight`: the number of its first weight among those of all lists.
template <class List, class Weight>
class FormedLists {
 public:
  // False if there is no memory for them.
  explicit operator bool() const { return lists_ && weights_; }

  const List &operator[](int32_t i) const { return lists_[i]; }
  const Weight *WeightsOf(const List &list) const { return weights_.Get() + list.firstWeight; }
  const ScaleTapList &Told(int32_t i) const { return told_[static_cast<size_t>(i)]; }

 protected:
  // `lists` are those of a ScaleTapTable, and outlive this. Each takes count(list) weights, 0 at first, and becomes
  // make(list, firstWeight, weights).
  template <class Count, class Make>
  FormedLists(std::span<const ScaleTapList> lists, const Count &count, const Make &make)
      : told_(lists), lists_(static_cast<int64_t>(lists.size())) {
    int64_t weights = 1;  // also where no list has any
    for (const ScaleTapList &list : lists) weights += count(list);
    weights_ = ZeroedBuffer<Weight>(weights);
    if (!*this) return;
    int64_t first = 0;
    for (size_t i = 0; i < lists.size(); ++i) {
      lists_[static_cast<int64_t>(i)] = make(lists[i], first, weights_.Get() + first);
      first += count(lists[i]);
    }
  }

 private:
  std::span<const ScaleTapList> told_;
  ZeroedBuffer<List> lists_;
  ZeroedBuffer<Weight> weights_;
};

// For sums of whole numbers with `points` bits behind the point, which are off by up to `bound` of these units: a value
// nearer than this to a whole number is not sure. 0: each is, as values have been moved by `halfStep`. Above a half:
// none is.
inline int32_t EdgeOf(double bound, double halfStep, int32_t points) {
  const int32_t half = 1 << (points - 1);
  if (bound < halfStep) return 0;
  return bound < half / 2 ? static_cast<int32_t>(bound) + 1 : half + 1;
}

}  // namespace zvk::scaling
