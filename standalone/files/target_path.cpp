#include "standalone/files/target_path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "standalone/files/file_error.h"

namespace standalone {

std::string ReplaceablePath(const std::string &path) {
  std::error_code error;
  const std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
  const std::string target = error ? path : resolved.string();
  struct stat status;
  if (stat(target.c_str(), &status) == 0) {
    if (S_ISDIR(status.st_mode)) FailOnFile(path, "is a folder; name a file in it");
    if (!S_ISREG(status.st_mode)) FailOnFile(path, "is not a regular file; name another one");
    if (access(target.c_str(), W_OK) != 0) {
      FailOnFile(path, "is write-protected; name another file or change its permissions");
    }
  }
  return target;
}

}  // namespace standalone
