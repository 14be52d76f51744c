#include "standalone/gd/gd_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "standalone/runtime/host.h"
#include "tests/standalone/files/exif_testing.h"

namespace standalone {
namespace {

namespace fs = std::filesystem;

class GdPicture : public testing::Test {
 protected:
  GdPicture() {
    std::string pattern = (fs::temp_directory_path() / "gd_picture_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~GdPicture() override {
    fs::remove_all(folder_);
    EXPECT_TRUE(host_.Leaks().empty()) << Describe(host_.Leaks());
  }

  std::string Path(const std::string &name) const { return (folder_ / name).string(); }

  Host host_;
  fs::path folder_;
};

GdPictureStorage &StorageOf(Picture &picture) { return dynamic_cast<GdPictureStorage &>(picture.Storage()); }

Owned<Picture> NewPicture(int32_t width, int32_t height) { return Owned<Picture>::Adopt(Picture::Make(width, height)); }

TEST_F(GdPicture, NewPicturesOfTheHostAreGdImages) {
  UseGdPictures(host_);
  const auto newPicture = reinterpret_cast<REALobject (*)(int32_t, int32_t, int32_t)>(Host::Resolve("newPicture"));
  const Owned<Picture> picture = Owned<Picture>::Adopt(ObjectAs<Picture>(newPicture(7, 5, 32)));
  EXPECT_EQ(picture->Width(), 7);
  EXPECT_EQ(picture->Height(), 5);
  gdImagePtr const image = StorageOf(*picture).Image();
  EXPECT_EQ(gdImageSX(image), 7);
  EXPECT_EQ(gdImageSY(image), 5);
  EXPECT_EQ(gdImageGetPixel(image, 6, 4), 0) << "black and opaque";
  EXPECT_FALSE(picture->GetPixel(0, 0) != Pixel());
}

TEST_F(GdPicture, TheDescriptionHoldsTheLibrarysOwnImage) {
  UseGdPictures(host_);
  const Owned<Picture> picture = NewPicture(3, 2);
  REALpictureDescription description = {};
  ASSERT_TRUE(picture->Storage().Describe(kDescriptionGDImage, &description));
  EXPECT_EQ(description.type, 10u);
  EXPECT_EQ(description.data, StorageOf(*picture).Image());
  EXPECT_EQ(description.width, 3);
  EXPECT_EQ(description.height, 2);
  EXPECT_EQ(description.depth, 32);

  GDImage &record = *static_cast<GDImage *>(description.data);
  EXPECT_EQ(record.paletteRows, nullptr);
  EXPECT_EQ(record.width, 3);
  EXPECT_EQ(record.height, 2);
  EXPECT_NE(record.trueColor, 0);
  const uint8_t bytes[4] = {0x33, 0x22, 0x11, 0};
  std::copy(bytes, bytes + 4, record.trueColorRows[1] + 8);
  EXPECT_EQ(gdImageGetTrueColorPixel(StorageOf(*picture).Image(), 2, 1), 0x112233);
  EXPECT_EQ(picture->GetPixel(2, 1), (Pixel{0x11, 0x22, 0x33, 255}));
  EXPECT_EQ(picture->Storage().Row(1), record.trueColorRows[1]);

  REALpictureDescription any = {};
  EXPECT_TRUE(picture->Storage().Describe(0, &any));
  EXPECT_FALSE(picture->Storage().Describe(kDescriptionBitmapContext, &any));
}

TEST_F(GdPicture, DrawingWithTheLibraryShowsInThePicture) {
  UseGdPictures(host_);
  const Owned<Picture> picture = NewPicture(4, 4);
  gdImageFilledRectangle(StorageOf(*picture).Image(), 1, 1, 2, 2, gdTrueColor(200, 100, 50));
  EXPECT_EQ(picture->GetPixel(1, 2), (Pixel{200, 100, 50, 255}));
  EXPECT_EQ(picture->GetPixel(3, 2), (Pixel{0, 0, 0, 255}));
}

TEST_F(GdPicture, PixelsReadAndSetAsInTheHostsOwnRecord) {
  GdPictureStorage real(2, 1);
  GDStorage own(2, 1);
  for (int alpha = 0; alpha < 256; ++alpha) {
    const Pixel pixel = {1, 2, 3, static_cast<uint8_t>(alpha)};
    real.Set(1, 0, pixel);
    own.Set(1, 0, pixel);
    EXPECT_EQ(real.Image()->tpixels[0][1], reinterpret_cast<int *>(own.Row(0))[1]) << alpha;
    EXPECT_EQ(real.Get(1, 0), own.Get(1, 0)) << alpha;
    EXPECT_NEAR(real.Get(1, 0).alpha, alpha, 1);
  }
  real.Set(0, 0, {9, 8, 7, 0});
  EXPECT_EQ(real.Image()->tpixels[0][0], 0x7F090807);
  EXPECT_EQ(real.Get(0, 0).alpha, 0);
  real.Set(0, 0, {9, 8, 7, 255});
  EXPECT_EQ(real.Image()->tpixels[0][0], 0x090807);
  EXPECT_EQ(real.Get(0, 0).alpha, 255);
}

TEST_F(GdPicture, PaletteImagesAreNoPictures) {
  EXPECT_THROW(GdPictureStorage(OwnedGdImage(gdImageCreate(2, 2))), std::invalid_argument);
  EXPECT_THROW(GdPictureStorage(OwnedGdImage(nullptr)), std::invalid_argument);
}

TEST_F(GdPicture, AnOpaqueFileBecomesAPictureWithoutMask) {
  OwnedGdImage image(gdImageCreateTrueColor(2, 2));
  image->tpixels[1][0] = 0x112233;
  SaveImageFile(image.get(), Path("a.png"));
  const LoadedPicture loaded = LoadPicture(Path("a.png"));
  EXPECT_EQ(loaded.format, "PNG");
  EXPECT_FALSE(loaded.hasTransparency);
  EXPECT_EQ(loaded.picture->Mask(), nullptr);
  EXPECT_EQ(loaded.picture->GetPixel(0, 1), (Pixel{0x11, 0x22, 0x33, 255}));
  EXPECT_EQ(loaded.picture->References(), 1);
}

TEST_F(GdPicture, TransparencyOfAFileBecomesAMaskAndComesBack) {
  OwnedGdImage image(gdImageCreateTrueColor(3, 1));
  image->tpixels[0][0] = 0x00112233;
  image->tpixels[0][1] = 0x40445566;
  image->tpixels[0][2] = 0x7F778899;
  SaveImageFile(image.get(), Path("a.png"), {.alpha = AlphaPlane::Keep});

  const LoadedPicture loaded = LoadPicture(Path("a.png"));
  ASSERT_TRUE(loaded.hasTransparency);
  ASSERT_NE(loaded.picture->Mask(), nullptr);
  EXPECT_EQ(loaded.picture->Mask()->GetPixel(0, 0), (Pixel{255, 255, 255, 255}));
  EXPECT_EQ(loaded.picture->Mask()->GetPixel(1, 0), (Pixel{126, 126, 126, 255}));
  EXPECT_EQ(loaded.picture->Mask()->GetPixel(2, 0), (Pixel{0, 0, 0, 255}));

  SavePicture(*loaded.picture, Path("b.png"), {.alpha = AlphaPlane::Keep});
  const LoadedImage again = LoadImageFile(Path("b.png"));
  for (int x = 0; x < 3; ++x) EXPECT_EQ(again.image->tpixels[0][x], image->tpixels[0][x]) << x;

  SavePicture(*loaded.picture, Path("c.png"));
  EXPECT_FALSE(LoadImageFile(Path("c.png")).hasTransparency);
}

TEST_F(GdPicture, TheMaskComesBeforeTheAlphaOfThePixels) {
  UseGdPictures(host_);
  const Owned<Picture> picture = NewPicture(2, 1);
  picture->SetPixel(0, 0, {1, 2, 3, 0});
  picture->SetPixel(1, 0, {4, 5, 6, 255});
  SavePicture(*picture, Path("pixels.png"), {.alpha = AlphaPlane::Keep});
  EXPECT_EQ(LoadImageFile(Path("pixels.png")).image->tpixels[0][0], 0x7F010203);

  picture->GetMask().SetPixel(1, 0, {0, 255, 255, 255});
  SavePicture(*picture, Path("mask.png"), {.alpha = AlphaPlane::Keep});
  const LoadedImage masked = LoadImageFile(Path("mask.png"));
  EXPECT_EQ(masked.image->tpixels[0][0], 0x010203);
  EXPECT_EQ(masked.image->tpixels[0][1], 0x7F040506);
}

TEST_F(GdPicture, ASmallerMaskLeavesTheRestOpaque) {
  UseGdPictures(host_);
  const Owned<Picture> picture = NewPicture(2, 2);
  const Owned<Picture> mask = NewPicture(1, 1);
  picture->SetMask(mask);
  SavePicture(*picture, Path("a.png"), {.alpha = AlphaPlane::Keep});
  const LoadedImage saved = LoadImageFile(Path("a.png"));
  EXPECT_EQ(saved.image->tpixels[0][0] >> 24, 127);
  EXPECT_EQ(saved.image->tpixels[0][1] >> 24, 0);
  EXPECT_EQ(saved.image->tpixels[1][0] >> 24, 0);
}

TEST_F(GdPicture, PicturesOfEveryFormAreSaved) {
  const Owned<Picture> bitmap = Owned<Picture>::Adopt(Picture::Make(std::make_unique<BitmapStorage>(3, 2)));
  bitmap->SetPixel(2, 1, {10, 20, 30, 255});
  const Owned<Picture> palette = Owned<Picture>::Adopt(Picture::Make(std::make_unique<PaletteStorage>(3, 2)));
  palette->SetPixel(2, 1, {10, 20, 30, 255});
  for (Picture *const picture : {bitmap.Get(), palette.Get()}) {
    SavePicture(*picture, Path("a.bmp"));
    EXPECT_EQ(LoadPicture(Path("a.bmp")).picture->GetPixel(2, 1), (Pixel{10, 20, 30, 255}));
  }
}

// The pixels of a picture, by their red.
std::vector<std::vector<int>> RedOf(Picture &picture) {
  std::vector<std::vector<int>> rows;
  for (int32_t y = 0; y < picture.Height(); ++y) {
    rows.emplace_back();
    for (int32_t x = 0; x < picture.Width(); ++x) rows.back().push_back(picture.GetPixel(x, y).red);
  }
  return rows;
}

TEST_F(GdPicture, APictureIsTurnedWithItsMask) {
  UseGdPictures(host_);
  const std::vector<std::vector<int>> red = {{1, 2, 3}, {4, 5, 6}};
  const std::vector<std::vector<int>> mask = {{10, 20, 30}, {40, 50, 60}};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const Owned<Picture> picture = NewPicture(3, 2);
    for (int y = 0; y < 2; ++y) {
      for (int x = 0; x < 3; ++x) {
        const auto gray = static_cast<uint8_t>(mask[static_cast<size_t>(y)][static_cast<size_t>(x)]);
        picture->SetPixel(x, y, {static_cast<uint8_t>(gray / 10), 99, 98, 255});
        picture->GetMask().SetPixel(x, y, {gray, gray, gray, 255});
      }
    }
    const Owned<Picture> turned = Turned(picture, TurnOf(orientation));
    EXPECT_EQ(RedOf(*turned), Seen(red, orientation)) << orientation;
    ASSERT_NE(turned->Mask(), nullptr);
    EXPECT_EQ(RedOf(*turned->Mask()), Seen(mask, orientation)) << orientation;
    EXPECT_EQ(turned->GetPixel(1, 1).green, 99);
    EXPECT_EQ(turned.Get() == picture.Get(), orientation == 1);
    EXPECT_EQ(RedOf(*picture), red) << "which stays as it is";
  }
}

TEST_F(GdPicture, OnlyPicturesOfGdAreTurned) {
  const Owned<Picture> bitmap = Owned<Picture>::Adopt(Picture::Make(std::make_unique<BitmapStorage>(3, 2)));
  EXPECT_EQ(Turned(bitmap, Turn()).Get(), bitmap.Get());
  EXPECT_THROW(Turned(bitmap, TurnOf(3)), std::invalid_argument);
}

TEST_F(GdPicture, AFileIsUprightUnlessItIsWantedAsItIsStored) {
  const OwnedGdImage image(gdImageCreateTrueColor(3, 2));
  image->tpixels[0][0] = 0x112233;
  SaveImageFile(image.get(), Path("plain.png"));
  std::ifstream plain(Path("plain.png"), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(plain), std::istreambuf_iterator<char>()};
  std::ofstream(Path("a.png"), std::ios::binary) << PngWith(bytes, "eXIf", Exif(6));
  const LoadedPicture upright = LoadPicture(Path("a.png"));
  EXPECT_EQ(upright.picture->Width(), 2);
  EXPECT_EQ(upright.picture->GetPixel(1, 0), (Pixel{0x11, 0x22, 0x33, 255}));
  const LoadedPicture stored = LoadPicture(Path("a.png"), Orient::AsStored);
  EXPECT_EQ(stored.picture->Width(), 3);
  EXPECT_EQ(stored.picture->GetPixel(0, 0), (Pixel{0x11, 0x22, 0x33, 255}));
}

TEST_F(GdPicture, ErrorsOfFilesComeThrough) {
  EXPECT_THROW(LoadPicture(Path("none.png")), ImageFileError);
  UseGdPictures(host_);
  EXPECT_THROW(SavePicture(*NewPicture(1, 1), Path("a.unknown")), ImageFileError);
}

}  // namespace
}  // namespace standalone
