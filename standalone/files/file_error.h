// What all readers and writers of image files have in common: the one kind of error, and the look at a path before it
// is opened.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace standalone {

// A file that cannot be read or written. The message is one line that names the file and the way out.
class ImageFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws ImageFileError with "PATH: PROBLEM".
[[noreturn]] void FailOnFile(const std::string &path, const std::string &problem);

// The same for a file that does not hold what its format promises.
[[noreturn]] void FailOnDamage(const std::string &path, const std::string &formatName);

// The system's words for an error number.
std::string SystemError(int number);

// The size in bytes of a file that is there and is no folder. Throws ImageFileError for any other path.
int64_t SizeOfFile(const std::string &path);

}  // namespace standalone
