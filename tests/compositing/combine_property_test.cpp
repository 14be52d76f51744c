// Random images on all kinds of storage, views of them, random rectangles and colours, against plain nested loops.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "compositing/combine.h"
#include "image/views.h"
#include "tests/naive/combine.h"
#include "tests/support/stored_image.h"
#include "tests/support/transfer_rule.h"

namespace zvk::compositing {
namespace {

using naive::combining::Numbers;
using namespace stored_image;
using transfer_rule::AnyNumber;
using transfer_rule::AnyWidth;
using Image = Owned<standalone::Object>;

RC_GTEST_PROP(CombineRectangle, CombinesOwnRuleIsThatOfATransfer, (uint32_t seed)) {
  transfer_rule::CheckOwnRule(seed, naive::combining::FitNaively);
}

PluginHost *host;

class CombineProperty : public testing::Test {
 protected:
  CombineProperty() : host_({.fenced = true}) { host = &host_; }

 private:
  PluginHost host_;
};

Kind AnyKind(std::mt19937 &random) { return kKinds[Between(random, 0, 4)]; }

// Mostly gray and RGB.
int32_t AnyCombinedFormat(std::mt19937 &random) {
  return Between(random, 0, 9) == 0 ? AnyFormat(random) : Between(random, 1, 13);
}

StoredImage AnyImage(std::mt19937 &random, int32_t width, int32_t height) {
  StoredImage image(*host, AnyKind(random), width, height, AnyCombinedFormat(random), Between(random, 0, 7));
  image.Fill(random);
  return image;
}

// What one call is given besides the images.
struct Arguments {
  bool premultiplied;
  bool useColours;
  int32_t foreColour;
  int32_t maskColour;
  Numbers numbers;
};

Arguments AnyArguments(std::mt19937 &random) {
  const auto position = [&] { return Between(random, 0, 1) == 0 ? 0 : Between(random, -4, 12); };
  const auto size = [&] { return Between(random, 0, 1) == 0 ? Between(random, 1, 100) : Between(random, -1, 16); };
  const auto colour = [&] {
    if (Between(random, 0, 2) == 0) return static_cast<int32_t>(random() | 0x80000000u);
    return RandomByte(random) << 16 | RandomByte(random) << 8 | RandomByte(random) | Between(random, 0, 127) << 24;
  };
  Arguments arguments{Between(random, 0, 1) == 0, Between(random, 0, 1) == 0, colour(), colour(), {}};
  arguments.numbers = {position(), position(), position(), position(), size(), size()};
  return arguments;
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
void CheckCombine(std::mt19937 &random, const Image &dest, const Image &image, const Image &mask,
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

// A view of the stored image as large as `image`, or empty.
Image ViewAsLargeAs(std::mt19937 &random, const Image &image, const StoredImage &stored) {
  const ImageClassData &wanted = *RecordOf(image), &whole = stored.Record();
  if (whole.Width < wanted.Width || whole.Height < wanted.Height) return {};
  if (whole.Width == wanted.Width && whole.Height == wanted.Height && Between(random, 0, 1) == 0) return stored.Image();
  if (stored.Storage() == Kind::Table) return {};
  Image view = Adopt(ClipImage5(stored, Between(random, 0, whole.Width - wanted.Width),
                                Between(random, 0, whole.Height - wanted.Height), wanted.Width, wanted.Height));
  if (Between(random, 0, 2) == 0) view = Adopt(GetMirroredView(view));
  if (Between(random, 0, 2) == 0 && RecordOf(view)->ChannelCount > 0) {
    view = Adopt(Channel(view, Between(random, 0, RecordOf(view)->ChannelCount - 1)));
  }
  return view;
}

TEST_F(CombineProperty, ImagesAreCombinedAsThePlainLoopsSay) {
  EXPECT_TRUE(rc::check([](uint32_t seed) {
    std::mt19937 random(seed);
    const int32_t width = AnyWidth(random), height = Between(random, 1, 9);
    StoredImage dest = AnyImage(random, AnyWidth(random), Between(random, 1, 9));
    StoredImage image = AnyImage(random, width, height), mask = AnyImage(random, width, height);
    for (int i = 0; i < 10; ++i) {
      const Image target = AnyView(random, dest), source = AnyView(random, image);
      CheckCombine(random, target, source, {}, {&dest, &image});
      const Image over = ViewAsLargeAs(random, source, mask);
      if (over) CheckCombine(random, target, source, over, {&dest, &image, &mask});
      CheckCombine(random, target, image.Image(), mask.Image(), {&dest, &image, &mask});
    }
  }));
}

TEST_F(CombineProperty, ViewsOfOneImageAreCombinedInOrder) {
  EXPECT_TRUE(rc::check([](uint32_t seed) {
    std::mt19937 random(seed);
    StoredImage image = AnyImage(random, AnyWidth(random), Between(random, 1, 9));
    for (int i = 0; i < 10; ++i) {
      const Image target = AnyView(random, image), source = AnyView(random, image);
      CheckCombine(random, target, source, {}, {&image});
      const Image over = ViewAsLargeAs(random, source, image);
      if (over) CheckCombine(random, target, source, over, {&image});
      CheckCombine(random, image.Image(), image.Image(), image.Image(), {&image});
    }
  }));
}

TEST_F(CombineProperty, NumbersAnywhereIn32BitsLeadNowhereElse) {
  EXPECT_TRUE(rc::check([](uint32_t seed) {
    std::mt19937 random(seed);
    const int32_t width = AnyWidth(random), height = Between(random, 1, 9);
    StoredImage dest = AnyImage(random, AnyWidth(random), Between(random, 1, 9));
    StoredImage image = AnyImage(random, width, height), mask = AnyImage(random, width, height);
    const auto imageBefore = image.Bytes(), maskBefore = mask.Bytes();
    for (int i = 0; i < 30; ++i) {
      // The pages around blocks and pictures see to it that nothing outside is touched.
      const Image target = AnyView(random, dest);
      const bool masked = Between(random, 0, 1) == 0;
      const int32_t foreColour = AnyNumber(random), maskColour = AnyNumber(random);
      Numbers n{AnyNumber(random), AnyNumber(random), AnyNumber(random),
                AnyNumber(random), AnyNumber(random), AnyNumber(random)};
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
  }));
}

}  // namespace
}  // namespace zvk::compositing
