#include "gallery-host/verbs/SettingsVerbs.h"

#include <vector>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"
#include "gallery-host/output/NotificationText.h"
#include "gallery-host/output/TextTable.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

std::string SettingsTable(const KXP::Value& settings, bool colour) {
    std::vector<TableRow> rows;
    const auto row = [&](const char* label, const std::string& value) {
        if (!value.empty()) rows.push_back({{label, value}, kBold});
    };
    row("Gallery", Printable(Text(settings, "path")));
    row("Temporary", Printable(Text(settings, "tempFolderPath")));
    row("State", IsComplete(settings) ? "" : "being scanned");
    row("Cap", CapText(settings).value_or(""));
    return TableText(rows, colour);
}

KXP::Document MakeChange(const SettingsChange& change) {
    KXP::Document settings(rapidjson::kObjectType);
    if (!change.path.empty()) AddText(settings, "userGalleryPath", change.path);
    if (!change.temporary.empty()) AddText(settings, "tempFolderPath", change.temporary);
    KXP::Value capacity(rapidjson::kObjectType);
    KXP::Allocator& allocator = settings.GetAllocator();
    if (change.cap) capacity.AddMember("enabled", *change.cap, allocator);
    if (change.capPercent) capacity.AddMember("capacityPercent", *change.capPercent, allocator);
    if (!capacity.ObjectEmpty()) settings.AddMember("capacity", capacity, allocator);
    KXP::Document request(rapidjson::kObjectType);
    request.AddMember("settings", KXP::Value(settings, request.GetAllocator()), request.GetAllocator());
    return request;
}

// The plug-in does not say which of the two folders it refuses.
std::string RefusedFolders(const SettingsChange& change) {
    if (change.temporary.empty()) return change.path;
    return change.path.empty() ? change.temporary : change.path + " or " + change.temporary;
}

// Whether anything changed.
bool Apply(Session& session, const SettingsChange& change) {
    const KXP::Document answer = session.Ask("SetSettings", MakeChange(change));
    const std::string text = Text(Payload(answer), "_return_status");
    if (ResultCode(answer) >= 0) return text.rfind("No action taken", 0) != 0;
    if (text.find("Invalid path defined") == std::string::npos)
        throw Failure(kExitFailed, ResultText(answer));
    throw Failure(kExitFailed, RefusedFolders(change) + ": not a folder that can be used; nothing is saved");
}

void SayGallery(Session& session) {
    const GalleryListing gallery = AskGallery(session);
    const bool empty = CaptureCount(gallery.games) == 0;
    Say("the gallery is scanned: " + (empty ? "no captures" : GallerySummary(gallery.games)) + " in " +
        gallery.folder);
}

}  // namespace

void RunSettingsGet(Session& session, Output& output, bool json) {
    const KXP::Document settings = AskSettings(session);
    if (json)
        WriteJson(output, settings);
    else
        output.Write(SettingsTable(settings, WantsColour()));
}

void RunSettingsSet(Session& session, Output& output, const SettingsChange& change, bool json) {
    const bool changed = Apply(session, change);
    Say(changed ? "settings saved" : "no change: the settings have these values already");
    if (changed && !change.path.empty()) SayGallery(session);
    if (json) RunSettingsGet(session, output, json);
}

}  // namespace host
