// A drawing into a view while the host closes the image that the view shows.
#pragma once

#include <cstdint>
#include <vector>

#include "image/views.h"
#include "tests/pictures/picture_testing.h"

namespace picture_testing {

// The parent's bytes, and how often the host was given time.
struct ClosedParent {
  std::vector<uint8_t> before;
  std::vector<uint8_t> atClosing;  // empty if it came to no such yield
  std::vector<uint8_t> after;
  int32_t yields = 0;
};

// Calls draw(view) with a view of a whole image of 4 x 3 black pixels, which is closed in a yield, counted from 1. Its
// memory stays, so that what is written afterwards shows.
template <class Draw>
ClosedParent DrawWhileParentCloses(PluginHost &host, int32_t format, int32_t closingYield, Draw draw) {
  auto image = NewImage(host, 4, 3, format), view = Adopt(zvk::image::ClipImage1(image));
  zvk::image::ImageClassData &record = *zvk::image::RecordOf(image);
  YieldAlways(host, view);
  ClosedParent result{.before = StorageOf(record), .atClosing = {}, .after = {}};
  host->onYield = [&] {
    if (++result.yields != closingYield) return;
    record.GetRow = nullptr;
    result.atClosing = StorageOf(record);
  };
  draw(view);
  host->onYield = nullptr;
  result.after = StorageOf(record);
  return result;
}

}  // namespace picture_testing
