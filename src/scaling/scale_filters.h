// The seven resampling filters: functions of a distance, and the numbers that size their tables.
#pragma once

#include <cstdint>

namespace zvk::scaling {

struct ScaleFilter {
  double FilterWindow;  // half width of the sampling window, in source pixels at a scale of 1 or more
  // The weight at a distance (0 or more, in source pixels at a scale of 1 or more) from the centre; exactly 0, as
  // outside the kernel's range, means that there is no tap.
  double (*FilterKernel)(double distance);
  // Taps that a list has room for at a scale of 1 or more.
  int32_t HorizontalCapacity;
  int32_t VerticalCapacity;
};

extern const ScaleFilter kTriangleFilter;
extern const ScaleFilter kBoxFilter;
extern const ScaleFilter kLanczos3Filter;
extern const ScaleFilter kLanczos8Filter;
extern const ScaleFilter kMitchellFilter;
extern const ScaleFilter kPoly3Filter;
extern const ScaleFilter kCubicFilter;

}  // namespace zvk::scaling
