// Writes the file of a capture: a copy of a source, with the marks.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "base/FileDescriptor.h"
#include "importing/CaptureMarks.h"
#include "importing/DigestThread.h"
#include "importing/ImportSource.h"
#include "importing/ReadListener.h"
#include "importing/VideoLibrary.h"

namespace importing {

// Writes to an empty file and returns the digest. Throws ImportError, also for a source that changes
// meanwhile; the file is then incomplete. `whileDigesting` is called once all of a picture is written.
std::string WriteCapture(const ImportSource& source, const CaptureMarks& marks, VideoLibrary& videos,
                         DigestThread& digests, const KXP::FileDescriptor& out, const ReadListener& onRead,
                         const std::function<void()>& whileDigesting);

// By which a picture or a video is known again, whatever its metadata. Throws ImportError.
std::string DigestOf(const ImportSource& source, VideoLibrary& videos);

// Sets when the content changed last, in ns since 1970. Throws ImportError.
void SetFileTime(const KXP::FileDescriptor& file, int64_t time);

}  // namespace importing
