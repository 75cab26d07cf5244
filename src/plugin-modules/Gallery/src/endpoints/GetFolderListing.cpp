#include "plugin-modules/Gallery/src/endpoints/GetFolderListing.h"

#include "CobalixUtil.h"
#include "common/files/DirUtil.h"
#include "common/json/JsonHelpers.h"
#include "libraries/share-common/PageWords.h"

namespace {

FolderListing::Options ReadOptions(const KXP::Value& params) {
    FolderListing::Options options;
    options.directory = KXP::jsonGetValue<std::string>(params, "directory");
    if (options.directory.empty() || options.directory.back() != '/') options.directory += '/';
    options.files.onlyOwn = KXP::jsonGetValueOrDefault<bool>(params, "shouldGetOnlyZv", false);
    options.exclude =
        KXP::jsonGetEnumOrDefault(params, "excludeDirectoryType", kExcludeDirsWords, ExcludeDirs::None);
    options.files.showExr = KXP::jsonGetValueOrDefault<bool>(params, "shouldShowEXR", false);
    return options;
}

}  // namespace

KXP::RetVal GetFolderListing::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        const FolderListing::Options options = ReadOptions(params);
        listing_.emplace(options);
        KXP::RetVal result = options.files.onlyOwn ? GetTracked(options.directory) : GetNonZvFolders();
        listing_->Sort();
        return result;
    });
}

KXP::RetVal GetFolderListing::GetNonZvFolders() {
    listing_->Read(cancelled_);
    if (cancelled_) return {KXP::Code::kAborted, "The listing was cancelled", 0};
    return {};
}

KXP::RetVal GetFolderListing::GetTracked(const std::string& directory) {
    const std::shared_ptr<UGCTracker> tracker = Tracker();
    if (KXP::SamePath(directory, api().GetGallerySettings()->GetGalleryPath())) {
        for (const std::string& game : tracker->GetTrackedGames())
            listing_->InsertDirectory(game);
        return {};
    }
    const size_t end = directory.size() - 1;  // of the "/"
    const size_t start = directory.rfind('/', end - 1) + 1;
    // The times stay 0, so that the order is that of the names and nothing is read from disk.
    for (const TrackedUGC& ugc : tracker->GetGameUGC(directory.substr(start, end - start)))
        listing_->InsertIntoSet({0, std::string_view(ugc.path).substr(ugc.path.rfind('/') + 1),
                                 &TypeForPages(ugc.fileType), &SubtypeForPages(ugc.fileSubType),
                                 &SourceForPages(ugc.fileSource), nullptr});
    return {};
}
