// Random rotations of random images, with new images from all kinds of factories, against the plain loops: every byte
// of the result.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "geometry/rotate.h"
#include "image/image_factory.h"
#include "image/views.h"
#include "tests/geometry/turn_generators.h"
#include "tests/geometry/turn_testing.h"
#include "tests/naive/rotate.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;
using naive::RotateBackground;

// What the global factory answers, the same way for both rotations: in a file, larger, in other formats, a part of an
// image with some channels in other pixels, or one image for everything, if it is large enough.
struct FactoryPlan {
  std::vector<int32_t> more;
  std::vector<int32_t> formats;
  std::vector<bool> inFile;
  std::vector<bool> parts;
  REALobject shared = nullptr;
  size_t asked = 0;
};
FactoryPlan plan;

REALobject NewPicture(REALobject, int32_t width, int32_t height, int32_t format) {
  const size_t i = plan.asked++ % plan.more.size();
  if (plan.shared != nullptr) {
    REALLockObject(plan.shared);
    return plan.shared;
  }
  REALobject picture = REALnewInstance("PictureZVK");
  if (plan.formats[i] != 0) format = plan.formats[i];
  width += plan.more[i];
  height += plan.more[i];
  const int32_t wider = plan.parts[i] ? width + 1 : width;
  if (plan.inFile[i]) {
    ImageConstructorFile(picture, wider, height, format, 0, nullptr);
    if (RecordOf(picture)->Valid) scenes::UseBlocksOf(*RecordOf(picture), 5);
  } else {
    ImageConstructor(picture, wider, height, format);
  }
  if (!plan.parts[i] || !RecordOf(picture)->Valid) return picture;
  const REALobject part = ClipImage5(picture, 1, 0, width, height);
  RecordOf(part)->GreenOffset = RecordOf(part)->GrayOffset = RecordOf(part)->CyanOffset = 0;
  REALUnlockObject(picture);
  return part;
}

class RotateProperty : public testing::Test {
 protected:
  RotateProperty() {
    host_->Classes().DefineSubclass(
        "Factory", "PictureFactoryZVK",
        {{"NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK",
          reinterpret_cast<void *>(&NewPicture)}});
  }
  ~RotateProperty() override { SetFactory(nullptr); }

  PluginHost host_{{.fenced = true}};
};

double AnyAngle(Random &random) {
  switch (random.Between(0, 6)) {
    case 0:
      return random.Between(-8, 8) * 45.0;
    case 1:
      return random.Between(-8, 8) * 45.0 + random.Between(-1, 1) * 1e-9;
    case 2:
      return random.Between(-100000, 100000) / 7.0;
    case 3:
      return random.Between(-1000, 1000) * 1e-18;
    default:
      return random.Between(-360000, 360000) / 1000.0;
  }
}

RotateBackground AnyBackground(Random &random) {
  if (random.OneIn(3)) return {};
  const auto byte = [&] { return random.OneIn(3) ? 255 : random.Between(-300, 300); };
  return {byte(), byte(), byte(), byte(), byte(), byte(), byte(), byte(), byte()};
}

Owned<Object> NaiveTurn(ImageClassData &image, double right) {
  if (image.BitsPerComponent == 16) return {};
  auto turned = right == 180.0 ? CreatePicture(&image, image.Width, image.Height, image.ImageFormat)
                               : CreatePicture(&image, image.Height, image.Width, image.ImageFormat);
  if (!turned) return {};
  if (right == 180.0) {
    naive::HalfTurn(image, *RecordOf(turned.Get()));
  } else {
    naive::QuarterTurn(image, *RecordOf(turned.Get()), right == 90.0, 0);
  }
  return Adopt(turned.Release());
}

Owned<Object> NaiveRotate(const Owned<Object> &image, double angle, const RotateBackground &background) {
  while (angle >= 360.0) angle -= 360.0;
  while (angle < 0.0) angle += 360.0;
  if (angle == 0.0) return image;
  Owned<Object> base = image;
  for (const double right : {90.0, 180.0, 270.0}) {
    if (angle == right) return NaiveTurn(*RecordOf(image), right);
    if (angle <= right - 45.0 || angle > right + 45.0) continue;
    base = NaiveTurn(*RecordOf(image), right);
    angle -= right;
    break;
  }
  return base ? Adopt(naive::RotateByShears(base, angle, background).Release()) : Owned<Object>();
}

