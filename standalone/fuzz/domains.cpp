#include "standalone/fuzz/domains.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/names.h"

namespace standalone {
namespace {

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

// More than any image of the pool has in all its rows. Nobody checks how long a block or a string is.
constexpr int32_t kBlockSize = kMostPixels * 16 + 4096;
constexpr int32_t kLargestBlockRow = 1024;
constexpr int32_t kLongestTempPixel = 16;

struct IntegerRange {
  const char *name;
  int32_t lowest;
  int32_t highest;
  bool goesBeyond;  // at times any integer of 32 bits
};

// Parameters by name. What costs time with its size stays small.
constexpr IntegerRange kRanges[] = {
    {"ImageFormat", -1, 45, true}, {"theImageFormat", -1, 45, true},  {"mode", 0, 8, true},
    {"threads", -2, 4, false},     {"matrix", 0, 11, true},           {"levels", -2, 260, true},
    {"range", -3, 6, true},        {"level", -5, 45, true},           {"MatrixDimension", -1, 7, false},
    {"Iterations", -1, 4, false},  {"BlockSize", -1, 1 << 20, false}, {"index", -2, 45, true},
    {"Threshold", -2, 300, true},
};

bool IsConstructor(std::string_view method) { return NamesEqual(method, "Constructor"); }
bool IsScaling(std::string_view method) { return NamesEqual(method, "Scale") || NamesEqual(method, "ScaleMT"); }
bool Makes(std::string_view method) { return IsConstructor(method) || NamesEqual(method, "CreatePictureZVK"); }

bool HasParameter(const MethodDeclaration &method, std::string_view name) {
  return std::ranges::any_of(method.parameters, [&](const Parameter &each) { return NamesEqual(each.name, name); });
}

int32_t AnyInteger(RandomSource &random) {
  if (random.OneIn(2)) return static_cast<int32_t>(random.Between(-300, 300));
  return random.OneOf({0, 1, -1, 255, 256, kLowest, kLowest + 1, kHighest, kHighest - 1, 1 << 30, -(1 << 30), 65536});
}

int32_t AnySize(RandomSource &random, std::string_view method, const MethodDeclaration &declaration) {
  // Of memory blocks and files only the caller knows what they can hold.
  const bool isBounded =
      IsConstructor(method) && (HasParameter(declaration, "Buf") || HasParameter(declaration, "FilePath"));
  if (isBounded || !random.OneIn(20)) return static_cast<int32_t>(random.Between(1, kLargestSide));
  return random.OneOf({0, -1, kLowest, kHighest, 65536, 1'000'000, (1 << 30) + 10});
}

Value SizeWithin(RandomSource &random, const Value &self, const char *property) {
  const int32_t limit = self.Get(property).AsInteger();
  return static_cast<int32_t>(random.Between(random.OneIn(10) ? -1 : 1, std::max(limit, 1)));
}

Value AnyNumber(RandomSource &random, std::string_view method, const MethodDeclaration &declaration, const Value &self,
                std::string_view name) {
  if (IsScaling(method) && NamesEqual(name, "width")) return SizeWithin(random, self, "Width");
  if (IsScaling(method) && NamesEqual(name, "height")) return SizeWithin(random, self, "Height");
  const bool isSize = NamesEqual(name, "width") || NamesEqual(name, "height");
  if (isSize && Makes(method)) return AnySize(random, method, declaration);
  if (IsConstructor(method) && NamesEqual(name, "RowSize")) {
    return static_cast<int32_t>(random.Between(0, kLargestBlockRow));
  }
  for (const IntegerRange &range : kRanges) {
    if (!NamesEqual(name, range.name)) continue;
    if (range.goesBeyond && random.OneIn(16)) return AnyInteger(random);
    return static_cast<int32_t>(random.Between(range.lowest, range.highest));
  }
  static constexpr std::array kCoordinates = {"x",         "y",     "w",     "h",       "width",   "height",
                                              "DestWidth", "DestX", "DestY", "SourceX", "SourceY", "DestHeight"};
  const bool isCoordinate = std::ranges::any_of(kCoordinates, [&](const char *each) { return NamesEqual(name, each); });
  return isCoordinate ? AnyCoordinate(random) : AnyInteger(random);
}

double AnyReal(RandomSource &random) {
  if (random.OneIn(2)) return static_cast<double>(random.Between(-4000, 4000)) / 100;
  if (random.OneIn(2)) return static_cast<double>(random.Between(0, 100)) / 100;
  return random.OneOf({0.0,
                       -0.0,
                       0.5,
                       1.0,
                       2.9,
                       45.0,
                       90.0,
                       135.0,
                       180.0,
                       270.0,
                       359.9,
                       -90.0,
                       1e9,
                       -1e9,
                       1e300,
                       -1e300,
                       std::numeric_limits<double>::infinity(),
                       -std::numeric_limits<double>::infinity(),
                       std::numeric_limits<double>::quiet_NaN(),
                       1e-300});
}

Value AnyArray(RandomSource &random) {
  std::vector<int32_t> values(static_cast<size_t>(random.OneOf({0, 1, 9, 25, 255, 256, 300, 2600})));
  for (int32_t &value : values) {
    value = random.OneIn(8) ? AnyInteger(random) : static_cast<int32_t>(random.Between(-10, 256));
  }
  return values;
}

Value AnyBlock(RandomSource &random) {
  Owned<MemoryBlock> block = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(kBlockSize));
  for (int32_t i = 0; i < kBlockSize; i += 97) block->Data()[i] = static_cast<uint8_t>(random.Between(0, 255));
  return block;
}

Value AnyText(RandomSource &random) {
  std::string bytes(random.OneIn(10) ? 0 : kBlockSize, static_cast<char>(random.Between(0, 255)));
  for (size_t i = 0; i < bytes.size(); i += 97) bytes[i] = static_cast<char>(random.Between(0, 255));
  return Owned<String>::Adopt(String::Make(bytes, random.OneOf({Encoding::Binary, Encoding::UTF8, Encoding::UTF16})));
}

// The image that an operation writes. Only the caller can know that one is large enough.
Value AnyDest(RandomSource &random, FuzzPool &pool, const Value &self) {
  if (random.OneIn(3)) return nullptr;
  const int32_t side = std::max(self.Get("Width").AsInteger(), self.Get("Height").AsInteger());
  return pool.CoveringImage(side, side, 1);
}

Value AnyTemp(RandomSource &random, FuzzPool &pool, const Value &self) {
  if (!random.OneIn(8)) return nullptr;
  return pool.CoveringImage(self.Get("Width").AsInteger(), kLargestSide * 2, kLongestTempPixel);
}

Value AnyObject(RandomSource &random, FuzzPool &pool, const Value &self, const Parameter &parameter) {
  const std::string &type = parameter.type.className;
  if (NamesEqual(type, "PictureZVK")) {
    if (NamesEqual(parameter.name, "dest")) return AnyDest(random, pool, self);
    if (NamesEqual(parameter.name, "temp")) return AnyTemp(random, pool, self);
    return pool.AnyImage();
  }
  if (NamesEqual(type, "Picture")) return pool.AnyPicture();
  if (NamesEqual(type, "PictureFactoryZVK")) return pool.AnyFactory();
  if (NamesEqual(type, "MemoryBlock")) return random.OneIn(20) ? Value() : AnyBlock(random);
  if (NamesEqual(type, "FolderItem")) return random.OneIn(20) ? Value() : pool.NewFile();
  return nullptr;
}

}  // namespace

int32_t AnyCoordinate(RandomSource &random) {
  return random.OneIn(6) ? AnyInteger(random) : static_cast<int32_t>(random.Between(-10, kLargestSide + 10));
}

Value AnyArgument(RandomSource &random, FuzzPool &pool, const Value &self, std::string_view method,
                  const MethodDeclaration &declaration, const Parameter &parameter) {
  if (parameter.type.isArray) return random.OneIn(20) ? Value() : AnyArray(random);
  switch (parameter.type.kind) {
    case TypeKind::Integer:
    case TypeKind::Int64:
      return AnyNumber(random, method, declaration, self, parameter.name);
    case TypeKind::Double:
      return AnyReal(random);
    case TypeKind::Boolean:
      return random.OneIn(2);
    case TypeKind::Color:
      return Color{static_cast<uint32_t>(random.Between(0, 0xFFFFFFFF))};
    case TypeKind::String:
      return AnyText(random);
    case TypeKind::Object:
      return AnyObject(random, pool, self, parameter);
    case TypeKind::None:
      break;
  }
  return nullptr;
}

bool IsInDomain(const MethodDeclaration &method) {
  // A clone has the same buffer as its image, and both would give it back.
  return !NamesEqual(method.name, "Clone");
}

}  // namespace standalone
