// Random numbers that are the same on every machine for the same start.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>
#include <span>

namespace standalone {

class RandomSource {
 public:
  explicit RandomSource(uint64_t seed) : engine_(seed) {}

  // A whole number from the lowest to the highest, both among them.
  int64_t Between(int64_t lowest, int64_t highest) {
    return lowest + static_cast<int64_t>(engine_() % static_cast<uint64_t>(highest - lowest + 1));
  }
  // True once in `times` on average.
  bool OneIn(int64_t times) { return Between(1, times) == 1; }

  template <class T>
  T OneOf(std::initializer_list<T> choices) {
    return OneOf(std::span<const T>(choices.begin(), choices.size()));
  }
  template <class T>
  T OneOf(std::span<const T> choices) {
    return choices[static_cast<size_t>(Between(0, static_cast<int64_t>(choices.size()) - 1))];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace standalone
