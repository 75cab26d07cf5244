#include "gallery-host/doctor/RecordChecks.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "base/FileDescriptor.h"
#include "base/PartFiles.h"
#include "base/Path.h"
#include "base/Places.h"
#include "base/ReadWrite.h"
#include "common/json/JSONFile.h"
#include "common/product/Profile.h"
#include "gallery-host/output/Progress.h"
#include "gallery-host/output/Words.h"
#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// As many as anybody reads of a long list.
constexpr size_t kNamed = 3;

class NamedFiles {
  public:
    void Add(const std::string& name) {
        if (count_++ < kNamed) names_ += (names_.empty() ? "" : ", ") + name;
    }
    size_t count() const { return count_; }
    std::string Text() const { return names_ + (count_ > kNamed ? ", ..." : ""); }

  private:
    size_t count_ = 0;
    std::string names_;
};

std::string ReasonFor(int error) {
    return std::strerror(error);
}

// Whether another process has the record; without a lock nobody has.
bool IsInUse(const std::string& share) {
    const KXP::FileDescriptor lock(open((share + "/" + kTrackerLockName).c_str(), O_RDONLY | O_CLOEXEC));
    return lock.IsOpen() && flock(lock.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

// Empty, or why a file that is there cannot be used.
std::string ReadJson(const std::string& path, KXP::Document& document, const KXP::ElementReader* elements) {
    const KXP::FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.IsOpen()) return ReasonFor(errno);
    KXP::JSONFile json;
    json.Init(path);
    return json.ReadAndParseJSON(document, elements).Failed() ? "it is damaged" : "";
}

bool Exists(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 || errno != ENOENT;
}

Finding CheckSettings(const std::string& path, StoredSettings& settings) {
    if (!Exists(path)) return {"settings", Health::kGood, "none are saved yet", {}, {}};
    KXP::Document document;
    std::string fault = ReadJson(path, document, nullptr);
    bool oldLayout = false;
    if (fault.empty() && !ReadStoredSettings(document, settings, oldLayout)) fault = "it holds no settings";
    if (fault.empty()) return {"settings", Health::kGood, path, {}, {}};
    return {"settings",
            Health::kBad,
            path + ": " + fault,
            "the next start uses the defaults; choose the gallery again with \"settings set --path\"",
            {}};
}

struct Record {
    std::vector<NewUGC> captures;
    TrackerInfo info;
};

Finding CheckTruth(const Record& record, const ProductFolders& folders) {
    uint32_t sum = 0;
    media::CalculateFolderCRC(folders.gallery, folders.gallery, sum);
    const std::string count = Counted(record.captures.size(), "capture") + " on record";
    if (record.info.version != kTrackerVersion)
        return {"record",
                Health::kNote,
                count + ", in the form of another version",
                "nothing; the next start scans the gallery",
                {}};
    if (sum != record.info.folderCRC)
        return {"record",
                Health::kNote,
                count + "; the gallery has changed since then",
                "nothing; the next start scans it",
                {}};
    return {"record", Health::kGood, count + ", as on the disk", {}, {}};
}

std::string DropRecord(const std::string& share) {
    if (IsInUse(share)) return "the record is in use; end the client first";
    std::error_code error;
    fs::remove(share + "/" + kTrackerFileName, error);
    return error ? error.message() : "the next start scans the gallery";
}

struct LookedAt {
    NamedFiles gone;
    NamedFiles unreadable;
    NamedFiles fromTheFuture;
};

// By more than time zones make: of a drive that another system writes, some have the local time.
bool IsFromTheFuture(const std::string& path) {
    constexpr std::time_t kDay = std::time_t{24} * 60 * 60;
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && status.st_mtime > std::time(nullptr) + kDay;
}

// A file whose name cannot be looked at is not gone.
void LookAtCapture(const TrackedUGC& capture, LookedAt& found) {
    if (capture.date.view().empty()) return;  // a highlight that is not saved yet
    if (!Exists(capture.path)) {
        found.gone.Add(capture.path);
        return;
    }
    media::SniffResult result;
    if (media::SniffFile(capture.path, result) < 0) found.unreadable.Add(capture.path);
    if (IsFromTheFuture(capture.path)) found.fromTheFuture.Add(capture.path);
}

void CheckCaptures(const Record& record, const ProductFolders& folders, Findings& findings) {
    LookedAt found;
    Progress progress("looking at captures", record.captures.size());
    for (const NewUGC& capture : record.captures) {
        LookAtCapture(*capture, found);
        progress.Advance();
        progress.Draw();
    }
    if (found.gone.count() > 0)
        findings.push_back(
            {"record", Health::kBad,
             Counted(found.gone.count(), "capture") + " on record whose file is gone: " + found.gone.Text(),
             "let the next start scan the gallery (--fix)",
             [share = folders.share] { return DropRecord(share); }});
    if (found.unreadable.count() > 0)
        findings.push_back(
            {"captures",
             Health::kBad,
             Counted(found.unreadable.count(), "capture") + " cannot be read: " + found.unreadable.Text(),
             "look at the rights of these files, and at their disk",
             {}});
    else if (found.gone.count() < record.captures.size())
        findings.push_back({"captures",
                            Health::kGood,
                            Counted(record.captures.size() - found.gone.count(), "capture") + " can be read",
                            {},
                            {}});
    if (found.fromTheFuture.count() > 0)
        findings.push_back(
            {"clock",
             Health::kNote,
             Counted(found.fromTheFuture.count(), "capture") +
                 " with a date in the future: " + found.fromTheFuture.Text(),
             "look at the clock; they come first in the list until then (touch changes a date)",
             {}});
}

// What a process that was killed has left; the names of notes say whose they are.
Finding CheckLeftovers(const std::string& share) {
    size_t notes = 0;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(share, error)) {
        const std::string name = entry.path().filename().string();
        const bool isNote = name.rfind(KXP::kPartNotes, 0) == 0 || name.rfind(kEditNotes, 0) == 0;
        if (isNote || (name.rfind("UGCTracker_", 0) == 0 && !IsInUse(share))) ++notes;
    }
    if (notes == 0) return {"leftovers", Health::kGood, "none", {}, {}};
    return {"leftovers", Health::kNote, Counted(notes, "note") + " of work that is under way or was cut off",
            "nothing; the next start finishes it (or --fix removes unfinished copies)", [] {
                return Counted(static_cast<size_t>(KXP::RemoveAbandonedParts()), "unfinished file") +
                       " removed";
            }};
}

