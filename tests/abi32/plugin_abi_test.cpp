// The 32-bit library as a 32-bit host sees it: loaded, registered in both table forms, called by the tables alone.

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "standalone/runtime/host.h"
#include "standalone/runtime/instances.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/picture.h"

namespace {

using standalone::Host;
using standalone::HostKind;
using standalone::Instance;
using standalone::MemoryBlock;
using standalone::Object;
using standalone::Owned;
using standalone::Picture;
using standalone::RegisteredClass;

static_assert(sizeof(void *) == 4);

constexpr int32_t kRGB = 1;
constexpr int32_t kGray = 11;
constexpr int32_t kCMYK = 23;

class Plugin : public testing::TestWithParam<double> {
 protected:
  Plugin() : host_({.version = GetParam()}) { host_.Load(PICTUREZVK_LIBRARY); }
  ~Plugin() override {
    EXPECT_EQ(standalone::Describe(host_.Leaks()), "");
    for (const std::string &misdeed : host_.Misdeeds()) ADD_FAILURE() << misdeed;
  }

  const RegisteredClass &Pictures() { return *host_.Classes().Get("PictureZVK").Definition(); }

  // The handler of the one method whose declaration begins so.
  template <class Function>
  Function *Handler(const std::string &beginning) {
    return Only<Function>(Pictures().methods, beginning);
  }

  template <class Function>
  Function *SharedHandler(const std::string &beginning) {
    return Only<Function>(Pictures().sharedMethods, beginning);
  }

  template <class Function, class Methods>
  static Function *Only(const Methods &methods, const std::string &beginning) {
    Function *found = nullptr;
    for (const auto &method : methods) {
      if (method.declaration.rfind(beginning, 0) != 0) continue;
      EXPECT_EQ(found, nullptr) << "more than one method " << beginning;
      found = reinterpret_cast<Function *>(method.function);
    }
    EXPECT_NE(found, nullptr) << "no method " << beginning;
    return found;
  }

  const standalone::RegisteredProperty &Property(const std::string &name) {
    for (const auto &property : Pictures().properties) {
      if (property.name == name) return property;
    }
    ADD_FAILURE() << "no property " << name;
    return Pictures().properties.at(0);
  }

  // A field that the host reaches by itself.
  template <class Value>
  Value &Field(const Owned<Object> &image, const std::string &name) {
    const auto &property = Property(name);
    EXPECT_EQ(property.getter, REALstandardAccessor) << name;
    auto *data = static_cast<Instance *>(image.Get())->Data(host_.Classes().Get("PictureZVK"));
    return *reinterpret_cast<Value *>(data + property.param);
  }
  int32_t Integer(const Owned<Object> &image, const std::string &name) { return Field<int32_t>(image, name); }
  bool Boolean(const Owned<Object> &image, const std::string &name) { return Field<uint8_t>(image, name) != 0; }

  Owned<Object> New() { return Owned<Object>::Adopt(host_.Classes().NewInstance("PictureZVK")); }
  Owned<Object> New(int32_t width, int32_t height, int32_t format) {
    auto image = New();
    Handler<void(REALobject, int32_t, int32_t, int32_t)>(
        "Constructor(width as integer, height as integer, ImageFormat as integer)")(image, width, height, format);
    return image;
  }
  Owned<Object> NewOver(const Owned<MemoryBlock> &block, int32_t width, int32_t height, int32_t format,
                        int32_t rowSize) {
    auto image = New();
    Handler<void(REALobject, REALobject, int32_t, int32_t, int32_t, int32_t)>("Constructor(Buf")(
        image, block, width, height, format, rowSize);
    return image;
  }

