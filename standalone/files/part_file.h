// Files that appear whole or not at all.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include "standalone/files/file_error.h"

namespace standalone {

// A new file beside the target that takes its place by Commit, or goes away. A target behind symbolic links is replaced
// where they lead. Everything throws ImageFileError that names the target as it was given.
class PartFile {
 public:
  // The target, if it is there, must be a regular file that may be written.
  explicit PartFile(const std::string &target);
  PartFile(const PartFile &) = delete;
  PartFile &operator=(const PartFile &) = delete;
  ~PartFile();

  // The new file, open for reading and writing, at its start. For libraries that write by themselves: what they could
  // not write is told by FailToWrite.
  std::FILE *Stream() const { return stream_; }
  int Descriptor() const { return fileno(stream_); }

  void Write(std::span<const uint8_t> bytes);

  // Puts the file in the place of the target, with the permissions of a file that is replaced.
  void Commit();

  // Tells that writing failed, by the system's error number.
  [[noreturn]] void FailToWrite(int number) const;

 private:
  std::string name_;    // of the target, for messages
  std::string target_;  // behind symbolic links
  std::string path_;    // of the new file; empty when it has been put in place
  std::FILE *stream_ = nullptr;
};

}  // namespace standalone
