#include "libraries/ovnx-media/SharedThumbnail.h"

#include <array>
#include <csetjmp>
#include <cstdio>
#include <new>
#include <optional>
#include <string_view>

#include <png.h>

extern "C" {
#include <libavutil/md5.h>
}

#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/SourceFile.h"
#include "libraries/ovnx-media/Still.h"

namespace ovnxmedia {
namespace {

// The standard's largest size.
constexpr uint32_t kMaxSide = 1024;
constexpr uint64_t kMaxFileBytes = 8 << 20;
constexpr png_alloc_size_t kMaxTextBytes = 64 << 10;  // unpacked
constexpr png_uint_32 kMaxTexts = 64;
constexpr png_byte kTextChunks[] = "tEXt\0zTXt\0iTXt";

[[noreturn]] void Refuse(const char* text) {
    throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, text);
}

// The head of a PNG with its texts. libpng fails by longjmp, so that nothing with a destructor is in its way.
class PngHead {
  public:
    explicit PngHead(SourceFile& file) : reader_(file) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning);
        if (!png_) throw std::bad_alloc();
        info_ = png_create_info_struct(png_);
        if (info_ && Read()) return;
        png_destroy_read_struct(&png_, &info_, nullptr);
        Refuse("no PNG");
    }
    ~PngHead() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngHead(const PngHead&) = delete;
    PngHead& operator=(const PngHead&) = delete;

    Size size() const { return {png_get_image_width(png_, info_), png_get_image_height(png_, info_)}; }

    // Whether there are such texts, and all of them read like this.
    bool Says(std::string_view keyword, std::string_view value) const {
        return Count(keyword) > 0 && Count(keyword) == Count(keyword, value);
    }
    bool Has(std::string_view keyword) const { return Count(keyword) > 0; }

  private:
    bool Read() {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_user_limits(png_, kMaxSide, kMaxSide);
        png_set_chunk_malloc_max(png_, kMaxTextBytes);
        // Otherwise a chunk beyond that limit is a warning, and memory for all its length is taken.
        png_set_benign_errors(png_, 0);
        png_set_chunk_cache_max(png_, kMaxTexts);
        png_set_crc_action(png_, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_AS_DEFAULT, kTextChunks, 3);
        png_set_read_fn(png_, &reader_, OnRead);
        png_read_info(png_, info_);
        return true;
    }

    int Count(std::string_view keyword, const std::optional<std::string_view>& value = {}) const {
        png_textp texts = nullptr;
        int found = 0;
        const int all = png_get_text(png_, info_, &texts, nullptr);
        for (const png_text* text = texts; text < texts + all; ++text) {
            const size_t length = text->compression > 0 ? text->itxt_length : text->text_length;
            if (keyword == text->key && (!value || *value == std::string_view(text->text, length))) ++found;
        }
        return found;
    }

    static void OnRead(png_structp png, png_bytep bytes, size_t size) {
        if (!static_cast<SourceReader*>(png_get_io_ptr(png))->Read(bytes, size)) png_error(png, "");
    }
    [[noreturn]] static void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
    static void OnWarning(png_structp, png_const_charp) {}

    SourceReader reader_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

bool IsOf(const PngHead& head, const OvnxMediaOrigin& origin) {
    const char* const kSize = "Thumb::Size";
    return head.Says("Thumb::URI", origin.uri) && head.Says("Thumb::MTime", std::to_string(origin.seconds)) &&
           (!head.Has(kSize) || head.Says(kSize, std::to_string(origin.size)));
}

}  // namespace

std::string SharedName(const std::string& uri) {
    std::array<uint8_t, 16> digest{};
    av_md5_sum(digest.data(), reinterpret_cast<const uint8_t*>(uri.data()), uri.size());
    std::string name;
    for (const uint8_t byte : digest) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", unsigned{byte});
        name += digits;
    }
    return name + ".png";
}

Picture DecodeShared(int fd, const OvnxMediaOrigin& origin, Size box, const Budget& budget) {
    {
        SourceFile file(fd);
        if (file.size() > kMaxFileBytes) Refuse("too large for a thumbnail");
        const PngHead head(file);
        if (!IsOf(head, origin)) Refuse("a thumbnail of another file");
        if (head.size().width <= box.width && head.size().height <= box.height)
            Refuse("the thumbnail is not larger");
    }
    return DecodeStill(fd, box, budget);
}

}  // namespace ovnxmedia
