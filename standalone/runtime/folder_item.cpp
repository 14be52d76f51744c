#include "standalone/runtime/folder_item.h"

#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/names.h"

namespace standalone {
namespace {

bool Exists(const std::string &path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

// Plug-ins get paths as texts that end at a zero byte; one that holds such a byte would lead them to another file.
bool CanBeTold(const std::string &path) { return path.find('\0') == std::string::npos; }

}  // namespace

FolderItem *FolderItem::Make(std::string path) {
  auto *const made = new FolderItem(HostState::Current().Classes().Get("FolderItem"));
  made->SetPath(std::move(path));
  return made;
}

void FolderItem::SetPath(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  path_ = std::move(path);
  const std::filesystem::path whole(path_);
  folder_ = whole.has_parent_path() ? whole.parent_path().string() : ".";
  name_ = whole.filename().string();
}

bool FolderItem::FillReference(FSRef *reference) const {
  if (refusals.reference || !CanBeTold(path_) || !Exists(path_)) return false;
  reference->path = path_.c_str();
  return true;
}

bool FolderItem::FillParent(FSRef *reference, HFSUniStr255 *name) const {
  std::string units;
  if (refusals.parent || !CanBeTold(folder_) || !Exists(folder_) ||
      !ConvertText(name_, Encoding::UTF8, Encoding::UTF16, &units) || units.size() > sizeof(name->unicode)) {
    return false;
  }
  reference->path = folder_.c_str();
  name->length = static_cast<uint16_t>(units.size() / sizeof(uint16_t));
  std::memcpy(name->unicode, units.data(), units.size());
  return true;
}

bool FolderItem::FillFSSpec(FSSpec *fsSpec) const {
  if (refusals.fsSpec || !CanBeTold(path_) || path_.empty()) return false;
  fsSpec->path = path_.c_str();
  return true;
}

bool FolderItem::GetText(std::string_view name, String **value) {
  const bool isName = NamesEqual(name, "Name");
  if (!isName && !NamesEqual(name, "NativePath")) return false;
  text_ = Owned<String>::Adopt(String::Make(isName ? name_ : path_));
  *value = text_.Get();
  return true;
}

namespace {

uint8_t FSRefFromFolderItem(REALobject handle, FSRef *reference, HFSUniStr255 *name) {
  const auto *const item = ObjectAs<FolderItem>(handle);
  if (item == nullptr) return 0;
  return (name == nullptr ? item->FillReference(reference) : item->FillParent(reference, name)) ? 1 : 0;
}

uint8_t FSSpecFromFolderItem(FSSpec *fsSpec, REALobject handle) {
  const auto *const item = ObjectAs<FolderItem>(handle);
  return item != nullptr && item->FillFSSpec(fsSpec) ? 1 : 0;
}

}  // namespace

std::vector<Entry> FolderItemEntries() {
  return {MakeEntry<"REALFSRefFromFolderItem", FSRefFromFolderItem>(),
          MakeEntry<"REALFSSpecFromFolderItem", FSSpecFromFolderItem>()};
}

}  // namespace standalone
