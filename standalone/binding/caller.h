// Calls across the border to the plug-in, with types known only at run time: a function address is called with what a
// declaration says (through libffi), and a C++ function is dressed up as an address that the plug-in can call.
#pragma once

#include <ffi.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "standalone/binding/declaration.h"

namespace standalone {

// One argument or result, in the shape that it has in a call. References are plain addresses here: who owns one is told
// by whoever makes the call.
union RawValue {
  int32_t integer;
  int64_t int64;
  double real;
  uint8_t boolean;  // 0 or 1
  uint32_t color;
  void *address = nullptr;  // string, object or array
};

// Bytes that a value of the type takes in memory: 1 for a boolean, 4 for an integer or a colour, 8 for the wide
// numbers, as much as an address for all else.
size_t SizeInMemory(const Type &type);

// The types of one call, made ready once and used for any number of calls. A shape of kind Object or an array is an
// address. Cannot be copied or moved, as the call's description points into it.
class CallShape {
 public:
  CallShape(const std::vector<Type> &arguments, const Type &result);
  CallShape(const CallShape &) = delete;
  CallShape &operator=(const CallShape &) = delete;

  // Calls the function with one raw value for each argument of the shape; gives its result (zero for kind None).
  RawValue Call(void *function, std::span<const RawValue> arguments) const;

 private:
  friend class Callback;

  std::vector<Type> arguments_;
  Type result_;
  std::vector<ffi_type *> types_;
  mutable ffi_cif call_ = {};
};

// A C++ function with an address to be called from the other side, for as long as this object lives. The function must
// not throw.
class Callback {
 public:
  using Function = std::function<RawValue(std::span<const RawValue> arguments)>;

  Callback(const std::vector<Type> &arguments, const Type &result, Function function);
  ~Callback();
  Callback(const Callback &) = delete;
  Callback &operator=(const Callback &) = delete;

  void *Address() const { return address_; }

 private:
  static void Run(ffi_cif *call, void *result, void **arguments, void *self);

  CallShape shape_;
  Function function_;
  void *address_ = nullptr;
  ffi_closure *closure_;
};

}  // namespace standalone
