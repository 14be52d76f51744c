// What the tests of the row exchange share: a fixture with a host, and the conversion of a row as plain nested loops.
// The loops know the formats by a list of their own and share nothing with the plug-in but the record's fields.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "standalone/runtime/memory_block.h"
#include "tests/support/plugin_host.h"

namespace exchange_testing {

using standalone::Owned;

// The bytes of a pixel by the format's number: g is gray, a dot has no meaning for the exchange.
inline const std::map<int32_t, std::string> kPixelsOfFormat{
    {1, "RGB"},    {2, "RGBA"},    {3, "RGB."},     {4, "ARGB"},      {5, ".RGB"},   {6, "BGR"},   {7, "BGRA"},
    {8, "BGR."},   {9, "ABGR"},    {10, ".BGR"},    {11, "g"},        {12, "gA"},    {13, "Ag"},   {15, "g.."},
    {16, ".g."},   {17, "..g"},    {18, "g..."},    {19, ".g.."},     {20, "..g."},  {21, "...g"}, {22, "."},
    {23, "CMYK"},  {24, "CMYKA"},  {25, "ACMYK"},   {26, "CMYK."},    {27, ".CMYK"}, {28, "KYMC"}, {29, "KYMCA"},
    {30, "AKYMC"}, {31, "KYMC."},  {32, ".KYMC"},   {33, "."},        {34, ".."},    {35, "..."},  {36, "...."},
    {37, "....."}, {38, "......"}, {39, "......."}, {40, "........"}, {41, "g."}};

// One side of a conversion: where the samples are, in bytes from the start of a pixel.
struct Side {
  int32_t pixelSize = 0;
  char family = 0;  // 'g', 'R' or 'C', or 0
  bool hasAlpha = false;
  std::map<char, int32_t> at;
};

inline Side SideOfFormat(int32_t format) {
  Side side;
  const std::string &pixel = kPixelsOfFormat.at(format);
  side.pixelSize = static_cast<int32_t>(pixel.size());
  for (size_t i = 0; i < pixel.size(); ++i) {
    if (pixel[i] == '.') continue;
    side.at[pixel[i]] = static_cast<int32_t>(i);
    if (pixel[i] == 'g' || pixel[i] == 'R' || pixel[i] == 'C') side.family = pixel[i];
    if (pixel[i] == 'A') side.hasAlpha = true;
  }
  return side;
}

inline Side SideOfRecord(const zvk::image::ImageClassData &record) {
  Side side;
  side.pixelSize = record.PixelSize;
  side.family = record.IsCMYK ? 'C' : record.IsRGB ? 'R' : record.IsGray ? 'g' : 0;
  side.hasAlpha = record.HasAlpha;
  side.at = {{'R', record.RedOffset},     {'G', record.GreenOffset},  {'B', record.BlueOffset},
             {'g', record.GrayOffset},    {'A', record.AlphaOffset},  {'C', record.CyanOffset},
             {'M', record.MagentaOffset}, {'Y', record.YellowOffset}, {'K', record.BlackOffset}};
  return side;
}

inline const char *ColoursOf(char family) { return family == 'g' ? "g" : family == 'R' ? "RGB" : "CMYK"; }

// Converts pixel after pixel, all samples of one read before any is written. Returns what is to be raised; nothing has
// been written then. Without a family nothing is written and nothing raised.
inline std::string NaiveConvert(const Side &from, const uint8_t *source, const Side &to, uint8_t *dest, int32_t width,
                                bool invertAlpha) {
  if (from.family == 0 || to.family == 0) return "";
  if (from.family == 'R' && to.family == 'C') return "Conversion from RGB to CMYK is not supported.";
  if (from.family == 'C' && to.family == 'R') return "Conversion from CMYK to RGB is not supported.";
  for (int64_t x = 0; x < width; ++x) {
    std::map<char, int> sample;
    for (const char *c = ColoursOf(from.family); *c != 0; ++c) sample[*c] = source[x * from.pixelSize + from.at.at(*c)];
    int alpha = 0;
    if (from.hasAlpha) alpha = source[x * from.pixelSize + from.at.at('A')];

    std::map<char, int> result;
    for (const char *c = ColoursOf(to.family); *c != 0; ++c) {
      if (from.family == to.family) {
        result[*c] = sample[*c];
      } else if (from.family == 'g') {
        result[*c] = sample['g'];
      } else if (from.family == 'C') {
        result[*c] = sample['K'];
      } else {
        result[*c] = (77 * sample['R'] + 151 * sample['G'] + 28 * sample['B']) / 256;
      }
    }
    for (const char *c = ColoursOf(to.family); *c != 0; ++c) {
      dest[x * to.pixelSize + to.at.at(*c)] = static_cast<uint8_t>(result[*c]);
    }
    if (from.hasAlpha && to.hasAlpha) {
      dest[x * to.pixelSize + to.at.at('A')] = static_cast<uint8_t>(invertAlpha ? 255 - alpha : alpha);
    }
  }
  return "";
}

// Random bytes, 0 and 255 more often than the others.
inline std::vector<uint8_t> RandomBytes(std::mt19937 &random, size_t count) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t &byte : bytes) {
    const uint32_t value = random();
    byte = value % 8 == 0 ? 0 : value % 8 == 1 ? 255 : static_cast<uint8_t>(value >> 8);
  }
  return bytes;
}

