#include "standalone/runtime/bytes.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace standalone {

Bytes::Bytes(size_t size, bool fenced) : size_(size) {
  if (size > PTRDIFF_MAX / 2) throw std::bad_alloc();
  if (!fenced) {
    data_ = ::operator new(size + 1);
    std::memset(data_, 0, size);
    return;
  }
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  const size_t inner = (size + page - 1) / page * page;
  mappingSize_ = inner + 2 * page;
  mapping_ = mmap(nullptr, mappingSize_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping_ == MAP_FAILED) throw std::bad_alloc();
  std::byte *const first = static_cast<std::byte *>(mapping_) + page;
  if (inner > 0 && mprotect(first, inner, PROT_READ | PROT_WRITE) != 0) {
    munmap(mapping_, mappingSize_);
    throw std::bad_alloc();
  }
  data_ = first + (inner - size);
}

Bytes::~Bytes() {
  if (mapping_ == nullptr) {
    ::operator delete(data_);
  } else {
    munmap(mapping_, mappingSize_);
  }
}

}  // namespace standalone
