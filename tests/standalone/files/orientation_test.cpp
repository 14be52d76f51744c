#include "standalone/files/orientation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/standalone/files/exif_testing.h"

namespace standalone {
namespace {

// Files of which only the frames around their data are there.
const std::string kJpeg("\xFF\xD8\xFF\xDA\0\2\xFF\xD9", 8);
const std::string kPng = "\x89PNG\r\n\x1A\n" + Number(13, 4, true) + "IHDR" + std::string(17, '\1') +
                         Number(0, 4, true) + "IEND" + Number(0, 4, true);
const std::string kWebp = "RIFF" + Number(14, 4, false) + "WEBPVP8L" + Number(1, 4, false) + std::string(2, '\0');

class StoredOrientations : public testing::Test {
 protected:
  StoredOrientations() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zvk_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~StoredOrientations() override { std::filesystem::remove_all(folder_); }

  int Of(const std::string &bytes) const {
    const std::string path = (folder_ / "file").string();
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    return StoredOrientation(path);
  }

  std::filesystem::path folder_;
};

// A TIFF file with offsets of 32 or 64 bits, whose one directory is at the end.
std::string Tiff(uint32_t orientation, bool highFirst, bool isLarge, uint32_t type = 3) {
  const auto number = [highFirst](uint64_t value, int bytes) { return Number(value, bytes, highFirst); };
  const int word = isLarge ? 8 : 4;
  const auto field = [&](uint32_t tag, uint32_t kind, uint32_t value) {
    return number(tag, 2) + number(kind, 2) + number(1, word) + number(value, 2) + std::string(size_t(word) - 2, '\0');
  };
  const std::string start = (highFirst ? "MM" : "II") + number(isLarge ? 43 : 42, 2) +
                            (isLarge ? number(8, 2) + number(0, 2) : std::string());
  return start + number(start.size() + size_t(word) + 5, word) + "abcde" + number(3, isLarge ? 8 : 2) +
         field(256, 3, 7) + field(274, type, orientation) + field(277, 3, 1) + number(0, word);
}

TEST_F(StoredOrientations, AreReadFromFilesOfEveryKind) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    for (const bool highFirst : {false, true}) {
      SCOPED_TRACE(std::to_string(orientation) + (highFirst ? " high first" : " low first"));
      const std::string exif = Exif(static_cast<uint32_t>(orientation), highFirst);
      EXPECT_EQ(Of(JpegWithExif(kJpeg, exif)), orientation);
      EXPECT_EQ(Of(PngWith(kPng, "eXIf", exif)), orientation);
      EXPECT_EQ(Of(WebpWithExif(kWebp, 1, 1, exif)), orientation);
      EXPECT_EQ(Of(WebpWithExif(kWebp, 1, 1, std::string(kExifMark) + exif)), orientation);
      for (const bool isLarge : {false, true}) {
        EXPECT_EQ(Of(Tiff(static_cast<uint32_t>(orientation), highFirst, isLarge)), orientation);
      }
    }
  }
}

TEST_F(StoredOrientations, AreFoundBehindWhatElseAFileHas) {
  const std::string exif = JpegWithExif(kJpeg, Exif(6));
  EXPECT_EQ(Of(JpegWith(exif, "JFIF", '\xE0')), 6);
  EXPECT_EQ(Of(JpegWith(exif, "http://ns.adobe.com/xap/1.0/")), 6);
  EXPECT_EQ(Of(JpegWith(exif, "a comment", '\xFE')), 6);
  EXPECT_EQ(Of(JpegWith(exif, std::string(60000, 'x'), '\xE7')), 6);
  EXPECT_EQ(Of(exif.substr(0, 2) + "\xFF\xFF" + exif.substr(2)), 6);  // bytes that fill up
  EXPECT_EQ(Of(PngWith(PngWith(kPng, "eXIf", Exif(8)), "tEXt", "a\0b")), 8);
}

TEST_F(StoredOrientations, AreOneWhereNothingIsTold) {
  EXPECT_EQ(Of(kJpeg), 1);
  EXPECT_EQ(Of(JpegWithExif(kJpeg, "")), 1);
  EXPECT_EQ(Of(kJpeg + JpegWithExif(kJpeg, Exif(6)).substr(2)), 1);  // behind the picture's data
  EXPECT_EQ(Of(kPng), 1);
  EXPECT_EQ(Of(kPng + PngWith(kPng, "eXIf", Exif(6)).substr(33)), 1);  // behind its end
  EXPECT_EQ(Of(kWebp), 1);
  EXPECT_EQ(Of(""), 1);
  EXPECT_EQ(Of("II"), 1);
  EXPECT_EQ(Of("no picture at all"), 1);
  EXPECT_EQ(Of("GIF89a"), 1);
  EXPECT_EQ(StoredOrientation((folder_ / "nowhere").string()), 1);
  EXPECT_EQ(StoredOrientation(folder_.string()), 1);
}

