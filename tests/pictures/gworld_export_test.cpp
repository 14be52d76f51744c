#include "pictures/gworld_export.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "host/host_services.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::Object;
using Bytes = std::vector<uint8_t>;

constexpr size_t kWorldInObject = 24;

// The platform as the tests play it: one world at a time, of bytes 0xCC, and a list of what was asked, in order.
struct Platform {
  std::string calls;
  int16_t depth = 0;
  Rect bounds = {};
  void *colourTable = nullptr;
  int32_t pixelsLocked = 0;
  Bytes pixels;

  // What the world shall be like.
  int16_t status = 0;
  bool makesWorld = true, hasPixMap = true, canLock = true, hasPixels = true;
  int32_t rowBytes = 0;
} platform;

// Addresses that nobody looks behind.
int worldMark, pixMapMark, colourTableMark;

int16_t MakeWorld(void **world, int16_t depth, const Rect *bounds, void *colourTable, void *nil, uint32_t flags) {
  EXPECT_TRUE(nil == nullptr && flags == 0);
  platform.calls += "new ";
  platform.depth = depth;
  platform.bounds = *bounds;
  platform.colourTable = colourTable;
  *world = platform.makesWorld ? &worldMark : nullptr;
  return platform.status;
}

void DisposeWorld(void *world) {
  EXPECT_EQ(world, &worldMark);
  platform.calls += "dispose ";
}

void *PixMapOf(void *world) {
  EXPECT_EQ(world, &worldMark);
  platform.calls += "pixmap ";
  return platform.hasPixMap ? &pixMapMark : nullptr;
}

uint8_t Lock(void *pixMap) {
  EXPECT_EQ(pixMap, &pixMapMark);
  platform.calls += "lock ";
  platform.pixelsLocked += platform.canLock;
  return platform.canLock;
}

int32_t RowBytesOf(void *pixMap) {
  EXPECT_EQ(pixMap, &pixMapMark);
  return platform.rowBytes;
}

void *PixelsOf(void *pixMap) {
  EXPECT_EQ(pixMap, &pixMapMark);
  return platform.hasPixels ? platform.pixels.data() : nullptr;
}

void *ColourTable(int16_t number) {
  EXPECT_EQ(number, 40);
  return &colourTableMark;
}

// A host on that platform which has the class "GWorldZVK". At its end an object of that class notes the world that it
// holds.
class GWorldExport : public testing::Test {
 protected:
  explicit GWorldExport(bool hasClass = true) {
    platform = {};
    host_->SetEntry("NewGWorld", MakeWorld);
    host_->SetEntry("DisposeGWorld", DisposeWorld);
    host_->SetEntry("GetGWorldPixMap", PixMapOf);
    host_->SetEntry("LockPixels", Lock);
    host_->SetEntry("GetPixRowBytes", RowBytesOf);
    host_->SetEntry("GetPixBaseAddr", PixelsOf);
    host_->SetEntry("GetCTable", ColourTable);
    definition_.version = 12;
    definition_.name = "GWorldZVK";
    definition_.destructor = reinterpret_cast<void *>(+[](REALobject object) {
      void *world = nullptr;
      std::memcpy(&world, reinterpret_cast<uint8_t *>(object) + kWorldInObject, sizeof world);
      platform.calls += world == nullptr ? "end " : "end with world ";
    });
    if (hasClass) host_->Classes().Register(&definition_);
  }

  // An image of 3 x 2 whose bytes count up from 1.
  Owned<Object> Counted(int32_t format) {
    auto image = host_.New("PictureZVK");
    ImageConstructor(image, 3, 2, format);
    ImageClassData &record = *RecordOf(image);
    uint8_t value = 0;
    for (int32_t y = 0; y < 2; ++y) {
      for (int32_t i = 0; i < 3 * record.PixelSize; ++i) record.GetRow(&record, y)[i] = ++value;
    }
    return image;
  }

  Owned<Object> Copy(Object &image, int32_t rowBytes) {
    platform.rowBytes = rowBytes;
    platform.pixels.assign(static_cast<size_t>(rowBytes) * 2, 0xCC);
    return Adopt(CopyGWorld(image.Handle()));
  }

