// The two classes as hosts of all versions see them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "tests/end_to_end/listed_methods.h"
#include "tests/end_to_end/loaded_plugin.h"

namespace standalone {
namespace {

class TablesOnEveryHost : public LoadedPlugin {
 protected:
  const RegisteredClass &Pictures() { return *host_.Classes().Get("PictureZVK").Definition(); }

  const RegisteredMethod *FindMethod(const std::string &declaration) {
    for (const RegisteredMethod &method : Pictures().methods) {
      if (method.declaration == declaration) return &method;
    }
    return nullptr;
  }
  const RegisteredProperty *FindRegisteredProperty(const std::string &name) {
    for (const RegisteredProperty &property : Pictures().properties) {
      if (property.name == name) return &property;
    }
    return nullptr;
  }
};

INSTANTIATE_TEST_SUITE_P(, TablesOnEveryHost, testing::ValuesIn(AllHosts()), HostName);

TEST_P(TablesOnEveryHost, ComeInTheHostsVersion) {
  EXPECT_EQ(host_.PluginVersion(), GetParam().tableVersion);
  const std::vector<const Class *> classes = host_.Classes().Registered();
  ASSERT_EQ(classes.size(), 2u);
  EXPECT_EQ(classes[0]->Name(), "PictureZVK");
  EXPECT_EQ(classes[1]->Name(), "PictureFactoryZVK");
  for (const Class *type : classes) {
    EXPECT_EQ(type->Definition()->version, static_cast<uint32_t>(GetParam().tableVersion));
    EXPECT_EQ(type->Definition()->superName, "");
    EXPECT_EQ(type->Definition()->flags, 4u);
    EXPECT_EQ(type->Definition()->dataSize % 16, 0u);
    EXPECT_EQ(type->Definition()->constructor, nullptr);
  }
  EXPECT_NE(classes[0]->Definition()->destructor, nullptr);
  EXPECT_EQ(classes[1]->Definition()->destructor, nullptr);
}

TEST_P(TablesOnEveryHost, TellTheConstantsAsDeclarations) {
  std::vector<std::string> declarations;
  for (const RegisteredConstant &constant : Pictures().constants) declarations.push_back(constant.declaration);
  ASSERT_EQ(declarations.size(), 80u);
  EXPECT_EQ(declarations.front(), "ImageFormatUnknown = 0");
  EXPECT_THAT(declarations,
              testing::IsSupersetOf({"ImageFormatRGB = 1", "ImageFormatABGR = 9", "ImageFormatXBGR = &h0000000A",
                                     "ImageFormatG = &h0000000B", "ImageFormatGray16 = &h00000029", "ScaleTriangle = 1",
                                     "ScaleCubic = 7", "ImageFormatXKYMC = &h00000020"}));
  EXPECT_EQ(declarations.back(), "DitherCluster8Matrix = &h0000000A");
  EXPECT_EQ(Constant("ImageFormatXKYMC"), 32);
}

TEST_P(TablesOnEveryHost, AreWhole) {
  EXPECT_EQ(Pictures().properties.size(), 43u);
  EXPECT_EQ(Pictures().constants.size(), 80u);
  EXPECT_EQ(Pictures().sharedMethods.size(), 3u);
  ASSERT_EQ(Pictures().methods.size(), 124u);
  ASSERT_EQ(std::size(kListedMethods), 124u);
  const uint32_t forPictures = host_.Version() >= 2010.029 ? 4 : 0;
  for (size_t position = 0; position < std::size(kListedMethods); ++position) {
    const ListedMethod &listed = kListedMethods[position];
    const RegisteredMethod &method = Pictures().methods[position];
    EXPECT_EQ(method.declaration, listed.declaration) << position;
    EXPECT_EQ(method.flags, listed.consoles == Consoles::None  ? 0
                            : listed.consoles == Consoles::All ? 4
                                                               : forPictures)
        << position;
    EXPECT_NE(method.function, nullptr) << position;
  }
}

TEST_P(TablesOnEveryHost, TellMethodsAndSharedMethods) {
  for (const char *declaration :
       {"Scale(source as PictureZVK, temp as PictureZVK, mode as integer, width as integer, height as integer) as "
        "boolean",
        "CreatePictureZVK(width as integer, height as integer, ImageFormat as integer) as PictureZVK", "Close",
        "Constructor(width as integer, height as integer, ImageFormat as integer)"}) {
    const RegisteredMethod *const method = FindMethod(declaration);
    ASSERT_NE(method, nullptr) << declaration;
    EXPECT_NE(method->function, nullptr);
    EXPECT_EQ(method->flags, 4u) << declaration;
  }
  EXPECT_EQ(Pictures().sharedMethods.size(), 3u);
  const RegisteredClass &factories = *host_.Classes().Get("PictureFactoryZVK").Definition();
  ASSERT_EQ(factories.sharedMethods.size(), 1u);
  EXPECT_EQ(factories.sharedMethods[0].declaration, "SetFactory(factory as PictureFactoryZVK)");
  ASSERT_EQ(factories.events.size(), 1u);
  EXPECT_EQ(factories.events[0].declaration,
            "NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK");
}

// Before 2010.029 what touches pictures is not for console programs.
TEST_P(TablesOnEveryHost, AllowPicturesInConsoleProgramsOnNewerHostsOnly) {
  const bool isNew = host_.Version() >= 2010.029;
  for (const char *declaration : {"CopyPicture as picture", "DrawPictureRGB(pic as picture)",
                                  "Constructor(pic as picture, UseAlpha as boolean=false)"}) {
    const RegisteredMethod *const method = FindMethod(declaration);
    ASSERT_NE(method, nullptr) << declaration;
    EXPECT_EQ(method->flags, isNew ? 4u : 0u) << declaration;
  }
  EXPECT_EQ(FindRegisteredProperty("Target")->flags, isNew ? 6u : 2u);
  EXPECT_EQ(FindRegisteredProperty("Width")->flags, 6u);
}

TEST_P(TablesOnEveryHost, TellPropertiesByFieldOrByAccessor) {
  const RegisteredProperty *const width = FindRegisteredProperty("Width");
  ASSERT_NE(width, nullptr);
  EXPECT_EQ(width->getter, REALstandardAccessor);
  EXPECT_EQ(width->setter, nullptr);
  const RegisteredProperty *const red = FindRegisteredProperty("RedOffset");
  ASSERT_NE(red, nullptr);
  EXPECT_EQ(red->getter, REALstandardAccessor);
  EXPECT_NE(red->setter, REALstandardAccessor);
  EXPECT_NE(red->setter, nullptr);
  const RegisteredProperty *const text = FindRegisteredProperty("ImageFormatString");
  ASSERT_NE(text, nullptr);
  EXPECT_NE(text->getter, REALstandardAccessor);
}

TEST_P(TablesOnEveryHost, LeadToTheFieldsOfAnImage) {
  const Value image = NewImage(10, 4, "AKYMC");
  EXPECT_EQ(image.Get("Width").AsInteger(), 10);
  EXPECT_EQ(image.Get("Height").AsInteger(), 4);
  EXPECT_EQ(image.Get("UnclippedHeight").AsInteger(), 4);
  EXPECT_EQ(image.Get("PixelSize").AsInteger(), 5);
  EXPECT_EQ(image.Get("RowSize").AsInteger(), 64);
  EXPECT_EQ(image.Get("TotalSize").AsInt64(), 256);
  EXPECT_EQ(image.Get("BitsPerComponent").AsInteger(), 8);
  EXPECT_EQ(image.Get("ImageFormat").AsInteger(), 30);
  EXPECT_EQ(image.Get("ImageFormatString").AsText(), "AKYMC");
  EXPECT_EQ(image.Get("ChannelCount").AsInteger(), 5);
  EXPECT_TRUE(image.Get("IsCMYK").AsBoolean());
  EXPECT_FALSE(image.Get("IsRGB").AsBoolean());
  EXPECT_FALSE(image.Get("IsGray").AsBoolean());
  EXPECT_TRUE(image.Get("HasAlpha").AsBoolean());
  EXPECT_TRUE(image.Get("HasBlack").AsBoolean());
  EXPECT_FALSE(image.Get("HasRed").AsBoolean());
  EXPECT_EQ(image.Get("BlackOffset").AsInteger(), 1);
  EXPECT_EQ(image.Get("YellowOffset").AsInteger(), 2);
  EXPECT_EQ(image.Get("MagentaOffset").AsInteger(), 3);
  EXPECT_EQ(image.Get("CyanOffset").AsInteger(), 4);
  EXPECT_TRUE(image.Get("Valid").AsBoolean());
  EXPECT_TRUE(image.Get("Parent").IsNil());

  image.Set("AlphaOffset", 4);
  EXPECT_EQ(image.Get("AlphaOffset").AsInteger(), 4);
  EXPECT_THROW(image.Set("AlphaOffset", 5), HostException);
  EXPECT_THROW(image.Set("BlackOffset", 0), BindingError);
  EXPECT_EQ(image.Get("AlphaOffset").AsInteger(), 4);
}

TEST_P(TablesOnEveryHost, RaiseWhatACallCannotDo) {
  try {
    Images().New({nullptr, false});
    FAIL() << "no exception";
  } catch (const HostException &exception) {
    EXPECT_EQ(exception.ClassName(), "NilObjectException");
    EXPECT_EQ(exception.Message(), "picture is nil");
  }
}

}  // namespace
}  // namespace standalone
