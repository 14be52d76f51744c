// Memory blocks of the host language: bytes of their own, or a view of foreign memory of unknown size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "standalone/runtime/bytes.h"
#include "standalone/runtime/objects.h"

namespace standalone {

class MemoryBlock : public Object {
 public:
  static constexpr int32_t kUnknownSize = -1;

  // A zero-filled block of 0 bytes or more, one reference; fenced if the host says so. Throws std::bad_alloc.
  static MemoryBlock *Make(int32_t size);
  // A block over memory that is not the block's own, with kUnknownSize.
  static MemoryBlock *Over(void *foreign);

  uint8_t *Data() const { return data_; }
  // In bytes, or kUnknownSize.
  int32_t Size() const { return size_; }

  // "Size".
  bool GetInteger(std::string_view name, int32_t *value) override;

 private:
  MemoryBlock(const Class &type, std::unique_ptr<Bytes> bytes, void *data, int32_t size);

  std::unique_ptr<Bytes> bytes_;
  uint8_t *data_;
  int32_t size_;
};

}  // namespace standalone
