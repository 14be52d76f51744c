#include "standalone/binding/caller.h"

#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "standalone/runtime/standard_input.h"

namespace standalone {
namespace {

ffi_type *TypeInCall(const Type &type) {
  if (type.isArray) return &ffi_type_pointer;
  switch (type.kind) {
    case TypeKind::None:
      return &ffi_type_void;
    case TypeKind::Integer:
      return &ffi_type_sint32;
    case TypeKind::Int64:
      return &ffi_type_sint64;
    case TypeKind::Double:
      return &ffi_type_double;
    case TypeKind::Boolean:
      return &ffi_type_uint8;
    case TypeKind::Color:
      return &ffi_type_uint32;
    case TypeKind::String:
    case TypeKind::Object:
      break;
  }
  return &ffi_type_pointer;
}

// libffi hands integers shorter than a register over in a whole one, as results of calls and of closures alike.
RawValue FromResult(const Type &type, const void *memory) {
  RawValue value;
  const ffi_type *const shape = TypeInCall(type);
  if (shape == &ffi_type_void) return value;
  if (shape == &ffi_type_uint8 || shape == &ffi_type_uint32 || shape == &ffi_type_sint32) {
    ffi_arg word = 0;
    std::memcpy(&word, memory, sizeof word);
    if (shape == &ffi_type_uint8) {
      value.boolean = static_cast<uint8_t>(word) != 0;
    } else {
      value.color = static_cast<uint32_t>(word);
    }
    return value;
  }
  std::memcpy(&value, memory, shape->size);
  return value;
}

void ToResult(const Type &type, const RawValue &value, void *memory) {
  const ffi_type *const shape = TypeInCall(type);
  if (shape == &ffi_type_void) return;
  if (shape == &ffi_type_uint8 || shape == &ffi_type_uint32 || shape == &ffi_type_sint32) {
    const ffi_arg word = shape == &ffi_type_uint8    ? value.boolean
                         : shape == &ffi_type_uint32 ? value.color
                                                     : static_cast<ffi_arg>(ffi_sarg{value.integer});
    std::memcpy(memory, &word, sizeof word);
    return;
  }
  std::memcpy(memory, &value, shape->size);
}

}  // namespace

size_t SizeInMemory(const Type &type) { return TypeInCall(type)->size; }

CallShape::CallShape(const std::vector<Type> &arguments, const Type &result) : arguments_(arguments), result_(result) {
  for (const Type &type : arguments_) types_.push_back(TypeInCall(type));
  if (ffi_prep_cif(&call_, FFI_DEFAULT_ABI, static_cast<unsigned>(types_.size()), TypeInCall(result_), types_.data()) !=
      FFI_OK) {
    throw std::logic_error("a call of these types cannot be made");
  }
}

RawValue CallShape::Call(void *function, std::span<const RawValue> arguments) const {
  if (arguments.size() != arguments_.size()) throw std::logic_error("a call with the wrong number of arguments");
  std::vector<void *> addresses;
  addresses.reserve(arguments.size());
  for (const RawValue &argument : arguments) addresses.push_back(const_cast<RawValue *>(&argument));
  union {
    ffi_arg word;
    RawValue value = {};
  } result;
  const PluginCall call;
  ffi_call(&call_, FFI_FN(function), &result, addresses.data());
  return FromResult(result_, &result);
}

Callback::Callback(const std::vector<Type> &arguments, const Type &result, Function function)
    : shape_(arguments, result),
      function_(std::move(function)),
      closure_(static_cast<ffi_closure *>(ffi_closure_alloc(sizeof(ffi_closure), &address_))) {
  if (closure_ == nullptr) throw std::bad_alloc();
  if (ffi_prep_closure_loc(closure_, &shape_.call_, Run, this, address_) != FFI_OK) {
    ffi_closure_free(closure_);
    throw std::logic_error("a function of these types cannot be offered");
  }
}

Callback::~Callback() { ffi_closure_free(closure_); }

void Callback::Run(ffi_cif *, void *result, void **arguments, void *self) {
  Callback &callback = *static_cast<Callback *>(self);
  std::vector<RawValue> values(callback.shape_.arguments_.size());
  for (size_t i = 0; i < values.size(); ++i) std::memcpy(&values[i], arguments[i], callback.shape_.types_[i]->size);
  ToResult(callback.shape_.result_, callback.function_(values), result);
}

}  // namespace standalone
