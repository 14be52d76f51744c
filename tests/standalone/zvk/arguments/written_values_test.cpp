#include "standalone/zvk/arguments/written_values.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "standalone/runtime/host.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

// Integer arrays are objects of a host.
class WrittenValues : public testing::Test {
 protected:
  static Parameter ParameterOf(const std::string &declaration) {
    return ParseMethod("F(" + declaration + ")").parameters[0];
  }
  Value Read(const std::string &declaration, const std::string &text) const {
    return ReadValue(ParameterOf(declaration), text, constants_);
  }
  std::string Error(const std::string &declaration, const std::string &text) const {
    try {
      Read(declaration, text);
    } catch (const UsageError &error) {
      return error.what();
    }
    return "no error";
  }

  const Host host_;
  const std::vector<ConstantDeclaration> constants_ = {
      ParseConstant("DitherLines = 4"), ParseConstant("DitherDots = 5"), ParseConstant("Half = 0.5"),
      ParseConstant("Big = &hFFFFFFFF"), ParseConstant("Title = \"zvk\"")};
};

TEST_F(WrittenValues, AreOfTheKindThatIsAskedFor) {
  EXPECT_EQ(Read("a as integer", "-12").GetKind(), Value::Kind::Integer);
  EXPECT_EQ(Read("a as integer", "-12").AsInteger(), -12);
  EXPECT_EQ(Read("a as integer", "3.0").GetKind(), Value::Kind::Integer);
  EXPECT_EQ(Read("a as integer", "&h10").AsInteger(), 16);
  EXPECT_EQ(Read("a as int64", "12").GetKind(), Value::Kind::Int64);
  EXPECT_EQ(Read("a as int64", "9000000000").AsInt64(), 9000000000);
  EXPECT_EQ(Read("a as double", "2").GetKind(), Value::Kind::Double);
  EXPECT_EQ(Read("a as double", "2").AsDouble(), 2.0);
  EXPECT_EQ(Read("a as double", "-1.5e1").AsDouble(), -15.0);
  EXPECT_EQ(Read("a as boolean", "False").AsBoolean(), false);
  EXPECT_EQ(Read("a as boolean", "true").AsBoolean(), true);
  EXPECT_EQ(Read("a as string", "12, \"so\"").AsText(), "12, \"so\"");
  EXPECT_EQ(Read("a as color", "#FF8001").AsColor(), Color{0xFF8001});
  EXPECT_EQ(Read("a as color", "#ff8001").AsColor(), Color{0xFF8001});
}

TEST_F(WrittenValues, TakeConstantsByTheirNamesInAnyCase) {
  EXPECT_EQ(Read("a as integer", "DitherLines").AsInteger(), 4);
  EXPECT_EQ(Read("a as integer", "ditherDOTS").AsInteger(), 5);
  EXPECT_EQ(Read("a as double", "ditherdots").AsDouble(), 5.0);
  EXPECT_EQ(Read("a as double", "half").AsDouble(), 0.5);
  EXPECT_EQ(Read("a as int64", "Big").AsInt64(), 4294967295);
  EXPECT_EQ(Read("a() as integer", "1,DitherLines").AsIntegers(), (std::vector<int32_t>{1, 4}));
}

TEST_F(WrittenValues, AreArraysWithCommasBetweenTheElements) {
  EXPECT_EQ(Read("a() as integer", "0,-1,0,255").AsIntegers(), (std::vector<int32_t>{0, -1, 0, 255}));
  EXPECT_EQ(Read("a() as integer", "1, 2").AsIntegers(), (std::vector<int32_t>{1, 2}));
  EXPECT_EQ(Read("a() as integer", "7").AsIntegers(), (std::vector<int32_t>{7}));
  EXPECT_EQ(Read("a() as integer", "").AsIntegers(), (std::vector<int32_t>{}));
}

