#include "tests/scenes/stored_image.h"

#include <gtest/gtest.h>

#include <vector>

#include "image/image_formats.h"
#include "tests/naive/samples.h"
#include "tests/scenes/views.h"

namespace scenes {
namespace {

using naive::SampleAt;

TEST(StoredImage, WhatIsSetIsSeenInTheRowsAndBack) {
  PluginHost host({.fenced = true});
  for (const Kind kind : kKinds) {
    StoredImage image(host, kind, 5, 3, zvk::image::ImageFormatRGBA, 2);
    EXPECT_EQ(image.Bytes(), std::vector<uint8_t>(image.Bytes().size())) << kind;
    image.Fill(1);
    const auto bytes = image.Bytes();
    zvk::image::ImageClassData &record = image.Record();
    // The rows of a table are storages by themselves, and no gap follows the last one.
    const size_t distance = kind == Kind::Table ? 22 : bytes.size() / 3;
    EXPECT_EQ(static_cast<int64_t>(bytes.size()), kind == Kind::Table ? 64 : std::abs(record.TotalSize)) << kind;
    for (int32_t y = 0; y < 3; ++y) {
      const int32_t row = kind == Kind::Backwards ? 2 - y : y;
      const auto start = static_cast<size_t>(row) * distance;
      for (int32_t i = 0; i < 20; ++i) {
        EXPECT_EQ(*SampleAt(record, i / 4, y, i % 4), bytes[start + static_cast<size_t>(i)]) << kind;
      }
      if (image.HasRowTable()) {
        EXPECT_EQ(image.BytesFrom(record.GetRow(&record, y)), 20);
      } else if (kind != Kind::File) {
        EXPECT_EQ(image.BytesFrom(record.GetRow(&record, y)), static_cast<int64_t>(bytes.size() - start)) << kind;
      }
    }
    *SampleAt(record, 4, 2, 3) ^= 1;
    EXPECT_NE(image.Bytes(), bytes) << kind;
    image.SetBytes(bytes);
    EXPECT_EQ(image.Bytes(), bytes) << kind;
  }
}

TEST(StoredImage, ViewsOfAllKindsAreMade) {
  PluginHost host;
  Random random(1);
  int32_t clips = 0, wholes = 0, channels = 0;
  StoredImage image(host, Kind::Memory, 9, 9, zvk::image::ImageFormatRGBA);
  for (int i = 0; i < 200; ++i) {
    const auto view = AnyView(random, image);
    const zvk::image::ImageClassData &record = *zvk::image::RecordOf(view);
    EXPECT_TRUE(record.Valid && record.Width >= 1 && record.Height >= 1);
    wholes += view.Handle() == image.Image().Handle() ? 1 : 0;
    clips += record.Width < 9 ? 1 : 0;
    channels += record.IsGray ? 1 : 0;
  }
  EXPECT_GT(wholes, 10);
  EXPECT_GT(clips, 10);
  EXPECT_GT(channels, 10);
}

}  // namespace
}  // namespace scenes