  Host host_;
};

INSTANTIATE_TEST_SUITE_P(TableVersions, Plugin, testing::Values(2013.03, 2011.0),
                         [](const auto &info) { return std::string(info.param > 2012 ? "Version12" : "Version9"); });

TEST_P(Plugin, RegistersBothClassesInTheHostsForm) {
  const uint32_t version = GetParam() > 2012 ? 12 : 9;
  EXPECT_EQ(host_.PluginVersion(), static_cast<int32_t>(version));
  ASSERT_EQ(host_.Classes().Registered().size(), 2u);
  EXPECT_EQ(Pictures().version, version);
  EXPECT_EQ(Pictures().dataSize, 256u);  // 248 bytes, rounded up to a multiple of 16
  EXPECT_EQ(Pictures().constants.size(), 80u);
  EXPECT_EQ(Pictures().constants.at(11).declaration, "ImageFormatG = &h0000000B");
  EXPECT_EQ(Pictures().sharedMethods.size(), 3u);
  const RegisteredClass &factory = *host_.Classes().Get("PictureFactoryZVK").Definition();
  ASSERT_EQ(factory.events.size(), 1u);
  EXPECT_EQ(factory.events[0].declaration,
            "NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK");
}

TEST_P(Plugin, FieldsStandWhereTheTablesSay) {
  EXPECT_EQ(Property("YieldTicks").param, 0);
  EXPECT_EQ(Property("Factory").param, 8);
  EXPECT_EQ(Property("MemoryTarget").param, 12);
  EXPECT_EQ(Property("RedOffset").param, 20);
  EXPECT_EQ(Property("Width").param, 92);
  EXPECT_EQ(Property("Valid").param, 128);
  EXPECT_EQ(Property("Parent").param, 184);

  const auto image = New(10, 20, kRGB);
  EXPECT_TRUE(Boolean(image, "Valid"));
  EXPECT_EQ(Integer(image, "Width"), 10);
  EXPECT_EQ(Integer(image, "Height"), 20);
  EXPECT_EQ(Integer(image, "RowSize"), 64);
  EXPECT_EQ(Integer(image, "PixelSize"), 3);
  EXPECT_EQ(Integer(image, "BlueOffset"), 2);
  EXPECT_TRUE(Boolean(image, "IsRGB"));
  EXPECT_FALSE(Boolean(image, "HasAlpha"));
  using Getter = int64_t(REALobject, int32_t);
  EXPECT_EQ(reinterpret_cast<Getter *>(Property("TotalSize").getter)(image, 0), 1280);
}

TEST_P(Plugin, ASetterRefusesAndRaises) {
  const auto image = New(10, 20, kRGB);
  using Setter = void(REALobject, int32_t, int32_t);
  const auto &property = Property("RedOffset");
  auto *const set = reinterpret_cast<Setter *>(property.setter);
  set(image, property.param, 2);
  EXPECT_EQ(Integer(image, "RedOffset"), 2);
  set(image, property.param, 3);
  EXPECT_EQ(Integer(image, "RedOffset"), 2);
  EXPECT_EQ(host_.TakePendingException()->message,
            "Parameter value to method RedOffset is too big. Range is 0 to 2, but value is 3.");
}

TEST_P(Plugin, SharedMethodsTakeNoInstance) {
  EXPECT_EQ(SharedHandler<int64_t(int32_t, int32_t, int32_t)>("CalculateMemory")(3, 2, kRGB), 128);
  EXPECT_EQ(SharedHandler<int64_t(int32_t, int32_t, int32_t)>("CalculateMemory")(2147483647, 1, kGray), -2147483648LL);
  EXPECT_EQ(SharedHandler<uint8_t(int32_t, int32_t, int32_t)>("CanAllocateImage")(65536, 32767, kGray), 1);
  EXPECT_EQ(SharedHandler<uint8_t(int32_t, int32_t, int32_t)>("CanAllocateImage")(65536, 32768, kGray), 0);
  const auto image =
      Owned<Object>::Adopt(SharedHandler<REALobject(int32_t, int32_t, int32_t)>("CreatePictureZVK")(4, 5, kCMYK));
  ASSERT_TRUE(image);
  EXPECT_EQ(Integer(image, "PixelSize"), 4);
}

TEST_P(Plugin, TooLargeForTheAddressSpaceIsRaisedWithItsSize) {
  // 2147483584 bytes, just below what is quietly refused, where half of the address space is taken already.
  constexpr size_t kTaken = 0x7FFFF000;
  void *const taken = mmap(nullptr, kTaken, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(taken, MAP_FAILED);
  const auto image = New(64, 33554431, kGray);
  EXPECT_FALSE(Boolean(image, "Valid"));
  EXPECT_EQ(host_.TakePendingException()->message, "Failed to allocate 2147483584 bytes of memory for image buffer.");
  munmap(taken, kTaken);
}

TEST_P(Plugin, ScalesBetweenMemoryBlocks) {
  const auto sourceBytes = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(3));
  std::memcpy(sourceBytes->Data(), "\x10\x20\x30", 3);
  const auto source = NewOver(sourceBytes, 1, 1, kRGB, 3);
  const auto destBytes = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(7 * 2));
  const auto dest = NewOver(destBytes, 2, 2, kRGB, 7);
  using Scale = uint8_t(REALobject, REALobject, REALobject, int32_t, int32_t, int32_t);
  ASSERT_TRUE(Handler<Scale>("Scale(")(dest, source, nullptr, 1, 2, 2));
  EXPECT_EQ(std::memcmp(destBytes->Data(), "\x10\x20\x30\x10\x20\x30\0\x10\x20\x30\x10\x20\x30", 14), 0);
}

