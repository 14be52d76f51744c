// The rectangle that is moved from one image to another: an operation that tells a rule of its own for it must come to
// that of FitTransfer.
#pragma once

#include <rapidcheck.h>

#include <cstdint>
#include <random>

#include "image/image_record.h"
#include "image/rectangle.h"
#include "tests/support/stored_image.h"

namespace zvk::image::transfer_rule {

// Any number, often one near the limits or near the size of a small image.
inline int32_t AnyNumber(std::mt19937 &random) {
  using stored_image::Between;
  switch (Between(random, 0, 3)) {
    case 0:
      return static_cast<int32_t>(random());
    case 1:
      return Between(random, 0, 1) == 0 ? INT32_MAX - Between(random, 0, 40) : INT32_MIN + Between(random, 0, 40);
    default:
      return Between(random, -40, 60);
  }
}

// Mostly small; at times long enough for the loops that take many pixels at once.
inline int32_t AnyWidth(std::mt19937 &random) {
  using stored_image::Between;
  return Between(random, 0, 2) != 0 ? Between(random, 1, 12) : Between(random, 12, 90);
}

// Compares the rule with FitTransfer on random numbers and sizes. It fits the numbers to a dest and a source, and tells
// if anything is left.
template <class Numbers>
void CheckOwnRule(uint32_t seed, bool (*fit)(Numbers &, const ImageClassData &dest, const ImageClassData &source)) {
  using stored_image::Between;
  std::mt19937 random(seed);
  for (int i = 0; i < 5000; ++i) {
    ImageClassData dest{}, source{};
    dest.Width = Between(random, 0, 3) == 0 ? Between(random, 0, INT32_MAX) : Between(random, 0, 30);
    dest.Height = Between(random, 1, 30);
    source.Width = Between(random, 0, 30);
    source.Height = Between(random, 0, 3) == 0 ? Between(random, 1, INT32_MAX) : Between(random, 1, 30);
    Numbers n{AnyNumber(random), AnyNumber(random), AnyNumber(random),
              AnyNumber(random), AnyNumber(random), AnyNumber(random)};
    const Transfer fitted = FitTransfer({n.destX, n.destY, n.width, n.height, n.sourceX, n.sourceY}, dest.Width,
                                        dest.Height, source.Width, source.Height);
    const bool isLeft = fit(n, dest, source);
    RC_ASSERT(isLeft == !IsEmpty(fitted));
    if (isLeft) RC_ASSERT((fitted == Transfer{n.destX, n.destY, n.width, n.height, n.sourceX, n.sourceY}));
  }
}

}  // namespace zvk::image::transfer_rule
