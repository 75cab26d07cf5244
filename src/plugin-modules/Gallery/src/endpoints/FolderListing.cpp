#include "plugin-modules/Gallery/src/endpoints/FolderListing.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <tuple>

#include "CobalixUtil.h"
#include "base/FolderReader.h"
#include "common/files/DirUtil.h"
#include "common/results/Exception.h"
#include "libraries/media-bytes/ByteView.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"

const std::map<std::string, ExcludeDirs> kExcludeDirsWords = {
    {"none", ExcludeDirs::None},
    {"hidden", ExcludeDirs::Hidden},
    {"empty", ExcludeDirs::Empty},
    {"hiddenAndEmpty", ExcludeDirs::HiddenAndEmpty},
    {"hiddenOrEmpty", ExcludeDirs::HiddenOrEmpty},
};

namespace {

std::string_view ThumbnailOf(const ListedFile& file) {
    return file.thumbnail ? std::string_view(*file.thumbnail) : std::string_view();
}

// How many characters all names begin with alike.
size_t SharedBytes(const std::vector<ListedFile>& files) {
    std::string_view shared = files.empty() ? std::string_view() : files.front().name;
    for (const ListedFile& file : files) {
        const auto differ = std::mismatch(shared.begin(), shared.end(), file.name.begin(), file.name.end());
        shared = shared.substr(0, static_cast<size_t>(differ.first - shared.begin()));
    }
    return shared.size();
}

// Eight bytes from there on, as a number that sorts as they do.
uint64_t NameKey(std::string_view name, size_t from) {
    char bytes[sizeof(uint64_t)] = {};
    name.substr(from).copy(bytes, sizeof bytes);
    return media::ByteView({bytes, sizeof bytes}).U64(0);
}

}  // namespace

bool FolderListing::IsBefore(const FileItemData& item, const FileItemData& other) {
    return std::tuple(item.name, *item.type, *item.subtype, *item.source, ThumbnailOf(item)) <
           std::tuple(other.name, *other.type, *other.subtype, *other.source, ThumbnailOf(other));
}

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
        } else if (!folder.IsKnownRegularFile() || !options_.files.LeaveOut(folder.Name())) {
            starts.push_back(names_.size());
            names_.append(folder.Name()).push_back('\0');
        }
    }
    KXP::LogIllegibleNames(folder, options_.directory);

    files_.resize(starts.size());
    for (size_t i = 0; i < starts.size(); ++i)
        files_[i].name = &names_[starts[i]];
    inspection_.emplace(options_.directory, folder.descriptor(), options_.files);
    inspection_->Run(files_, cancelled);
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

void FolderListing::InsertIntoSet(FileItemData item) {
    item.name = inserted_.emplace_back(item.name);
    files_.push_back(item);
}

void FolderListing::Sort() {
    const size_t shared = SharedBytes(files_);
    sorted_.reserve(files_.size());
    for (const FileItemData& item : files_)
        sorted_.push_back({item.time, NameKey(item.name, shared), &item});
    std::sort(sorted_.begin(), sorted_.end());
    const auto areEqual = [](const Place& one, const Place& next) { return !(one < next); };
    sorted_.erase(std::unique(sorted_.begin(), sorted_.end(), areEqual), sorted_.end());
}

void FolderListing::Write(KXP::IJsonSink& sink) const {
    const auto write = [&](std::string_view key, std::string_view text) {
        sink.Key(key);
        sink.String(text);
    };
    sink.StartObject();
    sink.Key("files");
    sink.StartArray();
    for (auto place = sorted_.rbegin(); place != sorted_.rend(); ++place) {
        const FileItemData& file = *place->item;
        sink.StartObject();
        write("name", file.name);
        write("type", *file.type);
        write("subtype", *file.subtype);
        write("source", *file.source);
        if (file.thumbnail) write("thumbnail", *file.thumbnail);
        sink.EndObject(file.thumbnail ? 5 : 4);
    }
    sink.EndArray(static_cast<rapidjson::SizeType>(sorted_.size()));
    sink.Key("directories");
    sink.StartArray();
    for (const std::string& name : directories_)
        sink.String(name);
    sink.EndArray(static_cast<rapidjson::SizeType>(directories_.size()));
    sink.EndObject(2);
}
