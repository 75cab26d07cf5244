#include "gallery-host/output/NotificationText.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string_view>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/Words.h"

namespace host {
namespace {

// Words for people, or nothing when a value is not of the form that is expected.
using Told = std::optional<std::string>;

struct Teller {
    const char* name;
    const char* word;  // begins the line
    Told (*tell)(const KXP::Value& value);
};

constexpr size_t kWordWidth = 9;

const KXP::Value& Member(const KXP::Value& object, const char* key) {
    static const KXP::Value null;
    const KXP::Value* member = Find(object, key);
    return member ? *member : null;
}

std::string Quoted(const std::string& text) {
    return text.empty() ? "" : "\"" + Printable(text) + "\"";
}

// Subject and details; what is empty or unknown is left out.
std::string Describe(std::string line, std::initializer_list<std::string> details) {
    const char* separator = "  ";
    for (const std::string& detail : details) {
        if (detail.empty() || detail == "-") continue;
        line += separator + detail;
        separator = ", ";
    }
    return line;
}

Told Record(const KXP::Value& ugc, const std::string& remark) {
    const std::string path = Text(ugc, "path");
    if (path.empty()) return std::nullopt;
    const std::string type = Text(ugc, "fileType");
    const KXP::Value& size = Member(ugc, "fileSizeKB");
    return Describe(ShortPath(path),
                    {HumanKind(type), HumanDetailOf(type, Text(ugc, "fileSubType")),
                     Quoted(Text(ugc, "highlightName")), Printable(Text(ugc, "duration")),
                     size.IsUint64() && size.GetUint64() > 0 ? HumanSize(size.GetDouble()) : "", remark});
}

Told CaptureSaved(const KXP::Value& saved) {
    const bool unannounced = Member(saved, "unannounced").IsTrue();
    return Record(Member(saved, "ugc"), unannounced ? "unannounced" : "");
}

Told Deleted(const KXP::Value& deleted) {
    return Record(Member(deleted, "ugc"), "");
}

Told CaptureFailed(const KXP::Value& failed) {
    const KXP::Value& code = Member(failed, "errorCode");
    if (!code.IsInt()) return std::nullopt;
    char text[40];
    std::snprintf(text, sizeof text, "highlight, error 0x%08X", static_cast<uint32_t>(code.GetInt()));
    return text;
}

Told HighlightCanceled(const KXP::Value& canceled) {
    const KXP::Value& highlight = Member(canceled, "highlight");
    if (!highlight.IsObject()) return std::nullopt;
    // One that was never captured may have no file.
    const std::string path = Text(highlight, "path");
    return Describe(path.empty() ? "highlight" : ShortPath(path),
                    {Printable(Text(highlight, "type")), Quoted(Text(highlight, "name")),
                     Printable(Text(Member(highlight, "app"), "name"))});
}

Told UpdateStatus(const KXP::Value& update) {
    constexpr struct {
        const char* status;
        const char* words;
    } kStates[] = {
        {"TrackerUpdateNotActive", "(no update)"},      {"TrackerUpdateInProgress", "(update in progress)"},
        {"TrackerUpdateComplete", "(update complete)"}, {"CancelUpdateComplete", "(update canceled)"},
        {"CancelUpdate", "(canceling the update)"},
    };
    const std::string status = Text(update, "status");
    for (const auto& state : kStates)
        if (status == state.status) return state.words;
    return std::nullopt;
}

Told DiskSpace(const KXP::Value& disk) {
    const KXP::Value& low = Member(disk, "lowDiskSpace");
    if (!low.IsBool()) return std::nullopt;
    return low.GetBool() ? "low on space" : "no longer low on space";
}

Told Fullness(const KXP::Value& full) {
    if (!full.IsBool()) return std::nullopt;
    return full.GetBool() ? "full" : "no longer full";
}

Told Summary(const KXP::Value& summary) {
    const KXP::Value& ugc = Member(summary, "ugc");
    if (!ugc.IsArray()) return std::nullopt;
    return "asked for, " + Counted(ugc.Size(), "highlight");
}

struct Capacity {
    std::string usage;
    std::string total;
    std::string percent;
    const char* cap;
};

std::optional<Capacity> ReadCapacity(const KXP::Value& payload) {
    const KXP::Value& capacity = Member(payload, "capacity");
    const KXP::Value& enabled = Member(capacity, "enabled");
    const KXP::Value& percent = Member(capacity, "capacityPercent");
    const KXP::Value& total = Member(capacity, "totalDiskSpaceMB");
    const KXP::Value& usage = Member(capacity, "usageMB");
    if (!enabled.IsBool() || !percent.IsInt() || !total.IsUint() || !usage.IsUint()) return std::nullopt;
    return Capacity{
        HumanSize(usage.GetUint() * 1000.0),
        HumanVolume(total.GetUint()),
        std::to_string(percent.GetInt()) + " %",
        enabled.GetBool() ? "on" : "off",
    };
}

Told Usage(const KXP::Value& payload) {
    const std::optional<Capacity> capacity = ReadCapacity(payload);
    if (!capacity) return std::nullopt;
    return capacity->usage + " of " + capacity->total + " (cap " + capacity->percent + ", " + capacity->cap +
           ")";
}

Told Folder(const KXP::Value& payload) {
    const KXP::Value& path = Member(payload, "path");
    if (!path.IsString()) return std::nullopt;
    return Printable(Text(payload, "path"));
}

Told Progress(const KXP::Value& payload) {
    const KXP::Value& progress = Member(payload, "progress");
    if (!progress.IsNumber()) return std::nullopt;
    char text[40];
    std::snprintf(text, sizeof text, "%.4g %%", progress.GetDouble());
    return text;
}

constexpr Teller kNotifications[] = {
    {"GalleryUpdatedNotification", "usage", Usage}, {"GalleryCapStateChangeNotification", "cap", CapText},
    {"PathChangeNotification", "folder", Folder},   {"TempFolderChangeNotification", "temporary", Folder},
    {"MontageNotification", "montage", Progress},
};

// GalleryNotifications has one member, whose name is the kind of event.
constexpr const char* kManifold = "GalleryNotifications";
constexpr Teller kMembers[] = {
    {"captureSaved", "saved", CaptureSaved},
    {"ugcDeleted", "deleted", Deleted},
    {"highlightCaptureFailed", "failed", CaptureFailed},
    {"highlightCanceled", "canceled", HighlightCanceled},
    {"galleryPathUpdateStatus", "folder", UpdateStatus},
    {"checkDiskSpace", "disk", DiskSpace},
    {"galleryIsFull", "gallery", Fullness},
    {"openSummary", "summary", Summary},
};

template <size_t N>
Told Line(const Teller (&tellers)[N], const std::string& name, const KXP::Value& value) {
    for (const Teller& teller : tellers) {
        if (name != teller.name) continue;
        const Told told = teller.tell(value);
        if (!told) return std::nullopt;
        const std::string word = teller.word;
        return word + std::string(kWordWidth - word.size() + 2, ' ') + *told;
    }
    return std::nullopt;
}

// With a second member the line would keep one of them back. Results of the message's own do not count.
Told OneMember(const KXP::Value& payload) {
    const KXP::Value::Member* only = nullptr;
    for (const KXP::Value::Member& member : payload.GetObject()) {
        if (std::strncmp(member.name.GetString(), "_return_", 8) == 0) continue;
        if (only) return std::nullopt;
        only = &member;
    }
    if (!only) return std::nullopt;
    return Line(kMembers, only->name.GetString(), only->value);
}

}  // namespace

std::optional<std::string> CapText(const KXP::Value& holder) {
    const std::optional<Capacity> capacity = ReadCapacity(holder);
    if (!capacity) return std::nullopt;
    return capacity->cap + (", " + capacity->percent) + " of " + capacity->total + " (" + capacity->usage +
           " used)";
}

std::string NotificationText(const std::string& method, const KXP::Value& payload) {
    const bool manifold = method == kManifold && payload.IsObject();
    const Told line = manifold ? OneMember(payload) : Line(kNotifications, method, payload);
    return line ? *line : Printable(method) + "  " + PrintableJson(ToText(payload));
}

}  // namespace host
