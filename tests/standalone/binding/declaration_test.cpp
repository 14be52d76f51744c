#include "standalone/binding/declaration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <variant>

namespace standalone {
namespace {

using testing::HasSubstr;

std::string MethodError(const char *text) {
  try {
    ParseMethod(text);
  } catch (const DeclarationError &error) {
    return error.what();
  }
  return "no error";
}

std::string ConstantError(const char *text) {
  try {
    ParseConstant(text);
  } catch (const DeclarationError &error) {
    return error.what();
  }
  return "no error";
}

TEST(MethodDeclaration, BareNameHasNeitherArgumentsNorResult) {
  const MethodDeclaration method = ParseMethod("Close");
  EXPECT_EQ(method.name, "Close");
  EXPECT_TRUE(method.parameters.empty());
  EXPECT_EQ(method.result.kind, TypeKind::None);
}

TEST(MethodDeclaration, NameWithResultNeedsNoParentheses) {
  const MethodDeclaration method = ParseMethod("RedChannel as PictureZVK");
  EXPECT_EQ(method.name, "RedChannel");
  EXPECT_EQ(method.result.kind, TypeKind::Object);
  EXPECT_EQ(method.result.className, "PictureZVK");
}

TEST(MethodDeclaration, EmptyParenthesesAreNoArguments) {
  const MethodDeclaration method = ParseMethod("Clone() as PictureZVK");
  EXPECT_TRUE(method.parameters.empty());
  EXPECT_EQ(method.result.className, "PictureZVK");
}

TEST(MethodDeclaration, ReadsEveryTypeInAnyCase) {
  const MethodDeclaration method = ParseMethod(
      "All(a as INTEGER, b as int64, c as Double, d as boolean, e As Color, f AS string, g as picture, h as "
      "memoryblock, i as FolderItem, j as variant, k() as integer) as Int64");
  ASSERT_EQ(method.parameters.size(), 11u);
  const TypeKind kinds[] = {TypeKind::Integer, TypeKind::Int64,  TypeKind::Double, TypeKind::Boolean,
                            TypeKind::Color,   TypeKind::String, TypeKind::Object, TypeKind::Object,
                            TypeKind::Object,  TypeKind::Object, TypeKind::Integer};
  for (size_t i = 0; i < 11; ++i) {
    EXPECT_EQ(method.parameters[i].type.kind, kinds[i]) << i;
    EXPECT_EQ(method.parameters[i].type.isArray, i == 10) << i;
    EXPECT_EQ(method.parameters[i].name, std::string(1, static_cast<char>('a' + i)));
    EXPECT_FALSE(method.parameters[i].defaultValue.has_value());
  }
  EXPECT_EQ(method.parameters[8].type.className, "FolderItem");
  EXPECT_EQ(method.result.kind, TypeKind::Int64);
}

TEST(MethodDeclaration, ReadsDefaultsOfEveryKind) {
  const MethodDeclaration method = ParseMethod(
      "M(a as picture=nil, b as boolean=False, c as boolean = TRUE, d as integer=-10000, e as double = 1.5e2, f as "
      "string = \"say \"\"x\"\"\", g as color = &cFF8000, h as integer = &h0000000B, i as integer=&b101, j as "
      "integer=&o17, k as double = -.5)");
  ASSERT_EQ(method.parameters.size(), 11u);
  const auto literal = [&](size_t index) { return method.parameters[index].defaultValue.value(); };
  EXPECT_TRUE(std::holds_alternative<std::monostate>(literal(0)));
  EXPECT_FALSE(std::get<bool>(literal(1)));
  EXPECT_TRUE(std::get<bool>(literal(2)));
  EXPECT_EQ(std::get<int64_t>(literal(3)), -10000);
  EXPECT_EQ(std::get<double>(literal(4)), 150.0);
  EXPECT_EQ(std::get<std::string>(literal(5)), "say \"x\"");
  EXPECT_EQ(std::get<Color>(literal(6)).rgb, 0xFF8000u);
  EXPECT_EQ(std::get<int64_t>(literal(7)), 11);
  EXPECT_EQ(std::get<int64_t>(literal(8)), 5);
  EXPECT_EQ(std::get<int64_t>(literal(9)), 15);
  EXPECT_EQ(std::get<double>(literal(10)), -0.5);
}

TEST(MethodDeclaration, TakesSpacesAnywhere) {
  const MethodDeclaration method = ParseMethod("  LenB ( s  as\tstring ) as integer ");
  EXPECT_EQ(method.name, "LenB");
  ASSERT_EQ(method.parameters.size(), 1u);
  EXPECT_EQ(method.parameters[0].name, "s");
  EXPECT_EQ(method.result.kind, TypeKind::Integer);
}

TEST(MethodDeclaration, ReadsDottedClassNames) {
  EXPECT_EQ(ParseMethod("Make as Runtime . Item").result.className, "Runtime.Item");
}

TEST(MethodDeclaration, ErrorsNameWhatWasExpectedAndWhere) {
  EXPECT_EQ(MethodError(""), "expected the name of a method at column 1 of \"\"");
  EXPECT_EQ(MethodError("F(a integer)"), "expected \"as\" and a type at column 5 of \"F(a integer)\"");
  EXPECT_EQ(MethodError("F(a as integer"), "expected ')' at column 15 of \"F(a as integer\"");
  EXPECT_EQ(MethodError("F(a as )"), "expected a type at column 8 of \"F(a as )\"");
  EXPECT_EQ(MethodError("F() as"), "expected a type at column 7 of \"F() as\"");
  EXPECT_EQ(MethodError("F(,)"), "expected the name of an argument at column 3 of \"F(,)\"");
  EXPECT_EQ(MethodError("F() integer"), "expected the end at column 5 of \"F() integer\"");
  EXPECT_EQ(MethodError("F(a( as integer)"), "expected ')' at column 6 of \"F(a( as integer)\"");
  EXPECT_THAT(MethodError("F(a as integer = )"), HasSubstr("expected a value"));
  EXPECT_THAT(MethodError("F(a as integer = &x1)"), HasSubstr("expected a literal"));
  EXPECT_THAT(MethodError("F(a as color = &c1000000)"), HasSubstr("digits in range"));
  EXPECT_THAT(MethodError("F(a as string = \"open)"), HasSubstr("expected a closing quote"));
  EXPECT_THAT(MethodError("F(a as integer = 99999999999999999999)"), HasSubstr("expected an integer of 64 bits"));
  EXPECT_THAT(MethodError("F(a as integer = 1, b as integer)"), HasSubstr("the argument before has a default"));
  EXPECT_THAT(MethodError("F(as as integer)"), HasSubstr("expected the name of an argument"));
}

TEST(ConstantDeclaration, ReadsDecimalAndHexadecimal) {
  EXPECT_EQ(ParseConstant("ScaleCubic = 7").name, "ScaleCubic");
  EXPECT_EQ(std::get<int64_t>(ParseConstant("ScaleCubic = 7").value), 7);
  EXPECT_EQ(std::get<int64_t>(ParseConstant("ImageFormatG = &h0000000B").value), 11);
  EXPECT_EQ(std::get<int64_t>(ParseConstant("Wide=&hFFFFFFFF").value), 4294967295);
  EXPECT_EQ(std::get<std::string>(ParseConstant("Title as String = \"zvk\"").value), "zvk");
  EXPECT_EQ(std::get<double>(ParseConstant("Half as double = 0.5").value), 0.5);
}

TEST(ConstantDeclaration, RefusesANameWithoutAValue) {
  EXPECT_EQ(ConstantError("ScaleCubic"), "expected '=' at column 11 of \"ScaleCubic\"");
  EXPECT_EQ(ConstantError("ScaleCubic = "), "expected a value at column 14 of \"ScaleCubic = \"");
  EXPECT_EQ(ConstantError("= 7"), "expected the name of a constant at column 1 of \"= 7\"");
  EXPECT_EQ(ConstantError("A = 7 8"), "expected the end at column 7 of \"A = 7 8\"");
}

TEST(LiteralText, IsReadAsDeclarationsWriteIt) {
  EXPECT_EQ(std::get<int64_t>(ParseLiteral(" -12 ")), -12);
  EXPECT_EQ(std::get<double>(ParseLiteral("-.5")), -0.5);
  EXPECT_EQ(std::get<bool>(ParseLiteral("TRUE")), true);
  EXPECT_EQ(std::get<Color>(ParseLiteral("&cFF8000")), Color{0xFF8000});
  EXPECT_EQ(std::get<std::string>(ParseLiteral("\"a \"\"b\"\"\"")), "a \"b\"");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(ParseLiteral("nil")));
}

TEST(LiteralText, RefusesWhatIsNoneOrMoreThanOne) {
  for (const char *text : {"", "abc", "1 2", "1,2", "0.5x", "--1", "nils", "inf"}) {
    EXPECT_THROW(ParseLiteral(text), DeclarationError) << text;
  }
}

TEST(TypeText, IsTheNameInTheHostLanguage) {
  EXPECT_EQ(ParseType("integer").Text(), "Integer");
  EXPECT_EQ(ParseType("int32").Text(), "Integer");
  EXPECT_EQ(ParseType("INT64").Text(), "Int64");
  EXPECT_EQ(ParseType("colour").Text(), "Color");
  EXPECT_EQ(ParseType("Memoryblock").Text(), "Memoryblock");
  EXPECT_EQ(ParseMethod("F(a() as integer)").parameters[0].type.Text(), "Integer()");
  EXPECT_EQ(ParseMethod("F").result.Text(), "");
}

TEST(TypeText, RefusesMoreThanOneType) {
  EXPECT_THROW(ParseType("integer integer"), DeclarationError);
  EXPECT_THROW(ParseType(""), DeclarationError);
}

}  // namespace
}  // namespace standalone
