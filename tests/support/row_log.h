// Watches which rows an operation asks its images for, and can refuse them.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "image/image_record.h"

// Stands in for the row accessors of the images given to Watch, for as long as it lives. One at a time.
class RowLog {
 public:
  RowLog() { current_ = this; }
  RowLog(const RowLog &) = delete;
  RowLog &operator=(const RowLog &) = delete;
  ~RowLog() {
    for (const auto &[image, accessor] : accessors_) image->GetRow = accessor;
    current_ = nullptr;
  }

  // From now on the image's rows are logged under this letter.
  void Watch(zvk::image::ImageClassData &image, char letter) {
    accessors_[&image] = image.GetRow;
    letters_[&image] = letter;
    image.GetRow = Answer;
  }
  // Lets a row of a watched image be nil.
  void Refuse(zvk::image::ImageClassData &image, int32_t row) { refused_.insert({&image, row}); }

  using Rows = std::vector<std::pair<char, int32_t>>;
  const Rows &Asked() const { return asked_; }

 private:
  static uint8_t *Answer(zvk::image::ImageClassData *image, int32_t row) {
    current_->asked_.emplace_back(current_->letters_[image], row);
    return current_->refused_.contains({image, row}) ? nullptr : current_->accessors_[image](image, row);
  }

  static inline RowLog *current_ = nullptr;
  std::map<zvk::image::ImageClassData *, zvk::image::RowAccessor> accessors_;
  std::map<zvk::image::ImageClassData *, char> letters_;
  std::set<std::pair<zvk::image::ImageClassData *, int32_t>> refused_;
  Rows asked_;
};
