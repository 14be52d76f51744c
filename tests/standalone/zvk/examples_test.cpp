// The scripts of examples/, run as the page of examples says. What they make is compared with a naive computation where
// one is short, else with a picture that has been looked at and kept: tools/keep-example-results makes these anew.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "standalone/gd/image_file.h"
#include "tests/naive/scale.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::HasSubstr;

struct Rgb {
  int red;
  int green;
  int blue;

  bool operator==(const Rgb &) const = default;
};

class ExamplesTest : public ZvkProgram {
 protected:
  static std::string Example(const std::string &name) { return std::string(PICTUREZVK_EXAMPLES) + "/" + name; }

  // Runs an example, which must succeed and leave nothing; gives what it prints.
  std::string RunExample(const std::string &script, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"run", "--leaks", "--seed", "1", Example(script)});
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("references not given back: none\n"));
    return result.output;
  }

  void ExpectKept(const std::string &name) const { ExpectSamePixels(Path(name), Example("results/" + name)); }
};

Rgb PixelAt(const LoadedImage &loaded, int x, int y) {
  const int pixel = loaded.image->tpixels[y][x];
  return {pixel >> 16 & 255, pixel >> 8 & 255, pixel & 255};
}

int Luma(Rgb pixel) { return (77 * pixel.red + 151 * pixel.green + 28 * pixel.blue) >> 8; }

// Red, green, blue of each pixel, row by row.
std::vector<uint8_t> BytesOf(const LoadedImage &loaded) {
  std::vector<uint8_t> bytes;
  for (int y = 0; y < loaded.image->sy; ++y) {
    for (int x = 0; x < loaded.image->sx; ++x) {
      const Rgb pixel = PixelAt(loaded, x, y);
      bytes.insert(bytes.end(), {static_cast<uint8_t>(pixel.red), static_cast<uint8_t>(pixel.green),
                                 static_cast<uint8_t>(pixel.blue)});
    }
  }
  return bytes;
}

std::vector<uint8_t> NaivelyScaled(const LoadedImage &loaded, int mode, int32_t width, int32_t height) {
  const auto recordOver = [](uint8_t *bytes, int32_t recordWidth, int32_t recordHeight, int32_t pixelSize) {
    zvk::image::ImageClassData record = {};
    record.Width = recordWidth;
    record.Height = recordHeight;
    record.PixelSize = pixelSize;
    record.RowSize = recordWidth * pixelSize;
    record.BitsPerComponent = 8;
    record.IsRGB = 1;
    record.GreenOffset = 1;
    record.BlueOffset = 2;
    record.Buffer = bytes;
    record.GetRow = [](zvk::image::ImageClassData *image, int32_t index) {
      return image->Buffer + ptrdiff_t{index} * image->RowSize;
    };
    return record;
  };
  std::vector<uint8_t> source = BytesOf(loaded);
  std::vector<uint8_t> temp(static_cast<size_t>(4) * width * loaded.image->sy);
  std::vector<uint8_t> dest(static_cast<size_t>(3) * width * height);
  zvk::image::ImageClassData sourceRecord = recordOver(source.data(), loaded.image->sx, loaded.image->sy, 3);
  zvk::image::ImageClassData tempRecord = recordOver(temp.data(), width, loaded.image->sy, 4);
  zvk::image::ImageClassData destRecord = recordOver(dest.data(), width, height, 3);
  EXPECT_TRUE(naive::Scale(destRecord, sourceRecord, tempRecord, mode, width, height));
  return dest;
}

TEST_F(ExamplesTest, ThumbnailsFitIntoTheirSquare) {
  constexpr int kLanczos3 = 3;
  RunExample("thumbnails.lua", {PICTUREZVK_EXAMPLES, Path("out")});
  for (const std::string name : {"astronaut", "coffee", "moon", "hubble_deep_field", "rocket"}) {
    const bool isPhotograph = name == "hubble_deep_field" || name == "rocket";
    const LoadedImage picture = LoadImageFile(Example(name + (isPhotograph ? ".jpg" : ".png")));
    const LoadedImage thumbnail = LoadImageFile(Path("out/" + name + ".png"));
    EXPECT_EQ(std::max(thumbnail.image->sx, thumbnail.image->sy), 96) << name;
    EXPECT_EQ(BytesOf(thumbnail), NaivelyScaled(picture, kLanczos3, thumbnail.image->sx, thumbnail.image->sy)) << name;
  }
}

TEST_F(ExamplesTest, AContactSheetHasAllPictures) {
  RunExample("contact_sheet.lua", {PICTUREZVK_EXAMPLES, Path("contact_sheet.png")});
  ExpectKept("contact_sheet.png");
}

TEST_F(ExamplesTest, AWatermarkIsWhiteInStripes) {
  RunExample("watermark.lua", {Example("coffee.png"), Path("watermark.png")});
  const LoadedImage photo = LoadImageFile(Example("coffee.png"));
  const LoadedImage marked = LoadImageFile(Path("watermark.png"));
  for (int y = 0; y < photo.image->sy; ++y) {
    for (int x = 0; x < photo.image->sx; ++x) {
      const int keep = (x + y % 48) % 48 < 12 ? 0x99 : 0xff;
      const auto blend = [&](int sample) { return ((255 - keep) * 255 + sample * keep) / 255; };
      const Rgb pixel = PixelAt(photo, x, y);
      ASSERT_EQ(PixelAt(marked, x, y), (Rgb{blend(pixel.red), blend(pixel.green), blend(pixel.blue)})) << x << "," << y;
    }
  }
}

