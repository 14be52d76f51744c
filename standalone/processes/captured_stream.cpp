#include "standalone/processes/captured_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace standalone {
namespace {

constexpr char kUnreadable[] = "the output of a process cannot be read";

[[noreturn]] void Fail(const std::string &what) {
  throw std::runtime_error(what + " (" + std::generic_category().message(errno) + ")");
}

off_t SizeOf(int descriptor) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) Fail(kUnreadable);
  return status.st_size;
}

// At most as many bytes as the text has; fewer only at the end of the file.
size_t ReadAt(int descriptor, off_t offset, std::string &text) {
  const ssize_t count = pread(descriptor, text.data(), text.size(), offset);
  if (count < 0) Fail(kUnreadable);
  return static_cast<size_t>(count);
}

void WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail("what a process has written cannot be passed on");
    bytes.remove_prefix(static_cast<size_t>(count));
  }
}

}  // namespace

CapturedStream::CapturedStream() : file_(std::tmpfile()) {
  if (file_ == nullptr || fcntl(Descriptor(), F_SETFD, FD_CLOEXEC) != 0) {
    Fail("there is no temporary file for the output of a process");
  }
}

bool CapturedStream::IsEmpty() const { return SizeOf(Descriptor()) == 0; }

void CapturedStream::CopyTo(int descriptor) const {
  std::string block(size_t{1} << 16, '\0');
  char last = '\n';
  off_t offset = 0;
  while (const size_t count = ReadAt(Descriptor(), offset, block)) {
    WriteAll(descriptor, std::string_view(block).substr(0, count));
    last = block[count - 1];
    offset += static_cast<off_t>(count);
  }
  if (last != '\n') WriteAll(descriptor, "\n");
}

std::string CapturedStream::Tail(size_t limit) const {
  const off_t size = SizeOf(Descriptor());
  const off_t start = std::max(off_t{0}, size - static_cast<off_t>(limit));
  std::string text(static_cast<size_t>(size - start), '\0');
  text.resize(ReadAt(Descriptor(), start, text));
  const size_t lineEnd = text.find('\n');
  const bool hasLaterLine = lineEnd != std::string::npos && lineEnd + 1 < text.size();
  return start > 0 && hasLaterLine ? text.substr(lineEnd + 1) : text;
}

}  // namespace standalone
