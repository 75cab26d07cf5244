#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

#include <algorithm>
#include <string_view>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/text/TextUtil.h"
#include "plugin-modules/Gallery/src/tracker/record/OwnLayout.h"
#include "plugin-modules/Gallery/src/tracker/record/RecordFields.h"

namespace {

using KXP::PrettyJsonWriter;
using KXP::Value;

struct InfoNumber {
    const char* key;
    std::variant<int32_t TrackerInfo::*, uint32_t TrackerInfo::*> member;
};

constexpr InfoNumber kInfoNumbers[] = {
    {"lastUGCIdUsed", &TrackerInfo::lastUGCIdUsed},
    {"version", &TrackerInfo::version},
    {"folderCRC", &TrackerInfo::folderCRC},
};

std::string_view ViewOf(const Value& text) {
    return {text.GetString(), text.GetStringLength()};
}

void ReadFields(const Value& object, RecordFields fields, TrackedUGC& record, TextPool& texts);

// Sets one member of a record when the value has its type.
struct ReadMember {
    TrackedUGC& record;
    const Value& value;
    TextPool& texts;

    void operator()(std::string TrackedUGC::*text) const {
        if (value.IsString()) record.*text = ViewOf(value);
    }
    // Few captures have the same date.
    void operator()(SharedText TrackedUGC::*text) const {
        if (!value.IsString()) return;
        record.*text = text == &TrackedUGC::date ? SharedText(ViewOf(value)) : texts.Share(ViewOf(value));
    }
    void operator()(int32_t TrackedUGC::*number) const {
        if (value.IsInt()) record.*number = value.GetInt();
    }
    void operator()(uint32_t TrackedUGC::*number) const {
        if (value.IsUint()) record.*number = value.GetUint();
    }
    // Only the low 32 bits, because numbers of the catalogue have no more.
    void operator()(uint64_t TrackedUGC::*number) const {
        if (value.IsUint64()) record.*number = static_cast<uint32_t>(value.GetUint64());
    }
    void operator()(RecordFields fields) const { ReadFields(value, fields, record, texts); }
};

// Starts each search at the field after the last one: our own files hold the fields in this order, so one or
// two comparisons find it. Of members with the same name the first counts.
void ReadFields(const Value& object, RecordFields fields, TrackedUGC& record, TextPool& texts) {
    if (!object.IsObject()) return;
    uint32_t seen = 0;
    size_t at = 0;
    for (const auto& member : object.GetObject()) {
        const std::string_view key = ViewOf(member.name);
        size_t tried = 0;
        while (tried < fields.count && fields[at].key != key) {
            at = at + 1 == fields.count ? 0 : at + 1;
            ++tried;
        }
        if (tried == fields.count) continue;
        if ((seen >> at & 1u) == 0) std::visit(ReadMember{record, member.value, texts}, fields[at].member);
        seen |= 1u << at;
        at = at + 1 == fields.count ? 0 : at + 1;
    }
}

// Skips elements that are not 32-bit integers.
std::vector<int> ReadIds(const Value& array) {
    std::vector<int> ids;
    for (const Value& id : array.GetArray()) {
        if (id.IsInt()) ids.push_back(id.GetInt());
    }
    return ids;
}

TrackedUGCGame ReadGame(const Value& element, std::string name) {
    TrackedUGCGame game;
    game.appName = std::move(name);
    game.recents = ReadIds(KXP::JSONGetArrayOrEmpty(element, "recents"));
    for (const auto& group : KXP::JSONGetObjectOrEmpty(element, "groups").GetObject()) {
        if (group.value.IsArray())
            game.groups.try_emplace(std::string(ViewOf(group.name)), ReadIds(group.value));
    }
    return game;
}

void WriteKey(std::string_view key, PrettyJsonWriter& writer) {
    writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
}

std::string_view AsUtf8(std::string_view text, std::string& room) {
    if (KXP::IsValidUtf8(text)) return text;
    return room = KXP::ToValidUtf8(text);
}

void WriteText(std::string_view text, PrettyJsonWriter& writer) {
    std::string room;
    const std::string_view valid = AsUtf8(text, room);
    writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
}

struct WriteMember {
    const TrackedUGC& record;
    unsigned kinds;
    PrettyJsonWriter& writer;

