#include "image/pixel_work.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/support/plugin_host.h"

namespace zvk::image {
namespace {

class PixelWorkTest : public testing::Test {
 protected:
  using Image = standalone::Owned<standalone::Object>;

  Image New() {
    auto image = host_.New("PictureZVK");
    ImageConstructor(image, 4, 3, ImageFormatG);
    return image;
  }

  // How often work on two images was awaited while `act` ran.
  int WaitsIn(REALobject first, REALobject second, const std::function<void()> &act) {
    waits_ = 0;
    const PixelWork work(*RecordOf(first), *RecordOf(second), Await, this);
    act();
    return std::exchange(waits_, 0);
  }

  static void Await(const void *context) {
    ++const_cast<PixelWorkTest *>(static_cast<const PixelWorkTest *>(context))->waits_;
  }

  PluginHost host_;
  int waits_ = 0;
};

TEST_F(PixelWorkTest, AnImageThatIsWorkedOnIsClosedWhenTheWorkHasEnded) {
  for (const bool closesFirst : {false, true}) {
    const auto first = New(), second = New();
    REALobject const closed = closesFirst ? first : second;
    EXPECT_EQ(WaitsIn(first, second, [&] { ImageDestructor(closed); }), 1);
    EXPECT_EQ(RecordOf(closed)->Buffer, nullptr);
  }
}

TEST_F(PixelWorkTest, TheBufferIsThereWhileTheWorkIsAwaited) {
  const auto image = New();
  struct Seen {
    const ImageClassData *record;
    mutable const uint8_t *buffer;
  } seen{RecordOf(image), nullptr};
  const auto look = [](const void *context) {
    const auto &seen = *static_cast<const Seen *>(context);
    seen.buffer = seen.record->GetRow != nullptr ? seen.record->Buffer : nullptr;
  };
  const uint8_t *buffer = RecordOf(image)->Buffer;
  const PixelWork work(*RecordOf(image), *RecordOf(image), look, &seen);
  ImageDestructor(image);
  EXPECT_EQ(seen.buffer, buffer);
}

TEST_F(PixelWorkTest, WorkThatHasEndedIsNotAwaitedAgainNorAreItsImagesLookedAt) {
  auto first = New(), second = New();
  EXPECT_EQ(WaitsIn(first, second,
                    [&] {
                      first = {};
                      second = {};
                      New() = {};
                    }),
            1);
}

TEST_F(PixelWorkTest, OtherImagesAreClosedAtOnce) {
  const auto first = New(), second = New();
  EXPECT_EQ(WaitsIn(first, second, [&] { New() = {}; }), 0);
  const auto never = host_.New("PictureZVK");
  EXPECT_EQ(WaitsIn(first, second, [&] { ImageDestructor(never); }), 0);
  EXPECT_EQ(waits_, 0);
  ImageDestructor(first);  // when there is no work any more
  EXPECT_EQ(waits_, 0);
}

TEST_F(PixelWorkTest, AnImageIsClosedWhenTheWorkOnViewsOfItHasEnded) {
  const auto image = New(), other = New();
  const Image view = Adopt(GetMirroredView(Adopt(ClipImage5(image, 1, 1, 2, 2))));
  EXPECT_EQ(WaitsIn(view, other, [&] { ImageDestructor(image); }), 1);
}

TEST_F(PixelWorkTest, AViewOfAnImageThatIsWorkedOnEndsAtOnce) {
  const auto image = New(), other = New();
  Image view = Adopt(ClipImage1(image));
  EXPECT_EQ(WaitsIn(image, other, [&] { view = {}; }), 0);
}

TEST_F(PixelWorkTest, AnImageThatEndsWithAViewIsAwaited) {
  const auto other = New();
  const Image view = Adopt(ClipImage1(New()));
  const Image viewOfView = Adopt(ClipImage1(view));
  EXPECT_EQ(WaitsIn(viewOfView, other, [&] { ImageDestructor(view); }), 1);
}

TEST_F(PixelWorkTest, ABlockOfTheCallersMayEndWithItsImage) {
  const auto image = host_.New("PictureZVK"), other = New();
  ImageConstructorMemory(image, host_.NewMemoryBlock(12), 4, 3, ImageFormatG, 4);
  const Image view = Adopt(GrayChannel(image));
  EXPECT_EQ(WaitsIn(view, other, [&] { ImageDestructor(image); }), 1);
}

TEST_F(PixelWorkTest, TheBlockOfAFileMayBeWhatAnotherImageStandsOn) {
  const auto file = host_.New("PictureZVK"), image = host_.New("PictureZVK"), other = New();
  ImageConstructorFile(file, 4, 3, ImageFormatG, 0, nullptr);
  ImageConstructorMemory(image, AdoptMemoryBlock(GetMemory(file, 0)), 4, 3, ImageFormatG, 4);
  EXPECT_EQ(WaitsIn(image, other, [&] { ImageDestructor(file); }), 1);
}

TEST_F(PixelWorkTest, AllWorkOnAnImageIsAwaited) {
  const auto image = New(), other = New();
  const PixelWork before(*RecordOf(image), *RecordOf(other), Await, this);
  EXPECT_EQ(WaitsIn(other, image, [&] { ImageDestructor(image); }), 2);
}

}  // namespace
}  // namespace zvk::image
