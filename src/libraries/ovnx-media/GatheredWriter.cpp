#include "libraries/ovnx-media/GatheredWriter.h"

#include <cerrno>

#include <unistd.h>

namespace ovnxmedia {
namespace {

constexpr size_t kEnough = 1 << 20;
constexpr size_t kMostPieces = 256;  // of the 1024 that a call takes

// Takes what is written off the front of the pieces.
void Advance(iovec*& piece, size_t written) {
    for (; written > 0 && written >= piece->iov_len; ++piece)
        written -= piece->iov_len;
    if (written == 0) return;
    piece->iov_base = static_cast<char*>(piece->iov_base) + written;
    piece->iov_len -= written;
}

bool WriteFully(int fd, std::vector<iovec>& pieces, size_t size, int64_t position) {
    iovec* piece = pieces.data();
    while (size > 0) {
        const int count = static_cast<int>(pieces.data() + pieces.size() - piece);
        const ssize_t put = pwritev(fd, piece, count, static_cast<off_t>(position));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        Advance(piece, static_cast<size_t>(put));
        position += put;
        size -= static_cast<size_t>(put);
    }
    return true;
}

}  // namespace

bool GatheredWriter::Write(int64_t position, const uint8_t* bytes, size_t size, const AVBufferRef* buffer) {
    if (size == 0) return true;
    const bool follows = position == start_ + static_cast<int64_t>(size_);
    if ((!follows || size_ >= kEnough || pieces_.size() >= kMostPieces) && !Flush()) return false;
    if (pieces_.empty()) start_ = position;
    size_ += size;
    pieces_.push_back({const_cast<uint8_t*>(bytes), size});
    const bool isKept = buffer && bytes >= buffer->data && bytes + size <= buffer->data + buffer->size;
    references_.emplace_back(isKept ? av_buffer_ref(buffer) : nullptr);
    return references_.back() || Flush();
}

bool GatheredWriter::Flush() {
    const bool good = WriteFully(fd_, pieces_, size_, start_);
    start_ += static_cast<int64_t>(size_);
    size_ = 0;
    pieces_.clear();
    references_.clear();
    return good;
}

}  // namespace ovnxmedia
