#include "standalone/gd/image_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace standalone {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

class ImageFile : public testing::Test {
 protected:
  ImageFile() {
    std::string pattern = (fs::temp_directory_path() / "image_file_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~ImageFile() override { fs::remove_all(folder_); }

  std::string Path(const std::string &name) const { return (folder_ / name).string(); }

  std::string Read(const std::string &name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  void Write(const std::string &name, const std::string &bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
  }

  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder_)) names.insert(entry.path().filename());
    return names;
  }

  std::string LoadError(const std::string &name) const {
    try {
      LoadImageFile(Path(name));
    } catch (const ImageFileError &error) {
      return error.what();
    }
    return "no error";
  }

  std::string SaveError(gdImagePtr image, const std::string &path, const SaveOptions &options = {}) const {
    try {
      SaveImageFile(image, path, options);
    } catch (const ImageFileError &error) {
      return error.what();
    }
    return "no error";
  }

  fs::path folder_;
};

// 23 columns (an odd row length), 11 rows, 253 colours.
OwnedGdImage Gradient() {
  OwnedGdImage image(gdImageCreateTrueColor(23, 11));
  for (int y = 0; y < 11; ++y) {
    for (int x = 0; x < 23; ++x) image->tpixels[y][x] = (x * 11) << 16 | (y * 25) << 8 | (255 - x * y);
  }
  return image;
}

// The same with every fourth column at another alpha.
OwnedGdImage TransparentGradient() {
  OwnedGdImage image = Gradient();
  for (int y = 0; y < 11; ++y) {
    for (int x = 0; x < 23; x += 4) image->tpixels[y][x] |= (1 + x * 5) << 24;
  }
  return image;
}

void ExpectSamePixels(const LoadedImage &loaded, const OwnedGdImage &expected) {
  ASSERT_EQ(loaded.image->sx, expected->sx);
  ASSERT_EQ(loaded.image->sy, expected->sy);
  ASSERT_EQ(loaded.image->trueColor, 1);
  for (int y = 0; y < expected->sy; ++y) {
    for (int x = 0; x < expected->sx; ++x) {
      ASSERT_EQ(loaded.image->tpixels[y][x], expected->tpixels[y][x]) << x << ", " << y;
    }
  }
}

TEST_F(ImageFile, LosslessFormatsGiveTheSamePixelsBack) {
  const OwnedGdImage image = Gradient();
  const char *const names[][2] = {{"a.png", "PNG"},   {"a.gif", "GIF"}, {"a.webp", "WebP"}, {"a.tif", "TIFF"},
                                  {"a.tiff", "TIFF"}, {"a.bmp", "BMP"}, {"A.PNG", "PNG"}};
  for (const auto &[name, format] : names) {
    SCOPED_TRACE(name);
    SaveImageFile(image.get(), Path(name));
    const LoadedImage loaded = LoadImageFile(Path(name));
    EXPECT_EQ(loaded.format, format);
    EXPECT_FALSE(loaded.hasTransparency);
    ExpectSamePixels(loaded, image);
  }
}

TEST_F(ImageFile, JpegComesBackAlike) {
  OwnedGdImage image(gdImageCreateTrueColor(32, 24));
  for (int y = 0; y < 24; ++y) {
    for (int x = 0; x < 32; ++x) image->tpixels[y][x] = (40 + 5 * x) << 16 | (40 + 5 * x) << 8 | (40 + 5 * x);
  }
  for (const char *const name : {"a.jpg", "a.jpeg"}) {
    SaveImageFile(image.get(), Path(name), {.quality = 100});
    const LoadedImage loaded = LoadImageFile(Path(name));
    EXPECT_EQ(loaded.format, "JPEG");
    ASSERT_EQ(loaded.image->sx, 32);
    ASSERT_EQ(loaded.image->sy, 24);
    for (int y = 0; y < 24; ++y) {
      for (int x = 0; x < 32; ++x) EXPECT_NEAR(loaded.image->tpixels[y][x] & 0xFF, 40 + 5 * x, 3) << x << ", " << y;
    }
  }
}

