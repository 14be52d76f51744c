// Code of the host that runs while threads work may close the images that they work on. The threads are held back until
// the closing waits for them.
#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "image/views.h"
#include "scaling/scale_engine.h"
#include "tests/scaling/scale_closing.h"
#include "tests/support/plugin_host.h"
#include "tests/support/thread_faults.h"

namespace zvk::scaling {
namespace {

constexpr int32_t kTriangle = 1;
constexpr int32_t kLanczos3 = 3;
constexpr int kThreads = 3;

enum class Pass : uint8_t { kHorizontal, kVertical };

// Where threads wait until it is opened.
class Gate {
 public:
  void Enter() {
    std::unique_lock lock(mutex_);
    ++arrived_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return isOpen_; });
  }
  void AwaitArrivals(int count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return arrived_ >= count; });
  }
  void Open() {
    const std::scoped_lock lock(mutex_);
    isOpen_ = true;
    changed_.notify_all();
  }
  bool IsOpen() {
    const std::scoped_lock lock(mutex_);
    return isOpen_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int arrived_ = 0;
  bool isOpen_ = false;
};

// A scale on threads of 4 x 8 gray pixels to as many, which are the same. What nobody has written is 99.
class ScaleClosingThreads : public ScaleClosing {
 protected:
  ScaleClosingThreads() { std::copy(kPixels.begin(), kPixels.end(), RecordOf(source_)->Buffer); }

  // Scales, and has `act` run in a yield of a pass whose threads have all been started and have not yet read or written
  // anything. They go on when this thread sleeps in it, which is how it waits for them, or else after it. True if it
  // has waited.
  bool WaitsIn(Pass pass, const std::function<void()> &act) {
    const std::string names = pass == Pass::kHorizontal ? "PictureScale H" : "PictureScale V";
    const size_t started = pass == Pass::kHorizontal ? kThreads : 2 * kThreads;
    const std::thread::id host = std::this_thread::get_id();
    Gate gate;
    bool hasActed = false;
    bool isActing = false;
    bool hasWaited = false;
    faults::Threads threads;
    threads.BeforeName([&](const std::string &name) {
      if (name.starts_with(names)) gate.Enter();
    });
    threads.BeforeSleep([&] {
      if (std::this_thread::get_id() == host && isActing) gate.Open();
    });
    host_->onYield = [&] {
      if (nestedAct_) std::exchange(nestedAct_, nullptr)();
      if (hasActed || threads.StackSizes().size() != started) return;
      hasActed = true;
      gate.AwaitArrivals(kThreads);
      isActing = true;
      act();
      isActing = false;
      hasWaited = gate.IsOpen();
      gate.Open();
    };
    EXPECT_TRUE(Scale());
    EXPECT_TRUE(hasActed);
    host_->onYield = nullptr;
    return hasWaited;
  }

  bool Scale() { return PictureScaleZVKMT(dest_, kThreads, source_, temp_, kTriangle, 4, 8) != 0; }

  // What a yield does that comes before `act` has ended.
  std::function<void()> nestedAct_;

  inline static const Bytes kPixels = [] {
    Bytes pixels(4 * 8);
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(100 + i);
    return pixels;
  }();
  inline static const Bytes kUntouched = Bytes(4 * 8, 99);

  Image source_ = New({4, 8}, ImageFormatG);
  Image temp_ = New({4, 8}, ImageFormatScaling1);
  Image dest_ = New({4, 8}, ImageFormatG);
  const Block &tempBlock_ = *std::next(blocks_.begin(), 1);
  const Block &destBlock_ = *std::next(blocks_.begin(), 2);
};

// --- what waits ---

TEST_F(ScaleClosingThreads, ClosingTheSourceWaitsForTheThreadsThatReadIt) {
  EXPECT_TRUE(WaitsIn(Pass::kHorizontal, [&] {
    ImageDestructor(source_);
    EXPECT_EQ(All(tempBlock_), kPixels);
  }));
  EXPECT_EQ(All(destBlock_), kPixels);
}

TEST_F(ScaleClosingThreads, ClosingTheTempWaitsForTheThreadsThatWriteIt) {
  EXPECT_TRUE(WaitsIn(Pass::kHorizontal, [&] {
    ImageDestructor(temp_);
    EXPECT_EQ(All(tempBlock_), kPixels);
  }));
  EXPECT_EQ(All(destBlock_), kUntouched) << "there is nothing to read any more";
}

