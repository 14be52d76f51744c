// Random images on all kinds of storage, views of them, and random rectangles, against plain nested loops.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "geometry/copy_pixels.h"
#include "tests/naive/copy_pixels.h"
#include "tests/support/stored_image.h"
#include "tests/support/transfer_rule.h"

namespace zvk::geometry {
namespace {

using naive::copying::Numbers;
using namespace stored_image;
using transfer_rule::AnyNumber;
using transfer_rule::AnyWidth;

// --- the rectangle ---

RC_GTEST_PROP(CopyPixelsRectangle, TheCopysOwnRuleIsThatOfATransfer, (uint32_t seed)) {
  transfer_rule::CheckOwnRule(seed, naive::copying::FitNaively);
}

// --- the copy ---

PluginHost *host;

class CopyPixelsProperty : public testing::Test {
 protected:
  CopyPixelsProperty() : host_({.fenced = true}) { host = &host_; }

 private:
  PluginHost host_;
};

Kind AnyKind(std::mt19937 &random) { return kKinds[Between(random, 0, 4)]; }

StoredImage AnyImage(std::mt19937 &random, int32_t format) {
  StoredImage image(*host, AnyKind(random), AnyWidth(random), Between(random, 1, 9), format, Between(random, 0, 7));
  image.Fill(random);
  return image;
}

// A format that is often that of another image, or a common one.
int32_t FormatBeside(std::mt19937 &random, int32_t format) {
  switch (Between(random, 0, 2)) {
    case 0:
      return format;
    case 1:
      return AnyFormat(random);
    default:
      return std::vector<int32_t>{1, 2, 7, 11, 12, 24, 41}[static_cast<size_t>(Between(random, 0, 6))];
  }
}

int32_t Position(std::mt19937 &random) { return Between(random, 0, 1) == 0 ? 0 : Between(random, -4, 12); }
int32_t Size(std::mt19937 &random) {
  return Between(random, 0, 1) == 0 ? Between(random, 1, 100) : Between(random, -16, 16);
}

// One copy, which must leave both storages as the plain loops do.
void CheckCopy(std::mt19937 &random, const Owned<standalone::Object> &self, StoredImage &selfStorage,
               const Owned<standalone::Object> &source, StoredImage &sourceStorage) {
  const auto selfBefore = selfStorage.Bytes(), sourceBefore = sourceStorage.Bytes();
  const Numbers n{Position(random), Position(random), Size(random), Size(random), Position(random), Position(random)};
  const bool expected = naive::copying::CopyNaively(*RecordOf(self), selfStorage, *RecordOf(source), sourceStorage, n);
  const auto selfExpected = selfStorage.Bytes(), sourceExpected = sourceStorage.Bytes();
  sourceStorage.SetBytes(sourceBefore);
  selfStorage.SetBytes(selfBefore);
  const uint8_t result = rbCopyPixels8(self, source, n.destX, n.destY, n.width, n.height, n.sourceX, n.sourceY);
  RC_ASSERT(result == (expected ? 1 : 0));
  RC_ASSERT(selfStorage.Bytes() == selfExpected);
  RC_ASSERT(sourceStorage.Bytes() == sourceExpected);
}

TEST_F(CopyPixelsProperty, TwoImagesAreCopiedAsThePlainLoopsSay) {
  EXPECT_TRUE(rc::check([](uint32_t seed) {
    std::mt19937 random(seed);
    const int32_t format = AnyFormat(random);
    StoredImage dest = AnyImage(random, format), source = AnyImage(random, FormatBeside(random, format));
    for (int i = 0; i < 10; ++i) {
      const auto self = AnyView(random, dest), from = AnyView(random, source);
      CheckCopy(random, self, dest, from, source);
    }
  }));
}

TEST_F(CopyPixelsProperty, ViewsOfOneImageAreCopiedInOrder) {
  EXPECT_TRUE(rc::check([](uint32_t seed) {
    std::mt19937 random(seed);
    StoredImage image = AnyImage(random, AnyFormat(random));
    for (int i = 0; i < 10; ++i) {
      const auto self = AnyView(random, image), from = AnyView(random, image);
      CheckCopy(random, self, image, from, image);
      CheckCopy(random, image.Image(), image, image.Image(), image);
    }
  }));
}

TEST_F(CopyPixelsProperty, NumbersAnywhereIn32BitsLeadNowhereElse) {
  EXPECT_TRUE(rc::check([](uint32_t seed) {
    std::mt19937 random(seed);
    const int32_t format = AnyFormat(random);
    StoredImage dest = AnyImage(random, format), source = AnyImage(random, FormatBeside(random, format));
    const auto sourceBefore = source.Bytes();
    for (int i = 0; i < 30; ++i) {
      // The pages around blocks and pictures see to it that nothing outside is touched.
      const auto self = AnyView(random, dest), from = AnyView(random, source);
      ImageClassData &to = *RecordOf(self), &read = *RecordOf(from);
      Numbers n{AnyNumber(random), AnyNumber(random), AnyNumber(random),
                AnyNumber(random), AnyNumber(random), AnyNumber(random)};
      const uint8_t result = rbCopyPixels8(self, from, n.destX, n.destY, n.width, n.height, n.sourceX, n.sourceY);
      RC_ASSERT(source.Bytes() == sourceBefore);
      // Whatever was copied, the result is that of the rules.
      const bool converts = naive::copying::GoesInBlocks(to, read) ||
                            !naive::copying::WritesOf(to, read, SampleAt(read, 0, 0, 0)).empty();
      RC_ASSERT(result == (naive::copying::FitNaively(n, to, read) && converts ? 1 : 0));
    }
  }));
}

}  // namespace
}  // namespace zvk::geometry
