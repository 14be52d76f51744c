// What the class tables say before they are fitted to a host, entry by entry against a list kept here.

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "image/image_record.h"

namespace zvk {
namespace {

// How a property is reached.
enum class Access { Field, ReadOnly, Setter, Getter };

struct ExpectedProperty {
  const char *name;
  const char *type;
  Access access;
  size_t position;
  uint32_t flags = 6;
};

const std::vector<ExpectedProperty> kProperties = {
    {"YieldTicks", "Integer", Access::Field, 0},
    {"RedOffset", "Integer", Access::Setter, offsetof(ImageClassData, RedOffset)},
    {"GreenOffset", "Integer", Access::Setter, offsetof(ImageClassData, GreenOffset)},
    {"BlueOffset", "Integer", Access::Setter, offsetof(ImageClassData, BlueOffset)},
    {"GrayOffset", "Integer", Access::Setter, offsetof(ImageClassData, GrayOffset)},
    {"AlphaOffset", "Integer", Access::Setter, offsetof(ImageClassData, AlphaOffset)},
    {"Width", "Integer", Access::ReadOnly, offsetof(ImageClassData, Width)},
    {"Height", "Integer", Access::ReadOnly, offsetof(ImageClassData, Height)},
    {"UnclippedHeight", "Integer", Access::ReadOnly, offsetof(ImageClassData, UnclippedHeight)},
    {"PixelSize", "Integer", Access::ReadOnly, offsetof(ImageClassData, PixelSize)},
    {"BitsPerComponent", "Integer", Access::ReadOnly, offsetof(ImageClassData, BitsPerComponent)},
    {"RowSize", "Integer", Access::ReadOnly, offsetof(ImageClassData, RowSize)},
    {"ImageFormat", "Integer", Access::ReadOnly, offsetof(ImageClassData, ImageFormat)},
    {"ImageFormatString", "String", Access::Getter, 0},
    {"MappingBlockSize", "Integer", Access::Setter, offsetof(ImageClassData, MappingBlockSize)},
    {"RowOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, RowOffset)},
    {"DebugPictureEnabled", "Boolean", Access::Field, offsetof(ImageClassData, DebugPictureEnabled), 0x40002},
    {"DebugPicture", "Picture", Access::Getter, 0, 0x40002},
    {"IsGray", "Boolean", Access::ReadOnly, offsetof(ImageClassData, IsGray)},
    {"IsRGB", "Boolean", Access::ReadOnly, offsetof(ImageClassData, IsRGB)},
    {"HasGreen", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasGreen)},
    {"HasRed", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasRed)},
    {"HasBlue", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasBlue)},
    {"HasGray", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasGray)},
    {"HasAlpha", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasAlpha)},
    {"Valid", "Boolean", Access::ReadOnly, offsetof(ImageClassData, Valid)},
    {"IsMapping", "Boolean", Access::ReadOnly, offsetof(ImageClassData, IsMapping)},
    {"ChannelCount", "Integer", Access::ReadOnly, offsetof(ImageClassData, ChannelCount)},
    {"IsCMYK", "Boolean", Access::ReadOnly, offsetof(ImageClassData, IsCMYK)},
    {"HasCyan", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasCyan)},
    {"HasYellow", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasYellow)},
    {"HasMagenta", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasMagenta)},
    {"HasBlack", "Boolean", Access::ReadOnly, offsetof(ImageClassData, HasBlack)},
    {"CyanOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, CyanOffset)},
    {"YellowOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, YellowOffset)},
    {"MagentaOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, MagentaOffset)},
    {"BlackOffset", "Integer", Access::ReadOnly, offsetof(ImageClassData, BlackOffset)},
    {"Parent", "PictureZVK", Access::ReadOnly, offsetof(ImageClassData, Parent)},
    {"Factory", "PictureFactoryZVK", Access::Field, offsetof(ImageClassData, Factory)},
    {"Target", "Picture", Access::ReadOnly, offsetof(ImageClassData, Target), 0x40002},
    {"Memory", "Memoryblock", Access::Getter, 0},
    {"MemoryTarget", "Memoryblock", Access::ReadOnly, offsetof(ImageClassData, MemoryTarget)},
    {"TotalSize", "Int64", Access::Getter, 0},
};

struct ExpectedMethod {
  const char *declaration;
  uint32_t flags = 4;
  bool assignable = false;
};

constexpr uint32_t kPicture = 0x40000;

const std::vector<ExpectedMethod> kMethods = {
    {"CreatePictureZVK(width as integer, height as integer, ImageFormat as integer) as PictureZVK"},
    {"Scale(source as PictureZVK, temp as PictureZVK, mode as integer, width as integer, height as integer) as "
     "boolean"},
    {"Constructor(width as integer, height as integer, ImageFormat as integer, BlockSize as integer, FilePath as "
     "folderitem)"},
    {"Constructor(width as integer, height as integer, ImageFormat as integer)"},
    {"Constructor(pic as picture, UseAlpha as boolean=false)", kPicture},
    {"Constructor(Buf as MemoryBlock, width as integer, height as integer, ImageFormat as integer, RowSize as "
     "integer)"},
    {"AlphaChannel as PictureZVK"},
    {"RedChannel as PictureZVK"},
    {"GreenChannel as PictureZVK"},
    {"BlueChannel as PictureZVK"},
    {"GrayChannel as PictureZVK"},
    {"CyanChannel as PictureZVK"},
    {"MagentaChannel as PictureZVK"},
    {"YellowChannel as PictureZVK"},
    {"BlackChannel as PictureZVK"},
    {"Channel(index as integer) as PictureZVK"},
    {"RGBChannels as PictureZVK"},
    {"CMYKChannels as PictureZVK"},
    {"MirroredView as PictureZVK"},
    {"Close"},
    {"CopyPictureWithMask(x as integer, y as integer, w as integer, h as integer) as picture", kPicture},
    {"CopyPictureWithMask as picture", kPicture},
    {"CopyPicture(x as integer, y as integer, w as integer, h as integer) as picture", kPicture},
    {"CopyPicture as picture", kPicture},
    {"CopyMask(x as integer, y as integer, w as integer, h as integer) as picture", kPicture},
    {"CopyMask as picture", kPicture},
    {"RawRow(index as integer) as memoryblock"},
    {"Row(index as integer) as memoryblock", 4, true},
    {"RowInFormat(index as integer, ImageFormat as integer) as memoryblock", 4, true},
    {"RowInFormat(index as integer, ImageFormat as integer, InvertAlpha as boolean) as memoryblock", 4, true},
    {"RowStringInFormat(index as integer, ImageFormat as integer) as string", 4, true},
    {"DataStringInFormat(ImageFormat as integer) as string", 4, true},
    {"Clone as PictureZVK"},
    {"DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer)",
     kPicture},
    {"DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer, SourceX as integer, SourceY as integer)",
     kPicture},
    {"DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer)",
     kPicture},
    {"DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer, SourceX as integer, SourceY as integer)",
     kPicture},
    {"DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer)",
     kPicture},
    {"DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
     "DestHeight as integer, SourceX as integer, SourceY as integer)",
     kPicture},
    {"DrawPictureRGB(pic as picture)", kPicture},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer)", kPicture},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)",
     kPicture},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, "
     "SourceX as integer, SourceY as integer)",
     kPicture},
    {"ClipImage as PictureZVK"},
    {"ClipImage(x as integer, y as integer, width as integer, height as integer) as PictureZVK"},
};