TEST_F(ScaleClosingThreads, ClosingTheTempWaitsForTheThreadsThatReadIt) {
  EXPECT_TRUE(WaitsIn(Pass::kVertical, [&] {
    ImageDestructor(temp_);
    EXPECT_EQ(All(destBlock_), kPixels);
  }));
}

TEST_F(ScaleClosingThreads, ClosingTheDestinationWaitsForTheThreadsThatWriteIt) {
  EXPECT_TRUE(WaitsIn(Pass::kVertical, [&] {
    ImageDestructor(dest_);
    EXPECT_EQ(All(destBlock_), kPixels);
  }));
}

TEST_F(ScaleClosingThreads, ClosingAnImageThatAPassDoesNotWorkOnDoesNotWait) {
  auto other = New({4, 8}, ImageFormatG);
  EXPECT_FALSE(WaitsIn(Pass::kHorizontal, [&] { other = {}; }));
  EXPECT_FALSE(WaitsIn(Pass::kVertical, [&] { ImageDestructor(source_); }));
  EXPECT_EQ(All(destBlock_), kPixels);
}

TEST_F(ScaleClosingThreads, ADestinationThatIsClosedInTheFirstPassIsNotWritten) {
  EXPECT_FALSE(WaitsIn(Pass::kHorizontal, [&] { ImageDestructor(dest_); }));
  EXPECT_EQ(All(tempBlock_), kPixels);
  EXPECT_EQ(All(destBlock_), kUntouched);
}

TEST_F(ScaleClosingThreads, ClosingAllImagesWaitsOnce) {
  EXPECT_TRUE(WaitsIn(Pass::kHorizontal, [&] {
    for (const Image *image : {&dest_, &temp_, &source_, &temp_}) ImageDestructor(*image);
    EXPECT_EQ(All(tempBlock_), kPixels);
  }));
  EXPECT_EQ(All(destBlock_), kUntouched);
}

// --- storage that images share ---

TEST_F(ScaleClosingThreads, ClosingAnImageWaitsForTheThreadsThatWorkOnAViewOfIt) {
  const Image source = source_;
  source_ = Adopt(GetMirroredView(Adopt(ClipImage1(source))));
  EXPECT_TRUE(WaitsIn(Pass::kHorizontal, [&] { ImageDestructor(source); }));
  const Bytes mirrored = All(destBlock_);
  for (int32_t y = 0; y < 8; ++y) {
    EXPECT_TRUE(std::equal(&mirrored[4 * y], &mirrored[4 * y] + 4, &kPixels[4 * (7 - y)])) << y;
  }
}

TEST_F(ScaleClosingThreads, AnImageThatEndsWithTheLastViewButOneIsWaitedFor) {
  ImageDestructor(temp_);
  ImageConstructor(temp_, 4, 8, ImageFormatScaling1);
  const Image view = Adopt(ClipImage1(temp_));
  temp_ = Adopt(ClipImage1(view));
  EXPECT_TRUE(WaitsIn(Pass::kVertical, [&] { ImageDestructor(view); }));
  EXPECT_EQ(All(destBlock_), kPixels);
}

TEST_F(ScaleClosingThreads, EndingAViewOfAnImageThatThreadsWorkOnDoesNotWait) {
  ImageDestructor(source_);
  ImageConstructor(source_, 4, 8, ImageFormatG);
  Image view = Adopt(ClipImage1(source_));
  EXPECT_FALSE(WaitsIn(Pass::kHorizontal, [&] { view = {}; }));
}

TEST_F(ScaleClosingThreads, AViewOfAnImageThatWasClosedInTheFirstPassHasNoRowsInTheSecondOne) {
  const Image temp = host_.New("PictureZVK");
  ImageConstructor(temp, 4, 8, ImageFormatScaling1);
  temp_ = Adopt(ClipImage1(temp));
  EXPECT_TRUE(WaitsIn(Pass::kHorizontal, [&] { ImageDestructor(temp); }));
  EXPECT_EQ(All(destBlock_), kUntouched);
}

TEST_F(ScaleClosingThreads, ClosingAnImageWaitsForTheThreadsThatWorkInItsMemory) {
  const auto owner = host_.New("PictureZVK");
  ImageConstructor(owner, 64, 8, ImageFormatG);
  const Block memory = AdoptMemoryBlock(GetMemory(owner, 0));
  ImageDestructor(dest_);
  ImageConstructorMemory(dest_, memory, 4, 8, ImageFormatG, 4);
  EXPECT_TRUE(WaitsIn(Pass::kVertical, [&] {
    ImageDestructor(owner);
    ImageDestructor(dest_);
  }));
}

