// PNG rows. The library leaves by longjmp, so each of its calls runs in Guarded, where nothing needs to be destroyed.

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <new>
#include <utility>
#include <vector>

#include "standalone/files/part_file.h"
#include "standalone/rows/row_codecs.h"

namespace standalone {
namespace {

constexpr png_uint_32 kDotsPerMetre = 3780;  // 96 to the inch, as whole pictures are saved

[[noreturn]] void LeaveLibrary(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void IgnoreWarning(png_structp, png_const_charp) {}

// True if the library did the work, false if it gave up. `work` holds nothing that has a destructor.
template <class Work>
bool Guarded(png_structp png, const Work &work) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  work();
  return true;
}

// --- reading ---

struct ReadState {
  ReadState() : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, LeaveLibrary, IgnoreWarning)) {
    if (png != nullptr) info = png_create_info_struct(png);
  }
  ReadState(const ReadState &) = delete;
  ReadState &operator=(const ReadState &) = delete;
  ~ReadState() { png_destroy_read_struct(&png, &info, nullptr); }

  png_structp png;
  png_infop info = nullptr;
};

class PngRowReader : public RowReader {
 public:
  PngRowReader(const std::string &path, OwnedStream stream, Interlaced interlaced)
      : RowReader(path), stream_(std::move(stream)) {
    header_.format = "PNG";
    if (state_.info == nullptr) throw std::bad_alloc();
    Read([this] { ReadHeader(); });
    const png_byte colourType = png_get_color_type(state_.png, state_.info);
    const bool hasClearColours = png_get_valid(state_.png, state_.info, PNG_INFO_tRNS) != 0;
    SetHeader("PNG", png_get_image_width(state_.png, state_.info), png_get_image_height(state_.png, state_.info),
              (colourType & PNG_COLOR_MASK_COLOR) == 0, (colourType & PNG_COLOR_MASK_ALPHA) != 0 || hasClearColours);
    const bool isInterlaced = png_get_interlace_type(state_.png, state_.info) != PNG_INTERLACE_NONE;
    if (isInterlaced && interlaced == Interlaced::Refuse) {
      throw NotByRowsError(path + ": is an interlaced PNG file, whose rows are not stored one after another; save it " +
                           "without interlacing");
    }
    Read([this] { ChooseForm(); });
    if (header_.hasAlpha) pixels_.resize(size_t{4} * header_.width);
    if (isInterlaced) ReadWhole();
  }

  void ReadRow(std::span<uint8_t> row) override {
    const std::span<uint8_t> target = header_.hasAlpha ? std::span(pixels_) : row.first(RowBytes());
    const int32_t y = rowsRead_++;
    if (!whole_.empty()) {
      std::copy_n(whole_.begin() + static_cast<ptrdiff_t>(RowBytes()) * y, RowBytes(), target.begin());
    } else {
      Read([&] {
        png_read_row(state_.png, target.data(), nullptr);
        if (y == header_.height - 1) png_read_end(state_.png, nullptr);
      });
    }
    if (header_.hasAlpha) PutPixels(pixels_, row);
  }

 private:
  void ReadHeader() {
    png_set_user_limits(state_.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_init_io(state_.png, stream_.get());
    png_read_info(state_.png, state_.info);
  }

  // 8 bits a sample, three samples or, with alpha, four.
  void ChooseForm() {
    png_set_expand(state_.png);
    png_set_strip_16(state_.png);
    png_set_gray_to_rgb(state_.png);
    png_set_interlace_handling(state_.png);
    png_read_update_info(state_.png, state_.info);
  }

  size_t RowBytes() const { return size_t{header_.hasAlpha ? 4U : 3U} * static_cast<size_t>(header_.width); }

  void ReadWhole() {
    whole_.resize(RowBytes() * static_cast<size_t>(header_.height));
    std::vector<png_bytep> rows;
    for (size_t start = 0; start < whole_.size(); start += RowBytes()) rows.push_back(whole_.data() + start);
    Read([&] {
      png_read_image(state_.png, rows.data());
      png_read_end(state_.png, nullptr);
    });
  }

  template <class Work>
  void Read(const Work &work) {
    if (!Guarded(state_.png, work)) FailOnDamage();
  }

  OwnedStream stream_;
  ReadState state_;
  std::vector<uint8_t> pixels_;  // a row with alpha
  std::vector<uint8_t> whole_;   // all rows of an interlaced picture
  int32_t rowsRead_ = 0;
};

// --- writing ---

struct WriteState {
  WriteState() : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, LeaveLibrary, IgnoreWarning)) {
    if (png != nullptr) info = png_create_info_struct(png);
  }
  WriteState(const WriteState &) = delete;
  WriteState &operator=(const WriteState &) = delete;
  ~WriteState() { png_destroy_write_struct(&png, &info); }

  png_structp png;
  png_infop info = nullptr;
};

class PngRowWriter : public RowWriter {
 public:
  PngRowWriter(const std::string &path, int32_t width, int32_t height, bool hasAlpha) : file_(path) {
    if (state_.info == nullptr) throw std::bad_alloc();
    Write([&] {
      png_set_user_limits(state_.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
      png_init_io(state_.png, file_.Stream());
      png_set_IHDR(state_.png, state_.info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                   hasAlpha ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                   PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      png_set_pHYs(state_.png, state_.info, kDotsPerMetre, kDotsPerMetre, PNG_RESOLUTION_METER);
      png_write_info(state_.png, state_.info);
    });
  }

  void WriteRow(std::span<const uint8_t> row) override {
    Write([&] { png_write_row(state_.png, row.data()); });
  }

  void Finish() override {
    Write([&] { png_write_end(state_.png, nullptr); });
    file_.Commit();
  }

 private:
  template <class Work>
  void Write(const Work &work) {
    if (!Guarded(state_.png, work)) file_.FailToWrite(errno);
  }

  PartFile file_;
  WriteState state_;
};

}  // namespace

std::unique_ptr<RowReader> OpenPngRows(const std::string &path, OwnedStream stream, Interlaced interlaced) {
  return std::make_unique<PngRowReader>(path, std::move(stream), interlaced);
}

std::unique_ptr<RowWriter> CreatePngRows(const std::string &path, int32_t width, int32_t height, bool hasAlpha) {
  return std::make_unique<PngRowWriter>(path, width, height, hasAlpha);
}

}  // namespace standalone
