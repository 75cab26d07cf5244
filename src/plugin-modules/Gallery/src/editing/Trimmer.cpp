#include "plugin-modules/Gallery/src/editing/Trimmer.h"

#include <cerrno>
#include <chrono>
#include <vector>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "libraries/share-common/ShareFolder.h"
#include "plugin-modules/Gallery/src/editing/EditNote.h"
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

bool LogNotPlaced(int code, const std::string& clip) {
    KXP_LOG(KXP::LogFailure, "Error 0x%08x renaming file %s", static_cast<unsigned>(code), clip.c_str());
    return false;
}

// Nothing has the name, not even a link to nowhere.
bool IsFree(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

// A path and the one beside it where its clip is made: on the ignore list until the end or their release.
class Ignored {
  public:
    Ignored(IgnoreList& list, const std::string& path) : list_(list) {
        for (int attempt = 1; attempt <= kClipAttempts && paths_.empty(); ++attempt) {
            const std::vector<std::string> paths = {path, ClipPath(path, attempt)};
            // Not over a file of that name, which is somebody's capture.
            if (!IsFree(paths[1]) || !list_.AddToIgnoreListIfNone(paths)) continue;
            paths_ = paths;
            attempt_ = attempt;
        }
    }
    ~Ignored() { Release(); }
    Ignored(const Ignored&) = delete;
    Ignored& operator=(const Ignored&) = delete;

    bool IsTaken() const { return paths_.empty(); }
    std::string clip() const { return paths_[1]; }
    int attempt() const { return attempt_; }
    void Release() {
        list_.RemoveFromIgnoreList(paths_);
        paths_.clear();
    }

  private:
    IgnoreList& list_;
    std::vector<std::string> paths_;
    int attempt_ = 0;
};

// What a cut makes at a path where nothing is: removed unless it is kept. What was there before stays.
class Made {
  public:
    explicit Made(std::string path) : path_(std::move(path)), remove_(IsFree(path_)) {}
    ~Made() {
        if (remove_ && KXP::IsRegularFile(path_)) (void)KXP::FileDelete(path_, true);
    }
    Made(const Made&) = delete;
    Made& operator=(const Made&) = delete;

    void Keep() { remove_ = false; }

  private:
    const std::string path_;
    bool remove_;
};

}  // namespace

RetVal Trimmer::TrimUGC(const std::string& input, const std::string& output, double headTrimMs,
                        double lengthMs) {
    if (!KXP::IsUsablePath(input) || !KXP::IsUsablePath(output)) return LogTrimFailed(Code::kFailure);
    // Two paths may lead to one file.
    const std::string file = media::EditedFile(output);
    const bool inPlace = media::EditedFile(input) == file;
    // What is no capture is nothing that the product knows how to replace.
    if (KXP::FileExists(output) && !media::IsOwnCapture(inPlace ? file : output)) {
        KXP_LOG(KXP::LogFailure, "A clip replaces captures only, and %s is none",
                KXP::GetFileNameFromPath(output).c_str());
        return LogTrimFailed(Code::kFailure);
    }
    if (inPlace) return TrimInPlace(tracker_.PlaceOf(output), headTrimMs, lengthMs);
    Made clip(output);
    if (!CutFile(input, output, headTrimMs, lengthMs)) return TrimFailed();
    clip.Keep();
    tracker_.TrackNow(output);
    return AwaitClip(output);
}

RetVal Trimmer::TrimInPlace(const std::string& path, double headTrimMs, double lengthMs) {
    Ignored ignored(tracker_.ignoreList(), path);
    if (ignored.IsTaken()) return LogTrimFailed(Code::kFailure);
    EditNote note(KXP::CreateDirectoryPath(GetShareFolderPath()), path, ignored.attempt());
    if (!note.IsOpen()) return LogTrimFailed(Code::kFailure);
    Made clip(ignored.clip());
    if (!CutFile(path, ignored.clip(), headTrimMs, lengthMs)) return TrimFailed();
    if (!PrepareClip(ignored.clip(), path, note)) return TrimFailed();
    // The record of the source is gone before anybody can take it for the clip's.
    tracker_.UntrackNow(path);
    const bool placed = PutInPlace(ignored.clip(), path);
    if (placed) clip.Keep();
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

bool Trimmer::PrepareClip(const std::string& clip, const std::string& path, EditNote& note) const {
    struct stat made {};
    if (lstat(clip.c_str(), &made) != 0) return LogNotPlaced(errno, clip);
    struct stat source {};
    if (lstat(path.c_str(), &source) != 0 && errno != ENOENT) return LogNotPlaced(errno, clip);
    // Before the note lets a start put the clip in place.
    tracker_.KeepFor(path, path, StampOf(made));
    return note.SetWhole(StampOf(source), StampOf(made)) || LogNotPlaced(errno, clip);
}

bool Trimmer::PutInPlace(const std::string& clip, const std::string& path) {
    const int code = KXP::FileMove(clip, path);
    return code >= 0 || LogNotPlaced(code, clip);
}

RetVal Trimmer::AwaitClip(const std::string& output) const {
    const auto until = std::chrono::steady_clock::now() + kLongestWait;
    return tracker_.AwaitTracked(output, until, cancelled_) ? RetVal{} : TrimFailed();
}
