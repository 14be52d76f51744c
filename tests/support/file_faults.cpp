#include "tests/support/file_faults.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/types.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace faults {
namespace {

std::atomic<Files *> activeFiles = nullptr;

// Records a call and tells whether it must fail; errno is then set.
bool Refused(FileRecord record) {
  Files *files = activeFiles;
  return files != nullptr && files->Refuses(std::move(record));
}

}  // namespace

Files::Files() {
  Files *none = nullptr;
  if (!activeFiles.compare_exchange_strong(none, this)) throw std::logic_error("faults::Files: one at a time");
}

Files::~Files() { activeFiles = nullptr; }

void Files::FailAt(FileCall call, int nth, int error) {
  std::scoped_lock lock(mutex_);
  plans_[call] = {nth, false, error};
}

void Files::FailAll(FileCall call, int error) {
  std::scoped_lock lock(mutex_);
  plans_[call] = {0, true, error};
}

void Files::ShortenWrites() {
  std::scoped_lock lock(mutex_);
  shortenWrites_ = true;
}

void Files::ShortenSeeks() {
  std::scoped_lock lock(mutex_);
  shortenSeeks_ = true;
}

void Files::MapAtZero() {
  std::scoped_lock lock(mutex_);
  mapAtZero_ = true;
}

void Files::SetTemporaryName(const std::string &name) {
  std::scoped_lock lock(mutex_);
  temporaryName_ = name;
}

std::vector<FileRecord> Files::Records() const {
  std::scoped_lock lock(mutex_);
  return records_;
}

std::vector<FileRecord> Files::Records(FileCall call) const {
  std::scoped_lock lock(mutex_);
  std::vector<FileRecord> found;
  std::ranges::copy_if(records_, std::back_inserter(found), [call](const FileRecord &r) { return r.call == call; });
  return found;
}

bool Files::Refuses(FileRecord record) {
  std::scoped_lock lock(mutex_);
  Plan &plan = plans_[record.call];
  record.failed = plan.all || (plan.remaining > 0 && --plan.remaining == 0);
  if (record.failed) errno = plan.error;
  records_.push_back(std::move(record));
  return records_.back().failed;
}

bool Files::ShortensWrites() const {
  std::scoped_lock lock(mutex_);
  return shortenWrites_;
}

bool Files::ShortensSeeks() const {
  std::scoped_lock lock(mutex_);
  return shortenSeeks_;
}

bool Files::MapsAtZero() const {
  std::scoped_lock lock(mutex_);
  return mapAtZero_;
}

std::optional<std::string> Files::TemporaryName() const {
  std::scoped_lock lock(mutex_);
  return temporaryName_;
}

}  // namespace faults

using faults::activeFiles;
using faults::FileCall;
using faults::Files;
using faults::Refused;

// The linker's names: a call of f arrives at __wrap_f, and __real_f is the system's. The calls that take an offset or a
// file's length exist twice; which name a call has depends on the word size.
extern "C" {
int __real_open(const char *path, int flags, ...);
int __real_open64(const char *path, int flags, ...);
int __real_close(int descriptor);
int __real_ftruncate(int descriptor, off_t size);
int __real_ftruncate64(int descriptor, off64_t size);
off_t __real_lseek(int descriptor, off_t offset, int origin);
off64_t __real_lseek64(int descriptor, off64_t offset, int origin);
ssize_t __real_write(int descriptor, const void *bytes, size_t size);
void *__real_mmap(void *hint, size_t size, int protection, int flags, int descriptor, off_t offset);
void *__real_mmap64(void *hint, size_t size, int protection, int flags, int descriptor, off64_t offset);
int __real_munmap(void *address, size_t size);
int __real_unlink(const char *path);
char *__real_tmpnam(char *buffer);
}

