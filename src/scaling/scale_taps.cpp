#include "scaling/scale_taps.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "host/resources.h"
#include "host/truncate.h"

namespace zvk::scaling {

// The two capacities of a shrink differ in when they round.
constinit const ScaleAxis kHorizontalAxis{&ScaleFilter::HorizontalCapacity,
                                          [](double window) { return 2 * (int64_t{Truncate(window)} + 1); }, true};
constinit const ScaleAxis kVerticalAxis{&ScaleFilter::VerticalCapacity,
                                        [](double window) { return int64_t{Truncate(2.0 * window + 2.0)}; }, false};

namespace {

// True for as many elements as AllocateZeroed would give memory for.
template <class T>
bool IsAllowed(int64_t count) {
  return count >= 1 && count <= kLargestAllocation / int64_t{sizeof(T)};
}

// A kernel that remembers its values: at whole ratios, and many others, the same distances come again in every list.
class RememberedKernel {
 public:
  explicit RememberedKernel(double (*kernel)(double)) : kernel_(kernel) { distances_.fill(-1.0); }

  // `distance` is 0 or more.
  double operator()(double distance) {
    // Multiplied by the golden ratio, the highest bits differ where any bits do.
    const size_t place = std::bit_cast<uint64_t>(distance) * 0x9E3779B97F4A7C15U >> (64 - kPlaceBits);
    if (distances_[place] != distance) {
      distances_[place] = distance;
      values_[place] = kernel_(distance);
    }
    return values_[place];
  }

 private:
  static constexpr int kPlaceBits = 9;

  double (*kernel_)(double);
  std::array<double, size_t{1} << kPlaceBits> distances_;
  std::array<double, size_t{1} << kPlaceBits> values_;
};

// How a filter lies over an axis at one scale.
class Sampling {
 public:
  Sampling(const ScaleFilter &filter, const ScaleAxis &axis, double scale, int32_t sourceSize)
      : kernel_(filter.FilterKernel),
        scale_(scale),
        shrinks_(scale < 1.0),
        window_(shrinks_ ? filter.FilterWindow / scale : filter.FilterWindow),
        outward_(!shrinks_ && axis.RoundsOutward),
        sourceSize_(sourceSize),
        capacity_(shrinks_ ? axis.ShrinkCapacity(window_) : filter.*axis.Capacity) {}

  // Taps that a list must have room for; 0 if so many are refused.
  int64_t Capacity() const { return IsAllowed<ScaleTap>(capacity_) ? capacity_ : 0; }

  // The taps of the output position `position`, counted from 0.
  void Fill(double position, ScaleTapList &list) {
    const double centre = (position + 0.5) / scale_;
    int32_t left = Truncate(outward_ ? std::floor(centre - window_) : centre - window_);
    int32_t right = Truncate(outward_ ? std::ceil(centre + window_) : centre + window_);
    // Positions outside the image have no tap; the division by the sum of the weights makes up for them.
    if (left < 0) left = 0;
    if (right >= sourceSize_) right = sourceSize_ - 1;
    double sum = 0.0;
    // The capacity covers every window; that it is looked at all the same keeps rounding from ever writing beyond it.
    for (int32_t index = left; index <= right && list.TapCount < capacity_; ++index) {
      double distance = centre - index - 0.5;
      if (shrinks_) distance *= scale_;
      const double weight = kernel_(std::abs(distance));
      if (weight == 0.0) continue;
      list.Taps[list.TapCount++] = {static_cast<float>(weight), index};
      sum += weight;
    }
    list.WeightSum = static_cast<float>(sum);
  }

 private:
  RememberedKernel kernel_;
  double scale_;
  bool shrinks_;
  double window_;
  bool outward_;
  int32_t sourceSize_;
  int64_t capacity_;
};

}  // namespace

bool ScaleTapTable::Build(const ScaleFilter &filter, const ScaleAxis &axis, int32_t count, double scale,
                          int32_t sourceSize, ImageClassData *yieldImage) {
  lists_.reset();
  if (!IsAllowed<ScaleTapList>(count)) return false;
  Sampling sampling(filter, axis, scale, sourceSize);
  const int64_t capacity = sampling.Capacity();
  // What is allowed for the lists and for the taps of each may be more for all of them.
  const int64_t size = count * (int64_t{sizeof(ScaleTapList)} + capacity * int64_t{sizeof(ScaleTap)});
  if (size > PTRDIFF_MAX) return false;
  auto *const lists = static_cast<ScaleTapList *>(std::calloc(1, static_cast<size_t>(size)));
  if (lists == nullptr) return false;
  lists_.reset(lists);

  auto *taps = reinterpret_cast<ScaleTap *>(lists + count);
  double position = 0.0;
  for (int32_t i = 0; i < count; ++i, position += 1.0) {
    if (capacity > 0) {
      lists[i].Taps = taps;
      sampling.Fill(position, lists[i]);
      taps += capacity;
    }
    if (yieldImage != nullptr) YieldOn(*yieldImage);
  }
  return true;
}

}  // namespace zvk::scaling