// --- what comes after it ---

TEST_F(ScaleClosingThreads, AnImageThatIsClosedAndConstructedAnewHasTheRowsThatItThenHas) {
  EXPECT_TRUE(WaitsIn(Pass::kHorizontal, [&] { ConstructAnew(temp_, {4, 3}, ImageFormatScaling1, 55); }));
  EXPECT_EQ(All(tempBlock_), kPixels);
  EXPECT_EQ(All(temp_), Bytes(12, 55));
  Bytes expected(4 * 8, 0);
  std::fill_n(expected.begin(), 12, uint8_t{55});
  EXPECT_EQ(All(destBlock_), expected);

  ConstructAnew(temp_, {4, 8}, ImageFormatScaling1);
  EXPECT_FALSE(WaitsIn(Pass::kHorizontal, [&] { ConstructAnew(dest_, {4, 5}, ImageFormatG); }));
  EXPECT_EQ(All(dest_), Bytes(kPixels.begin(), kPixels.begin() + 4 * 5));
  EXPECT_FALSE(WaitsIn(Pass::kHorizontal, [&] { ConstructAnew(dest_, {3, 8}, ImageFormatG); }));
  EXPECT_EQ(All(dest_), Bytes(3 * 8, 99));
}

TEST_F(ScaleClosingThreads, ConstructingAnImageAnewWaitsLikeClosingIt) {
  const Block other = host_.NewMemoryBlock(Bytes(6, 55));
  EXPECT_TRUE(WaitsIn(Pass::kVertical, [&] {
    ImageConstructorMemory(dest_, other, 3, 2, ImageFormatG, 3);
    EXPECT_EQ(All(destBlock_), kPixels);
  }));
  EXPECT_EQ(All(other), Bytes(6, 55));
}

TEST_F(ScaleClosingThreads, AnImageMayBeDestroyedInThePassAfterWhichNobodyNeedsIt) {
  auto other = New({4, 8}, ImageFormatG);
  EXPECT_TRUE(WaitsIn(Pass::kHorizontal, [&] {
    source_ = {};
    other = {};  // when the image that was worked on is no more
  }));
  EXPECT_EQ(All(destBlock_), kPixels);
  source_ = New({4, 8}, ImageFormatG, 5);
  EXPECT_TRUE(WaitsIn(Pass::kVertical, [&] {
    temp_ = {};
    dest_ = {};
  }));
  EXPECT_EQ(All(destBlock_), Bytes(4 * 8, 5));
}

TEST_F(ScaleClosingThreads, AScaleInAYieldOfAnotherOneMayCloseItsImages) {
  const auto otherSource = New({4, 8}, ImageFormatG, 7), otherDest = New({4, 8}, ImageFormatG);
  const auto scaleAnother = [&](const Image &closed, const Block &written) {
    // In the first yield of the inner scale, before that waits for its own threads.
    nestedAct_ = [&] {
      ImageDestructor(closed);
      EXPECT_EQ(All(written), kPixels);
    };
    EXPECT_TRUE(PictureScaleZVKMT(otherDest, 2, otherSource, nullptr, kTriangle, 4, 8));
    EXPECT_FALSE(nestedAct_);
    EXPECT_EQ(All(otherDest), Bytes(4 * 8, 7));
  };
  EXPECT_TRUE(WaitsIn(Pass::kVertical, [&] { scaleAnother(temp_, destBlock_); }));
  EXPECT_EQ(All(destBlock_), kPixels);
  ConstructAnew(temp_, {4, 8}, ImageFormatScaling1);
  const Block &temp = blocks_.back();
  EXPECT_TRUE(WaitsIn(Pass::kHorizontal, [&] { scaleAnother(source_, temp); }));
}

// --- any time ---

TEST_F(ScaleClosing, AScaleOnThreadsTouchesNothingOutsideOfAnImageWhateverBecomesOfItInAnyYield) {
  SpoilAnyImageInAnyYield([](REALobject dest, REALobject source, REALobject temp, Size size) {
    PictureScaleZVKMT(dest, 2, source, temp, kLanczos3, size.width, size.height);
  });
}

}  // namespace
}  // namespace zvk::scaling