class ExchangeTest : public testing::Test {
 protected:
  explicit ExchangeTest(standalone::HostOptions options = {}) : host_(std::move(options)) {}

  // An image in memory of its own.
  Owned<standalone::Object> New(int32_t width, int32_t height, int32_t format) {
    auto image = host_.New("PictureZVK");
    zvk::image::ImageConstructor(image, width, height, format);
    return image;
  }

  // An image over a block.
  Owned<standalone::Object> NewOver(const Owned<standalone::MemoryBlock> &block, int32_t width, int32_t height,
                                    int32_t format, int32_t rowSize) {
    auto image = host_.New("PictureZVK");
    zvk::image::ImageConstructorMemory(image, block, width, height, format, rowSize);
    return image;
  }

  static zvk::image::ImageClassData &Record(const Owned<standalone::Object> &image) {
    return *zvk::image::RecordOf(image);
  }

  static uint8_t *Row(const Owned<standalone::Object> &image, int32_t index) {
    return Record(image).GetRow(&Record(image), index);
  }

  static std::vector<uint8_t> RowBytes(const Owned<standalone::Object> &image, int32_t index) {
    const uint8_t *row = Row(image, index);
    return {row, row + Record(image).RowSize};
  }

  static void SetRowBytes(const Owned<standalone::Object> &image, int32_t index, const std::vector<uint8_t> &bytes) {
    std::copy(bytes.begin(), bytes.end(), Row(image, index));
  }

  void FillRows(const Owned<standalone::Object> &image, uint32_t seed = 1) {
    std::mt19937 random(seed);
    for (int32_t y = 0; y < Record(image).Height; ++y) {
      SetRowBytes(image, y, RandomBytes(random, static_cast<size_t>(Record(image).RowSize)));
    }
  }

  // The bytes of the block that a handler returned, which ends here; a single 0xEE for nil.
  std::vector<uint8_t> Taken(REALobject result) {
    const auto block = AdoptMemoryBlock(result);
    return block ? std::vector<uint8_t>(block->Data(), block->Data() + block->Size()) : std::vector<uint8_t>{0xEE};
  }

  void ExpectNothingRaised() { EXPECT_FALSE(host_.TakeException()); }
  void ExpectRaised(const std::string &className, const std::string &message) {
    const auto exception = host_.TakeException();
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->className, className);
    EXPECT_EQ(exception->message, message);
    EXPECT_EQ(exception->errorNumber, 0);
  }

  PluginHost host_;
};

}  // namespace exchange_testing