std::string ShareFolder() {
    return KXP::Platform::AppSupportFolder() + KXP::kProductFolder + "/" + KXP::kShareFolder;
}

}  // namespace

ProductFolders ReadFolders(Findings& findings) {
    ProductFolders folders;
    folders.share = ShareFolder();
    folders.cache = KXP::Platform::CacheFolder() + KXP::kProductFolder;
    StoredSettings settings;
    findings.push_back(CheckSettings(folders.share + "/" + kSettingsFileName, settings));
    const std::string byDefault = Settings::GetDefaultGalleryFolderPath();
    folders.gallery =
        KXP::WithoutSlash(settings.userGalleryPath.empty() ? byDefault : settings.userGalleryPath);
    folders.isDefaultGallery = folders.gallery == byDefault;
    // The product's own function would make it.
    folders.temporary = settings.tempFolder.empty()
                            ? KXP::Platform::AppSupportFolder() + KXP::kProductFolder + "/temp"
                            : settings.tempFolder;
    return folders;
}

Findings CheckRecord(const ProductFolders& folders) {
    Findings findings;
    if (IsInUse(folders.share))
        findings.push_back({"client",
                            Health::kNote,
                            "another program uses the gallery's record",
                            "what is said of the record may change while it runs",
                            {}});
    const std::string path = folders.share + "/" + kTrackerFileName;
    Record record;
    KXP::Document document;
    const KXP::ElementReader elements = ParseUGCFromJSON(record.captures);
    if (!Exists(path)) {
        findings.push_back({"record", Health::kGood, "none yet; the first start scans the gallery", {}, {}});
    } else if (const std::string fault = ReadJson(path, document, &elements); !fault.empty()) {
        findings.push_back(
            {"record", Health::kNote, path + ": " + fault, "nothing; the next start scans the gallery", {}});
    } else {
        ParseTrackerInfoFromJSON(document, record.info);
        // Without it all of them would seem to be gone.
        if (fs::is_directory(folders.gallery)) {
            findings.push_back(CheckTruth(record, folders));
            CheckCaptures(record, folders, findings);
        }
    }
    findings.push_back(CheckLeftovers(folders.share));
    return findings;
}

}  // namespace host
