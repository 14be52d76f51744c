// When masked drawing asks for what, holds what and gives it back: refusals, rectangles, yields.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "host/host_services.h"
#include "image/image_formats.h"
#include "pictures/masked_drawing.h"
#include "pictures/picture_import.h"
#include "tests/pictures/closed_parent.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::HostKind;
using standalone::Object;
using standalone::Picture;
using Bytes = std::vector<uint8_t>;

using Draw2 = void (*)(REALobject, REALobject, uint8_t);
using Draw8 = void (*)(REALobject, REALobject, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, uint8_t);
constexpr Draw2 kDraws2[] = {rbDrawMaskedPictureRGB2, rbDrawPictureApplyMaskRGB2};
constexpr Draw8 kDraws8[] = {rbDrawMaskedPictureRGB8, rbDrawPictureApplyMaskRGB8};

int64_t MaskQuestions(PluginHost &host) { return host->Calls("REALGetPictureMask"); }

// A picture of the console's with a mask of its size.
struct MaskedPicture {
  MaskedPicture(PluginHost &host, int32_t width, int32_t height)
      : picture(NewFilledPicture(host, width, height, kGD, 1)) {
    auto made = NewFilledPicture(host, width, height, kGD, 2);
    mask = made.Get();
    picture->SetMask(std::move(made));
  }

  // What each call leaves taken.
  void ExpectReferencesLeft(int32_t calls) const {
    EXPECT_EQ(mask->References(), 1 + calls);
    while (mask->References() > 1) mask->Unlock();
  }
  bool IsReleased() const { return IsFree(*picture) && mask->LocksHeld() == 0; }

  Owned<Picture> picture;
  Picture *mask;
};

// --- what is refused ---

TEST(MaskedDrawingCalls, AnImageWithoutAllThreeColoursIsRefusedBeforeTheMaskIsLookedFor) {
  PluginHost host;
  const MaskedPicture masked(host, 4, 4);
  for (const int32_t format : {ImageFormatGA, ImageFormatCMYKA, ImageFormatGray16, ImageFormatBuffer}) {
    auto image = NewImage(host, 4, 4, format);
    YieldAlways(host, image);
    const Bytes before = StorageOf(*RecordOf(image));
    for (const Draw2 draw : kDraws2) draw(image, masked.picture, false);
    EXPECT_EQ(StorageOf(*RecordOf(image)), before);
  }
  for (const auto has : {&ImageClassData::HasRed, &ImageClassData::HasGreen, &ImageClassData::HasBlue}) {
    auto image = NewImage(host, 4, 4, ImageFormatRGB);
    RecordOf(image)->*has = false;
    for (const Draw2 draw : kDraws2) draw(image, masked.picture, false);
  }
  for (const Draw2 draw : kDraws2) draw(nullptr, masked.picture, false);
  EXPECT_EQ(MaskQuestions(host), 0);
  EXPECT_EQ(Yields(host), 0);
  EXPECT_EQ(masked.picture->LocksTaken(), 0);
}

TEST(MaskedDrawingCalls, AnImageThatIsNotUsableIsRefusedAfterTheMaskIsLookedFor) {
  PluginHost host;
  const MaskedPicture masked(host, 4, 4);
  auto closed = NewImage(host, 4, 4, ImageFormatRGB);
  ImageDestructor(closed);
  auto notValid = NewImage(host, 4, 4, ImageFormatRGB);
  RecordOf(notValid)->Valid = false;
  auto negative = NewImage(host, 4, 4, ImageFormatRGB);
  RecordOf(negative)->Width = -1;
  auto low = NewImage(host, 4, 4, ImageFormatRGB);
  RecordOf(low)->Height = 0;
  auto withoutTable = NewImage(host, 4, 4, ImageFormatRGB);
  RecordOf(withoutTable)->GetRow = GetRowGDImage;
  int32_t calls = 0;
  for (Object *image : {closed.Get(), notValid.Get(), negative.Get(), low.Get(), withoutTable.Get()}) {
    ImageClassData &record = *RecordOf(image->Handle());
    record.HasRed = record.HasGreen = record.HasBlue = true;
    YieldAlways(host, image->Handle());
    for (const Draw2 draw : kDraws2) {
      draw(image->Handle(), masked.picture, false);
      EXPECT_EQ(MaskQuestions(host), ++calls);
    }
  }
  EXPECT_EQ(Yields(host), 0);
  EXPECT_EQ(masked.picture->LocksTaken() + masked.mask->LocksTaken(), 0);
  masked.ExpectReferencesLeft(10);
}

