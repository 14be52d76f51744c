// Runs the built program as a process of its own, in a folder of its own, and collects what it says.
#pragma once

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "standalone/gd/image_file.h"
#include "standalone/rows/row_reader.h"
#include "standalone/rows/row_writer.h"

namespace standalone {

struct ProgramResult {
  int exitCode = -1;  // -1: killed
  std::string output;
  std::string errors;
  int64_t peakMemory = 0;  // bytes
};

// What can be read from the descriptor until nobody holds its other end.
inline std::string ReadToEnd(int descriptor) {
  std::string text;
  char buffer[4096];
  ssize_t count;
  while ((count = read(descriptor, buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<size_t>(count));
  return text;
}

[[noreturn]] inline void Become(const std::string &program, const std::vector<std::string> &arguments) {
  std::vector<char *> words = {const_cast<char *>(program.c_str())};
  for (const std::string &argument : arguments) words.push_back(const_cast<char *>(argument.c_str()));
  words.push_back(nullptr);
  execv(program.c_str(), words.data());
  _exit(127);
}

// Waits for the end of the process and notes its exit code, -1 if it was killed, and the memory that it had.
inline void AwaitEnd(pid_t process, ProgramResult &result) {
  int status = 0;
  rusage usage = {};
  EXPECT_EQ(wait4(process, &status, 0, &usage), process);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.peakMemory = usage.ru_maxrss * int64_t{1024};
}

// The opaque colours of an image, row by row, as 0xRRGGBB.
using Colours = std::vector<std::vector<uint32_t>>;

inline Colours Table(int width, int height, const std::function<uint32_t(int x, int y)> &colour) {
  Colours rows(static_cast<size_t>(height), std::vector<uint32_t>(static_cast<size_t>(width)));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) rows[static_cast<size_t>(y)][static_cast<size_t>(x)] = colour(x, y);
  }
  return rows;
}

class ZvkProgram : public testing::Test {
 protected:
  ZvkProgram() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zvk_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~ZvkProgram() override { std::filesystem::remove_all(folder_); }

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

  // Writes an image file of the colours that the function gives (0xRRGGBB, with GD's alpha in the high byte).
  void WriteImage(const std::string &name, int width, int height,
                  const std::function<uint32_t(int x, int y)> &colour) const {
    const OwnedGdImage image(gdImageCreateTrueColor(width, height));
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) image->tpixels[y][x] = static_cast<int>(colour(x, y));
    }
    SaveImageFile(image.get(), Path(name), {.alpha = AlphaPlane::Keep});
  }

  // The image in the file; fails the test if it is not opaque.
  Colours ReadImage(const std::string &name) const {
    const LoadedImage loaded = LoadImageFile(Path(name));
    EXPECT_FALSE(loaded.hasTransparency);
    Colours rows;
    for (int y = 0; y < loaded.image->sy; ++y) {
      rows.emplace_back(loaded.image->tpixels[y], loaded.image->tpixels[y] + loaded.image->sx);
    }
    return rows;
  }

  // Two image files, by their paths, have the same size and pixels, however these are packed.
  static void ExpectSamePixels(const std::string &made, const std::string &kept) {
    const LoadedImage one = LoadImageFile(made);
    const LoadedImage other = LoadImageFile(kept);
    ASSERT_EQ(one.image->sx, other.image->sx) << made;
    ASSERT_EQ(one.image->sy, other.image->sy) << made;
    int64_t different = 0;
    for (int y = 0; y < one.image->sy; ++y) {
      for (int x = 0; x < one.image->sx; ++x) different += one.image->tpixels[y][x] != other.image->tpixels[y][x];
    }
    EXPECT_EQ(different, 0) << "pixels of " << made;
  }

  // Writes a PNG or TIFF file of 0xRRGGBBAA, with all bits of alpha.
  void WriteClear(const std::string &name, int width, int height,
                  const std::function<uint32_t(int x, int y)> &colour) const {
    const auto writer = CreateRows(Path(name), width, height, true);
    for (int y = 0; y < height; ++y) {
      std::vector<uint8_t> row;
      for (int x = 0; x < width; ++x) {
        for (const int shift : {24, 16, 8, 0}) row.push_back(static_cast<uint8_t>(colour(x, y) >> shift));
      }
      writer->WriteRow(row);
    }
    writer->Finish();
  }

  // The PNG or TIFF file as 0xRRGGBBAA, row by row; fails the test if it has no alpha.
  Colours ReadClear(const std::string &name) const {
    const auto reader = OpenRows(Path(name));
    reader->KeepAlpha();
    EXPECT_EQ(reader->PixelBytes(), 4) << name;
    Colours rows;
    std::vector<uint8_t> row(size_t{4} * static_cast<size_t>(reader->Width()));
    for (int32_t y = 0; y < reader->Height(); ++y) {
      reader->ReadRow(row);
      rows.emplace_back();
      for (size_t i = 0; i < row.size(); i += 4) {
        rows.back().push_back(uint32_t{row[i]} << 24 | row[i + 1] << 16 | row[i + 2] << 8 | row[i + 3]);
      }
    }
    return rows;
  }

  // Runs what is to go well without a word.
  void RunWell(const std::vector<std::string> &arguments) const {
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
  }

  // Runs what is to fail, and expects one line of error (what it says begins like `message`), and all files as they
  // were.
  void ExpectFailure(const std::vector<std::string> &arguments, int exitCode, const std::string &message) const {
    Write("out.png", "what was there before");
    const std::set<std::string> names = Names();
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.rfind("zvk: " + message, 0), 0u) << result.errors;
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(Read("out.png"), "what was there before");
  }

  // Runs the program in the folder.
  ProgramResult Run(const std::vector<std::string> &arguments, const std::string &program = PICTUREZVK_ZVK) const {
    return RunProcess([&]() -> int { Become(program, arguments); });
  }

  // Runs the program in the folder with a terminal for all its streams; `output` has everything.
  ProgramResult RunOnTerminal(const std::vector<std::string> &arguments) const {
    return RunProcessOnTerminal([&]() -> int { Become(PICTUREZVK_ZVK, arguments); });
  }

  // The same for a process of this program, which does the work in the folder and ends with the exit code that comes
  // back. What it leaves in buffers of streams is lost.
  using Work = std::function<int()>;

  ProgramResult RunProcess(const Work &work) const {
    FILE *const output = std::tmpfile();
    FILE *const errors = std::tmpfile();
    const pid_t process = fork();
    if (process == 0) {
      dup2(fileno(output), STDOUT_FILENO);
      dup2(fileno(errors), STDERR_FILENO);
      DoInFolder(work);
    }
    ProgramResult result;
    AwaitEnd(process, result);
    for (const auto &[file, text] : {std::pair{output, &result.output}, std::pair{errors, &result.errors}}) {
      lseek(fileno(file), 0, SEEK_SET);
      *text = ReadToEnd(fileno(file));
      std::fclose(file);
    }
    return result;
  }

  ProgramResult RunProcessOnTerminal(const Work &work) const {
    int terminal = -1;
    const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (process == 0) DoInFolder(work);
    ProgramResult result;
    result.output = ReadToEnd(terminal);
    AwaitEnd(process, result);
    close(terminal);
    return result;
  }

  std::filesystem::path folder_;

 private:
  [[noreturn]] void DoInFolder(const Work &work) const { _exit(chdir(folder_.c_str()) == 0 ? work() : 127); }
};

}  // namespace standalone
