#include "tests/support/fence.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace fence {

// One unreadable page, whole pages for the block, one unreadable page. The page size comes from sysconf, which no test
// replaces.
Block::Block(std::size_t size, Side side) : size_(size) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t usable = (size + page - 1) / page * page;
  mappedSize_ = usable + 2 * page;
  void *mapping = mmap(nullptr, mappedSize_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping == MAP_FAILED) throw std::bad_alloc();
  mapping_ = static_cast<uint8_t *>(mapping);
  uint8_t *start = mapping_ + page;
  if (usable != 0 && mprotect(start, usable, PROT_READ | PROT_WRITE) != 0) {
    munmap(mapping_, mappedSize_);
    throw std::bad_alloc();
  }
  data_ = side == Side::kBefore ? start : start + usable - size;
}

Block::~Block() { munmap(mapping_, mappedSize_); }

}  // namespace fence
