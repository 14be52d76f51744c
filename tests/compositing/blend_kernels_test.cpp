#include "compositing/blend_kernels.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "tests/support/fence.h"

namespace zvk::compositing {
namespace {

// The exact formulas, with a division and without any limit of width.
int32_t InterpolatedExactly(int32_t dest, int32_t source, int32_t mask) {
  return ((255 - mask) * source + dest * mask) / 255;
}
int32_t AddedExactly(int32_t scaled, int32_t source, int32_t mask) { return (scaled * mask / 255 + source) % 256; }

TEST(BlendKernels, InterpolateEverySampleExactly) {
  for (int32_t dest = 0; dest < 256; ++dest) {
    for (int32_t source = 0; source < 256; ++source) {
      for (int32_t mask = 0; mask < 256; ++mask) {
        ASSERT_EQ(Interpolate(static_cast<uint8_t>(dest), static_cast<uint8_t>(source), static_cast<uint8_t>(mask)),
                  InterpolatedExactly(dest, source, mask))
            << dest << ", " << source << ", " << mask;
      }
    }
  }
}

TEST(BlendKernels, ScaleAndAddEverySampleExactly) {
  for (int32_t scaled = 0; scaled < 256; ++scaled) {
    for (int32_t source = 0; source < 256; ++source) {
      for (int32_t mask = 0; mask < 256; ++mask) {
        ASSERT_EQ(ScaleAndAdd(static_cast<uint8_t>(scaled), static_cast<uint8_t>(source), static_cast<uint8_t>(mask)),
                  AddedExactly(scaled, source, mask))
            << scaled << ", " << source << ", " << mask;
      }
    }
  }
}

// Runs of 256 x 256 bytes and one more: every source with every mask, for some of the others.
class BlendRuns : public testing::Test {
 protected:
  static constexpr int32_t kCount = 65537;

  BlendRuns() : dest_(kCount), source_(kCount), mask_(kCount) {
    for (int32_t i = 0; i < kCount; ++i) {
      source_.Data()[i] = static_cast<uint8_t>(i);
      mask_.Data()[i] = static_cast<uint8_t>(i >> 8);
    }
  }
  BlendBytes BytesOver(uint8_t dest) {
    std::fill(dest_.Data(), dest_.Data() + kCount, dest);
    return {dest_.Data(), source_.Data(), mask_.Data(), kCount};
  }
  template <class Expected>
  void ExpectEach(const Expected &expected) {
    for (int32_t i = 0; i < kCount; ++i) {
      ASSERT_EQ(dest_.Data()[i], expected(source_.Data()[i], mask_.Data()[i])) << i;
    }
  }

  fence::Block dest_, source_, mask_;
};

TEST_F(BlendRuns, GiveTheBytesOfSinglePixels) {
  for (int32_t dest = 0; dest < 256; ++dest) {
    const auto sample = static_cast<uint8_t>(dest);
    Interpolation::Bytes(BytesOver(sample));
    ExpectEach([&](uint8_t source, uint8_t mask) { return Interpolate(sample, source, mask); });
    Sum<Scaled::Own>::Bytes(BytesOver(sample));
    ExpectEach([&](uint8_t source, uint8_t mask) { return ScaleAndAdd(sample, source, mask); });
    Sum<Scaled::Alpha>::Bytes(BytesOver(sample));
    ExpectEach([&](uint8_t source, uint8_t mask) { return ScaleAndAdd(sample, source, mask); });
    // The bytes that are there play no part.
    Sum<Scaled::Full>::Bytes(BytesOver(sample));
    ExpectEach([&](uint8_t source, uint8_t mask) { return static_cast<uint8_t>(source + mask); });
  }
}

TEST_F(BlendRuns, OfAnyLengthStayInside) {
  for (ptrdiff_t count = 0; count < 300; ++count) {
    fence::Block dest(static_cast<size_t>(count) + 1), source(dest.Size()), mask(dest.Size());
    std::fill(source.Data(), source.Data() + source.Size(), uint8_t{9});
    dest.Data()[0] = 77;
    Sum<Scaled::Own>::Bytes({dest.Data() + 1, source.Data() + 1, mask.Data() + 1, count});
    EXPECT_EQ(dest.Data()[0], 77);
    EXPECT_TRUE(std::all_of(dest.Data() + 1, dest.Data() + 1 + count, [](uint8_t byte) { return byte == 9; }));
  }
}

TEST_F(BlendRuns, GiveTheGrayOfAnInterpolatedColour) {
  for (const Samples<3> &colour : {Samples<3>{0, 0, 0}, {255, 255, 255}, {255, 0, 0}, {12, 200, 99}, {1, 254, 255}}) {
    for (int32_t dest = 0; dest < 256; ++dest) {
      const auto expected = [&](uint8_t /*source*/, uint8_t mask) {
        const int32_t red = InterpolatedExactly(dest, colour[0], mask);
        const int32_t green = InterpolatedExactly(dest, colour[1], mask);
        return (77 * red + 151 * green + 28 * InterpolatedExactly(dest, colour[2], mask)) / 256;
      };
      const GrayOfInterpolation kernel{colour};
      kernel.Bytes(BytesOver(static_cast<uint8_t>(dest)));
      ExpectEach(expected);
      for (int32_t mask = 0; mask < 256; ++mask) {
        const auto sample = static_cast<uint8_t>(mask);
        ASSERT_EQ(kernel.Pixel({static_cast<uint8_t>(dest)}, {0}, {sample})[0], expected(0, sample));
      }
    }
  }
}

TEST(BlendKernels, OfASumTheScaledSampleIsTheOwnOneOrAlphaOr255) {
  const Samples<4> dest{200, 100, 50, 128}, source{10, 20, 30, 40}, mask{255, 200, 100, 255};
  EXPECT_EQ(Sum<Scaled::Own>::Pixel(dest, source, mask), (Samples<4>{210, 98, 49, 168}));
  EXPECT_EQ(Sum<Scaled::Alpha>::Pixel(dest, source, mask), (Samples<4>{138, 120, 80, 168}));
  EXPECT_EQ(Sum<Scaled::Full>::Pixel(dest, source, mask), (Samples<4>{9, 220, 130, 39}));
}

}  // namespace
}  // namespace zvk::compositing
