// What the tests of scaling share: images over bytes of the test's own, with every kind of row layout, and the
// comparison with the naive scaler.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "scaling/short_passes.h"
#include "tests/naive/scale.h"
#include "tests/scenes/random.h"

namespace zvk::scaling {

using Bytes = std::vector<uint8_t>;

// The job of a pass with its lists in short form, as the frames give it to the passes.
struct PassJob : ScaleJob {
  PassJob(const ScaleJob &told, ShortTable made) : ScaleJob(told), table(std::move(made)) { Short = &table; }
  ShortTable table;
};

// A fetch of a row: whose, and which.
struct Fetch {
  const ImageClassData *record;
  int32_t row;
  bool operator==(const Fetch &) const = default;
};

inline std::vector<Fetch> fetches;

// Stands in for the accessor of a file that is mapped block by block: linear rows, every fetch noted.
inline uint8_t *NotedRow(ImageClassData *record, int32_t row) {
  fetches.push_back({record, row});
  return GetRowLinear(record, row);
}

// An image over bytes of a test, in the form of an instance, with no host behind it. The bytes before and after its
// rows are part of what is compared.
class TestImage {
 public:
  static constexpr ptrdiff_t kMargin = 37;

  // Rows lie one after the other, `rowSize` apart (0: just wide enough; below 0: bottom row first in memory).
  TestImage(int32_t width, int32_t height, int32_t format, int32_t rowSize = 0) : TestImage() {
    Describe(width, height, format, rowSize);
    const ptrdiff_t extent = ptrdiff_t{width} * Record().PixelSize;
    const ptrdiff_t distance = std::abs(ptrdiff_t{Record().RowSize});
    storage_ = std::make_shared<Bytes>(2 * kMargin + (height - 1) * distance + std::max(extent, distance));
    Record().Buffer = storage_->data() + kMargin + (Record().RowSize < 0 ? (height - 1) * distance : 0);
  }

  // Rows in the bytes of another image, beginning `position` bytes after its first row. They must fit.
  TestImage(const TestImage &other, ptrdiff_t position, int32_t width, int32_t height, int32_t format, int32_t rowSize)
      : TestImage() {
    Describe(width, height, format, rowSize);
    storage_ = other.storage_;
    Record().Buffer = other.Record().Buffer + position;
  }

  ImageClassData &Record() const { return *RecordOf(Object()); }
  REALobject Object() const { return reinterpret_cast<REALobject>(const_cast<uint64_t *>(instance_.data())); }

  // All bytes under the image, margins and gaps as well.
  Bytes &Storage() const { return *storage_; }
  uint8_t *Pixel(int32_t x, int32_t y) const {
    return Record().GetRow(&Record(), y) + ptrdiff_t{x} * Record().PixelSize;
  }
  // The bytes of a row's first `count` pixels.
  Bytes Row(int32_t y, int32_t count) const {
    const uint8_t *row = Pixel(0, y);
    return Bytes(row, row + ptrdiff_t{count} * Record().PixelSize);
  }
  void SetRow(int32_t y, const Bytes &bytes) const { std::memcpy(Pixel(0, y), bytes.data(), bytes.size()); }

  // Noise with many black and white bytes, in all bytes of the storage.
  TestImage &FillNoise(uint32_t seed) {
    scenes::FillNoise(storage_->data(), storage_->size(), seed);
    return *this;
  }

  // Turns the image into a view of a part of itself. A horizontal clip moves the offsets.
  TestImage &Clip(int32_t x, int32_t y, int32_t width, int32_t height) {
    ImageClassData &record = Record();
    for (int32_t ImageClassData::*offset :
         {&ImageClassData::RedOffset, &ImageClassData::GreenOffset, &ImageClassData::BlueOffset,
          &ImageClassData::GrayOffset, &ImageClassData::AlphaOffset, &ImageClassData::CyanOffset,
          &ImageClassData::MagentaOffset, &ImageClassData::YellowOffset, &ImageClassData::BlackOffset}) {
      record.*offset += x * record.PixelSize;
    }
    record.RowOffset += y;
    record.Width = width;
    record.Height = height;
    return *this;
  }
  TestImage &Mirror() {
    Record().GetRow = GetRowLinearMirrored;
    return *this;
  }
  // Reaches the rows through a table, as those of a host's bitmap. Not for a part of an image.
  TestImage &UseRowTable() {
    ImageClassData &record = Record();
    table_ = std::make_shared<std::vector<uint8_t *>>();
    for (int32_t y = 0; y < record.Height; ++y) table_->push_back(GetRowLinear(&record, y));
    record.RowTable = table_->data();
    record.GetRow = record.GetRow == GetRowLinear ? GetRowGDImage : GetRowGDImageMirrored;
    return *this;
  }
  // Turns it into what looks like a file that is mapped block by block.
  TestImage &Map(RowAccessor accessor = NotedRow) {
    Record().IsMapping = true;
    Record().GetRow = accessor;
    return *this;
  }

 private:
  TestImage() : instance_((PictureDefinition.forSystemUse + sizeof(ImageClassData)) / sizeof(uint64_t) + 1) {}

  void Describe(int32_t width, int32_t height, int32_t format, int32_t rowSize) {
    ImageClassData &record = Record();
    if (!InitImageClassData(&record, width, height, format)) ADD_FAILURE() << "no such format: " << format;
    record.RowSize = rowSize != 0 ? rowSize : width * record.PixelSize;
    record.TotalSize = int64_t{record.RowSize} * height;
    record.GetRow = GetRowLinear;
    record.Valid = true;
  }

  std::vector<uint64_t> instance_;
  std::shared_ptr<Bytes> storage_;
  std::shared_ptr<std::vector<uint8_t *>> table_;
};

// A temp image for a pair of images that the naive scaler knows.
inline TestImage MakeTemp(const TestImage &dest, const TestImage &source, int32_t width) {
  const auto pair = naive::PairFor(source.Record(), dest.Record());
  return TestImage(width, source.Record().Height, pair ? pair->tempFormat : ImageFormatScaling1);
}

// What a scale does to the bytes of the destination and of the temp image. The bytes are put back.
struct Outcome {
  bool result;
  Bytes dest;
  Bytes temp;
  bool operator==(const Outcome &) const = default;
};

template <class Scale>
Outcome OutcomeOf(const TestImage &dest, const TestImage &source, const TestImage &temp, Scale scale) {
  const Bytes destBefore = dest.Storage(), sourceBefore = source.Storage(), tempBefore = temp.Storage();
  const bool result = scale();
  Outcome outcome{result, dest.Storage(), temp.Storage()};
  dest.Storage() = destBefore;
  source.Storage() = sourceBefore;
  temp.Storage() = tempBefore;
  return outcome;
}

inline Outcome NaiveOutcome(const TestImage &dest, const TestImage &source, const TestImage &temp, int32_t mode,
                            int32_t width, int32_t height, double horizontalRounding = 0.5) {
  return OutcomeOf(dest, source, temp, [&] {
    return naive::Scale(dest.Record(), source.Record(), temp.Record(), mode, width, height, horizontalRounding);
  });
}

}  // namespace zvk::scaling
