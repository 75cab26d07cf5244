#include "libraries/ovnx-media/PngReader.h"

#include <array>
#include <csetjmp>
#include <cstdio>
#include <string_view>
#include <utility>

#include <png.h>

#include "libraries/ovnx-media/BoxAverager.h"
#include "libraries/ovnx-media/PngMemory.h"
#include "libraries/ovnx-media/Turning.h"

namespace ovnxmedia {
namespace {

// libpng keeps two rows of up to 8 bytes for a pixel, and there is one of ours.
constexpr uint64_t kRowBytesPerColumn = 2 * 8 + 4;
// More than any chunk that is kept needs: those that can be long are skipped.
constexpr png_alloc_size_t kMaxChunk = 1 << 20;
constexpr uint32_t kRowsBetweenChecks = 16;
constexpr png_byte kExifChunk[] = "eXIf";

// libpng fails by longjmp, which must not skip destructors: every call into it that can fail is made in a
// lambda that Run calls, and neither these lambdas nor the callbacks hold objects with destructors.
class PngDecoder {
  public:
    PngDecoder(SourceFile& file, const Budget& budget) : reader_(file), budget_(budget) {
        png_ = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning, nullptr, PngAllocate,
                                        PngFree);
        if (!png_) throw std::bad_alloc();
        info_ = png_create_info_struct(png_);
        if (info_) return;
        png_destroy_read_struct(&png_, nullptr, nullptr);
        throw std::bad_alloc();
    }
    ~PngDecoder() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngDecoder(const PngDecoder&) = delete;
    PngDecoder& operator=(const PngDecoder&) = delete;

    void ReadHeader() {
        Run([this] {
            SetLimits();
            png_set_read_fn(png_, this, OnRead);
            png_read_info(png_, info_);
        });
    }

    // Rows are now 8-bit RGB or RGBA; those of an interlaced picture are the rows of its passes.
    void StartRows() {
        Run([this] {
            png_set_expand(png_);
            png_set_scale_16(png_);
            png_set_gray_to_rgb(png_);
            png_read_update_info(png_, info_);
        });
    }

    void ReadRow(uint8_t* row) {
        Run([this, row] { png_read_row(png_, row, nullptr); });
    }

    Size size() const { return {png_get_image_width(png_, info_), png_get_image_height(png_, info_)}; }
    unsigned channels() const { return png_get_channels(png_, info_); }
    // Of a chunk ahead of the pixels.
    const Orientation& orientation() const { return orientation_; }
    bool IsInterlaced() const { return png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE; }

  private:
    template <typename Call>
    void Run(Call call) {
        if (setjmp(png_jmpbuf(png_))) {
            budget_.Check();
            throw Failure(OVNX_MEDIA_DAMAGED, message_.data());
        }
        call();
    }

    void SetLimits() {
        // Whoever asks for the size decides on it; rows are allocated later.
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_chunk_malloc_max(png_, kMaxChunk);
        png_set_crc_action(png_, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
        // All that is not needed for pixels, texts and colour profiles foremost, is not even unpacked.
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        // libpng's own reader of this one would allocate whatever length it claims.
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_IF_SAFE, kExifChunk, 1);
        png_set_read_user_chunk_fn(png_, this, OnChunk);
    }

    static void OnRead(png_structp png, png_bytep bytes, size_t size) {
        auto* const self = static_cast<PngDecoder*>(png_get_io_ptr(png));
        if (self->budget_.IsStopped() || self->budget_.IsOver()) png_error(png, "no time left");
        if (!self->reader_.Read(bytes, size)) png_error(png, "ends too early");
    }

    static int OnChunk(png_structp png, png_unknown_chunkp chunk) {
        auto* const self = static_cast<PngDecoder*>(png_get_user_chunk_ptr(png));
        const std::string_view data(reinterpret_cast<const char*>(chunk->data), chunk->size);
        self->orientation_ = ReadExifOrientation(media::ByteView(data));
        return 1;  // and libpng keeps nothing of it
    }

    [[noreturn]] static void OnError(png_structp png, png_const_charp message) {
        auto* const self = static_cast<PngDecoder*>(png_get_error_ptr(png));
        std::snprintf(self->message_.data(), self->message_.size(), "PNG: %s", message);
        png_longjmp(png, 1);
    }
    static void OnWarning(png_structp, png_const_charp) {}

    SourceReader reader_;
    const Budget& budget_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    Orientation orientation_;
    std::array<char, 160> message_{};
};

Picture ReadInOrder(PngDecoder& png, Size result, Allowance& allowance, const Budget& budget) {
    const Size source = png.size();
    allowance.Take(BoxAverager::BytesFor(source, result, png.channels()));
    BoxAverager averager(source, result, png.channels());
    Samples row(size_t{source.width} * png.channels());
    for (uint32_t y = 0; y < source.height; ++y) {
        if (y % kRowsBetweenChecks == 0) budget.Check();
        png.ReadRow(row.data());
        averager.AddRow(row.data());
    }
    return averager.Take();
}

// The seven passes, each with every so many pixels of every so many rows, are summed where they fall.
Picture ReadPasses(PngDecoder& png, Size result, Allowance& allowance, const Budget& budget) {
    const Size source = png.size();
    allowance.Take(SparseAverager::BytesFor(source, result, png.channels()));
    SparseAverager averager(source, result, png.channels());
    Samples row(size_t{source.width} * png.channels());
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
        const uint32_t columns = PNG_PASS_COLS(source.width, pass);
        const uint32_t rows = columns > 0 ? PNG_PASS_ROWS(source.height, pass) : 0;
        for (uint32_t i = 0; i < rows; ++i) {
            if (i % kRowsBetweenChecks == 0) budget.Check();
            png.ReadRow(row.data());
            averager.AddPixels(PNG_ROW_FROM_PASS_ROW(i, pass), PNG_PASS_START_COL(pass),
                               PNG_PASS_COL_OFFSET(pass), columns, row.data());
        }
    }
    return averager.Take();
}

}  // namespace

Picture ReadPng(SourceFile& file, Size box, Allowance& allowance, const Budget& budget) {
    PngDecoder png(file, budget);
    png.ReadHeader();
    const Size source = png.size();
    CheckPixels(source);
    const bool interlaced = png.IsInterlaced();
    allowance.Take(source.width * kRowBytesPerColumn);
    png.StartRows();
    const Size result = FitInside(source, BoxAsStored(box, png.orientation()));
    Picture picture =
        interlaced ? ReadPasses(png, result, allowance, budget) : ReadInOrder(png, result, allowance, budget);
    return Turn(std::move(picture), png.orientation(), allowance);
}

}  // namespace ovnxmedia
