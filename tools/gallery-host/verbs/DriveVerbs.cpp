#include "gallery-host/verbs/DriveVerbs.h"

#include <vector>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/TextTable.h"
#include "gallery-host/output/Words.h"
#include "gallery-host/session/Batch.h"
#include "gallery-host/verbs/Verbs.h"

namespace host {
namespace {

BatchRequest MakeInfoRequest(const std::string& name) {
    // For the plug-in a name of one character is a drive letter.
    BatchRequest request;
    request.method = "GetDriveInfo";
    request.payload = MakeTexts({{"drive", name == "/" ? "/." : name}});
    return request;
}

void AddSpace(const KXP::Document& answer, KXP::Value& drive, KXP::Allocator& allocator) {
    if (ResultCode(answer) < 0) return;
    for (const char* key : {"freeSpaceMB", "totalSpaceMB"})
        if (const KXP::Value* space = Find(Payload(answer), key))
            drive.AddMember(rapidjson::StringRef(key), KXP::Value(*space, allocator), allocator);
}

// Volumes of the system, which hold no captures.
bool IsReserved(const KXP::Value& drive) {
    return Text(drive, "type") == "reserved";
}

std::string Room(const KXP::Value& drive) {
    const KXP::Value* free = Find(drive, "freeSpaceMB");
    const KXP::Value* total = Find(drive, "totalSpaceMB");
    if (!free || !total || !free->IsUint() || !total->IsUint()) return "-";
    return HumanVolume(free->GetUint()) + " of " + HumanVolume(total->GetUint());
}

}  // namespace

std::string DriveTable(const KXP::Value& drives, bool all, bool colour) {
    std::vector<TableRow> rows = {{{"DRIVE", "KIND", "FREE"}, kBold}};
    for (const KXP::Value& drive : Elements(drives, "drives"))
        if (all || !IsReserved(drive))
            rows.push_back({{Printable(Text(drive, "name")), Printable(Text(drive, "type")), Room(drive)}});
    return rows.size() > 1 ? TableText(rows, colour, 2) : "";
}

void RunDrives(Session& session, Output& output, bool all, bool json) {
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
        output.Write(DriveTable(list, all, WantsColour()));
}

}  // namespace host
