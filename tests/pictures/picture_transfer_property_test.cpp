// Random images, pictures and rectangles, in both directions, against plain loops over the host's own pixels.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "image/image_formats.h"
#include "pictures/picture_export.h"
#include "pictures/picture_import.h"
#include "tests/pictures/picture_testing.h"

namespace zvk {
namespace {

using namespace picture_testing;
using standalone::HostKind;
using standalone::Object;
using standalone::Picture;

int32_t Between(int32_t least, int32_t most) {
  return *rc::gen::noShrink(rc::gen::resize(rc::kNominalSize, rc::gen::inRange(least, most + 1)));
}

// Several cases in a run of the property: many rectangles come out empty.
template <class Case>
void Repeat(Case check) {
  for (int i = 0; i < 10; ++i) check();
}

// The numbers of one call: positions and sizes around small images, or (one call in four) anywhere in 32 bits.
struct Numbers {
  const bool near = Between(0, 3) != 0;

  int32_t Position() const { return near ? Between(-3, 5) : Wild(); }
  int32_t Size() const { return near ? Between(-4, Between(0, 2) == 0 ? 150 : 16) : Wild(); }

  static int32_t Wild() {
    switch (Between(0, 3)) {
      case 0:
        return INT32_MAX - Between(0, 20);
      case 1:
        return INT32_MIN + Between(0, 20);
      case 2:
        return static_cast<int32_t>(static_cast<uint32_t>(Between(0, 65535)) << 16);
      default:
        return Between(-5, 16);
    }
  }
};

// Mostly small; at times long enough for the loops that take many pixels at once.
int32_t AnySide() { return Between(0, 3) != 0 ? Between(1, 12) : Between(12, 150); }

int32_t AnyFormat() {
  const int32_t format = Between(1, 40);
  return format < 14 ? format : format + 1;
}

// An image of any format over memory that ends right behind its last pixel, with spare bytes between pixels and between
// rows, offsets that may stand in any order, fall together or point at the next pixel, and the rows either way up.
struct AnyImage {
  explicit AnyImage(PluginHost &host) {
    const int32_t width = AnySide(), height = Between(1, 12), format = AnyFormat();
    image = host.New("PictureZVK");
    ImageConstructor(image, 1, 1, format);
    const int32_t pixelSize = RecordOf(image)->PixelSize + (Between(0, 3) == 0 ? Between(1, 3) : 0);
    const int32_t shift = Between(0, 3) == 0 ? Between(1, 2) * pixelSize : 0;
    const int32_t rowBytes = width * pixelSize + shift;
    const int32_t rowSize = rowBytes + Between(0, 5);
    block = host.NewMemoryBlock(rowSize * (height - 1) + rowBytes);
    ImageDestructor(image);
    ImageConstructorMemory(image, block, width, height, format, rowSize);
    ImageClassData &created = record();
    created.PixelSize = pixelSize;
    for (int32_t *offset :
         {&created.RedOffset, &created.GreenOffset, &created.BlueOffset, &created.GrayOffset, &created.AlphaOffset,
          &created.CyanOffset, &created.MagentaOffset, &created.YellowOffset, &created.BlackOffset}) {
      *offset += shift;
    }
    if (created.BitsPerComponent == 8 && Between(0, 3) == 0) {
      created.RedOffset = shift + Between(0, pixelSize - 1);
      created.GreenOffset = shift + Between(0, pixelSize - 1);
      created.BlueOffset = shift + Between(0, pixelSize - 1);
    }
    if (Between(0, 2) == 0) created.GetRow = GetRowLinearMirrored;
    std::mt19937 random(static_cast<uint32_t>(Between(0, 1000000)));
    for (int32_t i = 0; i < block->Size(); ++i) block->Data()[i] = RandomByte(random);
  }

  ImageClassData &record() const { return *RecordOf(image); }
  std::vector<uint8_t> AllBytes() const { return {block->Data(), block->Data() + block->Size()}; }