// All bytes of the rows that a GetRow leads to.
Bytes RowsOf(REALobject image) {
  ImageClassData &record = *RecordOf(image);
  Bytes bytes;
  for (int32_t y = 0; y < record.Height; ++y) {
    const uint8_t *row = record.GetRow(&record, y);
    bytes.insert(bytes.end(), row, row + record.RowSize);
  }
  return bytes;
}

void ExpectTheNaiveBytes(Random &random, const Owned<Object> &source) {
  const double angle = AnyAngle(random);
  const RotateBackground to = AnyBackground(random);
  const Bytes before = plan.shared != nullptr ? RowsOf(plan.shared) : Bytes();
  plan.asked = 0;
  const auto turned = Adopt(
      rbRotate(source, angle, to.red, to.green, to.blue, to.alpha, to.gray, to.cyan, to.magenta, to.yellow, to.black));
  if (!turned) {
    plan.asked = 0;
    RC_ASSERT(!NaiveRotate(source, angle, to));
    return;
  }
  if (turned.Handle() == source.Handle()) {
    RC_ASSERT((NaiveRotate(source, angle, to).Handle() == source.Handle()));
    return;
  }
  const Bytes bytes = RowsOf(turned);
  if (plan.shared != nullptr) std::copy(before.begin(), before.end(), RecordOf(plan.shared)->Buffer);
  plan.asked = 0;
  const auto expected = NaiveRotate(source, angle, to);
  RC_ASSERT(static_cast<bool>(expected));
  const ImageClassData &a = *RecordOf(turned), &b = *RecordOf(expected);
  RC_ASSERT(a.ImageFormat == b.ImageFormat && a.Width == b.Width && a.Height == b.Height);
  RC_ASSERT(bytes == RowsOf(expected));
}

TEST_F(RotateProperty, AnyImageByAnyAngleGivesThePlainBytes) {
  CheckCases([this](Random &random) {
    const int32_t format = random.OneIn(10) ? int32_t{ImageFormatGray16} : AnyMovedFormat(random);
    const int32_t width = random.Side(300), height = random.Between(1, 30);
    const StoredImage storage = AnyStored(random, host_, AnyKind(random), width, height, format);
    const Bytes before = storage.Bytes();
    ExpectTheNaiveBytes(random, AnyOddView(random, storage));
    RC_ASSERT(storage.Bytes() == before);
  });
}

TEST_F(RotateProperty, ImagesOfAnyFactoryGiveThePlainBytes) {
  CheckCases([this](Random &random) {
    const int32_t format = AnyMovedFormat(random);
    const int32_t width = random.Between(1, 20), height = random.Between(1, 20);
    const StoredImage storage = AnyStored(random, host_, Kind::Block, width, height, format);
    plan = {};
    for (int i = 0; i < 4; ++i) {
      plan.more.push_back(random.OneIn(2) ? random.Between(0, 9) : 0);
      plan.formats.push_back(random.OneIn(3) ? AnyMovedFormat(random) : 0);
      plan.inFile.push_back(random.OneIn(3));
      plan.parts.push_back(random.OneIn(4));
    }
    SetFactory(host_.New("Factory"));
    ExpectTheNaiveBytes(random, AnyOddView(random, storage));
    SetFactory(nullptr);
  });
}

TEST_F(RotateProperty, OneImageForEverythingGivesThePlainBytes) {
  CheckCases([this](Random &random) {
    const int32_t format = AnyMovedFormat(random);
    const int32_t width = random.Between(1, 16), height = random.Between(1, 16);
    const StoredImage storage = AnyStored(random, host_, Kind::Block, width, height, format);
    const StoredImage shared =
        AnyStored(random, host_, Kind::Memory, 44, 44, random.OneIn(2) ? format : AnyMovedFormat(random));
    plan = {};
    plan.more = {0};
    plan.shared = shared.Image();
    SetFactory(host_.New("Factory"));
    ExpectTheNaiveBytes(random, AnyOddView(random, storage));
    SetFactory(nullptr);
    plan.shared = nullptr;
  });
}

}  // namespace
}  // namespace zvk::geometry
