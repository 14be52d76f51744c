// Strings of the host: counted bytes with an encoding. Nil is the empty string.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "abi/host_layouts.h"
#include "standalone/runtime/owned.h"

namespace standalone {

// Encodings by the codes that plug-ins and hosts exchange.
enum class Encoding : uint32_t {
  None = 0,
  UTF16 = 0x100,
  Latin1 = 0x500,
  ASCII = 0x600,
  Binary = 0xFFFF,
  UTF8 = 0x8000100,
  UTF32 = 0xC000100,
};

// The bytes of a text in another encoding. Wide forms are little-endian without a mark. What cannot be read becomes
// U+FFFD, what cannot be written a question mark. From or to None and Binary the bytes stay as they are. False for a
// code that is not listed above.
bool ConvertText(std::string_view bytes, Encoding from, Encoding to, std::string *converted);

// A counted string. Starts with one reference, which belongs to the maker.
class String {
 public:
  using HandleType = REALstring;

  // A string over a copy of the bytes. Never nil.
  static String *Make(std::string_view bytes, Encoding encoding = Encoding::UTF8);
  String(const String &) = delete;
  String &operator=(const String &) = delete;

  static String *From(REALstring handle) { return reinterpret_cast<String *>(handle); }
  REALstring Handle() { return reinterpret_cast<REALstring>(this); }

  void Lock();
  void Unlock();
  int32_t References() const { return static_cast<int32_t>(references_); }

  // The bytes as they are; a zero stands behind them.
  std::string_view Bytes() const;
  Encoding TextEncoding() const { return static_cast<Encoding>(encoding_); }
  void SetTextEncoding(Encoding encoding) { encoding_ = static_cast<uint32_t>(encoding); }
  // The text in UTF-8; bytes of no known encoding as they are.
  std::string Text() const;

 private:
  String(std::string_view bytes, Encoding encoding);
  ~String();

  // Words that plug-ins of old hosts read: the second is the data with one byte to pass, the fourth the length.
  intptr_t references_ = 1;
  char *beforeData_;
  uintptr_t encoding_;
  int32_t length_;
};

// The bytes or the UTF-8 text behind a plug-in's address; empty for nil.
std::string_view BytesOf(REALstring handle);
std::string TextOf(REALstring handle);

// How often string data is lent to plug-ins and has not come back.
int32_t StringDataLent();

// How many strings have been made so far, and those alive that were made after the first `made`, in order.
uint64_t StringsMade();
std::vector<String *> LiveStrings(uint64_t made = 0);

}  // namespace standalone
