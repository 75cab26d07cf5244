// Changes to single captures: cut, and given texts.
#include <chrono>
#include <thread>
#include <utility>

#include "CobalixUtil.h"
#include "common/FileUtil.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

using KXP::RetVal;
namespace Code = KXP::Code;

namespace {

constexpr int kRounds = 200;
constexpr std::chrono::milliseconds kRound{10};

RetVal TrimFailed() {
    return {Code::kFailure, "Gallery Trim failed", 0};
}

// Beside `path`, with "_tmp" ahead of the extension, and a number where somebody else has a file of that
// name.
std::string TemporaryPath(const std::string& path) {
    size_t dot = path.rfind('.');
    const size_t slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = path.size();
    const auto name = [&](const std::string& mark) { return path.substr(0, dot) + mark + path.substr(dot); };
    std::string temporary = name("_tmp");
    for (int number = 2; KXP::FileExists(temporary); ++number)
        temporary = name("_tmp" + std::to_string(number));
    return temporary;
}

// Removes the paths from the list, unless they are left to somebody else.
class Ignored {
  public:
    Ignored(UGCTracker& tracker, std::vector<std::string> paths)
        : tracker_(tracker), paths_(std::move(paths)) {
        tracker_.AddToIgnoreList(paths_);
    }
    ~Ignored() { tracker_.RemoveFromIgnoreList(paths_); }
    Ignored(const Ignored&) = delete;
    Ignored& operator=(const Ignored&) = delete;

    void Release() { paths_.clear(); }

  private:
    UGCTracker& tracker_;
    std::vector<std::string> paths_;
};

}  // namespace

RetVal UGCTracker::TrimUGC(const std::string& input, const std::string& output, double headTrimMs,
                           double lengthMs) {
    const bool inPlace = input == output;
    const std::string target = inPlace ? TemporaryPath(output) : output;
    Ignored ignored(*this, inPlace ? std::vector<std::string>{output, target} : std::vector<std::string>{});
    const int32_t code = host_.TrimVideoFile(input, target, headTrimMs, lengthMs);
    if (code != Code::kOk) {
        KXP_LOG(KXP::LogFailure, "Gallery Trim failed: 0x%08x", static_cast<unsigned>(code));
        return TrimFailed();
    }
    const auto swap = std::make_shared<std::atomic<Swap>>(Swap::Done);
    if (inPlace) {
        *swap = Swap::Pending;
        ignored.Release();
        QueueSwap(target, output, swap);
    }
    return AwaitClip(output, *swap);
}

// The record of the source is gone before anybody can take it for the clip's. The paths are watched again
// when the rename is queued: what the watcher tells of them from then on is looked at behind it.
void UGCTracker::QueueSwap(const std::string& temporary, const std::string& output,
                           std::shared_ptr<std::atomic<Swap>> swap) {
    EnqueueWork(nullptr, [this, temporary, output, swap = std::move(swap)] {
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
