#include "tests/scenes/row_log.h"

namespace scenes {

using zvk::image::ImageClassData;

RowLog::~RowLog() {
  while (!watched_.empty()) Release(*watched_.begin()->first);
  current_ = nullptr;
}

RowLog::Watched &RowLog::Replace(ImageClassData &image) {
  const auto [entry, isNew] = watched_.try_emplace(&image, Watched{"", image.GetRow, image.IsMapping != 0, {}, false});
  image.GetRow = Answer;
  return entry->second;
}

void RowLog::Watch(ImageClassData &image, const std::string &name) {
  Watched &watched = Replace(image);
  watched.name = name;
  watched.isLogged = true;
}

void RowLog::WatchAsMapped(ImageClassData &image, const std::string &name) {
  Watch(image, name);
  image.IsMapping = true;
}

void RowLog::Refuse(ImageClassData &image, int32_t row) { Replace(image).refused.insert(row); }

void RowLog::Release(ImageClassData &image) {
  const Watched &watched = watched_.at(&image);
  image.GetRow = watched.accessor;
  image.IsMapping = watched.isMapping;
  watched_.erase(&image);
}

uint8_t *RowLog::Answer(ImageClassData *image, int32_t row) {
  const Watched &watched = current_->watched_.at(image);
  if (watched.isLogged) {
    ++current_->count_;
    current_->Note(watched.name + std::to_string(row));
  }
  return watched.refused.contains(row) ? nullptr : watched.accessor(image, row);
}

}  // namespace scenes
