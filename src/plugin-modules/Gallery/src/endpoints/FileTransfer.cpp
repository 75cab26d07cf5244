#include "plugin-modules/Gallery/src/endpoints/FileTransfer.h"

#include <chrono>
#include <stdexcept>

#include "CobalixUtil.h"
#include "common/DirUtil.h"
#include "common/FileUtil.h"
#include "common/JsonHelpers.h"
#include "common/TextUtil.h"
#include "plugin-modules/Gallery/src/tracker/TrackerPaths.h"

namespace {

constexpr int kPollMs = 10;
constexpr int kLongestWaitMs = 2000;

void MakeFolderOf(const std::string& path) {
    const std::string folder = ParentOf(path);
    KXP_LOG(KXP::LogMilestone, "Check if this folder exists %s", folder.c_str());
    if (KXP::DirectoryExists(folder)) return;
    KXP_LOG(KXP::LogMilestone, "It does not, creating!");
    KXP::CreateDirectoryPath(KXP::SplitString(folder, "/"));
}

}  // namespace

FileTransfer FileTransfer::Parse(const KXP::Value& params) {
    FileTransfer transfer;
    transfer.source = KXP::jsonGetValue<std::string>(params, "source");
    if (!KXP::FileExists(transfer.source)) throw std::runtime_error("'source' is not a valid file");
    bool isOwn = false;
    if (ZvGalleryAPI::CheckIfZv(transfer.source, isOwn) != 1 || !isOwn)
        throw std::runtime_error("'source' is not a valid ZORVEX file");
    transfer.destination = KXP::jsonGetValue<std::string>(params, "destination");
    if (KXP::FileExists(transfer.destination)) throw std::runtime_error("'destination' already exists");
    // Missing folders are made from the root down, and a zero byte would end the path before its end.
    const std::string& destination = transfer.destination;
    if (destination.empty() || destination.front() != '/' || destination.find('\0') != std::string::npos)
        throw std::runtime_error("'destination' is not a full path");
    return transfer;
}

KXP::RetVal GalleryCopyFile::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const FileTransfer transfer = FileTransfer::Parse(params);
        const int code = KXP::FileCopyNew(transfer.source, transfer.destination, cancelled_);
        if (code == KXP::Code::kAborted) return {code, "The copy was cancelled", 0};
        if (code < 0) return {KXP::Code::kFailure, "Failed to copy file", 0};
        return {};
    });
}

KXP::RetVal GalleryMoveFile::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const FileTransfer transfer = FileTransfer::Parse(params);
        MakeFolderOf(transfer.destination);
        if (KXP::FileMoveNew(transfer.source, transfer.destination) < 0)
            return {KXP::Code::kFailure, "Failed to move file", 0};
        WaitForTracker(transfer.destination);
        return {};
    });
}

void GalleryMoveFile::WaitForTracker(const std::string& destination) {
    for (int waited = 0; waited < kLongestWaitMs; waited += kPollMs) {
        // Asked for anew each time: another gallery has another tracker.
        const std::shared_ptr<UGCTracker> tracker = api().GetUGCTracker();
        if (tracker && tracker->IsTrackedFile(destination)) {
            KXP_LOG(KXP::LogMilestone, "Updating tracker on MoveFile took %d ms", waited);
            return;
        }
        // The file is moved all the same.
        if (!Sleep(std::chrono::milliseconds(kPollMs))) return;
    }
    KXP_LOG(KXP::LogFailure, "Move occured, but tracker may not be ready (2 seconds)!");
}

bool GalleryMoveFile::Sleep(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    KXP::MutexLock lock(mutex_);
    while (!cancelled_ && std::chrono::steady_clock::now() < end)
        cancelledNow_.WaitUntil(mutex_, end);
    return !cancelled_;
}

void GalleryMoveFile::CancelTask() {
    KXP::MutexLock lock(mutex_);
    cancelled_ = true;
    cancelledNow_.NotifyAll();
}
