// What the tests of mirroring, turning and rotation share: images of noise, and their samples as grids.
#pragma once

#include <cstdint>
#include <vector>

#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "tests/naive/turns.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/image_test.h"
#include "tests/scenes/row_log.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/yields.h"
#include "tests/support/plugin_host.h"

namespace turn_testing {

using naive::ChannelsOf;
using naive::SampleAt;
using scenes::Bytes;
using scenes::kFamilyFormats;
using scenes::Kind;
using scenes::NewImage;
using scenes::Noise;
using scenes::PixelSizeOf;
using scenes::RowLog;
using scenes::StoredImage;
using scenes::YieldAlways;
using scenes::Yields;
using standalone::Object;
using standalone::Owned;
using zvk::image::ImageClassData;
using zvk::image::RecordOf;

// An image of noise. In a block the last row ends with its last pixel; the rows of a table are in no order; of a file
// five rows are mapped at a time, the least that there may be, so that its block moves though the image is low.
inline StoredImage Stored(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format, int32_t gap = 0) {
  return scenes::NoisyImage(host, kind, width, height, format,
                            {.gap = gap, .wholeLastRow = false, .order = 1, .blockRows = 5});
}

inline int32_t References(REALobject image) { return Object::From(image)->References(); }

// The first channel of all pixels, row by row.
inline std::vector<Bytes> Grid(const Owned<Object> &image, char letter) {
  ImageClassData &record = *RecordOf(image);
  std::vector<Bytes> rows(static_cast<size_t>(record.Height));
  for (int32_t y = 0; y < record.Height; ++y) {
    for (int32_t x = 0; x < record.Width; ++x) rows[static_cast<size_t>(y)].push_back(*SampleAt(record, x, y, letter));
  }
  return rows;
}
inline void SetGrid(const Owned<Object> &image, char letter, const std::vector<Bytes> &rows) {
  ImageClassData &record = *RecordOf(image);
  for (int32_t y = 0; y < record.Height; ++y) {
    for (int32_t x = 0; x < record.Width; ++x) {
      *SampleAt(record, x, y, letter) = rows[static_cast<size_t>(y)][static_cast<size_t>(x)];
    }
  }
}

}  // namespace turn_testing
