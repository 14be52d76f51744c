// A record of what is alive: addresses in the order of their making.
#pragma once

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace standalone {

template <class T>
class LiveSet {
 public:
  void Add(T *made) { serials_.emplace(made, ++last_); }
  void Remove(T *ended) { serials_.erase(ended); }
  bool Has(const void *address) const { return serials_.contains(address); }

  // How many have been made so far.
  uint64_t Made() const { return last_; }

  // Those alive that were made after the first `made`, in order.
  std::vector<T *> MadeAfter(uint64_t made) const {
    std::vector<std::pair<uint64_t, T *>> sorted;
    for (const auto &[address, serial] : serials_) {
      if (serial > made) sorted.emplace_back(serial, static_cast<T *>(const_cast<void *>(address)));
    }
    std::sort(sorted.begin(), sorted.end());
    std::vector<T *> result;
    for (const auto &[serial, address] : sorted) result.push_back(address);
    return result;
  }

 private:
  std::unordered_map<const void *, uint64_t> serials_;
  uint64_t last_ = 0;
};

}  // namespace standalone
