#include "plugin-modules/Gallery/src/editing/EditNote.h"

#include <exception>
#include <filesystem>

#include "base/Path.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"

namespace {

using KXP::Document;
using KXP::Value;

std::string LineOf(const Value& value) {
    return KXP::WriteJSONToString(value) + "\n";
}

Value ValueOf(const FileStamp& stamp, KXP::Allocator& allocator) {
    Value value(rapidjson::kObjectType);
    value.AddMember("size", stamp.size, allocator);
    value.AddMember("time", stamp.modifiedNs, allocator);
    value.AddMember("inode", stamp.inode, allocator);
    return value;
}

FileStamp StampIn(const Value& value) {
    return {KXP::jsonGetValue<unsigned long long>(value, "size"), KXP::jsonGetValue<long long>(value, "time"),
            KXP::jsonGetValue<unsigned long long>(value, "inode")};
}

// Takes the first line off the text. False when it is incomplete or no object.
bool TakeLine(std::string_view& text, Document& document) {
    const size_t end = text.find('\n');
    if (end == std::string_view::npos) return false;
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return !KXP::ParseJSON(line, document).IsError() && document.IsObject();
}

}  // namespace

std::string ClipPath(const std::string& capture, int attempt) {
    size_t dot = capture.rfind('.');
    const size_t slash = capture.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = capture.size();
    return capture.substr(0, dot) + "_tmp" + (attempt == 1 ? "" : std::to_string(attempt)) +
           capture.substr(dot);
}

EditNote::EditNote(const std::string& shareFolder, const std::string& capture, int attempt)
    : note_(shareFolder, kEditNotes) {
    Document line(rapidjson::kObjectType);
    KXP::Allocator& allocator = line.GetAllocator();
    line.AddMember("file", std::filesystem::absolute(capture).string(), allocator);
    line.AddMember("attempt", attempt, allocator);
    line.AddMember("begun", int64_t{std::time(nullptr)}, allocator);
    isOpen_ = note_.IsOpen() && note_.AddDurably(LineOf(line));
}

bool EditNote::SetWhole(const FileStamp& capture, const FileStamp& clip) {
    Document line(rapidjson::kObjectType);
    KXP::Allocator& allocator = line.GetAllocator();
    line.AddMember("capture", ValueOf(capture, allocator), allocator);
    line.AddMember("clip", ValueOf(clip, allocator), allocator);
    return note_.AddDurably(LineOf(line));
}

std::optional<NotedEdit> NotedEdit::Parse(const std::string& text) {
    try {
        NotedEdit edit;
        std::string_view rest = text;
        Document line;
        if (!TakeLine(rest, line)) return {};
        edit.capture = KXP::jsonGetValue<std::string>(line, "file");
        edit.attempt = KXP::jsonGetValue<int>(line, "attempt");
        edit.begun = KXP::jsonGetValue<long long>(line, "begun");
        const bool isPath = !edit.capture.empty() && edit.capture.front() == '/';
        if (!isPath || !KXP::IsUsablePath(edit.capture) || edit.attempt < 1 || edit.attempt > kClipAttempts)
            return {};
        Document whole;
        if (TakeLine(rest, whole))
            edit.whole = {StampIn(KXP::JSONGetObject(whole, "capture")),
                          StampIn(KXP::JSONGetObject(whole, "clip"))};
        return edit;
    } catch (const std::exception&) {
        return {};
    }
}
