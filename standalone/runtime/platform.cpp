// Functions of the platforms that hosts run on, which plug-ins find by name where the platform has them.
#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/picture_storage.h"

namespace standalone {
namespace {

const BitmapContext *Context(void *address) { return static_cast<const BitmapContext *>(address); }

void *GetData(void *context) { return context == nullptr ? nullptr : Context(context)->data; }
size_t GetBitsPerPixel(void *context) { return context == nullptr ? 0 : Context(context)->bitsPerPixel; }
size_t GetWidth(void *context) { return context == nullptr ? 0 : Context(context)->width; }
size_t GetHeight(void *context) { return context == nullptr ? 0 : Context(context)->height; }
size_t GetBytesPerRow(void *context) { return context == nullptr ? 0 : Context(context)->bytesPerRow; }
uint32_t GetAlphaInfo(void *context) { return context == nullptr ? 0 : Context(context)->alphaInfo; }

// Pixels of this host never move, so there is nothing to do.
void UnlockPixels(void *) {}

// Host time runs in units of a third of a nanosecond.
constexpr uint64_t kHostTimeUnits = 3;

uint32_t TickCount() { return HostState::Current().Clock().ticks; }
uint64_t GetCurrentHostTime() { return HostState::Current().Clock().nanoseconds * kHostTimeUnits; }
uint64_t ConvertHostTimeToNanos(uint64_t hostTime) { return hostTime / kHostTimeUnits; }

}  // namespace

std::vector<Entry> BitmapContextEntries() {
  return {MakeEntry<"CGBitmapContextGetData", GetData>(),
          MakeEntry<"CGBitmapContextGetBitsPerPixel", GetBitsPerPixel>(),
          MakeEntry<"CGBitmapContextGetWidth", GetWidth>(),
          MakeEntry<"CGBitmapContextGetHeight", GetHeight>(),
          MakeEntry<"CGBitmapContextGetBytesPerRow", GetBytesPerRow>(),
          MakeEntry<"CGBitmapContextGetAlphaInfo", GetAlphaInfo>(),
          MakeEntry<"UnlockPixels", UnlockPixels>()};
}

std::vector<Entry> ClockEntries() {
  return {MakeEntry<"TickCount", TickCount>(), MakeEntry<"AudioGetCurrentHostTime", GetCurrentHostTime>(),
          MakeEntry<"AudioConvertHostTimeToNanos", ConvertHostTimeToNanos>()};
}

}  // namespace standalone