TEST_F(StoredOrientations, AreOneWhereTheNumberIsNone) {
  for (const uint32_t orientation : {0u, 9u, 255u, 256u, 0x600u, 32774u, 65535u}) {
    SCOPED_TRACE(orientation);
    EXPECT_EQ(Of(JpegWithExif(kJpeg, Exif(orientation))), 1);
    EXPECT_EQ(Of(JpegWithExif(kJpeg, Exif(orientation, true))), 1);
    EXPECT_EQ(Of(Tiff(orientation, false, false)), 1);
    EXPECT_EQ(Of(Tiff(orientation, true, true)), 1);
  }
  // A text, and a type that there is not.
  for (const uint32_t type : {2u, 77u}) {
    EXPECT_EQ(Of(JpegWithExif(kJpeg, Exif(6, false, type))), 1);
    EXPECT_EQ(Of(Tiff(6, false, false, type)), 1);
  }
}

// The orientation's own bytes end 6 before the end of the data.
TEST_F(StoredOrientations, AreOneWhereTheDataAreCutShortOfThem) {
  const std::string exif = Exif(6);
  for (size_t size = 0; size < exif.size() - 6; ++size) {
    SCOPED_TRACE(size);
    EXPECT_EQ(Of(JpegWithExif(kJpeg, exif.substr(0, size))), 1);
    EXPECT_EQ(Of(PngWith(kPng, "eXIf", exif.substr(0, size))), 1);
    EXPECT_EQ(Of(WebpWithExif(kWebp, 1, 1, exif.substr(0, size))), 1);
  }
  // Of a TIFF file they end at byte 37: before them are 13 and, of the directory, its count, a field, and 10.
  const std::string tiff = Tiff(6, false, false);
  for (size_t size = 0; size < 37; ++size) EXPECT_EQ(Of(tiff.substr(0, size)), 1) << size;
  EXPECT_EQ(Of(tiff.substr(0, 37)), 6);
}

// Whatever comes out is a number of an orientation, and nothing is read that is not there (sanitizers tell).
TEST_F(StoredOrientations, OfDamagedFilesAreNumbersOfOrientations) {
  uint32_t state = 1;
  const auto random = [&state](size_t limit) {
    state = state * 1664525 + 1013904223;
    return (state >> 8) % limit;
  };
  const std::vector<std::string> files = {JpegWithExif(kJpeg, Exif(6)), PngWith(kPng, "eXIf", Exif(5, true)),
                                          WebpWithExif(kWebp, 1, 1, Exif(8)), Tiff(3, true, false),
                                          Tiff(7, false, true)};
  for (int round = 0; round < 500; ++round) {
    std::string file = files[random(files.size())];
    for (size_t changes = 1 + random(4); changes > 0; --changes) {
      file[random(file.size())] = static_cast<char>(random(3) == 0 ? 0xFF : random(256));
    }
    const int orientation = Of(file.substr(0, file.size() - random(3) * random(8)));
    EXPECT_TRUE(orientation >= 1 && orientation <= 8) << orientation;
  }
}

TEST(Turns, BringEachStoredPixelToWhereItIsSeen) {
  const std::vector<std::vector<int>> stored = {{1, 2, 3}, {4, 5, 6}};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const Turn turn = TurnOf(orientation);
    std::vector<std::vector<int>> turned = stored;
    if (turn.exchangesSides) turned = {{1, 4}, {2, 5}, {3, 6}};
    if (turn.mirrorsAcross) {
      for (std::vector<int> &row : turned) std::ranges::reverse(row);
    }
    if (turn.mirrorsDown) std::ranges::reverse(turned);
    EXPECT_EQ(turned, Seen(stored, orientation)) << orientation;
  }
}

TEST_F(StoredOrientations, AreUndoneOnlyWhereThePictureIsWantedUpright) {
  Of(JpegWithExif(kJpeg, Exif(6)));
  const std::string path = (folder_ / "file").string();
  EXPECT_EQ(TurnOf(path, Orient::Upright), TurnOf(6));
  EXPECT_EQ(TurnOf(path, Orient::AsStored), Turn());
}

TEST(TiffOrientation, IsForgottenAndAllElseKept) {
  for (const bool highFirst : {false, true}) {
    for (const bool isLarge : {false, true}) {
      const std::string tiff = Tiff(6, highFirst, isLarge);
      std::vector<uint8_t> bytes(tiff.begin(), tiff.end());
      ForgetOrientationOfTiff(bytes);
      EXPECT_EQ(std::string(bytes.begin(), bytes.end()), Tiff(1, highFirst, isLarge));
    }
  }
}

TEST(TiffOrientation, IsNotLookedForOutsideTheFile) {
  const std::string tiff = Tiff(6, false, false);
  for (size_t size = 0; size < tiff.size(); ++size) {
    std::vector<uint8_t> bytes(tiff.begin(), tiff.begin() + static_cast<ptrdiff_t>(size));
    ForgetOrientationOfTiff(bytes);
    const std::string expected = size < 37 ? tiff : Tiff(1, false, false);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), expected.substr(0, size)) << size;
  }
}

}  // namespace
}  // namespace standalone
