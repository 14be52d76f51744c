#include "pixels/overlap.h"

#include <cstdlib>
#include <functional>

namespace zvk::pixels {

bool RowsAreApart(const ImageClassData &image, const OffsetRange &offsets, int32_t columns, int32_t rows) {
  const int64_t extent = (int64_t{columns} - 1) * image.PixelSize + offsets.Span();
  return image.RowTable != nullptr || rows < 2 || extent <= std::abs(int64_t{image.RowSize});
}

bool RunsOverlap(const uint8_t *run, ptrdiff_t size, const uint8_t *otherRun, ptrdiff_t otherSize) {
  const std::less<> before;
  return before(run, otherRun + otherSize) && before(otherRun, run + size);
}

bool ImagesAreApart(const ImageClassData &source, const ImageClassData &dest, int32_t columns, int32_t rows,
                    int32_t pixelSize) {
  return int64_t{columns} * pixelSize <= int64_t{dest.Width} * dest.PixelSize && rows <= dest.Height &&
         !SharesStorage(source, dest);
}

}  // namespace zvk::pixels
