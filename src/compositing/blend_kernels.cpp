#include "compositing/blend_kernels.h"

#include "pixels/dispatch.h"

namespace zvk::compositing {

namespace {

[[gnu::always_inline]] inline void InterpolateBytesBody(uint8_t *__restrict dest, const uint8_t *__restrict source,
                                                        const uint8_t *__restrict mask, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) dest[i] = Interpolate(dest[i], source[i], mask[i]);
}
constexpr auto InterpolateBytes = KernelOf<InterpolateBytesBody>;

[[gnu::always_inline]] inline void ScaleAndAddBytesBody(uint8_t *__restrict dest, const uint8_t *__restrict source,
                                                        const uint8_t *__restrict mask, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) dest[i] = ScaleAndAdd(dest[i], source[i], mask[i]);
}
constexpr auto ScaleAndAddBytes = KernelOf<ScaleAndAddBytesBody>;

[[gnu::always_inline]] inline void AddBytesBody(uint8_t *__restrict dest, const uint8_t *__restrict source,
                                                const uint8_t *__restrict mask, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) dest[i] = static_cast<uint8_t>(mask[i] + source[i]);
}
constexpr auto AddBytes = KernelOf<AddBytesBody>;

[[gnu::always_inline]] inline void GrayOfInterpolationBytesBody(uint8_t *__restrict dest,
                                                                const uint8_t *__restrict mask, Samples<3> colour,
                                                                ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) dest[i] = GrayOfInterpolation::Gray(dest[i], colour, mask[i]);
}
constexpr auto GrayOfInterpolationBytes = KernelOf<GrayOfInterpolationBytesBody>;

}  // namespace

void Interpolation::Bytes(const BlendBytes &bytes) {
  InterpolateBytes(bytes.dest, bytes.source, bytes.mask, bytes.count);
}

template <Scaled kWhat>
void Sum<kWhat>::Bytes(const BlendBytes &bytes) {
  if constexpr (kWhat == Scaled::Full) {
    AddBytes(bytes.dest, bytes.source, bytes.mask, bytes.count);  // 255 mask / 255 is mask
  } else {
    ScaleAndAddBytes(bytes.dest, bytes.source, bytes.mask, bytes.count);
  }
}

template struct Sum<Scaled::Own>;
template struct Sum<Scaled::Alpha>;
template struct Sum<Scaled::Full>;

void GrayOfInterpolation::Bytes(const BlendBytes &bytes) const {
  GrayOfInterpolationBytes(bytes.dest, bytes.mask, colour, bytes.count);
}

}  // namespace zvk::compositing