TEST_F(ExamplesTest, ASharpenedPictureIsTheOneKept) {
  RunExample("sharpen.lua", {Example("moon.png"), Path("sharpen.png")});
  ExpectKept("sharpen.png");
}

TEST_F(ExamplesTest, ADuotoneLeadsFromOneInkToTheOther) {
  RunExample("duotone.lua", {Example("rocket.jpg"), Path("duotone.png")});
  const LoadedImage photo = LoadImageFile(Example("rocket.jpg"));
  const LoadedImage duotone = LoadImageFile(Path("duotone.png"));
  // Lua's division rounds down, for a falling ramp too.
  const auto ramp = [](int from, int to, int i) {
    const int product = (to - from) * i;
    return from + (product >= 0 ? product / 255 : -((-product + 254) / 255));
  };
  for (int y = 0; y < photo.image->sy; ++y) {
    for (int x = 0; x < photo.image->sx; ++x) {
      const int gray = Luma(PixelAt(photo, x, y));
      ASSERT_EQ(PixelAt(duotone, x, y), (Rgb{ramp(0x1b, 0xff, gray), ramp(0x14, 0xe6, gray), ramp(0x64, 0xa7, gray)}))
          << x << "," << y;
    }
  }
}

TEST_F(ExamplesTest, APosterInAFileIsWhatTheScalerMakesInMemory) {
  constexpr int kCubic = 7;
  const std::string output = RunExample("poster.lua", {Example("hubble_deep_field.jpg"), Path("poster.png"), "600"});
  const LoadedImage photo = LoadImageFile(Example("hubble_deep_field.jpg"));
  const int height = photo.image->sy * 600 / photo.image->sx;
  EXPECT_THAT(output, testing::StartsWith("600 x " + std::to_string(height) + " pixels, "));
  const std::vector<uint8_t> whole = NaivelyScaled(photo, kCubic, 600, height);
  const LoadedImage middle = LoadImageFile(Path("poster.png"));
  ASSERT_EQ(middle.image->sx, 256);
  ASSERT_EQ(middle.image->sy, 256);
  const std::vector<uint8_t> bytes = BytesOf(middle);
  for (int y = 0; y < 256; ++y) {
    const auto row = bytes.begin() + ptrdiff_t{3} * 256 * y;
    const auto expected = whole.begin() + 3 * (ptrdiff_t{600} * ((height - 256) / 2 + y) + (600 - 256) / 2);
    ASSERT_TRUE(std::equal(row, row + ptrdiff_t{3} * 256, expected)) << y;
  }
}

TEST_F(ExamplesTest, AFactorysFilesGiveTheImagesOfMemory) {
  const std::string output = RunExample("file_factory.lua", {Example("astronaut.png"), Path("rotated.png"), "20"});
  EXPECT_THAT(output, testing::StartsWith("3 images in files; the result is in one: true\n"));
  const ProgramResult inMemory =
      Run({"run", "-e", "PictureZVK(Picture.Open(arg[1])):Rotate(20, 32, 32, 32):CopyPicture():Save(arg[2])",
           Example("astronaut.png"), Path("memory.png")});
  ASSERT_EQ(inMemory.exitCode, 0) << inMemory.errors;
  EXPECT_EQ(BytesOf(LoadImageFile(Path("rotated.png"))), BytesOf(LoadImageFile(Path("memory.png"))));
}

TEST_F(ExamplesTest, PlatesOfASeparationAreThoseKept) {
  RunExample("separation.lua", {Example("coffee.png"), Path("separation.png")});
  ExpectKept("separation.png");
}

TEST_F(ExamplesTest, ATurnedCardHasTheAlphaKept) {
  RunExample("card.lua", {Example("astronaut.png"), Path("card.png")});
  const LoadedImage card = LoadImageFile(Path("card.png"));
  EXPECT_TRUE(card.hasTransparency);
  EXPECT_EQ(card.image->tpixels[0][0] >> 24, gdAlphaTransparent);
  EXPECT_EQ(card.image->tpixels[card.image->sy / 2][card.image->sx / 2] >> 24, gdAlphaOpaque);
  ExpectKept("card.png");
}

TEST_F(ExamplesTest, ADitheredPictureHasTwoLevels) {
  RunExample("dither.lua", {Example("rocket.jpg"), Path("dither.png")});
  const LoadedImage photo = LoadImageFile(Example("rocket.jpg"));
  const LoadedImage dithered = LoadImageFile(Path("dither.png"));
  int64_t white = 0;
  int64_t brightness = 0;
  for (int y = 0; y < photo.image->sy; ++y) {
    for (int x = 0; x < photo.image->sx; ++x) {
      const Rgb pixel = PixelAt(dithered, x, y);
      ASSERT_TRUE(pixel == (Rgb{0, 0, 0}) || pixel == (Rgb{255, 255, 255}));
      white += pixel.red == 255;
      brightness += Luma(PixelAt(photo, x, y));
    }
  }
  // As much white as the photograph is bright, within what a matrix of 16 thresholds can tell.
  const auto pixels = static_cast<double>(int64_t{photo.image->sx} * photo.image->sy);
  EXPECT_NEAR(static_cast<double>(white) / pixels, static_cast<double>(brightness) / 255 / pixels, 0.04);
}

}  // namespace
}  // namespace standalone
