#include "standalone/files/part_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "standalone/files/file_error.h"

namespace standalone {
namespace {

namespace fs = std::filesystem;

class PartFolderTest : public testing::Test {
 protected:
  PartFolderTest() {
    std::string pattern = (fs::temp_directory_path() / "part_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~PartFolderTest() override { fs::remove_all(folder_); }

  std::string Path(const std::string &name) const { return (folder_ / name).string(); }
  static void Write(const std::string &path, const std::string &text) { std::ofstream(path) << text; }
  std::string Read(const std::string &name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  std::set<std::string> Names(const std::string &name = "") const {
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder_ / name)) names.insert(entry.path().filename());
    return names;
  }

  static std::string ErrorOf(const std::string &target) {
    try {
      const PartFolder folder(target);
    } catch (const ImageFileError &error) {
      return error.what();
    }
    return "no error";
  }

  fs::path folder_;
};

using Strings = std::set<std::string>;

TEST_F(PartFolderTest, GivesAFileOfTheTargetsNameTheTargetsPlace) {
  Write(Path("a.png"), "old");
  chmod(Path("a.png").c_str(), 0604);
  {
    PartFolder folder(Path("a.png"));
    EXPECT_EQ(fs::path(folder.FilePath()).filename(), "a.png");
    EXPECT_FALSE(folder.HasFile());
    Write(folder.FilePath(), "new");
    EXPECT_TRUE(folder.HasFile());
    EXPECT_EQ(Read("a.png"), "old");
    folder.Commit();
    EXPECT_EQ(Read("a.png"), "new");
  }
  EXPECT_EQ(Names(), Strings{"a.png"});
  struct stat status = {};
  ASSERT_EQ(stat(Path("a.png").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0604u);
}

TEST_F(PartFolderTest, GoesAwayWithAllThatIsInIt) {
  Write(Path("a"), "old");
  {
    const PartFolder folder(Path("a"));
    Write(folder.FilePath(), "half");
    fs::create_directories(fs::path(folder.FilePath()).parent_path() / "more");
  }
  EXPECT_EQ(Names(), Strings{"a"});
  EXPECT_EQ(Read("a"), "old");
}

TEST_F(PartFolderTest, MovesTheFilesBesideTheTargetsOwn) {
  Write(Path("a.txt"), "old");
  {
    PartFolder folder(Path("a"));
    Write(folder.FilePath(), "picture");
    Write(folder.FilePath() + ".txt", "text");
    folder.Commit();
  }
  EXPECT_EQ(Names(), (Strings{"a", "a.txt"}));
  EXPECT_EQ(Read("a"), "picture");
  EXPECT_EQ(Read("a.txt"), "text");
}

TEST_F(PartFolderTest, LeavesTheTargetWhenAnotherFileCannotBeMoved) {
  Write(Path("a"), "old");
  fs::create_directories(Path("a.txt"));
  Write(Path("a.txt/file"), "in the way");
  {
    PartFolder folder(Path("a"));
    Write(folder.FilePath(), "new");
    Write(folder.FilePath() + ".txt", "text");
    EXPECT_THROW(folder.Commit(), ImageFileError);
  }
  EXPECT_EQ(Read("a"), "old");
  EXPECT_EQ(Names(), (Strings{"a", "a.txt"}));
}

TEST_F(PartFolderTest, TakesNothingButARegularFileForTheTarget) {
  const PartFolder folder(Path("a"));
  fs::create_directories(folder.FilePath());
  EXPECT_FALSE(folder.HasFile());
  fs::remove(folder.FilePath());
  fs::create_symlink("/dev/null", folder.FilePath());
  EXPECT_FALSE(folder.HasFile());
}

TEST_F(PartFolderTest, MakesTheFoldersThatAreMissing) {
  {
    PartFolder folder(Path("new/folder/a"));
    Write(folder.FilePath(), "text");
    folder.Commit();
  }
  EXPECT_EQ(Read("new/folder/a"), "text");
  EXPECT_EQ(Names("new/folder"), Strings{"a"});
}

TEST_F(PartFolderTest, ReplacesTheFileBehindALink) {
  fs::create_directories(Path("real"));
  Write(Path("real/file"), "old");
  fs::create_symlink("real/file", Path("link"));
  {
    PartFolder folder(Path("link"));
    EXPECT_EQ(fs::path(folder.FilePath()).filename(), "link");
    Write(folder.FilePath(), "new");
    folder.Commit();
  }
  EXPECT_TRUE(fs::is_symlink(Path("link")));
  EXPECT_EQ(Read("real/file"), "new");
  EXPECT_EQ(Names("real"), Strings{"file"});
}

TEST_F(PartFolderTest, IsOneForEachThatAsks) {
  const PartFolder one(Path("a"));
  const PartFolder other(Path("a"));
  EXPECT_NE(one.FilePath(), other.FilePath());
}

TEST_F(PartFolderTest, NamesATargetThatCannotBe) {
  Write(Path("file"), "");
  EXPECT_EQ(ErrorOf(folder_.string()), folder_.string() + ": is a folder; name a file in it");
  EXPECT_EQ(ErrorOf(Path("file/a")),
            Path("file/a") + ": cannot be written (Not a directory); check its folder and who may write there");
  EXPECT_EQ(Names(), Strings{"file"});
}

}  // namespace
}  // namespace standalone
