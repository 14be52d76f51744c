#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "scaling/scale_engine.h"
#include "scaling/thread_runner.h"
#include "tests/scaling/scale_host.h"
#include "tests/scaling/scale_testing.h"
#include "tests/support/faults.h"
#include "tests/support/thread_faults.h"

namespace zvk::scaling {
namespace {

enum Mode : int32_t { kTriangle = 1, kBox, kLanczos3, kLanczos8, kMitchell, kPoly3, kCubic };

constexpr double kDropped = 0.0;  // what the horizontal pass adds before it truncates
constexpr int32_t kThreadCounts[] = {-1, 1, 2, 3, 7, 32};

class ScaleThreads : public ScaleHost {
 protected:
  static bool Scale(const TestImage &dest, int32_t threads, const TestImage &source, int32_t mode, int32_t width,
                    int32_t height) {
    return PictureScaleZVKMT(dest.Object(), threads, source.Object(), nullptr, mode, width, height) != 0;
  }
  static bool Scale(const TestImage &dest, int32_t threads, const TestImage &source, const TestImage &temp,
                    int32_t mode, int32_t width, int32_t height) {
    return PictureScaleZVKMT(dest.Object(), threads, source.Object(), temp.Object(), mode, width, height) != 0;
  }

  static Outcome ThreadedOutcome(const TestImage &dest, int32_t threads, const TestImage &source, const TestImage &temp,
                                 int32_t mode, int32_t width, int32_t height) {
    return OutcomeOf(dest, source, temp, [&] { return Scale(dest, threads, source, temp, mode, width, height); });
  }
  static Outcome SingleOutcome(const TestImage &dest, const TestImage &source, const TestImage &temp, int32_t mode,
                               int32_t width, int32_t height) {
    return OutcomeOf(dest, source, temp, [&] {
      return PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), mode, width, height) != 0;
    });
  }

  // Expects the bytes of the naive scaler that drops fractions in its first pass.
  static void ExpectNaive(const TestImage &dest, int32_t threads, const TestImage &source, const TestImage &temp,
                          int32_t mode, int32_t width, int32_t height) {
    ASSERT_TRUE(ThreadedOutcome(dest, threads, source, temp, mode, width, height) ==
                NaiveOutcome(dest, source, temp, mode, width, height, kDropped))
        << source.Record().ImageFormat << " to " << dest.Record().ImageFormat << ", filter " << mode << ", "
        << source.Record().Width << " x " << source.Record().Height << " to " << width << " x " << height << ", "
        << threads << " threads";
  }
};

// --- every pair, filter and number of threads ---

class ScaleThreadsOfFilter : public ScaleThreads, public testing::WithParamInterface<int32_t> {};
INSTANTIATE_TEST_SUITE_P(Filters, ScaleThreadsOfFilter, testing::Range(1, 8));

TEST_P(ScaleThreadsOfFilter, EveryPairOnAnyNumberOfThreadsGivesTheNaiveBytes) {
  constexpr std::pair<int32_t, int32_t> kFormats[] = {
      {ImageFormatACMYK, ImageFormatCMYKA}, {ImageFormatCMYKA, ImageFormatGA},      {ImageFormatARGB, ImageFormatBGRA},
      {ImageFormatRGBA, ImageFormatAG},     {ImageFormatGA, ImageFormatAKYMC},      {ImageFormatGA, ImageFormatABGR},
      {ImageFormatAG, ImageFormatGA},       {ImageFormatGray16, ImageFormatGray16}, {ImageFormatKYMC, ImageFormatCMYKX},
      {ImageFormatCMYK, ImageFormatG},      {ImageFormatBGR, ImageFormatRGBA},      {ImageFormatRGB, ImageFormatGray16},
      {ImageFormat1of4, ImageFormatXCMYK},  {ImageFormatG, ImageFormatRGB},         {ImageFormat3of3, ImageFormatG}};
  constexpr int32_t kSizes[][4] = {{13, 9, 7, 21}, {5, 70, 11, 40}, {3, 25, 3, 25}, {40, 2, 9, 3}};
  uint32_t seed = 0;
  for (const auto &[sourceFormat, destFormat] : kFormats) {
    for (const int32_t threads : kThreadCounts) {
      const auto &[sourceWidth, sourceHeight, width, height] = kSizes[++seed % 4];
      TestImage source(sourceWidth, sourceHeight, sourceFormat), dest(width + 2, height + 1, destFormat);
      source.FillNoise(seed);
      dest.FillNoise(seed + 1);
      ExpectNaive(dest, threads, source, MakeTemp(dest, source, width).FillNoise(7), GetParam(), width, height);
    }
  }
}

