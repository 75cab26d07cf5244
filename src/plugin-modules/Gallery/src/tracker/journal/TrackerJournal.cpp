#include "plugin-modules/Gallery/src/tracker/journal/TrackerJournal.h"

#include <random>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "CobalixUtil.h"
#include "base/FolderReader.h"
#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"

namespace {

constexpr int kUniqueNames = 100;
// Sums in a row that find more to look at.
constexpr int kMostRounds = 3;
// What may pass between a sum and the end of its write.
constexpr std::chrono::seconds kSumToWrite{10};
// Turns have names; there is one file and so one turn.
constexpr const char* kFileTurn = "file";

bool IsFree(const std::string& shareFolder, const std::string& name) {
    return !KXP::FileExists(KXP::FileJoin({shareFolder, name}));
}

KXP::RetVal GenerateUniqueTrackerFileName(const std::string& shareFolder, std::string& name) {
    // Not rand(): the client seeds it, and its sequence is the same after every start.
    const int first = static_cast<int>(std::random_device{}() % kUniqueNames);
    for (int attempt = 0; attempt < kUniqueNames; ++attempt) {
        name = UniqueTrackerFileName((first + attempt) % kUniqueNames);
        if (IsFree(shareFolder, name)) {
            KXP_LOG(KXP::LogDetail, "File is unique");
            return {};
        }
        KXP_LOG(KXP::LogDetail, "File already exists");
    }
    return {KXP::Code::kFailure, "Unable to create unique tracker file name", 0};
}

// Deletes the files of rebuilds that a crash or a cancelled change of the gallery has left.
void RemoveStaleTrackerFiles(const std::string& shareFolder) {
    std::set<std::string> names;
    for (int number = 0; number < kUniqueNames; ++number) {
        names.insert(UniqueTrackerFileName(number));
        names.insert(StampFile::PathFor(UniqueTrackerFileName(number)));
    }
    std::vector<std::string> stale;
    // One listing asks the system less than a look for each name.
    for (KXP::FolderReader reader(shareFolder); reader.IsOpen() && reader.Next();)
        if (names.count(reader.Name()) > 0) stale.push_back(shareFolder + "/" + reader.Name());
    for (const std::string& file : stale)
        KXP::FileDelete(file, true);
}

}  // namespace

bool HasUniqueTrackerFileName(const std::string& shareFolder) {
    for (int number = 0; number < kUniqueNames; ++number)
        if (IsFree(shareFolder, UniqueTrackerFileName(number))) return true;
    return false;
}

TrackerJournal::TrackerJournal(IJournalSource& source, std::string shareFolder, const std::string& gallery,
                               KXP::Clock& clock, std::chrono::milliseconds sumInPassing)
    : source_(source),
      shareFolder_(std::move(shareFolder)),
      clock_(clock),
      sumInPassing_(sumInPassing),
      owner_(shareFolder_ + "/" + kTrackerLockName),
      tree_(KXP::WithoutSlash(gallery), clock) {}

bool TrackerJournal::Open(bool useUniqueFile) {
    const bool owns = TryOwn();
    replaceTrackerFile_ = owns && useUniqueFile;
    std::string name = kTrackerFileName;
    if (owns && !useUniqueFile) {
        RemoveStaleTrackerFiles(shareFolder_);
    } else if (replaceTrackerFile_ && GenerateUniqueTrackerFileName(shareFolder_, name).Failed()) {
        throw std::runtime_error("Failed to generate unique tracker name, cannot reset tracker file");
    }
    trackerFile_.Init(shareFolder_ + "/" + name);
    trackerFile_.StopWritesOnce(abandoned_);
    stampFile_.Init(trackerFile_.path());
    return owns;
}

bool TrackerJournal::IsNew() const {
    KXP::JSONFile::Stamp now;
    return trackerFile_.ReadStamp(now) && !(read_ && *read_ == now);
}

