#include "plugin-modules/Gallery/src/endpoints/FolderListing.h"

#include <cstring>
#include <new>

#include "CobalixUtil.h"
#include "base/FolderReader.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "common/results/Exception.h"
#include "common/text/TextUtil.h"
#include "libraries/share-common/PageWords.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

using KXP::LogFailure;

const std::map<std::string, ExcludeDirs> kExcludeDirsWords = {
    {"none", ExcludeDirs::None},
    {"hidden", ExcludeDirs::Hidden},
    {"empty", ExcludeDirs::Empty},
    {"hiddenAndEmpty", ExcludeDirs::HiddenAndEmpty},
    {"hiddenOrEmpty", ExcludeDirs::HiddenOrEmpty},
};

namespace {

constexpr size_t kFourCharacterEnding = 4;  // ".png"

std::string LowerExtension(const std::string& name) {
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? "" : KXP::ToLower(name.substr(dot));
}

// A generated thumbnail lies beside its original and is not listed.
bool IsThumbnail(const std::string& name, const std::string& extension) {
    if (extension != ".png" && extension != ".jpg") return false;
    const size_t mark = name.rfind(media::kThumbnailMark);
    return mark != std::string::npos &&
           name.size() - mark == std::strlen(media::kThumbnailMark) + kFourCharacterEnding;
}

KXP::Value Text(std::string_view text, KXP::Allocator& allocator) {
    return KXP::Value(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

}  // namespace

bool FolderListing::DirectoryCompare::operator()(const std::string& a, const std::string& b) const {
    return a < b;
}

void FolderListing::Read(const std::atomic<bool>& cancelled) {
    KXP::FolderReader folder(options_.directory);
    while (!cancelled && folder.Next()) {
        if (folder.Kind() == KXP::EntryKind::Folder) {
            AddDirectory(folder.Name());
        } else {
            InspectFile(folder.Name());
        }
    }
    KXP::LogIllegibleNames(folder, options_.directory);
}

void FolderListing::AddDirectory(const std::string& name) try {
    if (name[0] == '.') return;  // hidden folders are never listed
    const bool keepEmpty = options_.exclude != ExcludeDirs::Empty &&
                           options_.exclude != ExcludeDirs::HiddenOrEmpty && !options_.onlyOwn;
    if (keepEmpty || !media::IsDirectoryEmpty(options_.directory + name, options_.onlyOwn))
        InsertDirectory(name);
} catch (const std::bad_alloc&) {
    throw;  // not the fault of this folder: the next would fail as well
} catch (const std::exception& error) {
    KXP_LOG(LogFailure, "Error inserting directory: %s", KXP::ExceptionText(error).c_str());
}

void FolderListing::InspectFile(const std::string& name) try {
    const std::string extension = LowerExtension(name);
    const std::string path = options_.directory + name;
    int64_t time = 0;
    if (KXP::FileTime(path, time) < 0) {
        KXP_LOG(LogFailure, "FileTime failed for %s", path.c_str());
        return;
    }
    std::string thumbnail;
    if (extension == ".exr") {
        if (!options_.showExr) return;
        if (!media::CheckIfThumbnailExistsForFile(path, extension, thumbnail)) {
            KXP_LOG(KXP::LogDetail, "Skipping EXR due to missing thumbnail file");
            return;
        }
    }
    if (IsThumbnail(name, extension)) return;

    media::SniffResult found;
    const int32_t result = media::SniffFile(path, found);
    if (result < 0) {
        KXP_LOG(LogFailure, "CheckIfZv failed on file %s with %d", path.c_str(), result);
        return;
    }
    if (options_.onlyOwn && !found.isOwn) return;
    // The pages cannot show a picture of that size, so they show its thumbnail.
    if (found.fileSubType == "SuperResolution_Oversized" &&
        !media::CheckIfThumbnailExistsForFile(path, ".jpg", thumbnail)) {
        KXP_LOG(KXP::LogDetail, "Skipping oversized Super Resolution image due to missing thumbnail file");
        return;
    }
    InsertIntoSet({time, name, found.fileType, found.fileSubType, found.fileSource, thumbnail});
} catch (const std::bad_alloc&) {
    throw;
} catch (const std::exception& error) {
    KXP_LOG(LogFailure, "Error inspecting/inserting file: %s", KXP::ExceptionText(error).c_str());
}

void FolderListing::Write(KXP::Value& response, KXP::Allocator& allocator) const {
    KXP::Value files(rapidjson::kArrayType);
    files.Reserve(static_cast<rapidjson::SizeType>(files_.size()), allocator);
    for (auto item = files_.rbegin(); item != files_.rend(); ++item) {
        const auto& [time, name, type, subtype, source, thumbnail] = *item;
        KXP::Value file(rapidjson::kObjectType);
        file.AddMember("name", Text(name, allocator), allocator);
        file.AddMember("type", Text(TypeForPages(type), allocator), allocator);
        file.AddMember("subtype", Text(SubtypeForPages(subtype), allocator), allocator);
        file.AddMember("source", Text(SourceForPages(source), allocator), allocator);
        if (!thumbnail.empty()) file.AddMember("thumbnail", Text(thumbnail, allocator), allocator);
        files.PushBack(file, allocator);
    }
    KXP::Value directories(rapidjson::kArrayType);
    for (const std::string& name : directories_)
        directories.PushBack(Text(name, allocator), allocator);
    response.AddMember("files", files, allocator);
    response.AddMember("directories", directories, allocator);
}
