#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr int kWidth = 9, kHeight = 7;            // of the base
constexpr int kImageWidth = 5, kImageHeight = 4;  // of the image and its mask

uint32_t Noise(int x, int y, uint32_t seed) {
  if (x == 0 && y == 0) return seed % 2 == 0 ? 0xFFFFFF : 0;
  return (static_cast<uint32_t>(x * 7919 + y * 104729) + seed * 12345) * 2654435761u >> 8;
}
uint32_t Base(int x, int y) { return Noise(x, y, 1); }
uint32_t Image(int x, int y) { return Noise(x, y, 2); }
uint32_t Mask(int x, int y) { return Noise(x, y, 4); }
uint32_t AlphaOf(int x, int y) { return static_cast<uint32_t>(x * 61 + y * 13) & 255; }
uint32_t ClearBase(int x, int y) { return Base(x, y) << 8 | AlphaOf(y, x); }
uint32_t ClearImage(int x, int y) { return Image(x, y) << 8 | AlphaOf(x, y); }
uint32_t ClearMask(int x, int y) { return Mask(x, y) << 8 | AlphaOf(x + 3, y); }

// A colour from three, channel by channel.
uint32_t EachChannel(uint32_t a, uint32_t b, uint32_t c,
                     const std::function<uint32_t(uint32_t a, uint32_t b, uint32_t c)> &rule) {
  uint32_t result = 0;
  for (const int shift : {16, 8, 0})
    result |= (rule(a >> shift & 255, b >> shift & 255, c >> shift & 255) & 255) << shift;
  return result;
}

uint32_t Interpolated(uint32_t drawn, uint32_t old, uint32_t mask) { return ((255 - mask) * drawn + old * mask) / 255; }

class CombineCommand : public ZvkProgram {
 protected:
  CombineCommand() {
    WriteImage("base.png", kWidth, kHeight, Base);
    WriteImage("image.png", kImageWidth, kImageHeight, Image);
    WriteImage("mask.png", kImageWidth, kImageHeight, Mask);
  }

  // What is expected of a base with an image at a place, by a rule for each pixel that both have.
  static Colours Combined(int placeX, int placeY, const std::function<uint32_t(int x, int y)> &base,
                          const std::function<uint32_t(uint32_t old, int imageX, int imageY)> &rule) {
    return Table(kWidth, kHeight, [&](int x, int y) {
      const int imageX = x - placeX, imageY = y - placeY;
      const bool isCovered = imageX >= 0 && imageX < kImageWidth && imageY >= 0 && imageY < kImageHeight;
      return isCovered ? rule(base(x, y), imageX, imageY) : base(x, y);
    });
  }

