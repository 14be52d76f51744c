// When drawing gives the host time, and what other code of the host may do to the image meanwhile.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "image/image_formats.h"
#include "image/image_storage.h"
#include "pictures/picture_import.h"
#include "tests/pictures/closed_parent.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using Bytes = std::vector<uint8_t>;

TEST(ImportYields, ColoursAtTheStartBeforeTheRowsAfterEachAndAtTheEnd) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 6, kGD);
  auto image = NewImage(host, 4, 10, ImageFormatRGB);
  YieldAlways(host, image);
  std::vector<int32_t> locksHeld;
  host->onYield = [&] { locksHeld.push_back(picture->LocksHeld()); };
  rbDrawPictureRGB6(image, picture, 0, 0, 4, 3);
  // The picture is locked from the second yield to the last but one.
  EXPECT_EQ(locksHeld, (std::vector<int32_t>{0, 1, 1, 1, 1, 0}));
}

TEST(ImportYields, AnEmptyRectangleYieldsAtTheStartAndAtTheEnd) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 6, kGD);
  auto image = NewImage(host, 4, 10, ImageFormatRGB);
  YieldAlways(host, image);
  rbDrawPictureRGB6(image, picture, 4, 0, 4, 3);
  EXPECT_EQ(Yields(host), 2);
}

TEST(ImportYields, APictureThatCannotBeReadYieldsOnce) {
  PluginHost host;
  auto image = NewImage(host, 4, 10, ImageFormatRGB);
  YieldAlways(host, image);
  rbDrawPictureRGB2(image, nullptr);
  EXPECT_EQ(Yields(host), 1);
}

TEST(ImportYields, TheGrayChannelYieldsOnce) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 6, kGD);
  auto image = NewImage(host, 4, 10, ImageFormatG);
  YieldAlways(host, image);
  int64_t yields = 0;
  for (const auto draw :
       {rbDrawPictureRedToGrayChannel8, rbDrawPictureGreenToGrayChannel8, rbDrawPictureBlueToGrayChannel8}) {
    draw(image, picture, 0, 0, 4, 6, 0, 0);
    EXPECT_EQ(Yields(host), ++yields);
  }
}

TEST(ImportYields, AViewWhoseParentIsClosedInAYieldGetsNoMoreRows) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 3, kGD);
  for (const int32_t closingYield : {1, 2, 3, 6}) {
    const ClosedParent drawn = DrawWhileParentCloses(host, ImageFormatRGB, closingYield,
                                                     [&](REALobject view) { rbDrawPictureRGB2(view, picture); });
    EXPECT_EQ(drawn.yields, 6);
    EXPECT_EQ(drawn.after, drawn.atClosing);
    EXPECT_EQ(drawn.atClosing != drawn.before, closingYield > 2);
    // Yields once.
    const ClosedParent gray = DrawWhileParentCloses(host, ImageFormatG, closingYield, [&](REALobject view) {
      rbDrawPictureGreenToGrayChannel6(view, picture, 0, 0, 4, 3);
    });
    EXPECT_EQ(gray.yields, 1);
    EXPECT_EQ(gray.after != gray.before, closingYield > 1);
  }
}

// Rows that are good until the next yield only: each is copied out to fresh memory and back.
class RowsThatMove {
 public:
  explicit RowsThatMove(ImageClassData &record) : original_(record.Buffer), rowSize_(record.RowSize) {
    current_ = this;
    record.GetRow = [](ImageClassData *, int32_t index) { return current_->Lend(index); };
  }
  ~RowsThatMove() { current_ = nullptr; }

  void Move() {
    if (!lent_) return;
    std::memcpy(original_ + lentIndex_ * rowSize_, lent_->data(), lent_->size());
    lent_.reset();  // a write to the old address is a write to freed memory
  }

 private:
  uint8_t *Lend(int32_t index) {
    Move();
    lentIndex_ = index;
    lent_ = std::make_unique<Bytes>(original_ + index * rowSize_, original_ + (index + 1) * rowSize_);
    return lent_->data();
  }

  static RowsThatMove *current_;
  uint8_t *original_;
  int32_t rowSize_;
  int32_t lentIndex_ = 0;
  std::unique_ptr<Bytes> lent_;
};

RowsThatMove *RowsThatMove::current_ = nullptr;

TEST(ImportYields, HostCodeInAYieldMayMoveTheRowsAndTheOffsets) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 3, 3, kGD);
  auto image = host.New("PictureZVK");
  ImageConstructor(image, 3, 3, ImageFormatRGBX);
  ImageClassData &record = *RecordOf(image);
  YieldAlways(host, image);
  RowsThatMove rows(record);
  host->onYield = [&] {
    rows.Move();
    record.RedOffset = Yields(host) == 3 ? 3 : 0;  // for the second row
  };
  rbDrawPictureRGB2(image, picture);
  for (int32_t x = 0; x < 3; ++x) {
    EXPECT_EQ(record.Buffer[4 * x], picture->GetPixel(x, 0).red);
    EXPECT_EQ(record.Buffer[64 + 4 * x + 3], picture->GetPixel(x, 1).red);
    EXPECT_EQ(record.Buffer[64 + 4 * x], 0);
    EXPECT_EQ(record.Buffer[128 + 4 * x], picture->GetPixel(x, 2).red);
  }
}

}  // namespace
}  // namespace zvk::pictures