TEST_F(ImageFile, LowerQualityMakesSmallerFiles) {
  const OwnedGdImage image = Gradient();
  for (const char *const extension : {"jpg", "webp"}) {
    SaveImageFile(image.get(), Path(std::string("fine.") + extension), {.quality = 95});
    SaveImageFile(image.get(), Path(std::string("coarse.") + extension), {.quality = 5});
    EXPECT_LT(fs::file_size(Path(std::string("coarse.") + extension)),
              fs::file_size(Path(std::string("fine.") + extension)))
        << extension;
  }
}

TEST_F(ImageFile, AlphaIsKeptWhereWantedAndPossible) {
  const OwnedGdImage image = TransparentGradient();
  for (const char *const name : {"a.png", "a.webp", "a.tiff"}) {
    SCOPED_TRACE(name);
    SaveImageFile(image.get(), Path(name), {.alpha = AlphaPlane::Keep});
    const LoadedImage loaded = LoadImageFile(Path(name));
    EXPECT_TRUE(loaded.hasTransparency);
    ExpectSamePixels(loaded, image);
  }
}

TEST_F(ImageFile, AlphaIsDroppedUnlessWanted) {
  const OwnedGdImage image = TransparentGradient();
  const OwnedGdImage opaque = Gradient();
  for (const char *const name : {"a.png", "a.webp", "a.tiff", "a.gif", "a.bmp"}) {
    SCOPED_TRACE(name);
    SaveImageFile(image.get(), Path(name));
    const LoadedImage loaded = LoadImageFile(Path(name));
    EXPECT_FALSE(loaded.hasTransparency);
    ExpectSamePixels(loaded, opaque);
  }
  EXPECT_EQ(image->tpixels[0][4], TransparentGradient()->tpixels[0][4]) << "the image itself stays as it was";
}

// Byte 25 of a PNG is the colour type of its header: 2 has no alpha plane, 6 has one.
TEST_F(ImageFile, OpaquePngHasNoAlphaPlaneEvenWhereAlphaIsKept) {
  SaveImageFile(Gradient().get(), Path("a.png"), {.alpha = AlphaPlane::Keep});
  EXPECT_EQ(Read("a.png")[25], 2);
  SaveImageFile(TransparentGradient().get(), Path("a.png"), {.alpha = AlphaPlane::Keep});
  EXPECT_EQ(Read("a.png")[25], 6);
  SaveImageFile(TransparentGradient().get(), Path("a.png"));
  EXPECT_EQ(Read("a.png")[25], 2);
}

TEST_F(ImageFile, GifKeepsAlphaAsClearOrOpaque) {
  OwnedGdImage image(gdImageCreateTrueColor(3, 1));
  image->tpixels[0][0] = 0x00102030;
  image->tpixels[0][1] = 0x3F405060;
  image->tpixels[0][2] = 0x40708090;
  SaveImageFile(image.get(), Path("a.gif"), {.alpha = AlphaPlane::Keep});
  const LoadedImage loaded = LoadImageFile(Path("a.gif"));
  EXPECT_TRUE(loaded.hasTransparency);
  EXPECT_EQ(loaded.image->tpixels[0][0], 0x00102030);
  EXPECT_EQ(loaded.image->tpixels[0][1], 0x00405060);
  EXPECT_EQ(loaded.image->tpixels[0][2] >> 24, 127);
}

