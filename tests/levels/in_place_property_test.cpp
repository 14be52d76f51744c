// Every operation that changes an image in place against plain loops: all formats, storage of every kind, chains of
// views, rectangles anywhere. All bytes of the storage are compared.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "image/image_formats.h"
#include "levels/auto_level.h"
#include "levels/fill.h"
#include "levels/fill_apply.h"
#include "levels/invert.h"
#include "tests/naive/in_place.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/rectangles.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/views.h"

namespace zvk::levels {
namespace {

using namespace scenes;
using naive::Rect;

Rect AnyRect(Random &random, const ImageClassData &image) {
  const Rectangle any = AnyRectangle(random, std::max(image.Width, 0), std::max(image.Height, 0));
  return {any.x, any.y, any.width, any.height};
}

// An operation and what it is by the plain loops; both return what the handler does, or 0.
struct Operation {
  std::string name;
  std::function<int32_t(REALobject)> real;
  std::function<int32_t(ImageClassData &)> plain;
};

template <class Call>
std::function<int32_t(ImageClassData &)> Plain(Call call) {
  return [call](ImageClassData &image) {
    call(image);
    return 0;
  };
}

template <class Call>
std::function<int32_t(REALobject)> Real(Call call) {
  return [call](REALobject image) {
    call(image);
    return 0;
  };
}

int32_t AnySample(Random &random) { return random.OneIn(5) ? random.Number() : random.Between(0, 255); }

Operation AnyOperation(Random &random, const ImageClassData &image, const uint8_t *end) {
  const auto [x, y, w, h] = AnyRect(random, image);
  const Rect r{x, y, w, h};
  const std::array<int32_t, 3> colour{AnySample(random), AnySample(random), AnySample(random)};
  const auto [red, green, blue] = colour;
  const int32_t alpha = AnySample(random), value = AnySample(random);
  // Whole images by their own handlers, now and then.
  const Rect all{0, 0, image.Width, image.Height};
  const bool whole = random.OneIn(4);
  switch (random.Between(0, 8)) {
    case 0:
      return {"FillRect", whole ? Real([=](REALobject o) { FillRect1(o, value); }) : Real([=](REALobject o) {
                FillRect5(o, x, y, w, h, value);
              }),
              Plain([=](ImageClassData &i) { naive::FillRect(i, whole ? all : r, value, end); })};
    case 1:
      return {"FillRectRGB",
              whole ? Real([=](REALobject o) { FillRectRGB1(o, red, green, blue); })
                    : Real([=](REALobject o) { FillRectRGB5(o, x, y, w, h, red, green, blue); }),
              Plain([=](ImageClassData &i) { naive::FillRectRGB(i, whole ? all : r, colour); })};
    case 2:
      return {"FillRectRGB with alpha",
              whole ? Real([=](REALobject o) { FillRectRGBA1(o, red, green, blue, alpha); })
                    : Real([=](REALobject o) { FillRectRGBA5(o, x, y, w, h, red, green, blue, alpha); }),
              Plain([=](ImageClassData &i) { naive::FillRectRGBA(i, whole ? all : r, colour, alpha); })};
    case 3:
    case 4:
      return {"FillRectApply",
              [=](REALobject o) {
                return whole ? FillRectApplyRGBA1(o, red, green, blue, alpha)
                             : FillRectApplyRGBA5(o, x, y, w, h, red, green, blue, alpha);
              },
              [=](ImageClassData &i) { return naive::FillRectApply(i, whole ? all : r, colour, alpha); }};
    case 5:
      return {"FillRectRandom", whole ? Real([=](REALobject o) { FillRectRandom1(o); }) : Real([=](REALobject o) {
                FillRectRandom5(o, x, y, w, h);
              }),
              Plain([=](ImageClassData &i) { naive::FillRectRandom(i, whole ? all : r, end); })};
    case 6:
      if (whole) return {"ClearRect", Real(ClearRect1), Plain([](ImageClassData &i) { naive::ClearRect(i); })};
      return {"ClearRect of a rectangle", Real([=](REALobject o) { ClearRect5(o, x, y, w, h); }),
              Plain([=](ImageClassData &i) { naive::ClearRect(i, r); })};
    case 7:
      return {"Invert",
              whole ? Real([=](REALobject o) { Invert1(o); }) : Real([=](REALobject o) { Invert5(o, x, y, w, h); }),
              Plain([=](ImageClassData &i) { naive::Invert(i, whole ? all : r); })};
    default:
      return {"AutoLevel", [=](REALobject o) { return whole ? AutoLevel1(o) : AutoLevel5(o, x, y, w, h); },
              [=](ImageClassData &i) { return naive::AutoLevel(i, whole ? all : r); }};
  }
}

void ExpectAsPlain(const StoredImage &storage, REALobject image, const Operation &operation) {
  const Bytes before = storage.Bytes();
  std::srand(3);
  const int32_t expectedResult = operation.plain(*RecordOf(image));
  const int expectedNext = std::rand();
  const Bytes expected = storage.Bytes();
  storage.SetBytes(before);
  std::srand(3);
  RC_LOG() << operation.name << " on an image of format " << RecordOf(image)->ImageFormat << "\n";
  RC_ASSERT(operation.real(image) == expectedResult);
  RC_ASSERT(std::rand() == expectedNext);
  // Not compared by a macro that would print all of them.
  const bool alike = storage.Bytes() == expected;
  RC_ASSERT(alike);
}

// Puts channels where other ones are, in whole pixels or not.
void MoveOffsets(Random &random, REALobject image) {
  const int32_t last = RecordOf(image)->PixelSize - 1;
  for (const auto set : {SetRedOffset, SetGreenOffset, SetBlueOffset, SetGrayOffset, SetAlphaOffset}) {
    if (random.OneIn(2)) set(image, 0, random.Between(0, last));
  }
}

void Check(const std::vector<Kind> &kinds) {
  PluginHost host({.fenced = true});
  CheckCases([&](Random &random) {
    const Kind kind = random.Of(kinds);
    const int32_t format = AnyFormat(random), width = random.Side(140);
    const int32_t height = random.Between(1, kind == Kind::File ? 20 : 6);
    StoredImage storage(host, kind, width, height, format,
                        AnyOverlappingRowLayout(random, kind, width, height, format));
    storage.Fill(random);
    if (random.OneIn(4)) {  // few tones, for the levels
      Bytes bytes = storage.Bytes();
      for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(90 + (byte >> 4));
      storage.SetBytes(bytes);
    }
    const auto image = AnyView(random, storage, {.emptyClips = true});
    // A run that hangs over the last pixel ends with the storage, which is plain to see only in an image of its own.
    const bool isMemory = kind == Kind::Memory;
    if (isMemory && random.OneIn(3)) MoveOffsets(random, image);
    const uint8_t *const end = isMemory ? storage.All().data() + storage.All().size() : nullptr;
    for (int32_t operations = random.Between(1, 4); operations > 0; --operations) {
      ExpectAsPlain(storage, image, AnyOperation(random, *RecordOf(image), end));
    }
  });
}

TEST(InPlaceProperty, ImagesInMemory) { Check({Kind::Memory}); }
TEST(InPlaceProperty, ImagesOverAMemoryBlock) { Check({Kind::Block, Kind::Backwards}); }
TEST(InPlaceProperty, ImagesOverARowTable) { Check({Kind::Table, Kind::Picture}); }
TEST(InPlaceProperty, ImagesInAFile) { Check({Kind::File}); }

}  // namespace
}  // namespace zvk::levels
