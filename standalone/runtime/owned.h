// A counted reference to something of the host's, held by C++ code and dropped by itself.
#pragma once

#include <utility>

namespace standalone {

// Holds one reference to a T, which has Lock, Unlock and Handle. Empty ones hold nil. Converts to the opaque address
// that plug-ins see, so that it can be handed to a handler as it stands.
template <class T>
class Owned {
 public:
  using HandleType = typename T::HandleType;

  Owned() = default;

  // Takes over a reference that the caller owns (nil is allowed).
  static Owned Adopt(T *owned) { return Owned(owned); }
  // Takes over a reference that came as a handler's result; nil if there is none.
  static Owned Adopt(HandleType owned) { return Owned(T::From(owned)); }
  // Takes a reference of its own.
  static Owned Share(T *shared) {
    if (shared != nullptr) shared->Lock();
    return Owned(shared);
  }

  Owned(const Owned &other) : held_(other.held_) {
    if (held_ != nullptr) held_->Lock();
  }
  Owned(Owned &&other) noexcept : held_(std::exchange(other.held_, nullptr)) {}
  Owned &operator=(Owned other) noexcept {
    std::swap(held_, other.held_);
    return *this;
  }
  ~Owned() { Reset(); }

  // Drops the reference now.
  void Reset() {
    if (T *const dropped = std::exchange(held_, nullptr); dropped != nullptr) dropped->Unlock();
  }
  // Gives the reference away to the caller.
  T *Release() { return std::exchange(held_, nullptr); }

  T *Get() const { return held_; }
  T *operator->() const { return held_; }
  T &operator*() const { return *held_; }
  explicit operator bool() const { return held_ != nullptr; }

  HandleType Handle() const { return held_ == nullptr ? nullptr : held_->Handle(); }
  // NOLINTNEXTLINE(google-explicit-constructor): handlers take the opaque address.
  operator HandleType() const { return Handle(); }

 private:
  explicit Owned(T *owned) : held_(owned) {}

  T *held_ = nullptr;
};

}  // namespace standalone
