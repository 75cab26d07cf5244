#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

#include "CobalixUtil.h"
#include "base/Text.h"
#include "common/files/DirUtil.h"
#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/media/FileSource.h"
#include "plugin-modules/Gallery/src/media/JpegWalk.h"
#include "plugin-modules/Gallery/src/media/Mp4Walk.h"
#include "plugin-modules/Gallery/src/media/PngWalk.h"

namespace media {

struct Format {
    std::string_view extension;  // lower case
    std::string_view fileType;
    std::string_view fileSubType;
    int32_t (*walk)(ByteCursor&, SniffResult&);
};

namespace {

// What is not here, ".exr" included, is never own by its bytes.
constexpr Format kFormats[] = {
    {".png", "image", "Unknown", WalkPng},
    {".jps", "image", "Stereo", WalkJpeg},
    {".jpg", "image", "Unknown", WalkJpeg},
    {".mp4", "video", "Unknown", WalkMp4},
};

void Reset(const Format* format, SniffResult& result) {
    result.isOwn = false;
    result.fileType = format ? format->fileType : "other";
    result.fileSubType = format ? format->fileSubType : "Unknown";
    result.fileSource = "Undefined";
    result.drsName.clear();
    result.drsProfileName.clear();
    result.shortName.clear();
    result.cmsId = 0;
    result.findings.clear();
}

int32_t Walk(const Format& format, KXP::ifstream& file, SniffResult& result) {
    FileSource source(file);
    ByteCursor cursor(source);
    const int32_t code = format.walk(cursor, result);
    for (const char* finding : result.findings)
        KXP_LOG(KXP::LogFailure, "%s", finding);
    return code;
}

}  // namespace

const Format* FormatOf(std::string_view name) {
    for (const Format& format : kFormats)
        if (KXP::EndsIgnoringCase(name, format.extension)) return &format;
    return nullptr;
}

int32_t SniffFile(const std::string& path, SniffResult& result) {
    KXP::ifstream file;
    return SniffFile(path, file, result);
}

int32_t SniffFile(const std::string& path, KXP::ifstream& file, SniffResult& result) {
    const Format* const format = FormatOf(path);
    Reset(format, result);
    if (!format) return kInspected;
    if (!file.open(path)) {
        KXP_LOG(KXP::LogFailure, "Failed to open %s", KXP::GetFileNameFromPath(path).c_str());
        return KXP::Code::kFailure;
    }
    return Walk(*format, file, result);
}

int32_t SniffOpenFile(const Format& format, KXP::ifstream& file, SniffResult& result) {
    Reset(&format, result);
    return Walk(format, file, result);
}

int32_t CheckIfJPGFileSizeIsValid(const std::string& path, bool& isValid) {
    isValid = false;
    KXP::ifstream file;
    if (!file.open(path)) {
        KXP_LOG(KXP::LogFailure, "Could not open %s", KXP::GetFileNameFromPath(path).c_str());
        return KXP::Code::kInvalidHandle;
    }
    FileSource source(file);
    ByteCursor cursor(source);
    isValid = JpegSizeIsValid(cursor);
    return kInspected;
}

}  // namespace media
