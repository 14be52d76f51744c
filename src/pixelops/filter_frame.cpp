#include "pixelops/filter_frame.h"

#include "image/image_factory.h"

namespace zvk {

namespace {

ObjectReference Referenced(REALobject object) {
  REALLockObject(object);
  return ObjectReference(object);
}

}  // namespace

ObjectReference FilterDest(REALobject instance, REALobject dest, NewDest newDest) {
  ImageClassData *source = RecordOf(instance);
  if (source == nullptr || source->BitsPerComponent == 16 || !IsUsable(*source)) return {};
  YieldOn(*source);

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
  if (!IsUsable(*source) || !IsUsable(*target)) return {};
  return result;
}

}  // namespace zvk
