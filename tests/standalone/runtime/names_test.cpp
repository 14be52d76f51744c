#include "standalone/runtime/names.h"

#include <gtest/gtest.h>

#include <map>

namespace standalone {
namespace {

TEST(NamesEqual, IgnoresTheCaseOfLettersAndNothingElse) {
  EXPECT_TRUE(NamesEqual("Width", "wIDTH"));
  EXPECT_TRUE(NamesEqual("", ""));
  EXPECT_FALSE(NamesEqual("Width", "Widt"));
  EXPECT_FALSE(NamesEqual("Width", "Width "));
  EXPECT_FALSE(NamesEqual("[", "{"));  // 32 apart, as letters of two cases are
}

TEST(NameOrder, MakesOneKeyOfNamesThatAreEqual) {
  std::map<std::string, int, NameOrder> map;
  map["Sample"] = 1;
  map["SAMPLE"] = 2;
  map["Samples"] = 3;
  EXPECT_EQ(map.size(), 2u);
  EXPECT_EQ(map["sample"], 2);
}

TEST(DeclarationsEqual, IgnoresSpacesAndCase) {
  EXPECT_TRUE(DeclarationsEqual("LenB( s as string ) as integer", "lenb(S As String) As Integer"));
  EXPECT_FALSE(DeclarationsEqual("LenB(s as string) as integer", "LenB(t as string) as integer"));
}

TEST(DeclaredName, IsWhatStandsBeforeTheFirstSpaceBracketOrEqualsSign) {
  EXPECT_EQ(DeclaredName("Asked(a as integer) as Sample"), "Asked");
  EXPECT_EQ(DeclaredName("One = 1"), "One");
  EXPECT_EQ(DeclaredName("One=1"), "One");
  EXPECT_EQ(DeclaredName("  CopyMask as picture"), "CopyMask");
  EXPECT_EQ(DeclaredName("Closed"), "Closed");
  EXPECT_EQ(DeclaredName("  "), "");
}

}  // namespace
}  // namespace standalone
