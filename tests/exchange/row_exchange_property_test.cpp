#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "exchange/row_conversion.h"
#include "exchange/row_strings.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "tests/exchange/exchange_testing.h"
#include "tests/naive/row_conversion.h"

namespace zvk::exchange {
namespace {

using namespace exchange_testing;
using naive::kPixelsOfFormat;
using naive::Side;
using naive::SideOfFormat;
using naive::SideOfRecord;
using standalone::Object;
using Bytes = std::vector<uint8_t>;

// One host for all cases of a test.
PluginHost *host;

class RowExchangeProperty : public testing::Test {
 protected:
  RowExchangeProperty() : host_({.fenced = true}) { host = &host_; }

 private:
  PluginHost host_;
};

int32_t AnyFormat() {
  std::vector<int32_t> numbers;
  for (const auto &[number, pixel] : kPixelsOfFormat) numbers.push_back(number);
  return *rc::gen::elementOf(numbers);
}

// A format with the family and the alpha of another one.
int32_t FormatLike(int32_t format) {
  std::vector<int32_t> numbers;
  const Side wanted = SideOfFormat(format);
  for (const auto &[number, pixel] : kPixelsOfFormat) {
    const Side side = SideOfFormat(number);
    if (side.family == wanted.family && side.hasAlpha == wanted.hasAlpha) numbers.push_back(number);
  }
  return *rc::gen::elementOf(numbers);
}

Bytes AnyBytes(size_t count) {
  std::mt19937 random(*rc::gen::arbitrary<uint32_t>());
  return RandomBytes(random, count);
}

// An image over a fenced block of random bytes, and views of it as chance has them.
struct AnyImage {
  AnyImage() {
    const int32_t format = AnyFormat(), width = *rc::gen::inRange(1, 70), height = *rc::gen::inRange(1, 6);
    const int32_t rowSize = SideOfFormat(format).pixelSize * width + *rc::gen::inRange(0, 9);
    block = host->NewMemoryBlock(AnyBytes(static_cast<size_t>(rowSize * height)));
    image = host->New("PictureZVK");
    ImageConstructorMemory(image, block, width, height, format, rowSize);
    if (*rc::gen::arbitrary<bool>()) {
      const int32_t x = *rc::gen::inRange(0, width), y = *rc::gen::inRange(0, height);
      View(Adopt(ClipImage5(image, x, y, *rc::gen::inRange(1, width + 1), *rc::gen::inRange(1, height + 1))));
    }
    if (*rc::gen::arbitrary<bool>()) View(Adopt(GetMirroredView(image)));
    if (*rc::gen::inRange(0, 4) == 0) {
      View(Adopt((*rc::gen::element(RGBChannel, CMYKChannel, AlphaChannel, GreenChannel, BlackChannel))(image)));
    }
  }

  void View(standalone::Owned<Object> view) {
    if (view) image = view;  // keeps its parent alive
  }

  ImageClassData &Record() const { return *RecordOf(image); }
  uint8_t *Row(int32_t y) const { return Record().GetRow(&Record(), y); }
  Bytes Memory() const { return {block->Data(), block->Data() + block->Size()}; }

