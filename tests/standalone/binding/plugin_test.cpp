// The built plug-in through its class tables alone, as a program of the host language uses it.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/gd/gd_picture.h"
#include "standalone/runtime/host.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/picture.h"

namespace standalone {
namespace {

struct LoadedHost : Host {
  explicit LoadedHost(const HostOptions &options = {}) : Host(options) {
    UseGdPictures(*this);
    Load(PICTUREZVK_LIBRARY);
  }
};

class Plugin : public testing::Test {
 protected:
  ~Plugin() override {
    ClassNamed("PictureFactoryZVK").Call("SetFactory", {nullptr});
    EXPECT_EQ(Describe(host_.Leaks()), "");
    EXPECT_TRUE(host_.Misdeeds().empty());
  }

  int32_t Format(const std::string &name) const { return pictures_.Constant("ImageFormat" + name).AsInteger(); }
  Value NewImage(int32_t width, int32_t height, const std::string &format) const {
    return pictures_.New({width, height, Format(format)});
  }
  // A picture with a colour of its own at each place.
  static Value TestPicture(int32_t width, int32_t height) {
    const Owned<Picture> picture = Owned<Picture>::Adopt(Picture::Make(width, height));
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) picture->SetPixel(x, y, ColourAt(x, y));
    }
    return picture;
  }
  static Pixel ColourAt(int32_t x, int32_t y) {
    return {static_cast<uint8_t>(10 * x), static_cast<uint8_t>(20 * y), static_cast<uint8_t>(200 - x * y), 255};
  }

  LoadedHost host_;
  Bindings bindings_;
  ClassBinding &pictures_ = ClassNamed("PictureZVK");
};

TEST_F(Plugin, ConstantsHaveTheirNumbers) {
  EXPECT_EQ(Format("RGB"), 1);
  EXPECT_EQ(Format("G"), 11);
  EXPECT_EQ(Format("Gray16"), 41);
  EXPECT_EQ(Format("AofARGB"), 18);
  EXPECT_EQ(pictures_.Constant("ScaleCubic").AsInteger(), 7);
  EXPECT_EQ(pictures_.Constant("DitherCluster8Matrix").AsInteger(), 10);
  EXPECT_EQ(pictures_.Constants().size(), 80u);
}

TEST_F(Plugin, SharedMethodsGiveSizes) {
  EXPECT_EQ(pictures_.Call("CalculateMemory", {1, 1, Format("G")}).AsInt64(), 64);
  EXPECT_EQ(pictures_.Call("CalculateMemory", {3, 2, Format("RGB")}).AsInt64(), 128);
  EXPECT_EQ(pictures_.Call("CalculateMemory", {100, 100, 14}).AsInt64(), 0);
  EXPECT_EQ(pictures_.Call("CalculateMemory", {65536, 65536, Format("RGBA")}).AsInt64(), int64_t{1} << 34);
  EXPECT_TRUE(pictures_.Call("CanAllocateImage", {65536, 32767, Format("G")}).AsBoolean());
  EXPECT_FALSE(pictures_.Call("CanAllocateImage", {65536, 32768, Format("G")}).AsBoolean());
}

TEST_F(Plugin, AnImageInMemoryShowsItsProperties) {
  const Value image = NewImage(10, 4, "ARGB");
  EXPECT_TRUE(image.Get("Valid").AsBoolean());
  EXPECT_EQ(image.Get("Width").AsInteger(), 10);
  EXPECT_EQ(image.Get("Height").AsInteger(), 4);
  EXPECT_EQ(image.Get("PixelSize").AsInteger(), 4);
  EXPECT_EQ(image.Get("RowSize").AsInteger(), 64);
  EXPECT_EQ(image.Get("TotalSize").AsInt64(), 256);
  EXPECT_EQ(image.Get("ImageFormatString").AsText(), "ARGB");
  EXPECT_EQ(image.Get("RedOffset").AsInteger(), 1);
  EXPECT_TRUE(image.Get("HasAlpha").AsBoolean());
  EXPECT_FALSE(image.Get("IsGray").AsBoolean());
  EXPECT_TRUE(image.Get("Parent").IsNil());
  image.Set("YieldTicks", -20);
  EXPECT_EQ(image.Get("YieldTicks").AsInteger(), -20);
}

