#include "standalone/runtime/picture.h"

#include <cstring>
#include <new>
#include <utility>

#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/names.h"

namespace standalone {
namespace {

int32_t descriptionLocksHeld = 0;

}  // namespace

int32_t DescriptionLocksHeld() { return descriptionLocksHeld; }

Picture *Picture::Make(std::unique_ptr<PictureStorage> storage) {
  return new Picture(HostState::Current().Classes().Get("Picture"), std::move(storage));
}

Picture *Picture::Make(int32_t width, int32_t height) {
  if (width < 1 || height < 1) return nullptr;
  auto storage = HostState::Current().PictureFactory()(width, height);
  return storage == nullptr ? nullptr : Make(std::move(storage));
}

Picture &Picture::GetMask() {
  if (!mask_) {
    mask_ = Owned<Picture>::Adopt(Make(Width(), Height()));
    for (int32_t y = 0; y < Height(); ++y) {
      for (int32_t x = 0; x < Width(); ++x) mask_->SetPixel(x, y, {255, 255, 255, 255});
    }
  }
  return *mask_;
}

bool Picture::LockDescription(int32_t wantedType, REALpictureDescription *description, bool countsFailure) {
  *description = {};
  const bool described = storage_->Describe(wantedType, description);
  if (described || countsFailure) {
    ++locksHeld_;
    ++descriptionLocksHeld;
  }
  if (described) ++locksTaken_;
  return described;
}

void Picture::UnlockDescription() {
  if (locksHeld_ == 0) {
    HostState::Current().AddMisdeed("a picture's description was unlocked more often than locked");
    return;
  }
  --locksHeld_;
  --descriptionLocksHeld;
}

bool Picture::GetInteger(std::string_view name, int32_t *value) {
  const bool isWidth = NamesEqual(name, "Width");
  if (!isWidth && !NamesEqual(name, "Height")) return false;
  *value = isWidth ? Width() : Height();
  return true;
}

bool Picture::GetBoolean(std::string_view name, bool *value) {
  if (!NamesEqual(name, "HasAlphaChannel")) return false;
  *value = storage_->HasAlphaChannel();
  return true;
}

namespace {

// From this version on a failed lock leaves nothing to give back.
constexpr double kFailedLocksDoNotCount = 2012.0;
// The one form of a buffer that a picture is built from: 32 bits, as the host's own pictures have them.
constexpr int32_t kPixelType32 = 1;

uint8_t LockPictureDescription(REALobject handle, REALpictureDescription *description, int32_t wantedType) {
  auto *const picture = ObjectAs<Picture>(handle);
  const bool countsFailure = HostState::Current().Version() < kFailedLocksDoNotCount;
  return picture != nullptr && picture->LockDescription(wantedType, description, countsFailure) ? 1 : 0;
}

// The older entry describes whatever form there is. Its locks are given back even if they failed, on any host.
uint8_t OldLockPictureDescription(REALobject handle, REALpictureDescription *description) {
  auto *const picture = ObjectAs<Picture>(handle);
  return picture != nullptr && picture->LockDescription(0, description, true) ? 1 : 0;
}

void UnlockPictureDescription(REALobject handle) {
  if (auto *const picture = ObjectAs<Picture>(handle); picture != nullptr) picture->UnlockDescription();
}

void PictureClearCache(REALobject handle) {
  if (auto *const picture = ObjectAs<Picture>(handle); picture != nullptr) picture->ClearCache();
}

REALobject GetPictureMask(REALobject handle, uint8_t create) {
  auto *const picture = ObjectAs<Picture>(handle);
  if (picture == nullptr || (picture->Mask() == nullptr && create == 0)) return nullptr;
  Picture &mask = picture->GetMask();
  mask.Lock();
  return mask.Handle();
}

REALobject NewPicture(int32_t width, int32_t height, int32_t) {
  try {
    Picture *const made = Picture::Make(width, height);
    return made == nullptr ? nullptr : made->Handle();
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

REALobject BuildPictureFromBuffer(int32_t width, int32_t height, int32_t pixelType, void *buffer, int32_t rowBytes) {
  if (pixelType != kPixelType32 || buffer == nullptr || rowBytes / 4 < width) return nullptr;
  auto made = Owned<Picture>::Adopt(ObjectAs<Picture>(NewPicture(width, height, 32)));
  for (int32_t y = 0; made && y < height; ++y) {
    uint8_t *const row = made->Storage().Row(y);
    if (row == nullptr) return nullptr;
    std::memcpy(row, static_cast<const uint8_t *>(buffer) + static_cast<size_t>(y) * rowBytes,
                static_cast<size_t>(width) * 4);
  }
  return made ? made.Release()->Handle() : nullptr;
}

}  // namespace

std::vector<Entry> PictureEntries() {
  return {MakeEntry<"REALLockPictureDescription", LockPictureDescription>(),
          MakeEntry<"lockPictureDescription", OldLockPictureDescription>(),
          MakeEntry<"unlockPictureDescription", UnlockPictureDescription>(),
          MakeEntry<"REALPictureClearCache", PictureClearCache>(),
          MakeEntry<"REALGetPictureMask", GetPictureMask>(),
          MakeEntry<"newPicture", NewPicture>(),
          MakeEntry<"REALBuildPictureFromBuffer", BuildPictureFromBuffer>()};
}

}  // namespace standalone