TEST(MaskedDrawingCalls, ANilPictureIsAskedForItsMaskAndDrawsNothing) {
  PluginHost host;
  auto image = NewImage(host, 4, 4, ImageFormatRGBA);
  const Bytes before = StorageOf(*RecordOf(image));
  for (const Draw2 draw : kDraws2) draw(image, nullptr, false);
  for (const Draw8 draw : kDraws8) draw(image, nullptr, 0, 0, 4, 4, 0, 0, true);
  EXPECT_EQ(StorageOf(*RecordOf(image)), before);
  EXPECT_EQ(MaskQuestions(host), 4);
  EXPECT_FALSE(host.TakeException());
}

TEST(MaskedDrawingCalls, AHostWithoutMasksHasNone) {
  PluginHost host;
  const MaskedPicture masked(host, 2, 1);
  host->Withhold("REALGetPictureMask");
  auto image = NewImage(host, 2, 1, ImageFormatRGBA);
  rbDrawMaskedPictureRGB2(image, masked.picture, false);
  EXPECT_EQ(*SampleAt(*RecordOf(image), 1, 0, 3), 255);
  rbDrawMaskedPictureRGB2(image, masked.picture, true);
  EXPECT_EQ(*SampleAt(*RecordOf(image), 1, 0, 3), 0);
  auto blended = NewImage(host, 2, 1, ImageFormatRGBA);
  rbDrawPictureApplyMaskRGB2(blended, masked.picture, true);
  EXPECT_EQ(*SampleAt(*RecordOf(blended), 1, 0, 0), masked.picture->GetPixel(1, 0).red);
  masked.ExpectReferencesLeft(0);
}

TEST(MaskedDrawingCalls, APictureOrAMaskThatCannotBeReadDrawsNothing) {
  PluginHost host({.version = 2011.0});
  auto image = NewImage(host, 5, 4, ImageFormatRGBA);
  const Bytes before = StorageOf(*RecordOf(image));
  for (size_t i = 0; i < 2; ++i) {
    // The mask cannot be locked: the picture that was attached before is given back.
    auto picture = NewFilledPicture(host, 5, 4, kGD);
    auto odd = NewOddPicture(host, 0, nullptr);
    Picture &oddMask = *odd;
    picture->SetMask(std::move(odd));
    kDraws2[i](image, picture, false);
    EXPECT_TRUE(IsFree(*picture));
    EXPECT_EQ(picture->LocksTaken(), 1);
    EXPECT_EQ(oddMask.LocksHeld(), 0);  // an old host wants a failed lock given back
    EXPECT_EQ(oddMask.References(), 2);
    oddMask.Unlock();

    // The picture cannot be locked: the mask is not tried.
    auto unreadable = NewOddPicture(host, 0, nullptr);
    auto mask = NewFilledPicture(host, 5, 4, kGD);
    Picture &readable = *mask;
    unreadable->SetMask(std::move(mask));
    kDraws2[i](image, unreadable, false);
    EXPECT_TRUE(IsFree(*unreadable));
    EXPECT_EQ(readable.LocksTaken(), 0);
    readable.Unlock();
  }
  EXPECT_EQ(StorageOf(*RecordOf(image)), before);
}