TEST_F(ImageFile, GifOfManyColoursIsReduced) {
  OwnedGdImage image(gdImageCreateTrueColor(64, 64));
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) image->tpixels[y][x] = (x * 4) << 16 | (y * 4) << 8 | 128;
  }
  image->tpixels[0][0] |= 0x7F000000;
  SaveImageFile(image.get(), Path("a.gif"), {.alpha = AlphaPlane::Keep});
  const LoadedImage loaded = LoadImageFile(Path("a.gif"));
  EXPECT_TRUE(loaded.hasTransparency);
  EXPECT_EQ(loaded.image->tpixels[0][0] >> 24, 127);
  int64_t difference = 0;
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      if (x == 0 && y == 0) continue;
      EXPECT_EQ(loaded.image->tpixels[y][x] >> 24, 0);
      difference += std::abs((loaded.image->tpixels[y][x] >> 16 & 0xFF) - 4 * x);
    }
  }
  EXPECT_LT(difference / 4095.0, 16.0);
}

TEST_F(ImageFile, PaletteImagesBecomeTrueColour) {
  const OwnedGdImage palette(gdImageCreate(4, 2));
  gdImageColorAllocate(palette.get(), 255, 0, 0);
  const int half = gdImageColorAllocateAlpha(palette.get(), 0, 255, 0, 60);
  palette->pixels[1][2] = static_cast<unsigned char>(half);
  int size = 0;
  void *const bytes = gdImagePngPtr(palette.get(), &size);
  Write("a.png", std::string(static_cast<char *>(bytes), static_cast<size_t>(size)));
  gdFree(bytes);

  const LoadedImage loaded = LoadImageFile(Path("a.png"));
  ASSERT_EQ(loaded.image->trueColor, 1);
  EXPECT_EQ(loaded.image->pixels, nullptr);
  EXPECT_TRUE(loaded.hasTransparency);
  EXPECT_EQ(loaded.image->tpixels[0][0], 0xFF0000);
  EXPECT_EQ(loaded.image->tpixels[1][2], 60 << 24 | 0x00FF00);
}

TEST_F(ImageFile, ColourKeyOfATrueColourFileBecomesAlpha) {
  const OwnedGdImage keyed = Gradient();
  gdImageColorTransparent(keyed.get(), keyed->tpixels[3][5]);
  int size = 0;
  void *const bytes = gdImagePngPtr(keyed.get(), &size);
  Write("a.png", std::string(static_cast<char *>(bytes), static_cast<size_t>(size)));
  gdFree(bytes);

  const LoadedImage loaded = LoadImageFile(Path("a.png"));
  EXPECT_TRUE(loaded.hasTransparency);
  EXPECT_EQ(loaded.image->tpixels[3][5] >> 24, 127);
  EXPECT_EQ(loaded.image->tpixels[3][6], keyed->tpixels[3][6]);
  EXPECT_EQ(loaded.image->transparent, -1);
}

TEST_F(ImageFile, AnOpaqueEntryOfTheClearColoursValueStaysOpaque) {
  const OwnedGdImage palette(gdImageCreate(2, 1));
  gdImageColorAllocate(palette.get(), 9, 8, 7);
  gdImageColorTransparent(palette.get(), gdImageColorAllocate(palette.get(), 9, 8, 7));
  palette->pixels[0][1] = 1;
  int size = 0;
  void *const bytes = gdImageGifPtr(palette.get(), &size);
  Write("a.gif", std::string(static_cast<char *>(bytes), static_cast<size_t>(size)));
  gdFree(bytes);

  const LoadedImage loaded = LoadImageFile(Path("a.gif"));
  EXPECT_EQ(loaded.image->tpixels[0][0], 0x090807);
  EXPECT_EQ(loaded.image->tpixels[0][1] >> 24, 127);
  EXPECT_EQ(loaded.image->transparent, -1);
}

