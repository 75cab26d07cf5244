#include "gallery-host/DriveVerbs.h"

#include <vector>

#include "gallery-host/Batch.h"
#include "gallery-host/Envelope.h"
#include "gallery-host/Printable.h"
#include "gallery-host/TextTable.h"
#include "gallery-host/Verbs.h"
#include "gallery-host/Words.h"

namespace host {
namespace {

BatchRequest MakeInfoRequest(const std::string& name) {
    // The plug-in takes a name of one character for a drive's letter.
    return {"GetDriveInfo", MakeTexts({{"drive", name == "/" ? "/." : name}})};
}

void AddSpace(const KXP::Document& answer, KXP::Value& drive, KXP::Allocator& allocator) {
    if (ResultCode(answer) < 0) return;
    for (const char* key : {"freeSpaceMB", "totalSpaceMB"})
        if (const KXP::Value* space = Find(Payload(answer), key))
            drive.AddMember(rapidjson::StringRef(key), KXP::Value(*space, allocator), allocator);
}

std::string Space(const KXP::Value& drive, const char* key) {
    const KXP::Value* space = Find(drive, key);
    return space && space->IsUint() ? HumanVolume(space->GetUint()) : "-";
}

}  // namespace

std::string DriveTable(const KXP::Value& drives, bool colour) {
    std::vector<TableRow> rows = {{{"DRIVE", "KIND", "FREE", "SIZE"}, kBold}};
    for (const KXP::Value& drive : Elements(drives, "drives"))
        rows.push_back({{Printable(Text(drive, "name")), Printable(Text(drive, "type")),
                         Space(drive, "freeSpaceMB"), Space(drive, "totalSpaceMB")}});
    return rows.size() > 1 ? TableText(rows, colour) : "";
}

void RunDrives(Session& session, Output& output, bool json) {
    const KXP::Document answer =
        AskForSuccess(session, "EnumerateDrives", KXP::Value(rapidjson::kObjectType));
    KXP::Document list(rapidjson::kObjectType);
    KXP::Allocator& allocator = list.GetAllocator();
    KXP::Value drives(rapidjson::kArrayType);
    for (const KXP::Value& drive : Elements(Payload(answer), "drives"))
        if (drive.IsObject()) drives.PushBack(KXP::Value(drive, allocator), allocator);
    Progress progress("measuring", drives.Size());
    const auto at = [&](size_t index) -> KXP::Value& {
        return drives[static_cast<rapidjson::SizeType>(index)];
    };
    AskInOrder(
        session, drives.Size(), [&](size_t index) { return MakeInfoRequest(Text(at(index), "name")); },
        [&](size_t index, const KXP::Document* info) { AddSpace(*info, at(index), allocator); }, progress);
    list.AddMember("drives", drives, allocator);
    if (json)
        WriteJson(output, list);
    else
        output.Write(DriveTable(list, WantsColour()));
}

}  // namespace host
