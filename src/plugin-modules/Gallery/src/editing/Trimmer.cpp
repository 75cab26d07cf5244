#include "plugin-modules/Gallery/src/editing/Trimmer.h"

#include <chrono>
#include <vector>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "common/files/FileUtil.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/Edits.h"

using KXP::RetVal;
namespace Code = KXP::Code;

namespace {

// Where the tracker could not take up the clip at once, its watcher may still find it.
constexpr std::chrono::milliseconds kLongestWait{2000};

RetVal TrimFailed() {
    return {Code::kFailure, "Gallery Trim failed", 0};
}

RetVal LogTrimFailed(int32_t code) {
    KXP_LOG(KXP::LogFailure, "Gallery Trim failed: 0x%08x", static_cast<unsigned>(code));
    return TrimFailed();
}

// Beside `path`, with "_tmp" before the extension, and a number from the second attempt on.
std::string TemporaryPath(const std::string& path, int attempt) {
    size_t dot = path.rfind('.');
    const size_t slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = path.size();
    return path.substr(0, dot) + "_tmp" + (attempt == 1 ? "" : std::to_string(attempt)) + path.substr(dot);
}

// A path and the one beside it where its clip is made: on the ignore list until the end or their release.
class Ignored {
  public:
    Ignored(IgnoreList& list, const std::string& path) : list_(list) {
        for (int attempt = 1; attempt <= kAttempts && paths_.empty(); ++attempt) {
            const std::vector<std::string> paths = {path, TemporaryPath(path, attempt)};
            // Not over a file of that name, which is somebody's capture.
            if (!KXP::FileExists(paths[1]) && list_.AddToIgnoreListIfNone(paths)) paths_ = paths;
        }
    }
    ~Ignored() { Release(); }
    Ignored(const Ignored&) = delete;
    Ignored& operator=(const Ignored&) = delete;

    bool IsTaken() const { return paths_.empty(); }
    std::string temporary() const { return paths_[1]; }
    void Release() {
        list_.RemoveFromIgnoreList(paths_);
        paths_.clear();
    }

  private:
    static constexpr int kAttempts = 100;

    IgnoreList& list_;
    std::vector<std::string> paths_;
};

}  // namespace

RetVal Trimmer::TrimUGC(const std::string& input, const std::string& output, double headTrimMs,
                        double lengthMs) {
    if (!KXP::IsUsablePath(input) || !KXP::IsUsablePath(output)) return LogTrimFailed(Code::kFailure);
    if (input == output) return TrimInPlace(output, headTrimMs, lengthMs);
    // Of what is there a clip takes the place of captures alone.
    if (KXP::FileExists(output) && !media::MayDeleteCapture(output, tracker_.gallery()))
        return LogTrimFailed(Code::kFailure);
    if (!CutFile(input, output, headTrimMs, lengthMs)) return TrimFailed();
    tracker_.TrackNow(output);
    return AwaitClip(output);
}

RetVal Trimmer::TrimInPlace(const std::string& path, double headTrimMs, double lengthMs) {
    Ignored ignored(tracker_.ignoreList(), path);
    if (ignored.IsTaken()) return LogTrimFailed(Code::kFailure);
    if (!CutFile(path, ignored.temporary(), headTrimMs, lengthMs)) return TrimFailed();
    // The record of the source is gone before anybody can take it for the clip's.
    tracker_.UntrackNow(path);
    const bool placed = PutInPlace(ignored.temporary(), path);
    ignored.Release();
    tracker_.TrackNow(path);
    return placed ? AwaitClip(path) : TrimFailed();
}

bool Trimmer::CutFile(const std::string& input, const std::string& output, double headTrimMs,
                      double lengthMs) {
    // What is cut is not to be engraved meanwhile.
    const KXP::Turn turn(media::Edits(), media::EditedFile(input));
    const int32_t code = cut_(input, output, headTrimMs, lengthMs);
    if (code != Code::kOk) (void)LogTrimFailed(code);
    return code == Code::kOk;
}

bool Trimmer::PutInPlace(const std::string& temporary, const std::string& output) {
    const int code = KXP::FileMove(temporary, output);
    if (code >= 0) return true;
    KXP_LOG(KXP::LogFailure, "Error 0x%08x renaming file %s", static_cast<unsigned>(code), temporary.c_str());
    (void)KXP::FileDelete(temporary, true);
    return false;
}

RetVal Trimmer::AwaitClip(const std::string& output) const {
    const auto until = std::chrono::steady_clock::now() + kLongestWait;
    return tracker_.AwaitTracked(output, until, cancelled_) ? RetVal{} : TrimFailed();
}
