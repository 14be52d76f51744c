#include "exchange/row_strings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <numeric>
#include <string>
#include <vector>

#include "exchange/row_conversion.h"
#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "tests/exchange/exchange_testing.h"
#include "tests/naive/row_conversion.h"
#include "tests/scenes/row_log.h"
#include "tests/support/faults.h"

namespace zvk::exchange {
namespace {

using naive::SideOfFormat;
using naive::SideOfRecord;
using scenes::Noise;
using standalone::Encoding;
using Bytes = std::vector<uint8_t>;

constexpr char kRGBToCMYK[] = "Conversion from RGB to CMYK is not supported.";
constexpr char kCMYKToRGB[] = "Conversion from CMYK to RGB is not supported.";
constexpr char kBadIndex[] = "Index is out of bounds.";

class RowStrings : public exchange_testing::ExchangeTest {
 protected:
  explicit RowStrings(standalone::HostOptions options = {}) : ExchangeTest(std::move(options)) {}

  // The bytes of the string that a handler returned, which ends here; a single 0xEE for nil.
  static Bytes Taken(REALstring result) {
    if (result == nullptr) return {0xEE};
    const auto string = Adopt(result);
    return {string->Bytes().begin(), string->Bytes().end()};
  }

  standalone::Owned<standalone::String> StringOf(const Bytes &bytes) {
    return host_.NewString({reinterpret_cast<const char *>(bytes.data()), bytes.size()}, Encoding::Binary);
  }

  // All rows of an image in a format, by the plain loops, in a buffer of zeros.
  static Bytes Expected(const standalone::Owned<standalone::Object> &image, int32_t format) {
    const auto to = SideOfFormat(format);
    Bytes bytes;
    for (int32_t y = 0; y < Record(image).Height; ++y) {
      Bytes row(static_cast<size_t>(to.pixelSize * Record(image).Width));
      naive::ConvertRow(SideOfRecord(Record(image)), Row(image, y), to, row.data(), Record(image).Width, false);
      bytes.insert(bytes.end(), row.begin(), row.end());
    }
    return bytes;
  }

