// A folder of its own for each test of rows, pictures read in three ways, and rows of noise.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "standalone/gd/image_file.h"
#include "standalone/rows/row_reader.h"
#include "standalone/rows/row_writer.h"

namespace standalone {

// Rows of bytes: red, green, blue of each pixel, and alpha where it is kept.
using Rows = std::vector<std::vector<uint8_t>>;

class RowFiles : public testing::Test {
 protected:
  RowFiles() {
    std::string pattern = (std::filesystem::temp_directory_path() / "rows_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~RowFiles() override { std::filesystem::remove_all(folder_); }

  std::string Path(const std::string &name) const { return (folder_ / name).string(); }

  std::string Read(const std::string &name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  void Write(const std::string &name, const std::string &bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
  }
  std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder_)) names.insert(entry.path().filename());
    return names;
  }

  // Bytes without a pattern.
  static std::vector<uint8_t> Noise(size_t count, uint32_t seed) {
    std::vector<uint8_t> bytes(count);
    uint32_t state = seed * 2654435761u + 1;
    for (uint8_t &byte : bytes) {
      state = state * 1664525u + 1013904223u;
      byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
  }

  static Rows NoiseRows(int32_t width, int32_t height, int32_t pixelBytes = 3) {
    Rows rows;
    for (int32_t y = 0; y < height; ++y) {
      rows.push_back(Noise(static_cast<size_t>(pixelBytes * width), static_cast<uint32_t>(y)));
    }
    return rows;
  }

  // Without the fourth byte of each pixel.
  static Rows WithoutAlpha(const Rows &rows) {
    Rows result;
    for (const std::vector<uint8_t> &row : rows) {
      result.emplace_back();
      for (size_t i = 0; i < row.size(); ++i) {
        if (i % 4 != 3) result.back().push_back(row[i]);
      }
    }
    return result;
  }

  static Rows ReadRows(RowReader &reader) {
    Rows rows;
    for (int32_t y = 0; y < reader.Height(); ++y) {
      rows.emplace_back(static_cast<size_t>(reader.PixelBytes() * reader.Width()));
      reader.ReadRow(rows.back());
    }
    return rows;
  }
  Rows ReadWithAlpha(const std::string &name) const {
    const auto reader = OpenRows(Path(name));
    reader->KeepAlpha();
    return ReadRows(*reader);
  }
  Rows ReadByRows(const std::string &name) const { return ReadRows(*OpenRows(Path(name))); }

  void WriteByRows(const std::string &name, const Rows &rows, bool hasAlpha = false) const {
    const auto width = static_cast<int32_t>(rows[0].size() / (hasAlpha ? 4 : 3));
    const auto writer = CreateRows(Path(name), width, static_cast<int32_t>(rows.size()), hasAlpha);
    for (const std::vector<uint8_t> &row : rows) writer->WriteRow(row);
    writer->Finish();
  }

  // The colours of a whole picture, as the other room reads it.
  Rows ReadWhole(const std::string &name) const {
    const LoadedImage loaded = LoadImageFile(Path(name));
    Rows rows;
    for (int y = 0; y < loaded.image->sy; ++y) {
      rows.emplace_back();
      for (int x = 0; x < loaded.image->sx; ++x) {
        const int pixel = loaded.image->tpixels[y][x];
        for (const int shift : {16, 8, 0}) rows.back().push_back(static_cast<uint8_t>(pixel >> shift));
      }
    }
    return rows;
  }

  // The message of the error that opening, or reading to the end, ends with.
  std::string ReadError(const std::string &name) const {
    try {
      ReadByRows(name);
    } catch (const ImageFileError &error) {
      return error.what();
    }
    return "no error";
  }

  // Whether a file is refused as one that may be whole but is not to be read by rows.
  bool IsNotByRows(const std::string &name) const {
    try {
      OpenRows(Path(name));
    } catch (const NotByRowsError &) {
      return true;
    }
    return false;
  }

  std::filesystem::path folder_;
};

}  // namespace standalone
