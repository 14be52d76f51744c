#include "standalone/files/file_error.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace standalone {

void FailOnFile(const std::string &path, const std::string &problem) { throw ImageFileError(path + ": " + problem); }

void FailOnDamage(const std::string &path, const std::string &formatName) {
  FailOnFile(path, "is a " + formatName + " file that is cut short or damaged; get a whole copy of it");
}

std::string SystemError(int number) { return std::generic_category().message(number); }

int64_t SizeOfFile(const std::string &path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) {
    const int number = errno;
    if (number == ENOENT) FailOnFile(path, "no such file; check the path");
    FailOnFile(path, "cannot be read (" + SystemError(number) + "); check the path");
  }
  if (S_ISDIR(status.st_mode)) FailOnFile(path, "is a folder; name an image file in it");
  return status.st_size;
}

}  // namespace standalone
