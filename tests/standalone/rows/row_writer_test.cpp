#include "standalone/rows/row_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <string>

#include "tests/standalone/rows/rows_testing.h"

namespace standalone {
namespace {

using testing::StartsWith;

class WrittenRows : public RowFiles {
 protected:
  std::string WriteError(const std::string &name, int32_t width, int32_t height) const {
    try {
      const auto writer = CreateRows(Path(name), width, height);
      const std::vector<uint8_t> row(size_t{3} * static_cast<size_t>(width), 99);
      for (int32_t y = 0; y < height; ++y) writer->WriteRow(row);
      writer->Finish();
    } catch (const ImageFileError &error) {
      return error.what();
    }
    return "no error";
  }
};

TEST_F(WrittenRows, LosslessFormatsGiveTheSameRowsBackToBothReaders) {
  for (const auto &[width, height] : {std::pair{1, 1}, std::pair{23, 11}, std::pair{1000, 3}, std::pair{3, 1000}}) {
    const Rows rows = NoiseRows(width, height);
    for (const std::string name : {"a.png", "a.tif", "a.tiff", "A.PNG"}) {
      WriteByRows(name, rows);
      EXPECT_EQ(ReadByRows(name), rows) << name;
      EXPECT_EQ(ReadWhole(name), rows) << name;
    }
  }
}

TEST_F(WrittenRows, AlphaComesBackWithAllItsBits) {
  for (const auto &[width, height] : {std::pair{1, 1}, std::pair{23, 11}, std::pair{3000, 20}}) {
    const Rows rows = NoiseRows(width, height, 4);
    for (const std::string name : {"a.png", "a.tif"}) {
      EXPECT_TRUE(HasRowAlpha(name));
      WriteByRows(name, rows, true);
      EXPECT_EQ(ReadWithAlpha(name), rows) << name;
      EXPECT_EQ(ReadByRows(name), WithoutAlpha(rows)) << name;
    }
  }
}

TEST_F(WrittenRows, JpegHoldsNoAlpha) {
  for (const char *name : {"a.jpg", "a.JPEG", "a.gif", "a"}) EXPECT_FALSE(HasRowAlpha(name)) << name;
  try {
    CreateRows(Path("a.jpg"), 1, 1, true);
    FAIL();
  } catch (const ImageFileError &error) {
    EXPECT_EQ(error.what(), Path("a.jpg") + ": a JPEG file holds no transparency; use PNG or TIFF");
  }
  EXPECT_TRUE(Names().empty());
}

// Many strips: 64 KiB hold seven rows of 3000 pixels.
TEST_F(WrittenRows, ATiffOfManyStripsComesBack) {
  const Rows rows = NoiseRows(3000, 50);
  WriteByRows("a.tif", rows);
  EXPECT_EQ(ReadByRows("a.tif"), rows);
  EXPECT_EQ(ReadWhole("a.tif"), rows);
}

TEST_F(WrittenRows, JpegComesBackAlike) {
  Rows rows(24, std::vector<uint8_t>(96));
  for (size_t x = 0; x < 96; ++x) {
    for (auto &row : rows) row[x] = static_cast<uint8_t>(40 + 5 * (x / 3));
  }
  for (const std::string name : {"a.jpg", "a.jpeg"}) {
    WriteByRows(name, rows);
    const Rows read = ReadByRows(name);
    ASSERT_EQ(read.size(), 24u);
    for (size_t x = 0; x < 96; ++x) EXPECT_NEAR(read[12][x], rows[12][x], 4) << x;
    EXPECT_EQ(read, ReadWhole(name));
  }
}

// The same picture saved whole and by rows.
TEST_F(WrittenRows, FilesHoldWhatWholePicturesSavedHold) {
  const Rows rows = NoiseRows(40, 30);
  OwnedGdImage image(gdImageCreateTrueColor(40, 30));
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 40; ++x) {
      const uint8_t *const pixel = rows[static_cast<size_t>(y)].data() + 3 * x;
      image->tpixels[y][x] = pixel[0] << 16 | pixel[1] << 8 | pixel[2];
    }
  }
  SaveImageFile(image.get(), Path("whole.jpg"));
  WriteByRows("rows.jpg", rows);
  EXPECT_EQ(ReadWhole("rows.jpg"), ReadWhole("whole.jpg"));
  SaveImageFile(image.get(), Path("whole.png"));
  WriteByRows("rows.png", rows);
  EXPECT_EQ(Read("rows.png"), Read("whole.png"));
}

