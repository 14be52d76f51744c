// Random images on all kinds of storage, views of them, and random rectangles, against plain nested loops.
#include <gtest/gtest.h>

#include <cstdint>

#include "compositing/copy_pixels.h"
#include "tests/naive/copy_pixels.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/rectangles.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/views.h"

namespace zvk::compositing {
namespace {

using naive::copying::Numbers;
using namespace scenes;
using naive::SampleAt;

TEST(CopyPixelsRectangle, TheCopysOwnRuleIsThatOfATransfer) {
  CheckCases([](Random &random) {
    for (int i = 0; i < 5000; ++i) RC_ASSERT(OwnRuleIsThatOfATransfer(random, naive::copying::FitNaively));
  });
}

class CopyPixelsProperty : public testing::Test {
 protected:
  StoredImage AnyImage(Random &random, int32_t format) {
    return AnyStoredImage(random, host_, random.Side(100), random.Between(1, 9), format);
  }

  PluginHost host_{{.fenced = true}};
};

// One copy, which must leave both storages as the plain loops do.
void CheckCopy(Random &random, const ImageObject &self, StoredImage &selfStorage, const ImageObject &source,
               StoredImage &sourceStorage) {
  const auto selfBefore = selfStorage.Bytes(), sourceBefore = sourceStorage.Bytes();
  const AnyMove move(random, true);
  const Numbers n{move.destX, move.destY, move.width, move.height, move.sourceX, move.sourceY};
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
  CheckCases([this](Random &random) {
    const int32_t format = AnyFormat(random);
    StoredImage dest = AnyImage(random, format), source = AnyImage(random, AnyFormatBeside(random, format));
    for (int i = 0; i < 10; ++i) {
      const auto self = AnyView(random, dest), from = AnyView(random, source);
      CheckCopy(random, self, dest, from, source);
    }
  });
}

TEST_F(CopyPixelsProperty, ViewsOfOneImageAreCopiedInOrder) {
  CheckCases([this](Random &random) {
    StoredImage image = AnyImage(random, AnyFormat(random));
    for (int i = 0; i < 10; ++i) {
      const auto self = AnyView(random, image), from = AnyView(random, image);
      CheckCopy(random, self, image, from, image);
      CheckCopy(random, image.Image(), image, image.Image(), image);
    }
  });
}

TEST_F(CopyPixelsProperty, NumbersAnywhereIn32BitsLeadNowhereElse) {
  CheckCases([this](Random &random) {
    const int32_t format = AnyFormat(random);
    StoredImage dest = AnyImage(random, format), source = AnyImage(random, AnyFormatBeside(random, format));
    const auto sourceBefore = source.Bytes();
    for (int i = 0; i < 30; ++i) {
      // The pages around blocks and pictures see to it that nothing outside is touched.
      const auto self = AnyView(random, dest), from = AnyView(random, source);
      ImageClassData &to = *RecordOf(self), &read = *RecordOf(from);
      const AnyMove move(random, false);
      Numbers n{move.destX, move.destY, move.width, move.height, move.sourceX, move.sourceY};
      const uint8_t result = rbCopyPixels8(self, from, n.destX, n.destY, n.width, n.height, n.sourceX, n.sourceY);
      RC_ASSERT(source.Bytes() == sourceBefore);
      // Whatever was copied, the result is that of the rules.
      const bool converts = naive::copying::GoesInBlocks(to, read) ||
                            !naive::copying::WritesOf(to, read, SampleAt(read, 0, 0, 0)).empty();
      RC_ASSERT(result == (naive::copying::FitNaively(n, to, read) && converts ? 1 : 0));
    }
  });
}

}  // namespace
}  // namespace zvk::compositing
