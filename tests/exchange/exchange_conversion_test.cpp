#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/exchange_rows.h"
#include "image/image_formats.h"
#include "tests/exchange/exchange_testing.h"
#include "tests/naive/row_conversion.h"
#include "tests/support/fence.h"

namespace zvk::exchange {
namespace {

using naive::kPixelsOfFormat;
using naive::Side;
using naive::SideOfFormat;
using naive::SideOfRecord;
using scenes::Noise;

class ExchangeConversionTest : public exchange_testing::ExchangeTest {
 protected:
  static ImageClassData Layout(int32_t format) {
    ImageClassData record{};
    EXPECT_TRUE(InitImageClassData(&record, 1, 1, format));
    return record;
  }

  std::string TakeMessage() {
    const auto exception = host_.TakeException();
    if (!exception) return "";
    EXPECT_EQ(exception->className, "UnsupportedOperationException");
    return exception->message;
  }

  // Converts a row between pages that nobody may touch, and compares with the plain loops.
  void ExpectAsNaive(const ImageClassData &source, const Side &from, const ImageClassData &dest, const Side &to,
                     bool invertAlpha, int32_t width) {
    scenes::Random random(static_cast<uint32_t>(width));
    fence::Block sourceRow(static_cast<size_t>(from.pixelSize * width));
    fence::Block destRow(static_cast<size_t>(to.pixelSize * width));
    const auto sourceBytes = Noise(sourceRow.Size(), random);
    std::copy(sourceBytes.begin(), sourceBytes.end(), sourceRow.Data());
    auto expected = Noise(destRow.Size(), random);
    std::copy(expected.begin(), expected.end(), destRow.Data());
    const std::string refusal = naive::ConvertRow(from, sourceBytes.data(), to, expected.data(), width, invertAlpha);

    const auto conversion = ConversionBetween(source, dest, {.complementsAlpha = invertAlpha});
    EXPECT_EQ(TakeMessage(), refusal);
    EXPECT_EQ(conversion.has_value(), refusal.empty() && from.family != 0 && to.family != 0);
    if (conversion) conversion->ConvertRow(sourceRow.Data(), destRow.Data(), width);
    EXPECT_EQ(std::vector<uint8_t>(destRow.Data(), destRow.Data() + destRow.Size()), expected);
    EXPECT_TRUE(std::equal(sourceBytes.begin(), sourceBytes.end(), sourceRow.Data()));
  }
};

TEST_F(ExchangeConversionTest, EveryPairOfFormatsConvertsAsThePlainLoops) {
  for (const auto &[sourceFormat, sourcePixel] : kPixelsOfFormat) {
    for (const auto &[destFormat, destPixel] : kPixelsOfFormat) {
      for (const bool invertAlpha : {false, true}) {
        for (const int32_t width : {1, 2, 7, 67}) {
          SCOPED_TRACE(sourcePixel + " to " + destPixel + ", width " + std::to_string(width));
          ExpectAsNaive(Layout(sourceFormat), SideOfFormat(sourceFormat), Layout(destFormat), SideOfFormat(destFormat),
                        invertAlpha, width);
          if (HasFailure()) return;
        }
      }
    }
  }
}

TEST_F(ExchangeConversionTest, RowsLongerThanWhatIsReadAtOnceConvertWhole) {
  for (const auto &[sourceFormat, destFormat] :
       {std::pair(ImageFormatBGRA, ImageFormatAG), std::pair(ImageFormatRGB, ImageFormat3of4),
        std::pair(ImageFormatXBGR, ImageFormatG), std::pair(ImageFormatGA, ImageFormatKYMCA)}) {
    for (const int32_t width : {1023, 1024, 1025, 3000}) {
      ExpectAsNaive(Layout(sourceFormat), SideOfFormat(sourceFormat), Layout(destFormat), SideOfFormat(destFormat),
                    false, width);
    }
  }
}

TEST_F(ExchangeConversionTest, RowsInTheSameMemoryConvertPixelAfterPixel) {
  for (const auto &[sourceFormat, destFormat] :
       {std::pair(ImageFormatRGBA, ImageFormatGA), std::pair(ImageFormatARGB, ImageFormatAG),
        std::pair(ImageFormatRGB, ImageFormatG), std::pair(ImageFormatRGB, ImageFormatBGR),
        std::pair(ImageFormatRGB, ImageFormatRGB), std::pair(ImageFormatG, ImageFormatCMYK),
        std::pair(ImageFormatCMYKA, ImageFormatGA), std::pair(ImageFormatGA, ImageFormatABGR)}) {
    const auto conversion = ConversionBetween(Layout(sourceFormat), Layout(destFormat), {.complementsAlpha = true});
    ASSERT_TRUE(conversion);
    for (int32_t distance = -20; distance <= 20; ++distance) {
      scenes::Random random(5);
      auto memory = Noise(400, random);
      auto expected = memory;
      naive::ConvertRow(SideOfFormat(sourceFormat), expected.data() + 50, SideOfFormat(destFormat),
                        expected.data() + 50 + distance, 40, true);
      conversion->ConvertRow(memory.data() + 50, memory.data() + 50 + distance, 40);
      EXPECT_EQ(memory, expected) << sourceFormat << " to " << destFormat << " at " << distance;
    }
  }
}

TEST_F(ExchangeConversionTest, OffsetsThatLeadTwoChannelsToOneByteAreWrittenInOrder) {
  ImageClassData dest = Layout(ImageFormatRGBA);
  dest.GreenOffset = dest.RedOffset;  // red, then green
  ExpectAsNaive(Layout(ImageFormatRGBA), SideOfFormat(ImageFormatRGBA), dest, SideOfRecord(dest), false, 30);
  dest.AlphaOffset = dest.BlueOffset;  // alpha after the colours
  ExpectAsNaive(Layout(ImageFormatRGBA), SideOfFormat(ImageFormatRGBA), dest, SideOfRecord(dest), true, 30);
  ImageClassData gray = Layout(ImageFormatGA);
  gray.AlphaOffset = gray.GrayOffset;
  ExpectAsNaive(Layout(ImageFormatRGBA), SideOfFormat(ImageFormatRGBA), gray, SideOfRecord(gray), false, 30);
}

TEST_F(ExchangeConversionTest, SamplesAmongThoseOfOtherPixelsAreWrittenPixelAfterPixel) {
  // A clip moves the offsets, and the host may then set one of them back: here alpha lies three pixels before gray.
  ImageClassData dest = Layout(ImageFormatGA);
  dest.GrayOffset = 7;
  dest.AlphaOffset = 1;
  for (const int32_t sourceFormat : {ImageFormatRGBA, ImageFormatGA}) {
    const auto conversion = ConversionBetween(Layout(sourceFormat), dest);
    scenes::Random random(9);
    const auto source = Noise(400, random);
    auto row = Noise(400, random);
    auto expected = row;
    naive::ConvertRow(SideOfFormat(sourceFormat), source.data(), SideOfRecord(dest), expected.data(), 60, false);
    conversion->ConvertRow(source.data(), row.data(), 60);
    EXPECT_EQ(row, expected);
  }
}

TEST_F(ExchangeConversionTest, FamiliesAreAskedForInTheOrderCMYKThenRGBThenGray) {
  // No constructor makes such records.
  ImageClassData all = Layout(ImageFormatCMYK);
  all.IsRGB = all.IsGray = true;
  all.GrayOffset = 1;
  ExpectAsNaive(all, SideOfFormat(ImageFormatCMYK), Layout(ImageFormatG), SideOfFormat(ImageFormatG), false, 20);
  ExpectAsNaive(Layout(ImageFormatG), SideOfFormat(ImageFormatG), all, SideOfFormat(ImageFormatCMYK), false, 20);
  ImageClassData two = Layout(ImageFormatBGR);
  two.IsGray = true;
  ExpectAsNaive(two, SideOfFormat(ImageFormatBGR), Layout(ImageFormatG), SideOfFormat(ImageFormatG), false, 20);
  ExpectAsNaive(Layout(ImageFormatG), SideOfFormat(ImageFormatG), two, SideOfFormat(ImageFormatBGR), false, 20);
}

TEST_F(ExchangeConversionTest, TheFlagsOfTheColoursAreNotAskedFor) {
  ImageClassData dest = Layout(ImageFormatBGR);
  dest.HasRed = dest.HasGreen = dest.HasBlue = false;
  ExpectAsNaive(Layout(ImageFormatRGB), SideOfFormat(ImageFormatRGB), dest, SideOfFormat(ImageFormatBGR), false, 20);
}

}  // namespace
}  // namespace zvk::exchange