  void ExpectRefused(Object &image, const std::string &calls) {
    platform.calls.clear();
    const Bytes before = StorageOf(*RecordOf(image.Handle()));
    EXPECT_FALSE(Copy(image, 16));
    EXPECT_EQ(platform.calls, calls);
    EXPECT_EQ(platform.pixels, Bytes(32, 0xCC));
    EXPECT_EQ(StorageOf(*RecordOf(image.Handle())), before);
    EXPECT_FALSE(host_.TakeException());
  }

  PluginHost host_;
  REALclassDefinition definition_ = {};
};

TEST_F(GWorldExport, TheObjectHoldsTheWorldAndTheMarkBehindIt) {
  auto image = Counted(ImageFormatRGB);
  {
    const auto object = Copy(*image, 9);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->References(), 1);
    const auto *bytes = reinterpret_cast<const uint8_t *>(object.Get());
    void *world = nullptr;
    std::memcpy(&world, bytes + kWorldInObject, sizeof world);
    EXPECT_EQ(world, &worldMark);
    EXPECT_EQ(bytes[kWorldInObject + sizeof world], 1);
    EXPECT_EQ(platform.calls, "new pixmap lock ");
    EXPECT_EQ(platform.pixelsLocked, 1);
  }
  EXPECT_EQ(platform.calls, "new pixmap lock end with world ");  // the world is the object's to dispose of
}

TEST_F(GWorldExport, WithAlphaEachPixelIsAlphaRedGreenBlueWhateverTheRowBytes) {
  auto image = Counted(ImageFormatRGBA);
  ASSERT_TRUE(Copy(*image, 14));
  EXPECT_EQ(platform.depth, 32);
  EXPECT_EQ(platform.colourTable, nullptr);
  EXPECT_EQ(platform.bounds.top, 0);
  EXPECT_EQ(platform.bounds.left, 0);
  EXPECT_EQ(platform.bounds.bottom, 2);
  EXPECT_EQ(platform.bounds.right, 3);
  EXPECT_EQ(platform.pixels, (Bytes{4,  1,  2,  3,  8,  5,  6,  7,  12, 9,  10, 11, 0xCC, 0xCC,
                                    16, 13, 14, 15, 20, 17, 18, 19, 24, 21, 22, 23, 0xCC, 0xCC}));
}

TEST_F(GWorldExport, WithoutAlphaAndBelowFourBytesAPixelEachIsRedGreenBlue) {
  auto image = Counted(ImageFormatBGR);
  ASSERT_TRUE(Copy(*image, 11));
  EXPECT_EQ(platform.depth, 24);
  EXPECT_EQ(platform.pixels,
            (Bytes{3, 2, 1, 6, 5, 4, 9, 8, 7, 0xCC, 0xCC, 12, 11, 10, 15, 14, 13, 18, 17, 16, 0xCC, 0xCC}));
}

TEST_F(GWorldExport, WithoutAlphaAndWithRoomForFourBytesAPixelEachGetsAnAlphaOf255) {
  auto image = Counted(ImageFormatXRGB);
  ASSERT_TRUE(Copy(*image, 12));
  EXPECT_EQ(platform.depth, 24);
  EXPECT_EQ(platform.pixels,
            (Bytes{255, 2, 3, 4, 255, 6, 7, 8, 255, 10, 11, 12, 255, 14, 15, 16, 255, 18, 19, 20, 255, 22, 23, 24}));
}

TEST_F(GWorldExport, GrayGoesToAWorldOf8BitsWithTheGrayTableAndWithoutItsAlpha) {
  for (const int32_t format : {ImageFormatGA, ImageFormatAG, ImageFormatG}) {
    auto image = Counted(format);
    ASSERT_TRUE(Copy(*image, 4));
    EXPECT_EQ(platform.depth, 8);
    EXPECT_EQ(platform.colourTable, &colourTableMark);
    EXPECT_EQ(platform.bounds.right, 3);
    Bytes expected = {1, 3, 5, 0xCC, 7, 9, 11, 0xCC};
    if (format == ImageFormatAG) expected = {2, 4, 6, 0xCC, 8, 10, 12, 0xCC};
    if (format == ImageFormatG) expected = {1, 2, 3, 0xCC, 4, 5, 6, 0xCC};
    EXPECT_EQ(platform.pixels, expected);
  }
}