TEST_F(Plugin, SettersAndReadOnlyPropertiesRefuse) {
  const Value image = NewImage(2, 2, "RGB");
  image.Set("RedOffset", 2);
  EXPECT_EQ(image.Get("RedOffset").AsInteger(), 2);
  try {
    image.Set("RedOffset", 3);
    FAIL() << "no exception";
  } catch (const HostException &exception) {
    EXPECT_EQ(exception.ClassName(), "OutOfBoundsException");
    EXPECT_EQ(exception.Message(), "Parameter value to method RedOffset is too big. Range is 0 to 2, but value is 3.");
    EXPECT_EQ(exception.ErrorNumber(), 0);
  }
  EXPECT_EQ(image.Get("RedOffset").AsInteger(), 2);
  try {
    image.Set("CyanOffset", 0);
    FAIL() << "no exception";
  } catch (const BindingError &error) {
    EXPECT_STREQ(error.what(), "PictureZVK.CyanOffset is read-only");
  }
}

TEST_F(Plugin, ImagesOverAMemoryBlockUseAndHoldIt) {
  const Owned<MemoryBlock> block = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(30));
  {
    const Value image = pictures_.New({block, 3, 2, Format("RGB"), 15});
    EXPECT_TRUE(image.Get("Valid").AsBoolean());
    EXPECT_EQ(image.Get("RowSize").AsInteger(), 15);
    EXPECT_EQ(image.Get("MemoryTarget").AsObject(), block.Get());
    image.Call("DrawPictureRGB", {TestPicture(3, 2)});
    const uint8_t lastPixel[] = {20, 20, 198};
    EXPECT_TRUE(std::equal(lastPixel, lastPixel + 3, block->Data() + 15 + 6));
    EXPECT_EQ(block->Data()[9], 0) << "behind the row";
  }
  EXPECT_EQ(block->References(), 1);
}

TEST_F(Plugin, PicturesGoInAndOutUnchanged) {
  const Value image = NewImage(6, 5, "BGRA");
  image.Call("DrawPictureRGB", {TestPicture(6, 5)});
  const Value copy = image.Call("CopyPicture");
  ASSERT_NE(dynamic_cast<GdPictureStorage *>(&copy.As<Picture>()->Storage()), nullptr);
  for (int32_t y = 0; y < 5; ++y) {
    for (int32_t x = 0; x < 6; ++x) EXPECT_EQ(copy.As<Picture>()->GetPixel(x, y), ColourAt(x, y)) << x << ", " << y;
  }
  EXPECT_EQ(copy.As<Picture>()->LocksHeld(), 0);
}

TEST_F(Plugin, OverloadsTakeTheirArgumentsInOrder) {
  const Value image = NewImage(6, 5, "RGB");
  image.Call("DrawPictureRGB", {TestPicture(6, 5), 1, 2, 3, 2, 2, 1});
  const Value part = image.Call("CopyPicture", {1, 2, 3, 2});
  EXPECT_EQ(part.Get("Width").AsInteger(), 3);
  EXPECT_EQ(part.Get("Height").AsInteger(), 2);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 3; ++x) EXPECT_EQ(part.As<Picture>()->GetPixel(x, y), ColourAt(x + 2, y + 1));
  }
  const Value outside = image.Call("CopyPicture", {4, 2, 2, 2});
  EXPECT_EQ(outside.As<Picture>()->GetPixel(0, 0), (Pixel{0, 0, 0, 255}));
  EXPECT_TRUE(image.Call("CopyMask").IsNil());
}

