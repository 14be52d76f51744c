#include "pixels/filter_frame.h"

#include <utility>

#include "image/image_factory.h"
#include "pixels/pixel_watch.h"

namespace zvk::pixels {

namespace {

ObjectReference Referenced(REALobject object) {
  REALLockObject(object);
  return ObjectReference(object);
}

// True if a caller's dest still has room for the source, or as much as it had before other code of the host ran: of a
// size that nobody checked at first only the caller knows whether it holds.
bool HasRoomAsBefore(const ImageClassData &dest, const PixelWatch &watchedDest, const ImageClassData &source,
                     const ImageClassData &sourceBefore) {
  if (dest.Width >= source.Width && dest.Height >= source.Height) return true;
  return watchedDest.HasSamePixels() && source.Width <= sourceBefore.Width && source.Height <= sourceBefore.Height;
}

bool IsServed(const ImageClassData *source) {
  return source != nullptr && source->BitsPerComponent != 16 && IsUsable(*source);
}

}  // namespace

ObjectReference FilterDest(REALobject instance, REALobject dest, NewDest newDest) {
  ImageClassData *source = RecordOf(instance);
  if (!IsServed(source)) return {};
  const PixelWatch watchedSource(*source), watchedDest(dest != nullptr ? *RecordOf(dest) : *source);
  YieldOn(*source);

  const auto isLargeEnough = [&](const ImageClassData &made) {
    const bool exchanged = newDest == NewDest::ExchangedSides;
    return made.Width >= (exchanged ? source->Height : source->Width) &&
           made.Height >= (exchanged ? source->Width : source->Height);
  };
  ObjectReference result;
  if (dest != nullptr) {
    result = Referenced(dest);
  } else if (newDest == NewDest::ExchangedSides) {
    result = CreatePicture(source, source->Height, source->Width, source->ImageFormat);
  } else {
    result = CreatePicture(source, source->Width, source->Height, source->ImageFormat);
  }
  ImageClassData *target = RecordOf(result.Get());
  if (target == nullptr || !IsUsable(*target)) return {};
  YieldOn(*target);
  // The yields let other code of the host run, which may have closed or constructed anew either image.
  if (!IsServed(source) || !IsUsable(*target)) return {};
  if (!watchedSource.HasStorage() || !watchedDest.HasStorage()) return {};
  const bool hasRoom =
      dest != nullptr ? HasRoomAsBefore(*target, watchedDest, *source, watchedSource.Before()) : isLargeEnough(*target);
  return hasRoom ? std::move(result) : ObjectReference();
}

}  // namespace zvk::pixels
