#include "compositing/combine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "compositing/copy_pixels.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/yields.h"

namespace zvk::compositing {
namespace {

using scenes::Kind;
using scenes::StoredImage;
using scenes::YieldAlways;
using scenes::Yields;
using Bytes = std::vector<uint8_t>;

constexpr int32_t kNone = -1;
constexpr int32_t G = ImageFormatG, RGB = ImageFormatRGB;

class Combine : public testing::Test {
 protected:
  Combine() : host_({.fenced = true}) {}

  StoredImage New(int32_t width, int32_t height, int32_t format, const Bytes &bytes = {}) {
    StoredImage image(host_, Kind::Block, width, height, format);
    if (!bytes.empty()) image.SetBytes(bytes);
    return image;
  }
  // Four gray pixels: the images, and the mask.
  StoredImage Dest() { return New(4, 1, G, {100, 100, 100, 100}); }
  StoredImage Source() { return New(4, 1, G, {200, 150, 50, 0}); }
  StoredImage Mask() { return New(4, 1, G, {0, 128, 255, 128}); }

  PluginHost host_;
};

// --- which case ---

TEST_F(Combine, WithoutMaskAndColoursItIsACopyAndItsResult) {
  StoredImage dest = Dest(), source = Source();
  EXPECT_TRUE(PictureCombine1pm(dest, source, false, nullptr, 1, 0, 0, 0, 2, 1, false, kNone, kNone));
  // Copied as a block, with the excess that a copy has.
  EXPECT_EQ(dest.Bytes(), (Bytes{100, 200, 150, 50}));
  EXPECT_FALSE(PictureCombine1pm(dest, source, false, nullptr, 4, 0, 0, 0, 2, 1, false, kNone, kNone));
  StoredImage colours = New(4, 1, ImageFormatCMYK);
  StoredImage other = New(4, 1, RGB);
  EXPECT_FALSE(PictureCombine1pm(colours, other, false, nullptr, 0, 0, 0, 0, 4, 1, false, kNone, kNone));
}

TEST_F(Combine, WithAMaskTheColoursAreIgnored) {
  for (const int32_t colour : {kNone, 0, 0xFFFFFF}) {
    for (const uint8_t useColours : {uint8_t{0}, uint8_t{1}}) {
      StoredImage dest = Dest(), source = Source(), mask = Mask();
      EXPECT_TRUE(PictureCombine1pm(dest, source, false, mask, 0, 0, 0, 0, 4, 1, useColours, colour, colour));
      EXPECT_EQ(dest.Bytes(), (Bytes{200, 124, 100, 50}));  // (127 x 150 + 128 x 100) / 255 and 12800 / 255
    }
  }
}

TEST_F(Combine, WithAMaskAPremultipliedSourceIsAdded) {
  StoredImage dest = Dest(), source = Source(), mask = Mask();
  EXPECT_TRUE(PictureCombine1pm(dest, source, true, mask, 0, 0, 0, 0, 4, 1, false, kNone, kNone));
  EXPECT_EQ(dest.Bytes(), (Bytes{200, 200, 150, 50}));
}

TEST_F(Combine, AForeColourAloneGoesThroughTheImageWhateverUseColoursSays) {
  for (const uint8_t useColours : {uint8_t{0}, uint8_t{1}}) {
    StoredImage dest = Dest(), mask = Mask();
    EXPECT_TRUE(PictureCombine1pm(dest, mask, false, nullptr, 0, 0, 0, 0, 4, 1, useColours, 0xFFFFFF, kNone));
    EXPECT_EQ(dest.Bytes(), (Bytes{255, 177, 100, 177}));  // (127 x 255 + 128 x 100) / 255
  }
}

TEST_F(Combine, WithAMaskColourTheForeColourIsIgnored) {
  for (const int32_t foreColour : {kNone, 0, 0x123456}) {
    StoredImage dest = Dest(), source = Source();
    EXPECT_TRUE(PictureCombine1pm(dest, source, false, nullptr, 0, 0, 0, 0, 4, 1, true, foreColour, 0x808080));
    EXPECT_EQ(dest.Bytes(), (Bytes{149, 124, 75, 50}));
  }
}

TEST_F(Combine, AMaskColourThatIsNotUsedIsBlackAndCopiesTheImage) {
  StoredImage dest = New(1, 1, RGB, {1, 2, 3}), source = New(1, 1, RGB, {10, 20, 30});
  EXPECT_TRUE(PictureCombine1pm(dest, source, false, nullptr, 0, 0, 0, 0, 1, 1, false, kNone, 0xFFFFFF));
  EXPECT_EQ(dest.Bytes(), (Bytes{10, 20, 30}));
  StoredImage gray = New(1, 1, G, {7});
  EXPECT_TRUE(PictureCombine1pm(gray, source, false, nullptr, 0, 0, 0, 0, 1, 1, false, kNone, 0xFFFFFF));
  EXPECT_EQ(gray.Bytes(), (Bytes{(77 * 10 + 151 * 20 + 28 * 30) / 256}));
}

TEST_F(Combine, AColourWithItsTopBitIsAbsent) {
  const auto topBit = static_cast<int32_t>(0x80FFFFFFu);
  StoredImage dest = Dest(), source = Source();
  EXPECT_TRUE(PictureCombine1pmc(dest, source, true, nullptr, 0, 0, 0, 0, 4, 1, true, topBit, topBit));
  EXPECT_EQ(dest.Bytes(), source.Bytes());
  EXPECT_TRUE(PictureCombine1pmc(dest, source, true, nullptr, 0, 0, 0, 0, 4, 1, true, 0x7FFFFFFF, topBit));
  EXPECT_EQ(dest.Bytes(),
            (Bytes{static_cast<uint8_t>(200 * 200 / 255 + 255), static_cast<uint8_t>(150 * 150 / 255 + 255),
                   static_cast<uint8_t>(50 * 50 / 255 + 255), 255}));
}

// --- the ten forms ---

// What a form must do is what the full one does with the arguments that the form passes on.
TEST_F(Combine, EachFormPassesOnWhatItHas) {
  constexpr int32_t kFore = 0x336699, kMaskColour = 0x806040;
  using Call = std::function<uint8_t(REALobject dest, REALobject image, REALobject mask)>;
  struct Form {
    const char *name;
    Call form;
    bool premultiplied;
    int32_t foreColour;
    int32_t maskColour;
  };
  const std::vector<Form> forms = {
      {"1", [](auto d, auto i, auto m) { return PictureCombine1(d, i, m, 1, 1, 2, 0, 5, 3, 1, kFore, kMaskColour); },
       false, kFore, kMaskColour},
      {"2", [](auto d, auto i, auto m) { return PictureCombine2(d, i, m, 1, 1, 2, 0, 5, 3, 1, kFore); }, false, kFore,
       kNone},
      {"3", [](auto d, auto i, auto m) { return PictureCombine3(d, i, m, 1, 1, 2, 0, 5, 3, 1); }, false, kNone, kNone},
      {"1c", [](auto d, auto i, auto m) { return PictureCombine1c(d, i, m, 1, 1, 2, 0, 5, 3, 1, kFore, kMaskColour); },
       false, kFore, kMaskColour},
      {"2c", [](auto d, auto i, auto m) { return PictureCombine2c(d, i, m, 1, 1, 2, 0, 5, 3, 1, kFore); }, false, kFore,
       kNone},
      {"1pm",
       [](auto d, auto i, auto m) { return PictureCombine1pm(d, i, 1, m, 1, 1, 2, 0, 5, 3, 1, kFore, kMaskColour); },
       true, kFore, kMaskColour},
      {"2pm", [](auto d, auto i, auto m) { return PictureCombine2pm(d, i, 1, m, 1, 1, 2, 0, 5, 3, 1, kFore); }, true,
       kFore, kNone},
      {"3pm", [](auto d, auto i, auto m) { return PictureCombine3pm(d, i, 1, m, 1, 1, 2, 0, 5, 3, 1); }, true, kNone,
       kNone},
      {"1pmc",
       [](auto d, auto i, auto m) { return PictureCombine1pmc(d, i, 1, m, 1, 1, 2, 0, 5, 3, 1, kFore, kMaskColour); },
       true, kFore, kMaskColour},
      {"2pmc", [](auto d, auto i, auto m) { return PictureCombine2pmc(d, i, 1, m, 1, 1, 2, 0, 5, 3, 1, kFore); }, true,
       kFore, kNone},
  };
  for (const Form &form : forms) {
    for (const bool masked : {false, true}) {
      StoredImage dest = New(7, 5, RGB), image = New(8, 4, RGB), mask = New(8, 4, ImageFormatRGBX),
                  same = New(7, 5, RGB);
      dest.Fill(1);
      image.Fill(2);
      mask.Fill(3);
      same.SetBytes(dest.Bytes());
      const REALobject maskOrNil = masked ? static_cast<REALobject>(mask) : nullptr;
      EXPECT_TRUE(form.form(dest, image, maskOrNil)) << form.name;
      EXPECT_TRUE(PictureCombine1pm(same, image, form.premultiplied, maskOrNil, 1, 1, 2, 0, 5, 3, 1, form.foreColour,
                                    form.maskColour));
      EXPECT_EQ(dest.Bytes(), same.Bytes()) << form.name;

      EXPECT_FALSE(form.form(nullptr, image, maskOrNil)) << form.name;
      EXPECT_FALSE(form.form(dest, nullptr, maskOrNil)) << form.name;
      EXPECT_EQ(dest.Bytes(), same.Bytes()) << form.name;
    }
  }
}

TEST_F(Combine, TheFormsWithoutColoursCopyOrBlendAndDoNotReadUseColours) {
  for (const uint8_t useColours : {uint8_t{0}, uint8_t{1}}) {
    StoredImage dest = Dest(), source = Source(), mask = Mask();
    EXPECT_TRUE(PictureCombine3(dest, source, mask, 0, 0, 0, 0, 4, 1, useColours));
    EXPECT_EQ(dest.Bytes(), (Bytes{200, 124, 100, 50}));
    EXPECT_TRUE(PictureCombine3pm(dest, source, true, nullptr, 0, 0, 0, 0, 4, 1, useColours));
    EXPECT_EQ(dest.Bytes(), source.Bytes());
    StoredImage other = Dest();
    EXPECT_TRUE(PictureCombine3pm(other, source, true, mask, 0, 0, 0, 0, 4, 1, useColours));
    EXPECT_EQ(other.Bytes(), (Bytes{200, 200, 150, 50}));
  }
}

// --- refusals ---

// Each of the cases by the arguments that select it.
struct Selected {
  const char *name;
  bool masked;
  int32_t foreColour;
  int32_t maskColour;
};
constexpr Selected kCases[] = {{"copy", false, kNone, kNone},
                               {"mask", true, kNone, kNone},
                               {"foreground", false, 0x123456, kNone},
                               {"mask colour", false, kNone, 0x123456}};

class CombineRefuses : public Combine {
 protected:
  static uint8_t Call(const Selected &selected, REALobject dest, REALobject image, REALobject mask, int32_t width = 4,
                      int32_t height = 1) {
    return PictureCombine1pm(dest, image, false, selected.masked ? mask : nullptr, 0, 0, 0, 0, width, height, 1,
                             selected.foreColour, selected.maskColour);
  }
};

TEST_F(CombineRefuses, ASizeThatIsNotAbove0) {
  StoredImage dest = Dest(), source = Source(), mask = Mask();
  for (const Selected &selected : kCases) {
    EXPECT_FALSE(Call(selected, dest, source, mask, 0, 1)) << selected.name;
    EXPECT_FALSE(Call(selected, dest, source, mask, 4, 0)) << selected.name;
    EXPECT_FALSE(Call(selected, dest, source, mask, -4, 1)) << selected.name;
    EXPECT_FALSE(Call(selected, dest, source, mask, 4, -1)) << selected.name;
  }
  EXPECT_FALSE(PictureCombine3(dest, source, mask, 4, 0, 0, 0, -4, 1, 0));
  EXPECT_FALSE(PictureCombine3pm(dest, source, 0, nullptr, 4, 0, 0, 0, -4, 1, 0));
  EXPECT_EQ(dest.Bytes(), Dest().Bytes());
}

TEST_F(CombineRefuses, ImagesWithoutPixels) {
  const auto unmade = host_.New("PictureZVK");
  StoredImage closed = Source(), table(host_, Kind::Picture, 4, 1, RGB);
  ImageDestructor(closed);
  ASSERT_TRUE(closed.Record().Valid);
  const auto viewOfTable = Adopt(RedChannel(table));
  ASSERT_TRUE(viewOfTable);
  for (const REALobject bad : {unmade.Handle(), static_cast<REALobject>(closed), viewOfTable.Handle()}) {
    for (const Selected &selected : kCases) {
      StoredImage dest = Dest(), source = Source(), mask = Mask();
      EXPECT_FALSE(Call(selected, bad, source, mask)) << selected.name;
      EXPECT_FALSE(Call(selected, dest, bad, mask)) << selected.name;
      if (selected.masked) {
        EXPECT_FALSE(Call(selected, dest, source, bad));
      }
      EXPECT_EQ(dest.Bytes(), Dest().Bytes()) << selected.name;
    }
  }
}

TEST_F(CombineRefuses, WideSamplesButNotUnderAForeground) {
  const Bytes wide{1, 2, 3, 4, 5, 6, 7, 8};
  for (const Selected &selected : kCases) {
    if (selected.maskColour == kNone && !selected.masked) continue;
    StoredImage dest = New(4, 1, ImageFormatGray16, wide), source = New(4, 1, ImageFormatGray16, wide), gray = Dest();
    StoredImage mask = Mask();
    EXPECT_FALSE(Call(selected, dest, gray, mask)) << selected.name;
    EXPECT_FALSE(Call(selected, gray, source, mask)) << selected.name;
    if (selected.masked) {
      EXPECT_FALSE(Call(selected, gray, gray, source));
    }
    EXPECT_EQ(dest.Bytes(), wide);
    EXPECT_EQ(gray.Bytes(), Dest().Bytes());
  }
  // Under a foreground the first byte of each sample counts.
  StoredImage dest = New(4, 1, ImageFormatGray16, wide),
              cover = New(4, 1, ImageFormatGray16, {0, 9, 255, 9, 0, 9, 255, 9});
  EXPECT_TRUE(PictureCombine2(dest, cover, nullptr, 0, 0, 0, 0, 4, 1, 0, 0xFFFFFF));
  EXPECT_EQ(dest.Bytes(), (Bytes{255, 2, 3, 4, 255, 6, 7, 8}));
}

TEST_F(CombineRefuses, AMaskOfAnotherSizeThanTheImage) {
  StoredImage dest = Dest(), source = Source();
  for (const auto &[width, height] : {std::pair{5, 1}, {3, 1}, {4, 2}}) {
    StoredImage mask = New(width, height, G);
    EXPECT_FALSE(Case2(dest, source, false, mask, 0, 0, 0, 0, 2, 1));
  }
  EXPECT_EQ(dest.Bytes(), Dest().Bytes());
}

TEST_F(CombineRefuses, ACaseWithAMaskThatLacksImageOrMask) {
  StoredImage dest = Dest(), source = Source(), mask = Mask();
  EXPECT_FALSE(Case2(dest, nullptr, false, mask, 0, 0, 0, 0, 4, 1));
  EXPECT_FALSE(Case2(dest, source, false, nullptr, 0, 0, 0, 0, 4, 1));
  EXPECT_FALSE(Case2(nullptr, source, false, mask, 0, 0, 0, 0, 4, 1));
}

TEST_F(CombineRefuses, AnEmptyRectangle) {
  StoredImage dest = Dest(), source = Source(), mask = Mask();
  for (const Selected &selected : kCases) {
    const REALobject maskOrNil = selected.masked ? static_cast<REALobject>(mask) : nullptr;
    for (const auto &[destX, sourceX] : {std::pair{4, 0}, {0, 4}, {-4, 0}, {0, -4}, {9, 9}}) {
      EXPECT_FALSE(PictureCombine1pm(dest, source, false, maskOrNil, destX, 0, sourceX, 0, 4, 1, 1, selected.foreColour,
                                     selected.maskColour))
          << selected.name << ": " << destX << ", " << sourceX;
    }
  }
  EXPECT_EQ(dest.Bytes(), Dest().Bytes());
}

TEST_F(Combine, ImagesOfOtherFamiliesGiveTrueAndAreLeftAlone) {
  for (const int32_t format : {ImageFormatCMYK, ImageFormatScaling1}) {
    for (const Selected &selected : kCases) {
      if (!selected.masked && selected.foreColour == kNone && selected.maskColour == kNone) continue;
      StoredImage odd = New(4, 1, format), dest = Dest(), source = Source(), mask = Mask();
      odd.Fill(5);
      const Bytes before = odd.Bytes();
      const auto call = [&](REALobject d, REALobject i, REALobject m) {
        return PictureCombine1pm(d, i, false, selected.masked ? m : nullptr, 0, 0, 0, 0, 4, 1, 1, selected.foreColour,
                                 selected.maskColour);
      };
      EXPECT_TRUE(call(odd, source, mask)) << selected.name;
      EXPECT_TRUE(call(dest, odd, mask)) << selected.name;
      if (selected.masked) {
        EXPECT_TRUE(call(dest, source, odd));
      }
      EXPECT_EQ(odd.Bytes(), before);
      EXPECT_EQ(dest.Bytes(), Dest().Bytes());
    }
  }
}

// --- the rectangle ---

TEST_F(Combine, TheMaskLiesWhereTheSourceLies) {
  StoredImage dest = New(6, 1, G), source = New(4, 1, G, {1, 2, 3, 4}), mask = New(4, 1, G, {255, 255, 0, 0});
  EXPECT_TRUE(Case2(dest, source, false, mask, 3, 0, 1, 0, 3, 1));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 0, 0, 3, 4}));
}

