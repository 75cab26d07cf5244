// Screenshots of 3840 x 2160, and the bare calls into the libraries that decode them: libpng row by row into
// a box average, and TurboJPEG reduced by 8.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace benchmarks {

constexpr uint32_t kWidth = 3840;
constexpr uint32_t kHeight = 2160;
constexpr uint32_t kBox = 12;  // pixels of the picture along a side of one of the thumbnail

std::string PngOf4K();
std::string JpegOf4K();

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

// A temporary file of these bytes.
File FileOf(const std::string& bytes);

void BarePng(FILE* file);
void BareJpeg(FILE* file);

}  // namespace benchmarks