  static Bytes Pixels(const standalone::Owned<standalone::Object> &image, int32_t index, size_t count) {
    return {Row(image, index), Row(image, index) + count};
  }
};

class OldHostRowStrings : public RowStrings {
 protected:
  OldHostRowStrings() : RowStrings({.version = 2011.99}) {}
};

class FirstNewHostRowStrings : public RowStrings {
 protected:
  FirstNewHostRowStrings() : RowStrings({.version = 2012.0}) {}
};

// --- reading ---

TEST_F(RowStrings, ARowIsAStringOfPackedPixels) {
  const auto image = New(2, 3, ImageFormatBGRA);
  SetRowBytes(image, 1, {30, 20, 10, 255, 33, 22, 11, 128});
  EXPECT_EQ(Taken(rbGetRowFS(image, 1, ImageFormatRGB)), (Bytes{10, 20, 30, 11, 22, 33}));
  EXPECT_EQ(Taken(rbGetRowFS(image, 1, ImageFormatARGB)), (Bytes{255, 10, 20, 30, 128, 11, 22, 33}));
}

TEST_F(RowStrings, AnAlphaThatTheImageLacksIsZero) {
  const auto image = New(2, 3, ImageFormatRGB);
  SetRowBytes(image, 0, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(Taken(rbGetRowFS(image, 0, ImageFormatRGBA)), (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
}

TEST_F(RowStrings, LowBytesAreTaggedASCIIAndHighOnesAsBinary) {
  const auto image = New(2, 3, ImageFormatG);
  const auto zeros = Adopt(rbGetRowFS(image, 0, ImageFormatG));
  EXPECT_EQ(zeros->TextEncoding(), Encoding::ASCII);
  EXPECT_EQ(zeros->Bytes(), std::string_view("\0\0", 2));
  Row(image, 0)[1] = 127;
  EXPECT_EQ(Adopt(rbGetRowFS(image, 0, ImageFormatG))->TextEncoding(), Encoding::ASCII);
  EXPECT_EQ(Adopt(rbGetAllFS(image, ImageFormatG))->TextEncoding(), Encoding::ASCII);
  Row(image, 0)[1] = 128;
  EXPECT_EQ(Adopt(rbGetRowFS(image, 0, ImageFormatG))->TextEncoding(), Encoding::Binary);
  EXPECT_EQ(Adopt(rbGetAllFS(image, ImageFormatG))->TextEncoding(), Encoding::Binary);
}

TEST_F(RowStrings, AllRowsFollowEachOtherWithoutPadding) {
  const auto image = New(3, 2, ImageFormatXBGR);
  FillRows(image);
  const auto bytes = Taken(rbGetAllFS(image, ImageFormatRGB));
  EXPECT_EQ(bytes.size(), 18u);
  EXPECT_EQ(bytes, Expected(image, ImageFormatRGB));
}

TEST_F(RowStrings, TheLengthOfAllRowsDependsOnTheWantedFormatOnly) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatRGBA, ImageFormatG, ImageFormatGray16, ImageFormat2of4}) {
    EXPECT_EQ(Taken(rbGetAllFS(New(3, 2, format), ImageFormatRGB)).size(), 18u);
  }
  const auto block = host_.NewMemoryBlock(200);
  EXPECT_EQ(Taken(rbGetAllFS(NewOver(block, 3, 2, ImageFormatBGR, 101), ImageFormatRGB)).size(), 18u);
}

TEST_F(RowStrings, RGBAndCMYKDoNotConvertIntoEachOther) {
  const auto rgb = New(3, 2, ImageFormatRGB), cmyk = New(3, 2, ImageFormatAKYMC);
  const faults::Heap heap;
  EXPECT_EQ(rbGetAllFS(rgb, ImageFormatCMYK), nullptr);
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
  EXPECT_EQ(rbGetRowFS(rgb, 0, ImageFormatKYMCX), nullptr);
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
  EXPECT_EQ(rbGetAllFS(cmyk, ImageFormatBGRA), nullptr);
  ExpectRaised("UnsupportedOperationException", kCMYKToRGB);
  EXPECT_EQ(rbGetRowFS(cmyk, 1, ImageFormatRGB), nullptr);
  ExpectRaised("UnsupportedOperationException", kCMYKToRGB);
  EXPECT_GE(heap.CallocCalls(), 4);
  EXPECT_EQ(heap.Outstanding(), 0u);
}

TEST_F(RowStrings, ARefusedFormatOrOneWithoutColoursIsNilWithoutException) {
  const auto image = New(3, 2, ImageFormatRGB);
  const faults::Heap heap;
  for (const int32_t format : {14, 0, -1, 42, int32_t{ImageFormatBuffer}, int32_t{ImageFormatScaling8}}) {
    EXPECT_EQ(rbGetAllFS(image, format), nullptr) << format;
    EXPECT_EQ(rbGetRowFS(image, 0, format), nullptr) << format;
  }
  EXPECT_EQ(heap.Outstanding(), 0u);
  EXPECT_EQ(rbGetAllFS(New(3, 2, ImageFormatScaling3), ImageFormatRGB), nullptr);
  ExpectNothingRaised();
}

TEST_F(RowStrings, ABadIndexIsAlwaysAnUnsupportedOperation) {
  const auto image = New(3, 2, ImageFormatRGB);
  EXPECT_EQ(rbGetRowFS(image, -1, ImageFormatRGB), nullptr);
  ExpectRaised("UnsupportedOperationException", kBadIndex);
  EXPECT_EQ(rbGetRowFS(image, 2, ImageFormatRGB), nullptr);
  ExpectRaised("UnsupportedOperationException", kBadIndex);
  const auto string = StringOf(Bytes(9, 200));
  rbSetRowFS(image, -1, ImageFormatRGB, string);
  ExpectRaised("UnsupportedOperationException", kBadIndex);
  rbSetRowFS(image, 2, ImageFormatRGB, string);
  ExpectRaised("UnsupportedOperationException", kBadIndex);
}

TEST_F(RowStrings, AnImageThatIsNotValidOrHasNoRowsIsRefused) {
  const auto string = StringOf(Bytes(18, 200));
  const auto invalid = New(3, 2, ImageFormatRGB), closed = New(3, 2, ImageFormatRGB);
  Record(invalid).Valid = false;
  ImageDestructor(closed);
  const auto fresh = host_.New("PictureZVK");
  for (REALobject image : {invalid.Handle(), closed.Handle(), fresh.Handle(), REALobject{}}) {
    EXPECT_EQ(rbGetRowFS(image, 99, ImageFormatRGB), nullptr);
    EXPECT_EQ(rbGetAllFS(image, ImageFormatRGB), nullptr);
    rbSetRowFS(image, 99, ImageFormatRGB, string);
    rbSetAllFS(image, ImageFormatRGB, string);
  }
  ExpectNothingRaised();
  EXPECT_EQ(Pixels(invalid, 0, 9), Bytes(9));
  EXPECT_EQ(standalone::StringDataLent(), 0);
}

TEST_F(RowStrings, RowsWithoutAnAddressAreLeftOut) {
  const auto image = New(3, 2, ImageFormatG);
  scenes::RowLog log;
  log.Refuse(Record(image), 0);
  std::fill_n(Row(image, 1), 3, 7);
  EXPECT_EQ(rbGetRowFS(image, 0, ImageFormatG), nullptr);
  EXPECT_EQ(Taken(rbGetAllFS(image, ImageFormatG)), (Bytes{0, 0, 0, 7, 7, 7}));
  rbSetRowFS(image, 0, ImageFormatG, StringOf(Bytes(3, 200)));
  rbSetAllFS(image, ImageFormatG, StringOf(Bytes{1, 2, 3, 4, 5, 6}));
  ExpectNothingRaised();
  EXPECT_EQ(Pixels(image, 1, 3), (Bytes{4, 5, 6}));
}

TEST_F(RowStrings, ABufferThatCannotBeHadRaisesWithItsSize) {
  const auto image = New(7, 3, ImageFormatRGB);
  {
    faults::Heap heap;
    heap.FailCallocAt(1);
    EXPECT_EQ(rbGetRowFS(image, 0, ImageFormatBGRA), nullptr);
  }
  ExpectRaised("OutOfMemoryException", "Failed to allocate 28 bytes of memory for row.");
  {
    faults::Heap heap;
    heap.FailCallocAt(1);
    // No memory counts before a pair that would be refused.
    EXPECT_EQ(rbGetAllFS(image, ImageFormatCMYK), nullptr);
  }
  // The words are those for a row, also for the whole image.
  ExpectRaised("OutOfMemoryException", "Failed to allocate 84 bytes of memory for row.");
}

TEST_F(RowStrings, SizesOutside1To2147483647AreRefused) {
  // The block is far too small for these sizes; no pixel of it may be read.
  const auto block = host_.NewMemoryBlock(16);
  struct Case {
    int32_t width, height, format;
    const char *message;
    bool asks = false;
  };
  faults::Heap heap;
  for (const Case &test : {
           Case{2147483647, 1, ImageFormatG, "Failed to allocate 2147483647 bytes of memory for row.", true},
           Case{1073741824, 1, ImageFormatGA, "Failed to allocate -2147483648 bytes of memory for row."},
           Case{1073741824, 1, ImageFormatRGBA, "Failed to allocate 0 bytes of memory for row."},
           Case{858993460, 1, ImageFormatCMYKA, "Failed to allocate 4 bytes of memory for row."},
       }) {
    const auto image = NewOver(block, test.width, test.height, ImageFormatG, 16);
    ASSERT_TRUE(Record(image).Valid);
    bool asked = false;
    heap.FailCalloc([&](size_t count, size_t size) {
      const bool large = count * size > 1000000;
      asked = asked || large;
      return large;
    });
    EXPECT_EQ(rbGetRowFS(image, 0, test.format), nullptr);
    ExpectRaised("OutOfMemoryException", test.message);
    EXPECT_EQ(rbGetAllFS(image, test.format), nullptr);
    ExpectRaised("OutOfMemoryException", test.message);
    EXPECT_EQ(asked, test.asks);
  }
  // 65536 x 32768: the product of rows and a row's bytes is not a 32-bit one.
  const auto tall = NewOver(block, 65536, 32768, ImageFormatG, 1);
  EXPECT_EQ(rbGetAllFS(tall, ImageFormatG), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 2147483648 bytes of memory for row.");
  EXPECT_EQ(rbGetAllFS(tall, ImageFormatRGBA), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 8589934592 bytes of memory for row.");
}

TEST_F(RowStrings, AHostWithoutMemoryForTheStringRaises) {
  const auto image = New(7, 3, ImageFormatRGB);
  host_->SetEntry(
      "REALBuildString", +[](const void *, int32_t) -> REALstring { throw std::bad_alloc(); });
  const faults::Heap heap;
  EXPECT_EQ(rbGetRowFS(image, 0, ImageFormatRGB), nullptr);
  EXPECT_EQ(rbGetAllFS(image, ImageFormatRGB), nullptr);
  EXPECT_EQ(heap.Outstanding(), 0u);
  EXPECT_EQ(host_.TakeException()->className, "OutOfMemoryException");
}

TEST_F(RowStrings, AHostThatBuildsNoStringsGivesNil) {
  const auto image = New(7, 3, ImageFormatRGB);
  host_->Withhold("REALBuildString");
  const faults::Heap heap;
  EXPECT_EQ(rbGetRowFS(image, 0, ImageFormatRGB), nullptr);
  EXPECT_EQ(rbGetAllFS(image, ImageFormatRGB), nullptr);
  EXPECT_EQ(heap.Outstanding(), 0u);
  ExpectNothingRaised();
}

// --- writing ---

TEST_F(RowStrings, ARowIsWrittenFromAString) {
  const auto image = New(2, 3, ImageFormatRGBA);
  SetRowBytes(image, 1, {1, 2, 3, 77, 4, 5, 6, 88});
  rbSetRowFS(image, 1, ImageFormatBGR, StringOf({11, 12, 13, 14, 15, 16}));
  ExpectNothingRaised();
  EXPECT_EQ(Pixels(image, 1, 8), (Bytes{13, 12, 11, 77, 16, 15, 14, 88}));
  EXPECT_EQ(Pixels(image, 0, 8), Bytes(8));
  EXPECT_EQ(Pixels(image, 2, 8), Bytes(8));
  EXPECT_EQ(standalone::StringDataLent(), 0);
}

TEST_F(RowStrings, AllRowsOfAnotherImageComeBackButForFiller) {
  for (const int32_t format : {ImageFormatRGBX, ImageFormatGA, ImageFormatAKYMC, ImageFormatXCMYK, ImageFormat2of3}) {
    const auto source = New(13, 5, format), dest = New(13, 5, format);
    FillRows(source, 1);
    FillRows(dest, 2);
    const auto to = SideOfFormat(format);
    std::vector<Bytes> expected;
    for (int32_t y = 0; y < 5; ++y) {
      expected.push_back(RowBytes(dest, y));
      naive::ConvertRow(to, Row(source, y), to, expected.back().data(), 13, false);
    }
    rbSetAllFS(dest, format, Adopt(rbGetAllFS(source, format)));
    for (int32_t y = 0; y < 5; ++y) EXPECT_EQ(RowBytes(dest, y), expected[static_cast<size_t>(y)]);
  }
  ExpectNothingRaised();
}

TEST_F(RowStrings, AnEmptyStringRaisesBeforeEverythingElse) {
  const auto image = New(2, 3, ImageFormatRGB);
  const auto empty = StringOf({});
  for (REALstring string : {REALstring{}, empty.Handle()}) {
    rbSetRowFS(image, 99, 14, string);
    ExpectRaised("NilObjectException", "Memoryblock is nil");
    rbSetAllFS(image, 14, string);
    ExpectRaised("NilObjectException", "Memoryblock is nil");
    rbSetAllFS(nullptr, ImageFormatRGB, string);
    ExpectRaised("NilObjectException", "Memoryblock is nil");
  }
  EXPECT_EQ(standalone::StringDataLent(), 0);
}

TEST_F(RowStrings, ARefusedWriteChangesNoPixel) {
  const auto rgb = New(5, 3, ImageFormatRGBA), cmyk = New(5, 3, ImageFormatKYMC);
  FillRows(rgb);
  FillRows(cmyk);
  const auto rgbBefore = RowBytes(rgb, 0), cmykBefore = RowBytes(cmyk, 0);
  const auto string = StringOf(Bytes(100, 255));
  rbSetRowFS(rgb, 0, ImageFormatCMYKA, string);
  ExpectRaised("UnsupportedOperationException", kCMYKToRGB);
  rbSetAllFS(rgb, ImageFormatCMYKA, string);
  ExpectRaised("UnsupportedOperationException", kCMYKToRGB);
  rbSetRowFS(cmyk, 0, ImageFormatRGB, string);
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
  rbSetAllFS(cmyk, ImageFormatRGB, string);
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
  for (const int32_t format : {14, 0, 42, int32_t{ImageFormatBuffer}, int32_t{ImageFormatScaling2}}) {
    rbSetRowFS(rgb, 0, format, string);
    rbSetAllFS(rgb, format, string);
  }
  ExpectNothingRaised();
  EXPECT_EQ(RowBytes(rgb, 0), rgbBefore);
  EXPECT_EQ(RowBytes(cmyk, 0), cmykBefore);
  EXPECT_EQ(standalone::StringDataLent(), 0);
}

// --- getting at the bytes of a string ---

TEST_F(FirstNewHostRowStrings, From2012OnTheHostLendsTheBytes) {
  const auto image = New(2, 1, ImageFormatG);
  rbSetRowFS(image, 0, ImageFormatG, StringOf({5, 250}));
  EXPECT_EQ(Pixels(image, 0, 2), (Bytes{5, 250}));
  EXPECT_EQ(host_->Calls("PluginGetStringData"), 1);
  EXPECT_EQ(host_->Calls("PluginDisposeStringData"), 1);
  EXPECT_EQ(host_->Calls("REALLockString"), 0);
  EXPECT_EQ(standalone::StringDataLent(), 0);
}

TEST_F(RowStrings, TheBytesAreTakenAsTheyAreWhateverTheEncoding) {
  const auto image = New(4, 1, ImageFormatG);
  rbSetAllFS(image, ImageFormatG, host_.NewString("\xC3\xA4yz", Encoding::UTF8));
  EXPECT_EQ(Pixels(image, 0, 4), (Bytes{0xC3, 0xA4, 'y', 'z'}));
  EXPECT_EQ(host_->Calls("REALConvertString"), 0);
}

TEST_F(OldHostRowStrings, Before2012TheRecordOfTheStringIsReadUnderALock) {
  const auto image = New(2, 2, ImageFormatG);
  const auto string = StringOf({5, 250, 6, 251});
  rbSetAllFS(image, ImageFormatG, string);
  EXPECT_EQ(Pixels(image, 0, 2), (Bytes{5, 250}));
  EXPECT_EQ(Pixels(image, 1, 2), (Bytes{6, 251}));
  EXPECT_EQ(host_->Calls("REALLockString"), 1);
  EXPECT_EQ(host_->Questions("PluginGetStringData"), 0);
  EXPECT_EQ(host_->Questions("PluginDisposeStringData"), 0);
  EXPECT_EQ(string->References(), 1);
  // On paths that raise, too.
  rbSetRowFS(image, 9, ImageFormatG, string);
  ExpectRaised("UnsupportedOperationException", kBadIndex);
  EXPECT_EQ(string->References(), 1);
  const auto empty = StringOf({});
  rbSetRowFS(image, 0, ImageFormatG, empty);
  ExpectRaised("NilObjectException", "Memoryblock is nil");
  EXPECT_EQ(empty->References(), 1);
  rbSetRowFS(image, 0, ImageFormatG, nullptr);
  ExpectRaised("NilObjectException", "Memoryblock is nil");
}

TEST_F(OldHostRowStrings, ARecordOfWordsIsReadByItsSecondAndFourthWord) {
  const auto image = New(3, 1, ImageFormatG);
  host_->SetEntry(
      "REALLockString", +[](REALstring) {});
  host_->SetEntry(
      "REALUnlockString", +[](REALstring) {});
  const uint8_t text[] = {99, 1, 2, 3};  // the first byte is passed
  uintptr_t record[4] = {77, reinterpret_cast<uintptr_t>(text), 88, ~uintptr_t{0}};
  const int32_t length = 3;
  std::memcpy(&record[3], &length, sizeof length);
  rbSetRowFS(image, 0, ImageFormatG, reinterpret_cast<REALstring>(record));
  ExpectNothingRaised();
  EXPECT_EQ(Pixels(image, 0, 3), (Bytes{1, 2, 3}));
  // A record without data is left alone.
  record[1] = 0;
  rbSetAllFS(image, ImageFormatG, reinterpret_cast<REALstring>(record));
  rbSetRowFS(image, 0, ImageFormatG, reinterpret_cast<REALstring>(record));
  ExpectNothingRaised();
  EXPECT_EQ(Pixels(image, 0, 3), (Bytes{1, 2, 3}));
}

TEST_F(RowStrings, WithoutTheEntryThatLendsTheBytesACopyIsMadeAndGivenToTheHost) {
  const auto image = New(2, 1, ImageFormatG);
  const auto string = StringOf({5, 250});
  host_->Withhold("PluginGetStringData");
  rbSetRowFS(image, 0, ImageFormatG, string);
  EXPECT_EQ(Pixels(image, 0, 2), (Bytes{5, 250}));
  EXPECT_EQ(host_->Calls("PluginDisposeStringData"), 1);
  EXPECT_EQ(host_->Calls("REALLockString"), 0);
}

TEST_F(RowStrings, WithoutTheEntryThatTakesTheBytesBackACopyIsFreed) {
  const auto image = New(2, 1, ImageFormatG);
  const auto string = StringOf({5, 250});
  host_->Withhold("PluginGetStringData");
  host_->Withhold("PluginDisposeStringData");
  const faults::Heap heap;
  rbSetRowFS(image, 0, ImageFormatG, string);
  rbSetAllFS(image, ImageFormatG, string);
  EXPECT_EQ(Pixels(image, 0, 2), (Bytes{5, 250}));
  EXPECT_EQ(heap.MallocCalls(), 2);
  EXPECT_EQ(heap.Outstanding(), 0u);
}

TEST_F(RowStrings, BytesThatTheHostAllocatedAreFreedWhereItCannotTakeThemBack) {
  const auto image = New(2, 1, ImageFormatG);
  const auto string = StringOf({5, 250});
  host_->SetEntry(
      "PluginGetStringData", +[](REALstring, uint32_t encoding, REALstringData *data) -> uint8_t {
        *data = {std::calloc(1, 2), 2, encoding, {}};
        static_cast<uint8_t *>(data->data)[0] = 9;
        return 1;
      });
  host_->Withhold("PluginDisposeStringData");
  const faults::Heap heap;
  rbSetRowFS(image, 0, ImageFormatG, string);
  EXPECT_EQ(Pixels(image, 0, 2), (Bytes{9, 0}));
  EXPECT_EQ(heap.CallocCalls(), 1);
  EXPECT_EQ(heap.Outstanding(), 0u);
}

TEST_F(RowStrings, BytesThatCannotBeHadCountAsAnEmptyString) {
  const auto image = New(2, 1, ImageFormatG);
  const auto string = StringOf({5, 250});
  host_->SetEntry(
      "PluginGetStringData", +[](REALstring, uint32_t, REALstringData *) -> uint8_t { return 0; });
  rbSetRowFS(image, 0, ImageFormatG, string);
  ExpectRaised("NilObjectException", "Memoryblock is nil");
  rbSetAllFS(image, ImageFormatG, string);
  ExpectRaised("NilObjectException", "Memoryblock is nil");
  EXPECT_EQ(host_->Calls("PluginDisposeStringData"), 0);
}

TEST_F(RowStrings, WithoutAnyEntryForTheBytesTheStringCountsAsEmpty) {
  const auto image = New(2, 1, ImageFormatG);
  host_->Withhold("PluginGetStringData");
  host_->Withhold("StringGetCString");
  rbSetRowFS(image, 0, ImageFormatG, StringOf({5, 250}));
  ExpectRaised("NilObjectException", "Memoryblock is nil");
}

TEST_F(RowStrings, ALengthWithoutAnAddressIsLeftAlone) {
  const auto image = New(2, 1, ImageFormatG);
  const auto string = StringOf({5, 250});
  host_->SetEntry(
      "PluginGetStringData", +[](REALstring, uint32_t encoding, REALstringData *data) -> uint8_t {
        *data = {nullptr, 2, encoding, {}};
        return 1;
      });
  rbSetRowFS(image, 0, ImageFormatG, string);
  rbSetAllFS(image, ImageFormatG, string);
  ExpectNothingRaised();
  rbSetRowFS(image, 9, ImageFormatG, string);
  ExpectRaised("UnsupportedOperationException", kBadIndex);
  EXPECT_EQ(host_->Calls("PluginDisposeStringData"), 3);
}

// --- views, files, order ---

TEST_F(RowStrings, ViewsGiveAndTakeTheirOwnPixels) {
  const auto image = New(20, 6, ImageFormatBGRA);
  FillRows(image);
  const auto clip = Adopt(ClipImage5(image, 5, 1, 9, 4));
  const auto mirrored = Adopt(GetMirroredView(clip));
  const auto bytes = Taken(rbGetAllFS(mirrored, ImageFormatCMYKA));
  ExpectRaised("UnsupportedOperationException", kRGBToCMYK);
  EXPECT_EQ(bytes, Bytes{0xEE});
  for (const int32_t format : {ImageFormatRGBA, ImageFormatAG, ImageFormatGray16}) {
    Bytes expected;
    const auto to = SideOfFormat(format);
    for (int32_t y = 4; y >= 1; --y) {
      Bytes row(static_cast<size_t>(9 * to.pixelSize));
      naive::ConvertRow(SideOfFormat(ImageFormatBGRA), Row(image, y) + 5 * 4, to, row.data(), 9, false);
      expected.insert(expected.end(), row.begin(), row.end());
    }
    EXPECT_EQ(Taken(rbGetAllFS(mirrored, format)), expected);
  }
  const auto blue = Adopt(BlueChannel(image));
  auto expected = RowBytes(image, 3);
  for (size_t i = 0; i < 20; ++i) expected[4 * i] = static_cast<uint8_t>(i);
  Bytes values(20);
  std::iota(values.begin(), values.end(), 0);
  rbSetRowFS(blue, 3, ImageFormatG, StringOf(values));
  EXPECT_EQ(RowBytes(image, 3), expected);
}

TEST_F(RowStrings, RowsAreAskedForOnceEachFromTheTop) {
  const auto image = New(3, 4, ImageFormatRGB);
  scenes::RowLog log;
  log.Watch(Record(image), "r");
  const auto string = Adopt(rbGetAllFS(image, ImageFormatG));
  EXPECT_EQ(log.Take(), "r0 r1 r2 r3");
  rbSetAllFS(image, ImageFormatG, string);
  EXPECT_EQ(log.Take(), "r0 r1 r2 r3");
  rbSetAllFS(image, ImageFormatCMYK, string);
  EXPECT_EQ(log.Take(), "");
  ExpectRaised("UnsupportedOperationException", kCMYKToRGB);
}

TEST_F(RowStrings, AnImageInAFileGoesThroughAString) {
  const auto image = host_.New("PictureZVK"), other = New(10, 60, ImageFormatBGRX);
  ImageConstructorFile(image, 10, 60, ImageFormatRGB, 0, nullptr);
  ASSERT_TRUE(Record(image).Valid);
  scenes::Random random(8);
  const auto bytes = Noise(60 * 10 * 3, random);
  rbSetAllFS(image, ImageFormatRGB, StringOf(bytes));
  EXPECT_EQ(Taken(rbGetAllFS(image, ImageFormatRGB)), bytes);
  rbSetAllFS(other, ImageFormatRGB, Adopt(rbGetAllFS(image, ImageFormatRGB)));
  EXPECT_EQ(Taken(rbGetAllFS(other, ImageFormatRGB)), bytes);
  ImageDestructor(image);
  Record(image).RemoveFile = false;  // the instance ends without a second file step
}

TEST_F(RowStrings, StringsAndBlocksAgree) {
  const auto image = New(31, 2, ImageFormatABGR);
  FillRows(image);
  for (const auto &[format, pixel] : naive::kPixelsOfFormat) {
    const auto fromString = Taken(rbGetRowFS(image, 1, format));
    const auto first = host_.TakeException();
    const auto fromBlock = ExchangeTest::Taken(rbGetRowF(image, 1, format));
    EXPECT_EQ(fromString, fromBlock) << pixel;
    EXPECT_EQ(host_.TakeException(), first) << pixel;
  }
}

TEST_F(RowStrings, NothingYields) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).Yield.YieldTicks = -1;
  Record(image).Yield.LastYieldTime = -1000000;
  rbSetAllFS(image, ImageFormatBGR, Adopt(rbGetAllFS(image, ImageFormatBGR)));
  rbSetRowFS(image, 0, ImageFormatBGR, Adopt(rbGetRowFS(image, 1, ImageFormatBGR)));
  EXPECT_EQ(host_->Questions("REALYieldToRB"), 0);
}

}  // namespace
}  // namespace zvk::exchange
