#include "standalone/zvk/images/file_image.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include "standalone/files/file_error.h"
#include "standalone/runtime/folder_item.h"

namespace standalone {
namespace {

// A fresh file, whose name goes away with this object.
class FreshFile {
 public:
  FreshFile() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) throw std::runtime_error("TMPDIR names no folder; name one that has room for temporary files");
    folder_ = folder.string();
    path_ = (folder / "zvk-XXXXXX").string();
    descriptor_ = mkostemp(path_.data(), O_CLOEXEC);
    if (descriptor_ < 0) Fail(errno);
  }
  FreshFile(const FreshFile &) = delete;
  FreshFile &operator=(const FreshFile &) = delete;
  ~FreshFile() {
    close(descriptor_);
    unlink(path_.c_str());
  }

  const std::string &Path() const { return path_; }

  // Takes the room of the whole file on the disk: a pixel that found none would end the program. First it is looked
  // whether there is any, so that a disk is not filled to its last byte in vain.
  void TakeRoom() const {
    struct stat status;
    struct statvfs disk;
    if (fstat(descriptor_, &status) != 0 || fstatvfs(descriptor_, &disk) != 0) Fail(errno);
    const auto bytes = static_cast<uint64_t>(status.st_size);
    if (bytes / disk.f_frsize >= disk.f_bavail) Fail(ENOSPC);
    if (const int problem = posix_fallocate(descriptor_, 0, status.st_size); problem != 0) Fail(problem);
  }

  [[noreturn]] void Fail(int number) const {
    throw std::runtime_error("no temporary file can be made in " + folder_ + " (" + SystemError(number) +
                             "); make room there, or name another folder by TMPDIR");
  }

 private:
  std::string folder_;
  std::string path_;
  int descriptor_;
};

}  // namespace

Value NewFileImage(const PluginSession &session, Size size, int32_t format, int32_t blockSize) {
  const FreshFile file;
  const Value image = session.Images().New(
      {size.width, size.height, format, blockSize, Owned<FolderItem>::Adopt(FolderItem::Make(file.Path()))});
  if (!image.Get("Valid").AsBoolean()) file.Fail(ENOSPC);
  file.TakeRoom();
  return image;
}

}  // namespace standalone
