#include "image/image_factory.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>

#include "image/image_formats.h"
#include "image/image_storage.h"
#include "tests/support/faults.h"
#include "tests/support/plugin_host.h"

namespace zvk::image {
namespace {

using Factory = standalone::Owned<standalone::Object>;

// What a test's factory was asked for, and what it answers.
struct Answer {
  int32_t width = 0;
  int32_t height = 0;
  int32_t format = ImageFormatRGB;
  bool closed = false;   // answers with an image that is not Valid
  bool nothing = false;  // answers nil
  int asked = 0;
  std::array<int32_t, 3> wished = {};
  REALobject factory = nullptr;
};

// One answer for each of two factory classes.
Answer answers[2];

template <int kFactory>
REALobject NewPicture(REALobject factory, int32_t width, int32_t height, int32_t format) {
  Answer &answer = answers[kFactory];
  ++answer.asked;
  answer.wished = {width, height, format};
  answer.factory = factory;
  if (answer.nothing) return nullptr;
  REALobject picture = REALnewInstance("PictureZVK");
  if (!answer.closed) ImageConstructor(picture, answer.width, answer.height, answer.format);
  return picture;
}

class ImageFactory : public testing::TestWithParam<double> {
 protected:
  ImageFactory() : host_({.version = GetParam()}) {
    for (Answer &answer : answers) answer = {.width = 20, .height = 10};
    const std::string event =
        "NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK";
    host_->Classes().DefineSubclass("First", "PictureFactoryZVK", {{event, reinterpret_cast<void *>(&NewPicture<0>)}});
    host_->Classes().DefineSubclass("Second", "PictureFactoryZVK", {{event, reinterpret_cast<void *>(&NewPicture<1>)}});
    host_->Classes().DefineSubclass("Silent", "PictureFactoryZVK", {});
    asking_ = host_.New("PictureZVK");
  }
  ~ImageFactory() override { SetFactory(nullptr); }

  // The record of an image that asks with "First" as its factory and "Second" as the global one.
  ImageClassData *WithBothFactories() {
    first_ = host_.New("First");
    second_ = host_.New("Second");
    SetFactory(second_);
    return WithFactory(first_);
  }

  ImageClassData *WithFactory(const Factory &factory) {
    ImageClassData *record = RecordOf(asking_);
    REALLockObject(factory);
    record->Factory = factory;  // the host gives it back with the instance
    return record;
  }

  static const ImageClassData &Record(const ObjectReference &picture) { return *RecordOf(picture.Get()); }

