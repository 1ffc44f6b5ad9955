#include "rlxproof/outputs.h"

#include <cairo-pdf.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "rlxproof/colours.h"

namespace rlx::proof {

namespace {

constexpr double kPictureDotsPerInch = 150;

void require_success(cairo_status_t status, const std::string& path) {
  if (status != CAIRO_STATUS_SUCCESS) {
    throw std::runtime_error(path + ": " + cairo_status_to_string(status));
  }
}

/// A file that is written to, or standard output.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path)
      : is_own_(path != "-"),
        descriptor_(is_own_ ? open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)
                            : STDOUT_FILENO) {
    if (descriptor_ < 0) {
      throw std::system_error(errno, std::generic_category(), path);
    }
  }
  ~OutputFile() { close_own(); }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// As cairo asks for it.
  static cairo_status_t write_bytes(void* file, const unsigned char* bytes, unsigned int count) {
    const int descriptor = static_cast<OutputFile*>(file)->descriptor_;
    while (count != 0) {
      const ssize_t written = write(descriptor, bytes, count);
      if (written < 0 && errno != EINTR) {
        return CAIRO_STATUS_WRITE_ERROR;
      }
      bytes += written < 0 ? 0 : written;
      count -= written < 0 ? 0 : static_cast<unsigned int>(written);
    }
    return CAIRO_STATUS_SUCCESS;
  }

  /// @return false when what was written is not safe.
  bool close_own() {
    return !is_own_ || descriptor_ < 0 || close(std::exchange(descriptor_, -1)) == 0;
  }

 private:
  bool is_own_;
  int descriptor_;
};

class PdfOutput : public Output {
 public:
  PdfOutput(const std::string& path, const std::string& title)
      : path_(path),
        file_(path),
        surface_(cairo_pdf_surface_create_for_stream(
            OutputFile::write_bytes, &file_, default_paper().width, default_paper().height)) {
    cairo_pdf_surface_set_metadata(surface_.get(), CAIRO_PDF_METADATA_TITLE, title.c_str());
    cairo_pdf_surface_set_metadata(surface_.get(), CAIRO_PDF_METADATA_CREATOR, "rlxproof");
  }

  void add(const Sheet& sheet, ProofPainter& painter) override {
    has_pages_ = true;
    const PageSettings& page = sheet.settings;
    cairo_pdf_surface_set_size(surface_.get(), page.width(), page.height());
    const CairoPtr cairo(cairo_create(surface_.get()));
    painter.paint(cairo.get(), sheet);
    show_page(cairo.get());
  }

  void finish(ProofPainter& painter, const std::string& empty_reason) override {
    if (!has_pages_) {
      const CairoPtr cairo(cairo_create(surface_.get()));
      painter.paint_nothing(cairo.get(), empty_reason);
      show_page(cairo.get());
    }
    cairo_surface_finish(surface_.get());
    require_success(cairo_surface_status(surface_.get()), path_);
    if (!file_.close_own()) {
      throw std::system_error(errno, std::generic_category(), path_);
    }
  }

 private:
  void show_page(cairo_t* cairo) {
    cairo_show_page(cairo);
    require_success(cairo_status(cairo), path_);
  }

  std::string path_;
  OutputFile file_;
  SurfacePtr surface_;
  bool has_pages_ = false;
};

class PictureOutput : public Output {
 public:
  explicit PictureOutput(std::filesystem::path folder) : folder_(std::move(folder)) {
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    if (error) {
      throw std::system_error(error, folder_);
    }
  }

  void add(const Sheet& sheet, ProofPainter& painter) override {
    constexpr double kScale = kPictureDotsPerInch / kPointsPerInch;
    const auto dots = [](double points) { return static_cast<int>(std::lround(points * kScale)); };
    const SurfacePtr surface(cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, dots(sheet.settings.width()), dots(sheet.settings.height())));
    const CairoPtr cairo(cairo_create(surface.get()));
    cairo_set_source_rgb(cairo.get(), 1, 1, 1);
    cairo_paint(cairo.get());
    cairo_scale(cairo.get(), kScale, kScale);
    painter.paint(cairo.get(), sheet);
    paint_edge(cairo.get(), sheet);
    const std::string path = folder_ / name_of(sheet);
    require_success(cairo_status(cairo.get()), path);
    require_success(cairo_surface_write_to_png(surface.get(), path.c_str()), path);
  }

  void finish(ProofPainter& /*painter*/, const std::string& /*empty_reason*/) override {}

 private:
  /// Where the paper ends cannot be seen on a white page otherwise.
  static void paint_edge(cairo_t* cairo, const Sheet& sheet) {
    use_colour(cairo, kFaint);
    cairo_set_line_width(cairo, 2 * kPointsPerInch / kPictureDotsPerInch);
    cairo_rectangle(cairo, 0, 0, sheet.settings.width(), sheet.settings.height());
    cairo_stroke(cairo);
  }

  static std::string name_of(const Sheet& sheet) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "page-%03llu-%llu.png",
                  static_cast<unsigned long long>(sheet.page),
                  static_cast<unsigned long long>(sheet.number));
    return name.data();
  }

  std::filesystem::path folder_;
};

}  // namespace

std::unique_ptr<Output> make_pdf_output(const std::string& path, const std::string& title) {
  return std::make_unique<PdfOutput>(path, title);
}

std::unique_ptr<Output> make_picture_output(const std::string& folder) {
  return std::make_unique<PictureOutput>(folder);
}

}  // namespace rlx::proof
