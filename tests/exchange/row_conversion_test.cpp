#include "exchange/row_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <vector>

#include "exchange/raw_rows.h"
#include "exchange/row_strings.h"
#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "tests/exchange/exchange_testing.h"
#include "tests/naive/row_conversion.h"

namespace zvk::exchange {
namespace {

using naive::SideOfFormat;
using naive::SideOfRecord;
using scenes::Noise;
using Bytes = std::vector<uint8_t>;

constexpr char kTooBig[] = "Parameter index to method RowInFormat is too big. Range is 0 to 2, but value is 3.";
constexpr char kTooSmall[] = "Parameter index to method RowInFormat is too small. Range is 0 to 2, but value is -1.";
constexpr char kRGBToCMYK[] = "Conversion from RGB to CMYK is not supported.";
constexpr char kCMYKToRGB[] = "Conversion from CMYK to RGB is not supported.";

class RowConversion : public exchange_testing::ExchangeTest {
 protected:
  // New blocks lie between pages that nobody may touch.
  RowConversion() : ExchangeTest({.fenced = true}) {}

  // The row of an image in a format, by the plain loops, in a block of zeros.
  static Bytes Expected(const standalone::Owned<standalone::Object> &image, int32_t index, int32_t format,
                        bool invertAlpha = false) {
    const auto to = SideOfFormat(format);
    Bytes bytes(static_cast<size_t>(to.pixelSize * Record(image).Width));
    naive::ConvertRow(SideOfRecord(Record(image)), Row(image, index), to, bytes.data(), Record(image).Width,
                      invertAlpha);
    return bytes;
  }
};

// --- reading ---

TEST_F(RowConversion, BGRAReadAsRGBHasItsBytesInTheOrderRedGreenBlue) {
  const auto image = New(2, 3, ImageFormatBGRA);
  SetRowBytes(image, 1, {30, 20, 10, 255, 33, 22, 11, 255});
  EXPECT_EQ(Taken(rbGetRowF(image, 1, ImageFormatRGB)), (Bytes{10, 20, 30, 11, 22, 33}));
  EXPECT_EQ(Taken(rbGetRowFI(image, 1, ImageFormatRGB, true)), (Bytes{10, 20, 30, 11, 22, 33}));
}

TEST_F(RowConversion, AnAlphaThatTheImageLacksIsZeroInANewBlock) {
  const auto image = New(2, 3, ImageFormatRGB);
  SetRowBytes(image, 0, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(Taken(rbGetRowF(image, 0, ImageFormatRGBA)), (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
  EXPECT_EQ(Taken(rbGetRowFI(image, 0, ImageFormatRGBA, true)), (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
}

TEST_F(RowConversion, InvertedAlphaIsTheComplement) {
  const auto image = New(2, 3, ImageFormatARGB);
  SetRowBytes(image, 0, {255, 1, 2, 3, 100, 4, 5, 6});
  EXPECT_EQ(Taken(rbGetRowFI(image, 0, ImageFormatRGBA, true)), (Bytes{1, 2, 3, 0, 4, 5, 6, 155}));
  EXPECT_EQ(Taken(rbGetRowFI(image, 0, ImageFormatRGBA, 200)), (Bytes{1, 2, 3, 0, 4, 5, 6, 155}));
  EXPECT_EQ(Taken(rbGetRowFI(image, 0, ImageFormatRGBA, false)), (Bytes{1, 2, 3, 255, 4, 5, 6, 100}));
  EXPECT_EQ(Taken(rbGetRowF(image, 0, ImageFormatRGBA)), (Bytes{1, 2, 3, 255, 4, 5, 6, 100}));
}

TEST_F(RowConversion, GrayIsWeighedAndTruncated) {
  const auto image = New(4, 3, ImageFormatRGB);
  SetRowBytes(image, 0, {255, 255, 255, 255, 0, 0, 0, 0, 255, 0, 255, 0});
  EXPECT_EQ(Taken(rbGetRowF(image, 0, ImageFormatG)), (Bytes{255, 76, 27, 150}));
}

TEST_F(RowConversion, GrayOfCMYKIsTheBlackInk) {
  const auto image = New(2, 3, ImageFormatCMYK);
  SetRowBytes(image, 0, {1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_EQ(Taken(rbGetRowF(image, 0, ImageFormatG)), (Bytes{4, 8}));
}

TEST_F(RowConversion, GrayGoesIntoEveryColourAndEveryInk) {
  const auto image = New(2, 3, ImageFormatG);
  SetRowBytes(image, 0, {9, 200});
  EXPECT_EQ(Taken(rbGetRowF(image, 0, ImageFormatBGR)), (Bytes{9, 9, 9, 200, 200, 200}));
  EXPECT_EQ(Taken(rbGetRowF(image, 0, ImageFormatXKYMC)), (Bytes{0, 9, 9, 9, 9, 0, 200, 200, 200, 200}));
}

TEST_F(RowConversion, RGBAndCMYKDoNotConvertIntoEachOther) {
  const auto rgb = New(2, 3, ImageFormatRGB);
  EXPECT_EQ(rbGetRowF(rgb, 0, ImageFormatCMYK), nullptr);
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
  EXPECT_EQ(rbGetRowFI(rgb, 0, ImageFormatAKYMC, true), nullptr);
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
  const auto cmyk = New(2, 3, ImageFormatCMYKA);
  EXPECT_EQ(rbGetRowF(cmyk, 0, ImageFormatBGRX), nullptr);
  ExpectRaised("UnsupportedOperationException", kCMYKToRGB);
  // A block was made and released again: the host finds none left over.
  EXPECT_EQ(host_->Calls("newMemoryBlock"), 3);
}

TEST_F(RowConversion, TheRefusalIsRaisedBeforeTheBlockIsReleased) {
  const auto rgb = New(2, 3, ImageFormatRGB);
  static int64_t releasedWhenRaised;
  releasedWhenRaised = -1;
  static const standalone::Host *host;
  host = &*host_;
  using Raise = void (*)(REALobject);
  static Raise raise;
  raise = reinterpret_cast<Raise>(host_->OwnEntry("RuntimeRaiseException"));
  host_->SetEntry(
      "RuntimeRaiseException", +[](REALobject exception) {
        releasedWhenRaised = host->Calls("REALUnlockObject");
        raise(exception);
      });
  EXPECT_EQ(rbGetRowF(rgb, 0, ImageFormatCMYK), nullptr);
  EXPECT_EQ(releasedWhenRaised, 0);
  EXPECT_EQ(host_->Calls("REALUnlockObject"), 2);  // the exception, then the block
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
}

TEST_F(RowConversion, ARefusedFormatOrOneWithoutColoursIsNilWithoutException) {
  const auto image = New(2, 3, ImageFormatRGB);
  for (const int32_t format : {14, 0, -1, 42, 2147483647}) EXPECT_EQ(rbGetRowF(image, 0, format), nullptr);
  EXPECT_EQ(host_->Calls("newMemoryBlock"), 0);
  EXPECT_EQ(rbGetRowF(image, 0, ImageFormatScaling1), nullptr);
  EXPECT_EQ(rbGetRowF(image, 0, ImageFormatBuffer), nullptr);
  EXPECT_EQ(rbGetRowFI(image, 0, ImageFormatScaling8, true), nullptr);
  EXPECT_EQ(rbGetRowFI(image, 0, 14, true), nullptr);
  EXPECT_EQ(rbGetRowF(New(2, 3, ImageFormatScaling4), 0, ImageFormatRGB), nullptr);
  ExpectNothingRaised();
}

TEST_F(RowConversion, ABadIndexRaisesByTheFormOfTheMethod) {
  const auto image = New(2, 3, ImageFormatRGB);
  EXPECT_EQ(rbGetRowF(image, 3, ImageFormatRGB), nullptr);
  ExpectRaised("OutOfBoundsException", kTooBig);
  EXPECT_EQ(rbGetRowF(image, -1, ImageFormatRGB), nullptr);
  ExpectRaised("OutOfBoundsException", kTooSmall);
  EXPECT_EQ(rbGetRowFI(image, 3, ImageFormatRGB, true), nullptr);
  ExpectRaised("UnsupportedOperationException", "Index is out of bounds.");
  EXPECT_EQ(rbGetRowFI(image, -1, ImageFormatRGB, true), nullptr);
  ExpectRaised("UnsupportedOperationException", "Index is out of bounds.");
  EXPECT_EQ(rbGetRowFI(image, 3, ImageFormatRGB, false), nullptr);
  ExpectRaised("OutOfBoundsException", kTooBig);
}

TEST_F(RowConversion, AnImageThatIsNotValidOrHasNoRowsIsNilWithoutException) {
  const auto image = New(2, 3, ImageFormatRGB);
  Record(image).Valid = false;
  EXPECT_EQ(rbGetRowF(image, 9, ImageFormatRGB), nullptr);
  EXPECT_EQ(rbGetRowFI(image, 9, ImageFormatRGB, true), nullptr);
  const auto closed = New(2, 3, ImageFormatRGB);
  ImageDestructor(closed);
  EXPECT_EQ(rbGetRowF(closed, 0, ImageFormatRGB), nullptr);
  EXPECT_EQ(rbGetRowF(closed, 9, ImageFormatRGB), nullptr);
  EXPECT_EQ(rbGetRowF(host_.New("PictureZVK"), 0, ImageFormatRGB), nullptr);
  EXPECT_EQ(rbGetRowF(nullptr, 0, ImageFormatRGB), nullptr);
  const auto rowless = New(2, 3, ImageFormatRGB);
  Record(rowless).GetRow = [](ImageClassData *, int32_t) -> uint8_t * { return nullptr; };
  EXPECT_EQ(rbGetRowF(rowless, 0, ImageFormatRGB), nullptr);
  ExpectNothingRaised();
}

TEST_F(RowConversion, ABlockThatCannotBeMadeRaisesWithItsSize) {
  const auto image = New(7, 3, ImageFormatRGB);
  host_->SetEntry(
      "newMemoryBlock", +[](int32_t) -> REALobject { return nullptr; });
  EXPECT_EQ(rbGetRowF(image, 0, ImageFormatBGRA), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 28 bytes of memory for row.");
  EXPECT_EQ(rbGetRowFI(image, 0, ImageFormatG, true), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 7 bytes of memory for row.");
  // No memory counts before a pair that would be refused.
  EXPECT_EQ(rbGetRowF(image, 0, ImageFormatCMYK), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 28 bytes of memory for row.");
}

TEST_F(RowConversion, AHostThatRunsOutOfMemoryRaises) {
  const auto image = New(7, 3, ImageFormatRGB);
  host_->SetEntry(
      "newMemoryBlock", +[](int32_t) -> REALobject { throw std::bad_alloc(); });
  EXPECT_EQ(rbGetRowF(image, 0, ImageFormatBGRA), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 28 bytes of memory for row.");
}

TEST_F(RowConversion, ABlockWithoutAnAddressIsReleasedAndRaises) {
  const auto image = New(7, 3, ImageFormatRGB);
  host_->Withhold("memoryBlockGetPtr");
  EXPECT_EQ(rbGetRowF(image, 0, ImageFormatBGRA), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 28 bytes of memory for row.");
}

TEST_F(RowConversion, SizesThat32BitsDoNotHoldAreRefusedWithoutAsking) {
  // The block is far too small for these widths; no pixel of it may be read.
  const auto block = host_.NewMemoryBlock(16);
  struct Case {
    int32_t width;
    int32_t format;
    const char *message;
  };
  for (const Case &test : {
           Case{2147483647, ImageFormatG, "Failed to allocate 2147483647 bytes of memory for row."},
           Case{1073741824, ImageFormatGA, "Failed to allocate -2147483648 bytes of memory for row."},
           Case{1073741824, ImageFormatRGB, "Failed to allocate -1073741824 bytes of memory for row."},
           // Wrapped to sizes that look harmless.
           Case{1073741824, ImageFormatRGBA, "Failed to allocate 0 bytes of memory for row."},
           Case{858993460, ImageFormatCMYKA, "Failed to allocate 4 bytes of memory for row."},
       }) {
    const auto image = NewOver(block, test.width, 1, ImageFormatG, 16);
    ASSERT_TRUE(Record(image).Valid);
    EXPECT_EQ(rbGetRowF(image, 0, test.format), nullptr);
    ExpectRaised("OutOfMemoryException", test.message);
  }
  EXPECT_EQ(host_->Calls("newMemoryBlock"), 0);
}

// 4 x (2^30 + 10) is 40 in 32 bits: the rows are there, and their pixels are not.
TEST_F(RowConversion, AnImageWhoseRowHasWrappedIsNotConverted) {
  const auto image = New((1 << 30) + 10, 1, ImageFormatRGBA);
  ASSERT_TRUE(Record(image).Valid);
  EXPECT_EQ(rbGetRowF(image, 0, ImageFormatRGBA), nullptr);
  EXPECT_EQ(rbGetRowFI(image, 0, ImageFormatRGBA, 0), nullptr);
  EXPECT_EQ(rbGetRowFS(image, 0, ImageFormatRGBA), nullptr);
  EXPECT_EQ(rbGetAllFS(image, ImageFormatRGBA), nullptr);
  const auto block = host_.NewMemoryBlock(64);
  std::fill_n(block->Data(), 64, uint8_t{9});
  rbSetRowF(image, 0, ImageFormatRGBA, block);
  EXPECT_EQ(std::count(Row(image, 0), Row(image, 0) + 64, 0), 64);
  EXPECT_FALSE(host_.TakeException());
}

TEST_F(RowConversion, TheLargestSizeThatIsAskedForIs2147483646) {
  const auto block = host_.NewMemoryBlock(16);
  const auto image = NewOver(block, 1073741823, 1, ImageFormatG, 16);
  static int32_t asked;
  asked = 0;
  host_->SetEntry(
      "newMemoryBlock", +[](int32_t size) -> REALobject {
        asked = size;
        return nullptr;
      });
  EXPECT_EQ(rbGetRowF(image, 0, ImageFormatGA), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 2147483646 bytes of memory for row.");
  EXPECT_EQ(asked, 2147483646);
}

// --- writing ---

TEST_F(RowConversion, AnRGBRowLeavesTheAlphaOfAnRGBAImage) {
  const auto image = New(2, 3, ImageFormatRGBA);
  SetRowBytes(image, 1, {1, 2, 3, 77, 4, 5, 6, 88});
  rbSetRowF(image, 1, ImageFormatRGB, host_.NewMemoryBlock(Bytes{11, 12, 13, 14, 15, 16}));
  rbSetRowFI(image, 2, ImageFormatRGB, true, host_.NewMemoryBlock(Bytes{11, 12, 13, 14, 15, 16}));
  ExpectNothingRaised();
  Bytes expected(64);
  const Bytes pixels{11, 12, 13, 77, 14, 15, 16, 88};
  std::copy(pixels.begin(), pixels.end(), expected.begin());
  EXPECT_EQ(RowBytes(image, 1), expected);
  EXPECT_EQ(Row(image, 2)[3], 0);
}

TEST_F(RowConversion, AGrayRowChangesTheFirstByteOfA16BitSampleOnly) {
  const auto image = New(2, 3, ImageFormatGray16);
  SetRowBytes(image, 0, {1, 2, 3, 4});
  rbSetRowF(image, 0, ImageFormatG, host_.NewMemoryBlock(Bytes{200, 100}));
  EXPECT_EQ(Bytes(Row(image, 0), Row(image, 0) + 4), (Bytes{200, 2, 100, 4}));
  EXPECT_EQ(Taken(rbGetRowF(image, 0, ImageFormatG)), (Bytes{200, 100}));
  EXPECT_EQ(Taken(rbGetRowF(image, 0, ImageFormatGray16)), (Bytes{200, 0, 100, 0}));
}

TEST_F(RowConversion, InvertedAlphaIsWrittenAsTheComplement) {
  const auto image = New(1, 3, ImageFormatRGBA);
  rbSetRowFI(image, 0, ImageFormatARGB, true, host_.NewMemoryBlock(Bytes{200, 1, 2, 3}));
  EXPECT_EQ(Bytes(Row(image, 0), Row(image, 0) + 4), (Bytes{1, 2, 3, 55}));
  rbSetRowFI(image, 0, ImageFormatARGB, false, host_.NewMemoryBlock(Bytes{200, 4, 5, 6}));
  EXPECT_EQ(Bytes(Row(image, 0), Row(image, 0) + 4), (Bytes{4, 5, 6, 200}));
}

TEST_F(RowConversion, FillerIsNeverWritten) {
  const auto image = New(1, 3, ImageFormatXCMYK);
  SetRowBytes(image, 0, {99, 0, 0, 0, 0, 98});
  rbSetRowF(image, 0, ImageFormatCMYKA, host_.NewMemoryBlock(Bytes{1, 2, 3, 4, 5}));
  EXPECT_EQ(Bytes(Row(image, 0), Row(image, 0) + 6), (Bytes{99, 1, 2, 3, 4, 98}));
}

TEST_F(RowConversion, ANilBlockRaisesBeforeEverythingElseInTheWordsOfTheForm) {
  const auto image = New(2, 3, ImageFormatRGB);
  Record(image).Valid = false;
  rbSetRowF(image, 99, 14, nullptr);
  ExpectRaised("NilObjectException", "Memoryblock is nil.");
  rbSetRowFI(image, 99, 14, true, nullptr);
  ExpectRaised("NilObjectException", "memoryblock is nil");
  rbSetRowFI(image, 99, 14, false, nullptr);
  ExpectRaised("NilObjectException", "memoryblock is nil");
}

TEST_F(RowConversion, ABadIndexOfAWriteRaisesByTheFormOfTheMethod) {
  const auto image = New(2, 3, ImageFormatRGB);
  const auto block = host_.NewMemoryBlock(6);
  rbSetRowF(image, 3, ImageFormatRGB, block);
  ExpectRaised("OutOfBoundsException", kTooBig);
  rbSetRowF(image, -1, ImageFormatRGB, block);
  ExpectRaised("OutOfBoundsException", kTooSmall);
  rbSetRowFI(image, 3, ImageFormatRGB, false, block);
  ExpectRaised("OutOfBoundsException", kTooBig);
  rbSetRowFI(image, 3, ImageFormatRGB, true, block);
  ExpectRaised("UnsupportedOperationException", "Index is out of bounds.");
  rbSetRowFI(image, -1, ImageFormatRGB, true, block);
  ExpectRaised("UnsupportedOperationException", "Index is out of bounds.");
}

TEST_F(RowConversion, ABlockWhoseAddressCannotBeHadIsANilBlock) {
  const auto image = New(2, 3, ImageFormatRGB);
  const auto block = host_.NewMemoryBlock(6);
  host_->Withhold("memoryBlockGetPtr");
  rbSetRowF(image, 3, ImageFormatRGB, block);
  ExpectRaised("OutOfBoundsException", kTooBig);
  rbSetRowF(image, 0, ImageFormatRGB, block);
  ExpectRaised("NilObjectException", "Memoryblock is nil.");
  rbSetRowFI(image, 0, ImageFormatRGB, true, block);
  ExpectRaised("NilObjectException", "Memoryblock is nil.");
}

TEST_F(RowConversion, ARefusedWriteChangesNoPixel) {
  const auto rgb = New(5, 3, ImageFormatRGBA), cmyk = New(5, 3, ImageFormatKYMC);
  FillRows(rgb);
  FillRows(cmyk);
  const auto rgbBefore = RowBytes(rgb, 0), cmykBefore = RowBytes(cmyk, 0);
  const auto block = host_.NewMemoryBlock(40);
  rbSetRowF(rgb, 0, ImageFormatCMYKA, block);
  ExpectRaised("UnsupportedOperationException", kCMYKToRGB);
  rbSetRowFI(rgb, 0, ImageFormatCMYKA, true, block);
  ExpectRaised("UnsupportedOperationException", kCMYKToRGB);
  rbSetRowF(cmyk, 0, ImageFormatRGB, block);
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
  for (const int32_t format : {14, 0, 42, int32_t{ImageFormatBuffer}, int32_t{ImageFormatScaling3}}) {
    rbSetRowF(rgb, 0, format, block);
    rbSetRowFI(rgb, 0, format, true, block);
  }
  ExpectNothingRaised();
  EXPECT_EQ(RowBytes(rgb, 0), rgbBefore);
  EXPECT_EQ(RowBytes(cmyk, 0), cmykBefore);
}

TEST_F(RowConversion, AWriteToAnImageThatIsNotValidOrHasNoRowsDoesNothing) {
  const auto block = host_.NewMemoryBlock(Bytes(12, 9));
  const auto image = New(2, 3, ImageFormatRGB);
  Record(image).Valid = false;
  rbSetRowF(image, 99, ImageFormatRGB, block);
  rbSetRowFI(image, 99, ImageFormatRGB, true, block);
  rbSetRowF(image, 0, ImageFormatRGB, block);
  EXPECT_EQ(RowBytes(image, 0), Bytes(64));
  const auto closed = New(2, 3, ImageFormatRGB);
  ImageDestructor(closed);
  rbSetRowF(closed, 0, ImageFormatRGB, block);
  rbSetRowF(host_.New("PictureZVK"), 0, ImageFormatRGB, block);
  rbSetRowF(nullptr, 0, ImageFormatRGB, block);
  const auto rowless = New(2, 3, ImageFormatRGB);
  Record(rowless).GetRow = [](ImageClassData *, int32_t) -> uint8_t * { return nullptr; };
  rbSetRowF(rowless, 0, ImageFormatRGB, block);
  ExpectNothingRaised();
}

// --- views, strange records, files ---

TEST_F(RowConversion, AChannelViewReadsAndWritesItsChannelOnly) {
  const auto image = New(3, 3, ImageFormatBGRA);
  FillRows(image);
  const auto red = Adopt(RedChannel(image));
  const auto before = RowBytes(image, 1);
  EXPECT_EQ(Taken(rbGetRowF(red, 1, ImageFormatG)), (Bytes{before[2], before[6], before[10]}));
  rbSetRowF(red, 1, ImageFormatG, host_.NewMemoryBlock(Bytes{1, 2, 3}));
  auto expected = before;
  expected[2] = 1;
  expected[6] = 2;
  expected[10] = 3;
  EXPECT_EQ(RowBytes(image, 1), expected);
}

TEST_F(RowConversion, AViewOfTheColoursConvertsThoughItHasNoFlagsOfColours) {
  const auto image = New(30, 3, ImageFormatABGR);
  FillRows(image);
  const auto colours = Adopt(RGBChannel(image));
  EXPECT_FALSE(Record(colours).HasAlpha);
  EXPECT_EQ(Taken(rbGetRowF(colours, 2, ImageFormatRGB)), Expected(image, 2, ImageFormatRGB));
  // Without alpha of its own the block's stays zero.
  auto expected = Expected(image, 2, ImageFormatRGBA);
  for (size_t i = 3; i < expected.size(); i += 4) expected[i] = 0;
  EXPECT_EQ(Taken(rbGetRowF(colours, 2, ImageFormatRGBA)), expected);
}

TEST_F(RowConversion, AClipConvertsItsOwnColumns) {
  const auto image = New(40, 8, ImageFormatCMYKA);
  FillRows(image);
  const auto clip = Adopt(ClipImage5(image, 7, 2, 29, 4));
  for (int32_t y = 0; y < 4; ++y) {
    for (const int32_t format : {ImageFormatAKYMC, ImageFormatGA, ImageFormatCMYK}) {
      const auto whole = Expected(image, y + 2, format);
      const auto pixelSize = SideOfFormat(format).pixelSize;
      EXPECT_EQ(Taken(rbGetRowF(clip, y, format)),
                Bytes(whole.begin() + 7 * pixelSize, whole.begin() + 36 * pixelSize));
    }
  }
  // A write changes those columns and no others.
  scenes::Random random(3);
  const auto bytes = Noise(29 * 5, random);
  auto expected = RowBytes(image, 3);
  std::copy(bytes.begin(), bytes.end(), expected.begin() + 7 * 5);
  rbSetRowF(clip, 1, ImageFormatCMYKA, host_.NewMemoryBlock(bytes));
  EXPECT_EQ(RowBytes(image, 3), expected);
}

TEST_F(RowConversion, AMirroredViewConvertsFromTheBottom) {
  const auto image = New(20, 5, ImageFormatGA);
  FillRows(image);
  const auto mirrored = Adopt(GetMirroredView(image));
  for (int32_t y = 0; y < 5; ++y) {
    EXPECT_EQ(Taken(rbGetRowFI(mirrored, y, ImageFormatBGRA, true)), Expected(image, 4 - y, ImageFormatBGRA, true));
  }
}

TEST_F(RowConversion, AClipBeyondTheEdgeHasNoRowsOrNoWidth) {
  const auto image = New(20, 5, ImageFormatG);
  const auto below = Adopt(ClipImage5(image, 0, 9, 5, 5));
  EXPECT_EQ(rbGetRowF(below, 0, ImageFormatG), nullptr);
  EXPECT_EQ(host_.TakeException()->className, "OutOfBoundsException");
  const auto beside = Adopt(ClipImage5(image, 30, 0, 5, 5));
  EXPECT_EQ(rbGetRowF(beside, 0, ImageFormatG), nullptr);
  rbSetRowF(beside, 0, ImageFormatG, host_.NewMemoryBlock(10));
  ExpectNothingRaised();
}

TEST_F(RowConversion, AnyRowSizeOfACallersBlockWillDo) {
  scenes::Random random(4);
  for (const int32_t rowSize : {33, 37, 3, -33}) {
    const auto bytes = Noise(3 * 33 + 10, random);
    const auto block = host_.NewMemoryBlock(bytes);
    const auto image = NewOver(block, 11, 3, ImageFormatBGR, rowSize);
    ASSERT_TRUE(Record(image).Valid);
    const int32_t first = rowSize < 0 ? -2 * rowSize : 0;
    Record(image).Buffer += first;
    for (int32_t y = 0; y < 3; ++y) {
      EXPECT_EQ(Taken(rbGetRowF(image, y, ImageFormatRGBA)), Expected(image, y, ImageFormatRGBA));
    }
    auto expected = bytes;
    const auto source = Noise(11, random);
    naive::ConvertRow(SideOfFormat(ImageFormatG), source.data(), SideOfFormat(ImageFormatBGR),
                      expected.data() + first + rowSize, 11, false);
    rbSetRowF(image, 1, ImageFormatG, host_.NewMemoryBlock(source));
    EXPECT_EQ(Bytes(block->Data(), block->Data() + block->Size()), expected);
  }
}

TEST_F(RowConversion, ABlockThatIsTheImagesOwnMemoryIsReadPixelAfterPixel) {
  scenes::Random random(6);
  for (const int32_t distance : {-40, -7, -3, -1, 0, 1, 2, 4, 12, 30}) {
    const auto bytes = Noise(400, random);
    const auto block = host_.NewMemoryBlock(bytes);
    const auto image = NewOver(block, 40, 2, ImageFormatRGBA, 160);
    const auto shifted = Adopt(standalone::MemoryBlock::Over(block->Data() + 160 + distance)->Handle());
    auto expected = bytes;
    naive::ConvertRow(SideOfFormat(ImageFormatBGR), expected.data() + 160 + distance, SideOfFormat(ImageFormatRGBA),
                      expected.data() + 160, 40, false);
    rbSetRowF(image, 1, ImageFormatBGR, shifted);
    EXPECT_EQ(Bytes(block->Data(), block->Data() + 400), expected) << distance;
  }
}

TEST_F(RowConversion, ABlockThatIsAnotherMappingOfTheImagesFileIsReadPixelAfterPixel) {
  for (const int32_t format : {ImageFormatRGBA, ImageFormatRGBX, ImageFormatARGB}) {
    auto image = host_.New("PictureZVK");
    ImageConstructorFile(image, 40, 2, format, 4, nullptr);
    const auto view = Adopt(ClipImage1(image));
    FillRows(image);
    Bytes expected = RowBytes(image, 0);
    for (size_t x = 0; x < 40; ++x) {
      const Bytes pixel(expected.begin() + 3 * x, expected.begin() + 3 * x + 3);
      std::ranges::copy(pixel, expected.begin() + 4 * x + (format == ImageFormatARGB ? 1 : 0));
    }
    const auto block = AdoptMemoryBlock(rbGetRow(view, 0));
    rbSetRowF(image, 0, ImageFormatRGB, block);
    EXPECT_EQ(RowBytes(image, 0), expected);
  }
}

TEST_F(RowConversion, AMovedOffsetIsFollowed) {
  const auto image = New(20, 3, ImageFormatRGBA);
  FillRows(image);
  SetRedOffset(image, 0, 3);
  const auto bytes = Taken(rbGetRowF(image, 0, ImageFormatRGB));
  EXPECT_EQ(bytes[0], Row(image, 0)[3]);
  EXPECT_EQ(bytes[57], Row(image, 0)[79]);
  EXPECT_EQ(bytes, Expected(image, 0, ImageFormatRGB));
}

TEST_F(RowConversion, AnImageInAFileConvertsRowByRow) {
  const auto image = host_.New("PictureZVK");
  ImageConstructorFile(image, 10, 60, ImageFormatRGB, 0, nullptr);
  ASSERT_TRUE(Record(image).Valid);
  for (int32_t y = 0; y < 60; ++y) {
    rbSetRowF(image, y, ImageFormatG, host_.NewMemoryBlock(Bytes(10, static_cast<uint8_t>(y + 1))));
  }
  for (int32_t y = 59; y >= 0; --y) {
    EXPECT_EQ(Taken(rbGetRowF(image, y, ImageFormatBGR)), Bytes(30, static_cast<uint8_t>(y + 1)));
  }
  ImageDestructor(image);
  Record(image).RemoveFile = false;  // the instance ends without a second file step
}

TEST_F(RowConversion, ReadingThroughARawRowAgrees) {
  const auto image = New(12, 3, ImageFormatBGRX);
  FillRows(image);
  const auto raw = AdoptMemoryBlock(rbGetRow(image, 1));
  const auto other = New(12, 3, ImageFormatRGB);
  rbSetRowF(other, 2, ImageFormatBGRX, raw);
  EXPECT_EQ(Taken(rbGetRowF(other, 2, ImageFormatRGB)), Expected(image, 1, ImageFormatRGB));
}

TEST_F(RowConversion, NothingYields) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).Yield.YieldTicks = -1;
  Record(image).Yield.LastYieldTime = -1000000;
  rbSetRowF(image, 1, ImageFormatBGR, AdoptMemoryBlock(rbGetRowF(image, 0, ImageFormatBGR)));
  rbSetRowFI(image, 1, ImageFormatBGR, true, AdoptMemoryBlock(rbGetRowFI(image, 0, ImageFormatBGR, true)));
  EXPECT_EQ(host_->Questions("REALYieldToRB"), 0);
}

}  // namespace
}  // namespace zvk::exchange
