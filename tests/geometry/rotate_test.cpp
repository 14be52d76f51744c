#include "geometry/rotate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "geometry/turns.h"
#include "image/image_factory.h"
#include "image/views.h"
#include "tests/geometry/turn_testing.h"
#include "tests/naive/rotate.h"
#include "tests/support/faults.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;
using naive::PixelAt;
using naive::RotateBackground;

Owned<Object> Turned(REALobject image, double angle, const RotateBackground &to = {}) {
  return Adopt(
      rbRotate(image, angle, to.red, to.green, to.blue, to.alpha, to.gray, to.cyan, to.magenta, to.yellow, to.black));
}

Bytes AllOf(const Owned<Object> &image) {
  const ImageClassData &record = *RecordOf(image);
  return Bytes(record.Buffer, record.Buffer + record.TotalSize);
}

// What the factory of a test answers: images of this much more than was asked for, in a format of its own if it is not
// 0; nothing from the answer `last` on.
struct Answers {
  int32_t more = 0;
  int32_t format = 0;
  int last = 100;
  bool yielding = false;
  REALobject always = nullptr;  // one image for everything
  std::vector<std::vector<int32_t>> wished = {};
};
Answers answers;

REALobject NewPicture(REALobject, int32_t width, int32_t height, int32_t format) {
  answers.wished.push_back({width, height, format});
  if (static_cast<int>(answers.wished.size()) >= answers.last) return nullptr;
  if (answers.always != nullptr) {
    REALLockObject(answers.always);
    return answers.always;
  }
  REALobject picture = REALnewInstance("PictureZVK");
  ImageConstructor(picture, width + answers.more, height + answers.more, answers.format != 0 ? answers.format : format);
  if (answers.yielding) RecordOf(picture)->Yield.YieldTicks = 1;
  return picture;
}

class Rotate : public testing::Test {
 protected:
  Rotate() {
    answers = {};
    host_->Classes().DefineSubclass(
        "Factory", "PictureFactoryZVK",
        {{"NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK",
          reinterpret_cast<void *>(&NewPicture)}});
  }
  ~Rotate() override { EXPECT_FALSE(host_.TakeException()); }

  Owned<Object> Noisy(int32_t width, int32_t height, int32_t format, uint32_t seed = 1) {
    auto image = NewImage(host_, width, height, format);
    const Bytes noise = Noise(static_cast<size_t>(RecordOf(image)->TotalSize), seed);
    std::copy(noise.begin(), noise.end(), RecordOf(image)->Buffer);
    return image;
  }

  void SetFactoryOf(const Owned<Object> &image) {
    const auto factory = host_.New("Factory");
    REALLockObject(factory);
    RecordOf(image)->Factory = factory;  // the host gives it back with the instance
  }

  // Every byte of what the plain loops make of it.
  void ExpectNaive(const Owned<Object> &image, double angle, const RotateBackground &background = {}) {
    const auto turned = Turned(image, angle, background);
    const auto expected = Adopt(naive::RotateByShears(image, angle, background).Release());
    ASSERT_TRUE(turned && expected);
    EXPECT_EQ(RecordOf(turned)->ImageFormat, RecordOf(expected)->ImageFormat);
    EXPECT_EQ(RecordOf(turned)->Width, RecordOf(expected)->Width);
    EXPECT_EQ(AllOf(turned), AllOf(expected)) << angle;
  }

  PluginHost host_{{.fenced = true}};
};

// --- the angle ---

TEST_F(Rotate, NoTurnAndWholeTurnsGiveTheImageItselfWithANewReference) {
  const auto image = Noisy(3, 2, ImageFormatRGB);
  for (const double angle : {0.0, -0.0, 360.0, -360.0, 720.0, 36000000.0, -36000000.0}) {
    const auto turned = Turned(image, angle);
    EXPECT_EQ(turned.Handle(), image.Handle());
    EXPECT_EQ(References(image), 2);
  }
  EXPECT_EQ(References(image), 1);
}

