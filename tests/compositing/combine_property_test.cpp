// Random images on all kinds of storage, views of them, random rectangles and colours, against plain nested loops.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "compositing/combine.h"
#include "tests/naive/combine.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/rectangles.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/views.h"

namespace zvk::compositing {
namespace {

using naive::combining::Numbers;
using namespace scenes;
using Image = ImageObject;

TEST(CombineRectangle, CombinesOwnRuleIsThatOfATransfer) {
  CheckCases([](Random &random) {
    for (int i = 0; i < 5000; ++i) RC_ASSERT(OwnRuleIsThatOfATransfer(random, naive::combining::FitNaively));
  });
}

class CombineProperty : public testing::Test {
 protected:
  StoredImage AnyImage(Random &random, int32_t width, int32_t height) {
    return AnyStoredImage(random, host_, width, height, AnyGrayOrRGBFormat(random));
  }

  PluginHost host_{{.fenced = true}};
};

// What one call is given besides the images.
struct Arguments {
  bool premultiplied;
  bool useColours;
  int32_t foreColour;
  int32_t maskColour;
  Numbers numbers;
};

Arguments AnyArguments(Random &random) {
  const auto colour = [&] {
    if (random.OneIn(3)) return static_cast<int32_t>(random.Bits() | 0x80000000u);
    return random.Byte() << 16 | random.Byte() << 8 | random.Byte() | random.Between(0, 127) << 24;
  };
  const AnyMove move(random, true);
  return {random.OneIn(2),
          random.OneIn(2),
          colour(),
          colour(),
          {move.destX, move.destY, move.sourceX, move.sourceY, move.width, move.height}};
}

// The result, and what becomes of the pixels. The copy is tested on its own, and not told here.
bool CombineNaively(ImageClassData &dest, ImageClassData &image, ImageClassData *mask, Arguments arguments) {
  Numbers n = arguments.numbers;
  if (n.width <= 0 || n.height <= 0) return false;
  const bool wide = dest.BitsPerComponent == 16 || image.BitsPerComponent == 16;
  if (mask != nullptr) {
    if (wide || mask->BitsPerComponent == 16) return false;
    if (mask->Width != image.Width || mask->Height != image.Height) return false;
    if (!naive::combining::FitNaively(n, dest, image)) return false;
    naive::combining::BlendNaively(dest, image, *mask, arguments.premultiplied, n);
    return true;
  }
  const bool imageIsMask = arguments.maskColour < 0;
  if (!imageIsMask && wide) return false;
  if (!naive::combining::FitNaively(n, dest, image)) return false;
  const int32_t flat = imageIsMask ? arguments.foreColour : arguments.useColours ? arguments.maskColour : 0;
  naive::combining::BlendFlatNaively(dest, image, arguments.premultiplied, imageIsMask, flat, n);
  return true;
}

// One call, which must leave all storages as the plain loops do.
void CheckCombine(Random &random, const Image &dest, const Image &image, const Image &mask,
                  const std::vector<StoredImage *> &storages) {
  const Arguments arguments = AnyArguments(random);
  if (!mask && arguments.foreColour < 0 && arguments.maskColour < 0) return;
  std::vector<std::vector<uint8_t>> before, expected;
  for (const StoredImage *storage : storages) before.push_back(storage->Bytes());
  ImageClassData *maskRecord = mask ? RecordOf(mask) : nullptr;
  const bool expectedResult = CombineNaively(*RecordOf(dest), *RecordOf(image), maskRecord, arguments);
  for (const StoredImage *storage : storages) expected.push_back(storage->Bytes());
  for (size_t i = 0; i < storages.size(); ++i) storages[i]->SetBytes(before[i]);
  const Numbers &n = arguments.numbers;
  const uint8_t result =
      PictureCombine1pm(dest, image, arguments.premultiplied, mask, n.destX, n.destY, n.sourceX, n.sourceY, n.width,
                        n.height, arguments.useColours, arguments.foreColour, arguments.maskColour);
  RC_ASSERT(result == (expectedResult ? 1 : 0));
  for (size_t i = 0; i < storages.size(); ++i) RC_ASSERT(storages[i]->Bytes() == expected[i]);
}

TEST_F(CombineProperty, ImagesAreCombinedAsThePlainLoopsSay) {
  CheckCases([this](Random &random) {
    const int32_t width = random.Side(100), height = random.Between(1, 9);
    StoredImage dest = AnyImage(random, random.Side(100), random.Between(1, 9));
    StoredImage image = AnyImage(random, width, height), mask = AnyImage(random, width, height);
    for (int i = 0; i < 10; ++i) {
      const Image target = AnyView(random, dest), source = AnyView(random, image);
      CheckCombine(random, target, source, {}, {&dest, &image});
      const Image over = AnyViewOfSize(random, mask, RecordOf(source)->Width, RecordOf(source)->Height);
      if (over) CheckCombine(random, target, source, over, {&dest, &image, &mask});
      CheckCombine(random, target, image.Image(), mask.Image(), {&dest, &image, &mask});
    }
  });
}

TEST_F(CombineProperty, ViewsOfOneImageAreCombinedInOrder) {
  CheckCases([this](Random &random) {
    StoredImage image = AnyImage(random, random.Side(100), random.Between(1, 9));
    for (int i = 0; i < 10; ++i) {
      const Image target = AnyView(random, image), source = AnyView(random, image);
      CheckCombine(random, target, source, {}, {&image});
      const Image over = AnyViewOfSize(random, image, RecordOf(source)->Width, RecordOf(source)->Height);
      if (over) CheckCombine(random, target, source, over, {&image});
      CheckCombine(random, image.Image(), image.Image(), image.Image(), {&image});
    }
  });
}

TEST_F(CombineProperty, NumbersAnywhereIn32BitsLeadNowhereElse) {
  CheckCases([this](Random &random) {
    const int32_t width = random.Side(100), height = random.Between(1, 9);
    StoredImage dest = AnyImage(random, random.Side(100), random.Between(1, 9));
    StoredImage image = AnyImage(random, width, height), mask = AnyImage(random, width, height);
    const auto imageBefore = image.Bytes(), maskBefore = mask.Bytes();
    for (int i = 0; i < 30; ++i) {
      // The pages around blocks and pictures see to it that nothing outside is touched.
      const Image target = AnyView(random, dest);
      const bool masked = random.OneIn(2);
      const int32_t foreColour = random.Number(), maskColour = random.Number();
      const AnyMove move(random, false);
      Numbers n{move.destX, move.destY, move.sourceX, move.sourceY, move.width, move.height};
      const uint8_t result =
          PictureCombine1pm(target, image, i % 2 == 0, masked ? mask.Image().Handle() : nullptr, n.destX, n.destY,
                            n.sourceX, n.sourceY, n.width, n.height, true, foreColour, maskColour);
      RC_ASSERT(image.Bytes() == imageBefore);
      RC_ASSERT(mask.Bytes() == maskBefore);
      if (!masked && foreColour < 0 && maskColour < 0) continue;  // a copy, whose result is tested with it
      // Whatever was drawn, the result is that of the rules.
      const auto isWide = [](const ImageClassData &record) { return record.BitsPerComponent == 16; };
      bool expected = n.width > 0 && n.height > 0;
      if (masked || maskColour >= 0) expected &= !isWide(*RecordOf(target)) && !isWide(image.Record());
      if (masked) expected &= !isWide(mask.Record());
      RC_ASSERT(result == (expected && naive::combining::FitNaively(n, *RecordOf(target), image.Record()) ? 1 : 0));
    }
  });
}

}  // namespace
}  // namespace zvk::compositing
