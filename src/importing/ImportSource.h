// A file to import, open, and how it becomes a capture.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <sys/stat.h>

#include "base/FileDescriptor.h"
#include "importing/CaptureMarks.h"
#include "importing/PictureMemory.h"
#include "importing/SourceKind.h"
#include "importing/Splice.h"

namespace importing {

class ImportSource {
  public:
    // Throws ImportError unless it is a regular file that can be read.
    explicit ImportSource(const std::string& path);
    // The same with the bytes of a picture in memory, which must be left alone while this object lives.
    ImportSource(const std::string& path, PictureMemory& memory);

    const std::string& path() const { return path_; }
    const KXP::FileDescriptor& file() const { return file_; }
    uint64_t size() const { return static_cast<uint64_t>(status_.st_size); }
    int64_t time() const;  // of its last change, in ns since 1970
    SourceKind kind() const { return kind_; }

    // The bytes of a picture that are in memory; empty when they are not.
    std::string_view Held(uint64_t from, uint64_t size) const;

    bool IsVideo() const { return kind_ == SourceKind::kMp4 || kind_ == SourceKind::kOtherVideo; }
    // Whether it is a video in a container that captures do not have. Throws ImportError for an MP4 that is
    // not whole.
    bool NeedsConversion() const;

    // The parts of a capture that is a copy of this file with the marks. In an MP4, which is engraved after
    // the copy, they are those of this file. Throws ImportError for a kind that cannot be copied, and for a
    // file that is not whole.
    Splice Plan(const CaptureMarks& marks) const;

    // The digest of a picture's data. Throws ImportError.
    std::string DigestOfPicture() const;

    // Whether it is still what it was at the opening.
    bool IsUnchanged() const;

  private:
    const std::string path_;
    struct stat status_ {};
    KXP::FileDescriptor file_;
    SourceKind kind_ = SourceKind::kUnknown;
    std::string_view held_;  // all of it, or nothing
};

}  // namespace importing
