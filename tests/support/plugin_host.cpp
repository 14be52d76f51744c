#include "tests/support/plugin_host.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "plugin/plugin_entry.h"

using standalone::Owned;

// Not by the entry, which does its work once in a process: a test may have one host after another.
PluginHost::PluginHost(standalone::HostOptions options) : host_(std::move(options)) {
  host_.Start(&zvk::plugin::StartPlugin);
}

PluginHost::~PluginHost() {
  if (allowLeaks_) return;
  const auto pending = host_.TakePendingException();
  EXPECT_FALSE(pending) << "an exception is still pending: " << pending->className << ", \"" << pending->message
                        << "\"";
  EXPECT_EQ(standalone::Describe(host_.Leaks()), "") << "left over at the end";
  for (const std::string &misdeed : host_.Misdeeds()) ADD_FAILURE() << misdeed;
}

Owned<standalone::Object> PluginHost::New(std::string_view className) {
  return Owned<standalone::Object>::Adopt(host_.Classes().NewInstance(className));
}

Owned<standalone::MemoryBlock> PluginHost::NewMemoryBlock(int32_t size) {
  return Owned<standalone::MemoryBlock>::Adopt(standalone::MemoryBlock::Make(size));
}

Owned<standalone::MemoryBlock> PluginHost::NewMemoryBlock(const std::vector<uint8_t> &bytes) {
  auto block = NewMemoryBlock(static_cast<int32_t>(bytes.size()));
  if (!bytes.empty()) std::memcpy(block->Data(), bytes.data(), bytes.size());
  return block;
}

Owned<standalone::String> PluginHost::NewString(std::string_view bytes, standalone::Encoding encoding) {
  return Owned<standalone::String>::Adopt(standalone::String::Make(bytes, encoding));
}

Owned<standalone::IntegerArray> PluginHost::NewArray(std::vector<int32_t> values) {
  return Owned<standalone::IntegerArray>::Adopt(standalone::IntegerArray::Make(std::move(values)));
}

Owned<standalone::FolderItem> PluginHost::NewFolderItem(std::string path) {
  return Owned<standalone::FolderItem>::Adopt(standalone::FolderItem::Make(std::move(path)));
}

Owned<standalone::Picture> PluginHost::NewPicture(int32_t width, int32_t height) {
  return Owned<standalone::Picture>::Adopt(standalone::Picture::Make(width, height));
}

Owned<standalone::Picture> PluginHost::NewPicture(std::unique_ptr<standalone::PictureStorage> storage) {
  return Owned<standalone::Picture>::Adopt(standalone::Picture::Make(std::move(storage)));
}

std::optional<standalone::RaisedException> PluginHost::TakeException() { return host_.TakePendingException(); }
