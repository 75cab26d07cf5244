#include "importing/ImportLedger.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/FileLock.h"
#include "base/FolderReader.h"
#include "base/Path.h"
#include "base/ReadWrite.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"

namespace importing {
namespace {

// Longer than any line.
constexpr size_t kPiece = size_t{1} << 20;
constexpr unsigned kPrivate = 0600;
constexpr std::string_view kNotes = "Importing_";
// Another import, which looks something up or appends for a moment.
constexpr std::chrono::seconds kLockLimit{10};

[[noreturn]] void Fail(const std::string& path) {
    throw std::runtime_error(path + ": " + std::strerror(errno));
}

bool ReadLine(std::string_view line, ImportedFile& file) {
    KXP::Document document;
    if (KXP::ParseJSON(line, document).IsError() || !document.IsObject()) return false;
    file.picture = KXP::jsonGetValueOrDefault<std::string>(document, "picture", "");
    file.source = KXP::jsonGetValueOrDefault<std::string>(document, "source", "");
    const auto size = document.FindMember("size");
    const auto time = document.FindMember("time");
    if (size == document.MemberEnd() || !size->value.IsUint64()) return false;
    if (time == document.MemberEnd() || !time->value.IsInt64()) return false;
    file.size = size->value.GetUint64();
    file.time = time->value.GetInt64();
    return !file.picture.empty();
}

std::string WriteLine(const ImportedFile& file) {
    KXP::JsonBuffer buffer;
    KXP::JsonWriter writer(buffer);
    const auto put = [&](const char* key, const std::string& text) {
        writer.Key(key);
        writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    };
    writer.StartObject();
    put("picture", file.picture);
    put("path", file.path);
    put("source", file.source);
    writer.Key("size");
    writer.Uint64(file.size);
    writer.Key("time");
    writer.Int64(file.time);
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace

ImportLedger::ImportLedger(std::string path) : path_(std::move(path)) {
    const KXP::FileDescriptor file = KXP::OpenForRead(path_);
    if (!file.IsOpen() && errno == ENOENT) return;
    if (!file.IsOpen()) Fail(path_);
    ReadLines(file, read_);
}

// Moves the position to the end of the last complete line: somebody may be writing the next one.
void ImportLedger::ReadLines(const KXP::FileDescriptor& file, uint64_t& position) {
    struct stat status {};
    if (fstat(file.get(), &status) != 0) Fail(path_);
    const auto size = static_cast<uint64_t>(status.st_size);
    if (size <= position) return;
    // One more than there are, so that a full piece is never the end.
    std::string piece(static_cast<size_t>(std::min<uint64_t>(size - position + 1, kPiece)), '\0');
    for (;;) {
        errno = 0;
        const size_t got = KXP::ReadAt(file, position, piece.data(), piece.size());
        if (got < piece.size() && errno != 0) Fail(path_);
        std::string_view rest(piece.data(), got);
        for (size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
            ImportedFile imported;
            if (ReadLine(rest.substr(0, end), imported)) Know(imported);
            rest.remove_prefix(end + 1);
        }
        // A line that long is none.
        if (got == kPiece && rest.size() == got) rest = {};
        position += got - rest.size();
        if (got < kPiece) return;
    }
}

// Of imports that run: the lock of one that has ended is free, and its note means nothing.
void ImportLedger::ReadNotes() {
    const std::string folder = KXP::ParentOf(path_);
    std::map<std::string, uint64_t> read;
    KXP::FolderReader reader(folder);
    while (reader.Next()) {
        const std::string path = folder + "/" + reader.Name();
        if (std::string_view(reader.Name()).substr(0, kNotes.size()) != kNotes) continue;
        const KXP::FileDescriptor note = KXP::OpenForUpdate(path);
        if (!note.IsOpen()) continue;
        if (flock(note.get(), LOCK_EX | LOCK_NB) == 0)
            (void)unlink(path.c_str());
        else
            ReadLines(note, read[path] = notesRead_[path]);
    }
    notesRead_ = std::move(read);
}

KXP::FileDescriptor ImportLedger::TakeTurn() {
    KXP::FileDescriptor file = KXP::OpenForWrite(path_, kPrivate);
    if (!file.IsOpen() || !KXP::LockWithin(file, LOCK_EX, kLockLimit)) Fail(path_);
    const KXP::FileDescriptor readable = KXP::OpenForRead(path_);
    if (!readable.IsOpen()) Fail(path_);
    ReadLines(readable, read_);
    ReadNotes();
    return file;
}

void ImportLedger::Know(const ImportedFile& file) {
    sources_.emplace(file.source, file.size, file.time);
    pictures_.insert(file.picture);
}

void ImportLedger::Add(const ImportedFile& file) {
    Know(file);
    const std::string line = WriteLine(file);
    unsaved_ += line;
    if (!note_) note_ = std::make_unique<KXP::WorkNote>(KXP::ParentOf(path_), std::string(kNotes));
    (void)note_->Add(line);
}

void ImportLedger::Save() {
    if (unsaved_.empty()) return;
    const KXP::FileDescriptor file = KXP::OpenForWrite(path_, kPrivate);
    if (!file.IsOpen() || !KXP::LockWithin(file, LOCK_EX, kLockLimit)) Fail(path_);
    const off_t end = lseek(file.get(), 0, SEEK_END);
    // A line that a kill has cut off must not take the next one with it.
    const std::string lines = (end > 0 ? "\n" : "") + unsaved_;
    if (end < 0 || !KXP::WriteFullyAt(file, lines.data(), lines.size(), static_cast<uint64_t>(end)) ||
        !KXP::Platform::MakeDurable(file.get())) {
        if (end >= 0) KXP::TakeBack(file, static_cast<uint64_t>(end));
        Fail(path_);
    }
    unsaved_.clear();
    note_.reset();
}

}  // namespace importing
