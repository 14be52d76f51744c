#include "standalone/zvk/arguments/numbers.h"

#include <gtest/gtest.h>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

TEST(ReadNumber, TakesWholeNumbersOfTheType) {
  EXPECT_EQ(ReadNumber<int32_t>("0"), 0);
  EXPECT_EQ(ReadNumber<int32_t>("007"), 7);
  EXPECT_EQ(ReadNumber<int32_t>("-2147483648"), -2147483647 - 1);
  EXPECT_EQ(ReadNumber<int32_t>("2147483648"), std::nullopt);
  EXPECT_EQ(ReadNumber<uint32_t>("4294967295"), 4294967295u);
  EXPECT_EQ(ReadNumber<uint32_t>("-1"), std::nullopt);
}

TEST(ReadNumber, TakesFractionsForANumberThatMayHaveThem) {
  EXPECT_EQ(ReadNumber<double>("-12.5"), -12.5);
  EXPECT_EQ(ReadNumber<double>("1e3"), 1000);
  EXPECT_EQ(ReadNumber<double>("0,5"), std::nullopt);
  EXPECT_EQ(ReadNumber<int32_t>("12.5"), std::nullopt);
}

TEST(ReadNumber, TakesAnotherBase) {
  EXPECT_EQ(ReadNumber<uint32_t>("fF8000", 16), 0xFF8000u);
  EXPECT_EQ(ReadNumber<uint32_t>("0x10", 16), std::nullopt);
  EXPECT_EQ(ReadNumber<uint32_t>("FF"), std::nullopt);
}

TEST(ReadNumber, TakesTheWholeTextOrNothing) {
  for (const char *text : {"", " 1", "1 ", "+1", "1x", "-", "one"}) {
    EXPECT_EQ(ReadNumber<int32_t>(text), std::nullopt) << text;
    EXPECT_EQ(ReadNumber<double>(text), std::nullopt) << text;
  }
}

TEST(ParseNumber, TakesNumbersWithinTheBounds) {
  EXPECT_EQ(ParseNumber("0", "threads", "number", 0, 32), 0);
  EXPECT_EQ(ParseNumber("32", "threads", "number", 0, 32), 32);
}

TEST(ParseNumber, NamesWhatIsWantedOtherwise) {
  for (const std::string text : {"-1", "33", "", "4x", "99999999999"}) {
    try {
      ParseNumber(text, "threads", "number", 0, 32);
      ADD_FAILURE() << text;
    } catch (const UsageError &error) {
      EXPECT_EQ(error.what(), "threads '" + text + "' is not understood; write a number from 0 to 32");
    }
  }
}

}  // namespace
}  // namespace standalone
