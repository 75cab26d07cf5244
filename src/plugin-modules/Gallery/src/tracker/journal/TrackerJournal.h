// The tracker's file, with the sum of the gallery's tree that lets the next start skip inspecting the
// captures.
//
// The sum must not cover a file that is not on record: the next start would find the sum right and never look
// for that file. So while the source knows of changes that are not on record, the file holds a sum that
// matches no tree ("withheld"); the right one is written when everything is on record. If the process ends in
// between, the next start rebuilds. In a gallery that takes long to sum up, a write may also postpone the sum
// ("owed"), so that notifications of captures do not wait for it. Where every change is reported, a sum only
// looks at what has changed since the last one (KeptTree).
//
// Beside the file lies that of the stamps of its captures (StampFile); both are made, moved and deleted
// together.
//
// One thread at a time uses the files; the others wait for their turn. This is not a mutex, because writing
// and summing log, and the thread that has the turn may take the source's locks.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/json/JSONFile.h"
#include "common/results/RetVal.h"
#include "common/task/Clock.h"
#include "common/threads/Turns.h"
#include "plugin-modules/Gallery/src/tracker/journal/IJournalSource.h"
#include "plugin-modules/Gallery/src/tracker/journal/KeptTree.h"
#include "plugin-modules/Gallery/src/tracker/journal/RecordOwner.h"
#include "plugin-modules/Gallery/src/tracker/journal/StampFile.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

// Whether TrackerJournal::Open would find a unique name in the folder.
bool HasUniqueTrackerFileName(const std::string& shareFolder);

class TrackerJournal {
  public:
    // What a write does with the sum. If a change waits for the write, Keep renews it too.
    enum class Sum {
        Keep,
        Renew,
        Later,  // Renew, but owed if the last sum took longer than `sumInPassing`
    };

    // `source` outlives it. `gallery` ends in "/".
    TrackerJournal(IJournalSource& source, std::string shareFolder, const std::string& gallery,
                   KXP::Clock& clock, std::chrono::milliseconds sumInPassing);

    // Before other threads use the journal:

    // Selects the file: the tracker's file or, for a rebuild, a unique one that TakeOver moves to its place.
    // Throws std::runtime_error when no unique name is left. Returns false when another process writes the
    // file; it is then only read, and a write does nothing but report success.
    bool Open(bool useUniqueFile);
    // One for each record of a file; none unless the file is the one that the product wrote last.
    using Stamps = std::optional<std::vector<FileStamp>>;
    // Fails when there is no such file or it holds no JSON object. `document` gets what the file holds beside
    // the records. Writes keep the file's sum until one renews it. Sets `stamps` unless it is null.
    // `meanwhile` is called, once or more, when the file is there and still has to be parsed.
    KXP::RetVal Read(KXP::Document& document, std::vector<NewUGC>& records, TrackerInfo& info,
                     Stamps* stamps = nullptr, const std::function<void()>& meanwhile = {});

    // One thread at a time, while the file is only read:

    // Whether the file is another one than at the last Read.
    bool IsNew() const;
    // Writes the file from now on, if nobody else does.
    bool TryOwn() { return owner_.TryOwn(); }
    bool Owns() const { return owner_.Owns(); }

    // Any thread, with none of the source's locks held:

    // The sum of the tree on disk. False when the gallery cannot be read. `seen` may be null; its recent
    // files are those that may have changed after the file's sum was taken and without changing it.
    bool MeasureFolder(uint32_t& crc, media::SeenFiles* seen = nullptr);
    // The files that were seen with the sum measured last, `crc`, are about to be put on record: until the
    // call with none, and unless something changes meanwhile, the sum is that of the record, and need not be
    // measured again.
    void RecordFollows(std::optional<uint32_t> crc);
    KXP::RetVal WriteUGCToTracker(Sum sum);
    bool OwesSum() const { return sum_.owed; }
    // Something has changed at the path that counts in the sum: a right one is written soon.
    void NoteDisturbed(const std::string& path);
    // The product itself has changed something at the path, and a write follows.
    void NoteChanged(const std::string& path) { tree_.Note(path); }
    // Nobody reports what changes.
    void ForgetTree() { tree_.Forget(); }
    // Whether the file's sum is not that of the gallery.
    bool NeedsSum() const { return sum_.owed || sum_.disturbed || sum_.withheld; }
    // Whether what links in the gallery lead to has changed since the file's sum was taken.
    bool LinksHaveChanged();
    // As the file was read or written last.
    int32_t lastIdInFile() const { return lastIdInFile_; }
    // Writes the right sum if the file has not got it and everything is on record now.
    void ReleaseSum();
    // Makes the file of a rebuild the tracker's file.
    void TakeOver();
    // Deletes the files; the next write makes them anew.
    void DeleteTrackerFile();
    // The instance is left to itself: another one may write the file from now on. Does not wait.
    void Abandon();
    bool IsAbandoned() const { return abandoned_; }
    // Once abandoned: whether nobody else writes the file, and it is as it was read or written here last. If
    // not, what is not written is dropped for good.
    bool MayWrite();
    // Nothing touches the files after this. Deletes those of a rebuild that was not taken over.
    void Close();

  private:
    struct SumState {
        std::atomic<bool> owed{false};
        std::atomic<bool> disturbed{false};
        std::atomic<bool> withheld{false};
        std::atomic<bool> releaseQueued{false};
    };

    void RenewSum(bool pending);
    bool MeasureKnown(bool pending);
    bool HasNextSum() const;
    bool MayWriteInTurn();
    void RememberFile();
    void QueueRelease();

    IJournalSource& source_;
    const std::string shareFolder_;
    KXP::Clock& clock_;
    const std::chrono::milliseconds sumInPassing_;
    KXP::Turns turns_;
    SumState sum_;
    RecordOwner owner_;
    std::atomic<int32_t> lastIdInFile_{0};
    std::atomic<bool> wasOwner_{false};  // when it was abandoned
    std::atomic<bool> abandoned_{false};

    // Used by the thread that has the turn.
    KXP::JSONFile trackerFile_;
    StampFile stampFile_;
    TrackerFileWriter writer_;
    KeptTree tree_;
    std::optional<KXP::JSONFile::Stamp> read_;  // the file, as it was read last
    std::optional<KXP::JSONFile::Stamp> left_;  // as it was after it was read or written last
    uint32_t folderCRC_ = 0;
    std::optional<uint32_t> nextSum_;  // of RecordFollows
    bool replaceTrackerFile_ = false;
    bool closed_ = false;
};
