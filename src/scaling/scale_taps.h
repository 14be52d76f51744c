// Tables of taps: for each output position, which input positions count and with what weight. All that a filter and an
// image's edges decide is in the table, so that no pixel loop knows of either.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "image/image_record.h"
#include "scaling/scale_filters.h"

namespace zvk::scaling {

// One input position that contributes to an output position.
struct ScaleTap {
  float Weight;
  int32_t SourceIndex;  // source column or temp row
};

// All taps of one output position, in ascending order of SourceIndex.
struct ScaleTapList {
  ScaleTap *Taps;  // nil when so many were refused
  int32_t TapCount;
  float WeightSum;  // added up from the unrounded weights
};

// The first position of a list that has a tap, and one beyond the last.
inline int32_t FirstIndex(const ScaleTapList &list) { return list.Taps[0].SourceIndex; }
inline int32_t EndIndex(const ScaleTapList &list) { return list.Taps[list.TapCount - 1].SourceIndex + 1; }

// The two directions differ in their windows and capacities.
struct ScaleAxis {
  int32_t ScaleFilter::*Capacity;            // taps of a list at a scale of 1 or more
  int64_t (*ShrinkCapacity)(double window);  // the same below 1, the window being widened
  bool RoundsOutward;                        // at a scale of 1 or more the window's edges move out to whole positions
};

extern const ScaleAxis kHorizontalAxis;
extern const ScaleAxis kVerticalAxis;

// Owns a table and the taps of its lists, which are one block of memory. The passes use one for columns, then for rows.
class ScaleTapTable {
 public:
  // Replaces the lists by `count` new ones, for an axis of `sourceSize` positions scaled by `scale` (above 0; infinite
  // for a size of 0). Gives `yieldImage` (nil: nobody) time after each list. Lists that may need more taps than fit
  // kLargestAllocation get none. False, and there is no table, if the lists alone take more than that or nothing, or if
  // there is no memory for all of it.
  [[nodiscard]] bool Build(const ScaleFilter &filter, const ScaleAxis &axis, int32_t count, double scale,
                           int32_t sourceSize, ImageClassData *yieldImage);

  const ScaleTapList *Lists() const { return lists_.get(); }

 private:
  struct Free {
    void operator()(ScaleTapList *lists) const { std::free(lists); }
  };
  std::unique_ptr<ScaleTapList, Free> lists_;
};

}  // namespace zvk::scaling
