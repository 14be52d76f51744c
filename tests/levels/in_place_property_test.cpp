// Every operation that changes an image in place against plain loops: all formats, storage of every kind, chains of
// views, rectangles anywhere. All bytes of the storage are compared.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <sys/mman.h>

#include <functional>
#include <string>
#include <utility>

#include "image/file_storage.h"
#include "levels/auto_level.h"
#include "levels/fill.h"
#include "levels/fill_apply.h"
#include "levels/invert.h"
#include "tests/levels/in_place_testing.h"
#include "tests/naive/in_place.h"

namespace zvk::levels {
namespace {

using namespace in_place_testing;
using naive::Rect;

// A number from `least` to `most`, all alike from the first case on.
int32_t Any(int32_t least, int32_t most) {
  return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(least, most + 1));
}

bool OneIn(int32_t count) { return Any(1, count) == 1; }

int32_t AnyNumber() {
  return *rc::gen::resize(
      rc::kNominalSize,
      rc::gen::oneOf(rc::gen::arbitrary<int32_t>(), rc::gen::inRange<int32_t>(INT32_MAX - 40, INT32_MAX),
                     rc::gen::inRange<int32_t>(INT32_MIN, INT32_MIN + 40), rc::gen::inRange<int32_t>(-40, 60)));
}

// A rectangle around an image, sometimes with sums that wrap.
Rect AnyRect(const ImageClassData &image) {
  if (OneIn(4)) return {AnyNumber(), AnyNumber(), AnyNumber(), AnyNumber()};
  if (OneIn(4)) return {0, 0, image.Width, image.Height};
  const int32_t width = std::max(image.Width, 0), height = std::max(image.Height, 0);
  return {Any(-3, width + 2), Any(-3, height + 2), Any(-width - 3, width + 4), Any(-height - 3, height + 4)};
}

enum class Kind { Memory, Block, Table, File };

// An image and all the bytes under it.
struct Storage {
  Storage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format)
      : kind(kind), image(host.New("PictureZVK")) {
    if (kind == Kind::Memory) {
      ImageConstructor(image, width, height, format);
      bytes = Record().Buffer;
      size = static_cast<size_t>(Record().TotalSize);
    } else if (kind == Kind::File) {
      ImageConstructorFile(image, width, height, format, 0, nullptr);
      size = static_cast<size_t>(Record().TotalSize);
      void *const mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, Record().FileHandle, 0);
      RC_ASSERT((mapping != MAP_FAILED));
      bytes = static_cast<uint8_t *>(mapping);
      UseBlocksOf(Any(5, 8));  // the fewest are five
    } else {
      ImageClassData shape{};
      InitImageClassData(&shape, width, height, format);
      const int32_t pixels = width * shape.PixelSize;
      // Rows may overlap, and run backwards; those of a table may do neither.
      const int32_t distance = kind == Kind::Table ? pixels + Any(0, 5) : Any(-pixels - 5, pixels + 5);
      const int32_t span = (height - 1) * distance;
      own.resize(static_cast<size_t>(std::abs(span) + std::max(pixels, distance)));
      bytes = own.data();
      size = own.size();
      block = Owned<standalone::MemoryBlock>::Adopt(standalone::MemoryBlock::Over(bytes + (span < 0 ? -span : 0)));
      ImageConstructorMemory(image, block, width, height, format, distance);
      if (kind == Kind::Table) {
        for (int32_t y = 0; y < height; ++y) table.push_back(GetRowLinear(&Record(), (y + height / 2) % height));
        if (OneIn(3)) table[static_cast<size_t>(Any(0, height - 1))] = nullptr;
        Record().RowTable = table.data();
        Record().Buffer = nullptr;
        Record().GetRow = OneIn(2) ? GetRowGDImage : GetRowGDImageMirrored;
      }
    }
    RC_ASSERT(Record().Valid);
    const auto seed = static_cast<uint32_t>(Any(0, 1000000));
    const bool flat = OneIn(4);
    for (size_t i = 0; i < size; ++i) {
      const uint32_t mixed = (seed + static_cast<uint32_t>(i)) * 2654435761u;
      const auto value = static_cast<uint8_t>(flat ? 90 + (mixed >> 28) : mixed >> 24);
      bytes[i] = mixed % 7 == 0 ? uint8_t{0} : mixed % 11 == 0 ? uint8_t{255} : value;
    }
  }
  Storage(const Storage &) = delete;
  Storage &operator=(const Storage &) = delete;
  ~Storage() {
    if (kind == Kind::File) munmap(bytes, size);
  }

  // Gives a mapped image blocks of a few rows, as if it were much higher.
  void UseBlocksOf(int32_t rows) const {
    ImageClassData &record = Record();
    munmap(record.MappingBase, static_cast<size_t>(record.MappingBlockSize));
    record.Buffer = record.MappingBase = nullptr;
    record.IsMapped = false;
    record.MappedFirstRow = record.MappedLastRow = -1;
    record.MappedRowCount = rows;
    record.MappingBlockSize = rows * record.RowSize;
  }

  ImageClassData &Record() const { return *RecordOf(image); }
  Bytes All() const { return {bytes, bytes + size}; }
  void Set(const Bytes &all) const { std::copy(all.begin(), all.end(), bytes); }

  Kind kind;
  Bytes own;
  std::vector<uint8_t *> table;
  uint8_t *bytes = nullptr;
  size_t size = 0;
  Owned<standalone::MemoryBlock> block;
  Owned<Object> image;
};

