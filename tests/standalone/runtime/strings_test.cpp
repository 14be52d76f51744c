#include "standalone/runtime/strings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;
using std::string_view_literals::operator""sv;

Owned<String> Make(std::string_view bytes, Encoding encoding = Encoding::UTF8) {
  return Owned<String>::Adopt(String::Make(bytes, encoding));
}

constexpr uint32_t kUTF8 = 0x8000100;
constexpr uint32_t kUTF16 = 256;
constexpr uint32_t kBinary = 65535;

TEST(String, KeepsItsBytesAndItsEncoding) {
  Host host;
  auto string = Make("a\0z"sv, Encoding::Binary);
  EXPECT_EQ(string->Bytes(), "a\0z"sv);
  EXPECT_EQ(string->TextEncoding(), Encoding::Binary);
  EXPECT_EQ(string->References(), 1);
  EXPECT_EQ(string->Bytes().data()[3], 0);
  EXPECT_EQ(Make("\xE9", Encoding::Latin1)->Text(), "\xC3\xA9");
  EXPECT_EQ(TextOf(nullptr), "");
  EXPECT_EQ(BytesOf(nullptr), "");
}

TEST(String, OldPluginsFindDataAndLengthInTheSecondAndFourthWord) {
  Host host({.version = 2011.0});
  auto string = Make("hello");
  const auto *const words = reinterpret_cast<const uintptr_t *>(string.Handle());
  const char *const data = reinterpret_cast<const char *>(words[1]) + 1;
  EXPECT_EQ(*reinterpret_cast<const int32_t *>(&words[3]), 5);
  EXPECT_EQ(std::string_view(data, 5), "hello");
}

TEST(StringEntries, CountReferences) {
  Host host;
  auto string = Make("abc");
  const REALstring handle = string;
  Entry<void(REALstring)>("REALLockString")(handle);
  EXPECT_EQ(string->References(), 2);
  Entry<void(REALstring)>("REALUnlockString")(handle);
  EXPECT_EQ(string->References(), 1);
  Entry<void(REALstring)>("REALUnlockString")(nullptr);
  EXPECT_TRUE(host.Misdeeds().empty());
  string.Reset();
  Entry<void(REALstring)>("REALUnlockString")(handle);
  EXPECT_EQ(host.Misdeeds().size(), 1u);
}

TEST(StringEntries, BuildTagAndConvert) {
  Host host;
  auto built = Owned<String>::Adopt(Entry<REALstring(const void *, int32_t)>("REALBuildString")("a\0\xE9\0", 4));
  EXPECT_EQ(built->TextEncoding(), Encoding::None);
  EXPECT_EQ(Entry<uint32_t(REALstring)>("REALGetStringEncoding")(built), 0u);
  Entry<void(REALstring, uint32_t)>("REALSetStringEncoding")(built, kUTF16);
  EXPECT_EQ(Entry<uint32_t(REALstring)>("REALGetStringEncoding")(built), kUTF16);
  EXPECT_EQ(built->Bytes(), "a\0\xE9\0"sv);
  auto converted = Owned<String>::Adopt(Entry<REALstring(REALstring, uint32_t)>("REALConvertString")(built, kUTF8));
  EXPECT_EQ(converted->Bytes(), "a\xC3\xA9");
  EXPECT_EQ(converted->TextEncoding(), Encoding::UTF8);
  EXPECT_EQ(built->Bytes(), "a\0\xE9\0"sv);
  EXPECT_EQ(Entry<REALstring(REALstring, uint32_t)>("REALConvertString")(built, 7), nullptr);
  EXPECT_EQ(Entry<REALstring(REALstring, uint32_t)>("REALConvertString")(nullptr, kUTF8), nullptr);
  EXPECT_EQ(Entry<uint32_t(REALstring)>("REALGetStringEncoding")(nullptr), 0u);
}

