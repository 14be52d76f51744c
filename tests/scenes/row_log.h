// Watches which rows an operation asks its images for, in which order, and can refuse them.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "image/image_record.h"

namespace scenes {

// Stands in for the row accessors of the images given to it, for as long as it lives; the images must live longer. One
// at a time.
class RowLog {
 public:
  RowLog() { current_ = this; }
  RowLog(const RowLog &) = delete;
  RowLog &operator=(const RowLog &) = delete;
  ~RowLog();

  // From now on the image's rows are logged under this name.
  void Watch(zvk::image::ImageClassData &image, const std::string &name);
  // The same of an image in memory, which passes for one whose file is mapped block by block.
  void WatchAsMapped(zvk::image::ImageClassData &image, const std::string &name);
  // Lets a row of an image be nil.
  void Refuse(zvk::image::ImageClassData &image, int32_t row);
  // Gives the image its own accessor back.
  void Release(zvk::image::ImageClassData &image);
  // Something else that happened in between.
  void Note(const std::string &word) { text_ += (text_.empty() ? "" : " ") + word; }

  // What was logged since the last question: "dest0 source2" are row 0 of an image "dest" and row 2 of "source".
  std::string Take() { return std::exchange(text_, ""); }
  // How often rows were asked for since that was last taken.
  int64_t TakeCount() { return std::exchange(count_, 0); }
  int64_t Count() const { return count_; }

 private:
  struct Watched {
    std::string name;
    zvk::image::RowAccessor accessor;
    bool isMapping;
    std::set<int32_t> refused;
    bool isLogged;
  };
  Watched &Replace(zvk::image::ImageClassData &image);
  static uint8_t *Answer(zvk::image::ImageClassData *image, int32_t row);

  static inline RowLog *current_ = nullptr;
  std::map<zvk::image::ImageClassData *, Watched> watched_;
  std::string text_;
  int64_t count_ = 0;
};

}  // namespace scenes
