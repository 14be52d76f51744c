// The common course of every operation that reads one image and writes another one, its dest: what is refused, where a
// nil dest comes from, who is given time, and who owns the result. A filter is a kernel that is run in this frame.
#pragma once

#include <cstdint>
#include <type_traits>

#include "host/resources.h"
#include "image/image_record.h"
#include "pixels/layouts.h"

namespace zvk::pixels {

// The size of the image that is made for a nil dest: the source's, or the source's with its sides exchanged.
enum class NewDest : uint8_t { SameSize, ExchangedSides };

// The dest of one call with the reference that the caller of the filter will own; empty if the filter is refused: the
// source is not usable or has 16-bit samples, there is no image for a nil dest, or the dest is not usable. Yields once
// on the source, then once on the dest. A dest of the caller's may have any size and format; one that was made is large
// enough. If the host, given time, leaves no room in a dest where there was some, by constructing one of the images
// anew, or takes away the pixels that a view shows, the filter is refused as well.
ObjectReference FilterDest(REALobject instance, REALobject dest, NewDest newDest);

// Runs kernel(source, dest), both records, and returns dest with its reference; nil if the filter is refused, or if the
// kernel returns a bool that is false. A dest that the kernel leaves alone is returned unchanged.
template <class Kernel>
REALobject RunFilter(REALobject instance, REALobject dest, NewDest newDest, Kernel &&kernel) {
  ObjectReference result = FilterDest(instance, dest, newDest);
  if (!result) return nullptr;
  ImageClassData &source = *RecordOf(instance);
  ImageClassData &target = *RecordOf(result.Get());
  if constexpr (std::is_void_v<std::invoke_result_t<Kernel, ImageClassData &, ImageClassData &>>) {
    kernel(source, target);
  } else {
    if (!kernel(source, target)) return nullptr;
  }
  return result.Release();
}

// Runs kernel(layout, source, dest) with the source's layout, which is of the first family in kOrder that it says it
// has, and returns a dest of the source's size with its reference; nil if the filter is refused. A source of another
// family leaves dest as it is.
template <ColourFamily... kOrder, class Kernel>
REALobject RunFilterOn(REALobject instance, REALobject dest, Kernel &&kernel) {
  return RunFilter(instance, dest, NewDest::SameSize, [&](ImageClassData &source, ImageClassData &target) {
    VisitLayout<kOrder...>(source, [&](auto layout) { kernel(layout, source, target); });
  });
}

}  // namespace zvk::pixels
