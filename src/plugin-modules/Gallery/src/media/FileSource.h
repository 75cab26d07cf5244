// A file as a source of bytes.
#pragma once

#include "common/files/InputFileStream.h"
#include "libraries/media-bytes/ByteSource.h"

namespace media {

// Over an open file, which must outlive it.
class FileSource final : public ByteSource {
  public:
    explicit FileSource(KXP::ifstream& file) : file_(file) {}

    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        return file_.read_at(position, out, count);
    }

  private:
    KXP::ifstream& file_;
};

}  // namespace media
