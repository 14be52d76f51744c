#include "standalone/rows/row_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/standalone/rows/rows_testing.h"

namespace standalone {
namespace {

using testing::EndsWith;
using testing::StartsWith;

using OpenedRows = RowFiles;

TEST_F(OpenedRows, ContentDecidesTheFormatAndNotTheName) {
  const Rows rows = NoiseRows(5, 4);
  for (const auto &[name, format] :
       {std::pair{"a.png", "PNG"}, std::pair{"a.jpg", "JPEG"}, std::pair{"a.tif", "TIFF"}}) {
    WriteByRows(name, rows);
    std::filesystem::rename(Path(name), Path("picture"));
    const auto reader = OpenRows(Path("picture"));
    EXPECT_EQ(reader->Header().format, format);
    EXPECT_EQ(reader->Width(), 5);
    EXPECT_EQ(reader->Height(), 4);
    EXPECT_FALSE(reader->Header().isGray);
    EXPECT_FALSE(reader->Header().hasAlpha);
    ReadRows(*reader);
    EXPECT_FALSE(reader->HasSeenTransparency());
  }
}

TEST_F(OpenedRows, NamesAPathThatLeadsToNoFile) {
  EXPECT_EQ(ReadError("none.png"), Path("none.png") + ": no such file; check the path");
  EXPECT_EQ(ReadError("."), Path(".") + ": is a folder; name an image file in it");
  Write("file", "x");
  EXPECT_EQ(ReadError("file/a.png"), Path("file/a.png") + ": cannot be read (Not a directory); check the path");
  Write("empty.png", "");
  EXPECT_EQ(ReadError("empty.png"), Path("empty.png") + ": is empty; name an image file");
}

TEST_F(OpenedRows, RefusesWhatIsNoneOfTheFormats) {
  SaveImageFile(OwnedGdImage(gdImageCreateTrueColor(2, 2)).get(), Path("a.gif"));
  Write("text.png", "just text");
  Write("short.png", "\x89P");
  for (const std::string name : {"a.gif", "text.png", "short.png"}) {
    EXPECT_EQ(ReadError(name),
              Path(name) + ": is not an image that can be read row by row; take a PNG, JPEG or TIFF file");
    EXPECT_TRUE(IsNotByRows(name));
  }
}

// Byte by byte, so that headers, tables, pixels and ends are all cut. JPEG ends with two bytes that mark the end; PNG
// with twelve. The directory of a TIFF file is behind its pixels.
TEST_F(OpenedRows, RefusesEveryFileThatIsCutShortWithoutAWord) {
  testing::internal::CaptureStderr();
  for (const std::string name : {"a.png", "a.jpg", "a.tif"}) {
    WriteByRows(name, NoiseRows(4, 3));
    const std::string whole = Read(name);
    for (size_t length = 8; length < whole.size(); ++length) {
      Write(name, whole.substr(0, length));
      const std::string error = ReadError(name);
      EXPECT_THAT(error, StartsWith(Path(name) + ": is a ")) << length;
      EXPECT_THAT(error, EndsWith(" file that is cut short or damaged; get a whole copy of it")) << length;
    }
  }
  fflush(stderr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(OpenedRows, ReadsTheExamplesLikeTheWholePicture) {
  for (const std::string name : {"astronaut.png", "coffee.png", "moon.png", "rocket.jpg", "hubble_deep_field.jpg"}) {
    std::filesystem::copy_file(std::string(PICTUREZVK_EXAMPLES) + "/" + name, Path(name));
    EXPECT_EQ(ReadByRows(name), ReadWhole(name)) << name;
  }
}

}  // namespace
}  // namespace standalone
