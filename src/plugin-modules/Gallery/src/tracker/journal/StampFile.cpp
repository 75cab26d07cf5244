#include "plugin-modules/Gallery/src/tracker/journal/StampFile.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "CobalixUtil.h"
#include "base/FileDescriptor.h"
#include "base/ReadWrite.h"
#include "common/files/FileUtil.h"
#include "common/text/TextUtil.h"

namespace {

using KXP::FileDescriptor;
using TrackerStamp = KXP::JSONFile::Stamp;

constexpr std::string_view kMagic = "UGCSTAMP";
constexpr uint64_t kVersion = 1;
constexpr size_t kWord = sizeof(uint64_t);
constexpr size_t kHeaderSize = 7 * kWord;
constexpr size_t kEntrySize = 3 * kWord;
// More than fit beside the largest tracker file that is read.
constexpr size_t kMaxBytes = size_t{256} << 20;
constexpr unsigned kMode = 0600;

void Put(std::string& bytes, uint64_t word) {
    for (size_t i = 0; i < kWord; ++i)
        bytes += static_cast<char>(word >> (8 * i) & 0xFF);
}

uint64_t WordAt(std::string_view bytes, size_t index) {
    uint64_t word = 0;
    for (size_t i = kWord; i-- > 0;)
        word = word << 8 | static_cast<unsigned char>(bytes[index * kWord + i]);
    return word;
}

std::string HeaderFor(const TrackerStamp& of, uint64_t count) {
    std::string header(kMagic);
    for (const uint64_t word : {kVersion, of.size, static_cast<uint64_t>(of.seconds),
                                static_cast<uint64_t>(of.nanoseconds), of.inode, count})
        Put(header, word);
    return header;
}

std::string EntriesFor(const std::vector<FileStamp>& stamps) {
    std::string entries;
    entries.reserve(stamps.size() * kEntrySize);
    for (const FileStamp& stamp : stamps) {
        Put(entries, stamp.size);
        Put(entries, static_cast<uint64_t>(stamp.modifiedNs));
        Put(entries, stamp.inode);
    }
    return entries;
}

}  // namespace

std::string StampFile::PathFor(const std::string& trackerFile) {
    constexpr std::string_view ending = ".json";
    const bool known = KXP::StringEndsWith(trackerFile, ending);
    return trackerFile.substr(0, trackerFile.size() - (known ? ending.size() : 0)) + ".stamps";
}

void StampFile::Write(const TrackerStamp& of, size_t firstIndex, const std::vector<FileStamp>& stamps) {
    const bool written = WriteEntries(of, firstIndex, EntriesFor(stamps));
    if (!written && !failed_)
        KXP_LOG(KXP::LogFailure, "Failed to write %s: %s", path_.c_str(),
                std::generic_category().message(errno).c_str());
    failed_ = !written;
}

// The header comes last: until then it names an older tracker file. False with errno set.
bool StampFile::WriteEntries(const TrackerStamp& of, size_t firstIndex, std::string_view entries) const {
    uint64_t size = 0;
    FileDescriptor file =
        firstIndex == 0 ? KXP::OpenForWrite(path_, kMode) : KXP::OpenForUpdate(path_, &size);
    if (!file.IsOpen()) return false;
    const uint64_t begin = kHeaderSize + firstIndex * kEntrySize;
    const uint64_t end = begin + entries.size();
    if (firstIndex > 0 && size != begin) {
        errno = ESTALE;  // somebody else's, or emptied after a failure
    } else {
        const std::string header = HeaderFor(of, firstIndex + entries.size() / kEntrySize);
        if (KXP::WriteFullyAt(file, entries.data(), entries.size(), begin) &&
            (firstIndex > 0 || ftruncate(file.get(), static_cast<off_t>(end)) == 0) &&
            KXP::WriteFullyAt(file, header.data(), header.size(), 0) && file.Close())
            return true;
    }
    if (file.IsOpen()) KXP::TakeBack(file, 0);
    return false;
}

std::optional<std::vector<FileStamp>> StampFile::Read(const TrackerStamp& of) const {
    const FileDescriptor file = KXP::OpenForRead(path_);
    KXP::FileBytes content;
    if (!file.IsOpen() || !KXP::ReadWhole(file, kMaxBytes, content)) return std::nullopt;
    std::string_view bytes = content.view();
    if (bytes.size() < kHeaderSize || (bytes.size() - kHeaderSize) % kEntrySize != 0) return std::nullopt;
    const size_t count = (bytes.size() - kHeaderSize) / kEntrySize;
    if (bytes.substr(0, kHeaderSize) != HeaderFor(of, count)) return std::nullopt;
    bytes.remove_prefix(kHeaderSize);
    std::vector<FileStamp> stamps;
    stamps.reserve(count);
    for (size_t i = 0; i < 3 * count; i += 3)
        stamps.push_back(
            {WordAt(bytes, i), static_cast<int64_t>(WordAt(bytes, i + 1)), WordAt(bytes, i + 2)});
    return stamps;
}

void StampFile::MoveTo(const std::string& trackerFile) {
    const std::string old = std::exchange(path_, PathFor(trackerFile));
    // If it fails, the header of what is there does not match.
    if (KXP::FileExists(old)) (void)KXP::FileMove(old, path_);
}

void StampFile::Remove() const {
    if (KXP::FileExists(path_)) (void)KXP::FileDelete(path_, true);
}
