#include "importing/Importer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/NewFile.h"
#include "base/Path.h"
#include "importing/CapturePlace.h"
#include "importing/GameName.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

namespace importing {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMode = 0644;
constexpr int kAttempts = 100;
// All of most pictures, and enough for the head of a video.
constexpr uint64_t kPreparedBytes = uint64_t{8} << 20;

[[noreturn]] void FailToWrite(const std::string& why) {
    throw ImportError("cannot be written: " + why);
}

// A folder that goes again when nothing was put into it.
class GameFolder {
  public:
    explicit GameFolder(const fs::path& path) : path_(path.string()) {
        std::error_code error;
        isNew_ = fs::create_directories(path, error);
        if (error) FailToWrite(error.message());
    }
    ~GameFolder() {
        if (isNew_) (void)rmdir(path_.c_str());
    }
    GameFolder(const GameFolder&) = delete;
    GameFolder& operator=(const GameFolder&) = delete;

  private:
    const std::string path_;
    bool isNew_ = false;
};

bool IsOwn(const std::string& path) {
    media::SniffResult result;
    return media::SniffFile(path, result) >= 0 && result.isOwn;
}

bool HasPicture(const std::string& path, const std::string& picture, VideoLibrary& videos) {
    try {
        return DigestOf(ImportSource(path), videos) == picture;
    } catch (const ImportError&) {
        return false;
    }
}

// What a kill leaves between the moment when a copy got its name and the one when it was noted: its path, or
// nothing. Copies of one source are of one size, so that few other files are read.
std::string FindCopy(const std::vector<std::string>& taken, const KXP::FileDescriptor& copy,
                     const std::string& picture, VideoLibrary& videos) {
    struct stat here {};
    if (fstat(copy.get(), &here) != 0) return {};
    for (const std::string& place : taken) {
        struct stat there {};
        if (lstat(place.c_str(), &there) == 0 && S_ISREG(there.st_mode) && there.st_size == here.st_size &&
            HasPicture(place, picture, videos))
            return place;
    }
    return {};
}

// Returns its path: others may have taken those that were free before.
std::string LinkWhereFree(KXP::NewFile& copy, const std::string& place) {
    for (int attempt = 1;; ++attempt) {
        std::string path = FindFreePlace(place).path;
        if (copy.LinkNew(KXP::NameOf(path))) return path;
        if (errno != EEXIST || attempt == kAttempts) FailToWrite(std::strerror(errno));
    }
}

bool RemoveSource(const ImportedFile& file, VideoLibrary& videos) {
    struct stat now {};
    // A recorder may have gone on with it.
    return lstat(file.source.c_str(), &now) == 0 && static_cast<uint64_t>(now.st_size) == file.size &&
           KXP::Platform::ModifiedNs(now) == file.time && HasPicture(file.path, file.picture, videos) &&
           unlink(file.source.c_str()) == 0;
}

}  // namespace

CaptureMarks Importer::MarksOf(const std::string& source) const {
    return {options_.game.empty() ? GameOf(source) : options_.game, options_.highlight};
}

Importer::Result Importer::Check(const std::string& path) {
    const ImportSource source(path);
    if (ledger_.KnowsSource(path, source.size(), source.time())) return {Outcome::kKnown, ""};
    const CaptureMarks marks = MarksOf(path);
    if (source.NeedsConversion())
        videos_.Check(source.file());
    else
        (void)source.Plan(marks);
    return {Outcome::kImported, FindFreePlace(PlaceOf(source, options_.gallery, marks.game)).path};
}

void Importer::Prepare(const std::string& path) {
    const KXP::FileDescriptor file = KXP::OpenForRead(path);
    if (file.IsOpen()) KXP::Platform::StartReading(file.get(), kPreparedBytes);
    prepared_ = path;
}

void Importer::OpenPrepared() noexcept {
    if (prepared_.empty()) return;
    try {
        next_ = std::make_unique<const ImportSource>(prepared_, pictures_[1 - current_]);
    } catch (const std::exception&) {
        // It fails again when it is its turn, and is reported then.
    }
    prepared_.clear();
}

std::unique_ptr<const ImportSource> Importer::Open(const std::string& path) {
    std::unique_ptr<const ImportSource> next = std::move(next_);
    if (!next || next->path() != path || !next->IsUnchanged())
        return std::make_unique<const ImportSource>(path, pictures_[current_]);
    current_ = 1 - current_;
    return next;
}

Importer::Result Importer::Import(const std::string& path) {
    const std::unique_ptr<const ImportSource> opened = Open(path);
    const ImportSource& source = *opened;
    if (ledger_.KnowsSource(path, source.size(), source.time())) return {Outcome::kKnown, ""};
    const CaptureMarks marks = MarksOf(path);
    const std::string wanted = PlaceOf(source, options_.gallery, marks.game);
    const FreePlace place = FindFreePlace(wanted);
    const GameFolder folder(fs::path(place.path).parent_path());

    KXP::NewFile copy(place.path, kMode);
    if (!copy.IsOpen()) FailToWrite(std::strerror(errno));
    const std::string picture = WriteCapture(source, marks, videos_, digests_, copy.descriptor(),
                                             options_.onRead, [this] { OpenPrepared(); });
    if (ledger_.KnowsPicture(picture)) return {Outcome::kKnown, ""};
    std::string copied = FindCopy(place.taken, copy.descriptor(), picture, videos_);
    const KXP::FileDescriptor turn = ledger_.TakeTurn();
    if (ledger_.KnowsPicture(picture)) return {Outcome::kKnown, ""};
    // An import that was killed since has left its copy there.
    const FreePlace current = FindFreePlace(wanted);
    if (copied.empty() && current.path != place.path)
        copied = FindCopy(current.taken, copy.descriptor(), picture, videos_);
    if (!copied.empty()) {
        ledger_.Add({picture, path, source.size(), source.time(), copied});
        return {Outcome::kKnown, ""};
    }
    SetFileTime(copy.descriptor(), options_.time.value_or(source.time()));
    const std::string linked = LinkWhereFree(copy, wanted);
    if (!IsOwn(linked)) {
        (void)unlink(linked.c_str());
        throw ImportError("does not become a capture");
    }
    pending_.push_back({picture, path, source.size(), source.time(), linked});
    ledger_.Add(pending_.back());
    return {Outcome::kImported, linked};
}

std::vector<std::string> Importer::Commit() {
    std::vector<std::string> kept;
    const KXP::FileDescriptor gallery = KXP::OpenFolder(options_.gallery);
    if (!pending_.empty() && (!gallery.IsOpen() || !KXP::Platform::MakeVolumeDurable(gallery.get())))
        throw std::runtime_error(options_.gallery + ": " + std::strerror(errno));
    ledger_.Save();
    for (const ImportedFile& file : std::exchange(pending_, {}))
        if (options_.move && !RemoveSource(file, videos_)) kept.push_back(file.source);
    return kept;
}

}  // namespace importing
