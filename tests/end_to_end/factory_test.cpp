// Images that a host program makes for the plug-in: its factory's event is found whatever form the class tables have.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "standalone/runtime/folder_item.h"
#include "tests/end_to_end/loaded_plugin.h"

namespace standalone {
namespace {

using testing::ElementsAre;

struct Request {
  int32_t width;
  int32_t height;
  int32_t format;

  bool operator==(const Request &) const = default;
  friend void PrintTo(const Request &request, std::ostream *stream) {
    *stream << request.width << " x " << request.height << " in " << request.format;
  }
};

class FactoryOnEveryHost : public LoadedPlugin {
 protected:
  using Maker = std::function<Value(const Request &)>;

  // A factory of a class of its own, which writes down what it is asked for.
  Value NewFactory(const std::string &className, std::vector<Request> &requests, Maker make) {
    bindings_.DefineSubclass(
        className, "PictureFactoryZVK",
        {{"NewPictureZVK", [&requests, make = std::move(make)](const Value &, const Arguments &arguments) {
            requests.push_back({arguments[0].AsInteger(), arguments[1].AsInteger(), arguments[2].AsInteger()});
            return make(requests.back());
          }}});
    return ClassNamed(className).New();
  }

  Maker AsAsked() {
    return [this](const Request &request) { return Images().New({request.width, request.height, request.format}); };
  }

  // Scales a part of a picture from 40 x 30 to 25 x 50, and checks what comes out.
  void ExpectScaleWorks(const Value &factoryOfSource = nullptr) {
    const Grid pixels = ReadExample("astronaut.png", 200, 100, 40, 30);
    const Value source = ImageOf(pixels, "RGB");
    source.Set("Factory", factoryOfSource);
    const Value dest = NewImage(25, 50, "RGB");
    ASSERT_TRUE(dest.Call("Scale", {source, nullptr, Constant("ScaleLanczos3"), 25, 50}).AsBoolean());
    EXPECT_EQ(ColoursOf(dest.Call("CopyPicture")), NaivelyScaled(pixels, 3, 25, 50));
  }
  const Request tempRequest_ = {25, 30, 36};