namespace {

// The mode of an open call, which is there only where a file may be created.
unsigned Mode(int flags, va_list arguments) { return (flags & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0; }

template <class Real>
int Open(Real real, const char *path, int flags, unsigned mode) {
  return Refused({.call = FileCall::kOpen, .path = path, .flags = flags, .mode = mode}) ? -1 : real(path, flags, mode);
}

template <class Real, class Offset>
int Truncate(Real real, int descriptor, Offset size) {
  const bool refused = Refused({.call = FileCall::kTruncate, .descriptor = descriptor, .size = size});
  return refused ? -1 : real(descriptor, size);
}

template <class Real, class Offset>
Offset Seek(Real real, int descriptor, Offset offset, int origin) {
  const bool refused = Refused({.call = FileCall::kSeek, .descriptor = descriptor, .offset = offset});
  if (refused) return -1;
  const Offset place = real(descriptor, offset, origin);
  const Files *files = activeFiles;
  return files != nullptr && files->ShortensSeeks() ? place - 1 : place;
}

template <class Real, class Offset>
void *Map(Real real, void *hint, size_t size, int protection, int flags, int descriptor, Offset offset) {
  const bool refused =
      descriptor != -1 &&
      Refused({.call = FileCall::kMap, .descriptor = descriptor, .size = static_cast<int64_t>(size), .offset = offset});
  if (refused) return MAP_FAILED;
  const Files *files = activeFiles;
  if (descriptor != -1 && files != nullptr && files->MapsAtZero()) return nullptr;
  return real(hint, size, protection, flags, descriptor, offset);
}

}  // namespace

extern "C" {
int __wrap_open(const char *path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const unsigned mode = Mode(flags, arguments);
  va_end(arguments);
  return Open(__real_open, path, flags, mode);
}

int __wrap_open64(const char *path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const unsigned mode = Mode(flags, arguments);
  va_end(arguments);
  return Open(__real_open64, path, flags, mode);
}

int __wrap_close(int descriptor) {
  return Refused({.call = FileCall::kClose, .descriptor = descriptor}) ? -1 : __real_close(descriptor);
}

int __wrap_ftruncate(int descriptor, off_t size) { return Truncate(__real_ftruncate, descriptor, size); }

int __wrap_ftruncate64(int descriptor, off64_t size) { return Truncate(__real_ftruncate64, descriptor, size); }

off_t __wrap_lseek(int descriptor, off_t offset, int origin) { return Seek(__real_lseek, descriptor, offset, origin); }

off64_t __wrap_lseek64(int descriptor, off64_t offset, int origin) {
  return Seek(__real_lseek64, descriptor, offset, origin);
}

ssize_t __wrap_write(int descriptor, const void *bytes, size_t size) {
  if (Refused({.call = FileCall::kWrite, .descriptor = descriptor, .size = static_cast<int64_t>(size)})) return -1;
  const Files *files = activeFiles;
  if (files != nullptr && files->ShortensWrites()) return static_cast<ssize_t>(size) - 1;
  return __real_write(descriptor, bytes, size);
}

void *__wrap_mmap(void *hint, size_t size, int protection, int flags, int descriptor, off_t offset) {
  return Map(__real_mmap, hint, size, protection, flags, descriptor, offset);
}

void *__wrap_mmap64(void *hint, size_t size, int protection, int flags, int descriptor, off64_t offset) {
  return Map(__real_mmap64, hint, size, protection, flags, descriptor, offset);
}

int __wrap_munmap(void *address, size_t size) {
  const bool refused = Refused({.call = FileCall::kUnmap, .size = static_cast<int64_t>(size)});
  return refused ? -1 : __real_munmap(address, size);
}

int __wrap_unlink(const char *path) {
  const bool refused = Refused({.call = FileCall::kUnlink, .path = path != nullptr ? path : ""});
  return refused ? -1 : __real_unlink(path);
}

char *__wrap_tmpnam(char *buffer) {
  if (Refused({.call = FileCall::kTemporaryName})) return nullptr;
  const Files *files = activeFiles;
  const std::optional<std::string> name = files != nullptr ? files->TemporaryName() : std::nullopt;
  return name ? std::strcpy(buffer, name->c_str()) : __real_tmpnam(buffer);
}
}