TEST_F(Combine, ANegativeSourcePositionShiftsAndShortens) {
  StoredImage dest = New(6, 1, G), source = New(4, 1, G, {1, 2, 3, 4}), mask = New(4, 1, G);
  EXPECT_TRUE(Case2(dest, source, false, mask, 3, 0, -1, 0, 3, 1));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 1, 2, 0, 0}));
}

TEST_F(Combine, ASizeThatBecomesNegativeIsFolded) {
  StoredImage dest = New(6, 1, G), source = New(4, 1, G, {1, 2, 3, 4}), mask = New(4, 1, G);
  // 1 - 3 = -2 at 5 - 3: columns 0 and 1 from source column 0.
  EXPECT_TRUE(Case2(dest, source, false, mask, 5, 0, -3, 0, 1, 1));
  EXPECT_EQ(dest.Bytes(), (Bytes{1, 2, 0, 0, 0, 0}));
}

TEST_F(Combine, ARectangleWhoseSumsWrapIsCutToTheImages) {
  for (const bool masked : {false, true}) {
    StoredImage dest = New(4, 1, G), source = New(3, 1, G, {1, 2, 3}), mask = New(3, 1, G);
    EXPECT_TRUE(PictureCombine1(dest, source, masked ? static_cast<REALobject>(mask) : nullptr, 1, 0, 1, 0, INT32_MAX,
                                1, 1, kNone, 0));
    EXPECT_EQ(dest.Bytes(), (Bytes{0, 2, 3, 0}));
  }
}

