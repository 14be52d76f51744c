// Files that other programs make, and that appear whole or not at all.
#pragma once

#include <string>

namespace standalone {

// A new folder beside the target. Somebody makes a file of the target's name in it, and other files if need be; by
// Commit they all move to where the target is. What has not been moved goes away with the folder. Everything throws
// ImageFileError that names the target as it was given.
class PartFolder {
 public:
  // The target, if it is there, must be a regular file that may be written. Folders on the way to it that are missing
  // are made.
  explicit PartFolder(const std::string &target);
  PartFolder(const PartFolder &) = delete;
  PartFolder &operator=(const PartFolder &) = delete;
  ~PartFolder();

  // Where the file is to be made.
  const std::string &FilePath() const { return file_; }

  // True if there is a regular file.
  bool HasFile() const;

  // Moves the files, replacing those of the same names: the target's own last, so that it is there only if all are, and
  // with the permissions of a target that is replaced.
  void Commit();

 private:
  [[noreturn]] void FailToWrite(int number) const;

  std::string name_;    // of the target, for messages
  std::string target_;  // behind symbolic links
  std::string path_;    // of the folder
  std::string file_;
};

}  // namespace standalone
