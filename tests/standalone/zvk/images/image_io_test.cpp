#include "standalone/zvk/images/image_io.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "standalone/runtime/memory_block.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

class ImageIo : public ZvkProgram {
 protected:
  Value Load(const std::string &name) const { return LoadImage(session_, Path(name)); }
  void Save(const Value &image, const std::string &name) const { SaveImage(image, Path(name), kWhite); }
  Value NewImage(int32_t width, int32_t height, const char *format) const {
    return session_.Images().New({width, height, session_.Images().Constant(format)});
  }

  const PluginSession session_{{.path = PICTUREZVK_LIBRARY}};
};

TEST_F(ImageIo, MakesAFileAnImageOfColoursWithoutAlpha) {
  WriteImage("in.png", 3, 2, [](int x, int y) { return 0x102030u * static_cast<uint32_t>(x) + y; });
  const Value image = Load("in.png");
  EXPECT_EQ(SizeOf(image), (Size{3, 2}));
  EXPECT_TRUE(image.Get("Valid").AsBoolean());
  EXPECT_TRUE(image.Get("IsRGB").AsBoolean());
  EXPECT_FALSE(image.Get("HasAlpha").AsBoolean());
  const Value row = image.Call("RowInFormat", {1, session_.Images().Constant("ImageFormatRGB")});
  const MemoryBlock &bytes = *row.As<MemoryBlock>();
  EXPECT_EQ(std::string(bytes.Data(), bytes.Data() + 9), std::string("\0\0\1\x10\x20\x31\x20\x40\x61", 9));
}

TEST_F(ImageIo, SavesEveryFamilyOfColours) {
  WriteImage("in.png", 2, 1, [](int x, int) { return x == 0 ? 0xFF8000 : 0x0000FF; });
  Save(Load("in.png"), "rgb.bmp");
  EXPECT_EQ(ReadImage("rgb.bmp"), Colours({{0xFF8000, 0x0000FF}}));
  Save(NewImage(2, 1, "ImageFormatG"), "gray.png");
  EXPECT_EQ(ReadImage("gray.png"), Colours({{0, 0}}));
  Save(NewImage(2, 1, "ImageFormatCMYK"), "cmyk.png");
  EXPECT_EQ(ReadImage("cmyk.png"), Colours({{0xFFFFFF, 0xFFFFFF}}));
}

TEST_F(ImageIo, RefusesToSaveWhatIsLargerThanAPicture) {
  try {
    Save(NewImage(1, 32768, "ImageFormatG"), "out.png");
    FAIL();
  } catch (const std::runtime_error &error) {
    EXPECT_EQ(error.what(),
              Path("out.png") + ": 1 x 32768 pixels are too many; a picture has at most 32767 pixels each way");
  }
  EXPECT_FALSE(Names().contains("out.png"));
  Save(NewImage(1, 32767, "ImageFormatG"), "out.png");
  EXPECT_EQ(ReadImage("out.png").size(), 32767u);
}

}  // namespace
}  // namespace standalone
