// The built plug-in in a host of any kind and version, as a program of the host language has it, and real pictures for
// it to work on.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/gd/gd_picture.h"
#include "standalone/gd/image_file.h"
#include "standalone/runtime/host.h"
#include "standalone/runtime/picture.h"
#include "tests/naive/scale.h"

namespace standalone {

// The kind of host that a test runs on.
struct HostChoice {
  std::string name;
  HostOptions options;
  int32_t tableVersion;  // of the class tables that the plug-in hands over
  bool hasGdPictures = false;

  friend void PrintTo(const HostChoice &choice, std::ostream *stream) { *stream << choice.name; }
};

// Both kinds, the four versions of the tables and one that tells none, and a desktop with bitmaps of each layout.
inline std::vector<HostChoice> AllHosts() {
  std::vector<HostChoice> hosts = {
      {"Console201303", {.version = 2013.03}, 12},
      {"Console201303Gd", {.version = 2013.03}, 12, true},
      {"Console2013", {.version = 2013.0}, 11},
      {"Console2012", {.version = 2012.0}, 10},
      {"Console2011", {.version = 2011.0}, 9},
      {"Console2009", {.version = 2009.0}, 9},
      {"ConsoleWithoutVersion", {.version = std::nullopt}, 9},
  };
  for (const double version : {2011.0, 2013.03}) {
    for (uint32_t layout = 1; layout <= 6; ++layout) {
      hosts.push_back({"Desktop" + std::string(version < 2012 ? "2011" : "201303") + "Layout" + std::to_string(layout),
                       {.kind = HostKind::Desktop, .version = version, .newPictureLayout = {.alphaInfo = layout}},
                       version < 2012 ? 9 : 12});
    }
  }
  return hosts;
}

inline std::string HostName(const testing::TestParamInfo<HostChoice> &info) { return info.param.name; }

// Colours of pixels: red, green, blue of each, row by row.
struct Grid {
  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> bytes;

  Grid(int32_t gridWidth, int32_t gridHeight)
      : width(gridWidth), height(gridHeight), bytes(static_cast<size_t>(3) * width * height) {}

  uint8_t *At(int32_t x, int32_t y) { return bytes.data() + 3 * (static_cast<size_t>(y) * width + x); }
  bool operator==(const Grid &) const = default;
  // Which pixel differs first is all that one wants to read.
  friend void PrintTo(const Grid &grid, std::ostream *stream) { *stream << grid.width << " x " << grid.height; }
};

// The part of an example picture that starts at a place and is of the size given.
inline Grid ReadExample(const std::string &name, int32_t left, int32_t top, int32_t width, int32_t height) {
  const LoadedImage loaded = LoadImageFile(std::string(PICTUREZVK_EXAMPLES) + "/" + name);
  Grid grid(width, height);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const int pixel = loaded.image->tpixels[top + y][left + x];
      grid.At(x, y)[0] = static_cast<uint8_t>(pixel >> 16);
      grid.At(x, y)[1] = static_cast<uint8_t>(pixel >> 8);
      grid.At(x, y)[2] = static_cast<uint8_t>(pixel);
    }
  }
  return grid;
}

// A host picture of the running host's kind.
inline Value PictureOf(Grid grid) {
  Owned<Picture> picture =
      Owned<Picture>::Adopt(Picture::Make(Host::Current().NewPictureStorage(grid.width, grid.height)));
  for (int32_t y = 0; y < grid.height; ++y) {
    for (int32_t x = 0; x < grid.width; ++x) {
      const uint8_t *const colour = grid.At(x, y);
      picture->SetPixel(x, y, {colour[0], colour[1], colour[2], 255});
    }
  }
  return picture;
}

// What a host picture shows; fails the test where it is not opaque.
inline Grid ColoursOf(const Value &value) {
  const Picture &picture = *value.As<Picture>();
  Grid grid(picture.Width(), picture.Height());
  bool isOpaque = true;
  for (int32_t y = 0; y < grid.height; ++y) {
    for (int32_t x = 0; x < grid.width; ++x) {
      const Pixel pixel = picture.GetPixel(x, y);
      grid.At(x, y)[0] = pixel.red;
      grid.At(x, y)[1] = pixel.green;
      grid.At(x, y)[2] = pixel.blue;
      isOpaque = isOpaque && pixel.alpha == 255;
    }
  }
  EXPECT_TRUE(isOpaque);
  return grid;
}

// What scaling must give, by the naive resampler.
inline Grid NaivelyScaled(Grid source, int mode, int32_t width, int32_t height, double horizontalRounding = 0.5) {
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
  Grid result(width, height);
  std::vector<uint8_t> tempBytes(static_cast<size_t>(4) * width * source.height);
  zvk::image::ImageClassData sourceRecord = recordOver(source.bytes.data(), source.width, source.height, 3);
  zvk::image::ImageClassData tempRecord = recordOver(tempBytes.data(), width, source.height, 4);
  zvk::image::ImageClassData resultRecord = recordOver(result.bytes.data(), width, height, 3);
  EXPECT_TRUE(naive::Scale(resultRecord, sourceRecord, tempRecord, mode, width, height, horizontalRounding));
  return result;
}

// A host of the test's kind with the plug-in in it. At the end of a test nothing may be left.
class LoadedPlugin : public testing::TestWithParam<HostChoice> {
 protected:
  LoadedPlugin() {
    if (GetParam().hasGdPictures) UseGdPictures(host_);
    host_.Load(PICTUREZVK_LIBRARY);
  }
  ~LoadedPlugin() override {
    Factories().Call("SetFactory", {nullptr});
    EXPECT_EQ(Describe(host_.Leaks()), "");
    EXPECT_EQ(host_.Misdeeds(), std::vector<std::string>());
    EXPECT_FALSE(host_.HasPendingException());
  }

  const ClassBinding &Images() const { return ClassNamed("PictureZVK"); }
  const ClassBinding &Factories() const { return ClassNamed("PictureFactoryZVK"); }
  int32_t Constant(const std::string &name) const { return Images().Constant(name).AsInteger(); }

  Value NewImage(int32_t width, int32_t height, const std::string &format) const {
    return Images().New({width, height, Constant("ImageFormat" + format)});
  }
  // An image with the pixels of a picture.
  Value ImageOf(const Grid &grid, const std::string &format) const {
    Value image = NewImage(grid.width, grid.height, format);
    image.Call("DrawPictureRGB", {PictureOf(grid)});
    return image;
  }

  Host host_{GetParam().options};
  Bindings bindings_;
};

}  // namespace standalone
