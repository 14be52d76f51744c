#include "standalone/files/part_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <new>
#include <utility>

#include "standalone/files/target_path.h"

namespace standalone {

PartFile::PartFile(const std::string &target) : name_(target), target_(ReplaceablePath(target)) {
  const std::filesystem::path folder = std::filesystem::path(target_).parent_path();
  int descriptor = -1;
  for (int attempt = 0; descriptor < 0; ++attempt) {
    path_ = (folder / (".zvk-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".part")).string();
    descriptor = open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0 && errno != EEXIST) {
      FailOnFile(name_, "cannot be written (" + SystemError(errno) +
                            "); check that its folder exists and who may write there");
    }
  }
  stream_ = fdopen(descriptor, "w+b");
  if (stream_ == nullptr) {
    close(descriptor);
    unlink(path_.c_str());
    throw std::bad_alloc();
  }
}

PartFile::~PartFile() {
  if (stream_ != nullptr) std::fclose(stream_);
  if (!path_.empty()) unlink(path_.c_str());
}

void PartFile::Write(std::span<const uint8_t> bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stream_) != bytes.size()) FailToWrite(errno);
}

void PartFile::Commit() {
  if (std::fflush(stream_) != 0) FailToWrite(errno);
  struct stat status;
  if (stat(target_.c_str(), &status) == 0 && fchmod(Descriptor(), status.st_mode & 07777) != 0) FailToWrite(errno);
  if (std::fclose(std::exchange(stream_, nullptr)) != 0) FailToWrite(errno);
  if (rename(path_.c_str(), target_.c_str()) != 0) FailToWrite(errno);
  path_.clear();
}

void PartFile::FailToWrite(int number) const {
  FailOnFile(name_, "cannot be written (" + SystemError(number) + "); what was there before is unchanged");
}

}  // namespace standalone
