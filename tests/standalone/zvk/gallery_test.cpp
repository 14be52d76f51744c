// The gallery: the page that examples/gallery.lua makes shows all there is, and its excerpt is the one in docs/.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/runtime/host.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::HasSubstr;

// Methods that make no picture of their own, or one that another method's picture shows.
const std::set<std::string> kWithoutPicture = {
    "Clone",    "Close",       "CompareImages",       "Constructor",      "CopyGWorld",
    "CopyMask", "CopyPicture", "CopyPictureWithMask", "CreatePictureZVK", "DataStringInFormat",
    "RawRow",   "Row",         "RowInFormat",         "RowStringInFormat"};

std::string Join(const std::vector<std::string> &texts) {
  std::string joined;
  for (const std::string &text : texts) joined += text + "\n";
  return joined;
}

class GalleryTest : public ZvkProgram {
 protected:
  GalleryTest() {
    RunWell({"run", "--seed", "1", std::string(PICTUREZVK_EXAMPLES) + "/gallery.lua", "whole", "docs"});
    page_ = Read("whole/gallery.html");
  }

  static std::string Committed(const std::string &name) {
    return std::string(PICTUREZVK_EXAMPLES) + "/../docs/" + name;
  }

  // What stands between `before` and `behind` in each line of the page that has `where` in it, and both.
  std::vector<std::string> Between(const std::string &where, const std::string &before,
                                   const std::string &behind) const {
    std::vector<std::string> found;
    std::istringstream lines(page_);
    for (std::string line; std::getline(lines, line);) {
      const size_t place = line.find(before);
      if (line.find(where) == std::string::npos || place == std::string::npos) continue;
      const size_t start = place + before.size();
      found.push_back(line.substr(start, line.find(behind, start) - start));
    }
    return found;
  }

  // The calls under the pictures, as they are run.
  std::vector<std::string> Calls() const {
    static const std::string kBreak = "<wbr>";
    std::vector<std::string> calls = Between("<figcaption>", "<code>", "</code></figcaption>");
    for (std::string &call : calls) {
      for (size_t at; (at = call.find(kBreak)) != std::string::npos;) call.erase(at, kBreak.size());
    }
    return calls;
  }

  // The files in a folder, by name.
  static std::set<std::string> FilesIn(const std::string &folder) {
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename());
    return names;
  }

  std::string page_;
};

TEST_F(GalleryTest, APictureShowsEachOperationAndEachScaleFilterAndDitherMatrix) {
  Host host;
  host.Load(PICTUREZVK_LIBRARY);
  const Bindings bindings;
  const ClassBinding &images = ClassNamed("PictureZVK");
  const std::string calls = Join(Calls());
  for (const BoundMethod &method : images.Methods()) {
    const std::string &name = method.declaration.name;
    if (method.isShared || kWithoutPicture.contains(name)) continue;
    EXPECT_THAT(calls, HasSubstr(":" + name + "("));
  }
  int constants = 0;
  for (const ConstantDeclaration &constant : images.Constants()) {
    if (!constant.name.starts_with("Scale") && !constant.name.starts_with("Dither")) continue;
    EXPECT_THAT(calls, HasSubstr("PictureZVK." + constant.name + ","));
    ++constants;
  }
  EXPECT_EQ(constants, 17);
}

TEST_F(GalleryTest, ThePageNamesThePicturesThatThereAre) {
  const std::vector<std::string> named = Between("<figure", "<img src=\"gallery/", "\"");
  EXPECT_EQ(named.size(), Calls().size());
  for (const std::string &text : Between("<figure", " alt=\"", "\"")) EXPECT_NE(text, "");
  EXPECT_EQ(Between("<figure", " alt=\"", "\"").size(), named.size());
  EXPECT_EQ(Between("<figure", " width=\"", "\" height=\"").size(), named.size());
  EXPECT_THAT(FilesIn(Path("whole/gallery")), testing::UnorderedElementsAreArray(named));
}

TEST_F(GalleryTest, TheExcerptInDocsIsTheOneMadeAndIsSmall) {
  const std::string excerpt = Read("docs/gallery.md");
  std::ifstream file(Committed("gallery.md"), std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), excerpt);
  const std::set<std::string> pictures = FilesIn(Path("docs/images/gallery"));
  EXPECT_EQ(pictures.size(), 12u);
  ASSERT_EQ(FilesIn(Committed("images/gallery")), pictures);
  uintmax_t bytes = excerpt.size();
  for (const std::string &name : pictures) {
    EXPECT_THAT(excerpt, HasSubstr("](images/gallery/" + name + ") | "));
    EXPECT_EQ(Read("docs/images/gallery/" + name), Read("whole/gallery/" + name)) << name;
    const std::string kept = Committed("images/gallery/" + name);
    ExpectSamePixels(Path("docs/images/gallery/" + name), kept);
    bytes += std::filesystem::file_size(kept);
  }
  EXPECT_LT(bytes, 200'000u);
}

TEST_F(GalleryTest, TheWholeIsSmall) {
  uintmax_t bytes = page_.size();
  for (const std::string &name : FilesIn(Path("whole/gallery"))) {
    bytes += std::filesystem::file_size(Path("whole/gallery/" + name));
  }
  EXPECT_LT(bytes, 3'000'000u);
}

}  // namespace
}  // namespace standalone
