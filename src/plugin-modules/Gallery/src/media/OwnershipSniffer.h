// The single test of ownership: whether a file was made by the capture tools of this product family, and what
// kind it is. The extension only selects the walk; exact byte patterns inside the file decide.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/files/InputFileStream.h"
#include "plugin-modules/Gallery/src/media/SniffResult.h"

namespace media {

// Inspects one file. First resets the own flag, type, subtype, source, the three names and the CMS id of
// `result`; highlight fields and the time stamp keep their values unless the file has them. Returns 1,
// own or not, or a negative code: 0x80004005 when the file cannot be opened (a pipe, device or folder counts
// as such and never blocks) or read on, 0x8007000D for a malformed MP4. Fields set before a failure stay.
// Writes log lines for failures. Any thread. Reads a page or two of an ordinary capture, whatever its size; a
// file made of nothing but markers or boxes is read along their chain.
int32_t SniffFile(const std::string& path, SniffResult& result);
// The same, and leaves the file open in `file` for further questions; a file that is known by its name not to
// be own is not opened.
int32_t SniffFile(const std::string& path, KXP::ifstream& file, SniffResult& result);

// How the files of one kind are inspected.
struct Format;
// By the name of a file or its path. Null for one that cannot be own; SniffFile opens no such file.
const Format* FormatOf(std::string_view name);
// The same as SniffFile for a file that is open already.
int32_t SniffOpenFile(const Format& format, KXP::ifstream& file, SniffResult& result);

// Whether the JPEG's picture is small enough to be shown. Returns 1, or 0x80070006 when the file cannot be
// opened; `isValid` is then false.
int32_t CheckIfJPGFileSizeIsValid(const std::string& path, bool& isValid);

}  // namespace media
