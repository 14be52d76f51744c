// JPEG rows. The library's errors leave by longjmp, so each of its calls runs in Guarded, where nothing needs to be
// destroyed.

#include <cerrno>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <utility>
// Needs <cstdio> before it.
#include <jpeglib.h>
// Needs the library's own header before it.
#include <jerror.h>

#include "standalone/files/part_file.h"
#include "standalone/rows/row_codecs.h"

namespace standalone {
namespace {

constexpr int kQuality = 90;
constexpr UINT16 kDotsPerInch = 96;  // as whole pictures are saved

// What the library reaches when it gives up.
struct ErrorManager : jpeg_error_mgr {
  std::jmp_buf place;
};

[[noreturn]] void LeaveLibrary(j_common_ptr jpeg) { std::longjmp(static_cast<ErrorManager *>(jpeg->err)->place, 1); }

// Says nothing, and gives up on data that end before the picture does; the library would make up the rest.
void HearMessage(j_common_ptr jpeg, int level) {
  const int code = jpeg->err->msg_code;
  if (level < 0 && (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER)) LeaveLibrary(jpeg);
}

void UseErrorManager(ErrorManager *errors) {
  jpeg_std_error(errors);
  errors->error_exit = LeaveLibrary;
  errors->emit_message = HearMessage;
}

// True if the library did the work, false if it gave up. `work` holds nothing that has a destructor.
template <class Work>
bool Guarded(ErrorManager *errors, const Work &work) {
  if (setjmp(errors->place) != 0) return false;
  work();
  return true;
}

// --- reading ---

struct ReadState {
  ReadState() {
    UseErrorManager(&errors);
    jpeg.err = &errors;
  }
  ReadState(const ReadState &) = delete;
  ReadState &operator=(const ReadState &) = delete;
  ~ReadState() { jpeg_destroy_decompress(&jpeg); }

  ErrorManager errors = {};
  jpeg_decompress_struct jpeg = {};
};

class JpegRowReader : public RowReader {
 public:
  JpegRowReader(const std::string &path, OwnedStream stream) : RowReader(path), stream_(std::move(stream)) {
    header_.format = "JPEG";
    Read([this] {
      jpeg_create_decompress(&state_.jpeg);
      jpeg_stdio_src(&state_.jpeg, stream_.get());
      jpeg_read_header(&state_.jpeg, TRUE);
    });
    const jpeg_decompress_struct &jpeg = state_.jpeg;
    SetHeader("JPEG", jpeg.image_width, jpeg.image_height, jpeg.jpeg_color_space == JCS_GRAYSCALE, false);
    if (jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK) {
      throw NotByRowsError(
          path + ": is a JPEG file of printing inks, whose rows cannot be read as colours; save it in " + "RGB");
    }
    if (jpeg_has_multiple_scans(&state_.jpeg) != 0) {
      throw NotByRowsError(path +
                           ": is a progressive JPEG file, whose rows are not stored one after another; save it " +
                           "as a baseline JPEG");
    }
    Read([this] {
      state_.jpeg.out_color_space = JCS_RGB;
      jpeg_start_decompress(&state_.jpeg);
    });
  }

  void ReadRow(std::span<uint8_t> row) override {
    JSAMPROW target = row.data();
    Read([&] {
      jpeg_read_scanlines(&state_.jpeg, &target, 1);
      if (state_.jpeg.output_scanline == state_.jpeg.output_height) jpeg_finish_decompress(&state_.jpeg);
    });
  }

 private:
  template <class Work>
  void Read(const Work &work) {
    if (!Guarded(&state_.errors, work)) FailOnDamage();
  }

  OwnedStream stream_;
  ReadState state_;
};

// --- writing ---

struct WriteState {
  WriteState() {
    UseErrorManager(&errors);
    jpeg.err = &errors;
  }
  WriteState(const WriteState &) = delete;
  WriteState &operator=(const WriteState &) = delete;
  ~WriteState() { jpeg_destroy_compress(&jpeg); }

  ErrorManager errors = {};
  jpeg_compress_struct jpeg = {};
};

class JpegRowWriter : public RowWriter {
 public:
  JpegRowWriter(const std::string &path, int32_t width, int32_t height) : file_(path) {
    Write([&] {
      jpeg_compress_struct &jpeg = state_.jpeg;
      jpeg_create_compress(&jpeg);
      jpeg_stdio_dest(&jpeg, file_.Stream());
      jpeg.image_width = static_cast<JDIMENSION>(width);
      jpeg.image_height = static_cast<JDIMENSION>(height);
      jpeg.input_components = 3;
      jpeg.in_color_space = JCS_RGB;
      jpeg_set_defaults(&jpeg);
      jpeg_set_quality(&jpeg, kQuality, TRUE);
      // Colours in full, as whole pictures of this quality are saved.
      jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
      jpeg.density_unit = 1;
      jpeg.X_density = jpeg.Y_density = kDotsPerInch;
      jpeg_start_compress(&jpeg, TRUE);
    });
  }

  void WriteRow(std::span<const uint8_t> row) override {
    JSAMPROW source = const_cast<JSAMPROW>(row.data());  // only read
    Write([&] { jpeg_write_scanlines(&state_.jpeg, &source, 1); });
  }

  void Finish() override {
    Write([&] { jpeg_finish_compress(&state_.jpeg); });
    file_.Commit();
  }

 private:
  template <class Work>
  void Write(const Work &work) {
    if (!Guarded(&state_.errors, work)) file_.FailToWrite(errno);
  }

  PartFile file_;
  WriteState state_;
};

}  // namespace

std::unique_ptr<RowReader> OpenJpegRows(const std::string &path, OwnedStream stream, Interlaced /*interlaced*/) {
  return std::make_unique<JpegRowReader>(path, std::move(stream));
}

std::unique_ptr<RowWriter> CreateJpegRows(const std::string &path, int32_t width, int32_t height, bool /*hasAlpha*/) {
  return std::make_unique<JpegRowWriter>(path, width, height);
}

}  // namespace standalone
