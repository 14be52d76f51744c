// Integer arrays of the host language.
#pragma once

#include <cstdint>
#include <vector>

#include "abi/host_layouts.h"
#include "standalone/runtime/objects.h"

namespace standalone {

class IntegerArray : public Object {
 public:
  static IntegerArray *Make(std::vector<int32_t> values);

  // The address by which a plug-in knows the array as an array.
  REALarray ArrayHandle() { return reinterpret_cast<REALarray>(static_cast<Object *>(this)); }
  static IntegerArray *From(REALarray handle);

  const std::vector<int32_t> &Values() const { return values_; }

 private:
  IntegerArray(const Class &type, std::vector<int32_t> values) : Object(type), values_(std::move(values)) {}

  std::vector<int32_t> values_;
};

}  // namespace standalone