  std::vector<Request> requests_;
};

INSTANTIATE_TEST_SUITE_P(, FactoryOnEveryHost, testing::ValuesIn(AllHosts()), HostName);

TEST_P(FactoryOnEveryHost, TheGlobalOneMakesTheTempImageOfScale) {
  const Value factory = NewFactory("Own", requests_, AsAsked());
  Factories().Call("SetFactory", {factory});
  ExpectScaleWorks();
  EXPECT_THAT(requests_, ElementsAre(tempRequest_));

  Factories().Call("SetFactory", {nullptr});
  ExpectScaleWorks();
  EXPECT_EQ(requests_.size(), 1u) << "it is no longer asked";
}

TEST_P(FactoryOnEveryHost, TheOneOfTheSourceIsAskedBeforeTheGlobalOne) {
  std::vector<Request> globalRequests;
  Factories().Call("SetFactory", {NewFactory("Global", globalRequests, AsAsked())});
  ExpectScaleWorks(NewFactory("Own", requests_, AsAsked()));
  EXPECT_THAT(requests_, ElementsAre(tempRequest_));
  EXPECT_TRUE(globalRequests.empty());
}

TEST_P(FactoryOnEveryHost, AnImageThatWillNotDoIsGivenBackAndTheNextSourceIsAsked) {
  std::vector<Request> globalRequests;
  Factories().Call("SetFactory", {NewFactory("Global", globalRequests, [](const Request &) { return Value(); })});
  ExpectScaleWorks(NewFactory("Narrow", requests_, [this](const Request &request) {
    return Images().New({request.width - 1, request.height, request.format});
  }));
  EXPECT_THAT(requests_, ElementsAre(tempRequest_));
  EXPECT_THAT(globalRequests, ElementsAre(tempRequest_));

  ExpectScaleWorks(NewFactory("Unfit", requests_, [this](const Request &request) {
    const int32_t noFormat = 14;
    Value image = Images().New({request.width, request.height, noFormat});
    EXPECT_FALSE(image.Get("Valid").AsBoolean());
    return image;
  }));
  EXPECT_EQ(globalRequests.size(), 2u);
}

TEST_P(FactoryOnEveryHost, AnImageLargerThanAskedForWillDo) {
  const Value factory = NewFactory("Large", requests_, [this](const Request &request) {
    return Images().New({request.width * 2, request.height, request.format});
  });
  ExpectScaleWorks(factory);
  EXPECT_EQ(requests_.size(), 1u);
}

TEST_P(FactoryOnEveryHost, ATempImageOfAnotherFormatIsGivenBackAndAskedForAgain) {
  const Value factory = NewFactory("Stubborn", requests_, [this](const Request &request) {
    const bool agrees = requests_.size() == 3;
    return Images().New({request.width, request.height, agrees ? request.format : Constant("ImageFormatRGBA")});
  });
  ExpectScaleWorks(factory);
  EXPECT_THAT(requests_, ElementsAre(tempRequest_, tempRequest_, tempRequest_));
}

TEST_P(FactoryOnEveryHost, ATempImageInAFileIsGivenBackAndScaleRefuses) {
  const std::string path = testing::TempDir() + "factory_" + std::to_string(getpid());
  const Value factory = NewFactory("Filing", requests_, [&](const Request &request) {
    const Owned<FolderItem> file = Owned<FolderItem>::Adopt(FolderItem::Make(path));
    Value image = Images().New({request.width, request.height, request.format, 4096, file});
    EXPECT_TRUE(image.Get("IsMapping").AsBoolean());
    return image;
  });
  const Value source = NewImage(40, 30, "RGB");
  source.Set("Factory", factory);
  EXPECT_FALSE(NewImage(25, 50, "RGB").Call("Scale", {source, nullptr, 1, 25, 50}).AsBoolean());
  EXPECT_THAT(requests_, ElementsAre(tempRequest_));
  EXPECT_FALSE(std::filesystem::exists(path)) << "it went with its image";
}

TEST_P(FactoryOnEveryHost, ASubclassWithoutTheEventIsPassedOver) {
  bindings_.DefineSubclass("Silent", "PictureFactoryZVK", {});
  Factories().Call("SetFactory", {ClassNamed("Silent").New()});
  ExpectScaleWorks(Factories().New());
}

TEST_P(FactoryOnEveryHost, AHostThatFindsNoEventsIsNotAsked) {
  host_.Withhold("GetEventInstance");
  Factories().Call("SetFactory", {NewFactory("Own", requests_, AsAsked())});
  ExpectScaleWorks();
  EXPECT_TRUE(requests_.empty());
}

TEST_P(FactoryOnEveryHost, ReferencesAreHeldOnceEachAndGivenBack) {
  const Value factory = NewFactory("Own", requests_, AsAsked());
  EXPECT_EQ(factory.AsObject()->References(), 1);
  Factories().Call("SetFactory", {factory});
  Factories().Call("SetFactory", {factory});
  EXPECT_EQ(factory.AsObject()->References(), 2);
  {
    const Value image = NewImage(1, 1, "G");
    image.Set("Factory", factory);
    EXPECT_EQ(factory.AsObject()->References(), 3);
    EXPECT_EQ(image.Get("Factory").AsObject(), factory.AsObject());
  }
  EXPECT_EQ(factory.AsObject()->References(), 2);
  Factories().Call("SetFactory", {nullptr});
  EXPECT_EQ(factory.AsObject()->References(), 1);
}

TEST_P(FactoryOnEveryHost, WhatTheEventThrowsComesOutOfTheCall) {
  struct Stop {};
  const Value factory = NewFactory("Broken", requests_, [](const Request &) -> Value { throw Stop(); });
  const Value image = NewImage(1, 1, "G");
  image.Set("Factory", factory);
  EXPECT_THROW(image.Call("CreatePictureZVK", {2, 2, 1}), Stop);
}

}  // namespace
}  // namespace standalone