TEST_F(GWorldExport, TheGrayTableMayBeMissing) {
  host_->SetEntry("GetCTable", nullptr);
  auto image = Counted(ImageFormatG);
  ASSERT_TRUE(Copy(*image, 3));
  EXPECT_EQ(platform.colourTable, nullptr);
  EXPECT_EQ(platform.pixels, (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_F(GWorldExport, OtherImagesGiveNilBeforeAnythingIsAsked) {
  for (const int32_t format : {ImageFormatGray16, ImageFormatCMYK, ImageFormatCMYKA, ImageFormatBuffer}) {
    ExpectRefused(*Counted(format), "");
  }
  auto closed = Counted(ImageFormatRGB);
  ImageDestructor(closed);
  EXPECT_EQ(CopyGWorld(closed), nullptr);
  auto unborn = host_.New("PictureZVK");
  EXPECT_EQ(CopyGWorld(unborn), nullptr);
  auto low = Counted(ImageFormatRGB);
  RecordOf(low)->Height = 0;
  EXPECT_EQ(CopyGWorld(low), nullptr);
  EXPECT_EQ(CopyGWorld(nullptr), nullptr);
  EXPECT_EQ(platform.calls, "");
}

TEST_F(GWorldExport, AFailureInAnyStepGivesBackWhatThereIs) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatRGBA, ImageFormatGA}) {
    auto image = Counted(format);
    platform.makesWorld = false;
    ExpectRefused(*image, "new ");
    platform.makesWorld = true;
    platform.status = -108;
    ExpectRefused(*image, "new ");
    platform.status = 0;
    platform.hasPixMap = false;
    ExpectRefused(*image, "new pixmap dispose end ");
    platform.hasPixMap = true;
    platform.canLock = false;
    ExpectRefused(*image, "new pixmap lock dispose end ");
    platform.canLock = true;
    platform.hasPixels = false;
    ExpectRefused(*image, "new pixmap lock dispose end ");
    platform.hasPixels = true;
  }
}

TEST_F(GWorldExport, AMissingFunctionIsAFailureOfItsStep) {
  auto image = Counted(ImageFormatRGB);
  // From the last one on, as a function once found is kept.
  const std::pair<const char *, const char *> kSteps[] = {{"NewGWorld", ""},
                                                          {"GetGWorldPixMap", "new dispose end "},
                                                          {"LockPixels", "new pixmap dispose end "},
                                                          {"GetPixRowBytes", "new pixmap lock dispose end "},
                                                          {"GetPixBaseAddr", "new pixmap lock dispose end "}};
  for (const auto &[name, calls] : kSteps) host_->Withhold(name);
  for (const auto &[name, calls] : kSteps) {
    ExpectRefused(*image, calls);
    host_->Offer(name);
  }
  EXPECT_TRUE(Copy(*image, 9));
}

TEST_F(GWorldExport, YieldsOnceBeforeTheCopy) {
  auto image = Counted(ImageFormatRGB);
  YieldAlways(host_, image);
  host_->onYield = [] { platform.calls += "yield "; };
  ASSERT_TRUE(Copy(*image, 9));
  EXPECT_EQ(platform.calls, "yield new pixmap lock end with world ");
}

TEST_F(GWorldExport, AnImageThatIsClosedInTheYieldGivesNil) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatRGBA, ImageFormatGA}) {
    auto image = Counted(format);
    YieldAlways(host_, image);
    host_->onYield = [&] { ImageDestructor(image); };
    EXPECT_FALSE(Copy(*image, 16));
  }
  EXPECT_EQ(platform.calls, "");
}

TEST_F(GWorldExport, AViewWhoseParentIsClosedInTheYieldGivesNil) {
  auto image = Counted(ImageFormatRGB), view = Adopt(ClipImage1(image));
  ASSERT_TRUE(Copy(*view, 9));
  platform.calls.clear();
  YieldAlways(host_, view);
  host_->onYield = [&] { ImageDestructor(image); };
  EXPECT_FALSE(Copy(*view, 9));
  EXPECT_EQ(platform.calls, "");
}