TEST(MaskedDrawingCalls, ALayoutThatNobodyKnowsDrawsNothing) {
  PluginHost host;
  uint8_t pixels[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  const auto attach = [&pixels](PictureReader &reader, int32_t layout) {
    reader.Width = reader.Height = 2;
    reader.RowBytes = 8;
    reader.PixelBytes = 4;
    reader.Layout = layout;
    reader.BaseAddress = reader.RowAddress = pixels;
  };
  for (const auto &[layout, maskLayout] : {std::pair{0, 0}, {7, 1}, {1, 9}, {9, 9}}) {
    PictureReader picture, mask;
    attach(picture, layout);
    attach(mask, maskLayout);
    auto image = NewImage(host, 2, 2, ImageFormatRGBA);
    const Bytes before = StorageOf(*RecordOf(image));
    DrawMasked(PixelWatch(*RecordOf(image)), {0, 0, 2, 2, 0, 0}, picture, &mask, false);
    BlendMasked(PixelWatch(*RecordOf(image)), {0, 0, 2, 2, 0, 0}, picture, &mask, false);
    if (layout != 1) DrawMasked(PixelWatch(*RecordOf(image)), {0, 0, 2, 2, 0, 0}, picture, nullptr, false);
    EXPECT_EQ(StorageOf(*RecordOf(image)), before) << layout << ", " << maskLayout;
  }
}

TEST(MaskedDrawingCalls, PicturesWithoutABitmapAreReadFromCopies) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = host.NewPicture(std::make_unique<standalone::DrawnStorage>(3, 2));
  picture->SetPixel(2, 1, {7, 8, 9});
  auto made = host.NewPicture(std::make_unique<standalone::DrawnStorage>(3, 2));
  made->SetPixel(2, 1, {100, 0, 0});
  Picture &mask = *made;
  picture->SetMask(std::move(made));
  auto image = NewImage(host, 3, 2, ImageFormatRGBA);
  rbDrawMaskedPictureRGB2(image, picture, false);
  const uint8_t *pixel = SampleAt(*RecordOf(image), 2, 1, 0);
  EXPECT_EQ(Bytes(pixel, pixel + 4), (Bytes{7, 8, 9, 100}));
  EXPECT_TRUE(IsFree(*picture));
  EXPECT_EQ(mask.References(), 2);
  mask.Unlock();
}

// --- rectangles ---

// A GD image that is described as 5 pixels wide.
struct OddlyDescribedGD : standalone::GDStorage {
  OddlyDescribedGD(int32_t width, int32_t height) : GDStorage(width, height, true) {}
  bool Describe(int32_t wantedType, REALpictureDescription *description) override {
    const bool described = GDStorage::Describe(wantedType, description);
    description->width = 5;
    return described;
  }
};

// An image of 6 x 6 and a picture of 5 x 4 whose pixels and mask pixels tell their places.
class MaskedRectangle : public testing::Test {
 protected:
  MaskedRectangle() : masked_(host_, 5, 4) {
    for (int32_t y = 0; y < 4; ++y) {
      for (int32_t x = 0; x < 5; ++x) {
        const auto place = static_cast<uint8_t>(100 + 10 * y + x);
        masked_.picture->SetPixel(x, y, {place, 1, 2});
        masked_.mask->SetPixel(x, y, {place, 0, 0});
      }
    }
  }

  Owned<Object> Black() {
    auto image = host_.New("PictureZVK");
    ImageConstructor(image, 6, 6, ImageFormatRGBA);
    return image;
  }

  // Expects that width x height pixels from destX, destY on come from the picture's sourceX, sourceY on.
  static void Expect(Object &image, int32_t destX, int32_t destY, int32_t width, int32_t height, int32_t sourceX,
                     int32_t sourceY) {
    for (int32_t y = 0; y < 6; ++y) {
      for (int32_t x = 0; x < 6; ++x) {
        const bool drawn = x >= destX && x < destX + width && y >= destY && y < destY + height;
        const int32_t place = drawn ? 100 + 10 * (sourceY + y - destY) + sourceX + x - destX : 0;
        EXPECT_EQ(*SampleAt(*RecordOf(image.Handle()), x, y, 0), place) << x << ", " << y;
        EXPECT_EQ(*SampleAt(*RecordOf(image.Handle()), x, y, 3), place) << x << ", " << y;
      }
    }
  }

