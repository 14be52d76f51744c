// Records the file calls of the code under test and makes them fail. As in faults.h the linker sends the calls here,
// and every effect ends with the object that asked for it.
#pragma once

#include <cerrno>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace faults {

enum class FileCall { kOpen, kClose, kTruncate, kSeek, kWrite, kMap, kUnmap, kUnlink, kTemporaryName };

// What a call was given; what a call does not have is 0 or empty.
struct FileRecord {
  FileCall call;
  std::string path = {};  // open, unlink
  int descriptor = 0;     // all but open, unlink, munmap, tmpnam
  int64_t size = 0;       // ftruncate, write, mmap, munmap: bytes
  int64_t offset = 0;     // lseek, mmap: bytes from the start of the file
  int flags = 0;          // open
  unsigned mode = 0;      // open, where a file may be created
  bool failed = false;    // the test made it fail
};

// Watches open, close, ftruncate, lseek, write, mmap, munmap, unlink and tmpnam in all threads for as long as it lives.
// One at a time. Mappings without a file pass by. A call that is made to fail answers -1 (mmap: MAP_FAILED, tmpnam:
// nil) with `error` in errno, and does nothing.
class Files {
 public:
  Files();
  ~Files();
  Files(const Files &) = delete;
  Files &operator=(const Files &) = delete;

  // Makes the call of that kind fail that is `nth` from now (1 is the next one), and no other.
  void FailAt(FileCall call, int nth, int error = EIO);
  // Makes all calls of that kind fail from now on.
  void FailAll(FileCall call, int error = EIO);
  // Lets write answer one byte less than it was given, without writing, from now on.
  void ShortenWrites();
  // Lets lseek answer one byte less than where it has gone, from now on.
  void ShortenSeeks();
  // Lets mmap answer address zero, without mapping, from now on.
  void MapAtZero();
  // Lets tmpnam answer `name` from now on.
  void SetTemporaryName(const std::string &name);

  // The calls since this object was made, in order: all, or those of one kind.
  std::vector<FileRecord> Records() const;
  std::vector<FileRecord> Records(FileCall call) const;

  // What the wrapped calls ask; not for tests.
  bool Refuses(FileRecord record);
  bool ShortensWrites() const;
  bool ShortensSeeks() const;
  bool MapsAtZero() const;
  std::optional<std::string> TemporaryName() const;

 private:
  struct Plan {
    int remaining = 0;  // calls until the one that fails; 0 if none does
    bool all = false;
    int error = EIO;
  };

  mutable std::mutex mutex_;
  std::map<FileCall, Plan> plans_;
  bool shortenWrites_ = false;
  bool shortenSeeks_ = false;
  bool mapAtZero_ = false;
  std::optional<std::string> temporaryName_;
  std::vector<FileRecord> records_;
};

}  // namespace faults
