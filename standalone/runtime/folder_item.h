// Folder items: places of files, handed to plug-ins as references and FSSpecs.
#pragma once

#include <string>

#include "standalone/runtime/objects.h"
#include "standalone/runtime/strings.h"

namespace standalone {

// Keeps the paths that references and FSSpecs point to for as long as it lives.
class FolderItem : public Object {
 public:
  // `path` is UTF-8, absolute or relative; the file need not be there.
  static FolderItem *Make(std::string path);
  explicit FolderItem(const Class &type) : Object(type) {}

  const std::string &Path() const { return path_; }
  void SetPath(std::string path);

  // Ways of telling the path that this item refuses, as items of old hosts and odd volumes do.
  struct Refusals {
    bool reference = false;  // the file itself, by reference
    bool parent = false;     // the folder by reference, with a name
    bool fsSpec = false;     // the file, by FSSpec
  };
  Refusals refusals;

  // These are false, too, for a path that holds a zero byte, where it would end for who reads it.
  // The file's own path; false if there is no such file.
  bool FillReference(FSRef *reference) const;
  // The folder's path and the file's name in UTF-16 (in which a zero is a character like others); false if there is no
  // such folder, or the name does not fit.
  bool FillParent(FSRef *reference, HFSUniStr255 *name) const;
  // The file's own path, whether or not there is such a file.
  bool FillFSSpec(FSSpec *fsSpec) const;

  // "Name", "NativePath".
  bool GetText(std::string_view name, String **value) override;

 private:
  std::string path_;
  std::string folder_;
  std::string name_;
  Owned<String> text_;  // what GetText lent last
};

}  // namespace standalone
