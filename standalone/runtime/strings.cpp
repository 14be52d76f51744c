#include "standalone/runtime/strings.h"

#include <cstdlib>
#include <cstring>
#include <unordered_map>

#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/live_set.h"
#include "standalone/runtime/names.h"

namespace standalone {
namespace {

LiveSet<String> &Live() {
  static auto &live = *new LiveSet<String>;
  return live;
}

// The string behind a plug-in's address, or nil; an address that is no living string's is noted as a misdeed.
String *LiveString(REALstring handle) {
  if (handle == nullptr) return nullptr;
  if (Live().Has(handle)) return String::From(handle);
  HostState::Current().AddMisdeed("a string was used that has ended or never was one");
  return nullptr;
}

}  // namespace

String *String::Make(std::string_view bytes, Encoding encoding) { return new String(bytes, encoding); }

// A zero of four bytes behind the data ends a text of any width.
String::String(std::string_view bytes, Encoding encoding)
    : beforeData_(new char[1 + bytes.size() + 4]()),
      encoding_(static_cast<uint32_t>(encoding)),
      length_(static_cast<int32_t>(bytes.size())) {
  static_assert(offsetof(String, beforeData_) == sizeof(void *) && offsetof(String, length_) == 3 * sizeof(void *));
  if (!bytes.empty()) std::memcpy(beforeData_ + 1, bytes.data(), bytes.size());
  Live().Add(this);
}

String::~String() {
  Live().Remove(this);
  delete[] beforeData_;
}

void String::Lock() { ++references_; }

void String::Unlock() {
  if (--references_ == 0) delete this;
}

std::string_view String::Bytes() const { return {beforeData_ + 1, static_cast<size_t>(length_)}; }

std::string String::Text() const {
  std::string text;
  return ConvertText(Bytes(), TextEncoding(), Encoding::UTF8, &text) ? text : std::string(Bytes());
}

std::string_view BytesOf(REALstring handle) {
  return handle == nullptr ? std::string_view() : String::From(handle)->Bytes();
}

std::string TextOf(REALstring handle) { return handle == nullptr ? "" : String::From(handle)->Text(); }

uint64_t StringsMade() { return Live().Made(); }

std::vector<String *> LiveStrings(uint64_t made) { return Live().MadeAfter(made); }

namespace {

// String data that is lent to plug-ins: by its address, the string that it belongs to, as often as it was lent.
std::unordered_multimap<const void *, String *> &Lent() {
  static auto &lent = *new std::unordered_multimap<const void *, String *>;
  return lent;
}

// The data of the nil string.
char emptyData[4] = {};

void LockString(REALstring handle) {
  if (String *const string = LiveString(handle); string != nullptr) string->Lock();
}

void UnlockString(REALstring handle) {
  if (String *const string = LiveString(handle); string != nullptr) string->Unlock();
}

REALstring BuildString(const void *bytes, int32_t length) {
  if (length < 0) return nullptr;
  const auto size = static_cast<size_t>(length);
  if (bytes == nullptr) return String::Make(std::string(size, '\0'), Encoding::None)->Handle();
  return String::Make({static_cast<const char *>(bytes), size}, Encoding::None)->Handle();
}

uint32_t GetStringEncoding(REALstring handle) {
  const String *const string = LiveString(handle);
  return string == nullptr ? 0 : static_cast<uint32_t>(string->TextEncoding());
}

void SetStringEncoding(REALstring handle, uint32_t encoding) {
  String *const string = LiveString(handle);
  if (string != nullptr) string->SetTextEncoding(static_cast<Encoding>(encoding));
}

// The string in another encoding, one reference; nil if it cannot be converted.
String *Converted(String &string, Encoding encoding) {
  std::string converted;
  if (!ConvertText(string.Bytes(), string.TextEncoding(), encoding, &converted)) return nullptr;
  return String::Make(converted, encoding);
}

REALstring ConvertString(REALstring handle, uint32_t encoding) {
  String *const string = LiveString(handle);
  String *const converted = string == nullptr ? nullptr : Converted(*string, static_cast<Encoding>(encoding));
  return converted == nullptr ? nullptr : converted->Handle();
}

uint8_t GetStringData(REALstring handle, uint32_t code, REALstringData *data) {
  const auto encoding = static_cast<Encoding>(code);
  *data = {emptyData, 0, code, {}};
  if (handle == nullptr) return 1;
  String *string = LiveString(handle);
  if (string == nullptr) return 0;
  if (encoding == Encoding::Binary || encoding == string->TextEncoding()) {
    string->Lock();
  } else {
    string = Converted(*string, encoding);
    if (string == nullptr) return 0;
  }
  data->data = const_cast<char *>(string->Bytes().data());
  data->length = static_cast<uint32_t>(string->Bytes().size());
  Lent().emplace(data->data, string);
  return 1;
}

void DisposeStringData(REALstringData *data) {
  if (data == nullptr || data->data == nullptr || data->data == emptyData) return;
  if (const auto lent = Lent().find(data->data); lent != Lent().end()) {
    String *const string = lent->second;
    Lent().erase(lent);
    string->Unlock();
  } else {
    std::free(data->data);  // a copy that the plug-in made for want of the entry that lends
  }
  data->data = nullptr;
}

const char *StringGetCString(REALstring handle) {
  const String *const string = LiveString(handle);
  return string == nullptr ? emptyData : string->Bytes().data();
}

int32_t LenB(REALstring handle) {
  const String *const string = LiveString(handle);
  return string == nullptr ? 0 : static_cast<int32_t>(string->Bytes().size());
}

void *LoadGlobalMethod(void *, const char *declaration) {
  if (declaration == nullptr || !DeclarationsEqual(declaration, "LenB(s as string) as integer")) return nullptr;
  return HostState::Current().IsWithheld("LenB") ? nullptr : reinterpret_cast<void *>(LenB);
}

}  // namespace

int32_t StringDataLent() { return static_cast<int32_t>(Lent().size()); }

std::vector<Entry> StringEntries() {
  return {MakeEntry<"REALLockString", LockString>(),
          MakeEntry<"REALUnlockString", UnlockString>(),
          MakeEntry<"REALBuildString", BuildString>(),
          MakeEntry<"REALGetStringEncoding", GetStringEncoding>(),
          MakeEntry<"REALSetStringEncoding", SetStringEncoding>(),
          MakeEntry<"REALConvertString", ConvertString>(),
          MakeEntry<"PluginGetStringData", GetStringData>(),
          MakeEntry<"PluginDisposeStringData", DisposeStringData>(),
          MakeEntry<"StringGetCString", StringGetCString>(),
          MakeEntry<"REALLoadGlobalMethod", LoadGlobalMethod>()};
}

}  // namespace standalone