TEST_P(ScaleThreadsOfFilter, AllFormatsGiveTheNaiveBytes) {
  uint32_t seed = 0;
  for (int32_t sourceFormat = 1; sourceFormat <= 41; ++sourceFormat) {
    for (int32_t destFormat = 1; destFormat <= 41; ++destFormat) {
      if (sourceFormat == 14 || destFormat == 14) continue;
      TestImage source(7, 34, sourceFormat), dest(5, 12, destFormat);
      source.FillNoise(++seed);
      dest.FillNoise(seed + 1);
      ExpectNaive(dest, -1, source, MakeTemp(dest, source, 5).FillNoise(7), GetParam(), 5, 12);
    }
  }
}

// --- what differs from one thread ---

TEST_F(ScaleThreads, TheHorizontalPassTruncatesAndTheVerticalOneRounds) {
  // Columns: the means 11.5 and 12.5; rows: the mean of 11 and 12, and on one thread of 12 and 13.
  const TestImage source(2, 2, ImageFormatG), dest(1, 1, ImageFormatG), temp(1, 2, ImageFormatScaling1);
  source.SetRow(0, {10, 13});
  source.SetRow(1, {10, 15});
  for (const int32_t threads : kThreadCounts) {
    ASSERT_TRUE(Scale(dest, threads, source, temp, kBox, 1, 1));
    EXPECT_EQ(*temp.Pixel(0, 0), 11);
    EXPECT_EQ(*temp.Pixel(0, 1), 12);
    EXPECT_EQ(*dest.Pixel(0, 0), 12);
  }
  ASSERT_TRUE(PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), kBox, 1, 1));
  EXPECT_EQ(*dest.Pixel(0, 0), 13);
}

TEST_F(ScaleThreads, NegativeThreadsDoBothPassesHereUnnamedAndWithoutATimeForTheHost) {
  const faults::Threads threads;
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  ExpectNaive(dest, -1, source, MakeTemp(dest, source, 5), kLanczos3, 5, 12);
  EXPECT_EQ(yields_, 0);
  EXPECT_EQ(threads.AttributesCalls(), 0);
  EXPECT_TRUE(threads.Names().empty());
}

TEST_F(ScaleThreads, EachPassStartsItsThreadsAndTheyAreNamed) {
  const faults::Threads threads;
  const TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  ASSERT_TRUE(Scale(dest, 3, source, kLanczos3, 5, 12));
  EXPECT_EQ(threads.StackSizes().size(), 6u);
  const std::vector<faults::NamedThread> names = threads.Names();
  ASSERT_EQ(names.size(), 6u);
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(names[i].name, i < 3 ? "PictureScale Ho" : "PictureScale Ve") << i;
}

TEST_F(ScaleThreads, ThreadsWithoutRowsAreNamedToo) {
  const faults::Threads threads;
  TestImage source(9, 2, ImageFormatRGB), dest(5, 1, ImageFormatRGB);
  source.FillNoise(1);
  ExpectNaive(dest, 7, source, MakeTemp(dest, source, 5), kLanczos3, 5, 1);
  EXPECT_EQ(threads.Names().size(), 14u);
}

