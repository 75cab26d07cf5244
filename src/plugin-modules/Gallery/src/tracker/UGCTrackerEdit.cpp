// Changes to single captures: cut, and given texts.
#include <chrono>
#include <thread>
#include <utility>

#include "CobalixUtil.h"
#include "common/FileUtil.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/Edits.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

using KXP::RetVal;
namespace Code = KXP::Code;

namespace {

constexpr int kRounds = 200;
constexpr std::chrono::milliseconds kRound{10};

RetVal TrimFailed() {
    return {Code::kFailure, "Gallery Trim failed", 0};
}

// Beside `path`, with "_tmp" ahead of the extension, and a number from the second attempt on.
std::string TemporaryPath(const std::string& path, int attempt) {
    size_t dot = path.rfind('.');
    const size_t slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = path.size();
    return path.substr(0, dot) + "_tmp" + (attempt == 1 ? "" : std::to_string(attempt)) + path.substr(dot);
}

// A path and the one beside it that its clip is made at, on the ignore list until the end or their release.
class Ignored {
  public:
    Ignored(UGCTracker& tracker, const std::string& path) : tracker_(tracker) {
        for (int attempt = 1; attempt <= kAttempts && paths_.empty(); ++attempt) {
            const std::vector<std::string> paths = {path, TemporaryPath(path, attempt)};
            // Not over a file of that name, which is somebody's capture.
            if (!KXP::FileExists(paths[1]) && tracker_.AddToIgnoreListIfNone(paths)) paths_ = paths;
        }
    }
    ~Ignored() { tracker_.RemoveFromIgnoreList(paths_); }
    Ignored(const Ignored&) = delete;
    Ignored& operator=(const Ignored&) = delete;

    bool IsTaken() const { return paths_.empty(); }
    const std::string& temporary() const { return paths_[1]; }
    void Release() { paths_.clear(); }

  private:
    static constexpr int kAttempts = 100;

    UGCTracker& tracker_;
    std::vector<std::string> paths_;
};

RetVal LogTrimFailed(int32_t code) {
    KXP_LOG(KXP::LogFailure, "Gallery Trim failed: 0x%08x", static_cast<unsigned>(code));
    return TrimFailed();
}

}  // namespace

RetVal UGCTracker::TrimUGC(const std::string& input, const std::string& output, double headTrimMs,
                           double lengthMs) {
    // The system would take the text before a zero byte, which is another file.
    if ((input + output).find('\0') != std::string::npos) return LogTrimFailed(Code::kFailure);
    if (input == output) return TrimInPlace(output, headTrimMs, lengthMs);
    // Of what is there a clip takes the place of captures alone.
    if (KXP::FileExists(output) && !media::MayDeleteCapture(output, gallery_))
        return LogTrimFailed(Code::kFailure);
    if (!Cut(input, output, headTrimMs, lengthMs)) return TrimFailed();
    return AwaitClip(output, Swap::Done);
}

RetVal UGCTracker::TrimInPlace(const std::string& path, double headTrimMs, double lengthMs) {
    Ignored ignored(*this, path);
    if (ignored.IsTaken()) return LogTrimFailed(Code::kFailure);
    const std::string temporary = ignored.temporary();
    if (!Cut(path, temporary, headTrimMs, lengthMs)) return TrimFailed();
    const auto swap = std::make_shared<std::atomic<Swap>>(Swap::Pending);
    ignored.Release();
    QueueSwap(temporary, path, swap);
    RetVal result = AwaitClip(path, *swap);
    // The tracker stopped, and its queue is not to come to it any more.
    Swap pending = Swap::Pending;
    if (result.Failed() && swap->compare_exchange_strong(pending, Swap::Failed))
        (void)KXP::FileDelete(temporary, true);
    return result;
}

bool UGCTracker::Cut(const std::string& input, const std::string& output, double headTrimMs,
                     double lengthMs) {
    // What is cut is not to be engraved meanwhile.
    const KXP::Turn turn(media::Edits(), media::EditedFile(input));
    const int32_t code = host_.TrimVideoFile(input, output, headTrimMs, lengthMs);
    if (code != Code::kOk) (void)LogTrimFailed(code);
    return code == Code::kOk;
}

// The record of the source is gone before anybody can take it for the clip's. The paths are watched again
// when the rename is queued: what the watcher tells of them from then on is looked at behind it.
void UGCTracker::QueueSwap(const std::string& temporary, const std::string& output,
                           std::shared_ptr<std::atomic<Swap>> swap) {
    EnqueueWork(nullptr, [this, temporary, output, swap = std::move(swap)] {
        Swap pending = Swap::Pending;
        if (!swap->compare_exchange_strong(pending, Swap::Moving)) return;
        UntrackPath(output);
        EndStep();
        EnqueueWork(nullptr, [this, temporary, output, swap] {
            const int code = KXP::FileMove(temporary, output);
            if (code < 0) {
                KXP_LOG(KXP::LogFailure, "Error 0x%08x renaming file %s", static_cast<unsigned>(code),
                        temporary.c_str());
                (void)KXP::FileDelete(temporary, true);
                EnqueueTrack(output);
            }
            *swap = code < 0 ? Swap::Failed : Swap::Done;
        });
        RemoveFromIgnoreList({temporary, output});
    });
}

RetVal UGCTracker::AwaitClip(const std::string& output, const std::atomic<Swap>& swap) const {
    for (int round = 0; round < kRounds && !stopping_; ++round) {
        if (swap == Swap::Failed) break;
        if (!CheckIfIgnored(output) && IsTrackedFile(output)) return {};
        std::this_thread::sleep_for(kRound);
    }
    return TrimFailed();
}

RetVal UGCTracker::AddMeme(const std::string& path, const std::string& topBarText,
                           const std::string& bottomBarText) {
    {
        KXP::MutexLock lock(mutex_);
        const RecordPtr found = records_.FindByPath(path);
        if (!found) return {Code::kNotFound, "UGC not found", 0};
        TrackedUGC record = *found;
        record.topBarText = topBarText;
        record.bottomBarText = bottomBarText;
        records_.Change(std::move(record));
    }
    (void)WriteUGCToTracker(Sum::Keep, false);
    outbox_.Drain();
    return {};
}
