#include "standalone/zvk/file_image.h"

#include <fcntl.h>
#include <sys/stat.h>
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
  int Descriptor() const { return descriptor_; }

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
  // A file that the disk has no room for would end the program at the first pixel that does not fit.
  struct stat status;
  if (fstat(file.Descriptor(), &status) != 0) file.Fail(errno);
  if (const int problem = posix_fallocate(file.Descriptor(), 0, status.st_size); problem != 0) file.Fail(problem);
  return image;
}

}  // namespace standalone
