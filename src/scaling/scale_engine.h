// Resampling of one image into another with one of seven filters: a horizontal pass into a temp image, then a vertical
// one, both driven by tables of taps. It runs on the calling thread, or each pass is spread over threads.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::scaling {

// Method "Scale": resamples all of `source` into the left top `width` by `height` pixels of `dest`, which must have
// them, as must have `temp`, if it is given: `width` by the source's height pixels of the pair's stride. A nil `temp`
// is created through the source's factories. `mode` is one of ScaleMode. True when `dest` was written. False, and
// nothing is raised, for nil or not usable images, a size not above zero, another mode, formats that form no pair, or
// no memory for the tables of taps; `temp` may be written then. A column or row of the result that may need more than
// 0x7FFFFFFF bytes of taps comes out 0. Rows that an image does not hold any more after a yield are left out.
uint8_t PictureScaleZVK(REALobject dest, REALobject source, REALobject temp, int32_t mode, int32_t width,
                        int32_t height);

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

}  // namespace zvk::scaling
