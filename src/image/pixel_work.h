// Threads that work on the pixels of images while the host's own thread does other things, closing these images maybe.
// Only the host's thread begins and ends such work, and only there do images give up their pixels, so nothing is
// locked.
#pragma once

#include <array>

#include "host/listed.h"
#include "image/image_record.h"

namespace zvk::image {

// Says, as long as it lives, that threads may be at work on the pixels of two images.
class PixelWork : public Listed<PixelWork> {
 public:
  // `await(context)` returns when the threads have ended, and calls nothing of the host.
  using Await = void (*)(const void *context);

  PixelWork(const ImageClassData &first, const ImageClassData &second, Await await, const void *context)
      : images_{&first, &second}, await_(await), context_(context) {}

 private:
  friend void AwaitPixelWork(const ImageClassData &image);

  bool NeedsPixelsOf(const ImageClassData &image) const;

  std::array<const ImageClassData *, 2> images_;
  Await await_;
  const void *context_;
  bool hasEnded_ = false;  // and the images may be gone
};

// Returns when no thread works any more on pixels that the image is about to give up.
void AwaitPixelWork(const ImageClassData &image);

}  // namespace zvk::image
