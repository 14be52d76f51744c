#include "host/resources.h"

#include <sys/mman.h>

namespace zvk::host {

namespace {

// Asks the system for large pages behind the whole pages of a large block that nobody has touched yet: to fault each
// small one in costs more than most operations on it. That it may refuse changes nothing.
void AdviseLargePages(void *memory, int64_t size) {
  constexpr uintptr_t kPage = 4096;
  if (memory == nullptr || size < kLargeBlock) return;
  const auto address = reinterpret_cast<uintptr_t>(memory);
  const uintptr_t first = (address + kPage - 1) / kPage * kPage;
  const uintptr_t end = (address + static_cast<uintptr_t>(size)) / kPage * kPage;
  madvise(reinterpret_cast<void *>(first), end - first, MADV_HUGEPAGE);
}

}  // namespace

void *AllocateZeroed(int64_t size) {
  if (size < 1 || size > kLargestAllocation) return nullptr;
  void *memory = std::calloc(1, static_cast<size_t>(size));
  AdviseLargePages(memory, size);
  return memory;
}

}  // namespace zvk::host