TEST_F(Combine, ARectangleOfWhichOnlyTheCutLeavesNothingIsTrueAndDrawsNothing) {
  StoredImage source = Source(), mask = Mask();
  for (const Selected &selected : kCases) {
    const REALobject maskOrNil = selected.masked ? static_cast<REALobject>(mask) : nullptr;
    const auto combine = [&](REALobject dest, int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY) {
      return PictureCombine1pm(dest, source, false, maskOrNil, destX, destY, sourceX, sourceY, 20, 20, 1,
                               selected.foreColour, selected.maskColour);
    };
    // 2147483647 + 10 wraps, to a place left of (or above) the source that no step tests for.
    StoredImage dest = Dest();
    EXPECT_TRUE(combine(dest, -10, 0, INT32_MAX, 0)) << selected.name;
    EXPECT_TRUE(combine(dest, 0, -10, 0, INT32_MAX)) << selected.name;
    EXPECT_TRUE(combine(dest, -10, -10, INT32_MAX, INT32_MAX)) << selected.name;
    EXPECT_EQ(dest.Bytes(), Dest().Bytes());
  }
}

// --- yields ---

TEST_F(Combine, YieldsOnDestThenOnTheImageThenOnDestAfterEachRow) {
  for (const Selected &selected : kCases) {
    StoredImage dest = New(2, 3, G), source = New(2, 3, G), mask = New(2, 3, G);
    const REALobject maskOrNil = selected.masked ? static_cast<REALobject>(mask) : nullptr;
    const auto yields = [&](StoredImage &image) {
      YieldAlways(host_, image);
      const int64_t before = Yields(host_);
      EXPECT_TRUE(PictureCombine1pm(dest, source, false, maskOrNil, 0, 0, 0, 0, 2, 3, 1, selected.foreColour,
                                    selected.maskColour));
      image.Record().Yield.YieldTicks = 0;
      return Yields(host_) - before;
    };
    EXPECT_EQ(yields(dest), 4) << selected.name;
    EXPECT_EQ(yields(source), 1) << selected.name;
    EXPECT_EQ(yields(mask), 0) << selected.name;
  }
}

