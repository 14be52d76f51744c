#include "filters/lookup_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "pixels/layouts.h"
#include "tests/filters/filter_testing.h"
#include "tests/support/cpu_levels.h"
#include "tests/support/fence.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

ToneTable AnyTable() {
  ToneTable table = {};
  FillNoise(table.data(), table.size(), 5);
  return table;
}

TEST(MapBytes, EveryCountIsServedWithinItsBytes) {
  const ToneTable table = AnyTable();
  for (const fence::Side side : {fence::Side::kBefore, fence::Side::kAfter}) {
    for (size_t count = 0; count < 300; ++count) {
      const fence::Block source(count + 1, side), dest(count + 1, side);
      const size_t first = side == fence::Side::kBefore ? 0 : 1;  // against the fence
      FillNoise(source.Data(), count + 1, static_cast<uint32_t>(count));
      Bytes expected(dest.Data(), dest.Data() + count + 1);
      for (size_t i = 0; i < count; ++i) expected[first + i] = table[source.Data()[first + i]];
      ForEachForm(
          MapBytes,
          [&](auto map) {
            std::fill_n(dest.Data() + first, count, uint8_t{0});
            map(table, source.Data() + first, dest.Data() + first, static_cast<ptrdiff_t>(count));
            ASSERT_EQ(Bytes(dest.Data(), dest.Data() + count + 1), expected) << count;
          },
          CpuLevel::AVX512);
    }
  }
}

TEST(MapBytes, EverySampleIsLookedUpAtEveryPlace) {
  const ToneTable table = AnyTable();
  for (size_t shift = 0; shift < 64; ++shift) {
    Bytes samples(256 + shift), expected(256 + shift);
    for (size_t i = 0; i < samples.size(); ++i) {
      samples[i] = static_cast<uint8_t>(i + shift);
      expected[i] = table[samples[i]];
    }
    ForEachForm(
        MapBytes,
        [&](auto map) {
          // Source and dest may be the same bytes.
          Bytes bytes = samples;
          map(table, bytes.data(), bytes.data(), static_cast<ptrdiff_t>(bytes.size()));
          ASSERT_EQ(bytes, expected) << shift;
        },
        CpuLevel::AVX512);
  }
}

class ToneMapping : public FilterTest {};

using RGBLayout = Layout<ColourFamily::RGB, false>;

TEST_F(ToneMapping, EachChannelGoesThroughItsTable) {
  std::array<ToneTable, 3> tables = {};
  for (size_t c = 0; c < 3; ++c) tables[c][7] = static_cast<uint8_t>(10 + c);
  const Image self = New(2, 1, ImageFormatRGB, {{7, 7, 7, 7, 0, 7}}), dest = New(2, 1, ImageFormatBGR);
  MapSamples<RGBLayout>(Record(self), Record(dest), tables);
  EXPECT_EQ(PixelsOf(dest), (Grid{{12, 11, 10, 12, 0, 10}}));
}

TEST_F(ToneMapping, EachSampleIsWrittenBeforeTheNextOneIsRead) {
  // Red and blue change places within the same bytes, and the pixels of dest begin one byte further on.
  const auto block = host_.NewMemoryBlock(Bytes{1, 2, 3, 4, 5, 6, 7});
  const Image self = host_.New("PictureZVK"), swapped = host_.New("PictureZVK");
  ImageConstructorMemory(self, block, 2, 1, ImageFormatRGB, 6);
  ImageConstructorMemory(swapped, block, 2, 1, ImageFormatBGR, 6);
  ToneTable addTen = {};
  for (size_t i = 0; i < 256; ++i) addTen[i] = static_cast<uint8_t>(i + 10);
  MapSamples<RGBLayout>(Record(self), Record(swapped), addTen);
  // Red 1 goes as 11 to the place of blue, where it is read and goes as 21 to that of red.
  EXPECT_EQ(Bytes(block->Data(), block->Data() + 7), (Bytes{21, 12, 11, 24, 15, 14, 7}));
  Record(swapped).Buffer += 1;
  MapSamples<RGBLayout>(Record(self), Record(swapped), addTen);
  // 21 to byte 3 as 31, from there to byte 6 as 41; 12 to byte 2 and from there to byte 1; 15 to byte 5, then to 4.
  EXPECT_EQ(Bytes(block->Data(), block->Data() + 7), (Bytes{21, 32, 22, 31, 35, 25, 41}));
}

TEST_F(ToneMapping, RowsThatOverlapInPartAreMappedInOrder) {
  const auto block = host_.NewMemoryBlock(Bytes(200, 1));
  const Image self = host_.New("PictureZVK"), dest = host_.New("PictureZVK");
  ImageConstructorMemory(self, block, 150, 1, ImageFormatG, 150);
  ImageConstructorMemory(dest, block, 150, 1, ImageFormatG, 150);
  Record(dest).Buffer += 1;
  ToneTable next = {};
  for (size_t i = 0; i < 256; ++i) next[i] = static_cast<uint8_t>(i + 1);
  MapSamples<Layout<ColourFamily::Gray, false>>(Record(self), Record(dest), next);
  for (size_t i = 0; i <= 150; ++i) EXPECT_EQ(block->Data()[i], i + 1);
  EXPECT_EQ(block->Data()[151], 1);
}

}  // namespace
}  // namespace zvk::filters
