#include "standalone/zvk/batch/output_pattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

std::string ErrorOf(const std::string &pattern) {
  try {
    FillOutputPattern(pattern, "a.png");
  } catch (const UsageError &error) {
    return error.what();
  }
  return "no error";
}

TEST(OutputPattern, TakesThePartsOfAPath) {
  EXPECT_EQ(FillOutputPattern("out/{name}.png", "photos/may/sea.jpg"), "out/sea.png");
  EXPECT_EQ(FillOutputPattern("out/{file}", "photos/may/sea.jpg"), "out/sea.jpg");
  EXPECT_EQ(FillOutputPattern("out/{name}-{extension}.png", "photos/may/sea.jpg"), "out/sea-jpg.png");
  EXPECT_EQ(FillOutputPattern("{folder}/small/{name}.{extension}", "photos/may/sea.jpg"), "photos/may/small/sea.jpg");
}

TEST(OutputPattern, TakesAPartAsOftenAsItIsNamed) {
  EXPECT_EQ(FillOutputPattern("{name}/{name}{name}", "a.png"), "a/aa");
}

TEST(OutputPattern, KnowsPathsThatLackParts) {
  EXPECT_EQ(FillOutputPattern("{folder}/{name}[{extension}]", "sea"), "./sea[]");
  EXPECT_EQ(FillOutputPattern("{folder}/{name}[{extension}]", "/sea.2.jpg"), "//sea.2[jpg]");
  EXPECT_EQ(FillOutputPattern("{name}[{extension}]", "photos.old/.hidden"), ".hidden[]");
}

TEST(OutputPattern, TakesEverythingElseAsItStands) {
  EXPECT_EQ(FillOutputPattern("", "a.png"), "");
  EXPECT_EQ(FillOutputPattern("out.png", "a.png"), "out.png");
  EXPECT_EQ(FillOutputPattern("a}b", "a.png"), "a}b");
  EXPECT_EQ(FillOutputPattern("{{name}", "a.png"), "{name}");
  EXPECT_EQ(FillOutputPattern("{{{name}}", "a.png"), "{a}");
  EXPECT_EQ(FillOutputPattern("{name}", "{file}.png"), "{file}");
}

TEST(OutputPattern, RefusesOtherWordsInBraces) {
  const std::string known = "; write {name}, {extension}, {file} or {folder}, and {{ for a brace";
  EXPECT_EQ(ErrorOf("out/{nam}.png"), "there is no {nam} for 'out/{nam}.png'" + known);
  EXPECT_EQ(ErrorOf("{}"), "there is no {} for '{}'" + known);
  EXPECT_EQ(ErrorOf("out/{name"), "there is no } after the { in 'out/{name'" + known);
}

}  // namespace
}  // namespace standalone
