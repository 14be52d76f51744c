#include "host/paths/folder_path.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/image/file_testing.h"
#include "tests/support/faults.h"
#include "tests/support/plugin_host.h"

namespace zvk::host::paths {
namespace {

// What the entries below answer, in place of a folder item's own places.
struct Answers {
  const char *file = nullptr;  // by reference; nil with `hasFile` is an answer without a path
  bool hasFile = false;
  const char *parent = nullptr;  // by reference, with `name`
  bool hasParent = false;
  std::vector<uint16_t> name = {};
  int32_t nameLength = -1;  // if it is not to be the name's own
  const char *specified = nullptr;
  bool hasSpecified = false;
  std::string asked = {};  // the questions in their order: f, p, s
};
Answers answers;

uint8_t AnswerReference(REALobject, FSRef *reference, HFSUniStr255 *name) {
  answers.asked += name == nullptr ? 'f' : 'p';
  if (name == nullptr) {
    reference->path = answers.file;
    return answers.hasFile;
  }
  reference->path = answers.parent;
  name->length = static_cast<uint16_t>(answers.nameLength >= 0 ? answers.nameLength : answers.name.size());
  std::ranges::copy(answers.name, name->unicode);
  return answers.hasParent;
}

uint8_t AnswerFSSpec(FSSpec *fsSpec, REALobject) {
  answers.asked += 's';
  fsSpec->path = answers.specified;
  return answers.hasSpecified;
}

class FolderPath : public testing::Test {
 protected:
  // The path of an item, of one at a place, and of one that answers as told; "(none)" if there is none.
  std::string PathOf(const standalone::Owned<standalone::FolderItem> &item) {
    const ZeroedBuffer<char> path = FolderItemPath(item);
    return path ? path.Get() : "(none)";
  }
  std::string PathOf(const std::string &place) { return PathOf(host_.NewFolderItem(place)); }
  std::string Answered(const Answers &told) {
    answers = told;
    host_->SetEntry("REALFSRefFromFolderItem", AnswerReference);
    host_->SetEntry("REALFSSpecFromFolderItem", AnswerFSSpec);
    return PathOf("anything");
  }

  std::string In(const std::string &name) const { return folder_.In(name); }
  void MakeFile(const std::string &name) { std::ofstream(In(name)) << "content"; }