  Owned<standalone::MemoryBlock> block;
  Owned<Object> image;
};

// --- export ---

Pixel ColourOf(ImageClassData &record, int32_t x, int32_t y) {
  const auto sample = [&](int32_t offset) { return int32_t{*SampleAt(record, x, y, offset)}; };
  int32_t red, green, blue;
  if (record.IsGray) {
    // The high byte of a 16-bit sample is the second one on this machine.
    red = green = blue = sample(record.GrayOffset + (record.BitsPerComponent == 16 ? 1 : 0));
  } else if (record.IsRGB) {
    red = sample(record.RedOffset);
    green = sample(record.GreenOffset);
    blue = sample(record.BlueOffset);
  } else {
    const int32_t white = 255 - sample(record.BlackOffset);
    red = white - sample(record.CyanOffset) * white / 255;
    green = white - sample(record.MagentaOffset) * white / 255;
    blue = white - sample(record.YellowOffset) * white / 255;
  }
  return {static_cast<uint8_t>(red), static_cast<uint8_t>(green), static_cast<uint8_t>(blue)};
}

Pixel AlphaOf(ImageClassData &record, int32_t x, int32_t y) {
  const uint8_t alpha = *SampleAt(record, x, y, record.AlphaOffset);
  return {alpha, alpha, alpha};
}

// The positions of a caller's axis that lie in the image, counted one by one.
std::set<int64_t> Meant(int64_t position, int64_t size, int64_t limit) {
  if (size < 0) {
    position += size;
    size = -size;
  }
  std::set<int64_t> meant;
  for (int64_t i = 0; i < limit; ++i) {
    if (i >= position && i < position + size) meant.insert(i);
  }
  return meant;
}

void ExpectExport(ImageClassData &record, REALobject result, const std::set<int64_t> &columns,
                  const std::set<int64_t> &rows, Pixel (*expected)(ImageClassData &, int32_t, int32_t)) {
  auto picture = AdoptPicture(result);
  RC_ASSERT(static_cast<bool>(picture));
  RC_ASSERT(IsFree(*picture));
  RC_ASSERT(picture->Width() == static_cast<int32_t>(columns.size()));
  RC_ASSERT(picture->Height() == static_cast<int32_t>(rows.size()));
  int32_t y = 0;
  for (const int64_t row : rows) {
    int32_t x = 0;
    for (const int64_t column : columns) {
      RC_ASSERT(picture->GetPixel(x++, y) == expected(record, static_cast<int32_t>(column), static_cast<int32_t>(row)));
    }
    ++y;
  }
}

void CheckExport(PluginHost &host, int32_t layout) {
  MakeNewPicturesOf(host, layout);
  const AnyImage image(host);
  ImageClassData &record = image.record();
  const Numbers numbers;
  const int32_t x = numbers.Position(), y = numbers.Position(), width = numbers.Size(), height = numbers.Size();
  const auto before = image.AllBytes();
  const auto columns = Meant(x, width, record.Width), rows = Meant(y, height, record.Height);
  const REALobject colours = rbCopyPicture(image.image, x, y, width, height);
  const REALobject mask = rbCopyMask(image.image, x, y, width, height);
  RC_ASSERT(image.AllBytes() == before);
  const bool expected = !columns.empty() && !rows.empty();
  if (colours != nullptr) {
    RC_ASSERT(expected && (record.IsGray || record.IsRGB || record.IsCMYK));
    ExpectExport(record, colours, columns, rows, ColourOf);
  } else {
    // Where a sum wraps the size may stay too large for any picture, though some pixels are meant.
    RC_ASSERT(!expected || !numbers.near || !(record.IsGray || record.IsRGB || record.IsCMYK));
  }
  if (mask != nullptr) {
    RC_ASSERT(expected && record.HasAlpha);
    ExpectExport(record, mask, columns, rows, AlphaOf);
  } else {
    RC_ASSERT(!expected || !numbers.near || !record.HasAlpha);
  }
}

TEST(ExportProperty, OnADesktopEveryImageIsCopiedAsThePlainLoopDoes) {
  PluginHost host({.kind = HostKind::Desktop, .fenced = true});
  EXPECT_TRUE(rc::check([&] { Repeat([&] { CheckExport(host, Between(1, 6)); }); }));
}

TEST(ExportProperty, OnAConsoleEveryImageIsCopiedAsThePlainLoopDoes) {
  PluginHost host({.fenced = true});
  EXPECT_TRUE(rc::check([&] { Repeat([&] { CheckExport(host, kGD); }); }));
}

// --- import ---

// Destination and source positions of one axis that belong together: after the order of the first two steps, those that
// exist on both sides.
std::vector<std::pair<int32_t, int32_t>> Pairs(int32_t dest, int32_t size, int32_t source, int32_t destLimit,
                                               int32_t sourceLimit) {
  int64_t d = dest, n = size, s = source;
  if (s < 0) {
    n += s;
    d += s;
    s = 0;
  }
  if (n < 0) {
    d += n;
    n = -n;
  }
  std::vector<std::pair<int32_t, int32_t>> pairs;
  for (int64_t column = 0; column < destLimit; ++column) {
    const int64_t i = column - d;
    if (i >= 0 && i < n && s + i < sourceLimit) pairs.emplace_back(column, s + i);
  }
  return pairs;
}

void CheckImport(PluginHost &host, int32_t layout) {
  const AnyImage image(host);
  ImageClassData &record = image.record();
  auto picture = NewFilledPicture(host, AnySide(), Between(1, 12), layout, static_cast<uint32_t>(Between(0, 9999)));
  const Numbers numbers;
  const int32_t x = numbers.Position(), y = numbers.Position(), width = numbers.Size(), height = numbers.Size();
  const int32_t sourceX = numbers.Position(), sourceY = numbers.Position();
  // Mostly the family that the image has channels for.
  const int32_t family = Between(0, 9) == 0 ? Between(0, 3) : record.HasRed ? 0 : Between(1, 3);

  // The plain loop works on the storage itself, which is then put back.
  const auto before = image.AllBytes();
  const bool refused = family == 0 ? !(record.HasRed && record.HasGreen && record.HasBlue) : !record.HasGray;
  for (const auto &[row, sourceRow] : Pairs(y, height, sourceY, record.Height, picture->Height())) {
    for (const auto &[column, sourceColumn] : Pairs(x, width, sourceX, record.Width, picture->Width())) {
      if (refused) continue;
      const Pixel pixel = picture->GetPixel(sourceColumn, sourceRow);
      if (family == 0) {
        *SampleAt(record, column, row, record.RedOffset) = pixel.red;
        *SampleAt(record, column, row, record.GreenOffset) = pixel.green;
        *SampleAt(record, column, row, record.BlueOffset) = pixel.blue;
      } else {
        const uint8_t samples[] = {pixel.red, pixel.green, pixel.blue};
        *SampleAt(record, column, row, record.GrayOffset) = samples[family - 1];
      }
    }
  }
  const auto expected = image.AllBytes();
  std::copy(before.begin(), before.end(), image.block->Data());

  constexpr decltype(&rbDrawPictureRGB8) kDraws[] = {rbDrawPictureRGB8, rbDrawPictureRedToGrayChannel8,
                                                     rbDrawPictureGreenToGrayChannel8, rbDrawPictureBlueToGrayChannel8};
  kDraws[family](image.image, picture, x, y, width, height, sourceX, sourceY);
  RC_ASSERT(IsFree(*picture));
  // Where a sum wraps more or less may be drawn than the caller meant; the fences see to it that nothing outside is.
  if (numbers.near) RC_ASSERT(image.AllBytes() == expected);
}

TEST(ImportProperty, OnADesktopEveryPictureIsDrawnAsThePlainLoopDoes) {
  PluginHost host({.kind = HostKind::Desktop, .fenced = true});
  EXPECT_TRUE(rc::check([&] { Repeat([&] { CheckImport(host, Between(1, 6)); }); }));
}

TEST(ImportProperty, OnAConsoleEveryPictureIsDrawnAsThePlainLoopDoes) {
  PluginHost host({.fenced = true});
  EXPECT_TRUE(rc::check([&] { Repeat([&] { CheckImport(host, kGD); }); }));
}

}  // namespace
}  // namespace zvk
