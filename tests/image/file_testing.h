// What the tests of files share: a temporary folder, and an image whose file is in one.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"
#include "tests/support/plugin_host.h"

namespace file_testing {

using standalone::Object;
using standalone::Owned;

// A new folder that is removed at the end, with all that is left in it.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(std::filesystem::temp_directory_path() / "zvk-test-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
  }
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }

  std::string In(const std::string &name) const { return path_ + "/" + name; }
  const std::string &Path() const { return path_; }
  bool IsEmpty() const { return std::filesystem::is_empty(path_); }

 private:
  std::string path_;
};

// A zero-filled instance as the host makes it, its record, and a folder for its file, which must be empty in the end.
// Temporary files go there only where a test says so through faults::Files.
class FileImage : public testing::Test {
 protected:
  // `pageBytes` is what the machine says about its pages; 0 lets it say the truth.
  explicit FileImage(int pageBytes = 0)
      : page_(pageBytes), image_(host_.New("PictureZVK")), record_(zvk::image::RecordOf(image_)) {}
  ~FileImage() override {
    image_.Reset();
    EXPECT_TRUE(folder_.IsEmpty()) << "a file is left over";
  }

  Owned<standalone::FolderItem> NewItem(const std::string &name) { return host_.NewFolderItem(folder_.In(name)); }
  // The image in the file "image" of the folder.
  void Construct(int32_t width, int32_t height, int32_t format, int32_t blockSize) {
    zvk::image::ImageConstructorFile(image_, width, height, format, blockSize, NewItem("image"));
  }
  uint8_t *Row(int32_t index) { return record_->GetRow(record_, index); }

  void ExpectNothingRaised() { EXPECT_FALSE(host_.TakeException()); }
  void ExpectRaised(const std::string &className, const std::string &message) {
    const auto exception = host_.TakeException();
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->className, className);
    EXPECT_EQ(exception->message, message);
    EXPECT_EQ(exception->errorNumber, 0);
  }
  // Rows of a block and the bytes that it takes.
  void ExpectBlock(int32_t firstRow, int32_t lastRow, int32_t bytes) {
    EXPECT_EQ(record_->MappedFirstRow, firstRow);
    EXPECT_EQ(record_->MappedLastRow, lastRow);
    EXPECT_EQ(record_->MappedRowCount, lastRow - firstRow + 1);
    EXPECT_EQ(record_->MappingBlockSize, bytes);
    EXPECT_TRUE(record_->IsMapped);
    EXPECT_NE(record_->Buffer, nullptr);
    EXPECT_EQ(record_->Buffer, record_->MappingBase);
  }
  void ExpectUnmapped() {
    EXPECT_FALSE(record_->IsMapped);
    EXPECT_EQ(record_->Buffer, nullptr);
    EXPECT_EQ(record_->MappingBase, nullptr);
    EXPECT_EQ(record_->MappedFirstRow, -1);
    EXPECT_EQ(record_->MappedLastRow, -1);
  }

  TemporaryFolder folder_;
  faults::PageSize page_;
  PluginHost host_;
  Owned<Object> image_;
  zvk::image::ImageClassData *record_;
};

inline struct stat StatusOf(int descriptor) {
  struct stat status {};
  EXPECT_EQ(fstat(descriptor, &status), 0);
  return status;
}

inline int64_t LengthOf(const std::string &path) {
  return std::filesystem::exists(path) ? static_cast<int64_t>(std::filesystem::file_size(path)) : -1;
}

inline std::string ContentOf(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Bytes of the backing file as the system has them, past the mapping.
inline std::vector<uint8_t> BytesAt(int descriptor, int64_t offset, size_t size) {
  std::vector<uint8_t> bytes(size, 0xEE);
  EXPECT_EQ(pread(descriptor, bytes.data(), size, offset), static_cast<ssize_t>(size));
  return bytes;
}

// How many descriptors this process has open.
inline size_t OpenDescriptors() {
  return static_cast<size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

}  // namespace file_testing
