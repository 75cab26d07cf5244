#include "plugin-modules/Gallery/src/tracker/CaptureInspector.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "common/files/FileUtil.h"
#include "common/files/InputFileStream.h"
#include "common/text/TimeUtil.h"
#include "plugin-modules/Gallery/src/media/FileSource.h"
#include "plugin-modules/Gallery/src/media/Mp4Header.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"

namespace {

using KXP::RetVal;
namespace Code = KXP::Code;

constexpr double kTooLong = 100.0 * 3600;  // seconds; the hours have two digits

void TakeSniffed(const media::SniffResult& sniffed, TrackedUGC& record) {
    record.fileType = sniffed.fileType;
    record.fileSubType = sniffed.fileSubType;
    record.fileSource = sniffed.fileSource;
    record.drsName = sniffed.drsName;
    record.profileName = sniffed.drsProfileName;
    record.shortName = sniffed.shortName;
    record.cmsId = static_cast<uint64_t>(sniffed.cmsId);
    record.highlightName = sniffed.highlightName;
    record.highlightDefinitionId = sniffed.highlightDefinitionId;
    record.highlightGroupId = sniffed.highlightGroupId;
    record.eventTimeStamp = sniffed.eventTimeStamp;
    record.highlightTags = static_cast<int32_t>(sniffed.highlightTags);
    record.highlightSignificance = static_cast<int32_t>(sniffed.highlightSignificance);
}

RetVal NotOwn() {
    return {Code::kFailure, "Not a ZV File", 0};
}

// A link, a pipe or a folder.
bool MeansNoFile(int error) {
    return error == EINVAL || error == ELOOP;
}

RetVal CheckOwner(const std::string& path, KXP::ifstream& file, TrackedUGC& record) {
    const media::Format* const format = media::FormatOf(path);
    if (!format) return NotOwn();
    media::SniffResult sniffed;
    int32_t code = Code::kFailure;
    if (file.open(path, KXP::Links::Refuse)) {
        record.stamp = StampOf(file.status());
        code = media::SniffOpenFile(*format, file, sniffed);
    } else if (MeansNoFile(file.error())) {
        return NotOwn();
    } else {
        KXP_LOG(KXP::LogFailure, "Failed to open %s", KXP::NameOf(path).c_str());
    }
    if (code < 0) {
        KXP_LOG(KXP::LogFailure, "TrackFileTask::CheckIfZv failed result:%d", code);
        return {Code::kFailure, "CheckIfZv failed", code};
    }
    if (!sniffed.isOwn) return NotOwn();
    TakeSniffed(sniffed, record);
    return {};
}

RetVal MeasureFile(const struct stat& status, TrackedUGC& record) {
    record.sizeKB = static_cast<uint32_t>(KXP::FileSizeKB(status));
    std::string date;
    const int dated = KXP::FileDate(status, date);
    record.date = date;
    if (dated < 0) {
        KXP_LOG(KXP::LogFailure, "TrackFileTask::FileDate failed %d", dated);
        return {dated, "FileDate failed", 0};
    }
    return {};
}

RetVal MeasureVideo(KXP::ifstream& file, TrackedUGC& record) {
    media::FileSource source(file);
    media::Mp4HeaderInfo info;
    const int32_t code = media::ReadMp4Header(source, false, info);
    record.audioType = info.audioType;
    const double seconds = info.duration;
    if (code < 0) {
        KXP_LOG(KXP::LogFailure, "TrackFileTask::FindMP4DurationTypeInfo failed result:%d", code);
        return {code, "FindMP4DurationTypeInfo failed", 0};
    }
    std::string duration;
    const bool formatted = FormatDuration(seconds, duration, record.msDuration);
    record.duration = duration;
    if (formatted) return {};
    const int whole = std::isfinite(seconds) ? static_cast<int>(std::min(seconds, kTooLong)) : -1;
    KXP_LOG(KXP::LogFailure, "TrackFileTask::sprintf to create duration string failed:%d", whole);
    return {Code::kFailure, "Failed to create duration string!", 0};
}

RetVal Inspect(const std::string& path, KXP::ifstream& file, TrackedUGC& record) {
    if (RetVal owner = CheckOwner(path, file, record); owner.Failed()) return owner;
    if (RetVal measured = MeasureFile(file.status(), record); measured.Failed()) return measured;
    return record.fileType == "video" ? MeasureVideo(file, record) : RetVal{};
}

Inspection::Finding Judge(const KXP::ifstream& file, const RetVal& result) {
    const int error = file.error();
    if (MeansGone(error)) return Inspection::Finding::Gone;
    if (error != 0 && !MeansNoFile(error)) return Inspection::Finding::Unreadable;
    return result.Failed() ? Inspection::Finding::NoCapture : Inspection::Finding::Capture;
}

}  // namespace

bool FormatDuration(double seconds, std::string& text, uint32_t& milliseconds) {
    if (!(seconds >= 0 && seconds < kTooLong)) return false;
    const auto whole = static_cast<unsigned>(seconds);
    std::array<char, 16> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%02u:%02u:%02u", whole / 3600, whole / 60 % 60, whole % 60);
    text = buffer.data();
    milliseconds = static_cast<uint32_t>(seconds * 1000.0);
    return true;
}

Inspection InspectCapture(const std::string& path) {
    Inspection inspection;
    (void)KXP::FileUnlockedCheckAndWait(path, 40);
    // Opened once, so that all data come from the same file even if another takes its path meanwhile.
    KXP::ifstream file;
    inspection.record.path = path;
    inspection.result = Inspect(path, file, inspection.record);
    inspection.finding = Judge(file, inspection.result);
    // What was read of a failing disk may look like a capture, or like none.
    if (inspection.finding == Inspection::Finding::Unreadable && !inspection.result.Failed())
        inspection.result = {Code::kFailure, "The file could not be read", file.error()};
    return inspection;
}