TEST(StringEntries, BuildTakesNilAsZeroesAndANegativeLengthAsNothing) {
  Host host;
  const auto build = Entry<REALstring(const void *, int32_t)>("REALBuildString");
  EXPECT_EQ(Owned<String>::Adopt(build(nullptr, 3))->Bytes(), "\0\0\0"sv);
  EXPECT_EQ(Owned<String>::Adopt(build("a", 0))->Bytes(), "");
  EXPECT_EQ(build("a", -1), nullptr);
}

bool GetData(REALstring string, uint32_t encoding, REALstringData *data) {
  return Entry<uint8_t(REALstring, uint32_t, REALstringData *)>("PluginGetStringData")(string, encoding, data) != 0;
}

void Dispose(REALstringData *data) { Entry<void(REALstringData *)>("PluginDisposeStringData")(data); }

TEST(StringData, LendsTheBytesUntilTheyComeBack) {
  Host host;
  auto string = Make("ab");
  REALstringData first{};
  REALstringData second{};
  ASSERT_TRUE(GetData(string, kUTF8, &first));
  ASSERT_TRUE(GetData(string, kBinary, &second));
  EXPECT_EQ(first.data, string->Bytes().data());
  EXPECT_EQ(first.length, 2u);
  EXPECT_EQ(first.encoding, kUTF8);
  EXPECT_EQ(second.encoding, kBinary);
  EXPECT_EQ(StringDataLent(), 2);
  string.Reset();
  EXPECT_EQ(std::memcmp(first.data, "ab", 2), 0);
  Dispose(&first);
  EXPECT_EQ(LiveStrings().size(), 1u);
  Dispose(&second);
  EXPECT_EQ(LiveStrings().size(), 0u);
  EXPECT_EQ(StringDataLent(), 0);
}

TEST(StringData, ConvertsToTheWantedEncoding) {
  Host host;
  auto string = Make("\xC3\xA9");
  REALstringData data{};
  ASSERT_TRUE(GetData(string, kUTF16, &data));
  ASSERT_EQ(data.length, 2u);
  EXPECT_EQ(std::memcmp(data.data, "\xE9\0", 2), 0);
  Dispose(&data);
  EXPECT_EQ(string->References(), 1);
  EXPECT_EQ(LiveStrings().size(), 1u);
  EXPECT_FALSE(GetData(string, 7, &data));
  EXPECT_EQ(StringDataLent(), 0);
}

TEST(StringData, OfNilIsEmpty) {
  Host host;
  REALstringData data{};
  ASSERT_TRUE(GetData(nullptr, kBinary, &data));
  EXPECT_EQ(data.length, 0u);
  EXPECT_NE(data.data, nullptr);
  Dispose(&data);
  Dispose(nullptr);
  EXPECT_TRUE(host.Misdeeds().empty());
}

TEST(StringData, FreesACopyThatThePluginMadeByItself) {
  Host host;
  REALstringData data{std::malloc(8), 4, kBinary, {}};
  Dispose(&data);
  EXPECT_EQ(data.data, nullptr);
}

TEST(OldStringEntries, GiveTheBytesAndTheirCount) {
  Host host;
  auto string = Make("a\0z"sv, Encoding::Binary);
  const char *const text = Entry<const char *(REALstring)>("StringGetCString")(string);
  EXPECT_EQ(std::string_view(text, 4), "a\0z\0"sv);
  EXPECT_STREQ(Entry<const char *(REALstring)>("StringGetCString")(nullptr), "");

  const auto load = Entry<void *(void *, const char *)>("REALLoadGlobalMethod");
  const auto lenB = reinterpret_cast<int32_t (*)(REALstring)>(load(nullptr, "LenB( s as string ) as integer"));
  ASSERT_NE(lenB, nullptr);
  EXPECT_EQ(lenB(string), 3);
  EXPECT_EQ(lenB(nullptr), 0);
  EXPECT_EQ(load(nullptr, "Len( s as string ) as integer"), nullptr);
  EXPECT_EQ(load(nullptr, nullptr), nullptr);
  host.Withhold("LenB");
  EXPECT_EQ(load(nullptr, "LenB( s as string ) as integer"), nullptr);
}

}  // namespace
}  // namespace standalone
