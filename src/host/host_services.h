// All contact with the host: its entries, looked up by name on first use, and the few services built on them.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"
#include "host/lazy_entry.h"

namespace zvk::host {

// Set once by the entry point, before any handler runs; read only afterwards.
extern REALresolver gResolver;             // nil until the entry point has stored the host's resolver
extern double rbversion;                   // year with a fraction; 0 if the host does not report one
extern int32_t CurrentREALControlVersion;  // version of the class tables: 9, 10, 11 or 12
extern int32_t PageSize;                   // bytes, at least 4096

// Asks the host for an entry; nil without such an entry or before there is a resolver.
void *HostFunction(const char *name);

// The one door to functions of a platform that this machine may not be: the system's own symbol where there is one,
// else whatever the host offers under that name, else nil.
void *PlatformFunction(const char *name);

template <class Signature>
using HostEntry = LazyEntry<HostFunction, Signature>;
template <class Signature>
using PlatformEntry = LazyEntry<PlatformFunction, Signature>;

// clang-format off
// Entries of the host.
inline constinit HostEntry<uint8_t()> REALinRuntime{"REALinRuntime"};
inline constinit HostEntry<void(REALclassDefinition *)> REALRegisterClass{"PluginRegisterClass"};
inline constinit HostEntry<REALobject(const char *className)> REALnewInstance{"PluginNewInstance"};
inline constinit HostEntry<void(REALobject)> REALLockObject{"REALLockObject"};
inline constinit HostEntry<void(REALobject)> REALUnlockObject{"REALUnlockObject"};
inline constinit HostEntry<void(REALstring)> REALLockString{"REALLockString"};
inline constinit HostEntry<void(REALstring)> REALUnlockString{"REALUnlockString"};
inline constinit HostEntry<REALstring(const void *bytes, int32_t length)> originalREALBuildString{"REALBuildString"};
inline constinit HostEntry<uint32_t(REALstring)> REALGetStringEncoding{"REALGetStringEncoding"};
inline constinit HostEntry<void(REALstring, uint32_t encoding)> REALSetStringEncoding{"REALSetStringEncoding"};
inline constinit HostEntry<REALstring(REALstring, uint32_t encoding)> REALConvertString{"REALConvertString"};
inline constinit HostEntry<uint8_t(REALstring, uint32_t encoding, REALstringData *)> PluginGetStringData{"PluginGetStringData"};
inline constinit HostEntry<void(REALstringData *)> REALDisposeStringData{"PluginDisposeStringData"};
inline constinit HostEntry<const char *(REALstring)> StringGetCString{"StringGetCString"};
inline constinit HostEntry<void(REALobject)> REALRaiseException{"RuntimeRaiseException"};
inline constinit HostEntry<uint8_t(REALobject, const char *name, REALstring)> REALSetPropValueString{"REALSetPropValueString"};
inline constinit HostEntry<uint8_t(REALobject, const char *name, int32_t)> REALSetPropValueInt32{"REALSetPropValueInt"};
inline constinit HostEntry<uint8_t(REALobject, const char *name, int32_t *)> REALGetPropValueInt32{"REALGetPropValueInt"};
inline constinit HostEntry<uint8_t(REALobject, const char *name, uint8_t *)> REALGetPropValueUInt8{"REALGetPropValueBool"};
inline constinit HostEntry<void()> REALYieldToRB{"REALYieldToRB"};
inline constinit HostEntry<uint8_t(REALobject item, FSRef *, HFSUniStr255 *name)> REALFSRefFromFolderItem{"REALFSRefFromFolderItem"};
inline constinit HostEntry<uint8_t(FSSpec *, REALobject item)> REALFSSpecFromFolderItem{"REALFSSpecFromFolderItem"};
inline constinit HostEntry<void *(REALobject block)> REALMemoryBlockGetPtr{"memoryBlockGetPtr"};
inline constinit HostEntry<REALobject(void *bytes)> REALPtrToMemoryBlock{"PtrToMemoryBlock"};
inline constinit HostEntry<REALobject(int32_t size)> REALNewMemoryBlockOriginal{"newMemoryBlock"};
inline constinit HostEntry<int32_t(REALarray)> REALGetArrayUBound{"RuntimeUBound"};
inline constinit HostEntry<int32_t(REALarray, int32_t index)> REALGetArrayInt{"RuntimeDirectReadIntArray"};
inline constinit HostEntry<void *(REALobject, uintptr_t event)> REALGetEventInstance{"GetEventInstance"};
inline constinit HostEntry<void *(const char *className)> REALGetClassRef{"pluginObjectType"};
inline constinit HostEntry<void *(void *nil, const char *declaration)> REALLoadFrameworkMethod{"REALLoadGlobalMethod"};
inline constinit HostEntry<void *(REALobject, const char *declaration)> REALLoadObjectMethod{"REALLoadObjectMethod"};
inline constinit HostEntry<uint8_t(REALobject picture, REALpictureDescription *, int32_t wantedType)> REALLockPictureDescription{"REALLockPictureDescription"};
inline constinit HostEntry<uint8_t(REALobject picture, REALpictureDescription *)> lockPictureDescription{"lockPictureDescription"};
inline constinit HostEntry<void(REALobject picture)> REALUnlockPictureDescription{"unlockPictureDescription"};
inline constinit HostEntry<void(REALobject picture)> REALPictureClearCache{"REALPictureClearCache"};
inline constinit HostEntry<REALobject(REALobject picture)> REALGetPictureGraphics{"pluginPictureGraphicsGetter"};
inline constinit HostEntry<REALobject(REALobject picture, uint8_t create)> REALGetPictureMask{"REALGetPictureMask"};
inline constinit HostEntry<REALobject(int32_t width, int32_t height, int32_t depth)> REALNewPicture{"newPicture"};
inline constinit HostEntry<REALobject(int32_t width, int32_t height, int32_t pixelType, void *buffer, int32_t rowBytes)> REALBuildPictureFromBuffer{"REALBuildPictureFromBuffer"};

// Functions of the other platform, for its clocks and its pictures.
inline constinit PlatformEntry<uint32_t()> TickCount{"TickCount"};
inline constinit PlatformEntry<uint64_t()> AudioGetCurrentHostTime{"AudioGetCurrentHostTime"};
inline constinit PlatformEntry<uint64_t(uint64_t)> AudioConvertHostTimeToNanos{"AudioConvertHostTimeToNanos"};
inline constinit PlatformEntry<void *(void *context)> CGBitmapContextGetData{"CGBitmapContextGetData"};
inline constinit PlatformEntry<size_t(void *context)> CGBitmapContextGetBitsPerPixel{"CGBitmapContextGetBitsPerPixel"};
inline constinit PlatformEntry<size_t(void *context)> CGBitmapContextGetWidth{"CGBitmapContextGetWidth"};
inline constinit PlatformEntry<size_t(void *context)> CGBitmapContextGetHeight{"CGBitmapContextGetHeight"};
inline constinit PlatformEntry<size_t(void *context)> CGBitmapContextGetBytesPerRow{"CGBitmapContextGetBytesPerRow"};
inline constinit PlatformEntry<uint32_t(void *context)> CGBitmapContextGetAlphaInfo{"CGBitmapContextGetAlphaInfo"};
inline constinit PlatformEntry<void(void *pixMap)> UnlockPixels{"UnlockPixels"};
inline constinit PlatformEntry<int16_t(void **world, int16_t depth, const Rect *, void *colourTable, void *nil, uint32_t flags)> NewGWorld{"NewGWorld"};
inline constinit PlatformEntry<void(void *world)> DisposeGWorld{"DisposeGWorld"};
inline constinit PlatformEntry<void *(void *world)> GetGWorldPixMap{"GetGWorldPixMap"};
inline constinit PlatformEntry<uint8_t(void *pixMap)> LockPixels{"LockPixels"};
inline constinit PlatformEntry<int32_t(void *pixMap)> GetPixRowBytes{"GetPixRowBytes"};
inline constinit PlatformEntry<void *(void *pixMap)> GetPixBaseAddr{"GetPixBaseAddr"};
inline constinit PlatformEntry<void *(int16_t number)> GetCTable{"GetCTable"};
// clang-format on

// Text encodings by the host's numeric codes.
inline constexpr uint32_t kEncodingNone = 0;
inline constexpr uint32_t kEncodingUTF16 = 256;
inline constexpr uint32_t kEncodingSingleByte = 1280;
inline constexpr uint32_t kEncodingASCII = 1536;
inline constexpr uint32_t kEncodingBinary = 65535;
inline constexpr uint32_t kEncodingUTF8 = 0x8000100;
inline constexpr uint32_t kEncodingUTF32 = 0xC000100;

// Marks one host exception of the class (or of "RuntimeException" where the host lacks the class) as pending, with
// ErrorNumber 0 and the ASCII message (nil: none). Returns; the caller must leave its handler by itself.
void RaiseException(const char *className, const char *message);

// Raises an "OutOfBoundsException" that names the parameter and the method ("?" for nil) and says that the range is
// 0 to count - 1; "too small" below zero, else "too big". Returns.
void RaiseOutOfBoundsException(int64_t value, int64_t minimum, int64_t count, const char *parameterName,
                               const char *methodName);

// A new host string over `length` bytes in one of the encodings above, one reference owned by the caller. Wide text
// comes back converted to UTF-8; bytes of no known encoding come back as ASCII if none has its top bit set. Nil for nil
// data, for a length outside 1 to 2147483647, or when there is no memory (raised if the host said so by bad_alloc).
REALstring REALBuildUnicodeString(const void *data, int64_t length, uint32_t encoding);

// Fills `data` with the string's bytes in the wanted encoding (kEncodingBinary: as they are). On hosts without
// "PluginGetStringData" the bytes are a copy from malloc with a zero of four bytes behind it. False if that fails.
uint8_t REALGetStringData(REALstring string, uint32_t encoding, REALstringData *data);

// The two fields at the head of an image that space out its yields.
struct YieldData {
  int32_t YieldTicks;     // 0: never; above 0: interval in ticks of 1/60 second; below 0: in milliseconds
  int32_t LastYieldTime;  // in the unit that the sign of YieldTicks names

  // Lets the host run its other code if the interval since the last yield has passed. Call only if YieldTicks is not 0.
  void DoYield();
};

}  // namespace zvk::host
