#include "plugin-modules/Gallery/src/endpoints/GetFolderListing.h"

#include "common/JsonHelpers.h"

namespace {

FolderListing::Options ReadOptions(const KXP::Value& params) {
    FolderListing::Options options;
    options.directory = KXP::jsonGetValue<std::string>(params, "directory");
    if (options.directory.empty() || options.directory.back() != '/') options.directory += '/';
    options.onlyOwn = KXP::jsonGetValueOrDefault<bool>(params, "shouldGetOnlyZv", false);
    options.exclude =
        KXP::jsonGetEnumOrDefault(params, "excludeDirectoryType", kExcludeDirsWords, ExcludeDirs::None);
    options.showExr = KXP::jsonGetValueOrDefault<bool>(params, "shouldShowEXR", false);
    return options;
}

}  // namespace

KXP::RetVal GetFolderListing::ExecuteAsync(const KXP::Value& params) {
    return Guarded([&]() -> KXP::RetVal {
        FolderListing::Options options = ReadOptions(params);
        // A listing of the product's own files alone comes from the tracker.
        if (options.onlyOwn) return {KXP::Code::kFailure, "No tracker", 0};
        listing_.emplace(std::move(options));
        return GetNonZvFolders();
    });
}

KXP::RetVal GetFolderListing::GetNonZvFolders() {
    listing_->Read(cancelled_);
    if (cancelled_) return {KXP::Code::kAborted, "The listing was cancelled", 0};
    return {};
}

void GetFolderListing::FinishAsync(KXP::Value& response, KXP::Allocator& allocator) {
    listing_->Write(response, allocator);
}
