#include "tests/scenes/random.h"

#include <algorithm>

namespace scenes {

int32_t Random::Between(int32_t least, int32_t most) {
  const uint64_t count = static_cast<uint64_t>(int64_t{most} - least) + 1;
  return static_cast<int32_t>(least + static_cast<int64_t>(Bits() * count >> 32));
}

uint8_t Random::Byte() {
  const uint32_t bits = Bits();
  return bits % 8 == 0 ? 0 : bits % 8 == 1 ? 255 : static_cast<uint8_t>(bits >> 8);
}

int32_t Random::Number() {
  switch (Between(0, 9)) {
    case 0:
    case 1:
      return static_cast<int32_t>(Bits());
    case 2:
      return INT32_MAX - Between(0, 40);
    case 3:
      return INT32_MIN + Between(0, 40);
    case 4:
      return static_cast<int32_t>(Bits() << 16);
    default:
      return Between(-40, 60);
  }
}

int32_t Random::Side(int32_t most) {
  switch (Between(0, 5)) {
    case 0:
      return Between(1, most);
    case 1:
      return std::min(most, Of({3, 5, 7, 11, 13, 17, 19, 31, 67, 127}));
    default:
      return Between(1, std::min(most, 20));
  }
}

void FillNoise(uint8_t *bytes, size_t count, Random &random) {
  std::generate_n(bytes, count, [&] { return random.Byte(); });
}

void FillNoise(uint8_t *bytes, size_t count, uint32_t seed) {
  Random random(seed);
  FillNoise(bytes, count, random);
}

Bytes Noise(size_t count, Random &random) {
  Bytes bytes(count);
  FillNoise(bytes.data(), count, random);
  return bytes;
}

Bytes Noise(size_t count, uint32_t seed) {
  Random random(seed);
  return Noise(count, random);
}

}  // namespace scenes
