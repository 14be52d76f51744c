// The course of a scale, the same for one thread and for several: which pair, which temp image, which tables, and the
// two passes. The entry points of scale_engine.h and scale_threads.h are this with a filter.
#pragma once

#include <cstdint>
#include <optional>

#include "abi/host_layouts.h"
#include "scaling/scale_filters.h"

namespace zvk::scaling {

// Resamples all of `source` into the left top `width` by `height` pixels of `dest`, by way of `temp` or, if it is nil,
// of an image from the source's factories. The images other than `temp` must not be nil and the size must be above
// zero; what else is asked of them, and what is refused, is told in scale_engine.h. With `threads` each pass runs in
// RunThreads with that count; without, on the calling thread, with time for the host after each entry and row.
uint8_t ScalePicture(const ScaleFilter &filter, REALobject dest, std::optional<int32_t> threads, REALobject source,
                     REALobject temp, int32_t width, int32_t height);

}  // namespace zvk::scaling
