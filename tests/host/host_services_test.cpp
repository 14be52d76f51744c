#include "host/host_services.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "host/resources.h"
#include "image/image_record.h"
#include "tests/support/faults.h"
#include "tests/support/plugin_host.h"

namespace zvk::host {
namespace {

using standalone::Encoding;
using standalone::RaisedException;

class HostServices : public testing::Test {
 protected:
  // A string from the bytes, owned.
  static standalone::Owned<standalone::String> Build(const std::string &bytes, uint32_t encoding) {
    return Adopt(REALBuildUnicodeString(bytes.data(), static_cast<int64_t>(bytes.size()), encoding));
  }

  PluginHost host_;
};

// --- exceptions ---

TEST_F(HostServices, AnExceptionCarriesItsMessageAndTheErrorNumber0) {
  RaiseException("NilObjectException", "picture is nil");
  EXPECT_EQ(host_.TakeException(), (RaisedException{"NilObjectException", "picture is nil", 0}));
}

TEST_F(HostServices, AnExceptionWithoutMessageHasNone) {
  RaiseException("OutOfMemoryException", nullptr);
  EXPECT_EQ(host_.TakeException(), (RaisedException{"OutOfMemoryException", "", 0}));
}

TEST_F(HostServices, AMessageIsTaggedASCII) {
  static uint32_t encoding = 0;
  host_->SetEntry(
      "REALSetPropValueString", +[](REALobject, const char *name, REALstring text) -> uint8_t {
        if (std::strcmp(name, "Message") == 0) encoding = REALGetStringEncoding(text);
        return 1;
      });
  RaiseException("NilObjectException", "text");
  EXPECT_EQ(encoding, 1536u);
  EXPECT_TRUE(host_.TakeException());
}

TEST(HostServicesOnAnOldHost, AClassThatTheHostLacksIsRaisedAsRuntimeException) {
  PluginHost host({.missingClasses = {"UnsupportedOperationException"}});
  RaiseException("UnsupportedOperationException", "Failed to get temp path.");
  EXPECT_EQ(host.TakeException(), (RaisedException{"RuntimeException", "Failed to get temp path.", 0}));
}

TEST(HostServicesOnAnOldHost, WithoutNewInstanceRaisingDoesNothingButBuildAndDropTheText) {
  PluginHost host({.withheld = {"PluginNewInstance"}});
  RaiseException("NilObjectException", "text");
  EXPECT_EQ(host.TakeException(), std::nullopt);
  EXPECT_EQ(host->Calls("REALBuildString"), 1);
}

TEST_F(HostServices, AValueAboveTheRangeIsTooBig) {
  RaiseOutOfBoundsException(5, 0, 3, "index", "Channel");
  EXPECT_EQ(host_.TakeException(),
            (RaisedException{"OutOfBoundsException",
                             "Parameter index to method Channel is too big. Range is 0 to 2, but value is 5.", 0}));
}

TEST_F(HostServices, ANegativeValueIsTooSmall) {
  RaiseOutOfBoundsException(-1, 0, 3, "index", "Channel");
  EXPECT_EQ(host_.TakeException(),
            (RaisedException{"OutOfBoundsException",
                             "Parameter index to method Channel is too small. Range is 0 to 2, but value is -1.", 0}));
}

TEST_F(HostServices, ANilNameIsAQuestionMark) {
  RaiseOutOfBoundsException(5, 0, 3, nullptr, "Channel");
  EXPECT_EQ(host_.TakeException()->message,
            "Parameter ? to method Channel is too big. Range is 0 to 2, but value is 5.");
  RaiseOutOfBoundsException(5, 0, 3, "index", nullptr);
  EXPECT_EQ(host_.TakeException()->message, "Parameter index to method ? is too big. Range is 0 to 2, but value is 5.");
}

TEST_F(HostServices, TheNumbersOfARangeErrorHave64Bits) {
  RaiseOutOfBoundsException(INT64_MIN, 0, INT64_MAX, "a", "b");
  EXPECT_EQ(host_.TakeException()->message,
            "Parameter a to method b is too small. Range is 0 to 9223372036854775806, but value is "
            "-9223372036854775808.");
}

TEST_F(HostServices, WithoutMemoryForItsTextARangeErrorSaysOutOfBounds) {
  {
    faults::Heap heap;
    heap.FailCalloc([](size_t count, size_t size) { return count * size == 5 + 7 + 200; });
    RaiseOutOfBoundsException(5, 0, 3, "index", "Channel");
  }
  EXPECT_EQ(host_.TakeException(), (RaisedException{"OutOfBoundsException", "Out of Bounds", 0}));
}

// --- strings ---

TEST_F(HostServices, NilDataOrALengthOutside1To2147483647GivesNil) {
  EXPECT_FALSE(Build("", kEncodingASCII));
  EXPECT_EQ(REALBuildUnicodeString(nullptr, 3, kEncodingASCII), nullptr);
  EXPECT_EQ(REALBuildUnicodeString("abc", 0, kEncodingASCII), nullptr);
  EXPECT_EQ(REALBuildUnicodeString("abc", -1, kEncodingASCII), nullptr);
  EXPECT_EQ(REALBuildUnicodeString("abc", 2147483648, kEncodingASCII), nullptr);
  EXPECT_EQ(host_->Calls("REALBuildString"), 0);
}

TEST_F(HostServices, LowBytesOfNoKnownEncodingAreASCII) {
  for (const uint32_t encoding : {kEncodingNone, kEncodingSingleByte, kEncodingBinary}) {
    const auto string = Build("\x41\x42", encoding);
    EXPECT_EQ(string->TextEncoding(), Encoding::ASCII);
    EXPECT_EQ(string->Bytes(), "AB");
  }
}

TEST_F(HostServices, BytesWithATopBitKeepTheirEncoding) {
  for (const uint32_t encoding : {kEncodingNone, kEncodingSingleByte, kEncodingBinary}) {
    const auto string = Build("\x41\xC2", encoding);
    EXPECT_EQ(static_cast<uint32_t>(string->TextEncoding()), encoding);
    EXPECT_EQ(string->Bytes(), "\x41\xC2");
  }
}

TEST_F(HostServices, OtherEncodingsAreTaggedAndNeverScanned) {
  EXPECT_EQ(Build("RGB", kEncodingASCII)->TextEncoding(), Encoding::ASCII);
  EXPECT_EQ(Build("\xC2\xA9", kEncodingASCII)->TextEncoding(), Encoding::ASCII);
  EXPECT_EQ(Build("RGB", kEncodingUTF8)->TextEncoding(), Encoding::UTF8);
  EXPECT_EQ(static_cast<uint32_t>(Build("RGB", 1234)->TextEncoding()), 1234u);
}

TEST_F(HostServices, UTF16BecomesUTF8) {
  const auto string = Build(std::string("\xE4\x00\x7A\x00", 4), kEncodingUTF16);
  EXPECT_EQ(string->TextEncoding(), Encoding::UTF8);
  EXPECT_EQ(string->Bytes(), "\xC3\xA4z");
  EXPECT_EQ(string->References(), 1);
}

std::string builtBytes;

REALstring RememberBuilt(const void *bytes, int32_t length) {
  builtBytes.assign(static_cast<const char *>(bytes), static_cast<size_t>(length));
  return standalone::String::Make(builtBytes, Encoding::None)->Handle();
}

std::string UTF32(const std::vector<uint32_t> &units) {
  return {reinterpret_cast<const char *>(units.data()), units.size() * 4};
}

TEST_F(HostServices, SevenUnitsOfUTF32ReachTheHostAsFourteenBytesOfUTF16) {
  host_->SetEntry("REALBuildString", RememberBuilt);
  const auto string = Build(UTF32({'p', 'i', 'c', 't', 'u', 'r', 'e'}), kEncodingUTF32);
  EXPECT_EQ(builtBytes, std::string("p\0i\0c\0t\0u\0r\0e\0", 14));
  EXPECT_EQ(string->Bytes(), "picture");
  EXPECT_EQ(string->TextEncoding(), Encoding::UTF8);
}

TEST_F(HostServices, AUnitAboveFFFFIsCutToItsLow16Bits) {
  host_->SetEntry("REALBuildString", RememberBuilt);
  const auto string = Build(UTF32({0x1F600}), kEncodingUTF32);
  EXPECT_EQ(builtBytes, std::string("\x00\xF6", 2));
}

TEST_F(HostServices, UTF32OfUpTo799BytesNeedsNoMemoryAndLongerTextDoes) {
  host_->SetEntry("REALBuildString", RememberBuilt);
  std::vector<uint32_t> units(199, 'x');
  faults::Heap heap;
  heap.FailCalloc([](size_t, size_t) { return true; });
  std::string bytes = UTF32(units) + "abc";  // 799 bytes, of which the last three are no unit
  EXPECT_TRUE(Build(bytes, kEncodingUTF32));
  EXPECT_EQ(builtBytes.size(), 398u);
  EXPECT_EQ(heap.CallocCalls(), 0);

  units.push_back('x');
  EXPECT_FALSE(Build(UTF32(units), kEncodingUTF32));
  ASSERT_EQ(heap.CallocCalls(), 1);
  const auto allocation = heap.Allocations().back();
  EXPECT_EQ(allocation.count * allocation.size, 404u);
  EXPECT_EQ(host_.TakeException(), std::nullopt);
}

TEST_F(HostServices, LongUTF32IsFreedAgain) {
  faults::Heap heap;
  const auto string = Build(UTF32(std::vector<uint32_t>(1000, 'y')), kEncodingUTF32);
  EXPECT_EQ(string->Bytes(), std::string(1000, 'y'));
  int found = 0;
  for (const auto &allocation : heap.Allocations()) {
    if (!allocation.zeroed || allocation.count * allocation.size != 2004) continue;
    ++found;
    const auto freed = heap.Freed();
    EXPECT_NE(std::find(freed.begin(), freed.end(), allocation.address), freed.end());
  }
  EXPECT_EQ(found, 1);
}

TEST_F(HostServices, AHostThatThrowsBadAllocIsAnOutOfMemoryException) {
  static bool thrown = false;
  host_->SetEntry(
      "REALBuildString", +[](const void *bytes, int32_t length) {
        if (!thrown) {
          thrown = true;
          throw std::bad_alloc();
        }
        return RememberBuilt(bytes, length);
      });
  EXPECT_FALSE(Build("text", kEncodingUTF8));
  EXPECT_EQ(host_.TakeException(),
            (RaisedException{"OutOfMemoryException", "Failed to allocate memory for a string.", 0}));
}

TEST_F(HostServices, AHostThatKeepsThrowingBadAllocGetsTheExceptionWithoutText) {
  host_->SetEntry(
      "REALBuildString", +[](const void *, int32_t) -> REALstring { throw std::bad_alloc(); });
  EXPECT_FALSE(Build("text", kEncodingUTF8));
  EXPECT_EQ(host_.TakeException(), (RaisedException{"OutOfMemoryException", "", 0}));
}

TEST_F(HostServices, BadAllocOutOfTheConversionDropsTheTaggedString) {
  host_->SetEntry(
      "REALConvertString", +[](REALstring, uint32_t) -> REALstring { throw std::bad_alloc(); });
  EXPECT_FALSE(Build("a\0b\0", kEncodingUTF16));
  EXPECT_TRUE(host_.TakeException());  // and the host finds no string left over
}

// --- reading strings ---

// Reads a string and gives the data back; nothing if that failed.
std::optional<std::string> Read(REALstring string, uint32_t encoding) {
  REALstringData data{};
  if (!REALGetStringData(string, encoding, &data)) return std::nullopt;
  EXPECT_EQ(data.encoding, encoding);
  std::string bytes(static_cast<const char *>(data.data), data.length);
  REALDisposeStringData(&data);
  return bytes;
}

TEST_F(HostServices, StringDataComesFromTheHostWhereItHasTheEntry) {
  const auto string = host_.NewString("\xC3\xA4", Encoding::UTF8);
  EXPECT_EQ(Read(string, kEncodingUTF8), "\xC3\xA4");
  EXPECT_EQ(Read(string, kEncodingUTF16), std::string("\xE4\x00", 2));
  EXPECT_EQ(host_->Calls("PluginGetStringData"), 2);
}

TEST(HostServicesOnAnOldHost, StringDataIsACopyWithFourZeroBytesBehindIt) {
  PluginHost host({.version = 2010.0, .withheld = {"PluginGetStringData"}});
  const auto string = host.NewString("abc", Encoding::UTF8);
  faults::Heap heap;
  REALstringData data{};
  ASSERT_TRUE(REALGetStringData(string, kEncodingBinary, &data));
  EXPECT_EQ(data.length, 3u);
  EXPECT_EQ(data.encoding, kEncodingBinary);
  EXPECT_EQ(std::memcmp(data.data, "abc\0\0\0\0", 7), 0);
  bool fromMalloc = false;
  for (const auto &allocation : heap.Allocations()) fromMalloc |= allocation.address == data.data && !allocation.zeroed;
  EXPECT_TRUE(fromMalloc);
  std::free(data.data);
}

TEST(HostServicesOnAnOldHost, StringDataIsConvertedOnlyWhereTheEncodingDiffers) {
  PluginHost host({.version = 2010.0, .withheld = {"PluginGetStringData"}});
  const auto string = host.NewString("\xC3\xA4", Encoding::UTF8);
  EXPECT_EQ(Read(string, kEncodingUTF8), "\xC3\xA4");
  EXPECT_EQ(host->Calls("REALConvertString"), 0);
  EXPECT_EQ(Read(string, kEncodingUTF16), std::string("\xE4\x00", 2));
  EXPECT_EQ(host->Calls("REALConvertString"), 1);
  EXPECT_EQ(Read(string, kEncodingBinary), "\xC3\xA4");
  EXPECT_EQ(host->Calls("REALConvertString"), 1);
}

TEST(HostServicesOnAnOldHost, StringDataFailsForNilAMissingEntryOrAFailedConversion) {
  PluginHost host({.version = 2010.0, .withheld = {"PluginGetStringData", "StringGetCString", "REALConvertString"}});
  const auto string = host.NewString("abc", Encoding::UTF8);
  EXPECT_EQ(Read(string, kEncodingUTF8), std::nullopt);
  host->Offer("StringGetCString");
  EXPECT_EQ(Read(string, kEncodingUTF8), "abc");
  EXPECT_EQ(Read(nullptr, kEncodingUTF8), std::nullopt);
  EXPECT_EQ(Read(string, kEncodingUTF16), std::nullopt);
}

TEST(HostServicesOnAnOldHost, StringDataFailsWithoutLenB) {
  PluginHost host({.version = 2010.0, .withheld = {"PluginGetStringData", "REALLoadGlobalMethod"}});
  const auto string = host.NewString("abc", Encoding::UTF8);
  EXPECT_EQ(Read(string, kEncodingUTF8), std::nullopt);
}

TEST(HostServicesOnAnOldHost, StringDataFailsWithoutMemoryAndDropsTheConvertedString) {
  PluginHost host({.version = 2010.0, .withheld = {"PluginGetStringData"}});
  const auto string = host.NewString("abc", Encoding::UTF8);
  faults::Heap heap;
  heap.FailMalloc([](size_t size) { return size == 6 + 4; });
  EXPECT_EQ(Read(string, kEncodingUTF16), std::nullopt);
}

TEST(HostServicesOnAnOldHost, StringDataIsCountedInBytesAndNotUpToAZero) {
  PluginHost host({.version = 2010.0, .withheld = {"PluginGetStringData"}});
  const std::string bytes("a\0b\0\0", 5);
  const auto string = host.NewString(bytes, Encoding::Binary);
  EXPECT_EQ(Read(string, kEncodingBinary), bytes);
}

TEST_F(HostServices, TheHostsOwnAnswerToStringDataIsHandedOn) {
  host_->SetEntry(
      "PluginGetStringData", +[](REALstring, uint32_t, REALstringData *) -> uint8_t { return 7; });
  REALstringData data{};
  EXPECT_EQ(REALGetStringData(nullptr, kEncodingUTF8, &data), 7);
}

// --- yield ---

struct Yielder {
  // What the fields are after one call, and whether the host was given time.
  bool Yields() {
    const int64_t before = standalone::Host::Current().Calls("REALYieldToRB");
    data.DoYield();
    return standalone::Host::Current().Calls("REALYieldToRB") > before;
  }
  YieldData data;
};

TEST_F(HostServices, TwoTicksAreCounted) {
  auto &clock = host_->SetClock({.ticks = 1001});
  Yielder yielder{{2, 1000}};
  EXPECT_FALSE(yielder.Yields());
  EXPECT_EQ(yielder.data.LastYieldTime, 1000);
  clock.ticks = 1002;
  EXPECT_TRUE(yielder.Yields());
  EXPECT_EQ(yielder.data.LastYieldTime, 1002);
}

TEST_F(HostServices, FiftyMillisecondsAreCounted) {
  auto &clock = host_->SetClock({.nanoseconds = 1049999999});
  Yielder yielder{{-50, 1000}};
  EXPECT_FALSE(yielder.Yields());
  clock.nanoseconds = 1050000000;
  EXPECT_TRUE(yielder.Yields());
  EXPECT_EQ(yielder.data.LastYieldTime, 1050);
}

TEST_F(HostServices, TheTimeSpentInTheHostDoesNotCount) {
  auto &clock = host_->SetClock({.ticks = 100});
  host_->onYield = [&] { clock.ticks = 500; };
  Yielder yielder{{10, 0}};
  EXPECT_TRUE(yielder.Yields());
  EXPECT_EQ(yielder.data.LastYieldTime, 500);
}

TEST_F(HostServices, AClockThatRunsBackOrWrapsIsMeasuredByItsDistance) {
  auto &clock = host_->SetClock({.ticks = 5});
  Yielder yielder{{10, 14}};
  EXPECT_FALSE(yielder.Yields());
  yielder.data.LastYieldTime = 15;
  EXPECT_TRUE(yielder.Yields());
  // From 4 ticks before the wrap to 5 ticks behind it.
  clock.ticks = 0x80000005;
  yielder.data.LastYieldTime = 0x7FFFFFFC;
  EXPECT_FALSE(yielder.Yields());
  clock.ticks = 0x80000006;
  EXPECT_TRUE(yielder.Yields());
}

TEST_F(HostServices, TheFirstCallYieldsUnlessTheClockIsNearZero) {
  auto &clock = host_->SetClock({.ticks = 100000});
  Yielder yielder{{60, 0}};
  EXPECT_TRUE(yielder.Yields());
  clock.ticks = 30;
  yielder.data.LastYieldTime = 0;
  EXPECT_FALSE(yielder.Yields());
}

TEST_F(HostServices, TheTimeIsReadAgainInTheUnitOfTheCallEvenIfTheUnitHasChanged) {
  host_->SetClock({.ticks = 100, .nanoseconds = 7000000});
  static YieldData data;
  data = {10, 0};
  host_->onYield = [] { data.YieldTicks = -1; };
  data.DoYield();
  EXPECT_EQ(data.LastYieldTime, 100);
}

// 2^31 milliseconds are 24.8 days.
TEST_F(HostServices, YieldsByMillisecondsGoOnWhenTheCountNoLongerFits) {
  constexpr uint64_t kMillisecond = 1000000;
  for (const uint64_t start : {uint64_t{1} << 31, (uint64_t{1} << 32) - 20, uint64_t{5} << 32}) {
    auto &clock = host_->SetClock({.nanoseconds = start * kMillisecond});
    Yielder yielder{{-50, 1000}};
    EXPECT_TRUE(yielder.Yields());
    EXPECT_EQ(static_cast<uint32_t>(yielder.data.LastYieldTime), start % (uint64_t{1} << 32));
    clock.nanoseconds = (start + 50) * kMillisecond - 1000;  // less is lost in a double
    EXPECT_FALSE(yielder.Yields());
    clock.nanoseconds = (start + 50) * kMillisecond;
    EXPECT_TRUE(yielder.Yields());
    EXPECT_EQ(static_cast<uint32_t>(yielder.data.LastYieldTime), (start + 50) % (uint64_t{1} << 32));
  }
}

TEST_F(HostServices, AnImageWithoutYieldTicksNeverAsksForTheTime) {
  host_->SetClock({.ticks = 100, .nanoseconds = 7000000});
  image::ImageClassData image{};
  YieldOn(image);
  EXPECT_EQ(host_->Questions("TickCount"), 0);
  EXPECT_EQ(host_->Questions("AudioGetCurrentHostTime"), 0);
  EXPECT_EQ(host_->Calls("REALYieldToRB"), 0);
  image.Yield.YieldTicks = 1;
  YieldOn(image);
  EXPECT_EQ(host_->Calls("REALYieldToRB"), 1);
}

// Nanoseconds of the machine's clock.
int64_t MachineTime() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

TEST_F(HostServices, WithoutAPlatformsClocksTheMachinesOwnCount) {
  Yielder ticks{{1, 0}};
  Yielder milliseconds{{-1, 0}};
  const int64_t before = MachineTime();
  ASSERT_TRUE(ticks.Yields());
  ASSERT_TRUE(milliseconds.Yields());
  const int64_t after = MachineTime();
  // What was kept lies between the two, counted round the 32 bits.
  const auto isBetween = [&](int32_t kept, int64_t first, int64_t last) {
    const auto since = static_cast<uint32_t>(kept) - static_cast<uint32_t>(first);
    return since <= static_cast<uint64_t>(last - first);
  };
  EXPECT_TRUE(isBetween(ticks.data.LastYieldTime, before * 3 / 50000000, after * 3 / 50000000));
  EXPECT_TRUE(isBetween(milliseconds.data.LastYieldTime, before / 1000000, after / 1000000));
  // The longest interval there is has not passed since.
  ticks.data.YieldTicks = INT32_MAX;
  EXPECT_FALSE(ticks.Yields());
  milliseconds.data.YieldTicks = -INT32_MAX;
  EXPECT_FALSE(milliseconds.Yields());
}

TEST_F(HostServices, WithoutREALYieldToRBOnlyTheTimeIsKept) {
  host_->Withhold("REALYieldToRB");
  host_->SetClock({.ticks = 77});
  YieldData data{5, 0};
  data.DoYield();
  EXPECT_EQ(data.LastYieldTime, 77);
}

// --- entries by name ---

std::vector<std::string> askedNames;

TEST(HostEntries, AreAskedForByTheHostsNames) {
  gResolver = [](const char *name) -> void * {
    askedNames.emplace_back(name);
    return nullptr;
  };
  const auto nameOf = [](auto &entry) {
    askedNames.clear();
    EXPECT_FALSE(entry.Resolves());
    return askedNames.size() == 1 ? askedNames[0] : "";
  };
  EXPECT_EQ(nameOf(REALinRuntime), "REALinRuntime");
  EXPECT_EQ(nameOf(REALRegisterClass), "PluginRegisterClass");
  EXPECT_EQ(nameOf(REALnewInstance), "PluginNewInstance");
  EXPECT_EQ(nameOf(REALLockObject), "REALLockObject");
  EXPECT_EQ(nameOf(REALUnlockObject), "REALUnlockObject");
  EXPECT_EQ(nameOf(REALLockString), "REALLockString");
  EXPECT_EQ(nameOf(REALUnlockString), "REALUnlockString");
  EXPECT_EQ(nameOf(originalREALBuildString), "REALBuildString");
  EXPECT_EQ(nameOf(REALGetStringEncoding), "REALGetStringEncoding");
  EXPECT_EQ(nameOf(REALSetStringEncoding), "REALSetStringEncoding");
  EXPECT_EQ(nameOf(REALConvertString), "REALConvertString");
  EXPECT_EQ(nameOf(PluginGetStringData), "PluginGetStringData");
  EXPECT_EQ(nameOf(REALDisposeStringData), "PluginDisposeStringData");
  EXPECT_EQ(nameOf(StringGetCString), "StringGetCString");
  EXPECT_EQ(nameOf(REALRaiseException), "RuntimeRaiseException");
  EXPECT_EQ(nameOf(REALSetPropValueString), "REALSetPropValueString");
  EXPECT_EQ(nameOf(REALSetPropValueInt32), "REALSetPropValueInt");
  EXPECT_EQ(nameOf(REALGetPropValueInt32), "REALGetPropValueInt");
  EXPECT_EQ(nameOf(REALGetPropValueUInt8), "REALGetPropValueBool");
  EXPECT_EQ(nameOf(REALYieldToRB), "REALYieldToRB");
  EXPECT_EQ(nameOf(REALFSRefFromFolderItem), "REALFSRefFromFolderItem");
  EXPECT_EQ(nameOf(REALFSSpecFromFolderItem), "REALFSSpecFromFolderItem");
  EXPECT_EQ(nameOf(REALMemoryBlockGetPtr), "memoryBlockGetPtr");
  EXPECT_EQ(nameOf(REALPtrToMemoryBlock), "PtrToMemoryBlock");
  EXPECT_EQ(nameOf(REALNewMemoryBlockOriginal), "newMemoryBlock");
  EXPECT_EQ(nameOf(REALGetArrayUBound), "RuntimeUBound");
  EXPECT_EQ(nameOf(REALGetArrayInt), "RuntimeDirectReadIntArray");
  EXPECT_EQ(nameOf(REALGetEventInstance), "GetEventInstance");
  EXPECT_EQ(nameOf(REALGetClassRef), "pluginObjectType");
  EXPECT_EQ(nameOf(REALLoadFrameworkMethod), "REALLoadGlobalMethod");
  EXPECT_EQ(nameOf(REALLoadObjectMethod), "REALLoadObjectMethod");
  EXPECT_EQ(nameOf(REALLockPictureDescription), "REALLockPictureDescription");
  EXPECT_EQ(nameOf(lockPictureDescription), "lockPictureDescription");
  EXPECT_EQ(nameOf(REALUnlockPictureDescription), "unlockPictureDescription");
  EXPECT_EQ(nameOf(REALPictureClearCache), "REALPictureClearCache");
  EXPECT_EQ(nameOf(REALGetPictureGraphics), "pluginPictureGraphicsGetter");
  EXPECT_EQ(nameOf(REALGetPictureMask), "REALGetPictureMask");
  EXPECT_EQ(nameOf(REALNewPicture), "newPicture");
  EXPECT_EQ(nameOf(REALBuildPictureFromBuffer), "REALBuildPictureFromBuffer");
}

TEST(HostEntries, BeforeThereIsAResolverNothingResolves) {
  ASSERT_EQ(gResolver, nullptr);
  EXPECT_FALSE(REALnewInstance.Resolves());
  EXPECT_EQ(REALnewInstance("Picture"), nullptr);
}

// --- platform functions, owners ---

TEST_F(HostServices, PlatformFunctionsAreTheHostsToOffer) {
  EXPECT_EQ(PlatformFunction("NewGWorld"), nullptr);
  host_->SetEntry(
      "NewGWorld", +[] {});
  EXPECT_NE(PlatformFunction("NewGWorld"), nullptr);
}

TEST(AllocateZeroed, AcceptsSizesFrom1To2147483647) {
  faults::Heap heap;
  EXPECT_EQ(AllocateZeroed(0), nullptr);
  EXPECT_EQ(AllocateZeroed(-1), nullptr);
  EXPECT_EQ(AllocateZeroed(2147483648), nullptr);
  EXPECT_FALSE(ZeroedBuffer<int32_t>(536870912));
  EXPECT_FALSE(ZeroedBuffer<int32_t>(0));
  EXPECT_FALSE(ZeroedBuffer<int64_t>(INT64_MAX / 4));
  EXPECT_EQ(heap.CallocCalls(), 0);
  const ZeroedBuffer<int32_t> buffer(5);
  ASSERT_TRUE(buffer);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(buffer[i], 0);
  heap.FailCalloc([](size_t, size_t size) { return size == 2147483647; });
  EXPECT_EQ(AllocateZeroed(2147483647), nullptr);
  EXPECT_EQ(heap.CallocCalls(), 2);
}

TEST_F(HostServices, AReferenceIsGivenBackOnce) {
  auto block = host_.NewMemoryBlock(1);
  REALLockObject(block);
  {
    ObjectReference first(block);
    ObjectReference second = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_EQ(second.Get(), block.Handle());
  }
  EXPECT_EQ(block->References(), 1);
}

}  // namespace
}  // namespace zvk::host