// Views of the image as chance has them; the last one keeps the others.
Owned<Object> AnyView(const Storage &storage) {
  Owned<Object> image = storage.image;
  if (storage.kind == Kind::Table) return image;
  const int32_t steps = Any(0, 3);
  for (int32_t step = 0; step < steps; ++step) {
    const ImageClassData &record = *RecordOf(image);
    if (record.Width < 1 || record.Height < 1) break;
    Owned<Object> view;
    switch (Any(0, 3)) {
      case 0:
        view = Adopt(GetMirroredView(image));
        break;
      case 1:
        view = Adopt((*rc::gen::element(RedChannel, GreenChannel, BlueChannel, GrayChannel, AlphaChannel, CyanChannel,
                                        BlackChannel, RGBChannel, CMYKChannel))(image));
        break;
      default: {
        const Rect r = AnyRect(record);
        view = Adopt(ClipImage5(image, r.x, r.y, r.w, r.h));
      }
    }
    if (view) image = view;
  }
  return image;
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

int32_t AnySample() { return OneIn(5) ? AnyNumber() : Any(0, 255); }

Operation AnyOperation(const ImageClassData &image, const uint8_t *end) {
  const auto [x, y, w, h] = AnyRect(image);
  const Rect r{x, y, w, h};
  const std::array<int32_t, 3> colour{AnySample(), AnySample(), AnySample()};
  const auto [red, green, blue] = colour;
  const int32_t alpha = AnySample(), value = AnySample();
  // Whole images by their own handlers, now and then.
  const Rect all{0, 0, image.Width, image.Height};
  const bool whole = OneIn(4);
  switch (Any(0, 8)) {
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

void ExpectAsPlain(const Storage &storage, REALobject image, const Operation &operation) {
  const Bytes before = storage.All();
  std::srand(3);
  const int32_t expectedResult = operation.plain(*RecordOf(image));
  const int expectedNext = std::rand();
  const Bytes expected = storage.All();
  storage.Set(before);
  std::srand(3);
  RC_LOG() << operation.name << " on an image of format " << RecordOf(image)->ImageFormat << "\n";
  RC_ASSERT(operation.real(image) == expectedResult);
  RC_ASSERT(std::rand() == expectedNext);
  // Not compared by a macro that would print all of them.
  const bool alike = storage.All() == expected;
  RC_ASSERT(alike);
}

// Puts channels where other ones are, in whole pixels or not.
void MoveOffsets(REALobject image) {
  const int32_t last = RecordOf(image)->PixelSize - 1;
  for (const auto set : {SetRedOffset, SetGreenOffset, SetBlueOffset, SetGrayOffset, SetAlphaOffset}) {
    if (OneIn(2)) set(image, 0, Any(0, last));
  }
}

void Check(Kind kind) {
  PluginHost host;
  EXPECT_TRUE(rc::check([&] {
    int32_t format = Any(1, 40);
    if (format == 14) format = 41;
    const int32_t width = OneIn(3) ? Any(60, 140) : Any(1, 20);
    const Storage storage(host, kind, width, Any(1, kind == Kind::File ? 20 : 6), format);
    const auto image = AnyView(storage);
    // A run that hangs over the last pixel ends with the storage, which is plain to see only in an image of its own.
    if (kind == Kind::Memory && OneIn(3)) MoveOffsets(image);
    const uint8_t *const end = kind == Kind::Memory ? storage.bytes + storage.size : nullptr;
    const int32_t operations = Any(1, 4);
    for (int32_t i = 0; i < operations; ++i) ExpectAsPlain(storage, image, AnyOperation(*RecordOf(image), end));
  }));
}

TEST(InPlaceProperty, ImagesInMemory) { Check(Kind::Memory); }
TEST(InPlaceProperty, ImagesOverAMemoryBlock) { Check(Kind::Block); }
TEST(InPlaceProperty, ImagesOverARowTable) { Check(Kind::Table); }
TEST(InPlaceProperty, ImagesInAFile) { Check(Kind::File); }

}  // namespace
}  // namespace zvk::levels
