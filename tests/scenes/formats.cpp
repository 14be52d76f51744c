#include "tests/scenes/formats.h"

#include "tests/naive/formats.h"

namespace scenes {

int32_t AnyFormat(Random &random) {
  const int32_t format = random.Between(1, 40);
  return format < 14 ? format : format + 1;
}

int32_t AnyGrayOrRGBFormat(Random &random) { return random.OneIn(10) ? AnyFormat(random) : random.Between(1, 13); }

int32_t AnyLikelyFormat(Random &random) { return random.OneIn(10) ? AnyFormat(random) : random.Of(kFamilyFormats); }

int32_t AnyFormatBeside(Random &random, int32_t format) {
  switch (random.Between(0, 2)) {
    case 0:
      return format;
    case 1:
      return AnyFormat(random);
    default:
      return random.Of({1, 2, 7, 11, 12, 24, 41});
  }
}

int32_t PixelSizeOf(int32_t format) { return static_cast<int32_t>(naive::kPixelsOfFormat.at(format).size()); }

}  // namespace scenes
