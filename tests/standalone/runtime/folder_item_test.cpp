#include "standalone/runtime/folder_item.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/standalone/runtime/sample_tables.h"

namespace standalone {
namespace {

using sample::Entry;

uint8_t Reference(REALobject item, FSRef *reference, HFSUniStr255 *name) {
  return Entry<uint8_t(REALobject, FSRef *, HFSUniStr255 *)>("REALFSRefFromFolderItem")(item, reference, name);
}

uint8_t FSSpecOf(FSSpec *fsSpec, REALobject item) {
  return Entry<uint8_t(FSSpec *, REALobject)>("REALFSSpecFromFolderItem")(fsSpec, item);
}

class FolderItemTest : public testing::Test {
 protected:
  FolderItemTest() : folder_(std::filesystem::temp_directory_path() / ("items" + std::to_string(getpid()))) {
    std::filesystem::create_directory(folder_);
  }
  ~FolderItemTest() override { std::filesystem::remove_all(folder_); }

  std::string PathOf(const std::string &name) const { return (folder_ / name).string(); }
  Owned<FolderItem> Item(const std::string &path) { return Owned<FolderItem>::Adopt(FolderItem::Make(path)); }

  Host host_;
  std::filesystem::path folder_;
};

TEST_F(FolderItemTest, AFileThatIsThereHasAReference) {
  auto item = Item(PathOf("here"));
  FSRef reference{};
  EXPECT_EQ(Reference(item, &reference, nullptr), 0);
  std::ofstream(PathOf("here")) << "x";
  ASSERT_EQ(Reference(item, &reference, nullptr), 1);
  EXPECT_EQ(reference.path, PathOf("here"));
}

TEST_F(FolderItemTest, AFileThatIsNotThereIsToldByFolderAndName) {
  auto item = Item(PathOf("n\xC3\xA9w"));
  FSRef reference{};
  HFSUniStr255 name{};
  ASSERT_EQ(Reference(item, &reference, &name), 1);
  EXPECT_EQ(reference.path, folder_.string());
  ASSERT_EQ(name.length, 3);
  EXPECT_EQ(name.unicode[0], 'n');
  EXPECT_EQ(name.unicode[1], 0xE9);
  EXPECT_EQ(name.unicode[2], 'w');
}

TEST_F(FolderItemTest, NamesAreTakenFromRelativeTopmostAndSlashedPaths) {
  FSRef reference{};
  HFSUniStr255 name{};
  auto relative = Item("file");
  ASSERT_EQ(Reference(relative, &reference, &name), 1);
  EXPECT_STREQ(reference.path, ".");
  EXPECT_EQ(name.length, 4);
  auto topmost = Item("/file");
  ASSERT_EQ(Reference(topmost, &reference, &name), 1);
  EXPECT_STREQ(reference.path, "/");
  auto slashed = Item(PathOf("folder") + "//");
  ASSERT_EQ(Reference(slashed, &reference, &name), 1);
  EXPECT_EQ(reference.path, folder_.string());
  EXPECT_EQ(name.length, 6);
}

TEST_F(FolderItemTest, ANameOfMoreThan255UnitsOrAMissingFolderIsRefused) {
  FSRef reference{};
  HFSUniStr255 name{};
  EXPECT_EQ(Reference(Item(PathOf(std::string(255, 'a'))), &reference, &name), 1);
  EXPECT_EQ(name.length, 255);
  EXPECT_EQ(Reference(Item(PathOf(std::string(256, 'a'))), &reference, &name), 0);
  EXPECT_EQ(Reference(Item(PathOf("missing/file")), &reference, &name), 0);
}

TEST_F(FolderItemTest, TheFSSpecIsThePathWhetherOrNotTheFileIsThere) {
  FSSpec fsSpec{};
  auto item = Item(PathOf("new"));
  ASSERT_EQ(FSSpecOf(&fsSpec, item), 1);
  EXPECT_EQ(fsSpec.path, PathOf("new"));
  EXPECT_EQ(FSSpecOf(&fsSpec, nullptr), 0);
  EXPECT_EQ(FSSpecOf(&fsSpec, Item("")), 0);
}

// Paths are handed over as texts that end at a zero byte: this one would lead to another file.
TEST_F(FolderItemTest, APathThatHoldsAZeroByteIsToldInNoWayThatWouldCutIt) {
  using namespace std::string_literals;
  std::ofstream(PathOf("here")) << "x";
  FSRef reference{};
  FSSpec fsSpec{};
  HFSUniStr255 name{};
  auto item = Item(PathOf("here\0more"s));
  EXPECT_EQ(Reference(item, &reference, nullptr), 0);
  EXPECT_EQ(FSSpecOf(&fsSpec, item), 0);
  ASSERT_EQ(Reference(item, &reference, &name), 1);
  EXPECT_EQ(reference.path, folder_.string());
  ASSERT_EQ(name.length, 9);
  EXPECT_EQ(name.unicode[4], 0);
  EXPECT_EQ(name.unicode[5], 'm');
  EXPECT_EQ(Reference(Item(folder_.string() + "\0more/file"s), &reference, &name), 0);
}

TEST_F(FolderItemTest, EachWayCanBeRefusedAlone) {
  std::ofstream(PathOf("here")) << "x";
  auto item = Item(PathOf("here"));
  FSRef reference{};
  FSSpec fsSpec{};
  HFSUniStr255 name{};
  item->refusals = {.reference = true};
  EXPECT_EQ(Reference(item, &reference, nullptr), 0);
  EXPECT_EQ(Reference(item, &reference, &name), 1);
  item->refusals = {.parent = true};
  EXPECT_EQ(Reference(item, &reference, nullptr), 1);
  EXPECT_EQ(Reference(item, &reference, &name), 0);
  item->refusals = {.fsSpec = true};
  EXPECT_EQ(FSSpecOf(&fsSpec, item), 0);
}

TEST_F(FolderItemTest, TellsItsNameAndPathAsText) {
  auto item = Item("/a/b");
  String *text = nullptr;
  ASSERT_TRUE(item->GetText("name", &text));
  EXPECT_EQ(text->Text(), "b");
  ASSERT_TRUE(item->GetText("NativePath", &text));
  EXPECT_EQ(text->Text(), "/a/b");
  EXPECT_FALSE(item->GetText("Size", &text));
}

}  // namespace
}  // namespace standalone