TEST_F(Combine, WhatIsRefusedBeforeTheYieldsDoesNotYield) {
  StoredImage dest = Dest(), source = Source(), mask = New(5, 1, G), wide = New(4, 1, ImageFormatGray16);
  YieldAlways(host_, dest);
  EXPECT_FALSE(Case2(dest, source, false, mask, 0, 0, 0, 0, 4, 1));
  EXPECT_FALSE(PictureCombine1(dest, wide, nullptr, 0, 0, 0, 0, 4, 1, 1, kNone, 0));
  source.Record().Valid = false;
  EXPECT_FALSE(PictureCombine1(dest, source, nullptr, 0, 0, 0, 0, 4, 1, 1, 0, kNone));
  EXPECT_FALSE(PictureCombine1(dest, source, nullptr, 0, 0, 0, 0, 4, 1, 1, kNone, 0));
  EXPECT_EQ(Yields(host_), 0);
}

TEST_F(Combine, AnImageThatTheHostClosesInTheFirstYieldIsRefused) {
  for (const Selected &selected : kCases) {
    for (int closed = 0; closed < 3; ++closed) {
      if (closed == 2 && !selected.masked) continue;
      StoredImage dest = Dest(), source = Source(), mask = Mask();
      const StoredImage *images[] = {&dest, &source, &mask};
      const Bytes before = dest.Bytes();
      YieldAlways(host_, dest);
      host_->onYield = [&] { ImageDestructor(*images[closed]); };
      EXPECT_FALSE(PictureCombine1pm(dest, source, false, selected.masked ? static_cast<REALobject>(mask) : nullptr, 0,
                                     0, 0, 0, 4, 1, 1, selected.foreColour, selected.maskColour))
          << selected.name << ", " << closed;
      EXPECT_EQ(dest.Bytes(), before);
      host_->onYield = nullptr;
    }
  }
}

TEST_F(Combine, AViewWhoseParentTheHostClosesInTheFirstYieldIsRefused) {
  for (const Selected &selected : kCases) {
    for (int closed = 0; closed < 3; ++closed) {
      if (closed == 2 && !selected.masked) continue;
      StoredImage dest = Dest(), source = Source(), mask = Mask();
      const StoredImage *images[] = {&dest, &source, &mask};
      const auto view = Adopt(GrayChannel(*images[closed]));
      const auto shown = [&](int which) {
        return which == closed ? static_cast<REALobject>(view) : static_cast<REALobject>(*images[which]);
      };
      YieldAlways(host_, dest);
      RecordOf(shown(0))->Yield.YieldTicks = 1;
      host_->onYield = [&] { ImageDestructor(*images[closed]); };
      EXPECT_FALSE(PictureCombine1pm(shown(0), shown(1), false, selected.masked ? shown(2) : nullptr, 0, 0, 0, 0, 4, 1,
                                     1, selected.foreColour, selected.maskColour))
          << selected.name << ", " << closed;
      host_->onYield = nullptr;
    }
  }
}

}  // namespace
}  // namespace zvk::compositing
