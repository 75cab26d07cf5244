#include "plugin-modules/Gallery/src/endpoints/DriveTasks.h"

#include <utility>

#include "base/Path.h"
#include "common/drives/Drives.h"
#include "common/files/DirUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/product/Profile.h"

KXP::RetVal IsDirectoryWritable::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const std::string directory = KXP::jsonGetValueOrDefault<std::string>(params, "directory", "");
        if (directory.empty()) return {KXP::Code::kInvalidArgument, "Directory value is empty", 0};
        writable_ = KXP::IsUsablePath(directory) && KXP::DirectoryWritable(directory);
        return {};
    });
}

void IsDirectoryWritable::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    // The pages read this spelling; the "writeable" of the catalogue is optional, and nothing reads it.
    response.AddMember("writable", writable_, allocator);
}

KXP::RetVal EnumerateDrives::ExecuteAsync(const KXP::Value&) {
    const std::string gallery = api().GetGallerySettings()->GetUserGalleryPath();
    const int code = KXP::EnumDrives({KXP::GetSpecialDirectory(KXP::SD_HOME), gallery}, drives_);
    if (code != KXP::Code::kOk) return {code, "Failed to enumerate drives", 0};
    return {};
}

void EnumerateDrives::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    KXP::Value drives(rapidjson::kArrayType);
    for (const auto& [name, type] : drives_) {
        KXP::Value drive(rapidjson::kObjectType);
        drive.AddMember("name", KXP::Value(name, allocator), allocator);
        drive.AddMember("type", KXP::Value(type, allocator), allocator);
        drives.PushBack(drive, allocator);
    }
    response.AddMember("drives", drives, allocator);
}

KXP::RetVal GetDriveInfo::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        std::string drive = KXP::jsonGetValue<std::string>(params, "drive");
        // A single character is taken as a drive letter, so the root can only be asked for as "//".
        if (drive.size() == 1) drive += ':';
        if (!KXP::IsUsablePath(drive) || !KXP::GetDriveSpace(drive, freeMB_, totalMB_))
            return {KXP::Code::kFailure, "Failed to get drive information", 0};
        return {};
    });
}

void GetDriveInfo::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    response.AddMember("freeSpaceMB", freeMB_, allocator);
    response.AddMember("totalSpaceMB", totalMB_, allocator);
}
