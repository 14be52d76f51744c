#include "host/host_services.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

#include "host/resources.h"

namespace zvk::host {

REALresolver gResolver = nullptr;
double rbversion = 0;
int32_t CurrentREALControlVersion = 0;
int32_t PageSize = 4096;

void *HostFunction(const char *name) { return gResolver != nullptr ? gResolver(name) : nullptr; }

// This machine has none of those functions itself, so the host is the only one who may offer them.
void *PlatformFunction(const char *name) { return HostFunction(name); }

// --- exceptions ---

namespace {

// Raises one exception with a text that may be nil.
void Raise(const char *className, REALstring text) {
  ObjectReference exception(REALnewInstance(className));
  if (!exception) exception = ObjectReference(REALnewInstance("RuntimeException"));
  if (!exception) return;
  REALSetPropValueString(exception.Get(), "Message", text);
  REALSetPropValueInt32(exception.Get(), "ErrorNumber", 0);
  REALRaiseException(exception.Get());
}

}  // namespace

void RaiseException(const char *className, const char *message) {
  const int64_t length = message != nullptr ? static_cast<int64_t>(std::strlen(message)) : 0;
  const StringReference text(REALBuildUnicodeString(message, length, kEncodingASCII));
  Raise(className, text.Get());
}

void RaiseOutOfBoundsException(int64_t value, int64_t minimum, int64_t count, const char *parameterName,
                               const char *methodName) {
  if (parameterName == nullptr) parameterName = "?";
  if (methodName == nullptr) methodName = "?";
  const size_t size = std::strlen(parameterName) + std::strlen(methodName) + 200;
  const ZeroedBuffer<char> text(static_cast<int64_t>(size));
  if (!text) {
    RaiseException("OutOfBoundsException", "Out of Bounds");
    return;
  }
  // The caller has decided that the value is out of range; its sign alone chooses the words.
  const char *format = value < 0 ? "Parameter %s to method %s is too small. Range is %lld to %lld, but value is %lld."
                                 : "Parameter %s to method %s is too big. Range is %lld to %lld, but value is %lld.";
  std::snprintf(text.Get(), size, format, parameterName, methodName, static_cast<long long>(minimum),
                static_cast<long long>(count - 1), static_cast<long long>(value));
  RaiseException("OutOfBoundsException", text.Get());
}

// --- strings ---

namespace {

bool IsPlainASCII(const uint8_t *bytes, int64_t length) {
  for (int64_t i = 0; i < length; ++i) {
    if (bytes[i] >= 128) return false;
  }
  return true;
}

StringReference BuildTagged(const void *data, int64_t length, uint32_t encoding) {
  StringReference string(originalREALBuildString(data, static_cast<int32_t>(length)));
  if (string) REALSetStringEncoding(string.Get(), encoding);
  return string;
}

StringReference BuildFromUTF16(const void *data, int64_t length) {
  const StringReference wide = BuildTagged(data, length, kEncodingUTF16);
  return StringReference(wide ? REALConvertString(wide.Get(), kEncodingUTF8) : nullptr);
}

// Cuts each unit to its low 16 bits; a character above hexadecimal FFFF is not kept.
StringReference BuildFromUTF32(const uint8_t *data, int64_t length) {
  constexpr int64_t kStackBytes = 799;
  uint16_t onStack[kStackBytes / 4];
  const int64_t units = length / 4;
  ZeroedBuffer<uint16_t> allocated;
  uint16_t *utf16 = onStack;
  if (length > kStackBytes) {
    allocated = ZeroedBuffer<uint16_t>(units + 2);
    if (!allocated) return {};
    utf16 = allocated.Get();
  }
  for (int64_t i = 0; i < units; ++i) {
    uint32_t unit;
    std::memcpy(&unit, data + 4 * i, sizeof unit);
    utf16[i] = static_cast<uint16_t>(unit);
  }
  return BuildFromUTF16(utf16, 2 * units);
}

// The string, or what the host throws when it has no memory for it.
StringReference BuildString(const uint8_t *bytes, int64_t length, uint32_t encoding) {
  switch (encoding) {
    case kEncodingUTF16:
      return BuildFromUTF16(bytes, length);
    case kEncodingUTF32:
      return BuildFromUTF32(bytes, length);
    case kEncodingNone:
    case kEncodingSingleByte:
    case kEncodingBinary:
      return BuildTagged(bytes, length, IsPlainASCII(bytes, length) ? kEncodingASCII : encoding);
    default:
      return BuildTagged(bytes, length, encoding);
  }
}

StringReference BuildStringOrNil(const char *text) {
  try {
    return BuildTagged(text, static_cast<int64_t>(std::strlen(text)), kEncodingASCII);
  } catch (const std::bad_alloc &) {
    return {};
  }
}

}  // namespace

REALstring REALBuildUnicodeString(const void *data, int64_t length, uint32_t encoding) {
  if (data == nullptr || length < 1 || length > kLargestAllocation) return nullptr;
  try {
    return BuildString(static_cast<const uint8_t *>(data), length, encoding).Release();
  } catch (const std::bad_alloc &) {
    // The host may have no memory for this text either: the exception then goes without one.
    const StringReference text = BuildStringOrNil("Failed to allocate memory for a string.");
    Raise("OutOfMemoryException", text.Get());
    return nullptr;
  }
}

uint8_t REALGetStringData(REALstring string, uint32_t encoding, REALstringData *data) {
  if (PluginGetStringData.Resolves()) return PluginGetStringData(string, encoding, data);

  auto *lengthInBytes =
      reinterpret_cast<int32_t (*)(REALstring)>(REALLoadFrameworkMethod(nullptr, "LenB( s as string ) as integer"));
  if (!StringGetCString.Resolves() || lengthInBytes == nullptr || string == nullptr) return false;

  StringReference converted;
  if (encoding != kEncodingBinary && REALGetStringEncoding(string) != encoding) {
    converted = StringReference(REALConvertString(string, encoding));
    if (!converted) return false;
    string = converted.Get();
  }
  const auto length = static_cast<uint32_t>(lengthInBytes(string));
  auto *copy = static_cast<uint8_t *>(std::malloc(size_t{length} + 4));
  if (copy == nullptr) return false;
  if (length != 0) std::memcpy(copy, StringGetCString(string), length);
  std::memset(copy + length, 0, 4);  // ends the text whatever its width
  data->data = copy;
  data->length = length;
  data->encoding = encoding;
  return true;
}

// --- yield ---

namespace {

int64_t MonotonicNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

int32_t NowInTicks() {
  if (TickCount.Resolves()) return static_cast<int32_t>(TickCount());
  return static_cast<int32_t>(MonotonicNanoseconds() / 1000 * 60 / 1000000);
}

int32_t NowInMilliseconds() {
  if (AudioGetCurrentHostTime.Resolves() && AudioConvertHostTimeToNanos.Resolves()) {
    const double now = static_cast<double>(AudioConvertHostTimeToNanos(AudioGetCurrentHostTime())) / 1000000.0;
    // The low 32 bits, which go on counting where a number that does not fit would stand still.
    return static_cast<int32_t>(static_cast<int64_t>(now));
  }
  return static_cast<int32_t>(MonotonicNanoseconds() / 1000000);
}

}  // namespace

void YieldData::DoYield() {
  const bool inTicks = YieldTicks > 0;
  const auto now = inTicks ? NowInTicks : NowInMilliseconds;
  const int32_t interval = inTicks ? YieldTicks : -YieldTicks;
  // The absolute value takes care of a 32-bit clock that has wrapped.
  const int32_t elapsed = now() - LastYieldTime;
  if ((elapsed < 0 ? -elapsed : elapsed) < interval) return;
  REALYieldToRB();
  // Read again: the time spent in the host does not count towards the next interval.
  LastYieldTime = now();
}

}  // namespace zvk::host