  standalone::Owned<standalone::MemoryBlock> block;
  standalone::Owned<Object> image;
};

Bytes BytesOfResult(REALobject result) {
  const auto block = AdoptMemoryBlock(result);
  return block ? Bytes(block->Data(), block->Data() + block->Size()) : Bytes();
}

Bytes BytesOfResult(REALstring result) {
  const auto string = Adopt(result);
  return string ? Bytes(string->Bytes().begin(), string->Bytes().end()) : Bytes();
}

std::string TakeMessage() {
  const auto exception = host->TakeException();
  return exception ? exception->message : "";
}

TEST_F(RowExchangeProperty, AnyRowReadsAsThePlainLoopsSay) {
  EXPECT_TRUE(rc::check([] {
    const AnyImage any;
    const int32_t format = AnyFormat(), y = *rc::gen::inRange(0, any.Record().Height);
    const auto invertAlpha = *rc::gen::arbitrary<bool>();
    const Side from = SideOfRecord(any.Record()), to = SideOfFormat(format);
    Bytes expected(static_cast<size_t>(to.pixelSize * any.Record().Width));
    const std::string refusal =
        naive::ConvertRow(from, any.Row(y), to, expected.data(), any.Record().Width, invertAlpha);
    if (!refusal.empty() || from.family == 0 || to.family == 0) expected.clear();
    const Bytes before = any.Memory();
    RC_ASSERT(BytesOfResult(rbGetRowFI(any.image, y, format, invertAlpha)) == expected);
    RC_ASSERT(TakeMessage() == refusal);
    RC_ASSERT(any.Memory() == before);
  }));
}

TEST_F(RowExchangeProperty, AnyRowIsWrittenAsThePlainLoopsSay) {
  EXPECT_TRUE(rc::check([] {
    const AnyImage any;
    const int32_t format = AnyFormat(), y = *rc::gen::inRange(0, any.Record().Height);
    const auto invertAlpha = *rc::gen::arbitrary<bool>();
    const Side from = SideOfFormat(format), to = SideOfRecord(any.Record());
    const Bytes bytes = AnyBytes(static_cast<size_t>(from.pixelSize * any.Record().Width));
    Bytes expected = any.Memory();
    const std::string refusal = naive::ConvertRow(
        from, bytes.data(), to, expected.data() + (any.Row(y) - any.block->Data()), any.Record().Width, invertAlpha);
    rbSetRowFI(any.image, y, format, invertAlpha, host->NewMemoryBlock(bytes));
    RC_ASSERT(TakeMessage() == refusal);
    RC_ASSERT(any.Memory() == expected);
  }));
}

TEST_F(RowExchangeProperty, StringsAndBlocksAgree) {
  EXPECT_TRUE(rc::check([] {
    const AnyImage any;
    const int32_t format = AnyFormat();
    Bytes rows;
    std::string message;
    for (int32_t y = 0; y < any.Record().Height; ++y) {
      const Bytes row = BytesOfResult(rbGetRowF(any.image, y, format));
      message = TakeMessage();
      RC_ASSERT(BytesOfResult(rbGetRowFS(any.image, y, format)) == row);
      RC_ASSERT(TakeMessage() == message);
      rows.insert(rows.end(), row.begin(), row.end());
    }
    RC_ASSERT(BytesOfResult(rbGetAllFS(any.image, format)) == rows);
    RC_ASSERT(TakeMessage() == message);
  }));
}

TEST_F(RowExchangeProperty, AllRowsAreWrittenAsOneByOne) {
  EXPECT_TRUE(rc::check([] {
    const AnyImage any;
    const int32_t format = AnyFormat(), width = any.Record().Width;
    const auto rowBytes = static_cast<size_t>(SideOfFormat(format).pixelSize * width);
    const Bytes bytes = AnyBytes(rowBytes * static_cast<size_t>(any.Record().Height));
    const Bytes before = any.Memory();
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    rbSetAllFS(any.image, format, host->NewString(text));
    const std::string message = TakeMessage();
    const Bytes after = any.Memory();
    std::copy(before.begin(), before.end(), any.block->Data());
    for (int32_t y = 0; y < any.Record().Height; ++y) {
      rbSetRowFS(any.image, y, format, host->NewString(text.substr(static_cast<size_t>(y) * rowBytes, rowBytes)));
      RC_ASSERT(TakeMessage() == message);
    }
    RC_ASSERT(any.Memory() == after);
  }));
}

TEST_F(RowExchangeProperty, ARowOfTheSameFamilyAndAlphaComesBack) {
  EXPECT_TRUE(rc::check([] {
    const AnyImage any;
    const Side own = SideOfRecord(any.Record());
    RC_PRE(own.family != 0);
    const char *const likeness = own.family == 'g' ? "gA" : own.family == 'R' ? "RGBA" : "CMYKA";
    int32_t like = 0;
    for (const auto &[number, pixel] : kPixelsOfFormat) {
      if (pixel == likeness) like = number;
    }
    // The formats with alpha, or those without.
    const int32_t format = FormatLike(own.hasAlpha ? like : own.family == 'g' ? 11 : own.family == 'R' ? 1 : 23);
    const int32_t y = *rc::gen::inRange(0, any.Record().Height);
    const auto invertAlpha = *rc::gen::arbitrary<bool>();
    const Bytes written = AnyBytes(static_cast<size_t>(SideOfFormat(format).pixelSize * any.Record().Width));
    rbSetRowFI(any.image, y, format, invertAlpha, host->NewMemoryBlock(written));
    Bytes expected = BytesOfResult(rbGetRowFI(any.image, y, format, invertAlpha));
    RC_ASSERT(expected.size() == written.size());
    // Filler of the format is not part of the exchange: it is zero in what is read.
    const Side side = SideOfFormat(format);
    for (size_t i = 0; i < written.size(); ++i) {
      const char meaning = kPixelsOfFormat.at(format)[i % static_cast<size_t>(side.pixelSize)];
      RC_ASSERT(expected[i] == (meaning == '.' || meaning == '+' ? 0 : written[i]));
    }
  }));
}

}  // namespace
}  // namespace zvk::exchange
