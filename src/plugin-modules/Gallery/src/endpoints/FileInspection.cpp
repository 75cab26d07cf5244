#include "plugin-modules/Gallery/src/endpoints/FileInspection.h"

#include <algorithm>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "CobalixUtil.h"
#include "common/files/InputFileStream.h"
#include "common/results/Exception.h"
#include "common/text/TextUtil.h"
#include "libraries/share-common/PageWords.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

using KXP::LogFailure;

namespace {

constexpr size_t kFourCharacterEnding = 4;  // ".png"
constexpr size_t kWorthAThread = 256;
// Taken at once by a thread.
constexpr size_t kStep = 64;

// Beside time and name.
auto OtherFields(const ListedFile& file) {
    return std::tie(file.type, file.subtype, file.source, file.thumbnail);
}

std::string LowerExtension(const std::string& name) {
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? "" : KXP::ToLower(name.substr(dot));
}

// A generated thumbnail lies beside its original and is not listed.
bool IsThumbnail(const std::string& name, const std::string& extension) {
    if (extension != ".png" && extension != ".jpg") return false;
    constexpr std::string_view mark = media::kThumbnailMark;
    constexpr size_t ending = mark.size() + kFourCharacterEnding;
    return name.size() >= ending && name.compare(name.size() - ending, mark.size(), mark) == 0;
}

}  // namespace

// The names of one folder differ, so the first two fields settle nearly all.
bool ListedFile::operator<(const ListedFile& other) const {
    if (time != other.time) return time < other.time;
    if (const int order = name.compare(other.name); order != 0) return order < 0;
    return OtherFields(*this) < OtherFields(other);
}

bool ListedFile::operator==(const ListedFile& other) const {
    return time == other.time && name == other.name && OtherFields(*this) == OtherFields(other);
}

void FileInspector::Inspect(std::string_view name) try {
    name_ = name;
    ListedFile file;
    file.name = name;
    InspectFile(name_, file);
} catch (const std::bad_alloc&) {
    throw;  // not the fault of this file: the next would fail as well
} catch (const std::exception& error) {
    KXP_LOG(LogFailure, "Error inspecting/inserting file: %s", KXP::ExceptionText(error).c_str());
}

void FileInspector::InspectFile(const std::string& name, ListedFile& file) {
    const std::string extension = LowerExtension(name);
    const bool isThumbnail = IsThumbnail(name, extension);
    // Its time comes with the open file; what is not opened is asked for it.
    KXP::ifstream stream;
    const bool isOpen = !isThumbnail && media::MayBeOwn(name) && stream.open(folder_, name);
    if (isOpen) {
        file.time = stream.status().st_mtime;
    } else if (!ReadTime(name, file.time)) {
        KXP_LOG(LogFailure, "FileTime failed for %s", (directory_ + name).c_str());
        return;
    }
    std::string thumbnail;
    if (extension == ".exr") {
        if (!rules_.showExr) return;
        if (!media::CheckIfThumbnailExistsForFile(directory_ + name, extension, thumbnail)) {
            KXP_LOG(KXP::LogDetail, "Skipping EXR due to missing thumbnail file");
            return;
        }
    }
    if (isThumbnail) return;

    const int32_t result =
        isOpen ? media::SniffOpenFile(name, stream, sniffed_) : media::SniffFile(directory_ + name, sniffed_);
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
    file.type = TypeForPages(sniffed_.fileType);
    file.subtype = SubtypeForPages(sniffed_.fileSubType);
    file.source = SourceForPages(sniffed_.fileSource);
    if (!thumbnail.empty()) file.thumbnail = thumbnails_.emplace_back(std::move(thumbnail));
    found_.push_back(file);
}

bool FileInspector::ReadTime(const std::string& name, int64_t& time) const {
    struct stat status {};
    if (fstatat(folder_, name.c_str(), &status, 0) != 0) return false;
    time = status.st_mtime;
    return true;
}

void FileInspection::Run(const std::vector<std::string_view>& names, const std::atomic<bool>& cancelled) {
    std::atomic<size_t> next{0};
    const auto inspect = [&](FileInspector& inspector) {
        for (size_t first = next.fetch_add(kStep); first < names.size(); first = next.fetch_add(kStep))
            for (size_t i = first; i < std::min(first + kStep, names.size()) && !cancelled; ++i)
                inspector.Inspect(names[i]);
    };
    std::exception_ptr failure;
    std::thread second;
    try {
        if (names.size() >= kWorthAThread)
            second = std::thread([&] {
                try {
                    inspect(inspectors_[1]);
                } catch (...) {
                    failure = std::current_exception();
                }
            });
    } catch (const std::system_error& error) {
        KXP_LOG(KXP::LogDetail, "A listing goes on with one thread: %s", error.what());
    }
    try {
        inspect(inspectors_[0]);
    } catch (...) {
        next = names.size();
        if (second.joinable()) second.join();
        throw;
    }
    if (second.joinable()) second.join();
    if (failure) std::rethrow_exception(failure);
}

void FileInspection::AddFound(std::vector<ListedFile>& files) const {
    for (const FileInspector& inspector : inspectors_)
        files.insert(files.end(), inspector.found().begin(), inspector.found().end());
}