TEST_F(ScaleThreads, ZeroTakesAThreadForEachProcessor) {
  const faults::Processors processors(5);
  const faults::Threads threads;
  TestImage source(9, 40, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  ExpectNaive(dest, 0, source, MakeTemp(dest, source, 5), kLanczos3, 5, 12);
  EXPECT_EQ(threads.StackSizes().size(), 10u);
}

TEST_F(ScaleThreads, RowsOfThreadsThatCannotBeStartedAreDoneHere) {
  faults::Threads threads;
  for (const int nth : {1, 4, 5, 6}) threads.FailCreateAt(nth);
  TestImage source(9, 40, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  ExpectNaive(dest, 3, source, MakeTemp(dest, source, 5), kLanczos3, 5, 12);
  EXPECT_EQ(threads.DetachCalls(), 2);
  // They name the calling thread.
  const std::vector<faults::NamedThread> names = threads.Names();
  EXPECT_EQ(names.size(), 6u);
  EXPECT_EQ(std::ranges::count(names, std::this_thread::get_id(), &faults::NamedThread::caller), 4);
}

TEST_F(ScaleThreads, SourceAndDestinationMayBeTheSameImage) {
  for (const auto &[width, height] : {std::pair{12, 9}, {5, 4}}) {
    TestImage image(12, 9, ImageFormatRGBA);
    image.FillNoise(1);
    ExpectNaive(image, 3, image, MakeTemp(image, image, width), kLanczos3, width, height);
  }
}

// --- refusals ---

TEST_F(ScaleThreads, NilImagesSizesNotAboveZeroAndOtherModesAreRefused) {
  TestImage source(3, 3, ImageFormatG), dest(3, 3, ImageFormatG);
  dest.FillNoise(1);
  const Bytes before = dest.Storage();
  EXPECT_FALSE(PictureScaleZVKMT(nullptr, 2, source.Object(), nullptr, kBox, 3, 3));
  EXPECT_FALSE(PictureScaleZVKMT(dest.Object(), 2, nullptr, nullptr, kBox, 3, 3));
  for (const bool mapped : {false, true}) {
    source.Record().IsMapping = mapped;
    for (const int32_t size : {0, -1, INT32_MIN}) {
      EXPECT_FALSE(Scale(dest, 2, source, kBox, size, 3));
      EXPECT_FALSE(Scale(dest, 2, source, kBox, 3, size));
    }
    for (const int32_t mode : {0, -1, 8, INT32_MAX, INT32_MIN}) EXPECT_FALSE(Scale(dest, 2, source, mode, 3, 3));
  }
  EXPECT_EQ(dest.Storage(), before);
}

TEST_F(ScaleThreads, ImagesThatAreNotUsableAreRefused) {
  const std::vector<std::function<void(ImageClassData &)>> spoils = {
      [](ImageClassData &record) { record.Valid = false; },
      [](ImageClassData &record) { record.GetRow = nullptr; },
      [](ImageClassData &record) { record.GetRow = GetRowGDImage; },  // without a table
      [](ImageClassData &record) { record.Width = -1; },
      [](ImageClassData &record) { record.Height = 0; },
  };
  const faults::Threads threads;
  for (size_t spoil = 0; spoil < spoils.size(); ++spoil) {
    for (int32_t image = 0; image < 3; ++image) {
      TestImage source(3, 3, ImageFormatG), dest(3, 3, ImageFormatG), temp(3, 3, ImageFormatScaling1);
      dest.FillNoise(1);
      const Bytes before = dest.Storage();
      spoils[spoil]((image == 0 ? source : image == 1 ? dest : temp).Record());
      EXPECT_FALSE(Scale(dest, 2, source, temp, kBox, 3, 3)) << spoil << " " << image;
      EXPECT_EQ(dest.Storage(), before);
    }
  }
  EXPECT_EQ(threads.AttributesCalls(), 0);
}

TEST_F(ScaleThreads, RefusedPairsGiveFalseInEveryFilter) {
  for (const auto &[sourceFormat, destFormat] : {std::pair{ImageFormatRGB, ImageFormatCMYK},
                                                 {ImageFormatCMYK, ImageFormatRGB},
                                                 {ImageFormatG, ImageFormatGray16},
                                                 {ImageFormatBuffer, ImageFormatBuffer}}) {
    TestImage source(3, 3, sourceFormat), dest(3, 3, destFormat);
    for (int32_t mode = 1; mode <= 7; ++mode) EXPECT_FALSE(Scale(dest, 2, source, mode, 3, 3));
  }
}

// --- images in files ---

TEST_F(ScaleThreads, AMappedSourceOrDestinationGivesWhatOneThreadGives) {
  const faults::Threads threads;
  for (const bool mapsSource : {false, true}) {
    TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
    source.FillNoise(1);
    (mapsSource ? source : dest).Map();
    const TestImage temp = MakeTemp(dest, source, 5);
    dest.Record().Yield.YieldTicks = 1;
    fetches.clear();
    yields_ = 0;
    const Outcome single = SingleOutcome(dest, source, temp, kLanczos3, 5, 12);
    const std::vector<Fetch> singleFetches = std::exchange(fetches, {});
    const int singleYields = std::exchange(yields_, 0);
    EXPECT_TRUE(ThreadedOutcome(dest, 3, source, temp, kLanczos3, 5, 12) == single);
    EXPECT_EQ(fetches, singleFetches);
    EXPECT_EQ(yields_, singleYields);
  }
  EXPECT_EQ(threads.AttributesCalls(), 0);
}

TEST_F(ScaleThreads, AnImageInAFileIsScaledOnOneThread) {
  const auto file = host_.New("PictureZVK");
  ImageConstructorFile(file, 9, 7, ImageFormatRGB, 0, nullptr);
  ImageClassData &record = *RecordOf(file);
  ASSERT_TRUE(record.Valid);
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  for (int32_t y = 0; y < 7; ++y) std::memcpy(record.GetRow(&record, y), source.Pixel(0, y), 27);
  const TestImage temp = MakeTemp(dest, source, 5);
  const Outcome single = SingleOutcome(dest, source, temp, kLanczos3, 5, 12);
  const Outcome threaded = OutcomeOf(dest, source, temp, [&] {
    return PictureScaleZVKMT(dest.Object(), 3, file, temp.Object(), kLanczos3, 5, 12) != 0;
  });
  EXPECT_TRUE(threaded == single);
}

// --- the temp image ---

TEST_F(ScaleThreads, ATempIsAskedForInTheFinalWidthAndTheSourcesHeight) {
  TestImage source(9, 7, ImageFormatCMYKA), dest(5, 12, ImageFormatCMYKA);
  source.FillNoise(1);
  UseFactory(source);
  answers = {NewImage};
  ASSERT_TRUE(Scale(dest, 2, source, kLanczos3, 5, 12));
  EXPECT_EQ(wishes, (std::vector<std::array<int32_t, 3>>{{5, 7, 37}}));
  const Bytes scaled = dest.Storage();
  TestImage again(5, 12, ImageFormatCMYKA);
  EXPECT_EQ(scaled, NaiveOutcome(again, source, MakeTemp(again, source, 5), kLanczos3, 5, 12, kDropped).dest);
}

TEST_F(ScaleThreads, ATempInAnotherFormatOrInAFileIsTakenForOneThread) {
  const auto otherFormat = [](int32_t width, int32_t height, int32_t) {
    return NewImage(width, height, ImageFormatRGBA);
  };
  const auto mapped = [](int32_t width, int32_t height, int32_t format) {
    REALobject image = NewImage(width, height, format);
    RecordOf(image)->IsMapping = true;
    return image;
  };
  const auto inAFile = [](int32_t width, int32_t height, int32_t format) {
    REALobject image = REALnewInstance("PictureZVK");
    ImageConstructorFile(image, width, height, format, 0, nullptr);
    return image;
  };
  const faults::Threads threads;
  for (const auto &answer : std::vector<decltype(answers)::value_type>{otherFormat, mapped, inAFile}) {
    TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
    source.FillNoise(1);
    UseFactory(source);
    answers = {answer};
    wishes.clear();
    ASSERT_TRUE(Scale(dest, 2, source, kLanczos3, 5, 12));
    EXPECT_EQ(wishes.size(), 1u);
    TestImage again(5, 12, ImageFormatRGB);
    EXPECT_EQ(dest.Storage(), NaiveOutcome(again, source, MakeTemp(again, source, 5), kLanczos3, 5, 12).dest);
  }
  EXPECT_EQ(threads.AttributesCalls(), 0);
}

TEST_F(ScaleThreads, ATempThatCannotBeMadeMakesItFalse) {
  const TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  {
    faults::Heap heap;
    heap.FailCalloc([](size_t count, size_t size) { return count * size == 7 * 64; });
    EXPECT_FALSE(Scale(dest, 2, source, kLanczos3, 5, 12));
  }
  EXPECT_TRUE(host_.TakeException());  // the constructor's own
}

// --- time for the host ---

TEST_F(ScaleThreads, EachImageIsGivenTimeOnceAndTablesGiveNone) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  TestImage temp = MakeTemp(dest, source, 5);
  for (const TestImage *image : {&source, &dest, &temp}) {
    yields_ = 0;
    image->Record().Yield.YieldTicks = 1;
    ASSERT_TRUE(Scale(dest, -1, source, temp, kLanczos3, 5, 12));
    image->Record().Yield.YieldTicks = 0;
    EXPECT_EQ(yields_, 1);
  }
}

TEST_F(ScaleThreads, TheClockIsNotAskedWhileThreadsWork) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  dest.Record().Yield.YieldTicks = 1;
  const uint32_t before = ticks;
  ASSERT_TRUE(Scale(dest, 2, source, kLanczos3, 5, 12));
  EXPECT_EQ(ticks - before, 2u);  // around the one yield of the destination
  EXPECT_GE(yields_, 3);          // that one, and at least one in each pass
}

