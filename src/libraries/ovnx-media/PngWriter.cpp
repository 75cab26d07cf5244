#include "libraries/ovnx-media/PngWriter.h"

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <new>
#include <utility>

#include <png.h>
#include <zlib.h>

#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/PngMemory.h"

namespace ovnxmedia {
namespace {

// Measured on small pictures with some noise, which finds few repetitions: looking for none but runs halves
// the time and makes the files no larger.
constexpr int kStrategy = Z_RLE;
constexpr int kFilter = PNG_FILTER_SUB;

// As for reading: libpng fails by longjmp, and nothing with a destructor is in its way.
class PngEncoder {
  public:
    explicit PngEncoder(uint64_t limit) : limit_(limit) {
        png_ = png_create_write_struct_2(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning, nullptr,
                                         PngAllocate, PngFree);
        if (!png_) throw std::bad_alloc();
        info_ = png_create_info_struct(png_);
        if (info_) return;
        png_destroy_write_struct(&png_, nullptr);
        throw std::bad_alloc();
    }
    ~PngEncoder() { png_destroy_write_struct(&png_, &info_); }
    PngEncoder(const PngEncoder&) = delete;
    PngEncoder& operator=(const PngEncoder&) = delete;

    FileBytes Encode(const Picture& picture) {
        if (setjmp(png_jmpbuf(png_))) {
            if (isOverLimit_) throw Failure(OVNX_MEDIA_OVER_LIMIT, "the thumbnail needs too much memory");
            throw std::bad_alloc();
        }
        WriteHeader(picture);
        for (uint32_t y = 0; y < picture.size.height; ++y)
            png_write_row(png_, picture.samples.data() + y * picture.Stride());
        png_write_end(png_, nullptr);
        return std::move(file_);
    }

  private:
    void WriteHeader(const Picture& picture) {
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_write_fn(png_, this, OnWrite, nullptr);
        png_set_compression_strategy(png_, kStrategy);
        png_set_filter(png_, PNG_FILTER_TYPE_BASE, kFilter);
        png_set_IHDR(png_, info_, picture.size.width, picture.size.height, 8,
                     picture.channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png_, info_);
    }

    bool Append(const uint8_t* bytes, size_t size) noexcept {
        isOverLimit_ = size > limit_ - file_.size;
        if (isOverLimit_ || !ReserveFor(file_.size + size)) return false;
        std::memcpy(&file_.bytes[file_.size], bytes, size);
        file_.size += size;
        return true;
    }

    bool ReserveFor(size_t size) noexcept {
        if (size <= capacity_) return true;
        try {
            file_.Reserve(std::max(2 * capacity_, size));
            capacity_ = std::max(2 * capacity_, size);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    static void OnWrite(png_structp png, png_bytep bytes, size_t size) {
        if (!static_cast<PngEncoder*>(png_get_io_ptr(png))->Append(bytes, size)) png_error(png, "");
    }
    [[noreturn]] static void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
    static void OnWarning(png_structp, png_const_charp) {}

    const uint64_t limit_;
    bool isOverLimit_ = false;
    FileBytes file_;
    size_t capacity_ = 0;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

}  // namespace

FileBytes WritePng(const Picture& picture, uint64_t limit) {
    return PngEncoder(limit).Encode(picture);
}

}  // namespace ovnxmedia
