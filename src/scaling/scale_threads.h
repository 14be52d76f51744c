// Resampling on several threads: the filters, pairs and tables of scale_engine.h, with each of the two passes spread
// over threads.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::scaling {

// Method "ScaleMT": as "Scale", with each of the two passes cut into contiguous ranges of rows for `threads` threads:
// below 0 the calling thread does all of it, 0 stands for one thread a processor, and more than 32 count as 32. While
// threads work the host gets time about every millisecond; it may close the images then, which waits for the threads,
// but must not construct them anew nor change them. The horizontal pass drops fractions instead of rounding them, so
// the result is a little darker than that of "Scale", and the same for every number of threads. With a source or a
// destination in a file it is "Scale" itself, on the calling thread; so it is with a temp image that a factory made in
// a file or in another format. A `temp` of the caller's must not be in a file. True also if there was no memory to
// start a pass.
uint8_t PictureScaleZVKMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t mode,
                          int32_t width, int32_t height);

// The same for each filter. `dest` and `source` must not be nil nor in a file, and the size must be above zero.
uint8_t trianglePictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                               int32_t height);
uint8_t boxPictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                          int32_t height);
uint8_t lanczos3PictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                               int32_t height);
uint8_t lanczos8PictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                               int32_t height);
uint8_t mitchellPictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                               int32_t height);
uint8_t poly3PictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                            int32_t height);
uint8_t cubicPictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                            int32_t height);

}  // namespace zvk::scaling