TEST_F(Plugin, AnImageOverAPictureWritesIntoTheLibrarysImage) {
  const Value picture = TestPicture(4, 3);
  {
    const Value image = pictures_.New({picture});
    EXPECT_TRUE(image.Get("Valid").AsBoolean());
    EXPECT_FALSE(image.Get("HasAlpha").AsBoolean());
    EXPECT_EQ(image.Get("RedOffset").AsInteger(), 2);
    EXPECT_EQ(image.Get("BlueOffset").AsInteger(), 0);
    EXPECT_EQ(image.Get("RowSize").AsInteger(), 16);
    EXPECT_EQ(image.Get("Target").AsObject(), picture.AsObject());
    const Owned<Picture> red = Owned<Picture>::Adopt(Picture::Make(1, 1));
    red->SetPixel(0, 0, {255, 1, 2, 255});
    image.Call("DrawPictureRGB", {red, 3, 2});
    auto &storage = dynamic_cast<GdPictureStorage &>(picture.As<Picture>()->Storage());
    EXPECT_EQ(gdImageGetTrueColorPixel(storage.Image(), 3, 2), 0xFF0102);
    EXPECT_EQ(picture.As<Picture>()->GetPixel(2, 2), ColourAt(2, 2));
  }
  EXPECT_EQ(picture.AsObject()->References(), 1);
  EXPECT_TRUE(pictures_.New({picture, true}).Get("HasAlpha").AsBoolean());
}

TEST_F(Plugin, ANilPictureRaises) {
  try {
    pictures_.New({nullptr, false});
    FAIL() << "no exception";
  } catch (const HostException &exception) {
    EXPECT_EQ(exception.ClassName(), "NilObjectException");
    EXPECT_EQ(exception.Message(), "picture is nil");
  }
}

TEST_F(Plugin, CloseEndsAnImage) {
  const Owned<MemoryBlock> block = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(64));
  const Value image = pictures_.New({block, 1, 1, Format("G"), 64});
  EXPECT_EQ(block->References(), 2);
  image.Call("Close");
  EXPECT_EQ(block->References(), 1);
}

TEST_F(Plugin, ScaleKeepsAConstantColour) {
  const Owned<Picture> even = Owned<Picture>::Adopt(Picture::Make(9, 7));
  for (int32_t y = 0; y < 7; ++y) {
    for (int32_t x = 0; x < 9; ++x) even->SetPixel(x, y, {40, 90, 200, 255});
  }
  const Value source = NewImage(9, 7, "RGB");
  source.Call("DrawPictureRGB", {even});
  const Value dest = NewImage(5, 12, "RGB");
  EXPECT_TRUE(dest.Call("Scale", {source, nullptr, pictures_.Constant("ScaleTriangle"), 5, 12}).AsBoolean());
  const Value result = dest.Call("CopyPicture");
  for (int32_t y = 0; y < 12; ++y) {
    for (int32_t x = 0; x < 5; ++x) EXPECT_EQ(result.As<Picture>()->GetPixel(x, y), (Pixel{40, 90, 200, 255}));
  }
  EXPECT_FALSE(dest.Call("Scale", {source, nullptr, 99, 5, 12}).AsBoolean());
}