  PluginHost host_{{.fenced = true}};
  MaskedPicture masked_;
};

TEST_F(MaskedRectangle, TheLongFormCutsOutAPartOfPictureAndMaskAlike) {
  auto image = Black();
  rbDrawMaskedPictureRGB8(image, masked_.picture, 1, 2, 3, 2, 2, 1, false);
  Expect(*image, 1, 2, 3, 2, 2, 1);
  auto cut = Black();
  rbDrawMaskedPictureRGB8(cut, masked_.picture, 4, -1, 100, 100, 1, 0, false);
  Expect(*cut, 4, 0, 2, 3, 1, 1);
  masked_.ExpectReferencesLeft(2);
}

TEST_F(MaskedRectangle, TheShortFormsFillInWhatIsMissing) {
  auto whole = Black();
  rbDrawMaskedPictureRGB2(whole, masked_.picture, false);
  Expect(*whole, 0, 0, 5, 4, 0, 0);
  auto placed = Black();
  rbDrawMaskedPictureRGB4(placed, masked_.picture, 2, 3, false);
  Expect(*placed, 2, 3, 4, 3, 0, 0);
  auto sized = Black();
  rbDrawMaskedPictureRGB6(sized, masked_.picture, 2, 3, 2, 1, false);
  Expect(*sized, 2, 3, 2, 1, 0, 0);
  masked_.ExpectReferencesLeft(3);
}

TEST_F(MaskedRectangle, TheFormsThatApplyTheMaskFillInTheSame) {
  const auto expectSame = [&](const auto &drawShort, int32_t destX, int32_t destY, int32_t width, int32_t height) {
    for (const uint8_t invert : {0, 1}) {
      auto image = Black(), expected = Black();
      drawShort(image, invert);
      rbDrawPictureApplyMaskRGB8(expected, masked_.picture, destX, destY, width, height, 0, 0, invert);
      EXPECT_EQ(StorageOf(*RecordOf(image)), StorageOf(*RecordOf(expected)));
      EXPECT_NE(StorageOf(*RecordOf(image)), StorageOf(*RecordOf(Black())));
    }
  };
  expectSame([&](REALobject image, uint8_t invert) { rbDrawPictureApplyMaskRGB2(image, masked_.picture, invert); }, 0,
             0, 5, 4);
  expectSame(
      [&](REALobject image, uint8_t invert) { rbDrawPictureApplyMaskRGB4(image, masked_.picture, 2, 3, invert); }, 2, 3,
      5, 4);
  expectSame(
      [&](REALobject image, uint8_t invert) { rbDrawPictureApplyMaskRGB6(image, masked_.picture, 2, 3, 2, 1, invert); },
      2, 3, 2, 1);
  masked_.ExpectReferencesLeft(12);
}

TEST_F(MaskedRectangle, AnEmptyOneChangesNothingYetBothAreAttachedAndReleased) {
  int32_t calls = 0;
  for (const Draw8 draw : kDraws8) {
    auto image = Black();
    YieldAlways(host_, image);
    const int64_t yields = Yields(host_);
    draw(image, masked_.picture, 6, 0, 5, 4, 0, 0, false);
    Expect(*image, 0, 0, 0, 0, 0, 0);
    ++calls;
    EXPECT_EQ(MaskQuestions(host_), calls);
    EXPECT_EQ(masked_.picture->LocksTaken(), calls);
    EXPECT_EQ(masked_.mask->LocksTaken(), calls);
    EXPECT_TRUE(masked_.IsReleased());
    EXPECT_EQ(Yields(host_), yields + 2);
  }
  masked_.ExpectReferencesLeft(2);
}

