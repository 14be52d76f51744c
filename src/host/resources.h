// Small owners: what a function took for its own length is given back on every path out of it.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <utility>

#include "host/host_services.h"

namespace zvk::host {

// Largest block of memory that the system allocates.
inline constexpr int64_t kLargestAllocation = 0x7FFFFFFF;

// Blocks of this size or more are worth large pages.
inline constexpr int64_t kLargeBlock = int64_t{4} << 20;

// Zero-filled memory from the C library, or nil if the size lies outside 1 to kLargestAllocation or there is no memory.
// The system is asked for large pages behind a block of kLargeBlock or more.
void *AllocateZeroed(int64_t size);

// Owns `count` zero-filled elements from AllocateZeroed, freed at the end of the scope; nil if they were refused.
template <class T>
class ZeroedBuffer {
 public:
  ZeroedBuffer() = default;
  explicit ZeroedBuffer(int64_t count)
      : data_(count >= 0 && count <= kLargestAllocation
                  ? static_cast<T *>(AllocateZeroed(count * static_cast<int64_t>(sizeof(T))))
                  : nullptr) {}
  ZeroedBuffer(ZeroedBuffer &&other) noexcept : data_(std::exchange(other.data_, nullptr)) {}
  ZeroedBuffer &operator=(ZeroedBuffer &&other) noexcept {
    std::swap(data_, other.data_);
    return *this;
  }
  ~ZeroedBuffer() { std::free(data_); }

  T *Get() const { return data_; }
  T &operator[](ptrdiff_t index) const { return data_[index]; }
  explicit operator bool() const { return data_ != nullptr; }
  // Hands the memory to a new owner, who frees it with `free`.
  T *Release() { return std::exchange(data_, nullptr); }

 private:
  T *data_ = nullptr;
};

// Owns one counted reference to something of the host's, dropped at the end of the scope; nil owns nothing.
template <class Handle, auto &Unlock>
class HostReference {
 public:
  HostReference() = default;
  // Takes over a reference that the caller owns.
  explicit HostReference(Handle owned) : handle_(owned) {}
  HostReference(HostReference &&other) noexcept : handle_(other.Release()) {}
  HostReference &operator=(HostReference &&other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~HostReference() { Reset(); }

  Handle Get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr; }
  // Hands the reference to a new owner.
  Handle Release() { return std::exchange(handle_, nullptr); }
  void Reset() {
    if (handle_ != nullptr) Unlock(Release());
  }

 private:
  Handle handle_ = nullptr;
};

using ObjectReference = HostReference<REALobject, REALUnlockObject>;
using StringReference = HostReference<REALstring, REALUnlockString>;

}  // namespace zvk::host