KXP::RetVal TrackerJournal::Read(KXP::Document& document, std::vector<NewUGC>& records, TrackerInfo& info,
                                 Stamps* stamps, const std::function<void()>& meanwhile) {
    KXP::JSONFile::Stamp before;
    KXP::JSONFile::Stamp after;
    const bool known = trackerFile_.ReadStamp(before);
    read_ = known ? std::optional(before) : std::nullopt;
    left_ = read_;
    if (stamps && known) *stamps = stampFile_.Read(before);
    KXP::ElementReader elements = ParseUGCFromJSON(records);
    elements.begin = [&meanwhile, begin = std::move(elements.begin)] {
        if (meanwhile) meanwhile();
        begin();
    };
    elements.readDirectly = [&meanwhile, readDirectly = std::move(elements.readDirectly)](
                                const KXP::FileDescriptor& file, KXP::Document& rest) {
        if (meanwhile) meanwhile();
        return readDirectly(file, rest);
    };
    KXP::RetVal read = trackerFile_.ReadAndParseJSON(document, &elements);
    if (read.Failed()) {
        records.clear();
        return read;
    }
    if (stamps && !(trackerFile_.ReadStamp(after) && after == before)) stamps->reset();
    ParseTrackerInfoFromJSON(document, info);
    folderCRC_ = info.folderCRC;
    lastIdInFile_ = info.lastUGCIdUsed;
    return read;
}

// The gallery's folder is not made where it is missing: it may be on a drive that is unplugged.
bool TrackerJournal::MeasureFolder(uint32_t& crc, media::SeenFiles* seen) {
    KXP::JSONFile::Stamp written;
    if (seen && trackerFile_.ReadStamp(written)) seen->recentSince = written.seconds - kSumToWrite.count();
    return tree_.Measure(crc, seen);
}

bool TrackerJournal::LinksHaveChanged() {
    const KXP::Turn turn(turns_, kFileTurn);
    uint32_t crc = folderCRC_;
    return Owns() && tree_.HasLinks() && MeasureFolder(crc) && crc != folderCRC_;
}

void TrackerJournal::RecordFollows(std::optional<uint32_t> crc) {
    const KXP::Turn turn(turns_, kFileTurn);
    nextSum_ = crc;
}

KXP::RetVal TrackerJournal::WriteUGCToTracker(Sum sum) {
    const KXP::Turn turn(turns_, kFileTurn);
    if (closed_ || !MayWriteInTurn()) return {KXP::Code::kFailure, "No tracker", 0};
    if (!Owns()) {
        (void)source_.TakeContent(writer_);
        source_.NoteWritten({});
        return {};
    }
    const bool pending = source_.HasUnwritten();
    if (sum == Sum::Later && !HasNextSum() && tree_.IsSlow(sumInPassing_)) {
        sum_.withheld = true;
        sum_.owed = true;
    } else if (pending || sum == Sum::Renew) {
        RenewSum(pending);
    }
    // The tree may be on a disk that did not answer until now.
    if (!MayWriteInTurn()) return {KXP::Code::kFailure, "No tracker", 0};
    writer_.Recheck(trackerFile_);
    TrackerFileWriter::Content content = source_.TakeContent(writer_);
    content.info.folderCRC = sum_.withheld ? ~folderCRC_ : folderCRC_;
    KXP::HeldLog log;
    KXP::RetVal written = writer_.Write(trackerFile_, stampFile_, content, log);
    left_ = writer_.left();
    if (!written.Failed()) lastIdInFile_ = content.info.lastUGCIdUsed;
    source_.NoteWritten(written);
    return written;
}

// The sum is taken before the records: a capture that comes between the two is in the file but not in the
// sum, which costs a rebuild. In the other order it would be in the sum alone and be lost.
void TrackerJournal::RenewSum(bool pending) {
    const bool known = HasNextSum();
    if (known) folderCRC_ = *nextSum_;
    sum_.owed = false;
    sum_.disturbed = false;
    sum_.withheld = !(known ? source_.AskKnown().all : MeasureKnown(pending));
    if (!known || !sum_.withheld) nextSum_.reset();
    if (sum_.withheld) QueueRelease();
}

