#include "pixels/pixel_watch.h"

#include <gtest/gtest.h>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/support/plugin_host.h"

namespace zvk::pixels {
namespace {

class PixelWatchTest : public testing::Test {
 protected:
  using Image = standalone::Owned<standalone::Object>;

  Image New() {
    Image image = host_.New("PictureZVK");
    ImageConstructor(image, 10, 20, ImageFormatRGB);
    return image;
  }
  Image NewInFile() {
    Image image = host_.New("PictureZVK");
    ImageConstructorFile(image, 10, 20, ImageFormatRGB, 0, nullptr);
    return image;
  }
  static ImageClassData &Record(const Image &image) { return *RecordOf(image); }

  PluginHost host_;
};

TEST_F(PixelWatchTest, AnImageThatIsLeftAloneKeepsItsPixels) {
  const Image image = New();
  const PixelWatch watch(Record(image));
  EXPECT_TRUE(watch.HasStorage());
  EXPECT_TRUE(watch.HasSamePixels());
  EXPECT_EQ(watch.Before().Height, 20);
}

TEST_F(PixelWatchTest, AnImageConstructedAnewHasOtherPixels) {
  const Image image = New();
  const PixelWatch watch(Record(image));
  ImageConstructor(image, 10, 21, ImageFormatRGB);
  EXPECT_TRUE(watch.HasStorage());
  EXPECT_FALSE(watch.HasSamePixels());
  EXPECT_EQ(watch.Before().Height, 20);
}

TEST_F(PixelWatchTest, RowsCountWhileTheImageHoldsSoManyColumns) {
  const Image image = New(), clip = Adopt(ClipImage5(image, 8, 18, 2, 2));
  const PixelWatch watch(Record(image)), watchedClip(Record(clip));
  EXPECT_EQ(&watch.Record(), &Record(image));
  EXPECT_EQ(watch.RowsOf(10, 3), 20);
  EXPECT_EQ(watch.RowsOf(11, 3), 0);
  EXPECT_EQ(watch.RowsOf(15, 2), 20);  // as many bytes
  EXPECT_EQ(watch.RowsOf(INT32_MAX, INT32_MAX), 0);
  EXPECT_EQ(watchedClip.RowsOf(2, 3), 2);
  ImageConstructor(image, 2, 7, ImageFormatRGB);
  EXPECT_EQ(watch.RowsOf(2, 3), 7);
  EXPECT_EQ(watch.RowsOf(3, 3), 0);
  EXPECT_EQ(watchedClip.RowsOf(2, 3), 0);
  ImageDestructor(image);
  EXPECT_EQ(watch.RowsOf(2, 3), 0);
}

TEST_F(PixelWatchTest, AViewLosesItsPixelsWithAnyImageThatItShows) {
  for (const bool inFile : {false, true}) {
    const Image image = inFile ? NewInFile() : New();
    const Image clip = Adopt(ClipImage5(image, 1, 1, 5, 5)), channel = Adopt(RedChannel(clip));
    const PixelWatch watchedClip(Record(clip)), watchedChannel(Record(channel));
    EXPECT_TRUE(watchedClip.HasSamePixels());
    EXPECT_TRUE(watchedChannel.HasSamePixels());
    ImageDestructor(image);
    EXPECT_FALSE(watchedClip.HasStorage());
    EXPECT_FALSE(watchedClip.HasSamePixels());
    EXPECT_FALSE(watchedChannel.HasStorage());
  }
}

TEST_F(PixelWatchTest, AViewLosesItsPixelsWithAnImageThatIsConstructedAnew) {
  const Image image = New(), view = Adopt(ClipImage1(image));
  const PixelWatch watch(Record(view));
  ImageConstructor(image, 10, 21, ImageFormatRGB);
  EXPECT_FALSE(watch.HasStorage());
}

TEST_F(PixelWatchTest, AViewThatHoldsTheCallersBlockNeedsNoOtherImage) {
  const auto block = host_.NewMemoryBlock(1000);
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 10, 20, ImageFormatRGB, 30);
  const Image clip = Adopt(ClipImage5(image, 1, 1, 5, 5)), channel = Adopt(RedChannel(image));
  const PixelWatch watchedClip(Record(clip)), watchedChannel(Record(channel));
  ImageDestructor(image);
  EXPECT_TRUE(watchedClip.HasSamePixels());
  EXPECT_FALSE(watchedChannel.HasStorage());  // which has no reference to the block
}

TEST_F(PixelWatchTest, AViewOfOneThatHoldsTheCallersBlockNeedsNoImageBehindThatOne) {
  const auto block = host_.NewMemoryBlock(1000);
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 10, 20, ImageFormatRGB, 30);
  Image clip = Adopt(ClipImage1(image));
  const Image channel = Adopt(RedChannel(clip));
  const PixelWatch watch(Record(channel));
  ImageDestructor(image);
  EXPECT_TRUE(watch.HasStorage());
  ImageDestructor(clip);
  EXPECT_FALSE(watch.HasStorage());
}

TEST_F(PixelWatchTest, OfAViewThatHadLostItsPixelsBeforeNothingIsKnown) {
  const Image image = NewInFile(), view = Adopt(ClipImage1(image));
  ImageDestructor(image);
  const PixelWatch watch(Record(view));
  EXPECT_TRUE(watch.HasStorage());
}

}  // namespace
}  // namespace zvk::pixels
