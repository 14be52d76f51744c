// The one source of chance of the tests. All that is random about a case follows from its number, in both word sizes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <vector>

namespace scenes {

using Bytes = std::vector<uint8_t>;

class Random {
 public:
  explicit Random(uint32_t number) : engine_(number) {}

  // 32 random bits.
  uint32_t Bits() { return static_cast<uint32_t>(engine_()); }
  // A number from `least` to `most`, all alike.
  int32_t Between(int32_t least, int32_t most);
  bool OneIn(int32_t count) { return Between(1, count) == 1; }
  // Any of the values, all alike.
  template <class Value>
  Value Of(std::initializer_list<Value> values) {
    return values.begin()[Index(values.size())];
  }
  template <class Value>
  Value Of(const std::vector<Value> &values) {
    return values[Index(values.size())];
  }

  // A byte, 0 and 255 more often than the others.
  uint8_t Byte();
  // Any number, often one near the limits, near the size of a small image or with empty low bytes.
  int32_t Number();
  // A width or height: mostly small, at times up to `most`, which is long enough for the loops that take many pixels at
  // once; often an odd prime, which no such loop divides.
  int32_t Side(int32_t most);
  // A position near a small image, in it more often than not.
  int32_t Position() { return OneIn(2) ? 0 : Between(-4, 12); }
  // The width or height of a rectangle near a small image: now and then long, empty or below 0.
  int32_t Size() { return OneIn(2) ? Between(1, 150) : Between(-16, 16); }

 private:
  size_t Index(size_t count) { return static_cast<size_t>(Between(0, static_cast<int32_t>(count) - 1)); }

  std::mt19937 engine_;
};

// Random bytes, 0 and 255 more often than the others.
void FillNoise(uint8_t *bytes, size_t count, Random &random);
void FillNoise(uint8_t *bytes, size_t count, uint32_t seed);
Bytes Noise(size_t count, Random &random);
Bytes Noise(size_t count, uint32_t seed);

}  // namespace scenes