    void operator()(std::string TrackedUGC::*text) const { WriteText(record.*text, writer); }
    void operator()(SharedText TrackedUGC::*text) const { WriteText(record.*text, writer); }
    void operator()(int32_t TrackedUGC::*number) const { writer.Int(record.*number); }
    void operator()(uint32_t TrackedUGC::*number) const { writer.Uint(record.*number); }
    void operator()(uint64_t TrackedUGC::*number) const { writer.Uint64(record.*number); }
    void operator()(RecordFields fields) const {
        writer.StartObject();
        for (const RecordField& field : fields) {
            if ((field.writtenFor & kinds) == 0) continue;
            WriteKey(field.key, writer);
            std::visit(*this, field.member);
        }
        writer.EndObject();
    }
};

void WriteIds(const std::vector<int>& ids, PrettyJsonWriter& writer) {
    writer.StartArray();
    for (const int id : ids)
        writer.Int(id);
    writer.EndArray();
}

void WriteGroups(const TrackedUGCGame& game, PrettyJsonWriter& writer) {
    const auto isEmpty = [](const auto& group) { return group.second.empty(); };
    if (std::all_of(game.groups.begin(), game.groups.end(), isEmpty)) return;
    writer.Key("groups");
    writer.StartObject();
    std::string room;
    for (const auto& [name, ids] : game.groups) {
        if (ids.empty()) continue;
        WriteKey(AsUtf8(name, room), writer);
        WriteIds(ids, writer);
    }
    writer.EndObject();
}

void WriteGame(const std::string& name, const TrackedUGCGame& game, PrettyJsonWriter& writer) {
    writer.StartObject();
    writer.Key("appName");
    WriteText(name, writer);
    if (!game.recents.empty()) {
        writer.Key("recents");
        WriteIds(game.recents, writer);
    }
    WriteGroups(game, writer);
    writer.EndObject();
}

void WriteInfo(const TrackerInfo& info, PrettyJsonWriter& writer) {
    writer.StartObject();
    for (const InfoNumber& number : kInfoNumbers) {
        writer.Key(number.key);
        std::visit([&](auto member) { writer.Int64(info.*member); }, number.member);
    }
    writer.EndObject();
}

template <typename Records>
void WriteHead(const Records& records, PrettyJsonWriter& writer) {
    writer.StartObject();
    writer.Key("UGC");
    writer.StartArray();
    for (const auto& record : records)
        WriteMember{*record, KindsOf(*record), writer}(kRecordFileFields);
}

template <typename Records>
void WriteTracker(const Records& records, const TrackedUGCGames& games, const TrackerInfo& info,
                  PrettyJsonWriter& writer) {
    WriteHead(records, writer);
    writer.EndArray();
    writer.Key("apps");
    writer.StartArray();
    for (const auto& [name, game] : games)
        WriteGame(name, game, writer);
    writer.EndArray();
    writer.Key("info");
    WriteInfo(info, writer);
    writer.EndObject();
}

// What `write` writes, without as many characters at both ends.
template <typename Write>
std::string Inner(Write write, size_t before, size_t after) {
    KXP::JsonBuffer buffer;
    PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    write(writer);
    return {buffer.GetString() + before, buffer.GetSize() - before - after};
}

}  // namespace

KXP::ElementReader ParseUGCFromJSON(std::vector<NewUGC>& ugc) {
    const auto begin = [&ugc] {
        KXP_LOG(KXP::LogMilestone, "ParseUGCFromJSON");
        ugc.clear();
    };
    // An element that is not an object also becomes a record, with defaults; it is removed when the next list
    // finds that it has no file.
    const auto read = [&ugc, texts = std::make_shared<TextPool>()](const Value& element) {
        TrackedUGC& record = *ugc.emplace_back(std::make_shared<TrackedUGC>());
        record.id = -1;
        ReadFields(element, kRecordFileFields, record, *texts);
    };
    const auto readDirectly = [&ugc](const KXP::FileDescriptor& file, KXP::Document& rest) {
        if (!ReadOwnLayout(file, ugc, rest)) return false;
        KXP_LOG(KXP::LogMilestone, "ParseUGCFromJSON");
        return true;
    };
    return {"UGC", begin, read, readDirectly};
}

KXP::RetVal ParseUGCGamesFromJSON(const Value& root, TrackedUGCGames& games) {
    games.clear();
    if (!root.IsObject()) {
        KXP_LOG(KXP::LogFailure, "ParseUGCGamesFromJSON::Could not parse tracker");
        return {KXP::Code::kInvalidData, "Could not parse tracker", 0};
    }
    for (const Value& element : KXP::JSONGetArrayOrEmpty(root, "apps").GetArray()) {
        const Value* name = element.IsObject() ? KXP::jsonFindMember(element, "appName", false) : nullptr;
        if (!name || !name->IsString()) {
            KXP_LOG(KXP::LogFailure, "ParseUGCGamesFromJSON::Not using corrupt tracked highlight game");
            continue;
        }
        std::string key(ViewOf(*name));
        games[key] = ReadGame(element, key);
    }
    return {};
}

void ParseTrackerInfoFromJSON(const Value& root, TrackerInfo& info) {
    const Value& object = KXP::JSONGetObjectOrEmpty(root, "info");
    for (const InfoNumber& number : kInfoNumbers) {
        std::visit(
            [&](auto member) {
                auto& target = info.*member;
                target = KXP::jsonGetValueOrDefault(object, number.key, target);
            },
            number.member);
    }
}

void WriteTrackerJSON(const TrackerContent& content, PrettyJsonWriter& writer) {
    WriteTracker(content.ugc, content.games, content.info, writer);
}

void WriteTrackerJSON(const std::vector<std::shared_ptr<const TrackedUGC>>& ugc, const TrackedUGCGames& games,
                      const TrackerInfo& info, PrettyJsonWriter& writer) {
    WriteTracker(ugc, games, info, writer);
}

void WriteRecords(const std::vector<std::shared_ptr<const TrackedUGC>>& ugc, PrettyJsonWriter& writer) {
    WriteHead(ugc, writer);
}

std::string GameText(const std::string& name, const TrackedUGCGame& game) {
    // Two arrays around it give it the depth that it has in the file.
    const auto write = [&](PrettyJsonWriter& writer) {
        writer.StartArray();
        writer.StartArray();
        WriteGame(name, game, writer);
        writer.EndArray();
        writer.EndArray();
    };
    return Inner(write, std::string_view("[\n\t[").size(), std::string_view("\n\t]\n]").size());
}

std::string InfoText(const TrackerInfo& info) {
    const auto write = [&](PrettyJsonWriter& writer) {
        writer.StartObject();
        writer.Key("info");
        WriteInfo(info, writer);
        writer.EndObject();
    };
    return "]," + Inner(write, std::string_view("{").size(), 0);
}
