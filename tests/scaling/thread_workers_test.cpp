#include "scaling/thread_workers.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "scaling/scale_taps.h"
#include "tests/scaling/scale_testing.h"
#include "tests/support/thread_faults.h"

namespace zvk::scaling {
namespace {

constexpr int32_t kLanczos3 = 3;

struct TestedPair {
  const char *name;
  int32_t sourceFormat;
  int32_t destFormat;
  const ScalePair &pair;
};

void PrintTo(const TestedPair &pair, std::ostream *out) { *out << pair.name; }

const TestedPair kPairs[] = {
    {"CMYKA_to_CMYKA", ImageFormatCMYKA, ImageFormatAKYMC, CMYKA_to_CMYKA},
    {"CMYKA_to_GA", ImageFormatACMYK, ImageFormatGA, CMYKA_to_GA},
    {"RGBA_to_RGBA", ImageFormatRGBA, ImageFormatABGR, RGBA_to_RGBA},
    {"RGBA_to_GA", ImageFormatBGRA, ImageFormatAG, RGBA_to_GA},
    {"GA_to_CMYKA", ImageFormatGA, ImageFormatACMYK, GA_to_CMYKA},
    {"GA_to_RGBA", ImageFormatAG, ImageFormatARGB, GA_to_RGBA},
    {"GA_to_GA", ImageFormatGA, ImageFormatAG, GA_to_GA},
    {"G16_to_G16", ImageFormatGray16, ImageFormatGray16, G16_to_G16},
    {"CMYK_to_CMYK", ImageFormatCMYK, ImageFormatXKYMC, CMYK_to_CMYK},
    {"CMYK_to_G", ImageFormatKYMC, ImageFormatG, CMYK_to_G},
    {"RGB_to_RGB", ImageFormatRGB, ImageFormatXBGR, RGB_to_RGB},
    {"RGB_to_G", ImageFormatXRGB, ImageFormatG, RGB_to_G},
    {"G_to_CMYK", ImageFormatG, ImageFormatCMYK, G_to_CMYK},
    {"G_to_RGB", ImageFormatG, ImageFormatBGR, G_to_RGB},
    {"G_to_G", ImageFormatG, ImageFormat2of3, G_to_G},
};

class ThreadWorkersOfPair : public testing::TestWithParam<TestedPair> {
 protected:
  static constexpr int32_t kWidth = 9, kHeight = 31;

  ThreadWorkersOfPair() : temp_(MakeTemp(dest_, source_, kWidth)) {
    source_.FillNoise(1);
    dest_.FillNoise(2);
    temp_.FillNoise(3);
  }

  naive::Pair NaivePair() const { return *naive::PairFor(source_.Record(), dest_.Record()); }

  // Expects that what `run` does to an image is what `runNaively` does to its rows `first` to `last`, and nothing else.
  template <class Run, class RunNaively>
  static void ExpectRows(const TestImage &image, int32_t first, int32_t last, Run run, RunNaively runNaively) {
    const Bytes before = image.Storage();
    runNaively();
    std::vector<Bytes> rows;
    for (int32_t y = first; y <= last; ++y) rows.push_back(image.Row(y, kWidth));
    image.Storage() = before;
    for (int32_t y = first; y <= last; ++y) image.SetRow(y, rows[y - first]);
    const Bytes expected = image.Storage();
    image.Storage() = before;
    run();
    EXPECT_EQ(image.Storage(), expected);
  }

  TestImage source_{23, 40, GetParam().sourceFormat};
  TestImage dest_{kWidth + 1, kHeight, GetParam().destFormat};
  TestImage temp_;
};

INSTANTIATE_TEST_SUITE_P(Pairs, ThreadWorkersOfPair, testing::ValuesIn(kPairs),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_P(ThreadWorkersOfPair, TheHorizontalWorkerMakesItsTempRowsWithoutRounding) {
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleLanczos3), kHorizontalAxis, kWidth, kWidth / 23.0, 23, nullptr));
  // What belongs to the other pass is not set.
  const ScaleJob told{&source_.Record(), nullptr, 0, kWidth, &temp_.Record(), table.Lists()};
  const PassJob job(told, ShortenColumns(told, GetParam().pair, kRoundTowardZero, false));
  for (const auto &[first, last] : {std::pair{0, 39}, {4, 32}, {39, 39}}) {
    const ThreadedPass pass = HorizontalOnThreads(PassesOf(GetParam().pair), job);
    ExpectRows(
        temp_, first, last, [&] { PassWorker(first, last, -1, 0, &pass); },
        [&] {
          naive::PassOverColumns(NaivePair(), source_.Record(), temp_.Record(),
                                 naive::TapsOfAxis(kLanczos3, true, kWidth, kWidth / 23.0, 23), 0.0);
        });
  }
}