std::atomic<int> yieldsSeen = 0;
std::atomic<int> yieldsAtFirstRow = -1;

// A row that is there when the host has been given time twice since the first one was asked for.
uint8_t *RowAfterYields(ImageClassData *image, int32_t row) {
  int notYet = -1;
  yieldsAtFirstRow.compare_exchange_strong(notYet, yieldsSeen);
  while (yieldsSeen < yieldsAtFirstRow + 2) std::this_thread::yield();
  return GetRowLinear(image, row);
}

TEST_F(ScaleThreads, TheHostGetsTimeForAsLongAsThreadsWorkInEitherPass) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  const TestImage temp = MakeTemp(dest, source, 5);
  const Outcome expected = NaiveOutcome(dest, source, temp, kLanczos8, 5, 12, kDropped);
  // ScaleHost sees to it that all of it comes on the host's own thread.
  onYield_ = [] { ++yieldsSeen; };
  // One is read by the threads of the first pass, the other written by those of the second.
  for (const TestImage *image : {&source, &dest}) {
    yieldsAtFirstRow = -1;
    image->Record().GetRow = RowAfterYields;
    EXPECT_TRUE(ThreadedOutcome(dest, 2, source, temp, kLanczos8, 5, 12) == expected);
    EXPECT_GE(yieldsAtFirstRow, 0);
    image->Record().GetRow = GetRowLinear;
  }
}

