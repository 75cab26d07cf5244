#include "importing/Importer.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/NewFile.h"
#include "base/ReadWrite.h"
#include "importing/GameName.h"
#include "importing/PictureDigest.h"
#include "plugin-modules/Gallery/src/engraving/EngravingFile.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

namespace importing {
namespace {

namespace fs = std::filesystem;

constexpr size_t kBlock = size_t{1} << 20;
constexpr unsigned kMode = 0644;
constexpr int kMostPlaces = 10000;

[[noreturn]] void FailToWrite() {
    throw ImportError(std::string("cannot be written: ") + std::strerror(errno));
}

// Writes the parts one after the other and returns the digest of the picture's data.
std::string Write(const ImportSource& source, const Splice& splice, const KXP::FileDescriptor& out) {
    PictureDigest digest;
    std::vector<char> block(kBlock);
    for (const Piece& piece : splice.pieces()) {
        if (!KXP::WriteFully(out, piece.bytes)) FailToWrite();
        for (uint64_t done = 0; done < piece.size;) {
            const auto size = static_cast<size_t>(std::min<uint64_t>(piece.size - done, kBlock));
            if (KXP::ReadAt(source.file(), piece.from + done, block.data(), size) < size)
                throw ImportError("cannot be read");
            if (piece.isPicture) digest.Add(block.data(), size);
            if (!KXP::WriteFully(out, {block.data(), size})) FailToWrite();
            done += size;
        }
    }
    return digest.Finish();
}

void SetTime(const KXP::FileDescriptor& file, int64_t time) {
    constexpr int64_t kSecond = 1000000000;
    // Before 1970 the rest is negative, which no system takes.
    const int64_t rest = (time % kSecond + kSecond) % kSecond;
    const timespec changed{static_cast<time_t>((time - rest) / kSecond), static_cast<long>(rest)};
    const timespec times[2] = {changed, changed};
    if (futimens(file.get(), times) != 0) FailToWrite();
}

void Engrave(const KXP::FileDescriptor& file, const CaptureMarks& marks) {
    try {
        engraving::EngravingFile capture{KXP::FileDescriptor(dup(file.get()))};
        const engraving::Mp4Layout layout = engraving::ReadLayout(capture.source(), capture.size());
        capture.CarryOut(engraving::PlanEngraving(capture.source(), layout, BlockOf(marks)));
    } catch (const engraving::EngravingError& error) {
        throw ImportError(error.what());
    }
}

bool IsMediaEnding(std::string ending) {
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    constexpr std::string_view kEndings[] = {".apng", ".flv",  ".jfif", ".jpe", ".jpeg",
                                             ".jpg",  ".m2ts", ".m4v",  ".mkv", ".mov",
                                             ".mp4",  ".mts",  ".png",  ".ts",  ".webm"};
    return std::find(std::begin(kEndings), std::end(kEndings), ending) != std::end(kEndings);
}

bool IsOwn(const std::string& path) {
    media::SniffResult result;
    return media::SniffFile(path, result) >= 0 && result.isOwn;
}

}  // namespace

CaptureMarks Importer::MarksOf(const std::string& source) const {
    return {options_.game.empty() ? GameOf(source) : options_.game, options_.highlight};
}

std::string Importer::PlaceOf(const ImportSource& source) const {
    const fs::path path(source.path());
    std::string name = path.filename().string();
    // A name without an ending may have a dot in its date.
    if (IsMediaEnding(path.extension().string())) name = path.stem().string();
    name += ExtensionOf(source.kind());
    return (fs::path(options_.gallery) / MarksOf(source.path()).game / name).string();
}

std::string Importer::Check(const std::string& path) const {
    const ImportSource source(path);
    (void)source.Plan(MarksOf(path));
    return PlaceOf(source);
}

std::string Importer::FreePlace(const std::string& place) const {
    const fs::path path(place);
    struct stat status {};
    std::string free = place;
    for (int number = 2; lstat(free.c_str(), &status) == 0 && number < kMostPlaces; ++number)
        free = (path.parent_path() / (path.stem().string() + " (" + std::to_string(number) + ")")).string() +
               path.extension().string();
    return free;
}

// A kill after the copy got its name and before it was noted.
bool Importer::IsSameAs(const std::string& place, const std::string& picture) const {
    try {
        return ImportSource(place).Digest() == picture;
    } catch (const ImportError&) {
        return false;
    }
}

Importer::Result Importer::Import(const std::string& path) {
    const ImportSource source(path);
    if (ledger_.KnowsSource(path, source.size(), source.time())) return {Outcome::kKnown, ""};
    const CaptureMarks marks = MarksOf(path);
    const Splice splice = source.Plan(marks);
    const std::string wanted = PlaceOf(source);
    const std::string place = FreePlace(wanted);
    std::error_code error;
    fs::create_directories(fs::path(place).parent_path(), error);
    if (error) throw ImportError("cannot be written: " + error.message());

    KXP::NewFile copy(place, kMode);
    if (!copy.IsOpen()) FailToWrite();
    const std::string picture = Write(source, splice, copy.descriptor());
    if (ledger_.KnowsPicture(picture)) return {Outcome::kKnown, ""};
    const ImportedFile imported{picture, path, source.size(), source.time(), place};
    if (place != wanted && IsSameAs(wanted, picture)) {
        ledger_.Add(imported);
        return {Outcome::kKnown, ""};
    }
    if (source.kind() == SourceKind::kMp4) Engrave(copy.descriptor(), marks);
    SetTime(copy.descriptor(), options_.time.value_or(source.time()));
    if (!source.IsUnchanged()) throw ImportError("changes while it is read");
    if (!copy.PutNew()) FailToWrite();
    if (!IsOwn(place)) {
        (void)unlink(place.c_str());
        throw ImportError("does not become a capture");
    }
    ledger_.Add(imported);
    pending_.push_back(imported);
    return {Outcome::kImported, place};
}

std::vector<std::string> Importer::Commit() {
    std::vector<std::string> kept;
    if (pending_.empty()) return kept;
    const KXP::FileDescriptor gallery = KXP::OpenFolder(options_.gallery);
    if (!gallery.IsOpen() || !KXP::Platform::MakeVolumeDurable(gallery.get()))
        throw std::runtime_error(options_.gallery + ": " + std::strerror(errno));
    ledger_.Save();
    for (const ImportedFile& file : std::exchange(pending_, {})) {
        if (!options_.move) continue;
        if (!IsSameAs(file.path, file.picture) || unlink(file.source.c_str()) != 0)
            kept.push_back(file.source);
    }
    return kept;
}

}  // namespace importing
