// What the tests of operations that change an image in place share: a host, images over fenced blocks, and a log of the
// rows that are fetched and of the yields.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/scenes/row_log.h"
#include "tests/scenes/yields.h"
#include "tests/support/plugin_host.h"

namespace in_place_testing {

using Bytes = std::vector<uint8_t>;
using standalone::Object;
using standalone::Owned;

// An instance and the bytes under it.
struct TestImage {
  Owned<standalone::MemoryBlock> block;
  Owned<Object> object;

  operator REALobject() const { return object; }
  zvk::image::ImageClassData &Record() const { return *zvk::image::RecordOf(object); }
  Bytes All() const { return {block->Data(), block->Data() + block->Size()}; }
  void Set(const Bytes &bytes) const { std::memcpy(block->Data(), bytes.data(), bytes.size()); }
};

class InPlaceTest : public testing::Test {
 protected:
  InPlaceTest() : host_({.fenced = true}) {
    scenes::UseRestlessClock(host_);
    host_->onYield = [this] {
      log_.Note("yield");
      if (onYield_) onYield_();
    };
  }

  // An image over a block of bytes that are all 7; rows `rowSize` bytes apart, 0 for no gap.
  TestImage NewImage(int32_t width, int32_t height, int32_t format, int32_t rowSize = 0) {
    zvk::image::ImageClassData shape{};
    zvk::image::InitImageClassData(&shape, width, height, format);
    if (rowSize == 0) rowSize = width * shape.PixelSize;
    TestImage image{
        host_.NewMemoryBlock(Bytes(static_cast<size_t>(std::abs(rowSize)) * static_cast<size_t>(height), 7)),
        host_.New("PictureZVK")};
    zvk::image::ImageConstructorMemory(image, image.block, width, height, format, rowSize);
    return image;
  }
  TestImage NewImage(int32_t width, int32_t height, int32_t format, const Bytes &bytes) {
    TestImage image = NewImage(width, height, format);
    EXPECT_EQ(image.All().size(), bytes.size());
    image.Set(bytes);
    return image;
  }
  // A view of an image, with the image's bytes.
  static TestImage View(const TestImage &image, REALobject view) { return {image.block, Adopt(view)}; }
  static TestImage Clip(const TestImage &image, int32_t x, int32_t y, int32_t width, int32_t height) {
    return View(image, zvk::image::ClipImage5(image, x, y, width, height));
  }

  // From now on fetches of the image's rows are logged under the name, and every chance of a yield on it is taken.
  void Log(const TestImage &image, const std::string &name = "") {
    logged_.push_back(image);
    log_.Watch(image.Record(), name);
    image.Record().Yield.YieldTicks = 1;
  }
  // What was logged since the last question.
  std::string TakeLog() { return log_.Take(); }

  PluginHost host_;
  std::function<void()> onYield_;  // code of the host that runs in a yield

 private:
  std::vector<TestImage> logged_;  // for as long as the log
  scenes::RowLog log_;
};

// Instances that every operation refuses, each by its name; `format` is what they are of where they have one.
inline void ForEachUnusable(PluginHost &host, int32_t format,
                            const std::function<void(const char *, REALobject)> &refuse) {
  const auto constructed = [&] {
    auto image = host.New("PictureZVK");
    zvk::image::ImageConstructor(image, 4, 3, format);
    return image;
  };
  refuse("never constructed", host.New("PictureZVK"));
  refuse("construction given up", [&] {
    auto image = host.New("PictureZVK");
    zvk::image::ImageConstructor(image, 4, 3, 14);
    return image;
  }());
  {
    const auto closed = constructed();
    zvk::image::ImageDestructor(closed);
    refuse("closed", closed);
  }
  {
    const auto invalid = constructed();
    const zvk::image::ImageClassData &record = *zvk::image::RecordOf(invalid);
    const Bytes before(record.Buffer, record.Buffer + record.TotalSize);
    zvk::image::RecordOf(invalid)->Valid = false;
    refuse("not valid", invalid);
    EXPECT_EQ(Bytes(record.Buffer, record.Buffer + record.TotalSize), before);
  }
  {
    // A view of an image over a row table has the accessor and no table.
    const auto view = constructed();
    zvk::image::RecordOf(view)->GetRow = zvk::image::GetRowGDImage;
    refuse("without a row table", view);
  }
}

}  // namespace in_place_testing
