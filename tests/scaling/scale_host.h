// A host for the tests of whole scales: it answers wishes for temp images, has a clock that never stands still, and
// counts the time that it is given.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include "image/image_storage.h"
#include "tests/scaling/scale_testing.h"
#include "tests/support/plugin_host.h"

namespace zvk::scaling {

// What the factory of a test answers, in turn, and what it was asked for.
inline std::vector<std::function<REALobject(int32_t width, int32_t height, int32_t format)>> answers;
inline std::vector<std::array<int32_t, 3>> wishes;

inline REALobject NewImage(int32_t width, int32_t height, int32_t format) {
  REALobject image = REALnewInstance("PictureZVK");
  ImageConstructor(image, width, height, format);
  return image;
}

inline uint32_t ticks = 0;

// The destructor of the host complains about exceptions, and about temp images that were not given back.
class ScaleHost : public testing::Test {
 protected:
  ScaleHost() {
    answers.clear();
    wishes.clear();
    host_->Classes().DefineSubclass(
        "TestFactory", "PictureFactoryZVK",
        {{"NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK",
          reinterpret_cast<void *>(&AnswerInTurn)}});
    factory_ = host_.New("TestFactory");
    host_->SetEntry(
        "TickCount", +[]() -> uint32_t { return ++ticks; });
    host_->onYield = [this] {
      EXPECT_EQ(std::this_thread::get_id(), thisThread_) << "the host is called on its own thread only";
      ++yields_;
      if (onYield_) onYield_();
    };
  }

  void UseFactory(const TestImage &source) { source.Record().Factory = factory_; }

  PluginHost host_;
  standalone::Owned<standalone::Object> factory_;
  int yields_ = 0;
  std::function<void()> onYield_;

 private:
  static REALobject AnswerInTurn(REALobject, int32_t width, int32_t height, int32_t format) {
    wishes.push_back({width, height, format});
    if (wishes.size() > answers.size()) return nullptr;
    return answers[wishes.size() - 1](width, height, format);
  }

  const std::thread::id thisThread_ = std::this_thread::get_id();
};

}  // namespace zvk::scaling
