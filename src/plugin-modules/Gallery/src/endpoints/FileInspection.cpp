#include "plugin-modules/Gallery/src/endpoints/FileInspection.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/Text.h"
#include "common/files/InputFileStream.h"
#include "common/results/Exception.h"
#include "libraries/share-common/PageWords.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

using KXP::LogFailure;

namespace {

// Less work is done sooner than a second thread gains anything: it has to be made, and two threads that open
// files make each other wait in the kernel.
constexpr std::chrono::milliseconds kWorthAThread{4};
// Taken at once by a thread.
constexpr size_t kStep = 32;

// A generated thumbnail lies beside its original and is not listed.
bool IsThumbnail(std::string_view name) {
    constexpr std::string_view mark = media::kThumbnailMark;
    constexpr size_t ending = mark.size() + std::string_view(".png").size();
    return name.size() >= ending && name.compare(name.size() - ending, mark.size(), mark) == 0 &&
           (KXP::EndsIgnoringCase(name, ".png") || KXP::EndsIgnoringCase(name, ".jpg"));
}

bool IsExr(std::string_view name) {
    return KXP::EndsIgnoringCase(name, ".exr");
}

}  // namespace

bool FileInspector::Rules::LeaveOut(std::string_view name) const {
    return (!showExr && IsExr(name)) || IsThumbnail(name);
}

void FileInspector::Inspect(ListedFile& file) try {
    name_ = file.name;
    InspectFile(name_, file);
} catch (const std::bad_alloc&) {
    throw;  // not the fault of this file: the next would fail as well
} catch (const std::exception& error) {
    KXP_LOG(LogFailure, "Error inspecting/inserting file: %s", KXP::ExceptionText(error).c_str());
}

void FileInspector::InspectFile(const std::string& name, ListedFile& file) {
    const bool isThumbnail = IsThumbnail(name);
    // Its time comes with the open file; what is not opened is asked for it.
    KXP::ifstream stream;
    const media::Format* const format = media::FormatOf(name);
    const bool isOpen = !isThumbnail && format && stream.open(folder_, name);
    if (isOpen) {
        file.time = stream.status().st_mtime;
    } else if (!ReadTime(name, file.time)) {
        KXP_LOG(LogFailure, "FileTime failed for %s", (directory_ + name).c_str());
        return;
    }
    std::string thumbnail;
    if (IsExr(name)) {
        if (!rules_.showExr) return;
        if (!media::CheckIfThumbnailExistsForFile(directory_ + name, ".exr", thumbnail)) {
            KXP_LOG(KXP::LogDetail, "Skipping EXR due to missing thumbnail file");
            return;
        }
    }
    if (isThumbnail) return;

    const int32_t result = isOpen ? media::SniffOpenFile(*format, stream, sniffed_)
                                  : media::SniffFile(directory_ + name, sniffed_);
    if (result < 0) {
        KXP_LOG(LogFailure, "CheckIfZv failed on file %s with %d", (directory_ + name).c_str(), result);
        return;
    }
    if (rules_.onlyOwn && !sniffed_.isOwn) return;
    // The pages cannot show a picture of that size, so they show its thumbnail.
    if (sniffed_.fileSubType == "SuperResolution_Oversized" &&
        !media::CheckIfThumbnailExistsForFile(directory_ + name, ".jpg", thumbnail)) {
        KXP_LOG(KXP::LogDetail, "Skipping oversized Super Resolution image due to missing thumbnail file");
        return;
    }
    if (!thumbnail.empty()) file.thumbnail = &thumbnails_.emplace_back(std::move(thumbnail));
    file.type = &TypeForPages(sniffed_.fileType);
    file.subtype = &SubtypeForPages(sniffed_.fileSubType);
    file.source = &SourceForPages(sniffed_.fileSource);
}

bool FileInspector::ReadTime(const std::string& name, int64_t& time) const {
    struct stat status {};
    if (fstatat(folder_, name.c_str(), &status, 0) != 0) return false;
    time = status.st_mtime;
    return true;
}

// Hands out the files, a few at a time.
class FileInspection::Shares {
  public:
    Shares(std::vector<ListedFile>& files, const std::atomic<bool>& cancelled)
        : files_(files), cancelled_(cancelled) {}

    // False when nothing is left.
    bool InspectSome(FileInspector& inspector) {
        const size_t first = next_.fetch_add(kStep);
        if (first >= files_.size() || cancelled_) return false;
        for (size_t i = first; i < std::min(first + kStep, files_.size()) && !cancelled_; ++i)
            inspector.Inspect(files_[i]);
        return true;
    }
    void InspectAll(FileInspector& inspector) {
        while (InspectSome(inspector)) {
        }
    }
    void End() { next_ = files_.size(); }

    // Of one thread so far. Whether the rest takes as long as a second thread is worth.
    bool ShouldBeShared() const {
        const size_t done = next_;
        if (done >= files_.size()) return false;
        const Clock::duration taken = Clock::now() - start_;
        return taken / done * (files_.size() - done) > kWorthAThread;
    }

  private:
    using Clock = std::chrono::steady_clock;

    std::vector<ListedFile>& files_;
    const std::atomic<bool>& cancelled_;
    const Clock::time_point start_ = Clock::now();
    std::atomic<size_t> next_{0};
};

void FileInspection::Run(std::vector<ListedFile>& files, const std::atomic<bool>& cancelled) {
    Shares shares(files, cancelled);
    while (shares.InspectSome(inspectors_[0])) {
        if (!shares.ShouldBeShared()) continue;
        InspectOnTwo(shares);
        break;
    }
    const auto listed =
        std::remove_if(files.begin(), files.end(), [](const ListedFile& file) { return !file.type; });
    files.erase(listed, files.end());
}

void FileInspection::InspectOnTwo(Shares& shares) {
    std::exception_ptr failure;
    std::thread second;
    try {
        second = std::thread([&] {
            try {
                shares.InspectAll(inspectors_[1]);
            } catch (...) {
                failure = std::current_exception();
            }
        });
    } catch (const std::system_error& error) {
        KXP_LOG(KXP::LogDetail, "A listing goes on with one thread: %s", error.what());
    }
    try {
        shares.InspectAll(inspectors_[0]);
    } catch (...) {
        shares.End();
        if (second.joinable()) second.join();
        throw;
    }
    if (second.joinable()) second.join();
    if (failure) std::rethrow_exception(failure);
}