TEST_F(Rotate, NoTurnGivesAnyImageItself) {
  const auto closed = NewImage(host_, 3, 3, ImageFormatRGB), deep = NewImage(host_, 3, 3, ImageFormatGray16);
  const auto buffer = NewImage(host_, 3, 3, ImageFormatBuffer);
  ImageDestructor(closed);
  for (const auto &image : {closed, deep, buffer}) EXPECT_EQ(Turned(image, 360.0).Handle(), image.Handle());
}

TEST_F(Rotate, RightAnglesAreTheTurnsAndTheBackgroundPlaysNoPart) {
  const auto image = Noisy(5, 3, ImageFormatRGBA);
  const RotateBackground white{255, 255, 255, 255};
  const std::vector<std::pair<double, REALobject (*)(REALobject, REALobject)>> turns{
      {90.0, Rotate90},    {180.0, Rotate180}, {270.0, Rotate270}, {-90.0, Rotate270},
      {-180.0, Rotate180}, {-270.0, Rotate90}, {450.0, Rotate90},  {-3690.0, Rotate270}};
  for (const auto &[angle, turn] : turns) {
    EXPECT_EQ(AllOf(Turned(image, angle, white)), AllOf(Adopt(turn(image, nullptr)))) << angle;
  }
}

TEST_F(Rotate, AnglesAreReducedByTakingAwayOrAddingWholeTurns) {
  const auto image = Noisy(9, 7, ImageFormatG);
  for (const double angle :
       {361.25, 1e6 + 1.0 / 3, -1.25, -359.999, -1e6 - 0.1, 3e8 + 0.7, -3e8 - 1.0 / 7, 719.9999999}) {
    double reduced = angle;
    while (reduced >= 360.0) reduced -= 360.0;
    while (reduced < 0.0) reduced += 360.0;
    EXPECT_EQ(AllOf(Turned(image, angle)), AllOf(Turned(image, reduced))) << angle;
  }
}

TEST_F(Rotate, TheSmallestAnglesBelowZeroCountAsAWholeTurnThatIsNotZero) {
  // -1e-20 + 360 is 360, which is neither reduced again nor 0: a new image.
  const auto image = Noisy(6, 5, ImageFormatG);
  const auto turned = Turned(image, -1e-20);
  EXPECT_NE(turned.Handle(), image.Handle());
  EXPECT_EQ(AllOf(turned), AllOf(Adopt(naive::RotateByShears(image, 360.0, {}).Release())));
  ExpectNaive(image, 1e-20);
  ExpectNaive(image, 5e-324);
  ExpectNaive(Noisy(600, 5, ImageFormatRGBA), 1e-20, {9, 8, 7, 6});
}

