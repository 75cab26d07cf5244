#include "plugin-modules/Gallery/src/endpoints/FileTransfer.h"

#include <chrono>
#include <stdexcept>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/text/TextUtil.h"

namespace {

using std::chrono::steady_clock;

// Where the tracker could not take up the file at once, its watcher may still find it.
constexpr std::chrono::milliseconds kLongestWait{2000};

void MakeFolderOf(const std::string& path) {
    const std::string folder = KXP::ParentOf(path);
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
    // A link is no capture, whatever it leads to.
    if (!KXP::IsRegularFile(transfer.source) || ZvGalleryAPI::CheckIfZv(transfer.source, isOwn) != 1 ||
        !isOwn)
        throw std::runtime_error("'source' is not a valid ZORVEX file");
    transfer.destination = KXP::jsonGetValue<std::string>(params, "destination");
    if (KXP::FileExists(transfer.destination)) throw std::runtime_error("'destination' already exists");
    // Missing folders are made from the root down, and a zero byte would end the path before its end.
    const std::string& destination = transfer.destination;
    if (destination.empty() || destination.front() != '/' || !KXP::IsUsablePath(destination))
        throw std::runtime_error("'destination' is not a full path");
    return transfer;
}

KXP::RetVal GalleryCopyFile::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const FileTransfer transfer = FileTransfer::Parse(params);
        const int code = KXP::FileCopyNew(transfer.source, transfer.destination, cancelled_);
        if (code == KXP::Code::kAborted) return {code, "The copy was cancelled", 0};
        if (code < 0) return {KXP::Code::kFailure, "Failed to copy file", 0};
        if (const std::shared_ptr<UGCTracker> tracker = api().GetUGCTracker())
            tracker->TrackNow(transfer.destination);
        return {};
    });
}

KXP::RetVal GalleryMoveFile::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const FileTransfer transfer = FileTransfer::Parse(params);
        MakeFolderOf(transfer.destination);
        if (const std::shared_ptr<UGCTracker> tracker = api().GetUGCTracker())
            tracker->KeepFor(transfer.source, transfer.destination, StampAt(transfer.source));
        if (KXP::FileMoveNew(transfer.source, transfer.destination) < 0)
            return {KXP::Code::kFailure, "Failed to move file", 0};
        FollowMove(transfer);
        return {};
    });
}

void GalleryMoveFile::FollowMove(const FileTransfer& transfer) {
    const std::shared_ptr<UGCTracker> tracker = api().GetUGCTracker();
    const steady_clock::time_point start = steady_clock::now();
    if (tracker) tracker->MoveNow(transfer.source, transfer.destination);
    if (tracker && tracker->AwaitTracked(transfer.destination, start + kLongestWait, cancelled_)) {
        const auto waited =
            std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now() - start);
        KXP_LOG(KXP::LogMilestone, "Updating tracker on MoveFile took %d ms",
                static_cast<int>(waited.count()));
    } else if (!cancelled_) {
        // The file is moved all the same.
        KXP_LOG(KXP::LogFailure, "Move occured, but tracker may not be ready (2 seconds)!");
    }
}

void GalleryMoveFile::CancelTask() {
    cancelled_ = true;
    WakeTracker();
}