const std::vector<const char *> kSharedMethods = {
    "CalculateMemory(width as integer, height as integer, theImageFormat as integer) as Int64",
    "CanAllocateImage(width as integer, height as integer, theImageFormat as integer) as boolean",
    "CreatePictureZVK(width as integer, height as integer, theImageFormat as integer) as PictureZVK",
};

TEST(ClassTables, Properties) {
  ASSERT_EQ(PictureDefinition.propertyCount, kProperties.size());
  for (size_t i = 0; i < kProperties.size(); ++i) {
    const REALproperty &property = PictureDefinition.properties[i];
    const ExpectedProperty &expected = kProperties[i];
    SCOPED_TRACE(expected.name);
    EXPECT_STREQ(property.name, expected.name);
    EXPECT_STREQ(property.type, expected.type);
    EXPECT_STREQ(property.group, "");
    EXPECT_EQ(property.editor, nullptr);
    EXPECT_EQ(property.flags, expected.flags);
    EXPECT_EQ(property.param, static_cast<int32_t>(expected.position));
    EXPECT_EQ(property.getter == REALstandardAccessor, expected.access != Access::Getter);
    EXPECT_NE(property.getter, nullptr);
    EXPECT_EQ(property.setter == REALstandardAccessor, expected.access == Access::Field);
    EXPECT_EQ(property.setter == nullptr, expected.access == Access::ReadOnly || expected.access == Access::Getter);
    EXPECT_EQ(property.enumCount + property.attributeCount, 0u);
  }
}

TEST(ClassTables, Methods) {
  ASSERT_EQ(PictureDefinition.methodCount, kMethods.size());
  for (size_t i = 0; i < kMethods.size(); ++i) {
    const REALmethodDefinition &method = PictureDefinition.methods[i];
    EXPECT_STREQ(method.declaration, kMethods[i].declaration);
    EXPECT_EQ(method.flags, kMethods[i].flags) << method.declaration;
    EXPECT_NE(method.function, nullptr) << method.declaration;
    EXPECT_EQ(method.setterFunction != nullptr, kMethods[i].assignable) << method.declaration;
  }
}

