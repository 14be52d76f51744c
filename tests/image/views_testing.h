// What the tests of views share: images in memory and in files, their records and rows.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/support/plugin_host.h"

namespace views_testing {

using namespace zvk::image;
using standalone::Object;
using standalone::Owned;

class ViewsTest : public testing::Test {
 protected:
  Owned<Object> New(int32_t width, int32_t height, int32_t format) {
    auto image = host_.New("PictureZVK");
    ImageConstructor(image, width, height, format);
    return image;
  }

  // The same in a file of which a few rows are mapped at a time.
  Owned<Object> NewInFile(int32_t width, int32_t height, int32_t format) {
    auto image = host_.New("PictureZVK");
    ImageConstructorFile(image, width, height, format, 0, nullptr);
    EXPECT_TRUE(RecordOf(image)->Valid);
    return image;
  }

  static ImageClassData &Record(const Owned<Object> &image) { return *RecordOf(image); }
  static uint8_t *Row(const Owned<Object> &image, int32_t index) {
    ImageClassData *record = RecordOf(image);
    return record->GetRow(record, index);
  }

  PluginHost host_;
};

}  // namespace views_testing
