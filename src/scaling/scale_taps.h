// Tables of taps: for each output position, which input positions count and with what weight. All that a filter and an
// image's edges decide is in the table, so that no pixel loop knows of either.
#pragma once

#include <cstdint>

#include "host/resources.h"
#include "image/image_record.h"
#include "scaling/scale_filters.h"

namespace zvk {

// One input position that contributes to an output position.
struct ScaleTap {
  float Weight;
  int32_t SourceIndex;  // source column or temp row
};

// All taps of one output position, in ascending order of SourceIndex.
struct ScaleTapList {
  ScaleTap *Taps;  // nil when the allocation failed or was refused
  int32_t TapCount;
  float WeightSum;  // added up from the unrounded weights
};

// The two directions differ in their windows and capacities.
struct ScaleAxis {
  int32_t ScaleFilter::*Capacity;            // taps of a list at a scale of 1 or more
  int64_t (*ShrinkCapacity)(double window);  // the same below 1, the window being widened
  bool RoundsOutward;                        // at a scale of 1 or more the window's edges move out to whole positions
};

extern const ScaleAxis kHorizontalAxis;
extern const ScaleAxis kVerticalAxis;

// Owns a table and the taps of its lists. The passes use one for columns, then for rows.
class ScaleTapTable {
 public:
  // Zero-filled; false as a bool if that much memory is refused or not to be had.
  explicit ScaleTapTable(int32_t count) : lists_(count), count_(lists_ ? count : 0) {}
  ScaleTapTable(ScaleTapTable &&) = delete;
  ~ScaleTapTable() { FreeTaps(); }

  explicit operator bool() const { return static_cast<bool>(lists_); }
  const ScaleTapList *Lists() const { return lists_.Get(); }

  // Frees all taps and replaces the lists by new ones.
  void Replace(int32_t count);

  // Fills the first `count` lists, which must have no taps, for an axis of `sourceSize` positions scaled by `scale`
  // (above 0; infinite for a size of 0). A list without memory for its taps gets none. Gives `yieldImage` (nil: nobody)
  // time after each list.
  void Build(const ScaleFilter &filter, const ScaleAxis &axis, int32_t count, double scale, int32_t sourceSize,
             ImageClassData *yieldImage);

  void FreeTaps();

 private:
  ZeroedBuffer<ScaleTapList> lists_;
  int32_t count_;
};

}  // namespace zvk