TEST(ClassTables, SharedMethods) {
  ASSERT_EQ(PictureDefinition.sharedMethodCount, kSharedMethods.size());
  for (size_t i = 0; i < kSharedMethods.size(); ++i) {
    EXPECT_STREQ(PictureDefinition.sharedMethods[i].declaration, kSharedMethods[i]);
    EXPECT_EQ(PictureDefinition.sharedMethods[i].flags, 4u);
  }
  ASSERT_EQ(PictureFactoryDefinition.sharedMethodCount, 1u);
  EXPECT_STREQ(PictureFactoryDefinition.sharedMethods[0].declaration, "SetFactory(factory as PictureFactoryZVK)");
  EXPECT_EQ(PictureFactoryDefinition.sharedMethods[0].flags, 4u);
}

// Names that share one list of numbers, in table order.
struct ConstantRun {
  std::string names;  // separated by blanks
  std::string prefix;
  std::string suffix;
  std::vector<uintptr_t> numbers;
};

const std::vector<ConstantRun> kConstants = {
    {"Unknown RGB RGBA RGBX ARGB XRGB BGR BGRA BGRX ABGR XBGR G",
     "ImageFormat",
     "",
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
    {"Gray16 GA AG", "ImageFormat", "", {41, 12, 13}},
    {"1 2 3 4 5 6 7 8", "ImageFormatScaling", "", {33, 34, 35, 36, 37, 38, 39, 40}},
    {"Buffer 1of3 2of3 3of3 1of4 2of4 3of4 4of4", "ImageFormat", "", {22, 15, 16, 17, 18, 19, 20, 21}},
    {"R G B", "ImageFormat", "ofRGB", {15, 16, 17}},
    {"R G B A", "ImageFormat", "ofRGBA", {18, 19, 20, 21}},
    {"R G B A", "ImageFormat", "ofARGB", {19, 20, 21, 18}},
    {"R G B", "ImageFormat", "ofBGR", {17, 16, 15}},
    {"R G B A", "ImageFormat", "ofBGRA", {20, 19, 18, 21}},
    {"R G B A", "ImageFormat", "ofABGR", {21, 20, 19, 18}},
    {"CMYK CMYKA ACMYK CMYKX XCMYK KYMC KYMCA AKYMC KYMCX XKYMC",
     "ImageFormat",
     "",
     {23, 24, 25, 26, 27, 28, 29, 30, 31, 32}},
    {"Triangle Box Lanczos3 Lanczos8 Mitchell Poly3 Cubic", "Scale", "", {1, 2, 3, 4, 5, 6, 7}},
    {"Magic2x2 Magic4x4 Ordered4x4 Lines4x4 90Halftone6x6 Ordered6x6 Ordered8x8 Cluster3 Cluster4 Cluster8",
     "Dither",
     "Matrix",
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}},
};

TEST(ClassTables, Constants) {
  ASSERT_EQ(PictureDefinition.constantCount, 80u);
  size_t position = 0;
  for (const ConstantRun &run : kConstants) {
    std::istringstream names(run.names);
    for (const uintptr_t number : run.numbers) {
      std::string name;
      ASSERT_TRUE(names >> name);
      ASSERT_LT(position, 80u);
      const REALconstant &constant = PictureDefinition.constants[position++];
      EXPECT_EQ(constant.declaration, run.prefix + name + run.suffix);
      EXPECT_EQ(constant.reserved, number) << name;
      EXPECT_EQ(constant.flags, 0u) << name;
    }
  }
  EXPECT_EQ(position, 80u);
}

TEST(ClassTables, TheTwoClasses) {
  EXPECT_STREQ(PictureDefinition.name, "PictureZVK");
  EXPECT_EQ(PictureDefinition.superName, nullptr);
  EXPECT_EQ(PictureDefinition.dataSize, sizeof(ImageClassData));
  EXPECT_EQ(PictureDefinition.constructor, nullptr);
  EXPECT_NE(PictureDefinition.destructor, nullptr);
  EXPECT_EQ(PictureDefinition.flags, 4u);
  EXPECT_EQ(PictureDefinition.eventCount, 0u);
  EXPECT_EQ(PictureDefinition.sharedPropertyCount, 0u);
  EXPECT_EQ(PictureDefinition.forSystemUse, 0u);

  EXPECT_STREQ(PictureFactoryDefinition.name, "PictureFactoryZVK");
  EXPECT_EQ(PictureFactoryDefinition.superName, nullptr);
  EXPECT_EQ(PictureFactoryDefinition.dataSize, 0u);
  EXPECT_EQ(PictureFactoryDefinition.destructor, nullptr);
  EXPECT_EQ(PictureFactoryDefinition.flags, 4u);
  EXPECT_EQ(PictureFactoryDefinition.propertyCount, 0u);
  EXPECT_EQ(PictureFactoryDefinition.methodCount, 0u);
  EXPECT_EQ(PictureFactoryDefinition.constantCount, 0u);
  ASSERT_EQ(PictureFactoryDefinition.eventCount, 1u);
  EXPECT_EQ(PictureFactoryDefinition.events, &NewPictureEvent);
  EXPECT_STREQ(NewPictureEvent.declaration,
               "NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK");
}

}  // namespace
}  // namespace zvk