TEST_F(GWorldExport, ARowThatCannotBeHadIsLeftAsItIs) {
  auto image = Counted(ImageFormatRGB);
  RecordOf(image)->GetRow = [](ImageClassData *image, int32_t index) {
    return index == 0 ? nullptr : GetRowLinear(image, index);
  };
  ASSERT_TRUE(Copy(*image, 9));
  EXPECT_EQ(platform.pixels,
            (Bytes{0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 10, 11, 12, 13, 14, 15, 16, 17, 18}));
}

// --- images beyond the 16 bits of a rectangle's sides ---

TEST_F(GWorldExport, AWidthBeyond16BitsIsWrittenAsFarAsTheRowBytesReach) {
  struct Case {
    int32_t format, rowBytes;
    Bytes row;
  };
  const Case cases[] = {{ImageFormatG, 6, {1, 2, 3, 4, 5, 6}},
                        {ImageFormatRGBA, 11, {4, 1, 2, 3, 8, 5, 6, 7, 0xCC, 0xCC, 0xCC}},
                        {ImageFormatRGB, 8, {1, 2, 3, 4, 5, 6, 0xCC, 0xCC}},
                        {ImageFormatG, 0, {}}};
  for (const auto &[format, rowBytes, row] : cases) {
    auto image = host_.New("PictureZVK");
    ImageConstructor(image, 65539, 2, format);
    ImageClassData &record = *RecordOf(image);
    for (int32_t y = 0; y < 2; ++y) std::iota(record.GetRow(&record, y), record.GetRow(&record, y) + 30, 1);
    platform.pixels.resize(1);  // an address also where there are no row bytes
    ASSERT_TRUE(Copy(*image, rowBytes));
    EXPECT_EQ(platform.bounds.right, 3);
    Bytes both = row;
    both.insert(both.end(), row.begin(), row.end());
    EXPECT_EQ(platform.pixels, both);
  }
}

TEST_F(GWorldExport, AWidthThatIsCutBelowZeroIsWrittenAllTheSame) {
  auto image = host_.New("PictureZVK");
  ImageConstructor(image, 40000, 1, ImageFormatG);
  std::fill_n(RecordOf(image)->Buffer, 40000, 7);
  RecordOf(image)->Buffer[39999] = 9;
  ASSERT_TRUE(Copy(*image, 40002));
  EXPECT_EQ(platform.bounds.right, 40000 - 65536);
  Bytes expected(80004, 0xCC);
  std::fill_n(expected.begin(), 39999, uint8_t{7});
  expected[39999] = 9;
  EXPECT_TRUE(platform.pixels == expected);
}

TEST_F(GWorldExport, OfAHeightBeyond16BitsNoRowIsWritten) {
  for (const int32_t height : {32768, 40000, 65536, 65538}) {
    auto image = host_.New("PictureZVK");
    ImageConstructor(image, 2, height, ImageFormatG);
    std::fill_n(RecordOf(image)->Buffer, RecordOf(image)->TotalSize, 7);
    ASSERT_TRUE(Copy(*image, 2));
    EXPECT_EQ(platform.bounds.bottom, static_cast<int16_t>(height));
    EXPECT_EQ(platform.pixels, Bytes(4, 0xCC)) << height;
  }
}

class GWorldExportWithoutClass : public GWorldExport {
 protected:
  GWorldExportWithoutClass() : GWorldExport(false) {}
};

TEST_F(GWorldExportWithoutClass, TheWorldIsFreedAgainAndTheResultIsNil) {
  ExpectRefused(*Counted(ImageFormatRGBA), "new dispose ");
  ExpectRefused(*Counted(ImageFormatG), "new dispose ");
}

TEST(GWorldExportElsewhere, WithoutThePlatformTheResultIsNil) {
  PluginHost host;
  for (const int32_t format : {ImageFormatRGB, ImageFormatRGBA, ImageFormatGA}) {
    auto image = NewImage(host, 3, 2, format);
    EXPECT_EQ(CopyGWorld(image), nullptr);
  }
  EXPECT_FALSE(host.TakeException());
}

}  // namespace
}  // namespace zvk::pictures
