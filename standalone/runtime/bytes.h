// Zero-filled memory of the host's, optionally between pages that nobody may touch, so that a plug-in which reads or
// writes outside is caught in the act.
#pragma once

#include <cstddef>

namespace standalone {

// Owns `size` bytes (0 is allowed; the address is never nil). Fenced bytes end right before an unreadable page and have
// another one before their first page. Throws std::bad_alloc when there is no memory.
class Bytes {
 public:
  explicit Bytes(size_t size, bool fenced = false);
  Bytes(const Bytes &) = delete;
  Bytes &operator=(const Bytes &) = delete;
  ~Bytes();

  void *Data() const { return data_; }
  size_t Size() const { return size_; }

 private:
  void *data_ = nullptr;
  void *mapping_ = nullptr;  // nil: from the heap
  size_t size_;
  size_t mappingSize_ = 0;
};

}  // namespace standalone
