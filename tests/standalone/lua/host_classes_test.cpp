#include "standalone/lua/host_classes.h"

#include <filesystem>

#include "tests/standalone/lua/script_testing.h"

namespace standalone {
namespace {

using testing::HasSubstr;

class HostClassesTest : public ScriptTest {
 protected:
  HostClassesTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "host_classes_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~HostClassesTest() override { std::filesystem::remove_all(folder_); }

  std::string RunInFolder(const std::string &text) { return Run(text, {folder_}); }

 private:
  std::string folder_;
};

TEST_F(HostClassesTest, ANewPictureIsWhiteAndItsPixelsCanBeSet) {
  EXPECT_EQ(Run(R"(
      local picture = Picture(3, 2)
      assert(picture.Width == 3 and picture.Height == 2 and picture.Depth == 32 and not picture.HasMask)
      assert(picture.Graphics:Pixel(2, 1) == Color"#ffffff")
      picture.Graphics:SetPixel(2, 1, Color"#123456")
      assert(picture.Graphics:Pixel(2, 1) == Color"#123456")
      for _, place in ipairs{{-1, 0}, {0, -1}, {3, 0}, {0, 2}} do
        local works, error = pcall(function() return picture.Graphics:Pixel(place[1], place[2]) end)
        assert(not works and error.Class == "OutOfBoundsException")
        assert(not pcall(function() picture.Graphics:SetPixel(place[1], place[2], Color"#000000") end))
      end
      assert(not pcall(Picture, 0, 1) and not pcall(Picture, 1, 1, 8))
  )"),
            "");
}

TEST_F(HostClassesTest, PicturesGoToFilesAndBack) {
  EXPECT_EQ(RunInFolder(R"(
      local picture = Picture(3, 2)
      picture.Graphics:SetPixel(0, 1, Color"#0a0b0c")
      picture:Save(arg[1] .. "/a.png")
      picture:Save(FolderItem(arg[1]):Child("b.png"))
      for _, file in ipairs{"/a.png", "/b.png"} do
        local opened = Picture.Open(arg[1] .. file)
        assert(opened.Width == 3 and opened.Graphics:Pixel(0, 1) == Color"#0a0b0c" and not opened.HasMask)
      end
      assert(Picture.Open(FolderItem(arg[1]):Child("a.png")).Height == 2)
      local works, error = pcall(Picture.Open, arg[1] .. "/none.png")
      assert(not works and error.Class == "IOException" and error.Message:match("none.png"))
      assert(not pcall(function() picture:Save(arg[1] .. "/a.unknown") end))
      assert(not FolderItem(arg[1] .. "/a.unknown").Exists)
  )"),
            "");
}

TEST_F(HostClassesTest, AMaskIsWhiteWhereThePictureIsOpaque) {
  EXPECT_EQ(RunInFolder(R"(
      local picture = Picture(2, 1)
      picture.Graphics:SetPixel(0, 0, Color"#ff0000")
      assert(picture.Mask.Graphics:Pixel(1, 0) == Color"#ffffff" and picture.HasMask)
      picture.Mask.Graphics:SetPixel(1, 0, Color"#000000")
      picture:Save(arg[1] .. "/masked.png")
      local opened = Picture.Open(arg[1] .. "/masked.png")
      assert(opened.HasMask)
      assert(opened.Mask.Graphics:Pixel(0, 0) == Color"#ffffff")
      assert(opened.Mask.Graphics:Pixel(1, 0) == Color"#000000")
      opened.Mask = nil
      assert(not opened.HasMask)
  )"),
            "");
}

TEST_F(HostClassesTest, NumbersInAMemoryBlockHaveTheirSizeAndSign) {
  EXPECT_EQ(Run(R"(
      local block = MemoryBlock(16)
      assert(block.Size == 16 and block:Byte(15) == 0)
      block:SetByte(0, 255)
      assert(block:Byte(0) == 255 and block:UInt8Value(0) == 255 and block:Int8Value(0) == -1)
      block:SetByte(1, 0x1ff)
      assert(block:Byte(1) == 255 and block:Int16Value(0) == -1 and block:UInt16Value(0) == 65535)
      block:SetInt32Value(4, -2)
      assert(block:Int32Value(4) == -2 and block:UInt32Value(4) == 4294967294)
      block:SetInt64Value(8, -3)
      assert(block:Int64Value(8) == -3 and block:Byte(8) == 0xfd)
      block:SetDoubleValue(0, 1.5)
      assert(block:DoubleValue(0) == 1.5)
      block:SetSingleValue(3, 0.25)
      assert(block:SingleValue(3) == 0.25)
  )"),
            "");
}

TEST_F(HostClassesTest, WhatLiesOutsideAMemoryBlockIsRefused) {
  EXPECT_EQ(Run(R"(
      local block = MemoryBlock(4)
      for _, call in ipairs{
        function() return block:Byte(4) end, function() return block:Byte(-1) end,
        function() return block:Int32Value(1) end, function() block:SetDoubleValue(0, 1) end,
        function() return block:StringValue(2, 3) end, function() return block:StringValue(0, -1) end,
        function() return block:StringValue(4, 2147483647) end,
      } do
        local works, error = pcall(call)
        assert(not works and error.Class == "OutOfBoundsException", error)
      end
      assert(not pcall(MemoryBlock, -1))
      assert(MemoryBlock(0).Size == 0)
  )"),
            "");
}

TEST_F(HostClassesTest, StringsInAMemoryBlockAreItsBytes) {
  EXPECT_EQ(Run(R"(
      local block = MemoryBlock(6)
      block:SetStringValue(1, 3, "ab")
      assert(block:StringValue(0, 4) == "\0ab\0")
      block:SetStringValue(0, 2, "wxyz")
      assert(block:StringValue(0, 6) == "wxb\0\0\0")
      assert(block:StringValue(6, 0) == "")
  )"),
            "");
}

TEST_F(HostClassesTest, FolderItemsTellOfFilesAndFolders) {
  EXPECT_EQ(RunInFolder(R"(
      local folder = FolderItem(arg[1])
      assert(folder.Directory and folder.Exists and folder.Count == 0)
      Picture(1, 1):Save(arg[1] .. "/b.png")
      folder:Child("a"):CreateAsFolder()
      assert(folder.Count == 2 and folder:Item(1).Name == "a" and folder:Item(2).Name == "b.png")
      assert(folder:Item(1).Directory and not folder:Item(2).Directory and folder:Item(2).Length > 0)
      assert(folder:Item(2).NativePath == arg[1] .. "/b.png")
      assert(folder:Item(2).Parent.NativePath == arg[1])
      assert(not pcall(function() return folder:Item(0) end) and not pcall(function() return folder:Item(3) end))
      folder:Child("b.png"):Delete()
      assert(not folder:Child("b.png").Exists and folder.Count == 1)
      local works, error = pcall(function() folder:Child("b.png"):Delete() end)
      assert(not works and error.Class == "IOException")
      assert(not pcall(function() return folder:Child("none").Count end))
  )"),
            "");
  EXPECT_THAT(Run("print(FolderItem('/dev/null').Count)"), HasSubstr("IOException: /dev/null: Not a directory"));
  EXPECT_THAT(Run("print(FolderItem('/dev/none').Length)"), HasSubstr("IOException: /dev/none: No such file"));
  EXPECT_THAT(Run("FolderItem('')"), HasSubstr("IOException: a folder item needs a path"));
}

TEST_F(HostClassesTest, AFolderItemCannotHoldAZeroByte) {
  EXPECT_EQ(RunInFolder(R"(
      Picture(1, 1):Save(arg[1] .. "/a.png")
      for _, make in ipairs{
        function() return FolderItem(arg[1] .. "/a.png\0more") end,
        function() return FolderItem(arg[1]):Child("a.png\0more") end,
      } do
        local works, error = pcall(function() make():Delete() end)
        assert(not works and error.Class == "IOException")
        assert(error.Message == "a folder item's path cannot hold a zero byte")
      end
      assert(FolderItem(arg[1] .. "/a.png").Exists)
  )"),
            "");
}

TEST_F(HostClassesTest, NilWhereAnObjectIsNeededIsAnException) {
  EXPECT_THAT(Run("Picture.Open(nil)"), HasSubstr("NilObjectException"));
  EXPECT_THAT(Run("Picture(1, 1):Save(nil)"), HasSubstr("NilObjectException"));
}

}  // namespace
}  // namespace standalone
