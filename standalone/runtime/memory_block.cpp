#include "standalone/runtime/memory_block.h"

#include <new>
#include <utility>

#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"

namespace standalone {

MemoryBlock::MemoryBlock(const Class &type, std::unique_ptr<Bytes> bytes, void *data, int32_t size)
    : Object(type), bytes_(std::move(bytes)), data_(static_cast<uint8_t *>(data)), size_(size) {}

MemoryBlock *MemoryBlock::Make(int32_t size) {
  const HostState &host = HostState::Current();
  auto bytes = std::make_unique<Bytes>(static_cast<size_t>(size), host.Options().fenced);
  void *const data = bytes->Data();
  return new MemoryBlock(host.Classes().Get("MemoryBlock"), std::move(bytes), data, size);
}

MemoryBlock *MemoryBlock::Over(void *foreign) {
  return new MemoryBlock(HostState::Current().Classes().Get("MemoryBlock"), nullptr, foreign, kUnknownSize);
}

bool MemoryBlock::GetInteger(std::string_view name, int32_t *value) {
  if (!NamesEqual(name, "Size")) return false;
  *value = size_;
  return true;
}

namespace {

void *MemoryBlockGetPtr(REALobject handle) {
  const auto *const block = ObjectAs<MemoryBlock>(handle);
  return block == nullptr ? nullptr : block->Data();
}

REALobject PtrToMemoryBlock(void *foreign) { return MemoryBlock::Over(foreign)->Handle(); }

// Nil for a negative size or where there is no memory.
REALobject NewMemoryBlock(int32_t size) {
  if (size < 0) return nullptr;
  try {
    return MemoryBlock::Make(size)->Handle();
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

}  // namespace

std::vector<Entry> MemoryBlockEntries() {
  return {MakeEntry<"memoryBlockGetPtr", MemoryBlockGetPtr>(), MakeEntry<"PtrToMemoryBlock", PtrToMemoryBlock>(),
          MakeEntry<"newMemoryBlock", NewMemoryBlock>()};
}

}  // namespace standalone
