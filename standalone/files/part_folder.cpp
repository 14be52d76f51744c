#include "standalone/files/part_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "standalone/files/file_error.h"
#include "standalone/files/target_path.h"

namespace standalone {

namespace fs = std::filesystem;

PartFolder::PartFolder(const std::string &target) : name_(target), target_(ReplaceablePath(target)) {
  const fs::path folder = fs::absolute(target_).parent_path();
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) FailToWrite(error.value());
  for (int attempt = 0; path_.empty(); ++attempt) {
    const fs::path path = folder / (".zvk-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".part");
    if (mkdir(path.c_str(), 0777) == 0) {
      path_ = path.string();
    } else if (errno != EEXIST) {
      FailToWrite(errno);
    }
  }
  file_ = (fs::path(path_) / fs::path(name_).filename()).string();
}

PartFolder::~PartFolder() {
  std::error_code error;
  fs::remove_all(path_, error);
}

bool PartFolder::HasFile() const {
  std::error_code error;
  return fs::symlink_status(file_, error).type() == fs::file_type::regular;
}

void PartFolder::Commit() {
  std::error_code error;
  std::vector<fs::path> others;
  for (fs::directory_iterator entry(path_, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    if (entry->path() != file_) others.push_back(entry->path());
  }
  if (error) FailToWrite(error.value());
  for (const fs::path &other : others) {
    if (rename(other.c_str(), (fs::path(target_).parent_path() / other.filename()).c_str()) != 0) FailToWrite(errno);
  }
  struct stat status;
  if (stat(target_.c_str(), &status) == 0 && chmod(file_.c_str(), status.st_mode & 07777) != 0) FailToWrite(errno);
  if (rename(file_.c_str(), target_.c_str()) != 0) FailToWrite(errno);
}

void PartFolder::FailToWrite(int number) const {
  FailOnFile(name_, "cannot be written (" + SystemError(number) + "); check its folder and who may write there");
}

}  // namespace standalone
