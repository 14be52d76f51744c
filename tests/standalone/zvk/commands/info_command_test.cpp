#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "standalone/zvk/commands/commands.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class InfoCommand : public ZvkProgram {
 protected:
  std::string Info(const std::string &name) const {
    const ProgramResult result = Run({"info", name});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
  }

  // A little-endian TIFF of RGB whose directory is all there is.
  void WriteHeaderOfTiff(const std::string &name, uint32_t width, uint32_t height) const {
    constexpr uint32_t kShort = 3;
    constexpr uint32_t kLong = 4;
    const struct {
      uint32_t tag, type, count, value;
    } entries[] = {
        {256, kLong, 1, width}, {257, kLong, 1, height}, {258, kShort, 3, 8 + 2 + 9 * 12 + 4},
        {259, kShort, 1, 1},    {262, kShort, 1, 2},     {273, kLong, 1, 8},
        {277, kShort, 1, 3},    {278, kLong, 1, height}, {279, kLong, 1, 8},
    };
    std::string bytes = "II";
    const auto add = [&bytes](uint32_t number, int size) {
      for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i));
    };
    add(42, 2);
    add(8, 4);
    add(9, 2);
    for (const auto &entry : entries) {
      add(entry.tag, 2);
      add(entry.type, 2);
      add(entry.count, 4);
      add(entry.value, 4);
    }
    add(0, 4);
    for (int channel = 0; channel < 3; ++channel) add(8, 2);
    Write(name, bytes);
  }
};

// 5 pixels are 15 bytes: in memory rows of 64, in a file rows of a page, over a picture 4 bytes a pixel.
TEST_F(InfoCommand, TellsWhatAPictureTakesInEachStorage) {
  WriteImage("in.png", 5, 4, [](int, int) { return 0x123456; });
  EXPECT_EQ(Info("in.png"),
            "size                 5 x 4 pixels\n"
            "file                 PNG\n"
            "format               RGB, 3 bytes a pixel\n"
            "in memory            64 bytes a row, 256 bytes, can be allocated\n"
            "in a file            4096 bytes a row, 16384 bytes and 4096 at the end\n"
            "over a host picture  20 bytes a row, 80 bytes\n");
}

// 1366 pixels of 3 bytes are 4098: two bytes more than a page. In memory 4160 is the next multiple of 64.
TEST_F(InfoCommand, RoundsRowsUp) {
  WriteImage("in.jpg", 1366, 3, [](int, int) { return 0x123456; });
  EXPECT_EQ(Info("in.jpg"),
            "size                 1366 x 3 pixels\n"
            "file                 JPEG\n"
            "format               RGB, 3 bytes a pixel\n"
            "in memory            4160 bytes a row, 12480 bytes, can be allocated\n"
            "in a file            8192 bytes a row, 24576 bytes and 4096 at the end\n"
            "over a host picture  5464 bytes a row, 16392 bytes\n");
}

TEST_F(InfoCommand, TakesTheFormatFromTheFile) {
  WriteImage("clear.png", 70, 1, [](int, int) { return 0x3F123456; });
  EXPECT_THAT(Info("clear.png"), AllOf(HasSubstr("format               RGBA, 4 bytes a pixel\n"),
                                       HasSubstr("in memory            320 bytes a row, 320 bytes, can")));
  EXPECT_THAT(Info(std::string(PICTUREZVK_EXAMPLES) + "/moon.png"),
              HasSubstr("format               G, 1 byte a pixel\n"));
}

// These are looked at whole.
TEST_F(InfoCommand, KnowsFilesThatHaveNoRows) {
  for (const auto &[name, kind] :
       {std::pair{"in.gif", "GIF"}, std::pair{"in.webp", "WebP"}, std::pair{"in.bmp", "BMP"}}) {
    WriteImage(name, 5, 4, [](int, int) { return 0x123456; });
    EXPECT_THAT(Info(name),
                AllOf(HasSubstr("5 x 4 pixels"), HasSubstr(std::string("file                 ") + kind + "\n"),
                      HasSubstr("RGB, 3 bytes")));
  }
}

// 3 x 40000 bytes are 120000, in memory as they are, in a file 30 pages; 30000 rows of them are beyond 2 GiB. The file
// has no pixels at all, which nobody looks for.
TEST_F(InfoCommand, TellsWhatIsTooLargeForMemoryAndForAPicture) {
  WriteHeaderOfTiff("in.tif", 40000, 30000);
  EXPECT_EQ(Info("in.tif"),
            "size                 40000 x 30000 pixels\n"
            "file                 TIFF\n"
            "format               RGB, 3 bytes a pixel\n"
            "in memory            120000 bytes a row, 3600000000 bytes, more than an image can have\n"
            "in a file            122880 bytes a row, 3686400000 bytes and 4096 at the end\n"
            "over a host picture  none, a picture has at most 32767 pixels each way\n");
}

TEST_F(InfoCommand, TellsItsArgumentAndExitCodes) {
  const ProgramResult result = Run({"info", "--help"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, AllOf(HasSubstr("info [OPTIONS] IN"), HasSubstr("--plugin"), HasSubstr("--leaks"),
                                   HasSubstr("Examples:\n  zvk info "), HasSubstr("Exit codes:")));
}

TEST_F(InfoCommand, TellsOnWishThatNothingIsLeft) {
  WriteImage("in.gif", 5, 4, [](int, int) { return 0x123456; });
  EXPECT_THAT(Run({"info", "in.gif", "--leaks"}).output, testing::EndsWith("\nreferences not given back: none\n"));
}

TEST_F(InfoCommand, NamesAFileThatItCannotRead) {
  Write("text.png", "not an image at all");
  const ProgramResult text = Run({"info", "text.png"});
  EXPECT_EQ(text.exitCode, 1);
  EXPECT_EQ(text.output, "");
  EXPECT_THAT(text.errors, HasSubstr("zvk: text.png: is not an image that can be read; known are PNG, "));
  EXPECT_EQ(Run({"info", "none.png"}).errors, "zvk: none.png: no such file; check the path\n");
  const ProgramResult missing = Run({"info"});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_EQ(missing.errors, "zvk: IN is required; 'zvk info --help' tells how it is used\n");
}

}  // namespace
}  // namespace standalone
