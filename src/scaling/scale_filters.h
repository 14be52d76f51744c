// The seven resampling filters, one line of a table each: a kernel, which gives the weight for a distance, its window,
// and how many taps a list may need.
#pragma once

#include <cstdint>

namespace zvk::scaling {

// How "Scale" and "ScaleMT" number the filters.
enum ScaleMode : int32_t {
  ScaleTriangle = 1,
  ScaleBox,
  ScaleLanczos3,
  ScaleLanczos8,
  ScaleMitchell,
  ScalePoly3,
  ScaleCubic,
};

struct ScaleFilter {
  double FilterWindow;  // half width of the sampling window, in source pixels at a scale of 1 or more
  // The weight at a distance (0 or more, in source pixels at a scale of 1 or more) from the centre; exactly 0, as
  // outside the kernel's range, means that there is no tap.
  double (*FilterKernel)(double distance);
  // Taps that a list has room for at a scale of 1 or more.
  int32_t HorizontalCapacity;
  int32_t VerticalCapacity;
};

// The filter of a mode; nil for a number that is none.
const ScaleFilter *FindScaleFilter(int32_t mode);

}  // namespace zvk::scaling