// Sets the sum of the tree. Returns whether all that it covers is on record. What the record knows before its
// report is looked at again, as the report would have it.
bool TrackerJournal::MeasureKnown(bool pending) {
    std::set<std::string> asked;
    for (int round = 0; round < kMostRounds; ++round) {
        if (!MeasureFolder(folderCRC_)) {
            KXP_LOG(KXP::LogFailure, "%s::CRC calculation failed", pending ? "TrackUGC" : "UntrackFileTask");
            return false;
        }
        const IJournalSource::Known known = source_.AskKnown();
        if (!known.all) return false;
        bool isRight = known.exact || tree_.WasWhole();
        if (!known.exact) tree_.Forget();
        for (const std::string& path : known.unreported) {
            tree_.Note(path);
            if (asked.insert(path).second && !tree_.WasWhole()) isRight = false;
        }
        if (isRight) return true;
    }
    return false;
}

bool TrackerJournal::HasNextSum() const {
    return nextSum_ && !sum_.disturbed && clock_.Now() - tree_.began() < kSumToWrite / 2;
}

void TrackerJournal::NoteDisturbed(const std::string& path) {
    tree_.Note(path);
    sum_.disturbed = true;
    QueueRelease();
}

void TrackerJournal::QueueRelease() {
    if (!sum_.releaseQueued.exchange(true)) source_.QueueRelease();
}

void TrackerJournal::ReleaseSum() {
    {
        const KXP::Turn turn(turns_, kFileTurn);
        sum_.releaseQueued = false;
        if (!(sum_.withheld || sum_.disturbed) || closed_) return;
        if (!source_.AskKnown().all) return QueueRelease();
    }
    (void)WriteUGCToTracker(Sum::Renew);
}

void TrackerJournal::TakeOver() {
    const KXP::Turn turn(turns_, kFileTurn);
    // A rebuild that was abandoned is made again by the next start.
    if (!replaceTrackerFile_ || abandoned_) return;
    const std::string canonical = shareFolder_ + "/" + kTrackerFileName;
    if (trackerFile_.path() != canonical && KXP::FileExists(trackerFile_.path())) {
        if (KXP::FileMove(trackerFile_.path(), canonical) < 0)
            KXP_LOG(KXP::LogFailure, "UpdateTracker::Failed to set tracker, no tracker UGC this lifecycle");
        stampFile_.MoveTo(canonical);
    } else {
        KXP::FileDelete(canonical, true);
        stampFile_.Init(canonical);
        stampFile_.Remove();
    }
    trackerFile_.Init(canonical);
    replaceTrackerFile_ = false;
    RememberFile();
}

void TrackerJournal::RememberFile() {
    KXP::JSONFile::Stamp stamp;
    left_ = trackerFile_.ReadStamp(stamp) ? std::optional(stamp) : std::nullopt;
}

void TrackerJournal::Abandon() {
    wasOwner_ = Owns();
    abandoned_ = true;
    owner_.Release();
}

bool TrackerJournal::MayWrite() {
    const KXP::Turn turn(turns_, kFileTurn);
    return !closed_ && MayWriteInTurn();
}

bool TrackerJournal::MayWriteInTurn() {
    if (!abandoned_ || !wasOwner_ || Owns()) return true;
    KXP::JSONFile::Stamp now;
    const bool exists = trackerFile_.ReadStamp(now);
    if (!replaceTrackerFile_ && TryOwn() && (exists ? left_ == now : !left_)) return true;
    KXP_LOG(KXP::LogFailure, "%s has another owner or has changed, and what was not written is dropped",
            trackerFile_.path().c_str());
    closed_ = true;
    owner_.Release();
    return false;
}

void TrackerJournal::DeleteTrackerFile() {
    const KXP::Turn turn(turns_, kFileTurn);
    if (closed_ || abandoned_ || !Owns()) return;
    stampFile_.Remove();
    (void)trackerFile_.RemoveFile();
}

void TrackerJournal::Close() {
    const KXP::Turn turn(turns_, kFileTurn);
    closed_ = true;
    if (replaceTrackerFile_ && !abandoned_) {
        // The change of the gallery was cancelled, so the files of its rebuild are of no use.
        if (KXP::FileExists(trackerFile_.path())) KXP::FileDelete(trackerFile_.path(), true);
        stampFile_.Remove();
    }
    owner_.Release();
}
