#include "sample/picture.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <vector>

// Last, as it uses FILE and size_t without including what declares them.
#include "jpeglib.h"

namespace toplist::site {
namespace {

constexpr unsigned kWidth = 240;
constexpr unsigned kHeight = 180;
constexpr unsigned kChannels = 3;
constexpr int kQuality = 82;
/// Points per pixel in each direction: their mean smooths the edges.
constexpr unsigned kSamples = 2;

unsigned char to_byte(double sum) {
  return static_cast<unsigned char>(std::lround(sum * 255.0 / (kSamples * kSamples)));
}

void append_pixel(std::vector<unsigned char>& row, const Scene& scene, unsigned x, unsigned y) {
  Color sum;
  for (unsigned i = 0; i < kSamples; ++i) {
    for (unsigned j = 0; j < kSamples; ++j) {
      const Color point =
          scene((x + (i + 0.5) / kSamples) / kHeight, (y + (j + 0.5) / kSamples) / kHeight);
      sum = {sum.red + point.red, sum.green + point.green, sum.blue + point.blue};
    }
  }
  row.insert(row.end(), {to_byte(sum.red), to_byte(sum.green), to_byte(sum.blue)});
}

void write_rows(jpeg_compress_struct& encoder, const Scene& scene) {
  std::vector<unsigned char> row;
  for (unsigned y = 0; y < kHeight; ++y) {
    row.clear();
    for (unsigned x = 0; x < kWidth; ++x) append_pixel(row, scene, x, y);
    JSAMPROW rows[] = {row.data()};
    jpeg_write_scanlines(&encoder, rows, 1);
  }
}

}  // namespace

std::string encode_picture(const Scene& scene) {
  jpeg_compress_struct encoder{};
  jpeg_error_mgr errors{};
  encoder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&encoder);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&encoder, &bytes, &size);
  encoder.image_width = kWidth;
  encoder.image_height = kHeight;
  encoder.input_components = kChannels;
  encoder.in_color_space = JCS_RGB;
  jpeg_set_defaults(&encoder);
  jpeg_set_quality(&encoder, kQuality, TRUE);
  jpeg_start_compress(&encoder, TRUE);
  write_rows(encoder, scene);
  jpeg_finish_compress(&encoder);
  std::string file(reinterpret_cast<const char*>(bytes), size);
  jpeg_destroy_compress(&encoder);
  std::free(bytes);
  return file;
}

}  // namespace toplist::site
