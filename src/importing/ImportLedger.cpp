#include "importing/ImportLedger.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>

#include <sys/file.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/FileDescriptor.h"
#include "base/FileLock.h"
#include "base/ReadWrite.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"

namespace importing {
namespace {

constexpr size_t kMostBytes = size_t{1} << 30;
constexpr unsigned kPrivate = 0600;
// Another import, which appends for a moment.
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
    KXP::FileBytes content;
    if (!file.IsOpen() || !KXP::ReadWhole(file, kMostBytes, content)) Fail(path_);
    std::string_view rest = content.view();
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        ImportedFile imported;
        if (ReadLine(rest.substr(0, end), imported)) Know(imported);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

void ImportLedger::Know(const ImportedFile& file) {
    sources_.emplace(file.source, file.size, file.time);
    pictures_.insert(file.picture);
}

void ImportLedger::Add(const ImportedFile& file) {
    Know(file);
    unsaved_ += WriteLine(file);
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
}

}  // namespace importing