TEST_F(WrittenRows, AFileThatIsNotFinishedLeavesTheOldOneAndNothingElse) {
  for (const std::string name : {"a.png", "a.jpg", "a.tif"}) {
    Write(name, "what was there before");
    {
      const auto writer = CreateRows(Path(name), 5, 5);
      writer->WriteRow(std::vector<uint8_t>(15));
    }
    EXPECT_EQ(Read(name), "what was there before");
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"a.png", "a.jpg", "a.tif"}));
}

TEST_F(WrittenRows, AFileMayReplaceTheOneThatIsBeingRead) {
  const Rows rows = NoiseRows(50, 40);
  for (const std::string name : {"a.png", "a.tif"}) {
    WriteByRows(name, rows);
    const auto reader = OpenRows(Path(name));
    const auto writer = CreateRows(Path(name), 50, 20);
    std::vector<uint8_t> row(150);
    for (int y = 0; y < 20; ++y) {
      reader->ReadRow(row);
      writer->WriteRow(row);
    }
    writer->Finish();
    EXPECT_EQ(ReadByRows(name), Rows(rows.begin(), rows.begin() + 20));
  }
}

// The system refuses to let files grow beyond 1000 bytes, as a full disk would.
TEST_F(WrittenRows, AFailedWriteLeavesTheOldFileAndNothingElse) {
  rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  for (const std::string name : {"a.png", "a.jpg", "a.tif"}) {
    Write(name, "what was there before");
    const rlimit tight = {1000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &tight);
    const std::string error = [&]() -> std::string {
      try {
        WriteByRows(name, NoiseRows(200, 200));
      } catch (const ImageFileError &failure) {
        return failure.what();
      }
      return "no error";
    }();
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(error, Path(name) + ": cannot be written (File too large); what was there before is unchanged");
    EXPECT_EQ(Read(name), "what was there before");
  }
  std::signal(SIGXFSZ, oldHandler);
  EXPECT_EQ(Names(), (std::set<std::string>{"a.png", "a.jpg", "a.tif"}));
}

TEST_F(WrittenRows, NamesPlacesThatCannotBeWritten) {
  EXPECT_THAT(WriteError("none/a.png", 1, 1),
              StartsWith(Path("none/a.png") + ": cannot be written (No such file or directory); check "));
  std::filesystem::create_directory(Path("folder.tif"));
  EXPECT_EQ(WriteError("folder.tif", 1, 1), Path("folder.tif") + ": is a folder; name a file in it");
}

TEST_F(WrittenRows, KnowsItsExtensionsInAnyCase) {
  for (const char *path : {"a.png", "a.JPG", "a.b.jpeg", "/a.c/b.Tif", "a.tiff"})
    EXPECT_TRUE(HasKnownRowExtension(path));
  for (const char *path : {"", "png", ".png", "a.", "a.gif", "a.webp", "a.png/", "a.pngx"}) {
    EXPECT_FALSE(HasKnownRowExtension(path)) << path;
  }
  EXPECT_EQ(KnownRowExtensions(), "png, jpg, jpeg, tif, tiff");
  EXPECT_EQ(
      WriteError("a.gif", 1, 1),
      Path("a.gif") + ": no image extension that can be written row by row; use one of png, jpg, jpeg, tif, tiff");
  EXPECT_TRUE(Names().empty());
}

TEST_F(WrittenRows, RefusesAPictureTooLargeForJpeg) {
  EXPECT_EQ(WriteError("a.jpg", 65501, 1),
            Path("a.jpg") +
                ": a JPEG file holds up to 65500 pixels in each direction; use another format or a smaller image");
  EXPECT_TRUE(Names().empty());
  EXPECT_EQ(WriteError("a.jpg", 65500, 1), "no error");
  EXPECT_EQ(WriteError("a.png", 1, 65501), "no error");
}

// The version of a TIFF file is its third byte: 42, or 43 with offsets of 64 bits. Only the header is looked at.
TEST_F(WrittenRows, ATiffBeyondFourGigabytesHasWideOffsets) {
  for (const auto &[height, version] : {std::pair{40000, 42}, std::pair{50000, 43}}) {
    const auto writer = CreateRows(Path("a.tif"), 30000, height);
    for (const std::string &name : Names()) {
      writer->WriteRow(std::vector<uint8_t>(90000));
      EXPECT_EQ(Read(name)[2], version);
    }
  }
  EXPECT_TRUE(Names().empty());
}

}  // namespace
}  // namespace standalone
