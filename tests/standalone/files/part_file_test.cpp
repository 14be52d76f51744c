#include "standalone/files/part_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace standalone {
namespace {

class Part : public testing::Test {
 protected:
  Part() {
    std::string pattern = (std::filesystem::temp_directory_path() / "part_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~Part() override { std::filesystem::remove_all(folder_); }

  std::string Path(const std::string &name) const { return (folder_ / name).string(); }
  std::string Read(const std::string &name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder_)) names.insert(entry.path().filename());
    return names;
  }

  std::filesystem::path folder_;
};

const std::vector<uint8_t> kText = {'t', 'e', 'x', 't'};

TEST_F(Part, TakesThePlaceOfItsTargetWhenItIsWhole) {
  std::ofstream(Path("a")) << "old";
  chmod(Path("a").c_str(), 0604);
  {
    PartFile file(Path("a"));
    file.Write(kText);
    EXPECT_EQ(Read("a"), "old");
    EXPECT_EQ(Names().size(), 2u);
    file.Commit();
  }
  EXPECT_EQ(Read("a"), "text");
  EXPECT_EQ(Names(), std::set<std::string>{"a"});
  struct stat status = {};
  ASSERT_EQ(stat(Path("a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0604u);
}

TEST_F(Part, GoesAwayWhenItIsNot) {
  { PartFile(Path("a")).Write(kText); }
  EXPECT_TRUE(Names().empty());
}

TEST_F(Part, CanBeWrittenByItsDescriptorAndItsStream) {
  PartFile file(Path("a"));
  ASSERT_EQ(write(file.Descriptor(), "one ", 4), 4);
  std::fputs("two", file.Stream());
  file.Commit();
  EXPECT_EQ(Read("a"), "one two");
}

TEST_F(Part, NamesTheTargetAsItWasGivenWhereverItLeads) {
  std::filesystem::create_directory(Path("real"));
  std::filesystem::create_directory_symlink(Path("real"), Path("link"));
  const PartFile file(Path("link/a"));
  try {
    file.FailToWrite(ENOSPC);
  } catch (const ImageFileError &error) {
    EXPECT_EQ(error.what(),
              Path("link/a") + ": cannot be written (No space left on device); what was there before is unchanged");
  }
}

}  // namespace
}  // namespace standalone
