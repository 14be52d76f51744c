#include "image/image_formats.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/plugin_host.h"

namespace zvk::image {
namespace {

struct Row {
  int32_t number;
  std::string name;  // empty: none
  std::string family;
  int32_t pixelSize;
  std::string offsets;  // channel letters with their byte; g is gray
  std::vector<int32_t> channels;
};

const std::vector<Row> kTable = {
    {1, "RGB", "RGB", 3, "R0 G1 B2", {0, 1, 2}},
    {2, "RBBA", "RGB", 4, "R0 G1 B2 A3", {0, 1, 2, 3}},
    {3, "RGBX", "RGB", 4, "R0 G1 B2", {0, 1, 2}},
    {4, "ARGB", "RGB", 4, "A0 R1 G2 B3", {0, 1, 2, 3}},
    {5, "XRGB", "RGB", 4, "R1 G2 B3", {1, 2, 3}},
    {6, "BGR", "RGB", 3, "B0 G1 R2", {0, 1, 2}},
    {7, "BGRA", "RGB", 4, "B0 G1 R2 A3", {0, 1, 2, 3}},
    {8, "BGRX", "RGB", 4, "B0 G1 R2", {0, 1, 2}},
    {9, "ABGR", "RGB", 4, "A0 B1 G2 R3", {0, 1, 2, 3}},
    {10, "XBGR", "RGB", 4, "B1 G2 R3", {1, 2, 3}},
    {11, "G", "Gray", 1, "g0", {0}},
    {12, "GA", "Gray", 2, "g0 A1", {0, 1}},
    {13, "AG", "Gray", 2, "A0 g1", {0, 1}},
    {15, "", "Gray", 3, "g0", {0}},
    {16, "", "Gray", 3, "g1", {1}},
    {17, "", "Gray", 3, "g2", {2}},
    {18, "", "Gray", 4, "g0", {0}},
    {19, "", "Gray", 4, "g1", {1}},
    {20, "", "Gray", 4, "g2", {2}},
    {21, "", "Gray", 4, "g3", {3}},
    {22, "", "", 1, "", {}},
    {23, "CMYK", "CMYK", 4, "C0 M1 Y2 K3", {0, 1, 2, 3}},
    {24, "CMYKA", "CMYK", 5, "C0 M1 Y2 K3 A4", {0, 1, 2, 3, 4}},
    {25, "ACMYK", "CMYK", 5, "A0 C1 M2 Y3 K4", {0, 1, 2, 3, 4}},
    {26, "CMYKX", "CMYK", 5, "C0 M1 Y2 K3", {0, 1, 2, 3}},
    {27, "XCMYK", "CMYK", 5, "C1 M2 Y3 K4", {1, 2, 3, 4}},
    {28, "KYMC", "CMYK", 4, "K0 Y1 M2 C3", {0, 1, 2, 3}},
    {29, "KYMCA", "CMYK", 5, "K0 Y1 M2 C3 A4", {0, 1, 2, 3, 4}},
    {30, "AKYMC", "CMYK", 5, "A0 K1 Y2 M3 C4", {0, 1, 2, 3, 4}},
    {31, "KYMCX", "CMYK", 5, "K0 Y1 M2 C3", {0, 1, 2, 3}},
    {32, "XKYMC", "CMYK", 5, "K1 Y2 M3 C4", {1, 2, 3, 4}},
    {33, "Scaling", "", 1, "", {}},
    {34, "Scaling", "", 2, "", {}},
    {35, "Scaling", "", 3, "", {}},
    {36, "Scaling", "", 4, "", {}},
    {37, "Scaling", "", 5, "", {}},
    {38, "Scaling", "", 6, "", {}},
    {39, "Scaling", "", 7, "", {}},
    {40, "Scaling", "", 8, "", {}},
    {41, "G16", "Gray", 2, "g0", {0}},
};

std::map<char, int32_t> Offsets(const std::string &text) {
  std::map<char, int32_t> offsets;
  std::istringstream words(text);
  for (std::string word; words >> word;) offsets[word[0]] = word[1] - '0';
  return offsets;
}

class ImageFormats : public testing::Test {
 protected:
  PluginHost host_;
};

TEST_F(ImageFormats, EveryFormatFillsTheRecordAsItsRowSays) {
  ASSERT_EQ(kTable.size(), 40u);
  for (const Row &row : kTable) {
    SCOPED_TRACE(row.number);
    ImageClassData record;
    std::memset(&record, 0xCC, sizeof record);
    ASSERT_TRUE(InitImageClassData(&record, 7, 5, row.number));
    EXPECT_EQ(record.ImageFormat, row.number);
    EXPECT_EQ(record.Width, 7);
    EXPECT_EQ(record.Height, 5);
    EXPECT_EQ(record.UnclippedHeight, 5);
    EXPECT_EQ(record.PixelSize, row.pixelSize);
    EXPECT_EQ(record.RowSize, 0);
    EXPECT_EQ(record.BitsPerComponent, row.number == 41 ? 16 : 8);
    EXPECT_EQ(record.IsGray, row.family == "Gray");
    EXPECT_EQ(record.IsRGB, row.family == "RGB");
    EXPECT_EQ(record.IsCMYK, row.family == "CMYK");
    const auto offsets = Offsets(row.offsets);
    const auto check = [&](char letter, int32_t offset, uint8_t has) {
      SCOPED_TRACE(letter);
      EXPECT_EQ(has, offsets.count(letter));
      EXPECT_EQ(offset, offsets.count(letter) ? offsets.at(letter) : 0);
    };
    check('R', record.RedOffset, record.HasRed);
    check('G', record.GreenOffset, record.HasGreen);
    check('B', record.BlueOffset, record.HasBlue);
    check('g', record.GrayOffset, record.HasGray);
    check('A', record.AlphaOffset, record.HasAlpha);
    check('C', record.CyanOffset, record.HasCyan);
    check('M', record.MagentaOffset, record.HasMagenta);
    check('Y', record.YellowOffset, record.HasYellow);
    check('K', record.BlackOffset, record.HasBlack);
    ASSERT_EQ(record.ChannelCount, static_cast<int32_t>(row.channels.size()));
    for (size_t i = 0; i < 8; ++i) {
      EXPECT_EQ(record.ChannelOffsets[i], i < row.channels.size() ? row.channels[i] : 0) << i;
    }
  }
}

TEST_F(ImageFormats, InitLeavesStorageYieldAndValidityAlone) {
  ImageClassData record;
  std::memset(&record, 0xCC, sizeof record);
  ASSERT_TRUE(InitImageClassData(&record, 1, 1, 1));
  EXPECT_EQ(record.Valid, 0xCC);
  EXPECT_EQ(record.RowOffset, static_cast<int32_t>(0xCCCCCCCC));
  EXPECT_EQ(record.TotalSize, static_cast<int64_t>(0xCCCCCCCCCCCCCCCC));
  EXPECT_EQ(record.Yield.YieldTicks, static_cast<int32_t>(0xCCCCCCCC));
  EXPECT_EQ(record.MappedRowCount, static_cast<int32_t>(0xCCCCCCCC));
  EXPECT_EQ(record.OwnsBuffer, 0xCC);
}

TEST_F(ImageFormats, ASizeNotAboveZeroWritesNothing) {
  for (const auto &[width, height] : {std::pair{0, 1}, {1, 0}, {-1, 1}, {1, -1}}) {
    ImageClassData record;
    std::memset(&record, 0xCC, sizeof record);
    const ImageClassData before = record;
    EXPECT_FALSE(InitImageClassData(&record, width, height, 1));
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0);
  }
  EXPECT_FALSE(InitImageClassData(nullptr, 1, 1, 1));
}

TEST_F(ImageFormats, ARefusedFormatKeepsItsNumberAndTheSizes) {
  for (const int32_t format : {0, 14, 42, -1, INT32_MAX, INT32_MIN}) {
    ImageClassData record;
    std::memset(&record, 0xCC, sizeof record);
    EXPECT_FALSE(InitImageClassData(&record, 3, 4, format));
    EXPECT_EQ(record.ImageFormat, format);
    EXPECT_EQ(record.Width, 3);
    EXPECT_EQ(record.Height, 4);
    EXPECT_EQ(record.UnclippedHeight, 4);
    EXPECT_EQ(record.BitsPerComponent, 8);
    EXPECT_EQ(record.PixelSize, 0);
    EXPECT_EQ(record.RowSize, 0);
    EXPECT_EQ(record.ChannelCount, 0);
    EXPECT_FALSE(record.IsGray || record.IsRGB || record.IsCMYK || record.HasRed || record.HasBlack);
  }
}

TEST_F(ImageFormats, ARefusedSizeIsLookedAtBeforeTheFormat) {
  ImageClassData record{};
  EXPECT_FALSE(InitImageClassData(&record, 0, 4, 14));
  EXPECT_EQ(record.ImageFormat, 0);
}

TEST_F(ImageFormats, CalculateMemoryRoundsRowsTo64) {
  EXPECT_EQ(CalculateMemory(100, 100, 14), 0);
  EXPECT_EQ(CalculateMemory(1, 1, ImageFormatG), 64);
  EXPECT_EQ(CalculateMemory(3, 2, ImageFormatRGB), 128);
  EXPECT_EQ(CalculateMemory(64, 1, ImageFormatG), 64);
  EXPECT_EQ(CalculateMemory(65, 1, ImageFormatG), 128);
  EXPECT_EQ(CalculateMemory(0, 1, ImageFormatG), 0);
  EXPECT_EQ(CalculateMemory(1, -1, ImageFormatG), 0);
  EXPECT_EQ(CalculateMemory(1000000, 1000000, ImageFormatRGB), 3000000000000);
}

TEST_F(ImageFormats, CalculateMemoryWrapsTheRowIn32Bits) {
  EXPECT_EQ(CalculateMemory(2147483647, 1, ImageFormatG), -2147483648LL);
  // 4 x 1073741825 wraps to 4, a row of 64 bytes.
  EXPECT_EQ(CalculateMemory(1073741825, 3, ImageFormatRGBA), 192);
  EXPECT_FALSE(CanAllocateImage(2147483647, 1, ImageFormatG));
}

TEST_F(ImageFormats, CanAllocateImageEndsAtTheLargest32BitSize) {
  EXPECT_TRUE(CanAllocateImage(65536, 32767, ImageFormatG));
  EXPECT_FALSE(CanAllocateImage(65536, 32768, ImageFormatG));
  EXPECT_FALSE(CanAllocateImage(100, 100, 14));
  EXPECT_TRUE(CanAllocateImage(1, 1, ImageFormatG));
  EXPECT_FALSE(CanAllocateImage(0, 1, ImageFormatG));
}

TEST_F(ImageFormats, TheNameOfEachFormat) {
  for (const Row &row : kTable) {
    SCOPED_TRACE(row.number);
    const auto image = host_.New("PictureZVK");
    RecordOf(image)->ImageFormat = row.number;
    const auto name = Adopt(GetImageFormatString(image, 0));
    if (row.name.empty()) {
      EXPECT_FALSE(name);
      continue;
    }
    ASSERT_TRUE(name);
    EXPECT_EQ(name->Bytes(), row.name);
    EXPECT_EQ(name->TextEncoding(), standalone::Encoding::ASCII);
  }
}

TEST_F(ImageFormats, TheNameOfNoFormat) {
  const auto image = host_.New("PictureZVK");
  RecordOf(image)->ImageFormat = 0;
  EXPECT_EQ(Adopt(GetImageFormatString(image, 0))->Text(), "Unknown");
  for (const int32_t format : {14, 42, -1, INT32_MIN}) {
    RecordOf(image)->ImageFormat = format;
    EXPECT_EQ(GetImageFormatString(image, 0), nullptr) << format;
  }
}

struct OffsetSetter {
  const char *name;
  void (*set)(REALobject, int32_t, int32_t);
  int32_t ImageClassData::*field;
};

const OffsetSetter kSetters[] = {
    {"RedOffset", SetRedOffset, &ImageClassData::RedOffset},
    {"GreenOffset", SetGreenOffset, &ImageClassData::GreenOffset},
    {"BlueOffset", SetBlueOffset, &ImageClassData::BlueOffset},
    {"AlphaOffset", SetAlphaOffset, &ImageClassData::AlphaOffset},
    {"GrayOffset", SetGrayOffset, &ImageClassData::GrayOffset},
};

TEST_F(ImageFormats, AnOffsetBelowThePixelSizeIsStoredAndNothingElseChanges) {
  for (const OffsetSetter &setter : kSetters) {
    const auto image = host_.New("PictureZVK");
    ImageClassData *record = RecordOf(image);
    ASSERT_TRUE(InitImageClassData(record, 2, 2, ImageFormatRGB));
    ImageClassData expected = *record;
    expected.*setter.field = 2;
    setter.set(image, 0, 2);
    EXPECT_EQ(std::memcmp(record, &expected, sizeof expected), 0) << setter.name;
    EXPECT_FALSE(host_.TakeException());
  }
}

TEST_F(ImageFormats, AnOffsetOutsideThePixelRaisesAndChangesNothing) {
  for (const OffsetSetter &setter : kSetters) {
    for (const auto &[value, words] : {std::pair{3, "big"}, {-1, "small"}}) {
      const auto image = host_.New("PictureZVK");
      ImageClassData *record = RecordOf(image);
      ASSERT_TRUE(InitImageClassData(record, 2, 2, ImageFormatRGB));
      const ImageClassData before = *record;
      setter.set(image, 0, value);
      EXPECT_EQ(std::memcmp(record, &before, sizeof before), 0);
      const auto exception = host_.TakeException();
      ASSERT_TRUE(exception);
      EXPECT_EQ(exception->className, "OutOfBoundsException");
      EXPECT_EQ(exception->message, std::string("Parameter value to method ") + setter.name + " is too " + words +
                                        ". Range is 0 to 2, but value is " + std::to_string(value) + ".");
    }
  }
}

TEST_F(ImageFormats, AnOffsetOfAnImageWithoutPixelsHasNoRange) {
  const auto image = host_.New("PictureZVK");
  SetRedOffset(image, 0, 0);
  EXPECT_EQ(host_.TakeException()->message,
            "Parameter value to method RedOffset is too big. Range is 0 to -1, but value is 0.");
}

TEST_F(ImageFormats, NoImageHasNoNameAndTakesNoOffset) {
  EXPECT_EQ(GetImageFormatString(nullptr, 0), nullptr);
  SetRedOffset(nullptr, 0, -1);
  EXPECT_FALSE(host_.TakeException());
}

}  // namespace
}  // namespace zvk::image