  file_testing::TemporaryFolder folder_;
  PluginHost host_;
};

TEST_F(FolderPath, ANilItemHasNone) { EXPECT_FALSE(FolderItemPath(nullptr)); }

TEST_F(FolderPath, AFileThatExistsIsFoundByItsReference) {
  MakeFile("there");
  EXPECT_EQ(PathOf(In("there")), In("there"));
  EXPECT_EQ(host_->Calls("REALFSRefFromFolderItem"), 1);
  EXPECT_EQ(host_->Calls("REALFSSpecFromFolderItem"), 0);
}

TEST_F(FolderPath, AFileThatDoesNotExistIsFoundByItsFolderAndName) {
  EXPECT_EQ(PathOf(In("new file")), In("new file"));
  EXPECT_EQ(host_->Calls("REALFSRefFromFolderItem"), 2);
  EXPECT_EQ(host_->Calls("REALFSSpecFromFolderItem"), 0);
}

TEST_F(FolderPath, AnItemThatRefusesReferencesIsFoundByItsFSSpec) {
  const auto item = host_.NewFolderItem(In("new"));
  item->refusals.parent = true;
  EXPECT_EQ(PathOf(item), In("new"));
  EXPECT_EQ(host_->Calls("REALFSSpecFromFolderItem"), 1);
  item->refusals.fsSpec = true;
  EXPECT_EQ(PathOf(item), "(none)");
}

TEST_F(FolderPath, AHostWithoutReferencesIsAskedForTheFSSpec) {
  MakeFile("there");
  host_->Withhold("REALFSRefFromFolderItem");
  EXPECT_EQ(PathOf(In("there")), In("there"));
  EXPECT_EQ(PathOf(In("new")), In("new"));
}

TEST_F(FolderPath, AHostWithNeitherEntryHasNoPath) {
  MakeFile("there");
  host_->Withhold("REALFSRefFromFolderItem");
  host_->Withhold("REALFSSpecFromFolderItem");
  EXPECT_EQ(PathOf(In("there")), "(none)");
}

TEST_F(FolderPath, TheThreeWaysAreTriedInOrderAndTheFirstThatLeadsSomewhereWins) {
  const Answers all{.file = "/file",
                    .hasFile = true,
                    .parent = "/folder",
                    .hasParent = true,
                    .name = {'n'},
                    .specified = "/specified",
                    .hasSpecified = true};
  EXPECT_EQ(Answered(all), "/file");
  EXPECT_EQ(answers.asked, "f");
  Answers told = all;
  told.hasFile = false;
  EXPECT_EQ(Answered(told), "/folder/n");
  EXPECT_EQ(answers.asked, "fp");
  told.hasParent = false;
  EXPECT_EQ(Answered(told), "/specified");
  EXPECT_EQ(answers.asked, "fps");
  told.hasSpecified = false;
  EXPECT_EQ(Answered(told), "(none)");
  EXPECT_EQ(answers.asked, "fps");
}

TEST_F(FolderPath, AnAnswerWithoutAPathLeadsToTheNextWay) {
  Answers told{.file = nullptr,
               .hasFile = true,
               .parent = "/folder",
               .hasParent = true,
               .name = {'n'},
               .specified = "/specified",
               .hasSpecified = true};
  EXPECT_EQ(Answered(told), "/folder/n");
  told.parent = nullptr;
  EXPECT_EQ(Answered(told), "/specified");
  told.parent = "";
  EXPECT_EQ(Answered(told), "/specified");
  told.specified = nullptr;
  EXPECT_EQ(Answered(told), "(none)");
}

TEST_F(FolderPath, ANameThatIsEmptyOrTooLongLeadsToTheFSSpec) {
  Answers told{.parent = "/folder", .hasParent = true, .name = {}, .specified = "/specified", .hasSpecified = true};
  EXPECT_EQ(Answered(told), "/specified");
  told.name.assign(255, 'n');
  EXPECT_EQ(Answered(told), "/folder/" + std::string(255, 'n'));
  told.nameLength = 256;
  EXPECT_EQ(Answered(told), "/specified");
}

TEST_F(FolderPath, ANameWithHalfASurrogatePairLeadsToTheFSSpec) {
  for (const std::vector<uint16_t> &name : std::initializer_list<std::vector<uint16_t>>{
           {'n', 0xD83D}, {0xD83D, 'n'}, {0xDE00}, {0xDE00, 0xD83D}, {0xD83D, 0xD83D, 0xDE00}}) {
    Answers told{.parent = "/folder", .hasParent = true, .name = name, .specified = "/specified", .hasSpecified = true};
    EXPECT_EQ(Answered(told), "/specified");
  }
}

// As text it would end there, at the name of another file.
TEST_F(FolderPath, ANameThatHoldsAZeroCharacterLeadsToTheFSSpec) {
  for (const std::vector<uint16_t> &name :
       std::initializer_list<std::vector<uint16_t>>{{'n', 0, 'm'}, {'n', 0}, {0, 'n'}, {0}, {0xD83D, 0xDE00, 0}}) {
    Answers told{.parent = "/folder", .hasParent = true, .name = name, .specified = "/specified", .hasSpecified = true};
    EXPECT_EQ(Answered(told), "/specified") << testing::PrintToString(name);
    told.hasSpecified = false;
    EXPECT_EQ(Answered(told), "(none)") << testing::PrintToString(name);
  }
}

TEST_F(FolderPath, NamesComeInUTF16AndLeaveInUTF8) {
  const Answers told{.parent = "/folder",
                     .hasParent = true,
                     .name = {0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF}};
  EXPECT_EQ(Answered(told),
            "/folder/\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
            "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST_F(FolderPath, AFolderThatEndsInASlashGetsNoSecondOne) {
  const Answers told{.parent = "/", .hasParent = true, .name = {'n'}};
  EXPECT_EQ(Answered(told), "/n");
}

TEST_F(FolderPath, TheWholePathComesOutDecomposed) {
  // a with diaeresis, e with acute, n with tilde, the syllable han
  std::filesystem::create_directory(In("\xC3\xA4"));
  EXPECT_EQ(PathOf(In("\xC3\xA4/caf\xC3\xA9")), In("a\xCC\x88/cafe\xCC\x81"));
  MakeFile("\xC3\xB1");
  EXPECT_EQ(PathOf(In("\xC3\xB1")), In("n\xCC\x83"));
  EXPECT_EQ(PathOf(In("\xED\x95\x9C")), In("\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB"));
}

TEST_F(FolderPath, ASpecifiedPathComesOutDecomposedToo) {
  EXPECT_EQ(Answered({.specified = "/\xC3\xA9", .hasSpecified = true}), "/e\xCC\x81");
}

TEST_F(FolderPath, MarksInANameAreOrderedAcrossNothingButTheName) {
  // The name begins with a mark of a lower class than the one at the end of the folder.
  const Answers told{.parent = "/a\xCC\x81", .hasParent = true, .name = {0x323, 'b', 0x301, 0x323}};
  EXPECT_EQ(Answered(told),
            "/a\xCC\x81/\xCC\xA3"
            "b\xCC\xA3\xCC\x81");
}

TEST_F(FolderPath, AllLengthsOfUTF8ComeThroughUnchanged) {
  const char *const path =
      "/\x01\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
  EXPECT_EQ(Answered({.file = path, .hasFile = true}), path);
}

TEST_F(FolderPath, AMalformedPathIsNoneAndNoOtherWayIsTried) {
  for (const char *path : {
           "/\x80",              // trailing byte without a lead
           "/\xC3",              // cut short at the end
           "/\xC3/",             // cut short before another character
           "/\xE4\xB8",          //
           "/\xF0\x9F\x98",      //
           "/\xC0\xAF",          // longer than it needs to be
           "/\xC1\xBF",          //
           "/\xE0\x9F\xBF",      //
           "/\xF0\x8F\xBF\xBF",  //
           "/\xED\xA0\x80",      // half a surrogate pair
           "/\xED\xBF\xBF",      //
           "/\xF4\x90\x80\x80",  // beyond the last character
           "/\xF8\x90\x80\x80",  // no lead
           "/\xF8\x88\x80\x80\x80",
           "/\xFF",
       }) {
    EXPECT_EQ(Answered({.file = path, .hasFile = true, .specified = "/specified", .hasSpecified = true}), "(none)")
        << testing::PrintToString(path);
    EXPECT_EQ(answers.asked, "f");
  }
}

TEST_F(FolderPath, AnEmptyPathIsNone) {
  EXPECT_EQ(Answered({.file = "", .hasFile = true, .specified = "/specified", .hasSpecified = true}), "(none)");
  EXPECT_EQ(Answered({.specified = "", .hasSpecified = true}), "(none)");
}

TEST_F(FolderPath, TheBufferIsMeasuredByTheDecomposedUTF16Characters) {
  // Ten characters: a slash, e and acute, G clef in two units, three Hangul letters, x, y.
  answers = {.file = "/\xC3\xA9\xF0\x9D\x84\x9E\xED\x95\x9Cxy", .hasFile = true};
  host_->SetEntry("REALFSRefFromFolderItem", AnswerReference);
  const auto item = host_.NewFolderItem("anything");
  const faults::Heap heap;
  const ZeroedBuffer<char> path = FolderItemPath(item);
  ASSERT_TRUE(path);
  const faults::Allocation last = heap.Allocations().back();
  EXPECT_EQ(last.address, path.Get());
  EXPECT_TRUE(last.zeroed);
  EXPECT_EQ(last.count * last.size, 6u * 10 + 20);
}

TEST_F(FolderPath, WithoutMemoryThereIsNoneAndNothingStays) {
  MakeFile("there");
  const auto item = host_.NewFolderItem(In("there"));
  EXPECT_EQ(PathOf(item), In("there"));
  faults::Heap heap;
  EXPECT_TRUE(FolderItemPath(item));
  const int calls = heap.CallocCalls();
  ASSERT_GE(calls, 1);
  for (int nth = 1; nth <= calls; ++nth) {
    heap.FailCallocAt(nth);
    EXPECT_FALSE(FolderItemPath(item)) << nth;
    EXPECT_EQ(heap.Outstanding(), 0u) << nth;
  }
}

}  // namespace
}  // namespace zvk::host::paths
