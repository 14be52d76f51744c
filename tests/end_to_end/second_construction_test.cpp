// Instances that a host program constructs more than once, through the class tables.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/runtime/folder_item.h"
#include "standalone/runtime/host.h"
#include "standalone/runtime/memory_block.h"

namespace standalone {
namespace {

constexpr int32_t kRGB = 1;
constexpr int32_t kGray = 11;

class SecondConstruction : public testing::Test {
 protected:
  SecondConstruction() { host_.Load(PICTUREZVK_LIBRARY); }

  static Value New(const Arguments &arguments) { return ClassNamed("PictureZVK").New(arguments); }
  static bool IsValid(const Value &image) { return image.Get("Valid").AsBoolean(); }
  static Value FileAt(const std::filesystem::path &path) {
    return Owned<FolderItem>::Adopt(FolderItem::Make(path.string()));
  }

  Host host_{{.fenced = true}};
  Bindings bindings_;
};

TEST_F(SecondConstruction, ThatIsTooLargeLeavesNothingToWorkOn) {
  const Value image = New({10, 10, kRGB});
  image.Call("Constructor", {1000000, 1000000, kRGB});
  EXPECT_FALSE(IsValid(image));
  image.Call("Invert");
  EXPECT_TRUE(image.Call("ClipImage").IsNil());
}

TEST_F(SecondConstruction, InAFileThatCannotBeMadeLeavesNothingToWorkOn) {
  const Value image = New({10, 10, kRGB});
  image.Call("Constructor", {1000, 1000, kRGB, 0, FileAt("/no such folder/image")});
  EXPECT_FALSE(IsValid(image));
  image.Call("FillRect", {255});
}

TEST_F(SecondConstruction, InMemoryAfterAFileHasViewsOfTheMemory) {
  const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "second_construction";
  const Value image = New({10, 10, kGray, 0, FileAt(path)});
  ASSERT_TRUE(IsValid(image) && std::filesystem::exists(path));
  image.Call("Constructor", {20, 20, kGray});
  EXPECT_TRUE(IsValid(image));
  EXPECT_FALSE(image.Get("IsMapping").AsBoolean());
  EXPECT_FALSE(std::filesystem::exists(path));
  const Value clip = image.Call("ClipImage", {5, 19, 2, 1});
  clip.Call("FillRect", {77});
  const Value row = image.Call("Row", {19});
  const uint8_t *bytes = ObjectAs<MemoryBlock>(row.AsObject()->Handle())->Data();
  EXPECT_EQ(std::vector<uint8_t>(bytes + 4, bytes + 8), (std::vector<uint8_t>{0, 77, 77, 0}));
}

TEST_F(SecondConstruction, GivesTheFirstBlockBack) {
  const auto block = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(100));
  {
    const Value image = New({Value(block), 10, 10, kGray, 10});
    EXPECT_EQ(block->References(), 2);
    image.Call("Constructor", {Value(block), 5, 5, kGray, 10});
    EXPECT_EQ(block->References(), 2);
    image.Call("Constructor", {5, 5, kGray});
    EXPECT_EQ(block->References(), 1);
  }
  EXPECT_EQ(block->References(), 1);
}

}  // namespace
}  // namespace standalone