TEST_F(MaskedRectangle, SumsThatWrapReachOutsideNothing) {
  for (const Draw8 draw : kDraws8) {
    for (const int32_t wild : {INT32_MAX, INT32_MIN, INT32_MAX - 3, 1 << 30}) {
      auto image = Black();
      draw(image, masked_.picture, wild, 0, wild, 4, wild, 0, false);
      draw(image, masked_.picture, 0, wild, 4, wild, 0, wild, false);
      draw(image, masked_.picture, 1, 1, wild, wild, 0, 0, false);
    }
  }
  masked_.ExpectReferencesLeft(24);
}

TEST_F(MaskedRectangle, ColumnsThatANarrowerMaskLacksAreLeftAlone) {
  auto narrow = NewFilledPicture(host_, 3, 4, kGD);
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 3; ++x) narrow->SetPixel(x, y, {static_cast<uint8_t>(100 + 10 * y + x), 0, 0});
  }
  Picture &mask = *narrow;
  masked_.picture->SetMask(std::move(narrow));
  auto image = Black();
  rbDrawMaskedPictureRGB2(image, masked_.picture, false);
  Expect(*image, 0, 0, 3, 4, 0, 0);
  auto beyond = Black();
  rbDrawMaskedPictureRGB8(beyond, masked_.picture, 0, 0, 2, 2, 3, 0, false);
  Expect(*beyond, 0, 0, 0, 0, 0, 0);
  EXPECT_EQ(mask.References(), 3);
  mask.Unlock();
  mask.Unlock();
}

// Draws a picture of 7 x 4 with the mask in both ways, and expects the mask's first `columns` to have told the pixels
// of theirs and the others to be as they were.
void ExpectMaskedColumns(PluginHost &host, int32_t layout, Owned<Picture> made, int32_t columns) {
  Picture &mask = *made;
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < columns; ++x) {
      const auto place = static_cast<uint8_t>(100 + 10 * y + x);
      SetBytesAt(mask, x, y, {place, place, place, place});
    }
  }
  auto picture = NewFilledPicture(host, 7, 4, layout);
  picture->SetMask(std::move(made));
  auto stored = NewImage(host, 7, 4, ImageFormatRGBA), before = NewImage(host, 7, 4, ImageFormatRGBA);
  auto blended = NewImage(host, 7, 4, ImageFormatRGBA);
  rbDrawMaskedPictureRGB2(stored, picture, false);
  rbDrawPictureApplyMaskRGB2(blended, picture, false);
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 7; ++x) {
      SCOPED_TRACE(testing::Message() << x << ", " << y);
      const uint8_t *const old = SampleAt(*RecordOf(before), x, y, 0);
      const uint8_t *const pixel = SampleAt(*RecordOf(stored), x, y, 0);
      const uint8_t *const blend = SampleAt(*RecordOf(blended), x, y, 0);
      const int32_t place = 100 + 10 * y + x;
      const uint8_t red = picture->GetPixel(x, y).red;
      EXPECT_EQ(pixel[3], x < columns ? place : old[3]);
      EXPECT_EQ(pixel[0], x < columns ? red : old[0]);
      EXPECT_EQ(blend[0], x < columns ? ((255 - place) * red + old[0] * place) / 255 : old[0]);
    }
  }
  while (mask.References() > 1) mask.Unlock();
}

TEST(MaskedDrawingCalls, AGDMaskIsReadAsFarAsItsOwnRowsGo) {
  PluginHost host({.fenced = true});
  for (const int32_t columns : {7, 3}) {
    auto storage = std::make_unique<OddlyDescribedGD>(columns, 4);
    ExpectMaskedColumns(host, kGD, host.NewPicture(std::move(storage)), columns);
  }
}

TEST(MaskedDrawingCalls, ABitmapMaskIsReadAsFarAsItsRowBytesGo) {
  PluginHost host({.kind = HostKind::Desktop, .fenced = true});
  for (const int32_t columns : {7, 3}) {
    auto storage = std::make_unique<standalone::BitmapStorage>(columns, 4, standalone::BitmapLayout(), true);
    storage->Context().width = 5;
    ExpectMaskedColumns(host, 6, host.NewPicture(std::move(storage)), columns);
  }
}

