#include "standalone/zvk/arguments/size_argument.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

std::string ParseError(const std::string &text) {
  try {
    ParseSize(text);
  } catch (const UsageError &error) {
    return error.what();
  }
  return "no error";
}

std::string CompleteError(const SizeArgument &wanted, Size source) {
  try {
    CompleteSize(wanted, source);
  } catch (const UsageError &) {
    return "a wrong command line";
  } catch (const std::runtime_error &error) {
    return error.what();
  }
  return "no error";
}

TEST(ParseSize, ReadsBothSidesOrOne) {
  EXPECT_EQ(ParseSize("640x480"), (SizeArgument{640, 480}));
  EXPECT_EQ(ParseSize("640x"), (SizeArgument{640, std::nullopt}));
  EXPECT_EQ(ParseSize("x480"), (SizeArgument{std::nullopt, 480}));
  EXPECT_EQ(ParseSize("1x1"), (SizeArgument{1, 1}));
  EXPECT_EQ(ParseSize("007x010"), (SizeArgument{7, 10}));
  EXPECT_EQ(ParseSize("2147483647x"), (SizeArgument{2147483647, std::nullopt}));
}

TEST(ParseSize, RefusesWhatIsNoSizeAndShowsTheForm) {
  for (const char *text : {"", "x", "640", "640x480x2", "640 x 480", "-640x480", "+640x480", "640x-1", "0x10x",
                           "640X480", "sixxten", "6.5x3", "640*480", "x480 ", "xx", "1ex5"}) {
    EXPECT_EQ(ParseError(text), "size '" + std::string(text) +
                                    "' is not understood; write WIDTHxHEIGHT, WIDTHx or xHEIGHT, as in 640x480");
  }
}

TEST(ParseSize, RefusesASideOfZero) {
  for (const char *text : {"0x480", "640x0", "0x", "x0", "000x5"}) {
    EXPECT_EQ(ParseError(text), "size '" + std::string(text) + "' has a side of 0; width and height start at 1");
  }
}

TEST(ParseSize, RefusesANumberBeyond32Bits) {
  for (const char *text : {"2147483648x", "x4294967297", "1x99999999999999999999999999"}) {
    EXPECT_EQ(ParseError(text),
              "size '" + std::string(text) + "' is too large; a picture has at most 32767 pixels each way");
  }
}

TEST(ParseSize, TellsTheLargestSideThatItIsGiven) {
  try {
    ParseSize("2147483648x", 100000000);
    FAIL();
  } catch (const UsageError &error) {
    EXPECT_STREQ(error.what(), "size '2147483648x' is too large; a picture has at most 100000000 pixels each way");
  }
}

TEST(CompleteSize, KeepsASizeThatIsWhole) { EXPECT_EQ(CompleteSize({30, 7}, {1, 1000}), (Size{30, 7})); }

TEST(CompleteSize, KeepsTheProportionsForAMissingSide) {
  EXPECT_EQ(CompleteSize({320, std::nullopt}, {640, 480}), (Size{320, 240}));
  EXPECT_EQ(CompleteSize({std::nullopt, 960}, {640, 480}), (Size{1280, 960}));
}

TEST(CompleteSize, RoundsAMissingSideToTheNearest) {
  EXPECT_EQ(CompleteSize({10, std::nullopt}, {100, 144}), (Size{10, 14}));
  EXPECT_EQ(CompleteSize({10, std::nullopt}, {100, 145}), (Size{10, 15}));
  EXPECT_EQ(CompleteSize({10, std::nullopt}, {100, 146}), (Size{10, 15}));
  EXPECT_EQ(CompleteSize({std::nullopt, 1}, {2, 3}), (Size{1, 1}));
}

TEST(CompleteSize, MakesAMissingSideOneAtLeast) {
  EXPECT_EQ(CompleteSize({1, std::nullopt}, {1000, 3}), (Size{1, 1}));
  EXPECT_EQ(CompleteSize({std::nullopt, 1}, {3, 1000}), (Size{1, 1}));
}

TEST(CompleteSize, GoesUpToTheLargestPicture) {
  EXPECT_EQ(CompleteSize({32767, 32767}, {1, 1}), (Size{32767, 32767}));
  EXPECT_EQ(CompleteSize({32767, std::nullopt}, {5, 5}), (Size{32767, 32767}));
}

TEST(CompleteSize, GoesUpToTheLargestSideThatItIsGiven) {
  EXPECT_EQ(CompleteSize({100000000, 32768}, {1, 1}, 100000000), (Size{100000000, 32768}));
  EXPECT_THROW(CompleteSize({100000001, 1}, {1, 1}, 100000000), std::runtime_error);
  EXPECT_THROW(CompleteSize({1, 11}, {1, 1}, 10), std::runtime_error);
}

TEST(CompleteSize, RefusesMoreThanAPictureCanHave) {
  const std::string end = " pixels is too large; a picture has at most 32767 pixels each way";
  EXPECT_EQ(CompleteError({32768, 1}, {10, 10}), "a result of 32768 x 1" + end);
  EXPECT_EQ(CompleteError({1, 32768}, {10, 10}), "a result of 1 x 32768" + end);
  EXPECT_EQ(CompleteError({2000, std::nullopt}, {10, 200}), "a result of 2000 x 40000" + end);
  EXPECT_EQ(CompleteError({2147483647, std::nullopt}, {1, 1}), "a result of 2147483647 x 2147483647" + end);
  EXPECT_EQ(CompleteError({std::nullopt, 2147483647}, {2147483647, 1}),
            "a result of 4611686014132420609 x 2147483647" + end);
}

}  // namespace
}  // namespace standalone
