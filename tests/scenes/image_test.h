// The ground of the fixtures of tests that make images by hand: a host, images in memory and in files, and their rows.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "tests/scenes/random.h"
#include "tests/scenes/stored_image.h"
#include "tests/support/plugin_host.h"

namespace scenes {

// A zero-filled image in memory of its own.
inline ImageObject NewImage(PluginHost &host, int32_t width, int32_t height, int32_t format) {
  ImageObject image = host.New("PictureZVK");
  zvk::image::ImageConstructor(image, width, height, format);
  return image;
}

// The same full of noise.
inline ImageObject NewNoise(PluginHost &host, int32_t width, int32_t height, int32_t format, uint32_t seed = 1) {
  ImageObject image = NewImage(host, width, height, format);
  const zvk::image::ImageClassData &record = *zvk::image::RecordOf(image);
  if (record.Valid) FillNoise(record.Buffer, static_cast<size_t>(record.TotalSize), seed);
  return image;
}

class ImageTest : public testing::Test {
 protected:
  explicit ImageTest(standalone::HostOptions options = {}) : host_(std::move(options)) {}

  ImageObject New(int32_t width, int32_t height, int32_t format) { return NewImage(host_, width, height, format); }
  // The same in a temporary file, of which some rows are mapped at a time.
  ImageObject NewInFile(int32_t width, int32_t height, int32_t format) {
    ImageObject image = host_.New("PictureZVK");
    zvk::image::ImageConstructorFile(image, width, height, format, 0, nullptr);
    EXPECT_TRUE(Record(image).Valid);
    return image;
  }

  static zvk::image::ImageClassData &Record(const ImageObject &image) { return *zvk::image::RecordOf(image); }
  static uint8_t *Row(const ImageObject &image, int32_t index) { return Record(image).GetRow(&Record(image), index); }

  void ExpectNothingRaised() { EXPECT_FALSE(host_.TakeException()); }
  void ExpectRaised(const std::string &className, const std::string &message) {
    const auto exception = host_.TakeException();
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->className, className);
    EXPECT_EQ(exception->message, message);
    EXPECT_EQ(exception->errorNumber, 0);
  }

  PluginHost host_;
};

}  // namespace scenes