TEST_F(MaskedRectangle, RowsThatALowerMaskLacksAreMaskedByItsFirst) {
  auto low = NewFilledPicture(host_, 5, 2, kGD);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 5; ++x) low->SetPixel(x, y, {static_cast<uint8_t>(40 + 10 * y + x), 0, 0});
  }
  Picture &mask = *low;
  masked_.picture->SetMask(std::move(low));
  auto image = Black();
  rbDrawMaskedPictureRGB8(image, masked_.picture, 0, 0, 5, 3, 0, 1, false);
  for (int32_t x = 0; x < 5; ++x) {
    EXPECT_EQ(*SampleAt(*RecordOf(image), x, 0, 3), 50 + x);
    EXPECT_EQ(*SampleAt(*RecordOf(image), x, 1, 3), 40 + x);
    EXPECT_EQ(*SampleAt(*RecordOf(image), x, 2, 3), 40 + x);
    EXPECT_EQ(*SampleAt(*RecordOf(image), x, 2, 0), 130 + x);
  }
  EXPECT_EQ(mask.References(), 2);
  mask.Unlock();
}

// --- rows and yields ---

TEST(MaskedDrawingYields, AtTheStartBeforeTheRowsAfterEachAndAtTheEnd) {
  PluginHost host;
  const MaskedPicture masked(host, 4, 6);
  for (const Draw8 draw : kDraws8) {
    auto image = NewImage(host, 4, 10, ImageFormatRGBA);
    YieldAlways(host, image);
    std::vector<int32_t> locksHeld;
    host->onYield = [&] { locksHeld.push_back(masked.picture->LocksHeld() + masked.mask->LocksHeld()); };
    draw(image, masked.picture, 0, 0, 4, 3, 0, 0, false);
    // Both are locked from the second yield to the last but one.
    EXPECT_EQ(locksHeld, (std::vector<int32_t>{0, 2, 2, 2, 2, 0}));
  }
  masked.ExpectReferencesLeft(2);
}

TEST(MaskedDrawingYields, APictureThatCannotBeReadYieldsOnce) {
  PluginHost host;
  auto image = NewImage(host, 4, 10, ImageFormatRGBA);
  YieldAlways(host, image);
  rbDrawMaskedPictureRGB2(image, nullptr, false);
  EXPECT_EQ(Yields(host), 1);
}

TEST(MaskedDrawingYields, WithoutAMaskThereAreAsMany) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 3, kGD);
  auto image = NewImage(host, 4, 10, ImageFormatRGBA);
  YieldAlways(host, image);
  rbDrawMaskedPictureRGB2(image, picture, false);
  EXPECT_EQ(Yields(host), 6);
  rbDrawPictureApplyMaskRGB2(image, picture, false);
  EXPECT_EQ(Yields(host), 12);
}

TEST(MaskedDrawingYields, AnImageThatIsClosedInAYieldGetsNoMoreRows) {
  PluginHost host;
  const MaskedPicture masked(host, 4, 3);
  for (const Draw2 draw : kDraws2) {
    // The first yield comes before the pictures are attached, the third one after the first row.
    for (const int32_t closingYield : {1, 2, 3}) {
      auto image = NewImage(host, 4, 3, ImageFormatRGBA), whole = NewImage(host, 4, 3, ImageFormatRGBA);
      ImageClassData &record = *RecordOf(image);
      const auto size = static_cast<size_t>(record.RowSize);
      Bytes expected = StorageOf(record);
      draw(whole, masked.picture, false);
      if (closingYield == 3) std::copy_n(StorageOf(*RecordOf(whole)).begin(), size, expected.begin());
      YieldAlways(host, image);
      int32_t yields = 0;
      host->onYield = [&] {
        if (++yields == closingYield) record.GetRow = nullptr;
      };
      draw(image, masked.picture, false);
      EXPECT_EQ(StorageOf(record), expected);
      EXPECT_EQ(yields, 6);
      EXPECT_TRUE(masked.IsReleased());
    }
  }
  masked.ExpectReferencesLeft(12);
}

