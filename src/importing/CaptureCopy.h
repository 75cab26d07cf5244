// Writes the file of a capture: a copy of a source, with the marks.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "base/FileDescriptor.h"
#include "importing/CaptureMarks.h"
#include "importing/ImportSource.h"

namespace importing {

// Called with the number of bytes that were read since the last call. What it throws ends the work.
using ReadListener = std::function<void(uint64_t bytes)>;

// Writes to an empty file and returns the digest of the picture's data. Throws ImportError, also for a source
// that changes meanwhile; the file is then incomplete.
std::string WriteCapture(const ImportSource& source, const CaptureMarks& marks,
                         const KXP::FileDescriptor& out, const ReadListener& onRead);

// Sets when the content changed last, in ns since 1970. Throws ImportError.
void SetFileTime(const KXP::FileDescriptor& file, int64_t time);

}  // namespace importing
