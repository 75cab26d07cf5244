#include "benchmarks/BareStills.h"

#include <array>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <png.h>
#include <turbojpeg.h>

#include "sample-media/StillFiles.h"

namespace benchmarks {
namespace {

std::array<uint8_t, 3> ColourAt(uint32_t x, uint32_t y) {
    thread_local std::mt19937 random(1);
    const auto noisy = [noise = random()](uint32_t level, unsigned shift) {
        return static_cast<uint8_t>(level + (noise >> shift) % 16);
    };
    return {noisy(x / 17, 0), noisy(y / 10, 8), noisy((x + y) / 27, 16)};
}

}  // namespace

File FileOf(const std::string& bytes) {
    File file(std::tmpfile(), std::fclose);
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        throw std::runtime_error("no temporary file");
    std::fflush(file.get());
    return file;
}

std::string PngOf4K() {
    return stillfiles::Png(kWidth, kHeight, {}, [](uint32_t x, uint32_t y) {
        const auto colour = ColourAt(x, y);
        return std::array<uint16_t, 4>{colour[0], colour[1], colour[2]};
    });
}

std::string JpegOf4K() {
    return stillfiles::Jpeg(kWidth, kHeight, TJSAMP_420, 0, [](int x, int y) {
        return ColourAt(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
    });
}

void BarePng(FILE* file) {
    std::rewind(file);
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_info(png, info);
    std::vector<uint8_t> row(png_get_rowbytes(png, info));
    std::vector<uint32_t> sums(size_t{kWidth / kBox} * 3);
    std::vector<uint8_t> result;
    for (uint32_t y = 0; y < kHeight; ++y) {
        png_read_row(png, row.data(), nullptr);
        for (size_t box = 0; box < kWidth / kBox; ++box) {
            for (size_t i = 0; i < size_t{kBox} * 3; i += 3) {
                for (size_t c = 0; c < 3; ++c)
                    sums[box * 3 + c] += row[box * kBox * 3 + i + c];
            }
        }
        if (y % kBox + 1 < kBox) continue;
        for (uint32_t& sum : sums)
            result.push_back(static_cast<uint8_t>(std::exchange(sum, 0) / (kBox * kBox)));
    }
    png_destroy_read_struct(&png, &info, nullptr);
    benchmark::DoNotOptimize(result.data());
}

void BareJpeg(FILE* file) {
    std::fseek(file, 0, SEEK_END);
    std::vector<uint8_t> bytes(static_cast<size_t>(std::ftell(file)));
    std::rewind(file);
    if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) throw std::runtime_error("not read");
    std::vector<uint8_t> samples(size_t{kWidth / 8} * (kHeight / 8) * 3);
    tjhandle decoder = tjInitDecompress();
    if (tjDecompress2(decoder, bytes.data(), bytes.size(), samples.data(), kWidth / 8, 0, kHeight / 8,
                      TJPF_RGB, 0) != 0)
        throw std::runtime_error("not decoded");
    tjDestroy(decoder);
    benchmark::DoNotOptimize(samples.data());
}

}  // namespace benchmarks
