#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "exchange/row_conversion.h"
#include "exchange/row_strings.h"
#include "image/image_formats.h"
#include "tests/naive/row_conversion.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/views.h"

namespace zvk::exchange {
namespace {

using namespace scenes;
using naive::kPixelsOfFormat;
using naive::Side;
using naive::SideOfFormat;
using naive::SideOfRecord;

// One host for all cases of a test.
PluginHost *host;

class RowExchangeProperty : public testing::Test {
 protected:
  RowExchangeProperty() : host_({.fenced = true}) { host = &host_; }

 private:
  PluginHost host_;
};

// A format with the family and the alpha of another one.
int32_t FormatLike(Random &random, int32_t format) {
  std::vector<int32_t> numbers;
  const Side wanted = SideOfFormat(format);
  for (const auto &[number, pixel] : kPixelsOfFormat) {
    const Side side = SideOfFormat(number);
    if (side.family == wanted.family && side.hasAlpha == wanted.hasAlpha) numbers.push_back(number);
  }
  return random.Of(numbers);
}

// A view of an image of any kind.
struct AnyImage {
  explicit AnyImage(Random &random) : stored(AnyStored(random)), image(AnyView(random, stored)) {}

  static StoredImage AnyStored(Random &random) {
    const int32_t width = random.Side(70), height = random.Between(1, 6);
    return AnyStoredImage(random, *host, width, height, AnyFormat(random));
  }

  ImageClassData &Record() const { return *RecordOf(image); }
  uint8_t *Row(int32_t y) const { return Record().GetRow(&Record(), y); }
  Bytes Memory() const { return stored.Bytes(); }

  StoredImage stored;
  ImageObject image;
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
  CheckCases([](Random &random) {
    const AnyImage any(random);
    const int32_t format = AnyFormat(random), y = random.Between(0, any.Record().Height - 1);
    const auto invertAlpha = random.OneIn(2);
    const Side from = SideOfRecord(any.Record()), to = SideOfFormat(format);
    Bytes expected(static_cast<size_t>(to.pixelSize * any.Record().Width));
    const std::string refusal =
        naive::ConvertRow(from, any.Row(y), to, expected.data(), any.Record().Width, invertAlpha);
    if (!refusal.empty() || from.family == 0 || to.family == 0) expected.clear();
    const Bytes before = any.Memory();
    RC_ASSERT(BytesOfResult(rbGetRowFI(any.image, y, format, invertAlpha)) == expected);
    RC_ASSERT(TakeMessage() == refusal);
    RC_ASSERT(any.Memory() == before);
  });
}

TEST_F(RowExchangeProperty, AnyRowIsWrittenAsThePlainLoopsSay) {
  CheckCases([](Random &random) {
    const AnyImage any(random);
    const int32_t format = AnyFormat(random), y = random.Between(0, any.Record().Height - 1);
    const auto invertAlpha = random.OneIn(2);
    const Side from = SideOfFormat(format), to = SideOfRecord(any.Record());
    const Bytes bytes = Noise(static_cast<size_t>(from.pixelSize * any.Record().Width), random);
    const Bytes before = any.Memory();
    const std::string refusal = naive::ConvertRow(from, bytes.data(), to, any.Row(y), any.Record().Width, invertAlpha);
    const Bytes expected = any.Memory();
    any.stored.SetBytes(before);
    rbSetRowFI(any.image, y, format, invertAlpha, host->NewMemoryBlock(bytes));
    RC_ASSERT(TakeMessage() == refusal);
    RC_ASSERT(any.Memory() == expected);
  });
}

TEST_F(RowExchangeProperty, StringsAndBlocksAgree) {
  CheckCases([](Random &random) {
    const AnyImage any(random);
    const int32_t format = AnyFormat(random);
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
  });
}

TEST_F(RowExchangeProperty, AllRowsAreWrittenAsOneByOne) {
  CheckCases([](Random &random) {
    const AnyImage any(random);
    const int32_t format = AnyFormat(random), width = any.Record().Width;
    const auto rowBytes = static_cast<size_t>(SideOfFormat(format).pixelSize * width);
    const Bytes bytes = Noise(rowBytes * static_cast<size_t>(any.Record().Height), random);
    const Bytes before = any.Memory();
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    rbSetAllFS(any.image, format, host->NewString(text));
    const std::string message = TakeMessage();
    const Bytes after = any.Memory();
    any.stored.SetBytes(before);
    for (int32_t y = 0; y < any.Record().Height; ++y) {
      rbSetRowFS(any.image, y, format, host->NewString(text.substr(static_cast<size_t>(y) * rowBytes, rowBytes)));
      RC_ASSERT(TakeMessage() == message);
    }
    RC_ASSERT(any.Memory() == after);
  });
}

TEST_F(RowExchangeProperty, ARowOfTheSameFamilyAndAlphaComesBack) {
  CheckCases([](Random &random) {
    const AnyImage any(random);
    const Side own = SideOfRecord(any.Record());
    RC_PRE(own.family != 0);
    // A clip of the colours alone has them all in one place.
    std::set<int32_t> places;
    const std::string channels = naive::ChannelsOf(any.Record());
    for (const char channel : channels) places.insert(naive::OffsetOf(any.Record(), channel));
    RC_PRE(places.size() == channels.size());
    const char *const likeness = own.family == 'g' ? "gA" : own.family == 'R' ? "RGBA" : "CMYKA";
    int32_t like = 0;
    for (const auto &[number, pixel] : kPixelsOfFormat) {
      if (pixel == likeness) like = number;
    }
    // The formats with alpha, or those without.
    const int32_t format = FormatLike(random, own.hasAlpha        ? like
                                              : own.family == 'g' ? 11
                                              : own.family == 'R' ? 1
                                                                  : 23);
    const int32_t y = random.Between(0, any.Record().Height - 1);
    const auto invertAlpha = random.OneIn(2);
    const Bytes written = Noise(static_cast<size_t>(SideOfFormat(format).pixelSize * any.Record().Width), random);
    rbSetRowFI(any.image, y, format, invertAlpha, host->NewMemoryBlock(written));
    Bytes expected = BytesOfResult(rbGetRowFI(any.image, y, format, invertAlpha));
    RC_ASSERT(expected.size() == written.size());
    // Filler of the format is not part of the exchange: it is zero in what is read.
    const Side side = SideOfFormat(format);
    for (size_t i = 0; i < written.size(); ++i) {
      const char meaning = kPixelsOfFormat.at(format)[i % static_cast<size_t>(side.pixelSize)];
      RC_ASSERT(expected[i] == (meaning == '.' || meaning == '+' ? 0 : written[i]));
    }
  });
}

}  // namespace
}  // namespace zvk::exchange
