#include "standalone/lua/script.h"

#include <filesystem>
#include <fstream>

#include "tests/standalone/lua/script_testing.h"

namespace standalone {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST_F(ScriptTest, ArgumentsAreCountedFromOneAndTheNameIsAtZero) {
  EXPECT_EQ(
      Run("assert(arg[0] == '(command line)' and arg[1] == 'one' and arg[2] == '-x' and #arg == 2)", {"one", "-x"}),
      "");
}

TEST_F(ScriptTest, AFileIsRunWithItsName) {
  const std::string path = (std::filesystem::temp_directory_path() / "script_test.lua").string();
  std::ofstream(path) << "#!/usr/bin/env zvk run\nassert(arg[0]:match('script_test.lua$'))\nerror('here')\n";
  try {
    Script().RunFile(path, {});
    FAIL();
  } catch (const ScriptError &error) {
    EXPECT_THAT(error.what(), HasSubstr("script_test.lua:3: here"));
  }
  std::filesystem::remove(path);
}

TEST_F(ScriptTest, AScriptThatCannotBeReadSaysWhere) {
  EXPECT_THAT(Run("x = = 1"), StartsWith("(command line):1:"));
  EXPECT_THROW(Script().RunFile("/no/such/file.lua", {}), ScriptError);
}

TEST_F(ScriptTest, AProgramIsCheckedWithoutBeingRun) {
  const std::string path = (std::filesystem::temp_directory_path() / "checked_script_test.lua").string();
  const auto errorOf = [&](const std::string &text) -> std::string {
    std::ofstream(path) << text;
    try {
      CheckScript(path);
    } catch (const ScriptError &error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(errorOf("#!/usr/bin/env zvk run\nerror('it was run')"), "");
  EXPECT_THAT(errorOf("\nprint("), HasSubstr("checked_script_test.lua:2: unexpected symbol near <eof>"));
  std::filesystem::remove(path);
  EXPECT_THROW(CheckScript(path), ScriptError);
}

TEST_F(ScriptTest, ErrorsOfAnyTypeBecomeText) {
  EXPECT_EQ(Run("error('plain', 0)"), "plain");
  EXPECT_EQ(Run("error(nil)"), "nil");
  EXPECT_THAT(Run("error({})"), StartsWith("table: "));
  EXPECT_EQ(Run("error(setmetatable({}, {__tostring = function() return 'told' end}))"), "told");
}

TEST_F(ScriptTest, ConstructorsPropertiesConstantsAndMethodsAreTheClasses) {
  EXPECT_EQ(Run(R"(
      local image = PictureZVK(64, 48, PictureZVK.ImageFormatRGB)
      assert(image.Width == 64 and image.Height == 48 and image.Valid == true)
      assert(image.ImageFormatString == "RGB")
      image.YieldTicks = 2
      assert(image.YieldTicks == 2 and image.yieldticks == 2)
      assert(PictureZVK.ImageFormatRGB == 1 and image.ImageFormatRGB == 1)
      assert(PictureZVK.CalculateMemory(60000, 60000, PictureZVK.ImageFormatRGB) == 60000 * 180032)
      assert(math.type(PictureZVK.CalculateMemory(60000, 60000, 1)) == "integer")
      assert(image.Parent == nil)
      local clip = image:ClipImage(2, 3, 10, 11)
      assert(clip.Width == 10 and clip.Parent == image)
      assert(image:Channel(1).Parent == image)
      assert(tostring(image):match("^PictureZVK: ") and tostring(PictureZVK) == "class PictureZVK")
  )"),
            "");
}

TEST_F(ScriptTest, OptionalArgumentsMayBeLeftOut) {
  EXPECT_EQ(Run(R"(
      local picture = Picture(3, 2)
      assert(PictureZVK(picture).Width == 3)
      assert(PictureZVK(picture, false).Height == 2)
  )"),
            "");
}

TEST_F(ScriptTest, AMethodIsAssignedToBySetBeforeItsName) {
  EXPECT_EQ(Run(R"(
      local image = PictureZVK(4, 2, PictureZVK.ImageFormatG)
      local row = MemoryBlock(image.RowSize)
      for i = 0, 3 do row:SetByte(i, 10 * i) end
      image:SetRow(1, row)
      assert(image:Row(1):Byte(3) == 30 and image:Row(0):Byte(3) == 0)
      image:SetRowStringInFormat(0, PictureZVK.ImageFormatG, "abcd")
      assert(image:RowStringInFormat(0, PictureZVK.ImageFormatG) == "abcd")
      assert(#image:DataStringInFormat(PictureZVK.ImageFormatG) == 8)
  )"),
            "");
}

TEST_F(ScriptTest, AReadOnlyPropertySaysSo) {
  EXPECT_EQ(Run("local image = PictureZVK(4, 2, 1)\nimage.Width = 5"),
            "(command line):2: PictureZVK.Width is read-only");
}

TEST_F(ScriptTest, ACallThatFitsNoneListsTheDeclarationsThatThereAre) {
  EXPECT_EQ(Run("PictureZVK(4, 2, 1):ClipImage(1, 'x')"),
            "(command line):1: PictureZVK.ClipImage does not take (Integer, String); there are\n"
            "  ClipImage as PictureZVK\n"
            "  ClipImage(x as integer, y as integer, width as integer, height as integer) as PictureZVK");
}

TEST_F(ScriptTest, WhatThereIsNotIsSaid) {
  EXPECT_THAT(Run("PictureZVK(4, 2, 1):Sclae()"), HasSubstr("PictureZVK has no property or method \"Sclae\""));
  EXPECT_THAT(Run("print(PictureZVK.ImageFormatRBG)"), HasSubstr("no constant or shared method \"ImageFormatRBG\""));
  EXPECT_THAT(Run("PictureZVK(4, 2, 1):Constructor(9, 9, 1)"), HasSubstr("an object is constructed once"));
  EXPECT_THAT(Run("PictureZVK.Other = 1"), HasSubstr("nothing can be assigned to the class PictureZVK"));
  EXPECT_THAT(Run("local image = PictureZVK(4, 2, 1) image.Row(1)"), HasSubstr("call Row with a colon"));
  EXPECT_THAT(Run("local image = PictureZVK(4, 2, 1) image:SetRow()"), HasSubstr("there is no value to assign to Row"));
  EXPECT_THAT(Run("local image = PictureZVK(4, 2, 1) print(image[1])"), HasSubstr("a member has a name, not a number"));
  EXPECT_THAT(Run("PictureZVK(print)"), HasSubstr("a function of the script is no value of the host language"));
}

TEST_F(ScriptTest, NumbersAreConvertedWhereNothingIsLost) {
  EXPECT_EQ(Run("assert(PictureZVK(4.0, 2, 1).Width == 4)"), "");
  EXPECT_THAT(Run("PictureZVK(4.5, 2, 1)"), HasSubstr("does not take (Double, Integer, Integer)"));
  EXPECT_THAT(Run("PictureZVK(1 << 40, 2, 1)"), HasSubstr("does not take (Int64, Integer, Integer)"));
}

TEST_F(ScriptTest, AnExceptionOfTheHostIsAnErrorWithClassMessageAndPlace) {
  EXPECT_EQ(Run(R"(
      local image = PictureZVK(4, 2, 1)
      local works, error = pcall(function()
        return image:Row(2)
      end)
      assert(not works)
      assert(error.Class == "OutOfBoundsException")
      assert(error.Message == "Parameter index to method Row is too big. Range is 0 to 1, but value is 2.", error.Message)
      assert(error.ErrorNumber == 0)
      assert(tostring(error) == "(command line):4: OutOfBoundsException: " .. error.Message, tostring(error))
      assert(image.Valid)
  )"),
            "");
  EXPECT_THAT(Run("\nPictureZVK(4, 2, 1):Row(-1)"), StartsWith("(command line):2: OutOfBoundsException: Parameter"));
}

TEST_F(ScriptTest, ASubclassIsATableOfHandlers) {
  EXPECT_EQ(Run(R"(
      local made = {}
      local image = PictureZVK(8, 6, PictureZVK.ImageFormatRGB)
      image.Factory = PictureFactoryZVK{
        NewPictureZVK = function(self, width, height, format)
          made[#made + 1] = width .. "x" .. height .. " " .. format
          assert(self == image.Factory)
          return PictureZVK(width + 1, height, format)
        end
      }
      assert(image:CreatePictureZVK(5, 4, PictureZVK.ImageFormatG).Width == 6)
      assert(#made == 1 and made[1] == "5x4 11")
      PictureFactoryZVK.SetFactory(image.Factory)
      assert(PictureZVK.CreatePictureZVK(2, 2, 1).Width == 3)
      PictureFactoryZVK.SetFactory(nil)
      image.Factory = nil
      assert(image:CreatePictureZVK(5, 4, 1).Width == 5)
  )"),
            "");
}

TEST_F(ScriptTest, AnErrorOfAHandlerComesOutOfTheCallThatLedToIt) {
  EXPECT_EQ(Run(R"(
      local image = PictureZVK(8, 6, 1)
      local thrown = {}
      image.Factory = PictureFactoryZVK{NewPictureZVK = function() error(thrown) end}
      local works, error = pcall(image.CreatePictureZVK, image, 5, 4, 1)
      assert(not works and error == thrown)
      image.Factory = PictureFactoryZVK{NewPictureZVK = function() return 7 end}
      works, error = pcall(image.CreatePictureZVK, image, 5, 4, 1)
      assert(not works and tostring(error):match("gave Integer, not PictureZVK"), error)
      image.Factory = PictureFactoryZVK{NewPictureZVK = function() return nil end}
      assert(image:CreatePictureZVK(5, 4, 1).Width == 5)
  )"),
            "");
  EXPECT_THAT(Run("PictureFactoryZVK{NewPictrue = function() end}"), HasSubstr("no event \"NewPictrue\""));
  EXPECT_THAT(Run("PictureFactoryZVK{NewPictureZVK = 3}"), HasSubstr("is a number, not a function"));
}

TEST_F(ScriptTest, AHandlerThatOutlivesItsScriptFailsAndDoesNotCrash) {
  EXPECT_EQ(Run(R"(PictureFactoryZVK.SetFactory(PictureFactoryZVK{NewPictureZVK = function() end}))"), "");
  try {
    ClassNamed("PictureZVK").Call("CreatePictureZVK", {2, 2, 1});
    FAIL();
  } catch (const BindingError &error) {
    EXPECT_STREQ(error.what(), "the script with the handler of this event has ended");
  }
}

TEST_F(ScriptTest, HandlersRunInCoroutinesToo) {
  EXPECT_EQ(Run(R"(
      local image = PictureZVK(8, 6, 1)
      image.Factory = PictureFactoryZVK{NewPictureZVK = function(_, w, h, f) return PictureZVK(w * 2, h, f) end}
      local width = coroutine.wrap(function()
        coroutine.yield(image:CreatePictureZVK(5, 4, 1).Width)
      end)()
      assert(width == 10)
  )"),
            "");
}

TEST_F(ScriptTest, ObjectsKnownAlreadyAreTheSame) {
  EXPECT_EQ(Run(R"(
      local image = PictureZVK(8, 6, 1)
      local clip = image:ClipImage(0, 0, 2, 2)
      assert(rawequal(clip.Parent, image))
      local marks = {[image] = "here"}
      assert(marks[clip.Parent] == "here")
      assert(image ~= clip)
  )"),
            "");
}

TEST_F(ScriptTest, ClosedObjectsAreGivenBackAtOnce) {
  EXPECT_EQ(Run(R"(
      local image = PictureZVK(8, 6, 1)
      image:Close()
      assert(image:ClipImage(0, 0, 1, 1) == nil)
      local block = MemoryBlock(4)
      block:Close()
      local works, error = pcall(function() return block.Size end)
      assert(not works and tostring(error):match("this object has been closed"), error)
      assert(tostring(block) == "closed object")
      local kept
      do
        local scoped <close> = PictureZVK(3, 3, 1)
        kept = scoped
      end
      assert(not pcall(function() return kept.Width end))
  )"),
            "");
}

// The plug-in's second run of an image's end closes the descriptor 0.
TEST_F(ScriptTest, ImagesInFilesAreSafeFromThoseThatAreClosedTwice) {
  EXPECT_EQ(Run(R"(
      local function inFile() return PictureZVK(4, 3, PictureZVK.ImageFormatG, 0, nil) end
      local one, other = inFile(), inFile()
      one:Close()
      one:Close()
      other:Close()
      local live = inFile()
      live:FillRect(200)
      one, other = nil, nil
      collectgarbage()
      assert(live:RowStringInFormat(2, PictureZVK.ImageFormatG) == ("\200"):rep(4))
      live:FillRect(100)
      assert(live:RowStringInFormat(2, PictureZVK.ImageFormatG) == ("\100"):rep(4))
  )"),
            "");
}

TEST_F(ScriptTest, GarbageIsCollectedBeforeItFillsTheMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer's allocator does not tell mallinfo2 how much memory is in use";
#endif
  EXPECT_EQ(Run(R"(
      local count = 0
      for i = 1, 400 do
        local image = PictureZVK(2000, 1000, PictureZVK.ImageFormatRGB)
        setmetatable({image}, {__gc = function() count = count + 1 end})
      end
      assert(count > 350, count)
  )"),
            "");
}

TEST_F(ScriptTest, ColoursAreATypeOfTheirOwn) {
  EXPECT_EQ(Run(R"(
      local orange = Color(255, 128, 0)
      assert(orange == Color"#FF8000" and orange.Red == 255 and orange.Green == 128 and orange.Blue == 0)
      assert(tostring(orange) == "#ff8000" and orange ~= Color"#ff8001")
      assert(not pcall(Color, 256, 0, 0) and not pcall(Color, -1, 0, 0))
      assert(not pcall(Color, "#ff80") and not pcall(Color, "ff8000") and not pcall(Color, "#ff8000x"))
      assert(not pcall(function() return orange.Alpha end))
  )"),
            "");
}

TEST_F(ScriptTest, StringsCarryAnyBytesAndAnEncoding) {
  EXPECT_EQ(Run(R"(
      local image = PictureZVK(3, 1, PictureZVK.ImageFormatG)
      image:SetRowStringInFormat(0, PictureZVK.ImageFormatG, "\0\xff\x80")
      local row = image:RowStringInFormat(0, PictureZVK.ImageFormatG)
      assert(row == "\0\xff\x80" and LenB(row) == 3)
      local wide = ConvertEncoding("aé", Encodings.UTF16)
      assert(Encoding(wide) == Encodings.UTF16 and tostring(wide) == "a\0\xe9\0")
      assert(ConvertEncoding(wide, Encodings.UTF8) == DefineEncoding("aé", Encodings.UTF8))
      assert(Encoding("text") == Encodings.UTF8)
      assert(DefineEncoding("ab", Encodings.UTF16) ~= DefineEncoding("ab", Encodings.Binary))
      assert(not pcall(DefineEncoding, "ab", 12345))
  )"),
            "");
}

TEST_F(ScriptTest, AListOfIntegersIsAnArray) {
  EXPECT_THAT(Run("PictureZVK({1, 2})"), HasSubstr("does not take (Integer())"));
  EXPECT_THAT(Run("PictureZVK({1, 'x'})"), HasSubstr("entry 2 of an array is no integer of 32 bits"));
  EXPECT_THAT(Run("PictureZVK({1, 2.5})"), HasSubstr("entry 2 of an array"));
  EXPECT_THAT(Run("PictureZVK({1 << 31})"), HasSubstr("entry 1 of an array"));
  EXPECT_THAT(Run("PictureZVK({x = 1})"), HasSubstr("an array is a list of integers"));
}

}  // namespace
}  // namespace standalone
