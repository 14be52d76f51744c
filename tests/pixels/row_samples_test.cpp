#include "pixels/row_samples.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "tests/support/fence.h"

namespace zvk::pixels {
namespace {

using Bytes = std::vector<uint8_t>;
using Offsets = std::vector<int32_t>;

// Calls check(pixelSize, count, offsets) for rows of every pixel size and of lengths around the kernels' blocks.
// The offsets are mostly apart from each other, sometimes in one place or in another pixel.
template <class Check>
void ForManyRows(Check &&check) {
  std::minstd_rand random(1);
  for (int32_t pixelSize = 1; pixelSize <= 9; ++pixelSize) {
    for (const int32_t count : {1, 2, 3, 17, 63, 64, 65, 127, 128, 129, 200, 1000}) {
      for (int32_t run = 0; run < 12; ++run) {
        Offsets offsets(1 + random() % 5);
        const int32_t shift = run % 3 == 0 ? 2 * pixelSize : 0;
        for (size_t i = 0; i < offsets.size(); ++i) {
          const auto place = static_cast<int32_t>(run % 2 == 0 ? i : random());
          offsets[i] = shift + static_cast<int32_t>(static_cast<uint32_t>(place) % static_cast<uint32_t>(pixelSize));
        }
        if (run == 5) offsets[0] += 3 * pixelSize;
        check(pixelSize, count, offsets);
      }
    }
  }
}

// Compares `fast`, called with the first pixel of a fenced row, with `plain`, called once for each sample in order.
template <class Fast, class Plain>
void ExpectAlike(int32_t pixelSize, int32_t count, const Offsets &offsets, Fast fast, Plain plain) {
  const int32_t highest = *std::max_element(offsets.begin(), offsets.end());
  const auto size = static_cast<size_t>((count - 1) * pixelSize + highest + 1);
  Bytes expected(size);
  std::minstd_rand random(static_cast<uint32_t>(size));
  for (uint8_t &byte : expected) byte = random() % 4 == 0 ? uint8_t{255} : static_cast<uint8_t>(random() >> 8);
  const fence::Block block(size);
  std::memcpy(block.Data(), expected.data(), size);
  for (int32_t x = 0; x < count; ++x) {
    for (size_t i = 0; i < offsets.size(); ++i) {
      uint8_t &sample = expected[static_cast<size_t>(x * pixelSize + offsets[i])];
      sample = plain(i, sample);
    }
  }
  fast(PixelRow{block.Data(), pixelSize, count});
  EXPECT_EQ(Bytes(block.Data(), block.Data() + size), expected)
      << count << " pixels of " << pixelSize << " bytes, the first of " << offsets.size() << " samples at "
      << offsets[0];
}

TEST(RowSamples, PaintedAsSampleBySample) {
  const Bytes values{1, 0, 255, 9, 200};
  ForManyRows([&](int32_t pixelSize, int32_t count, const Offsets &offsets) {
    ExpectAlike(
        pixelSize, count, offsets, [&](const PixelRow &row) { PaintSamples(row, offsets, values); },
        [&](size_t i, uint8_t) { return values[i]; });
  });
}

TEST(RowSamples, ComplementedAsSampleBySample) {
  ForManyRows([&](int32_t pixelSize, int32_t count, const Offsets &offsets) {
    ExpectAlike(
        pixelSize, count, offsets, [&](const PixelRow &row) { ComplementSamples(row, offsets); },
        [](size_t, uint8_t sample) { return static_cast<uint8_t>(255 - sample); });
  });
}

TEST(RowSamples, BlendedAsSampleBySample) {
  const std::vector<uint32_t> addends{0, 77 * 257 * 100, 0xFFFFFFFF, 65535, 0x12345678};
  for (const uint32_t weight : {0u, 65535u, 200u * 257, 0x80000001u, 0xFFFFFEFFu}) {
    ForManyRows([&](int32_t pixelSize, int32_t count, const Offsets &offsets) {
      ExpectAlike(
          pixelSize, count, offsets, [&](const PixelRow &row) { BlendSamples(row, offsets, weight, addends); },
          [&](size_t i, uint8_t sample) {
            const uint64_t sum = uint64_t{sample} * weight + addends[i];
            return static_cast<uint8_t>(static_cast<uint32_t>(sum) / 65536);
          });
    });
  }
}

TEST(RowSamples, WithoutPixelsNothingIsTouched) {
  const Offsets offsets{0, 1};
  const Bytes values{1, 2};
  const std::vector<uint32_t> addends{1, 2};
  for (const int32_t count : {0, -1, -100}) {
    PaintSamples({nullptr, 2, count}, offsets, values);
    ComplementSamples({nullptr, 2, count}, offsets);
    BlendSamples({nullptr, 2, count}, offsets, 1, addends);
  }
}

}  // namespace
}  // namespace zvk::pixels