  // Combines, and expects the rule at (2, 1).
  void ExpectRule(const std::vector<std::string> &options,
                  const std::function<uint32_t(uint32_t old, uint32_t image, uint32_t mask)> &rule) const {
    std::vector<std::string> arguments = {"combine", "base.png", "image.png", "out.png", "--at", "2,1"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    RunWell(arguments);
    EXPECT_EQ(ReadImage("out.png"), Combined(2, 1, Base, [&](uint32_t old, int x, int y) {
                return EachChannel(old, Image(x, y), Mask(x, y), rule);
              }));
  }
};

TEST_F(CombineCommand, TellsAllItsArguments) {
  const ProgramResult result = Run({"combine", "--help"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("combine [OPTIONS] BASE IMAGE OUT"), HasSubstr("--mask FILE"), HasSubstr("--at X,Y"),
                    HasSubstr("--premultiplied"), HasSubstr("--fore #RRGGBB"), HasSubstr("--cover #RRGGBB"),
                    HasSubstr("--background"), HasSubstr("Examples:\n  zvk combine "), HasSubstr("Exit codes:")));
}

TEST_F(CombineCommand, CopiesAnOpaqueImageWhereverItGoes) {
  RunWell({"combine", "base.png", "image.png", "out.png"});
  const auto copy = [](uint32_t, int x, int y) { return Image(x, y); };
  EXPECT_EQ(ReadImage("out.png"), Combined(0, 0, Base, copy));
  for (const auto &[x, y] : {std::pair{4, 3}, std::pair{-2, -3}, std::pair{7, -1}, std::pair{8, 6}, std::pair{-4, 6}}) {
    const std::string place = std::to_string(x) + "," + std::to_string(y);
    RunWell({"combine", "base.png", "image.png", "out.png", "--at", place});
    EXPECT_EQ(ReadImage("out.png"), Combined(x, y, Base, copy)) << place;
    RunWell({"combine", "base.png", "image.png", "out.png", "--at=" + place});
    EXPECT_EQ(ReadImage("out.png"), Combined(x, y, Base, copy)) << place;
  }
}

TEST_F(CombineCommand, AMaskKeepsTheBaseWhereItIsWhite) {
  ExpectRule({"--mask", "mask.png"},
             [](uint32_t old, uint32_t image, uint32_t mask) { return Interpolated(image, old, mask); });
}

TEST_F(CombineCommand, APremultipliedImageIsAddedToTheMaskAndWraps) {
  ExpectRule({"--mask", "mask.png", "--premultiplied"},
             [](uint32_t, uint32_t image, uint32_t mask) { return mask + image; });
}

TEST_F(CombineCommand, AColourIsLaidOnWhereTheImageIsBlack) {
  for (const bool isPremultiplied : {false, true}) {
    std::vector<std::string> arguments = {"combine", "base.png", "image.png", "out.png",
                                          "--at",    "2,1",      "--fore",    "#C86400"};
    if (isPremultiplied) arguments.emplace_back("--premultiplied");
    RunWell(arguments);
    EXPECT_EQ(ReadImage("out.png"), Combined(2, 1, Base, [&](uint32_t old, int x, int y) {
                const uint32_t image = Image(x, y);
                const uint32_t coverage = ((image >> 16) + (image >> 8 & 255) + (image & 255)) / 3;
                return EachChannel(old, 0xC86400, 0, [&](uint32_t before, uint32_t colour, uint32_t) {
                  return isPremultiplied ? before * coverage / 255 + colour : Interpolated(colour, before, coverage);
                });
              }));
  }
}

TEST_F(CombineCommand, AnImageIsLaidOnEvenlyAsFarAsAColourTells) {
  const uint32_t cover = 0x00FF80;
  std::vector<std::string> arguments = {"combine", "base.png", "image.png", "out.png",
                                        "--at",    "2,1",      "--cover",   "#00ff80"};
  RunWell(arguments);
  EXPECT_EQ(ReadImage("out.png"), Combined(2, 1, Base, [&](uint32_t old, int x, int y) {
              return EachChannel(old, Image(x, y), cover, [](uint32_t before, uint32_t image, uint32_t by) {
                return (before * by + image * (255 - by)) / 255;
              });
            }));
  arguments.emplace_back("--premultiplied");
  RunWell(arguments);
  EXPECT_EQ(ReadImage("out.png"), Combined(2, 1, Base, [&](uint32_t old, int x, int y) {
              return EachChannel(old, Image(x, y), cover, [](uint32_t before, uint32_t image, uint32_t by) {
                return before * by / 255 + image;
              });
            }));
}

// --- transparency ---

uint32_t Over(uint32_t old, uint32_t clear) {
  const uint32_t alpha = clear & 255;
  return EachChannel(old, clear >> 8, 0, [&](uint32_t before, uint32_t image, uint32_t) {
    return Interpolated(image, before, 255 - alpha);
  });
}

TEST_F(CombineCommand, ATransparentImageCoversAsFarAsItsAlphaTells) {
  WriteClear("clear.png", kImageWidth, kImageHeight, ClearImage);
  RunWell({"combine", "base.png", "clear.png", "out.png", "--at", "-1,2"});
  EXPECT_EQ(ReadImage("out.png"),
            Combined(-1, 2, Base, [](uint32_t old, int x, int y) { return Over(old, ClearImage(x, y)); }));
}

TEST_F(CombineCommand, ATransparentBaseBecomesOpaqueWhereATransparentImageIs) {
  WriteClear("base.png", kWidth, kHeight, ClearBase);
  WriteClear("clear.png", kImageWidth, kImageHeight, ClearImage);
  RunWell({"combine", "base.png", "clear.png", "out.png", "--at", "2,1"});
  EXPECT_EQ(ReadClear("out.png"), Combined(2, 1, ClearBase, [](uint32_t old, int x, int y) {
              const uint32_t alpha = ClearImage(x, y) & 255;
              return Over(old >> 8, ClearImage(x, y)) << 8 | Interpolated(255, old & 255, 255 - alpha);
            }));
}

TEST_F(CombineCommand, AlphaGoesByTheMasksAlphaWhereAllHaveIt) {
  WriteClear("base.png", kWidth, kHeight, ClearBase);
  WriteClear("image.png", kImageWidth, kImageHeight, ClearImage);
  const auto colours = [](uint32_t old, int x, int y) {
    return EachChannel(old >> 8, Image(x, y), Mask(x, y), [](uint32_t before, uint32_t image, uint32_t mask) {
      return Interpolated(image, before, mask);
    });
  };
  // A mask without alpha leaves that of the base.
  RunWell({"combine", "base.png", "image.png", "out.png", "--at", "2,1", "--mask", "mask.png"});
  EXPECT_EQ(ReadClear("out.png"), Combined(2, 1, ClearBase, [&](uint32_t old, int x, int y) {
              return colours(old, x, y) << 8 | (old & 255);
            }));
  WriteClear("mask.png", kImageWidth, kImageHeight, ClearMask);
  RunWell({"combine", "base.png", "image.png", "out.png", "--at", "2,1", "--mask", "mask.png"});
  EXPECT_EQ(ReadClear("out.png"), Combined(2, 1, ClearBase, [&](uint32_t old, int x, int y) {
              return colours(old, x, y) << 8 | Interpolated(ClearImage(x, y) & 255, old & 255, ClearMask(x, y) & 255);
            }));
}

TEST_F(CombineCommand, WithAColourATransparentImageIsLaidOnTheBackgroundFirst) {
  WriteClear("clear.png", kImageWidth, kImageHeight, [](int x, int) { return x == 0 ? 0x00000000u : 0x000000FFu; });
  const ProgramResult result = Run({"combine", "base.png", "clear.png", "out.png", "--fore", "#102030"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "zvk: clear.png: has transparent pixels, which are laid on #FFFFFF\n");
  EXPECT_EQ(ReadImage("out.png"),
            Combined(0, 0, Base, [](uint32_t old, int x, int) { return x == 0 ? old : 0x102030; }));
}

// --- the rest ---

TEST_F(CombineCommand, MayReplaceItsBaseAndLeavesNothingBehind) {
  WriteClear("image.png", kImageWidth, kImageHeight, ClearImage);
  const ProgramResult result = Run({"combine", "base.png", "image.png", "base.png", "--leaks"});
  EXPECT_EQ(result.output, "references not given back: none\n");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(ReadImage("base.png"),
            Combined(0, 0, Base, [](uint32_t old, int x, int y) { return Over(old, ClearImage(x, y)); }));
  EXPECT_EQ(Names(), (std::set<std::string>{"base.png", "image.png", "mask.png"}));
}

TEST_F(CombineCommand, RefusesAMaskOfAnotherSize) {
  WriteImage("large.png", kWidth, kHeight, Mask);
  ExpectFailure({"combine", "base.png", "image.png", "out.png", "--mask", "large.png"}, 1,
                "large.png: is 9 x 7 pixels, but image.png is 5 x 4; a mask must be as large as the IMAGE it goes "
                "with, so scale one\n");
}

TEST_F(CombineCommand, RefusesAPlaceOutsideTheBase) {
  for (const std::string place : {"9,0", "0,7", "-5,0", "0,-4", "2147483647,0", "-2147483648,0"}) {
    ExpectFailure({"combine", "base.png", "image.png", "out.png", "--at", place}, 1,
                  "image.png: its 5 x 4 pixels at " + place + " lie outside base.png of 9 x 7 pixels; choose another " +
                      "place with --at\n");
  }
}

TEST_F(CombineCommand, RefusesOptionsThatAreNotUnderstoodOrDoNotGoTogether) {
  const auto expect = [this](std::vector<std::string> options, const std::string &message) {
    options.insert(options.begin(), {"combine", "base.png", "image.png", "out.png"});
    ExpectFailure(options, 2, message);
  };
  for (const std::string place : {"", "1", "1,", ",1", "1;2", "1,2,3", "a,b", "99999999999,0", "1.5,2"}) {
    expect({"--at=" + place},
           place.empty() ? "" : "--at '" + place + "' is not understood; write X,Y in pixels, as in 10,-20\n");
  }
  expect({"--fore", "red"}, "--fore 'red' is not understood; write #RRGGBB, as in #FF8000\n");
  expect({"--cover", "#11223344"}, "--cover '#11223344' is not understood; write #RRGGBB, as in #FF8000\n");
  expect({"--premultiplied"}, "--premultiplied has no meaning by itself; add --mask, --fore or --cover\n");
  const std::string end = "; 'zvk combine --help' tells how it is used\n";
  expect({"--mask", "mask.png", "--fore", "#000000"}, "--mask excludes --fore" + end);
  expect({"--mask", "mask.png", "--cover", "#000000"}, "--mask excludes --cover" + end);
  expect({"--fore", "#000000", "--cover", "#000000"}, "--fore excludes --cover" + end);
}

TEST_F(CombineCommand, RefusesFilesThatCannotBeReadOrWritten) {
  for (const auto &files : {std::vector<std::string>{"nowhere.png", "image.png"}, {"base.png", "nowhere.png"}}) {
    ExpectFailure({"combine", files[0], files[1], "out.png"}, 1, "nowhere.png: no such file; check the path\n");
  }
  ExpectFailure({"combine", "base.png", "image.png", "out.png", "--mask", "nowhere.png"}, 1,
                "nowhere.png: no such file; check the path\n");
  ExpectFailure({"combine", "base.png", "image.png", "out.xyz"}, 2, "out.xyz: no known image extension; use one of ");
  ExpectFailure({"combine", "base.png", "image.png", "missing/out.png"}, 1, "missing/out.png: cannot be written (");
  ExpectFailure({"combine", "base.png", "image.png"}, 2,
                "OUT is required; 'zvk combine --help' tells how it is used\n");
}

}  // namespace
}  // namespace standalone