TEST_P(Plugin, CarriesPicturesInAndOut) {
  const auto in = Owned<Picture>::Adopt(Picture::Make(3, 2));
  in->SetPixel(2, 1, {10, 20, 30, 255});
  const auto image = New();
  Handler<void(REALobject, REALobject, uint8_t)>("Constructor(pic")(image, in, 0);
  ASSERT_TRUE(Boolean(image, "Valid"));
  EXPECT_EQ(Field<REALobject>(image, "Target"), in.Handle());
  const auto out = Owned<Object>::Adopt(Handler<REALobject(REALobject)>("CopyPicture as")(image));
  const auto *picture = standalone::ObjectAs<Picture>(out.Handle());
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(picture->GetPixel(2, 1), (standalone::Pixel{10, 20, 30, 255}));
  EXPECT_EQ(picture->GetPixel(0, 0), in->GetPixel(0, 0));
}

// The factory's event, through whatever record the host was given its handle in.
int32_t wishedWidth = 0;

REALobject NewPicture(REALobject, int32_t width, int32_t, int32_t) {
  wishedWidth = width;
  return nullptr;
}

TEST_P(Plugin, FindsTheFactorysEvent) {
  host_.Classes().DefineSubclass("Factory", "PictureFactoryZVK",
                                 {{"NewPictureZVK", reinterpret_cast<void *>(&NewPicture)}});
  const auto factory = Owned<Object>::Adopt(host_.Classes().NewInstance("Factory"));
  const auto &shared = host_.Classes().Get("PictureFactoryZVK").Definition()->sharedMethods;
  ASSERT_EQ(shared.size(), 1u);
  auto *const setFactory = reinterpret_cast<void (*)(REALobject)>(shared[0].function);
  setFactory(factory);
  const auto image =
      Owned<Object>::Adopt(SharedHandler<REALobject(int32_t, int32_t, int32_t)>("CreatePictureZVK")(44, 5, kRGB));
  EXPECT_TRUE(image);
  EXPECT_EQ(wishedWidth, 44);
  setFactory(nullptr);
}

TEST_P(Plugin, CloseLeavesAnUnusableImage) {
  const auto image = New(10, 10, kGray);
  Handler<void(REALobject)>("Close")(image);
  EXPECT_TRUE(Boolean(image, "Valid"));
  EXPECT_EQ(Handler<REALobject(REALobject)>("CopyPicture as")(image), nullptr);
}

}  // namespace