  PluginHost host_;
  Factory first_;
  Factory second_;
  standalone::Owned<standalone::Object> asking_;
};

INSTANTIATE_TEST_SUITE_P(TableVersions, ImageFactory, testing::Values(2011.0, 2012.0, 2013.0, 2013.03));

TEST_P(ImageFactory, TheHostHasASayWithAFactoryOfTheImageOrAGlobalOne) {
  EXPECT_FALSE(HasFactory(*RecordOf(asking_)));
  SetFactory(host_.New("Silent"));
  EXPECT_TRUE(HasFactory(*RecordOf(asking_)));
  SetFactory(nullptr);
  EXPECT_FALSE(HasFactory(*RecordOf(asking_)));
  EXPECT_TRUE(HasFactory(*WithFactory(host_.New("First"))));
}

TEST_P(ImageFactory, TheInstanceFactoryIsAskedFirst) {
  const ImageClassData *record = WithBothFactories();
  const ObjectReference picture = CreatePicture(record, 20, 10, ImageFormatRGB);
  ASSERT_TRUE(picture);
  EXPECT_EQ(answers[0].asked, 1);
  EXPECT_EQ(answers[1].asked, 0);
  EXPECT_EQ(answers[0].wished, (std::array<int32_t, 3>{20, 10, ImageFormatRGB}));
  EXPECT_EQ(answers[0].factory, first_.Handle());
  EXPECT_EQ(standalone::Object::From(picture.Get())->References(), 1);
}

TEST_P(ImageFactory, TheGlobalFactoryServesWithoutARecord) {
  WithBothFactories();
  const ObjectReference picture = CreatePicture(nullptr, 20, 10, ImageFormatG);
  ASSERT_TRUE(picture);
  EXPECT_EQ(answers[0].asked, 0);
  EXPECT_EQ(answers[1].asked, 1);
  EXPECT_EQ(Record(picture).ImageFormat, ImageFormatRGB);  // the format of the answer is not looked at
}

TEST_P(ImageFactory, AnImageTooSmallIsReleasedAndTheNextSourceTakesOver) {
  for (const auto &[width, height] : {std::pair{19, 10}, {20, 9}}) {
    const ImageClassData *record = WithBothFactories();
    answers[0].width = width;
    answers[0].height = height;
    answers[1].asked = 0;
    const ObjectReference picture = CreatePicture(record, 20, 10, ImageFormatRGB);
    ASSERT_TRUE(picture);
    EXPECT_EQ(answers[1].asked, 1);
    EXPECT_FALSE(host_.TakeException());
    RecordOf(asking_)->Factory = nullptr;
    REALUnlockObject(first_);
  }
}

TEST_P(ImageFactory, AfterBothFactoriesTheImageIsConstructed) {
  const ImageClassData *record = WithBothFactories();
  answers[0].closed = true;
  answers[1].nothing = true;
  const ObjectReference picture = CreatePicture(record, 20, 10, ImageFormatBGRA);
  ASSERT_TRUE(picture);
  EXPECT_EQ(answers[0].asked, 1);
  EXPECT_EQ(answers[1].asked, 1);
  EXPECT_EQ(Record(picture).ImageFormat, ImageFormatBGRA);
  EXPECT_EQ(Record(picture).Width, 20);
  EXPECT_EQ(Record(picture).Height, 10);
  EXPECT_TRUE(Record(picture).OwnsBuffer);
}

TEST_P(ImageFactory, AnImageOfTheGlobalFactoryIsCheckedAndReleasedLikewise) {
  const ImageClassData *record = WithBothFactories();
  answers[0].closed = true;
  answers[1].width = 19;
  const ObjectReference picture = CreatePicture(record, 20, 10, ImageFormatG);
  ASSERT_TRUE(picture);
  EXPECT_EQ(answers[1].asked, 1);
  EXPECT_EQ(Record(picture).Width, 20);
  EXPECT_EQ(Record(picture).ImageFormat, ImageFormatG);
  EXPECT_FALSE(host_.TakeException());
}

TEST_P(ImageFactory, WithoutAFactoryOfItsOwnAnImageAsksTheGlobalOne) {
  WithBothFactories();
  const auto other = host_.New("PictureZVK");
  EXPECT_TRUE(CreatePicture(RecordOf(other), 20, 10, ImageFormatRGB));
  EXPECT_EQ(answers[0].asked, 0);
  EXPECT_EQ(answers[1].asked, 1);
}

TEST_P(ImageFactory, TheMethodAsksTheInstancesFactoryAndTheSharedMethodTheGlobalOne) {
  WithBothFactories();
  const auto local = Adopt(CreatePictureLocal(asking_, 20, 10, ImageFormatBGR));
  EXPECT_EQ(answers[0].asked, 1);
  EXPECT_EQ(answers[0].wished, (std::array<int32_t, 3>{20, 10, ImageFormatBGR}));
  EXPECT_EQ(answers[1].asked, 0);
  const auto global = Adopt(CreatePictureGlobal(19, 9, ImageFormatGA));
  EXPECT_EQ(answers[0].asked, 1);
  EXPECT_EQ(answers[1].asked, 1);
  EXPECT_EQ(answers[1].wished, (std::array<int32_t, 3>{19, 9, ImageFormatGA}));
  EXPECT_EQ(answers[1].factory, second_.Handle());
  EXPECT_TRUE(local && global);
}

TEST_P(ImageFactory, WithoutNewInstanceTheResultIsNil) {
  host_->Withhold("PluginNewInstance");
  EXPECT_EQ(CreatePictureGlobal(20, 10, ImageFormatRGB), nullptr);
  EXPECT_EQ(host_.TakeException(), std::nullopt);
}

TEST_P(ImageFactory, AnImageTwiceAsLargeIsAccepted) {
  const ImageClassData *record = WithBothFactories();
  answers[0].width = 40;
  answers[0].height = 20;
  const ObjectReference picture = CreatePicture(record, 20, 10, ImageFormatRGB);
  ASSERT_TRUE(picture);
  EXPECT_EQ(Record(picture).Width, 40);
}

TEST_P(ImageFactory, ASubclassWithoutTheEventIsPassedOver) {
  const auto silent = host_.New("Silent");
  const ObjectReference picture = CreatePicture(WithFactory(silent), 20, 10, ImageFormatG);
  ASSERT_TRUE(picture);
  EXPECT_EQ(Record(picture).ImageFormat, ImageFormatG);
}

TEST_P(ImageFactory, TheClassItselfHasNoHandlerAndIsPassedOver) {
  const auto plain = host_.New("PictureFactoryZVK");
  SetFactory(plain);
  EXPECT_TRUE(CreatePicture(nullptr, 20, 10, ImageFormatG));
}

TEST_P(ImageFactory, WithoutGetEventInstanceBothFactoriesArePassedOver) {
  host_->Withhold("GetEventInstance");
  const ImageClassData *record = WithBothFactories();
  const ObjectReference picture = CreatePicture(record, 20, 10, ImageFormatG);
  ASSERT_TRUE(picture);
  EXPECT_EQ(answers[0].asked + answers[1].asked, 0);
  EXPECT_EQ(Record(picture).ImageFormat, ImageFormatG);
}

TEST_P(ImageFactory, AConstructedImageInheritsNothing) {
  const auto silent = host_.New("Silent");
  ImageClassData *record = WithFactory(silent);
  record->Yield.YieldTicks = 5;
  const ObjectReference picture = CreatePicture(record, 20, 10, ImageFormatG);
  ASSERT_TRUE(picture);
  EXPECT_EQ(Record(picture).Yield.YieldTicks, 0);
  EXPECT_EQ(Record(picture).Factory, nullptr);
}

TEST_P(ImageFactory, ASizeOfZeroARefusedFormatAndTooManyBytesGiveNilWithoutException) {
  EXPECT_EQ(CreatePictureLocal(asking_, 0, 10, ImageFormatRGB), nullptr);
  EXPECT_EQ(CreatePictureGlobal(10, 10, 14), nullptr);
  EXPECT_EQ(CreatePictureGlobal(65536, 32768, ImageFormatG), nullptr);
  EXPECT_EQ(host_.TakeException(), std::nullopt);
}

TEST_P(ImageFactory, WithoutMemoryTheResultIsNilAndTheExceptionStaysPending) {
  {
    faults::Heap heap;
    heap.FailCalloc([](size_t count, size_t size) { return count * size == 640; });
    EXPECT_EQ(CreatePictureGlobal(10, 10, ImageFormatG), nullptr);
  }
  const auto exception = host_.TakeException();
  ASSERT_TRUE(exception);
  EXPECT_EQ(exception->className, "OutOfMemoryException");
}

TEST_P(ImageFactory, TheHandlersHandOneReferenceToTheCaller) {
  const auto local = Adopt(CreatePictureLocal(asking_, 3, 4, ImageFormatRGB));
  const auto global = Adopt(CreatePictureGlobal(3, 4, ImageFormatRGB));
  const auto withoutInstance = Adopt(CreatePictureLocal(nullptr, 3, 4, ImageFormatRGB));
  ASSERT_TRUE(local && global && withoutInstance);
  EXPECT_EQ(local->References(), 1);
  EXPECT_EQ(global->References(), 1);
}

TEST_P(ImageFactory, SetFactoryHoldsOneReferenceAndMayBeGivenTheSameObjectAgain) {
  const auto first = host_.New("First");
  const auto second = host_.New("Second");
  SetFactory(first);
  EXPECT_EQ(first->References(), 2);
  SetFactory(first);
  EXPECT_EQ(first->References(), 2);
  SetFactory(second);
  EXPECT_EQ(first->References(), 1);
  EXPECT_EQ(second->References(), 2);
  SetFactory(nullptr);
  EXPECT_EQ(second->References(), 1);
}

TEST_P(ImageFactory, TheGlobalFactoryLivesByTheSystemsReferenceAlone) {
  auto first = host_.New("First");
  SetFactory(first);
  first.Reset();
  EXPECT_TRUE(CreatePicture(nullptr, 20, 10, ImageFormatRGB));
  EXPECT_EQ(answers[0].asked, 1);
}

TEST_P(ImageFactory, AFactoryThatOnlyTheSystemHoldsSurvivesBeingSetAgain) {
  auto first = host_.New("First");
  const REALobject handle = first.Handle();
  SetFactory(handle);
  first.Reset();
  SetFactory(handle);
  EXPECT_EQ(standalone::Object::From(handle)->References(), 1);
  EXPECT_TRUE(CreatePicture(nullptr, 20, 10, ImageFormatRGB));
  EXPECT_EQ(answers[0].factory, handle);
}

}  // namespace
}  // namespace zvk::image
