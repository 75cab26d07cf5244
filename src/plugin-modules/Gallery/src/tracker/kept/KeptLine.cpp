#include "plugin-modules/Gallery/src/tracker/kept/KeptLine.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "base/Path.h"
#include "base/Text.h"
#include "common/json/JsonParse.h"
#include "common/json/StackDocument.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptFields.h"

namespace {

using KXP::JsonWriter;
using KXP::Value;

constexpr const char* kPath = "path";
constexpr const char* kSize = "size";
constexpr const char* kModified = "modifiedNs";
constexpr const char* kInode = "inode";
constexpr const char* kGone = "gone";
constexpr const char* kCaptions = "meme";
constexpr const char* kHighlight = "highlight";

void Write(const std::string& text, JsonWriter& writer) {
    const std::string valid = KXP::IsValidUtf8(text) ? std::string() : KXP::ToValidUtf8(text);
    const std::string& written = valid.empty() ? text : valid;
    writer.String(written.data(), static_cast<rapidjson::SizeType>(written.size()));
}
void Write(int32_t number, JsonWriter& writer) {
    writer.Int(number);
}

template <size_t count>
void Write(const KeptField (&fields)[count], const KeptFacts& facts, JsonWriter& writer) {
    writer.StartObject();
    for (const KeptField& field : fields) {
        writer.Key(field.key.data(), static_cast<rapidjson::SizeType>(field.key.size()));
        std::visit([&](auto member) { Write(facts.*member.fact, writer); }, field.member);
    }
    writer.EndObject();
}

// Each leaves `target` as it is when the value has another type.
bool Read(const Value& value, std::string& target) {
    if (!value.IsString()) return false;
    target.assign(value.GetString(), value.GetStringLength());
    return true;
}
bool Read(const Value& value, int32_t& target) {
    if (!value.IsInt()) return false;
    target = value.GetInt();
    return true;
}
bool Read(const Value& value, int64_t& target) {
    if (!value.IsInt64()) return false;
    target = value.GetInt64();
    return true;
}
bool Read(const Value& value, uint64_t& target) {
    if (!value.IsUint64()) return false;
    target = value.GetUint64();
    return true;
}

// Each returns false for a member of another type. Members that the line does not have keep their defaults;
// those that are not known are passed over.
template <size_t count>
bool Read(const Value& value, const KeptField (&fields)[count], KeptFacts& facts) {
    if (!value.IsObject()) return false;
    for (const auto& member : value.GetObject()) {
        const std::string_view key(member.name.GetString(), member.name.GetStringLength());
        const auto* field = std::find_if(std::begin(fields), std::end(fields),
                                         [&](const KeptField& known) { return known.key == key; });
        if (field == std::end(fields)) continue;
        if (!std::visit([&](auto known) { return Read(member.value, facts.*known.fact); }, field->member))
            return false;
    }
    return true;
}

bool ReadMember(std::string_view key, const Value& value, KeptCapture& capture) {
    if (key == kPath) return Read(value, capture.path);
    if (key == kSize) return Read(value, capture.stamp.size);
    if (key == kModified) return Read(value, capture.stamp.modifiedNs);
    if (key == kInode) return Read(value, capture.stamp.inode);
    if (key == kGone) return Read(value, capture.goneSince);
    if (key == kCaptions) return Read(value, kept_fields::kCaptions, capture.facts);
    if (key != kHighlight) return true;
    capture.facts.told = true;
    return Read(value, kept_fields::kHighlight, capture.facts);
}

}  // namespace

std::string WriteKeptLine(const KeptCapture& capture) {
    KXP::JsonBuffer buffer;
    JsonWriter writer(buffer);
    writer.StartObject();
    writer.Key(kPath);
    Write(capture.path, writer);
    writer.Key(kSize);
    writer.Uint64(capture.stamp.size);
    writer.Key(kModified);
    writer.Int64(capture.stamp.modifiedNs);
    writer.Key(kInode);
    writer.Uint64(capture.stamp.inode);
    if (capture.goneSince != 0) {
        writer.Key(kGone);
        writer.Int64(capture.goneSince);
    }
    if (!capture.facts.topBarText.empty() || !capture.facts.bottomBarText.empty()) {
        writer.Key(kCaptions);
        Write(kept_fields::kCaptions, capture.facts, writer);
    }
    if (capture.facts.told) {
        writer.Key(kHighlight);
        Write(kept_fields::kHighlight, capture.facts, writer);
    }
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
}

bool ReadKeptLine(char* line, size_t size, KeptCapture& capture) {
    KXP::StackDocument document;
    const Value& object = *document;
    if (KXP::ParseJSONInPlace(line, size, *document).IsError() || !object.IsObject()) return false;
    for (const auto& member : object.GetObject()) {
        const std::string_view key(member.name.GetString(), member.name.GetStringLength());
        if (!ReadMember(key, member.value, capture)) return false;
    }
    return !capture.path.empty() && KXP::IsUsablePath(capture.path);
}