TEST_F(WrittenValues, AreRefusedByTheNameOfTheParameterWithTheWayToWriteThem) {
  EXPECT_EQ(Error("levels as integer", "many"),
            "levels: 'many' is not understood; write a whole number of 32 bits or the name of a constant");
  EXPECT_EQ(Error("gamma as double", "1,8"), "gamma: '1,8' is not understood; write a number, such as 2 or 0.75");
  EXPECT_EQ(Error("Vertical as boolean", "1"), "Vertical: '1' is not understood; write true or false");
  EXPECT_EQ(Error("Black as color", "FF8000"),
            "Black: 'FF8000' is not understood; write a colour as #RRGGBB, such as #FF8000");
  // Of an array the element is told.
  EXPECT_EQ(Error("matrix() as integer", "1,x,3"),
            "matrix: 'x' is not understood; write a whole number of 32 bits or the name of a constant");
}

TEST_F(WrittenValues, AreRefusedWhereTheyAreOfAnotherKindOrOutOfRange) {
  for (const char *text : {"", "1.5", "2147483648", "-2147483649", "99999999999999999999", "true", "nil", "\"1\"",
                           "Half", "Big", "Title", "1x", "1 2"}) {
    EXPECT_NE(Error("a as integer", text), "no error") << text;
  }
  for (const char *text : {"", "1.5", "9223372036854775808"}) EXPECT_NE(Error("a as int64", text), "no error") << text;
  for (const char *text : {"", "nan", "inf", "1e999", "one", "Title"}) {
    EXPECT_NE(Error("a as double", text), "no error") << text;
  }
  for (const char *text : {"", "yes", "0"}) EXPECT_NE(Error("a as boolean", text), "no error") << text;
  for (const char *text : {"", "#", "#FFF", "#FF80000", "#GG8000", "#-08000", "&cFF8000"}) {
    EXPECT_NE(Error("a as color", text), "no error") << text;
  }
  for (const char *text : {",", "1,", ",1", "1,,2"}) EXPECT_NE(Error("a() as integer", text), "no error") << text;
}

TEST_F(WrittenValues, TellWhichConstantsBeginWithWhatIsWritten) {
  EXPECT_EQ(Error("matrix as integer", "dither"),
            "matrix: 'dither' is not understood; write a whole number of 32 bits or the name of a constant, such as "
            "DitherLines, DitherDots");
}

TEST_F(WrittenValues, HaveAPlaceholder) {
  EXPECT_EQ(Placeholder(ParseType("integer")), "INTEGER");
  EXPECT_EQ(Placeholder(ParseType("int64")), "INTEGER");
  EXPECT_EQ(Placeholder(ParseType("double")), "NUMBER");
  EXPECT_EQ(Placeholder(ParseType("boolean")), "BOOLEAN");
  EXPECT_EQ(Placeholder(ParseType("color")), "#RRGGBB");
  EXPECT_EQ(Placeholder(ParseType("string")), "TEXT");
  EXPECT_EQ(Placeholder(ParseType("PictureZVK")), "FILE");
  EXPECT_EQ(Placeholder(ParameterOf("a() as integer").type), "INTEGER,INTEGER,...");
}

TEST_F(WrittenValues, OfDefaultsAreWhatReadsAsTheSame) {
  for (const char *text : {"true", "false", "12", "-3", "0.1", "1e+30"}) {
    EXPECT_EQ(Written(ParseLiteral(text)), text);
  }
  EXPECT_EQ(Written(ParseLiteral("&c00FF80")), "#00FF80");
  EXPECT_EQ(Written(ParseLiteral("\"so\"")), "so");
  EXPECT_EQ(Written(ParseLiteral("nil")), "FILE");
}

TEST_F(WrittenValues, AreNotOfObjectsNorOfArraysOfThem) {
  for (const char *declaration :
       {"a as integer", "a as int64", "a as double", "a as boolean", "a as color", "a as string", "a() as integer"}) {
    EXPECT_TRUE(IsWritable(ParameterOf(declaration).type)) << declaration;
  }
  for (const char *declaration : {"a as PictureZVK", "a as memoryblock", "a() as double", "a() as picture"}) {
    EXPECT_FALSE(IsWritable(ParameterOf(declaration).type)) << declaration;
  }
  EXPECT_FALSE(IsWritable(ParseMethod("F").result));
}

}  // namespace
}  // namespace standalone
