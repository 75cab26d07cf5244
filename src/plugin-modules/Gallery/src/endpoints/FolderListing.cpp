#include "plugin-modules/Gallery/src/endpoints/FolderListing.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "CobalixUtil.h"
#include "base/FolderReader.h"
#include "common/files/DirUtil.h"
#include "common/results/Exception.h"
#include "libraries/share-common/PageWords.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"

const std::map<std::string, ExcludeDirs> kExcludeDirsWords = {
    {"none", ExcludeDirs::None},
    {"hidden", ExcludeDirs::Hidden},
    {"empty", ExcludeDirs::Empty},
    {"hiddenAndEmpty", ExcludeDirs::HiddenAndEmpty},
    {"hiddenOrEmpty", ExcludeDirs::HiddenOrEmpty},
};

bool FolderListing::DirectoryCompare::operator()(const std::string& a, const std::string& b) const {
    return a < b;
}

void FolderListing::Read(const std::atomic<bool>& cancelled) {
    KXP::FolderReader folder(options_.directory);
    if (!folder.IsOpen()) return;
    std::vector<size_t> starts;
    while (!cancelled && folder.Next()) {
        if (folder.Kind() == KXP::EntryKind::Folder) {
            AddDirectory(folder.Name());
        } else {
            starts.push_back(names_.size());
            names_.append(folder.Name()).push_back('\0');
        }
    }
    KXP::LogIllegibleNames(folder, options_.directory);

    std::vector<std::string_view> names;
    names.reserve(starts.size());
    for (const size_t start : starts)
        names.emplace_back(&names_[start]);
    inspection_.emplace(options_.directory, folder.descriptor(), options_.files);
    inspection_->Run(names, cancelled);
    inspection_->AddFound(files_);
}

void FolderListing::AddDirectory(const std::string& name) try {
    if (name[0] == '.') return;  // hidden folders are never listed
    const bool onlyOwn = options_.files.onlyOwn;
    const bool keepEmpty =
        options_.exclude != ExcludeDirs::Empty && options_.exclude != ExcludeDirs::HiddenOrEmpty && !onlyOwn;
    if (keepEmpty || !media::IsDirectoryEmpty(options_.directory + name, onlyOwn)) InsertDirectory(name);
} catch (const std::bad_alloc&) {
    throw;  // not the fault of this folder: the next would fail as well
} catch (const std::exception& error) {
    KXP_LOG(KXP::LogFailure, "Error inserting directory: %s", KXP::ExceptionText(error).c_str());
}

void FolderListing::InsertIntoSet(const FileItemData& item) {
    FileItemData kept = item;
    kept.name = inserted_.emplace_back(item.name);
    kept.thumbnail = inserted_.emplace_back(item.thumbnail);
    kept.type = TypeForPages(item.type);
    kept.subtype = SubtypeForPages(item.subtype);
    kept.source = SourceForPages(item.source);
    files_.push_back(kept);
}

void FolderListing::Sort() {
    std::sort(files_.begin(), files_.end());
    files_.erase(std::unique(files_.begin(), files_.end()), files_.end());
}

void FolderListing::Write(KXP::IJsonSink& sink) const {
    const auto write = [&](std::string_view key, std::string_view text) {
        sink.Key(key);
        sink.String(text);
    };
    sink.StartObject();
    sink.Key("files");
    sink.StartArray();
    for (auto file = files_.rbegin(); file != files_.rend(); ++file) {
        sink.StartObject();
        write("name", file->name);
        write("type", file->type);
        write("subtype", file->subtype);
        write("source", file->source);
        if (!file->thumbnail.empty()) write("thumbnail", file->thumbnail);
        sink.EndObject(file->thumbnail.empty() ? 4 : 5);
    }
    sink.EndArray(static_cast<rapidjson::SizeType>(files_.size()));
    sink.Key("directories");
    sink.StartArray();
    for (const std::string& name : directories_)
        sink.String(name);
    sink.EndArray(static_cast<rapidjson::SizeType>(directories_.size()));
    sink.EndObject(2);
}