TEST_F(ScaleThreads, AnImageThatIsClosedBetweenThePassesIsNotWritten) {
  const TestImage source(9, 7, ImageFormatRGB), temp = MakeTemp(source, source, 5);
  for (const int32_t threads : {1, 3}) {
    TestImage dest(5, 12, ImageFormatRGB);
    dest.FillNoise(1);
    const Bytes before = dest.Storage();
    yields_ = 0;
    onYield_ = [&] {
      if (yields_ == 1) dest.Record().GetRow = nullptr;  // of which the first pass knows nothing
    };
    EXPECT_TRUE(Scale(dest, threads, source, temp, kLanczos3, 5, 12));
    EXPECT_EQ(dest.Storage(), before);
  }
}

TEST_F(ScaleThreads, OnlyTheYieldTimeOfARecordChanges) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  dest.Record().Yield.YieldTicks = 1;
  const ImageClassData sourceBefore = source.Record();
  ImageClassData destBefore = dest.Record();
  ASSERT_TRUE(Scale(dest, 3, source, kLanczos3, 5, 12));
  EXPECT_NE(dest.Record().Yield.LastYieldTime, destBefore.Yield.LastYieldTime);
  destBefore.Yield.LastYieldTime = dest.Record().Yield.LastYieldTime;
  EXPECT_EQ(std::memcmp(&source.Record(), &sourceBefore, sizeof sourceBefore), 0);
  EXPECT_EQ(std::memcmp(&dest.Record(), &destBefore, sizeof destBefore), 0);
}