TEST(MaskedDrawingYields, AViewWhoseParentIsClosedInAYieldGetsNoMoreRows) {
  PluginHost host;
  const MaskedPicture masked(host, 4, 3);
  for (const Draw2 draw : kDraws2) {
    for (const int32_t closingYield : {1, 2, 3, 6}) {
      const ClosedParent drawn = DrawWhileParentCloses(host, ImageFormatRGBA, closingYield,
                                                       [&](REALobject view) { draw(view, masked.picture, false); });
      EXPECT_EQ(drawn.after, drawn.atClosing);
      EXPECT_EQ(drawn.atClosing != drawn.before, closingYield > 2);
      EXPECT_EQ(drawn.yields, 6);
    }
  }
  masked.ExpectReferencesLeft(8);
}

TEST(MaskedDrawingYields, AnImageThatIsConstructedAnewInAYieldGetsOnlyRowsThatFit) {
  PluginHost host;
  const MaskedPicture masked(host, 4, 3);
  for (const Draw2 draw : kDraws2) {
    for (const bool narrower : {true, false}) {
      auto image = NewImage(host, 4, 3, ImageFormatRGBA);
      ImageClassData &record = *RecordOf(image);
      YieldAlways(host, image);
      int32_t yields = 0;
      Bytes after;
      host->onYield = [&] {
        if (++yields != 3) return;
        (narrower ? record.Width : record.Height) = 1;
        after = StorageOf(record);
      };
      draw(image, masked.picture, false);
      EXPECT_EQ(StorageOf(record), after);
    }
  }
  masked.ExpectReferencesLeft(4);
}

TEST(MaskedDrawingYields, HostCodeInAYieldMayMoveTheOffsets) {
  PluginHost host;
  const MaskedPicture masked(host, 40, 3);
  for (const Draw2 draw : kDraws2) {
    auto image = NewImage(host, 40, 3, ImageFormatRGBA);
    ImageClassData &record = *RecordOf(image);
    // Row by row with the offsets that hold there.
    auto expected = NewImage(host, 40, 3, ImageFormatRGBA);
    ImageClassData &plain = *RecordOf(expected);
    const auto moveFor = [](ImageClassData &moved, int64_t row) {
      moved.RedOffset = row == 1 ? 3 : 0;
      moved.AlphaOffset = row == 1 ? 0 : 3;
    };
    for (int32_t y = 0; y < 3; ++y) {
      moveFor(plain, y);
      (draw == kDraws2[0] ? rbDrawMaskedPictureRGB8 : rbDrawPictureApplyMaskRGB8)(expected, masked.picture, 0, y, 40, 1,
                                                                                  0, y, false);
    }
    YieldAlways(host, image);
    int32_t yields = 0;
    host->onYield = [&] { moveFor(record, ++yields - 2); };
    draw(image, masked.picture, false);
    EXPECT_EQ(StorageOf(record), StorageOf(plain));
  }
  masked.ExpectReferencesLeft(8);
}

TEST(MaskedDrawingRows, ARowThatCannotBeHadIsLeftOut) {
  PluginHost host;
  const MaskedPicture masked(host, 40, 3);
  for (const Draw2 draw : kDraws2) {
    auto image = NewImage(host, 40, 3, ImageFormatRGBA), whole = NewImage(host, 40, 3, ImageFormatRGBA);
    ImageClassData &record = *RecordOf(image);
    const Bytes before = StorageOf(record);
    record.GetRow = [](ImageClassData *image, int32_t index) {
      return index == 1 ? nullptr : GetRowLinear(image, index);
    };
    draw(image, masked.picture, false);
    draw(whole, masked.picture, false);
    Bytes expected = StorageOf(*RecordOf(whole));
    std::copy_n(before.begin() + record.RowSize, record.RowSize, expected.begin() + record.RowSize);
    EXPECT_EQ(StorageOf(record), expected);
    EXPECT_NE(expected, before);
  }
  masked.ExpectReferencesLeft(4);
}

}  // namespace
}  // namespace zvk::pictures
