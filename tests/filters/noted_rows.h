// Images in memory that pass for mapped ones and note every fetch of a row, for tests of the order of fetches.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/filters/filter_testing.h"

namespace filter_testing {

// The fetches since the last look: by letter of the image, and row.
using Fetches = std::vector<std::pair<char, int32_t>>;
inline Fetches noted;

inline Fetches TakeFetches() { return std::exchange(noted, {}); }

template <char kLetter>
uint8_t *NoteRow(ImageClassData *record, int32_t index) {
  noted.emplace_back(kLetter, index);
  return GetRowLinear(record, index);
}

// Fetches as a line of letters and digits: "s0 s1 d0".
inline Fetches FetchesOf(const std::string &line) {
  Fetches fetches;
  for (size_t i = 0; i + 1 < line.size(); i += 3) fetches.emplace_back(line[i], line[i + 1] - '0');
  return fetches;
}

template <char kLetter>
void PassForMapped(const Image &image) {
  Record(image).IsMapping = true;
  Record(image).GetRow = NoteRow<kLetter>;
}

inline void PassForLinear(const Image &image) {
  Record(image).IsMapping = false;
  Record(image).GetRow = GetRowLinear;
}

// What a filter fetches from a gray source of the given size (s) to a dest of its own (d).
template <class Filter>
Fetches FetchesFor(PluginHost &host, int32_t width, int32_t height, Filter filter) {
  const auto make = [&] {
    Image image = host.New("PictureZVK");
    ImageConstructor(image, width, height, ImageFormatG);
    return image;
  };
  const Image source = make(), dest = make();
  PassForMapped<'s'>(source);
  PassForMapped<'d'>(dest);
  noted.clear();
  EXPECT_TRUE(Adopt(filter(source, dest)));
  PassForLinear(source);
  PassForLinear(dest);
  return TakeFetches();
}

}  // namespace filter_testing
