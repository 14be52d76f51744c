// Blocks of bytes that lie flush against an unreadable page, so that code which reads or writes outside them faults.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fence {

// The side on which the very next byte faults. On the other side a fault may come up to a page later.
enum class Side { kBefore, kAfter };

// A zeroed block of `size` bytes. With the fence after it, it starts on an even address only if `size` is even, and so
// on for larger alignments. Throws std::bad_alloc if the system has no memory.
class Block {
 public:
  explicit Block(std::size_t size, Side side = Side::kAfter);
  ~Block();
  Block(const Block &) = delete;
  Block &operator=(const Block &) = delete;

  uint8_t *Data() const { return data_; }
  std::size_t Size() const { return size_; }

 private:
  std::size_t size_;
  std::size_t mappedSize_;
  uint8_t *mapping_;
  uint8_t *data_;
};

}  // namespace fence
