#include "common/json/JSONFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <numeric>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/json/JsonParse.h"

namespace KXP {
namespace {

constexpr unsigned kNewFileMode = 0666;  // less the umask, as the C library's fopen has it

// One write after the other may have been stopped; far more texts than that are none of ours.
constexpr int kMaxTextsTried = 16;

// Whether the text is UTF-8: a JSON text of other encodings has zero bytes among its first four, whether or
// not a byte-order mark comes first.
bool IsUtf8(std::string_view text) {
    return text.size() < 4 || std::find(text.begin(), text.begin() + 4, '\0') == text.begin() + 4;
}

// The text in UTF-8; false when it is malformed. At least four bytes, which telling the encoding takes.
bool ToUtf8(std::string_view text, std::string& utf8) {
    rapidjson::MemoryStream bytes(text.data(), text.size());
    rapidjson::AutoUTFInputStream<unsigned, rapidjson::MemoryStream> in(bytes);
    JsonBuffer out;
    while (in.Peek() != 0) {
        if (!rapidjson::Transcoder<rapidjson::AutoUTF<unsigned>, rapidjson::UTF8<>>::Transcode(in, out))
            return false;
    }
    utf8.assign(out.GetString(), out.GetSize());
    return true;
}

// What follows the zero byte when only the end of a text is rewritten: "@", how much of the text stays, "
// ", the size of the new end, a line feed, and that end. No JSON text begins like that.
constexpr char kTailMark = '@';

std::string TailHead(size_t keep, size_t size) {
    return kTailMark + std::to_string(keep) + ' ' + std::to_string(size) + '\n';
}

bool TakeNumber(std::string_view& text, char end, size_t& number) {
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const auto digits = static_cast<size_t>(stop - text.data());
    if (error != std::errc() || digits >= text.size() || *stop != end) return false;
    text.remove_prefix(digits + 1);
    return true;
}

// Whether `text`, which begins at `start` of the file, is a whole end for the text at the file's beginning.
// Sets `keep` to the size of the part of that text that stays, and leaves only the end in `text`.
bool TakeTail(std::string_view& text, size_t start, size_t& keep) {
    if (text.empty() || text.front() != kTailMark) return false;
    std::string_view rest = text.substr(1);
    size_t size = 0;
    if (!TakeNumber(rest, ' ', keep) || !TakeNumber(rest, '\n', size)) return false;
    if (size != rest.size() || keep >= start || size >= start - keep) return false;
    text = rest;
    return true;
}

static_assert(FileBytes::kSlack >= kJsonTextSlack);

bool ParseWithTail(FileBytes& file, size_t keep, std::string_view tail, Document& document,
                   const ElementReader* elements) {
    const size_t size = keep + tail.size();
    std::memmove(&file.bytes[keep], tail.data(), tail.size());
    std::memset(&file.bytes[size], 0, kJsonTextSlack);
    return !ParseJSONInPlace(file.bytes.get(), size, document, elements).IsError();
}

// Parses the last complete text of the file. There is more than one, with zero bytes between them, when a
// write was stopped half-way. Each try overwrites no text but its own.
bool ParseLastText(FileBytes& file, Document& document, const ElementReader* elements) {
    std::string_view text = file.view();
    // Searched from the front first, which is faster through a file without one.
    if (text.find('\0') == std::string_view::npos)
        return !ParseJSONInPlace(file.bytes.get(), text.size(), document, elements).IsError();
    for (int i = 0; i < kMaxTextsTried; ++i) {
        const size_t end = text.find_last_not_of('\0');
        text = text.substr(0, end + 1);
        const size_t start = text.rfind('\0') + 1;
        std::string_view tail = text.substr(start);
        size_t keep = 0;
        if (TakeTail(tail, start, keep)) return ParseWithTail(file, keep, tail, document, elements);
        const bool parsed =
            !ParseJSONInPlace(&file.bytes[start], text.size() - start, document, elements).IsError();
        if (start == 0) return parsed;
        // A write leaves an object; anything else after a zero byte is not ours.
        if (parsed && document.IsObject()) return true;
        text = text.substr(0, start);
    }
    return false;
}

bool ParseAnyEncoding(FileBytes& text, Document& document, const ElementReader* elements) {
    if (IsUtf8(text.view())) return ParseLastText(text, document, elements);
    std::string utf8;
    return ToUtf8(text.view(), utf8) && !ParseJSON(utf8, document, elements).IsError();
}

constexpr size_t kSpacesAtOnce = size_t{1} << 16;

bool WriteSpaces(const FileDescriptor& file, size_t from, size_t to) {
    const std::string spaces(std::min(to - from, kSpacesAtOnce), ' ');
    for (size_t size = 0; from < to; from += size) {
        size = std::min(spaces.size(), to - from);
        if (!WriteFullyAt(file, spaces.data(), size, from)) return false;
    }
    return true;
}

size_t SizeOf(const JSONFile::Parts& text) {
    const auto add = [](size_t size, std::string_view part) { return size + part.size(); };
    return std::accumulate(text.begin(), text.end(), size_t{0}, add);
}

// Puts `text` after the first `keep` bytes of the old text, which has `oldSize` bytes. A kill may cut one
// large write, so the new text is first written whole after the old one and a zero byte, where
// ReadAndParseJSON finds it as soon as it is complete. Stops, with ECANCELED, where `isStopped` says so.
template <typename IsStopped>
bool OverwriteInPlace(const FileDescriptor& file, uint64_t oldSize, size_t keep, const JSONFile::Parts& text,
                      const IsStopped& isStopped) {
    const auto goOn = [&] {
        if (!isStopped()) return true;
        errno = ECANCELED;
        return false;
    };
    // A file too large to be read as JSON holds no old text to save.
    if (oldSize > kMaxJsonFileBytes) {
        if (ftruncate(file.get(), 0) != 0) return false;
        oldSize = 0;
    }
    if (keep > oldSize) {
        errno = EINVAL;
        return false;
    }
    const size_t size = SizeOf(text);
    const size_t end = keep + size;
    const size_t place = std::max<size_t>(end, oldSize);
    const std::string head = keep == 0 ? std::string() : TailHead(keep, size);
    JSONFile::Parts copy{head};
    copy.insert(copy.end(), text.begin(), text.end());
    const size_t wholeSize = place + 1 + head.size() + size;
    if (!goOn() || !Platform::ReserveFileSpace(file.get(), static_cast<int64_t>(wholeSize)) || !goOn() ||
        !WriteFullyAt(file, copy, place + 1)) {
        if (goOn()) TakeBack(file, oldSize);
        return false;
    }
    return goOn() && WriteFullyAt(file, text, keep) && goOn() && WriteSpaces(file, end, place) && goOn() &&
           ftruncate(file.get(), static_cast<off_t>(end)) == 0;
}

}  // namespace

JSONFile::JSONFile(std::vector<std::string> parts, const std::string& extraFolder, const std::string& name) {
    if (!extraFolder.empty()) parts.push_back(extraFolder);
    directory_ = CreateDirectoryPath(parts);
    path_ = directory_ + "/" + name;
}

void JSONFile::Init(const std::string& path) {
    directory_ = GetDirName(path);
    path_ = path;
}

RetVal JSONFile::OpenFile(FILE*& file, bool read) const {
    HeldLog log;
    const char* mode = read ? "rb" : "wb";
    FileDescriptor opened = read ? OpenForRead(path_) : OpenForWrite(path_, kNewFileMode);
    if (!opened.IsOpen() || (!read && ftruncate(opened.get(), 0) != 0)) return OpenFailed(mode, log);
    file = fdopen(opened.get(), mode);
    if (!file) return OpenFailed(mode, log);
    opened.Release();
    return {};
}

RetVal JSONFile::OpenFailed(const char* mode, HeldLog& log) const {
    const int error = errno;
    log.Add(LogMilestone, "Failed to open " + GetFileNameFromPath(path_) + " for " + mode +
                              " err:" + std::to_string(error));
    return {Code::kNotFound, "Failed to open file", 0};
}

RetVal JSONFile::ReadAndParseJSON(Document& document, const ElementReader* elements) const {
    HeldLog log;
    return ReadAndParseJSON(document, log, elements);
}

RetVal JSONFile::ReadAndParseJSON(Document& document, HeldLog& log, const ElementReader* elements) const {
    const FileDescriptor file = OpenForRead(path_);
    if (!file.IsOpen()) return NotFound(log);
    if (elements && elements->readDirectly && elements->readDirectly(file, document)) return {};
    FileBytes text;
    // One that cannot be read is treated as an empty one.
    if (!ReadWhole(file, kMaxJsonFileBytes, text)) text = {};
    return Parse(text, document, elements, log);
}

RetVal JSONFile::ReadUnlessPassing(Document& document, HeldLog& log) const {
    FileBytes text;
    const FileDescriptor file = OpenForRead(path_);
    if (!file.IsOpen() || !ReadWhole(file, kMaxJsonFileBytes, text)) {
        const int error = errno;
        if (IsPassingError(error)) return {Code::kFailure, std::generic_category().message(error), error};
        if (!file.IsOpen()) return NotFound(log);
        text = {};
    }
    return Parse(text, document, nullptr, log);
}

RetVal JSONFile::NotFound(HeldLog& log) const {
    log.Add(LogMilestone, "Config file " + GetFileNameFromPath(path_) + " not found!!");
    return {Code::kNotFound, "Config file not found", 0};
}

RetVal JSONFile::Parse(FileBytes& text, Document& document, const ElementReader* elements,
                       HeldLog& log) const {
    if (!text.bytes || !ParseAnyEncoding(text, document, elements)) {
        log.Add(LogFailure, "Error parsing JSON document " + path_);
        return {Code::kJsonField, "Error parsing JSON document", 0};
    }
    if (!document.IsObject()) {
        log.Add(LogFailure, "Document at " + path_ + " has no root object");
        return {Code::kInvalidData, "Document has no root object", 0};
    }
    return {};
}

RetVal JSONFile::WriteJSON(const Document& document) const {
    HeldLog log;
    return WriteJSON(document, log);
}

RetVal JSONFile::WriteJSON(const Document& document, HeldLog& log) const {
    return WriteJSON([&](PrettyJsonWriter& writer) { document.Accept(writer); }, log);
}

RetVal JSONFile::WriteJSON(const std::function<void(PrettyJsonWriter&)>& write, HeldLog& log) const {
    JsonBuffer buffer;
    PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    write(writer);
    return WriteText({buffer.GetString(), buffer.GetSize()}, log);
}

RetVal JSONFile::WriteText(std::string_view text, HeldLog& log) const {
    return WriteTail(0, Parts{text}, log);
}

RetVal JSONFile::WriteTail(size_t keep, std::string_view tail, HeldLog& log) const {
    return WriteTail(keep, Parts{tail}, log);
}

RetVal JSONFile::WriteTail(size_t keep, const Parts& tail, HeldLog& log) const {
    const bool before = stopWrites_ && *stopWrites_;
    const auto isStopped = [&] { return !before && stopWrites_ && *stopWrites_; };
    uint64_t size = 0;
    FileDescriptor file = OpenForWrite(path_, kNewFileMode, &size);
    if (!file.IsOpen()) return OpenFailed("wb", log);
    if (OverwriteInPlace(file, size, keep, tail, isStopped) && file.Close()) return {};
    const int error = errno;
    log.Add(LogFailure, "Failed to write " + path_ + " err:" + std::to_string(error));
    return {Code::kFailure, "Failed to write file", 0};
}

bool JSONFile::Stamp::operator==(const Stamp& other) const {
    const auto all = [](const Stamp& s) {
        return std::tie(s.device, s.inode, s.size, s.seconds, s.nanoseconds);
    };
    return all(*this) == all(other);
}

bool JSONFile::ReadStamp(Stamp& stamp) const {
    struct stat status {};
    if (stat(path_.c_str(), &status) != 0) return false;
    const timespec time = Platform::ModifiedTime(status);
    stamp = {static_cast<uint64_t>(status.st_dev), status.st_ino, static_cast<uint64_t>(status.st_size),
             time.tv_sec, time.tv_nsec};
    return true;
}

RetVal JSONFile::RemoveFile() const {
    HeldLog log;
    return RemoveFile(log);
}

RetVal JSONFile::RemoveFile(HeldLog& log) const {
    RetVal result;
    result.code = FileDelete(path_, true, log);
    DirectoryRemove(directory_);
    return result;
}

}  // namespace KXP
