#include "image/rectangle.h"

#include <algorithm>

namespace zvk::image {

namespace {

// One axis of FitRectangle: fold the negative size, cut before 0, cut beyond the limit.
void FitAxis(int32_t &position, int32_t &size, int32_t limit) {
  if (size < 0) {
    position += size;
    size = -size;
  }
  if (position < 0) {
    size += position;
    position = 0;
  }
  if (position >= limit) size = 0;
  if (position + size > limit) size = limit - position;
}

// One axis of FitTransfer: source before 0, fold the negative size, destination before 0, then the two far edges.
void FitTransferAxis(int32_t &dest, int32_t &size, int32_t &source, int32_t destLimit, int32_t sourceLimit) {
  if (source < 0) {
    size += source;
    dest += source;
    source = 0;
  }
  if (size < 0) {
    dest += size;
    size = -size;
  }
  if (dest < 0) {
    size += dest;
    source -= dest;
    dest = 0;
  }
  if (dest >= destLimit) {
    size = 0;
  } else if (dest + size > destLimit) {
    size = destLimit - dest;
  }
  if (size + source > sourceLimit) size = sourceLimit - source;
}

void CutAxis(int32_t &position, int32_t &size, int32_t limit) {
  size = static_cast<int32_t>(std::clamp<int64_t>(int64_t{limit} - position, 0, std::max(size, 0)));
}

void CutTransferAxis(int32_t &dest, int32_t &size, int32_t &source, int32_t destLimit, int32_t sourceLimit) {
  const int64_t first = std::max<int64_t>({0, -int64_t{dest}, -int64_t{source}});
  const int64_t end = std::min<int64_t>({size, int64_t{destLimit} - dest, int64_t{sourceLimit} - source});
  if (end <= first) {
    size = 0;
    return;
  }
  dest = static_cast<int32_t>(dest + first);
  source = static_cast<int32_t>(source + first);
  size = static_cast<int32_t>(end - first);
}

// --- both axes by the same rule ---

Rectangle OnBothAxes(Rectangle rectangle, int32_t imageWidth, int32_t imageHeight,
                     void (*rule)(int32_t &, int32_t &, int32_t)) {
  rule(rectangle.x, rectangle.width, imageWidth);
  rule(rectangle.y, rectangle.height, imageHeight);
  return rectangle;
}

Transfer OnBothAxes(Transfer transfer, int32_t destWidth, int32_t destHeight, int32_t sourceWidth, int32_t sourceHeight,
                    void (*rule)(int32_t &, int32_t &, int32_t &, int32_t, int32_t)) {
  rule(transfer.destX, transfer.width, transfer.sourceX, destWidth, sourceWidth);
  rule(transfer.destY, transfer.height, transfer.sourceY, destHeight, sourceHeight);
  return transfer;
}

}  // namespace

Rectangle FitRectangle(Rectangle rectangle, int32_t imageWidth, int32_t imageHeight) {
  return OnBothAxes(rectangle, imageWidth, imageHeight, FitAxis);
}

Transfer FitTransfer(Transfer transfer, int32_t destWidth, int32_t destHeight, int32_t sourceWidth,
                     int32_t sourceHeight) {
  return OnBothAxes(transfer, destWidth, destHeight, sourceWidth, sourceHeight, FitTransferAxis);
}

Rectangle CutToImage(Rectangle rectangle, int32_t imageWidth, int32_t imageHeight) {
  return OnBothAxes(rectangle, imageWidth, imageHeight, CutAxis);
}

Transfer CutToImages(Transfer transfer, int32_t destWidth, int32_t destHeight, int32_t sourceWidth,
                     int32_t sourceHeight) {
  return OnBothAxes(transfer, destWidth, destHeight, sourceWidth, sourceHeight, CutTransferAxis);
}

}  // namespace zvk::image
