#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>
// Needs <cstdio> before it.
#include <jpeglib.h>

#include "tests/standalone/rows/rows_testing.h"

namespace standalone {
namespace {

class JpegRows : public RowFiles {
 protected:
  // 20 x 17 pixels of noise in the colours given, with settings of the test's own.
  void WriteJpeg(
      const std::string &name, J_COLOR_SPACE colours, int samples,
      const std::function<void(j_compress_ptr)> &change = [](j_compress_ptr) {}) const {
    std::FILE *const file = std::fopen(Path(name).c_str(), "wb");
    jpeg_error_mgr errors;
    jpeg_compress_struct jpeg;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    jpeg_stdio_dest(&jpeg, file);
    jpeg.image_width = 20;
    jpeg.image_height = 17;
    jpeg.input_components = samples;
    jpeg.in_color_space = colours;
    jpeg_set_defaults(&jpeg);
    change(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    for (uint32_t y = 0; y < 17; ++y) {
      std::vector<uint8_t> bytes = Noise(static_cast<size_t>(20 * samples), y);
      JSAMPROW row = bytes.data();
      jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(file);
  }
};

TEST_F(JpegRows, AreReadInColourAndInGrayLikeTheWholePicture) {
  WriteJpeg("colour.jpg", JCS_RGB, 3);
  EXPECT_EQ(ReadByRows("colour.jpg"), ReadWhole("colour.jpg"));
  EXPECT_FALSE(OpenRows(Path("colour.jpg"))->Header().isGray);

  WriteJpeg("gray.jpg", JCS_GRAYSCALE, 1);
  EXPECT_EQ(ReadByRows("gray.jpg"), ReadWhole("gray.jpg"));
  EXPECT_TRUE(OpenRows(Path("gray.jpg"))->Header().isGray);
}

TEST_F(JpegRows, AreRefusedWhereTheyAreProgressive) {
  WriteJpeg("a.jpg", JCS_RGB, 3, jpeg_simple_progression);
  EXPECT_TRUE(IsNotByRows("a.jpg"));
  EXPECT_EQ(ReadError("a.jpg"),
            Path("a.jpg") +
                ": is a progressive JPEG file, whose rows are not stored one after another; save it "
                "as a baseline JPEG");
}

TEST_F(JpegRows, AreRefusedWhereTheyHoldInks) {
  WriteJpeg("a.jpg", JCS_CMYK, 4);
  EXPECT_TRUE(IsNotByRows("a.jpg"));
  EXPECT_EQ(ReadError("a.jpg"),
            Path("a.jpg") + ": is a JPEG file of printing inks, whose rows cannot be read as colours; save it in RGB");
}

}  // namespace
}  // namespace standalone