// --- memory ---

TEST_F(ScaleThreads, APassWithoutMemoryForItsThreadsDoesNotRunAndItIsStillTrue) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  dest.FillNoise(2);
  const TestImage temp = MakeTemp(dest, source, 5).FillNoise(3);
  constexpr int32_t kThreads = 29;  // so many that nothing else takes as much memory as their records
  const auto withoutRecords = [&](int pass) {
    faults::Heap heap;
    heap.FailCalloc([pass, passes = 0](size_t count, size_t size) mutable {
      return count * size == kThreads * sizeof(ThreadData) && ++passes == pass;
    });
    return ThreadedOutcome(dest, kThreads, source, temp, kLanczos3, 5, 12);
  };
  const Outcome first = withoutRecords(1);
  EXPECT_TRUE(first.result);
  EXPECT_EQ(first.temp, temp.Storage());
  EXPECT_NE(first.dest, dest.Storage());  // made of what the temp image held
  const Outcome second = withoutRecords(2);
  EXPECT_TRUE(second.result);
  EXPECT_EQ(second.temp, NaiveOutcome(dest, source, temp, kLanczos3, 5, 12, kDropped).temp);
  EXPECT_EQ(second.dest, dest.Storage());
}

TEST_F(ScaleThreads, WithoutAMutexOrMemoryToWorkInTheBytesAreTheSame) {
  TestImage source(9, 40, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  const TestImage temp = MakeTemp(dest, source, 5);
  const Outcome expected = NaiveOutcome(dest, source, temp, kLanczos3, 5, 12, kDropped);
  // Without the records of the threads of a pass nothing is made at all.
  std::vector<size_t> ofRecords;
  {
    const faults::Heap heap;
    ASSERT_TRUE(ThreadedOutcome(dest, 3, source, temp, kLanczos3, 5, 12) == expected);
    const std::vector<faults::Allocation> calls = heap.Allocations();
    for (size_t i = 0; i < calls.size(); ++i) {
      if (calls[i].count * calls[i].size == 3 * sizeof(ThreadData)) ofRecords.push_back(i + 1);
    }
  }
  ASSERT_EQ(ofRecords.size(), 2u);
  int refused = 0, made = 0;
  for (size_t nth = 1;; ++nth) {
    if (std::ranges::count(ofRecords, nth) != 0) continue;
    faults::Heap heap;
    heap.FailCallocAt(static_cast<int>(nth));
    const Outcome outcome = ThreadedOutcome(dest, 3, source, temp, kLanczos3, 5, 12);
    if (std::ranges::none_of(heap.Allocations(), [](const auto &call) { return call.address == nullptr; })) break;
    outcome.result ? ++made : ++refused;
    if (outcome.result) {
      EXPECT_TRUE(outcome == expected) << nth;
    }
  }
  EXPECT_EQ(refused, 2);  // the tables
  EXPECT_GT(made, 12);    // the mutexes of both passes, and what their threads work in
}

TEST_F(ScaleThreads, WithoutATableItIsFalseAndTheDestinationStays) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  dest.FillNoise(2);
  const TestImage temp = MakeTemp(dest, source, 5);
  int refused = 0;
  for (int nth = 1;; ++nth) {
    faults::Heap heap;
    heap.FailCallocAt(nth);
    const Outcome outcome = ThreadedOutcome(dest, -1, source, temp, kLanczos3, 5, 12);
    if (std::ranges::none_of(heap.Allocations(), [](const auto &call) { return call.address == nullptr; })) break;
    EXPECT_EQ(heap.Outstanding(), 0u);
    if (outcome.result) continue;  // with less memory to work in
    ++refused;
    EXPECT_EQ(outcome.dest, dest.Storage());
  }
  EXPECT_EQ(refused, 2);  // the tables
}

}  // namespace
}  // namespace zvk::scaling
