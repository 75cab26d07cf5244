#include "plugin-modules/Gallery/src/tracker/kept/KeptCaptures.h"

#include <algorithm>
#include <utility>

#include "CobalixUtil.h"
#include "common/text/TimeUtil.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptLine.h"

namespace {

using KXP::MutexLock;
using KXP::RetVal;
using KXP::Turn;

constexpr const char* kFileTurn = "kept";
constexpr int64_t kKeptGoneSeconds = int64_t{90} * 24 * 3600;
// A shorter file is not worth another write.
constexpr uint64_t kLongFile = uint64_t{64} << 10;

}  // namespace

int64_t KeptCaptures::SystemTime() {
    return KXP::GetSystemTimeMs() / 1000;
}

KeptCaptures::KeptCaptures(const std::string& shareFolder, WallClock now)
    : now_(std::move(now)), file_(shareFolder + "/" + kKeptFileName) {}

void KeptCaptures::Load() {
    const Turn turn(turns_, kFileTurn);
    KeptFile::Lines lines;
    Report(file_.ReadNew(lines));
    TakeIn(lines, false);
}

std::vector<KeptPtr> KeptCaptures::ReadNew() {
    const Turn turn(turns_, kFileTurn);
    KeptFile::Lines lines;
    Report(file_.ReadNew(lines));
    TakeIn(lines, true);
    const MutexLock lock(mutex_);
    std::vector<KeptPtr> changed = std::exchange(changedByOthers_, {});
    // This process may have changed some of them again.
    const auto isOutdated = [this](const KeptPtr& capture) REQUIRES(mutex_) {
        const KeptPtr current = index_.FindExact(capture->path, capture->stamp);
        return current ? *current != *capture : !capture->facts.IsEmpty();
    };
    changed.erase(std::remove_if(changed.begin(), changed.end(), isOutdated), changed.end());
    return changed;
}

// Once, however often it is tried again.
void KeptCaptures::Report(const RetVal& read) {
    if (read.Failed() && !unreadable_)
        KXP_LOG(KXP::LogFailure, "Failed to read %s: %s", kKeptFileName, KXP::ToStr(read).c_str());
    unreadable_ = read.Failed();
}

// The lines of other processes are older than those that this one has yet to write.
void KeptCaptures::TakeIn(const KeptFile::Lines& lines, bool report) {
    if (lines.empty()) return;
    const int64_t oldest = now_() - kKeptGoneSeconds;
    const MutexLock lock(mutex_);
    index_.Reserve(lines.size());
    for (const auto& [capture, bytes] : lines) {
        if (capture->goneSince != 0 && capture->goneSince < oldest) {
            index_.Remove(capture->path, capture->stamp);
            continue;
        }
        const KeptPtr former = index_.Put(capture, bytes);
        const bool same = former ? *former == *capture : capture->facts.IsEmpty();
        if (report && !same) changedByOthers_.push_back(capture);
    }
    for (const Unsaved& own : unsaved_)
        index_.Put(own.capture, own.line.size());
}

KeptPtr KeptCaptures::Find(const std::string& path, const FileStamp& stamp) const {
    const MutexLock lock(mutex_);
    return index_.Find(path, stamp);
}

KeptPtr KeptCaptures::LatestOf(const std::string& path, const FileStamp& stamp) const {
    const MutexLock lock(mutex_);
    return index_.LatestOf(path, stamp);
}

std::vector<KeptPtr> KeptCaptures::Snapshot() const {
    const MutexLock lock(mutex_);
    return index_.Snapshot();
}

KeptCaptures::Change KeptCaptures::Enter(KeptPtr capture) {
    std::string line = WriteKeptLine(*capture);
    if (line.size() > kMaxKeptLine) return {};
    const MutexLock lock(mutex_);
    Change change{capture, index_.Put(capture, line.size())};
    unsaved_.push_back({std::move(capture), std::move(line)});
    return change;
}

KeptCaptures::Change KeptCaptures::Put(KeptCapture capture) {
    capture.goneSince = 0;
    return Enter(std::make_shared<const KeptCapture>(std::move(capture)));
}

void KeptCaptures::NoteGone(const std::string& path, const FileStamp& stamp) {
    KeptPtr found;
    {
        const MutexLock lock(mutex_);
        found = index_.FindExact(path, stamp);
    }
    if (!found || found->goneSince != 0) return;
    KeptCapture gone = *found;
    gone.goneSince = now_();
    (void)Enter(std::make_shared<const KeptCapture>(std::move(gone)));
}

void KeptCaptures::Retract(const Change& change) {
    if (!change.put) return;
    const KeptCapture& put = *change.put;
    KeptPtr former = change.former;
    if (!former) former = std::make_shared<const KeptCapture>(KeptCapture{put.path, put.stamp, {}, 0});
    std::string line = WriteKeptLine(*former);
    // No Save is under way in this turn.
    const Turn turn(turns_, kFileTurn);
    const MutexLock lock(mutex_);
    const KeptPtr current = index_.FindExact(put.path, put.stamp);
    if (current != (put.facts.IsEmpty() ? nullptr : change.put)) return;
    index_.Put(former, line.size());
    const auto written = std::find_if(unsaved_.begin(), unsaved_.end(),
                                      [&](const Unsaved& own) { return own.capture == change.put; });
    if (written != unsaved_.end()) {
        unsaved_.erase(written);
    } else {
        unsaved_.push_back({std::move(former), std::move(line)});
    }
}

bool KeptCaptures::HasUnsaved() const {
    const MutexLock lock(mutex_);
    return !unsaved_.empty();
}

RetVal KeptCaptures::Save() {
    const Turn turn(turns_, kFileTurn);
    return SaveInTurn();
}

RetVal KeptCaptures::SaveInTurn() {
    std::string text;
    size_t count = 0;
    {
        const MutexLock lock(mutex_);
        count = unsaved_.size();
        for (const Unsaved& own : unsaved_)
            text += own.line;
    }
    if (count == 0) return {};
    KeptFile::Lines others;
    RetVal saved = file_.Append(text, others);
    TakeIn(others, true);
    const MutexLock lock(mutex_);
    // Who puts more meanwhile puts it at the end.
    if (!saved.Failed())
        unsaved_.erase(unsaved_.begin(), unsaved_.begin() + static_cast<std::ptrdiff_t>(count));
    return saved;
}

RetVal KeptCaptures::CompactIfLong() {
    const Turn turn(turns_, kFileTurn);
    {
        const MutexLock lock(mutex_);
        if (file_.size() <= kLongFile || file_.size() <= 2 * index_.lineBytes()) return {};
    }
    RetVal saved = SaveInTurn();
    if (saved.Failed()) return saved;
    return file_.Replace([this](const KeptFile::Lines& others) { return WholeText(others); });
}

// None if more was put meanwhile, which may still be retracted.
std::optional<std::string> KeptCaptures::WholeText(const KeptFile::Lines& others) {
    TakeIn(others, true);
    std::vector<KeptPtr> all;
    {
        const MutexLock lock(mutex_);
        if (!unsaved_.empty()) return std::nullopt;
        all = index_.Snapshot();
    }
    std::string text;
    for (const KeptPtr& capture : all)
        text += WriteKeptLine(*capture);
    return text;
}
