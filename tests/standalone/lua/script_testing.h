// The built plug-in in a console host with pictures of the GD library, and a script that uses it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/gd/gd_picture.h"
#include "standalone/lua/host_classes.h"
#include "standalone/lua/script.h"
#include "standalone/runtime/host.h"

namespace standalone {

// At the end of a test nothing of the host's may be left.
class ScriptTest : public testing::Test {
 protected:
  ScriptTest() {
    UseGdPictures(host_);
    host_.Load(PICTUREZVK_LIBRARY);
    DescribeHostClasses(host_);
  }
  ~ScriptTest() override {
    ClassNamed("PictureFactoryZVK").Call("SetFactory", {nullptr});
    EXPECT_EQ(Describe(host_.Leaks()), "");
    EXPECT_EQ(host_.Misdeeds(), std::vector<std::string>());
    EXPECT_FALSE(host_.HasPendingException());
  }

  // Runs the script, which fails where an assert of its own does; gives what it failed with, else nothing.
  static std::string Run(const std::string &text, const std::vector<std::string> &arguments = {}) {
    try {
      Script().RunText(text, arguments);
    } catch (const ScriptError &error) {
      return error.what();
    }
    return "";
  }

 private:
  Host host_;
  Bindings bindings_;
};

}  // namespace standalone