// A colour profile of nonsense, which the PNG library comments on, in a chunk right behind the header.
TEST_F(ImageFile, ChunksThatTellNoPixelsAreLeftOutInSilence) {
  SaveImageFile(TransparentGradient().get(), Path("a.png"), {.alpha = AlphaPlane::Keep});
  std::string bytes = Read("a.png");
  const size_t behindHeader = 8 + 25;
  bytes.insert(behindHeader, std::string("\0\0\0\x04"
                                         "iCCP"
                                         "x\0\0y"
                                         "\0\0\0\0",
                                         16));
  Write("a.png", bytes);
  testing::internal::CaptureStderr();
  ExpectSamePixels(LoadImageFile(Path("a.png")), TransparentGradient());
  fflush(stderr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ImageFile, ContentDecidesTheFormatAndNotTheName) {
  SaveImageFile(Gradient().get(), Path("a.png"));
  fs::rename(Path("a.png"), Path("a.jpg"));
  EXPECT_EQ(LoadImageFile(Path("a.jpg")).format, "PNG");
}

TEST_F(ImageFile, MissingFileIsNamed) {
  EXPECT_EQ(LoadError("none.png"), Path("none.png") + ": no such file; check the path");
}

TEST_F(ImageFile, WhatIsNotAnImageIsRefusedWithTheKnownFormats) {
  Write("text.png", "just text, whatever the name says");
  EXPECT_EQ(LoadError("text.png"),
            Path("text.png") + ": is not an image that can be read; known are PNG, JPEG, GIF, WebP, TIFF and BMP");
  Write("sound.wav", "RIFF\x10\x01\x01\x01WAVEfmt ");
  EXPECT_THAT(LoadError("sound.wav"), HasSubstr("is not an image"));
  Write("empty.png", "");
  EXPECT_THAT(LoadError("empty.png"), HasSubstr("is empty"));
  EXPECT_THAT(LoadError(""), HasSubstr("is a folder"));
  Write("file", "x");
  EXPECT_THAT(LoadError("file/a.png"), HasSubstr("cannot be read (Not a directory)"));
}

TEST_F(ImageFile, TruncatedFilesAreRefusedInEveryFormatWithoutAWordOnTheErrorStream) {
  const OwnedGdImage image = Gradient();
  testing::internal::CaptureStderr();
  for (const std::string name : {"a.png", "a.jpg", "a.gif", "a.webp", "a.tiff", "a.bmp"}) {
    SaveImageFile(image.get(), Path(name));
    const std::string whole = Read(name);
    for (const size_t length : {whole.size() / 4, whole.size() / 2, whole.size() * 9 / 10}) {
      Write(name, whole.substr(0, length));
      EXPECT_THAT(LoadError(name), HasSubstr("cut short or damaged; get a whole copy of it")) << length;
      EXPECT_THAT(LoadError(name), StartsWith(Path(name) + ": is a "));
    }
  }
  fflush(stderr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// The PNG library has something to say about the colour profile of one of these.
TEST_F(ImageFile, WholeFilesAreReadWithoutAWordOnTheErrorStream) {
  testing::internal::CaptureStderr();
  for (const char *const name : {"astronaut.png", "coffee.png", "moon.png", "rocket.jpg", "hubble_deep_field.jpg"}) {
    EXPECT_GT(LoadImageFile(std::string(PICTUREZVK_EXAMPLES) + "/" + name).image->sx, 0);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ImageFile, ExtensionsThatCanBeSavedAreKnownInAnyCase) {
  for (const char *const path : {"a.png", "a.JPG", "a.b.jpeg", "/a.c/b.gif", "a.webp", "a.Tif", "a.tiff", "a.bmp"}) {
    EXPECT_TRUE(HasKnownImageExtension(path)) << path;
  }
  for (const char *const path : {"", "png", ".png", "a.", "a.png/", "a.png.txt", "a.pngx"}) {
    EXPECT_FALSE(HasKnownImageExtension(path)) << path;
  }
}

TEST_F(ImageFile, GifWithExtensionsAndMoreThanOneImageIsWhole) {
  SaveImageFile(TransparentGradient().get(), Path("a.gif"), {.alpha = AlphaPlane::Keep});
  std::string bytes = Read("a.gif");
  bytes.back() = '!';  // instead of the trailer, a comment that breaks off
  Write("a.gif", bytes +
                     "\xFE\x05"
                     "abc");
  EXPECT_TRUE(LoadImageFile(Path("a.gif")).hasTransparency);
}

TEST_F(ImageFile, UnknownExtensionsAreRefusedWithTheKnownOnes) {
  const std::string list = "png, jpg, jpeg, gif, webp, tif, tiff, bmp";
  EXPECT_EQ(KnownImageExtensions(), list);
  EXPECT_EQ(SaveError(Gradient().get(), Path("a.xyz")),
            Path("a.xyz") + ": no known image extension; use one of " + list);
  EXPECT_THAT(SaveError(Gradient().get(), Path("noextension")), HasSubstr("no known image extension"));
  EXPECT_THAT(SaveError(Gradient().get(), Path("dot.")), HasSubstr("no known image extension"));
  EXPECT_TRUE(Names().empty());
}

TEST_F(ImageFile, PlacesThatCannotBeWrittenAreNamed) {
  EXPECT_THAT(SaveError(Gradient().get(), Path("none/a.png")),
              StartsWith(Path("none/a.png") + ": cannot be written (No such file or directory)"));
  fs::create_directory(Path("folder.png"));
  EXPECT_THAT(SaveError(Gradient().get(), Path("folder.png")), HasSubstr("is a folder"));
  mkfifo(Path("pipe.png").c_str(), 0600);
  EXPECT_THAT(SaveError(Gradient().get(), Path("pipe.png")), HasSubstr("is not a regular file"));
}

TEST_F(ImageFile, QualityAndSizeOutOfRangeAreRefused) {
  EXPECT_THAT(SaveError(Gradient().get(), Path("a.jpg"), {.quality = 101}), HasSubstr("use 1 to 100"));
  EXPECT_THAT(SaveError(Gradient().get(), Path("a.jpg"), {.quality = 0}), HasSubstr("use 1 to 100"));
  const OwnedGdImage wide(gdImageCreateTrueColor(16384, 1));
  EXPECT_THAT(SaveError(wide.get(), Path("a.webp")), HasSubstr("holds up to 16383 pixels in each direction"));
  EXPECT_TRUE(Names().empty());
}

// The system refuses to let files grow beyond 10 bytes, as a full disk would.
TEST_F(ImageFile, AFailedWriteLeavesTheOldFileAndNothingElse) {
  SaveImageFile(Gradient().get(), Path("a.png"));
  const std::string before = Read("a.png");
  rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit tight = {10, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tight);
  const std::string existing = SaveError(TransparentGradient().get(), Path("a.png"));
  const std::string fresh = SaveError(TransparentGradient().get(), Path("b.png"));
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, oldHandler);

  EXPECT_EQ(existing, Path("a.png") + ": cannot be written (File too large); what was there before is unchanged");
  EXPECT_THAT(fresh, StartsWith(Path("b.png") + ": cannot be written"));
  EXPECT_EQ(Read("a.png"), before);
  EXPECT_EQ(Names(), std::set<std::string>{"a.png"});
}

TEST_F(ImageFile, ReplacingAFileKeepsItsPermissionsAndTheLinkThatLeadsToIt) {
  Write("real.png", "old");
  chmod(Path("real.png").c_str(), 0640);
  symlink(Path("real.png").c_str(), Path("link.png").c_str());
  SaveImageFile(Gradient().get(), Path("link.png"));
  EXPECT_TRUE(fs::is_symlink(Path("link.png")));
  ExpectSamePixels(LoadImageFile(Path("real.png")), Gradient());
  struct stat status;
  stat(Path("real.png").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  EXPECT_EQ(Names(), (std::set<std::string>{"link.png", "real.png"}));
}

TEST_F(ImageFile, ATemporaryFileLeftByAnotherIsNotTouched) {
  const std::string foreign = ".zvk-" + std::to_string(getpid()) + "-0.part";
  Write(foreign, "not mine");
  SaveImageFile(Gradient().get(), Path("a.png"));
  EXPECT_EQ(Read(foreign), "not mine");
  EXPECT_EQ(Names(), (std::set<std::string>{foreign, "a.png"}));
}

}  // namespace
}  // namespace standalone
