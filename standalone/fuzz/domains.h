// What an argument of a name may be: the limits of the methods, values at and beyond them, and nothing that only the
// caller could know to be wrong (a dest that is too small, a memory block shorter than it is said to be).
#pragma once

#include <string_view>

#include "standalone/binding/declaration.h"
#include "standalone/binding/value.h"
#include "standalone/fuzz/random_source.h"

namespace standalone {

// What there is to choose from.
class FuzzPool {
 public:
  virtual ~FuzzPool() = default;

  virtual Value AnyImage() = 0;  // closed ones and nil among them
  // An image at least as large as told, each pixel at least as long; nil if there is none.
  virtual Value CoveringImage(int32_t width, int32_t height, int32_t pixelSize) = 0;
  virtual Value AnyPicture() = 0;
  virtual Value AnyFactory() = 0;
  virtual Value NewFile() = 0;
};

// The largest image that is worked on.
inline constexpr int32_t kMostPixels = 64 * 64;

// A rectangle's corner or size: mostly near an image of up to kLargestSide pixels, at times anything of 32 bits.
inline constexpr int32_t kLargestSide = 40;
int32_t AnyCoordinate(RandomSource &random);

// An argument of a method called on `self` (nil for a class's own method). `method` and `parameter` as declared.
Value AnyArgument(RandomSource &random, FuzzPool &pool, const Value &self, std::string_view method,
                  const MethodDeclaration &declaration, const Parameter &parameter);

// False for a method that random calls leave out.
bool IsInDomain(const MethodDeclaration &method);

}  // namespace standalone
