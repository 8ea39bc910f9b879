#include "render/raster_jpeg.h"

#include <csetjmp>
#include <cstdio>
#include <cstdint>
#include <memory>
#include <vector>

#include <jpeglib.h>

namespace tv::render {

namespace {

// libjpeg reports fatal errors through a callback that must not return: we jump back out.
struct ErrorManager {
  jpeg_error_mgr pub;
  std::jmp_buf jump;
  char message[JMSG_LENGTH_MAX] = {};
};

void OnError(j_common_ptr info) {
  auto* err = reinterpret_cast<ErrorManager*>(info->err);
  (*info->err->format_message)(info, err->message);
  std::longjmp(err->jump, 1);
}

void Quiet(j_common_ptr, int) {}

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

}  // namespace

bool WriteJpeg(cairo_surface_t* image, const std::string& path, int quality, std::string& error) {
  cairo_surface_flush(image);
  const int width = cairo_image_surface_get_width(image), height = cairo_image_surface_get_height(image);
  const int stride = cairo_image_surface_get_stride(image);
  const unsigned char* data = cairo_image_surface_get_data(image);
  if (!data || width <= 0 || height <= 0) {
    error = "empty image";
    return false;
  }
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "wb"));
  if (!file) {
    error = "cannot open";
    return false;
  }
  jpeg_compress_struct info{};
  ErrorManager err{};
  info.err = jpeg_std_error(&err.pub);
  err.pub.error_exit = OnError;
  std::vector<unsigned char> row(static_cast<std::size_t>(width) * 3);
  if (setjmp(err.jump)) {
    jpeg_destroy_compress(&info);
    error = err.message;
    return false;
  }
  jpeg_create_compress(&info);
  jpeg_stdio_dest(&info, file.get());
  info.image_width = static_cast<JDIMENSION>(width);
  info.image_height = static_cast<JDIMENSION>(height);
  info.input_components = 3;
  info.in_color_space = JCS_RGB;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, quality < 1 ? 1 : quality > 100 ? 100 : quality, TRUE);
  jpeg_start_compress(&info, TRUE);
  while (info.next_scanline < info.image_height) {
    // Cairo keeps pixels as native-endian 32-bit words 0xAARRGGBB.
    const auto* src = reinterpret_cast<const std::uint32_t*>(data + static_cast<std::size_t>(info.next_scanline) * static_cast<std::size_t>(stride));
    for (int x = 0; x < width; ++x) {
      const std::uint32_t p = src[x];
      row[static_cast<std::size_t>(x) * 3] = static_cast<unsigned char>(p >> 16);
      row[static_cast<std::size_t>(x) * 3 + 1] = static_cast<unsigned char>(p >> 8);
      row[static_cast<std::size_t>(x) * 3 + 2] = static_cast<unsigned char>(p);
    }
    JSAMPROW rows[1] = {row.data()};
    jpeg_write_scanlines(&info, rows, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  if (std::fflush(file.get()) != 0 || std::ferror(file.get())) {
    error = "write failed";
    return false;
  }
  return true;
}

cairo_surface_t* ReadJpeg(const std::string& path) {
  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
  if (!file) return nullptr;
  jpeg_decompress_struct info{};
  ErrorManager err{};
  info.err = jpeg_std_error(&err.pub);
  err.pub.error_exit = OnError;
  err.pub.emit_message = Quiet;
  cairo_surface_t* surface = nullptr;
  std::vector<unsigned char> row;
  if (setjmp(err.jump)) {
    jpeg_destroy_decompress(&info);
    if (surface) cairo_surface_destroy(surface);
    return nullptr;
  }
  jpeg_create_decompress(&info);
  jpeg_stdio_src(&info, file.get());
  jpeg_read_header(&info, TRUE);
  info.out_color_space = JCS_RGB;
  jpeg_start_decompress(&info);
  const int width = static_cast<int>(info.output_width), height = static_cast<int>(info.output_height);
  if (width <= 0 || height <= 0 || width > 30000 || height > 30000 || info.output_components != 3) {
    jpeg_destroy_decompress(&info);
    return nullptr;
  }
  surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
  unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  row.resize(static_cast<std::size_t>(width) * 3);
  while (info.output_scanline < info.output_height) {
    const int y = static_cast<int>(info.output_scanline);
    JSAMPROW rows[1] = {row.data()};
    jpeg_read_scanlines(&info, rows, 1);
    auto* dst = reinterpret_cast<std::uint32_t*>(data + static_cast<std::size_t>(y) * static_cast<std::size_t>(stride));
    for (int x = 0; x < width; ++x) {
      const std::size_t i = static_cast<std::size_t>(x) * 3;
      dst[x] = 0xFF000000u | (std::uint32_t{row[i]} << 16) | (std::uint32_t{row[i + 1]} << 8) | row[i + 2];
    }
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  cairo_surface_mark_dirty(surface);
  return surface;
}

}  // namespace tv::render
