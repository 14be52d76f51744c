// The entries that a host offers to plug-ins: plain functions, found by name, with a count of their calls.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace standalone {

// One function of the host under the name by which plug-ins ask for it.
struct Entry {
  std::string_view name;
  void *address;
  int64_t *calls;  // how often it was called, counted since the host's start
};

// An entry's name as a template argument.
template <size_t kSize>
struct EntryName {
  // NOLINTNEXTLINE(google-explicit-constructor): lets a literal stand as the argument.
  constexpr EntryName(const char (&literal)[kSize]) { std::copy_n(literal, kSize, text); }
  char text[kSize];
};

// The function that a plug-in gets: counts, then calls. Exceptions pass through.
template <EntryName kName, auto kFunction>
struct CountedEntry;

template <EntryName kName, class Result, class... Arguments, Result (*kFunction)(Arguments...)>
struct CountedEntry<kName, kFunction> {
  static inline int64_t calls = 0;

  static Result Call(Arguments... arguments) {
    ++calls;
    return kFunction(arguments...);
  }

  static Entry Make() { return {kName.text, reinterpret_cast<void *>(&Call), &calls}; }
};

// The entry `kName` that is served by `kFunction`.
template <EntryName kName, auto kFunction>
Entry MakeEntry() {
  return CountedEntry<kName, kFunction>::Make();
}

// The entries, subject by subject.
std::vector<Entry> ObjectEntries();
std::vector<Entry> ClassEntries();
std::vector<Entry> PropertyEntries();
std::vector<Entry> StringEntries();
std::vector<Entry> MemoryBlockEntries();
std::vector<Entry> ArrayEntries();
std::vector<Entry> FolderItemEntries();
std::vector<Entry> ExceptionEntries();
std::vector<Entry> PictureEntries();
std::vector<Entry> GraphicsEntries();
std::vector<Entry> BitmapContextEntries();  // functions of a desktop's platform
std::vector<Entry> ClockEntries();          // functions of a platform that has these clocks

}  // namespace standalone