TEST_P(ThreadWorkersOfPair, TheVerticalWorkerMakesItsRowsWithRounding) {
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleLanczos3), kVerticalAxis, kHeight, kHeight / 40.0, 40, nullptr));
  const ScaleJob told{nullptr, &dest_.Record(), kHeight, kWidth, &temp_.Record(), table.Lists()};
  const PassJob job(told, ShortenRows(told, GetParam().pair));
  for (const auto &[first, last] : {std::pair{0, 30}, {4, 17}, {30, 30}}) {
    const ThreadedPass pass = VerticalOnThreads(PassesOf(GetParam().pair), job);
    ExpectRows(
        dest_, first, last, [&] { PassWorker(first, last, -1, 0, &pass); },
        [&] {
          naive::PassOverRows(NaivePair(), temp_.Record(), dest_.Record(),
                              naive::TapsOfAxis(kLanczos3, false, kHeight, kHeight / 40.0, 40), kWidth);
        });
  }
}

// --- names ---

// Gives the thread that runs the tests its name back.
class ThreadNames : public testing::Test {
 protected:
  ThreadNames() { pthread_getname_np(pthread_self(), before_.data(), before_.size()); }
  ~ThreadNames() override { pthread_setname_np(pthread_self(), before_.data()); }

  // What the system calls this thread after a worker without rows has run; empty if it was not named anew.
  static std::optional<std::string> NameAfter(const ThreadedPass &pass, int32_t threadIndex, int8_t viaDispatch) {
    pthread_setname_np(pthread_self(), "nobody");
    PassWorker(0, -1, threadIndex, viaDispatch, &pass);
    std::array<char, 16> name = {};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return std::string(name.data()) == "nobody" ? std::optional<std::string>() : name.data();
  }

  std::array<char, 16> before_ = {};
};

TEST_F(ThreadNames, AWorkerWithoutRowsStillNamesItsThreadAsFarAsTheSystemTakesIt) {
  const ScaleJob job{};
  for (const TestedPair &tested : kPairs) {
    const ScalePasses &passes = PassesOf(tested.pair);
    EXPECT_EQ(NameAfter(HorizontalOnThreads(passes, job), 0, 0), "PictureScale Ho") << tested.name;
    EXPECT_EQ(NameAfter(VerticalOnThreads(passes, job), 31, 0), "PictureScale Ve") << tested.name;
  }
}

TEST_F(ThreadNames, AThreadOfAPoolAndTheCallingThreadKeepTheirNames) {
  const ScaleJob job{};
  for (const TestedPair &tested : kPairs) {
    const ScalePasses &passes = PassesOf(tested.pair);
    for (const ThreadedPass &pass : {HorizontalOnThreads(passes, job), VerticalOnThreads(passes, job)}) {
      EXPECT_EQ(NameAfter(pass, 0, 1), std::nullopt) << tested.name;
      EXPECT_EQ(NameAfter(pass, -1, 0), std::nullopt) << tested.name;
    }
  }
}

TEST_F(ThreadNames, AShortNameKeepsItsIndex) {
  const faults::Threads threads;
  NameThread("Worker", 12);
  NameThread("Worker", INT32_MIN);
  ASSERT_EQ(threads.Names().size(), 2u);
  EXPECT_EQ(threads.Names()[0].name, "Worker 12");
  EXPECT_EQ(threads.Names()[1].name, "Worker -2147483");
}

}  // namespace
}  // namespace zvk::scaling
