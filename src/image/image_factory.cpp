#include "image/image_factory.h"

#include "image/image_storage.h"

namespace zvk::image {

namespace {

// Set by SetFactory, which holds one reference to it; lives until it is replaced.
REALobject globalFactory = nullptr;

// The record that the host gave its handle to: on hosts of table version 9 that is the converted copy, which the
// version 12 record points to.
uintptr_t NewPictureHandle() {
  if (CurrentREALControlVersion > 9) return NewPictureEvent.forSystemUse;
  const auto *converted = reinterpret_cast<const REALevent9 *>(NewPictureEvent.forSystemUse);
  return converted != nullptr ? converted->forSystemUse : 0;
}

bool Serves(REALobject picture, int32_t width, int32_t height) {
  const ImageClassData *record = RecordOf(picture);
  return record != nullptr && record->Valid && record->Width >= width && record->Height >= height;
}

ObjectReference AskFactory(REALobject factory, int32_t width, int32_t height, int32_t format) {
  if (factory == nullptr) return {};
  const auto handler = reinterpret_cast<REALeventNewPicture>(REALGetEventInstance(factory, NewPictureHandle()));
  return ObjectReference(handler != nullptr ? handler(factory, width, height, format) : nullptr);
}

ObjectReference Construct(int32_t width, int32_t height, int32_t format) {
  ObjectReference picture(REALnewInstance("PictureZVK"));
  if (picture) ImageConstructor(picture.Get(), width, height, format);
  return picture;
}

}  // namespace

ObjectReference CreatePicture(const ImageClassData *record, int32_t width, int32_t height, int32_t format) {
  ObjectReference picture = AskFactory(record != nullptr ? record->Factory : nullptr, width, height, format);
  if (Serves(picture.Get(), width, height)) return picture;
  picture.Reset();
  picture = AskFactory(globalFactory, width, height, format);
  if (Serves(picture.Get(), width, height)) return picture;
  picture.Reset();
  picture = Construct(width, height, format);
  if (Serves(picture.Get(), width, height)) return picture;
  return {};
}

bool HasFactory(const ImageClassData &record) { return record.Factory != nullptr || globalFactory != nullptr; }

REALobject CreatePictureLocal(REALobject instance, int32_t width, int32_t height, int32_t format) {
  return CreatePicture(RecordOf(instance), width, height, format).Release();
}

REALobject CreatePictureGlobal(int32_t width, int32_t height, int32_t format) {
  return CreatePicture(nullptr, width, height, format).Release();
}

void SetFactory(REALobject factory) {
  // Locked before the old one is let go, which may be the same object.
  if (factory != nullptr) REALLockObject(factory);
  if (globalFactory != nullptr) REALUnlockObject(globalFactory);
  globalFactory = factory;
}

}  // namespace zvk::image