TEST_F(Rotate, AnglesThatAreNotFiniteOrTooLargeGiveNil) {
  const auto image = Noisy(4, 4, ImageFormatRGB);
  const double infinite = std::numeric_limits<double>::infinity();
  const double limit = std::ldexp(1.0, 55);
  for (const double angle : {infinite, -infinite, std::numeric_limits<double>::quiet_NaN(), 1e300, -1e300,
                             std::nextafter(limit, infinite), -std::nextafter(limit, infinite)}) {
    EXPECT_EQ(rbRotate(image, angle, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr) << angle;
  }
  // 2^55 is 128 beyond a whole number of turns.
  EXPECT_EQ(AllOf(Turned(image, limit)), AllOf(Turned(image, 128.0)));
  EXPECT_EQ(AllOf(Turned(image, -limit)), AllOf(Turned(image, 232.0)));
}

TEST_F(Rotate, UpToFortyFiveDegreesGoByShearsAlone) {
  const auto image = Noisy(13, 8, ImageFormatRGB);
  for (const double angle : {45.0, 44.9, 1.0, 0.001, 315.1, 330.0, 359.0}) ExpectNaive(image, angle, {1, 2, 3});
}

TEST_F(Rotate, LargerAnglesTurnByARightAngleFirst) {
  const auto image = Noisy(13, 8, ImageFormatRGB);
  const struct {
    REALobject (*turn)(REALobject, REALobject);
    double right;
    std::vector<double> angles;
  } cases[] = {{Rotate90, 90.0, {45.1, 60.0, 90.5, 135.0}},
               {Rotate180, 180.0, {135.1, 170.0, 180.25, 225.0}},
               {Rotate270, 270.0, {225.1, 269.0, 271.0, 315.0}}};
  for (const auto &[turn, right, angles] : cases) {
    const auto base = Adopt(turn(image, nullptr));
    for (const double angle : angles) {
      const auto expected = Adopt(naive::RotateByShears(base, angle - right, {}).Release());
      EXPECT_EQ(AllOf(Turned(image, angle)), AllOf(expected)) << angle;
    }
  }
}

// --- the result ---

TEST_F(Rotate, TheNewImageHoldsTheTurnedOne) {
  constexpr double kDegree = 3.141592653589793 / 180;
  for (const auto &[width, height] : {std::pair{100, 50}, {1, 1}, {7, 300}}) {
    const auto image = Noisy(width, height, ImageFormatG);
    for (const double angle : {1.0, 17.0, 45.0, 359.0, 320.0}) {
      const double c = std::cos(angle * kDegree), s = std::fabs(std::sin(angle * kDegree));
      const auto turned = Turned(image, angle);
      EXPECT_EQ(RecordOf(turned)->Width, static_cast<int>(width * c + height * s) + 1);
      EXPECT_EQ(RecordOf(turned)->Height, static_cast<int>(height * c + width * s) + 1);
      EXPECT_EQ(References(turned), 1);
    }
  }
}

TEST_F(Rotate, TheTurnGoesToTheLeft) {
  const auto image = NewImage(host_, 101, 101, ImageFormatG);
  for (int32_t x = 60; x < 101; ++x) {
    for (int32_t y = 48; y < 53; ++y) *SampleAt(*RecordOf(image), x, y, 'g') = 200;
  }
  const auto turned = Turned(image, 30.0);
  ImageClassData &record = *RecordOf(turned);
  // 35 pixels to the right of the centre, and the same turned by 30 degrees.
  const int32_t x = record.Width / 2 + 30;
  EXPECT_GT(*SampleAt(record, x, record.Height / 2 - 17, 'g'), 150);
  EXPECT_EQ(*SampleAt(record, x, record.Height / 2 + 17, 'g'), 0);
}

TEST_F(Rotate, TheCornersHoldTheBackground) {
  for (const int32_t format : kFamilyFormats) {
    const auto image = Noisy(40, 30, format);
    const RotateBackground background{256 + 10, -236, 30, 40, 50, 60, 70, 80, 90};  // cut to 10, 20
    const auto turned = Turned(image, 30.0, background);
    ImageClassData &record = *RecordOf(turned);
    const std::string letters = ChannelsOf(record);
    Bytes expected;
    for (const char letter : letters) {
      expected.push_back(static_cast<uint8_t>(std::string("..RGBAgCMYK").find(letter) * 10 - 10));
    }
    for (const int32_t x : {0, record.Width - 1}) {
      for (const int32_t y : {0, record.Height - 1}) EXPECT_EQ(PixelAt(record, x, y, letters), expected) << format;
    }
  }
}

TEST_F(Rotate, OnlyTheChannelsOfTheFamilyCountInTheBackground) {
  const auto gray = Noisy(20, 20, ImageFormatGA), colour = Noisy(20, 20, ImageFormatBGRA);
  const auto ink = Noisy(20, 20, ImageFormatACMYK);
  const auto same = [](const Owned<Object> &image, const RotateBackground &background) {
    return AllOf(Turned(image, 30.0)) == AllOf(Turned(image, 30.0, background));
  };
  EXPECT_TRUE(same(gray, {.red = 255, .green = 255, .blue = 255, .cyan = 1, .magenta = 2, .yellow = 3, .black = 4}));
  EXPECT_FALSE(same(gray, {.gray = 255}));
  EXPECT_FALSE(same(gray, {.alpha = 255}));
  EXPECT_TRUE(same(colour, {.gray = 255, .cyan = 1, .magenta = 2, .yellow = 3, .black = 4}));
  for (const RotateBackground &one : {RotateBackground{.red = 1}, RotateBackground{.green = 1},
                                      RotateBackground{.blue = 1}, RotateBackground{.alpha = 1}}) {
    EXPECT_FALSE(same(colour, one));
  }
  EXPECT_TRUE(same(ink, {.red = 255, .green = 255, .blue = 255, .gray = 255}));
  for (const RotateBackground &one :
       {RotateBackground{.cyan = 1}, RotateBackground{.magenta = 1}, RotateBackground{.yellow = 1},
        RotateBackground{.black = 1}, RotateBackground{.alpha = 1}}) {
    EXPECT_FALSE(same(ink, one));
  }
}

TEST_F(Rotate, AlphaIsShearedLikeTheColours) {
  const auto image = Noisy(33, 21, ImageFormatRGBA);
  ImageClassData &record = *RecordOf(image);
  for (int32_t y = 0; y < record.Height; ++y) {
    for (int32_t x = 0; x < record.Width; ++x) *SampleAt(record, x, y, 'A') = *SampleAt(record, x, y, 'G');
  }
  const auto turned = Turned(image, 200.0, {0, 77, 0, 77});
  EXPECT_EQ(Grid(turned, 'A'), Grid(turned, 'G'));
}

TEST_F(Rotate, TheSourceStaysAsItIsAndIsGivenBack) {
  const StoredImage storage = Stored(host_, Kind::Block, 30, 20, ImageFormatRGB, 5);
  const Bytes before = storage.Bytes();
  for (const double angle : {10.0, 100.0, 190.0, 280.0, 350.0}) {
    EXPECT_TRUE(Turned(storage.Image(), angle));
    EXPECT_EQ(storage.Bytes(), before);
    EXPECT_EQ(References(storage.Image()), 1);
  }
}

TEST_F(Rotate, AViewGivesAnImageOfItsOwnFormat) {
  const auto image = Noisy(30, 20, ImageFormatBGRX);
  const auto clip = Adopt(ClipImage5(image, 3, 4, 20, 10)), red = Adopt(RedChannel(clip));
  const auto mirrored = Adopt(GetMirroredView(red));
  for (const auto &view : {clip, red, mirrored}) ExpectNaive(view, 20.0, {1, 2, 3, 4, 5});
}

// --- 16-bit gray ---

TEST_F(Rotate, SixteenBitGrayMovesOneByteBySmallAnglesAndGivesNilForOthers) {
  const auto image = Noisy(20, 10, ImageFormatGray16);
  for (const double angle : {90.0, 180.0, 270.0, 45.1, 100.0, 200.0, 315.0}) {
    EXPECT_EQ(rbRotate(image, angle, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr) << angle;
  }
  for (const double angle : {45.0, 10.0, 315.1, 350.0}) {
    ExpectNaive(image, angle, {.gray = 99});
    const auto turned = Turned(image, angle, {.gray = 99});
    ImageClassData &record = *RecordOf(turned);
    EXPECT_EQ(record.ImageFormat, ImageFormatGray16);
    if (angle == 45.0) {
      EXPECT_EQ(*SampleAt(record, 0, 0, 'g'), 99);
    }
    for (int32_t y = 0; y < record.Height; ++y) {
      for (int32_t x = 0; x < record.Width; ++x) ASSERT_EQ(record.GetRow(&record, y)[2 * x + 1], 0);
    }
  }
}

// --- refusals ---

TEST_F(Rotate, AnImageThatIsNotUsableOrOfNoFamilyGivesNil) {
  const auto empty = host_.New("PictureZVK"), closed = NewImage(host_, 4, 4, ImageFormatRGB);
  ImageDestructor(closed);
  const auto parent = NewImage(host_, 4, 4, ImageFormatRGB), buffer = NewImage(host_, 4, 4, ImageFormatBuffer);
  const auto negative = Adopt(ClipImage5(parent, 6, 0, 1, 4)), low = Adopt(ClipImage5(parent, 0, 4, 4, 1));
  const StoredImage table = Stored(host_, Kind::Table, 4, 4, ImageFormatRGB);
  const auto tableView = Adopt(ClipImage1(table.Image()));
  for (const double angle : {30.0, 90.0, 100.0, 180.0, 200.0, 270.0, 300.0}) {
    EXPECT_EQ(rbRotate(nullptr, angle, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr);
    for (const auto *image : {&empty, &closed, &negative, &low, &tableView}) {
      EXPECT_EQ(rbRotate(*image, angle, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr);
      EXPECT_EQ(References(*image), 1);
    }
  }
  for (const double angle : {30.0, 100.0, 200.0, 300.0}) {
    EXPECT_EQ(rbRotate(buffer, angle, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr);
  }
  EXPECT_EQ(References(buffer), 1);
}

TEST_F(Rotate, AnImageOfNoColumnsGivesNilOrAnImageOfBackground) {
  const auto parent = NewImage(host_, 4, 9, ImageFormatG);
  const auto none = Adopt(ClipImage5(parent, 4, 0, 1, 9));
  EXPECT_EQ(rbRotate(none, 1.0, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr);  // not even a column for the first image
  ExpectNaive(none, 40.0, {.gray = 7});
}

TEST_F(Rotate, AnImageThatCannotBeMadeGivesNilAndNothingIsLeftOver) {
  const auto image = Noisy(30, 20, ImageFormatRGB);
  for (const double angle : {30.0, 100.0}) {
    for (int nth = 1; nth <= (angle < 45 ? 3 : 4); ++nth) {
      int large = 0;
      faults::Heap heap;
      heap.FailCalloc([&](size_t, size_t size) { return size >= 1200 && size % 64 == 0 && ++large == nth; });
      EXPECT_EQ(rbRotate(image, angle, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr) << nth;
      EXPECT_EQ(large, nth);
      heap.FailCalloc({});
      const auto exception = host_.TakeException();
      ASSERT_TRUE(exception);
      EXPECT_EQ(exception->className, "OutOfMemoryException");
      EXPECT_EQ(References(image), 1);
    }
  }
}

TEST_F(Rotate, SizesBeyondAllLimitsGiveNil) {
  const auto block = host_.NewMemoryBlock(4);
  const auto image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 1, 2147483647, ImageFormatG, 0);  // every row is the same byte
  ASSERT_TRUE(RecordOf(image)->Valid);
  EXPECT_EQ(rbRotate(image, 30.0, 0, 0, 0, 0, 0, 0, 0, 0, 0), nullptr);
}

// --- shears at once ---

// Where a factory has a say, the shears go one after the other; else they are made at once.
TEST_F(Rotate, ShearsAtOnceGiveTheBytesOfOneAfterTheOther) {
  // Parts of rows are 256 columns wide: the rows between the shears have a few columns less, as many, and more.
  for (const int32_t width : {1, 2, 240, 254, 256, 520}) {
    for (const int32_t format : scenes::kFamilyFormats) {
      const double angle = 10.0 * ((format + width) % 9) - 40.0;
      if (angle == 0.0) continue;
      const auto image = Noisy(width, 23, format, static_cast<uint32_t>(format));
      const auto atOnce = Turned(image, angle, {1, 22, 33, 44, 55, 66, 77, 88, 99});
      SetFactoryOf(image);
      const auto apart = Turned(image, angle, {1, 22, 33, 44, 55, 66, 77, 88, 99});
      ASSERT_TRUE(atOnce && apart);
      EXPECT_EQ(AllOf(atOnce), AllOf(apart)) << width << ' ' << format << ' ' << angle;
    }
  }
  EXPECT_FALSE(answers.wished.empty());
}

TEST_F(Rotate, WithoutMemoryToWorkInTheResultIsTheSame) {
  const auto image = Noisy(31, 21, ImageFormatRGBA);
  const auto expected = Turned(image, 30.0, {1, 2, 3, 4});
  int refused = 0, asked = 0;
  do {
    ++refused;
    asked = 0;
    faults::Heap heap;
    // The sizes of images are multiples of 64.
    heap.FailCalloc([&](size_t, size_t size) { return size % 64 != 0 && ++asked == refused; });
    const auto turned = Turned(image, 30.0, {1, 2, 3, 4});
    heap.FailCalloc({});
    ASSERT_TRUE(turned);
    EXPECT_EQ(AllOf(turned), AllOf(expected)) << refused;
  } while (asked >= refused);
  EXPECT_GT(refused, 4);
}

TEST_F(Rotate, ShearsAreMadeAtOnceUnlessCodeOfTheHostRuns) {
  const auto image = Noisy(31, 21, ImageFormatRGB);
  faults::Heap heap;
  Turned(image, 30.0);
  const int atOnce = heap.CallocCalls();
  YieldAlways(host_, image);
  Turned(image, 30.0);
  EXPECT_NE(heap.CallocCalls() - atOnce, atOnce);
}

// --- factories ---

TEST_F(Rotate, TheFactoryOfTheBaseIsAskedForAllThreeImages) {
  const auto image = Noisy(40, 30, ImageFormatRGB);
  const auto expected = Turned(image, 30.0);
  SetFactoryOf(image);
  const auto turned = Turned(image, 30.0);
  EXPECT_EQ(AllOf(turned), AllOf(expected));
  // tan 15 degrees is 0.267949, sin and cos of 30 are 0.5 and 0.866025.
  EXPECT_EQ(answers.wished, (std::vector<std::vector<int32_t>>{{48, 30, 1}, {48, 46, 1}, {50, 46, 1}}));
}

TEST_F(Rotate, AfterARightAngleTheFactoryOfTheTurnedImageIsAsked) {
  const auto image = Noisy(40, 30, ImageFormatRGB);
  SetFactoryOf(image);
  EXPECT_TRUE(Turned(image, 100.0));
  // The base is the factory's, and has none itself.
  EXPECT_EQ(answers.wished, (std::vector<std::vector<int32_t>>{{30, 40, 1}}));
}

TEST_F(Rotate, TheThirdImageHasTheFormatOfTheSecond) {
  const auto image = Noisy(40, 30, ImageFormatRGB);
  SetFactoryOf(image);
  answers.format = ImageFormatBGRX;
  const auto turned = Turned(image, 30.0, {1, 2, 3});
  EXPECT_EQ(answers.wished.back(), (std::vector<int32_t>{50, 46, ImageFormatBGRX}));
  answers = {};
  const auto expected = Turned(image, 30.0, {1, 2, 3});
  for (const char letter : {'R', 'G', 'B'}) EXPECT_EQ(Grid(turned, letter), Grid(expected, letter));
}

TEST_F(Rotate, LargerImagesOfAFactoryAreUsedInTheirOwnSizes) {
  for (const int32_t format : {int32_t{ImageFormatRGBA}, int32_t{ImageFormatG}, int32_t{ImageFormatXKYMC}}) {
    const auto image = Noisy(23, 17, format);
    SetFactoryOf(image);
    answers.more = 5;
    for (const double angle : {30.0, 335.0}) ExpectNaive(image, angle, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  }
}

TEST_F(Rotate, ImagesOfAnotherFamilyGetTheSamplesInTheOrderOfTheChannels) {
  for (const int32_t format : {int32_t{ImageFormatRGBA}, int32_t{ImageFormatGA}, int32_t{ImageFormatCMYKA}}) {
    for (const int32_t made : {int32_t{ImageFormatG}, int32_t{ImageFormatRGBX}, int32_t{ImageFormatACMYK}}) {
      const auto image = Noisy(9, 8, format);
      SetFactoryOf(image);
      answers.format = made;
      ExpectNaive(image, 30.0, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    }
  }
}

TEST_F(Rotate, OneImageForAllThreeIsWrittenInThePlainOrder) {
  for (const double angle : {0.5, 30.0, 330.0}) {
    const auto image = Noisy(12, 9, ImageFormatRGBA);
    const auto shared = Noisy(40, 40, ImageFormatRGBA, 2);
    const Bytes before = AllOf(shared);
    SetFactoryOf(image);
    answers.always = shared;
    EXPECT_EQ(Turned(image, angle, {1, 2, 3, 4}).Handle(), shared.Handle());
    const Bytes turned = AllOf(shared);
    std::copy(before.begin(), before.end(), RecordOf(shared)->Buffer);
    Adopt(naive::RotateByShears(image, angle, {1, 2, 3, 4}).Release());
    EXPECT_EQ(turned, AllOf(shared));
    EXPECT_EQ(References(shared), 1);
    answers.always = nullptr;
  }
}

// --- yields ---

TEST_F(Rotate, TimeIsGivenAtTheStartOfEachStage) {
  const auto image = Noisy(20, 20, ImageFormatRGB);
  YieldAlways(host_, image);
  Turned(image, 0.0);
  EXPECT_EQ(Yields(host_), 0);
  Turned(image, 90.0);
  EXPECT_EQ(Yields(host_), 1);
  Turned(image, 30.0);  // on the base, and on it as the source of the first stage
  EXPECT_EQ(Yields(host_), 3);
  Turned(image, 100.0);  // in the turn by a right angle; its result does not yield
  EXPECT_EQ(Yields(host_), 4);
  SetFactoryOf(image);
  answers.yielding = true;
  Turned(image, 30.0);  // 2, and each of the three as the dest of a stage, the first two as the source of one too
  EXPECT_EQ(Yields(host_), 4 + 2 + 5);
}

TEST_F(Rotate, AnImageThatIsClosedMeanwhileGivesNil) {
  for (int last = 1; last <= 7; ++last) {
    const auto image = Noisy(20, 20, ImageFormatRGB);
    YieldAlways(host_, image);
    SetFactoryOf(image);
    answers = {};
    answers.always = nullptr;
    answers.yielding = true;
    int yields = 0;
    host_->onYield = [&] {
      if (++yields == last) ImageDestructor(image);
    };
    const auto turned = Turned(image, 30.0);
    // After the first stage the base is not needed any more, but for its factory.
    EXPECT_EQ(static_cast<bool>(turned), last > 3) << last;
    host_->onYield = nullptr;
  }
}

TEST_F(Rotate, AnImageThatIsConstructedAnewMeanwhileIsReadWithinItsNewSize) {
  for (int last = 1; last <= 3; ++last) {
    for (const auto &[width, height] : {std::pair{3, 2}, {50, 60}}) {
      const auto image = Noisy(20, 20, ImageFormatRGBA);
      YieldAlways(host_, image);
      int yields = 0;
      host_->onYield = [&, width = width, height = height] {
        if (++yields != last) return;
        ImageDestructor(image);
        ImageConstructor(image, width, height, ImageFormatG);
      };
      EXPECT_TRUE(Turned(image, 30.0));
      host_->onYield = nullptr;
    }
  }
}

TEST_F(Rotate, AnImageWhosePixelsHaveLostTheirSizeMeanwhileGivesNil) {
  constexpr int32_t kNoFormat = 99;  // refused, which leaves the image valid, over its buffer, with pixels of no size
  for (const int32_t format : {ImageFormatG, ImageFormatRGBA}) {
    for (const int last : {1, 2}) {
      const auto image = Noisy(20, 20, format);
      YieldAlways(host_, image);
      int yields = 0;
      host_->onYield = [&] {
        if (++yields == last) ImageConstructor(image, 20, 20, kNoFormat);
      };
      EXPECT_FALSE(Turned(image, 30.0)) << last;
      EXPECT_EQ(yields, last);
      host_->onYield = nullptr;
    }
  }
}

}  // namespace
}  // namespace zvk::geometry