TEST_F(Plugin, CreatePictureAsksTheFactories) {
  std::vector<std::vector<int32_t>> asked;
  const EventHandler handler = [&](const Value &, const Arguments &arguments) -> Value {
    asked.push_back({arguments[0].AsInteger(), arguments[1].AsInteger(), arguments[2].AsInteger()});
    if (arguments[0].AsInteger() == 13) return nullptr;
    return pictures_.New({arguments[0].AsInteger() + 100, arguments[1], Format("RGBA")});
  };
  bindings_.DefineSubclass("MyFactory", "PictureFactoryZVK", {{"NewPictureZVK", handler}});
  const Value factory = ClassNamed("MyFactory").New();

  EXPECT_EQ(pictures_.Call("CreatePictureZVK", {8, 4, Format("G")}).Get("Width").AsInteger(), 8);
  EXPECT_TRUE(asked.empty());

  const Value image = NewImage(2, 2, "RGB");
  image.Set("Factory", factory);
  const Value made = image.Call("CreatePictureZVK", {8, 4, Format("G")});
  EXPECT_EQ(made.Get("Width").AsInteger(), 108);
  EXPECT_EQ(made.Get("ImageFormatString").AsText(), "RBBA");
  EXPECT_EQ(made.AsObject()->References(), 1);
  EXPECT_EQ(asked, (std::vector<std::vector<int32_t>>{{8, 4, 11}}));

  ClassNamed("PictureFactoryZVK").Call("SetFactory", {factory});
  EXPECT_EQ(pictures_.Call("CreatePictureZVK", {9, 4, Format("G")}).Get("Width").AsInteger(), 109);
  EXPECT_EQ(pictures_.Call("CreatePictureZVK", {13, 4, Format("G")}).Get("Width").AsInteger(), 13)
      << "nil from the factory: made by default";
  EXPECT_EQ(asked.size(), 3u);
}

TEST_F(Plugin, TheTempImageOfAScaleComesFromTheFactory) {
  int calls = 0;
  bindings_.DefineSubclass("Counting", "PictureFactoryZVK",
                           {{"NewPictureZVK", [&](const Value &, const Arguments &arguments) -> Value {
                               ++calls;
                               EXPECT_EQ(arguments[0].AsInteger(), 4);
                               EXPECT_EQ(arguments[1].AsInteger(), 6);
                               return pictures_.New(arguments);
                             }}});
  ClassNamed("PictureFactoryZVK").Call("SetFactory", {ClassNamed("Counting").New()});
  const Value source = NewImage(8, 6, "RGB");
  const Value dest = NewImage(4, 3, "RGB");
  EXPECT_TRUE(dest.Call("Scale", {source, nullptr, 1, 4, 3}).AsBoolean());
  EXPECT_EQ(calls, 1);
}

TEST_F(Plugin, ACallThatFitsNoneListsTheDeclarations) {
  try {
    NewImage(1, 1, "G").Call("Scale", {1, 2});
    FAIL() << "no exception";
  } catch (const BindingError &error) {
    EXPECT_STREQ(error.what(),
                 "PictureZVK.Scale does not take (Integer, Integer); there is\n  Scale(source as PictureZVK, temp as "
                 "PictureZVK, mode as integer, width as integer, height as integer) as boolean");
  }
}

// Hosts before table version 10 get records of another size; what a program sees is the same.
TEST(PluginOnAnOldHost, WorksByTheOlderTables) {
  const HostOptions options = {.version = 2009.5};
  LoadedHost host(options);
  EXPECT_EQ(host.PluginVersion(), 9);
  Bindings bindings;
  ClassBinding &pictures = ClassNamed("PictureZVK");
  const Value image = pictures.New({10, 4, pictures.Constant("ImageFormatRGBA")});
  EXPECT_EQ(image.Get("RowSize").AsInteger(), 64);
  EXPECT_EQ(image.Get("ImageFormatString").AsText(), "RBBA");
  EXPECT_EQ(pictures.Call("CalculateMemory", {3, 2, 1}).AsInt64(), 128);
  bindings.DefineSubclass("Old", "PictureFactoryZVK",
                          {{"NewPictureZVK", [&](const Value &, const Arguments &) -> Value {
                              return pictures.New({77, 88, 1});
                            }}});
  image.Set("Factory", ClassNamed("Old").New());
  EXPECT_EQ(image.Call("CreatePictureZVK", {1, 1, 1}).Get("Width").AsInteger(), 77);
}

}  // namespace
}  // namespace standalone
