// What pixels/overlap says of images anywhere in a piece of memory, against a count of every byte that is read and
// written.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <vector>

#include "image/image_storage.h"
#include "pixels/layouts.h"
#include "pixels/overlap.h"
#include "tests/scenes/cases.h"

namespace zvk::pixels {
namespace {

using RGB = Layout<ColourFamily::RGB, false>;

using scenes::CheckCases;
using scenes::Random;

// A record over memory that nobody touches; only its addresses are looked at.
ImageClassData AnyImage(Random &random, uint8_t *memory) {
  ImageClassData image{};
  image.GetRow = random.Between(0, 1) == 0 ? GetRowLinear : GetRowLinearMirrored;
  image.Buffer = memory + random.Between(0, 120);
  image.Width = random.Between(1, 5);
  image.Height = random.Between(1, 4);
  image.PixelSize = random.Between(1, 5);
  const int32_t tight = image.Width * image.PixelSize;
  image.RowSize = random.Between(0, 2) == 0 ? random.Between(-tight, tight) : tight + random.Between(0, 6);
  image.RowOffset = random.Between(0, 2);
  const int32_t start = random.Between(0, 2) == 0 ? random.Between(-6, 12) : 0;
  const bool moved = random.Between(0, 2) == 0;
  image.RedOffset = start + (moved ? random.Between(-3, 6) : 0);
  image.GreenOffset = start + (moved ? random.Between(-3, 6) : 1);
  image.BlueOffset = start + (moved ? random.Between(-3, 6) : 2);
  image.IsRGB = true;
  return image;
}

// How often each byte is a sample of the first `columns` and `rows`.
std::map<const uint8_t *, int32_t> SamplesOf(ImageClassData &image, int32_t columns, int32_t rows) {
  std::map<const uint8_t *, int32_t> samples;
  for (int32_t y = 0; y < rows; ++y) {
    for (int32_t x = 0; x < columns; ++x) {
      for (const int32_t offset : {image.RedOffset, image.GreenOffset, image.BlueOffset}) {
        ++samples[image.GetRow(&image, y) + ptrdiff_t{x} * image.PixelSize + offset];
      }
    }
  }
  return samples;
}

// True if no byte is a sample of two of the first pixels.
bool PixelsStandAlone(ImageClassData &image, int32_t columns, int32_t rows) {
  std::map<const uint8_t *, int32_t> owners;
  for (int32_t i = 0; i < columns * rows; ++i) {
    const uint8_t *pixel = image.GetRow(&image, i / columns) + ptrdiff_t{i % columns} * image.PixelSize;
    for (const int32_t offset : {image.RedOffset, image.GreenOffset, image.BlueOffset}) {
      if (owners.emplace(pixel + offset, i).first->second != i) return false;
    }
  }
  return true;
}

bool EachIsOne(const std::map<const uint8_t *, int32_t> &samples) {
  for (const auto &[byte, count] : samples) {
    if (count != 1) return false;
  }
  return true;
}

bool HaveCommonByte(const std::map<const uint8_t *, int32_t> &a, const std::map<const uint8_t *, int32_t> &b) {
  for (const auto &[byte, count] : a) {
    if (b.contains(byte)) return true;
  }
  return false;
}

TEST(OverlapProperty, WhatIsSaidToBeApartHasNoByteInCommon) {
  CheckCases([](Random &random) {
    std::vector<uint8_t> memory(1000);
    ImageClassData source = AnyImage(random, memory.data() + 400), dest = AnyImage(random, memory.data() + 400);
    const int32_t columns = random.Between(1, 5), rows = random.Between(1, 4);
    if (columns > dest.Width || rows > dest.Height) {
      RC_ASSERT(!ImagesAreApart(source, dest, columns, rows));
      return;
    }
    const auto read = SamplesOf(source, source.Width, source.Height);
    const auto written = SamplesOf(dest, columns, rows);
    const bool disjoint = ImagesAreApart(source, dest, columns, rows);
    const bool unobservable = OrderIsUnobservable<RGB>(source, dest, columns, rows);
    RC_CLASSIFY(disjoint, "disjoint");
    RC_CLASSIFY(unobservable, "unobservable");
    if (disjoint) RC_ASSERT(!HaveCommonByte(read, written));
    if (unobservable) RC_ASSERT(disjoint && PixelsStandAlone(dest, columns, rows));
    if (unobservable && SamplesAreApart<RGB>(dest)) RC_ASSERT(EachIsOne(written));
    if (SamplesAreApart<RGB>(dest)) RC_ASSERT(EachIsOne(SamplesOf(dest, dest.Width, 1)));
    // The other way round for pixels that fill their rows, with samples that nobody has moved.
    const bool plain = SamplesAreSideBySide(RGB::OffsetsOf(dest)) && dest.PixelSize == 3;
    if (plain) RC_ASSERT(EachIsOne(written) == RowsAreApart(dest, RangeOf(RGB::OffsetsOf(dest)), columns, rows));
  });
}

TEST(OverlapProperty, SamplesThatSpanNoMoreThanAPixelAreJudgedExactly) {
  CheckCases([](Random &random) {
    std::vector<uint8_t> memory(1000);
    ImageClassData image = AnyImage(random, memory.data() + 400);
    if (PixelsAreApart<RGB>(image)) {
      RC_ASSERT(SamplesAreApart<RGB>(image) == EachIsOne(SamplesOf(image, image.Width, 1)));
    }
    RC_ASSERT(SamplesAreDistinct(RGB::OffsetsOf(image)) == EachIsOne(SamplesOf(image, 1, 1)));
  });
}

TEST(OverlapProperty, RunsOverlapIfSomeByteIsInBoth) {
  CheckCases([](Random &random) {
    const std::vector<uint8_t> memory(60);
    const int32_t first = random.Between(0, 20), size = random.Between(1, 20), otherFirst = random.Between(0, 20),
                  otherSize = random.Between(1, 20);
    bool common = false;
    for (int32_t i = first; i < first + size; ++i) common = common || (i >= otherFirst && i < otherFirst + otherSize);
    RC_ASSERT(RunsOverlap(memory.data() + first, size, memory.data() + otherFirst, otherSize) == common);
  });
}

}  // namespace
}  // namespace zvk::pixels
