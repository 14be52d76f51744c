// A stand-alone host with the plug-in running in it, for unit tests: makes what handlers take, takes what they raise,
// and complains at the end about whatever is left over. One in a process, as the plug-in's state is never reset.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "standalone/runtime/arrays.h"
#include "standalone/runtime/exceptions.h"
#include "standalone/runtime/folder_item.h"
#include "standalone/runtime/host.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/picture.h"
#include "standalone/runtime/strings.h"

// Usage:
//   PluginHost host({.kind = standalone::HostKind::Desktop, .version = 2010.0});
//   auto image = host.New("PictureZVK");          // converts to REALobject, drops its reference by itself
//   CreatePictureLocal(image, 10, 10, 11);
//   EXPECT_EQ(host.TakeException(), std::nullopt);
// Handles are declared after the host, so they are gone when it looks for leaks.
class PluginHost {
 public:
  explicit PluginHost(standalone::HostOptions options = {});
  PluginHost(const PluginHost &) = delete;
  PluginHost &operator=(const PluginHost &) = delete;
  // Expects (unless AllowLeaks) that no exception is pending, nothing is alive or locked, and no misdeed was done.
  ~PluginHost();

  standalone::Host *operator->() { return &host_; }
  standalone::Host &operator*() { return host_; }

  void AllowLeaks() { allowLeaks_ = true; }

  // A new instance by class name; empty if there is no such class.
  standalone::Owned<standalone::Object> New(std::string_view className);
  standalone::Owned<standalone::MemoryBlock> NewMemoryBlock(int32_t size);
  standalone::Owned<standalone::MemoryBlock> NewMemoryBlock(const std::vector<uint8_t> &bytes);
  standalone::Owned<standalone::String> NewString(std::string_view bytes,
                                                  standalone::Encoding encoding = standalone::Encoding::UTF8);
  standalone::Owned<standalone::IntegerArray> NewArray(std::vector<int32_t> values);
  standalone::Owned<standalone::FolderItem> NewFolderItem(std::string path);
  // A picture in the form of the host's kind, or over a storage of the caller's.
  standalone::Owned<standalone::Picture> NewPicture(int32_t width, int32_t height);
  standalone::Owned<standalone::Picture> NewPicture(std::unique_ptr<standalone::PictureStorage> storage);

  // The pending exception, which is pending no longer; empty if there is none.
  std::optional<standalone::RaisedException> TakeException();

 private:
  standalone::Host host_;
  bool allowLeaks_ = false;
};

// Takes over the reference that a handler returned.
inline standalone::Owned<standalone::Object> Adopt(REALobject result) {
  return standalone::Owned<standalone::Object>::Adopt(result);
}
inline standalone::Owned<standalone::String> Adopt(REALstring result) {
  return standalone::Owned<standalone::String>::Adopt(result);
}

// Takes over the picture that a handler returned; empty if it is nil.
inline standalone::Owned<standalone::Picture> AdoptPicture(REALobject result) {
  return standalone::Owned<standalone::Picture>::Adopt(standalone::ObjectAs<standalone::Picture>(result));
}
inline standalone::Owned<standalone::MemoryBlock> AdoptMemoryBlock(REALobject result) {
  return standalone::Owned<standalone::MemoryBlock>::Adopt(standalone::ObjectAs<standalone::MemoryBlock>(result));
}
