#include "plugin-modules/Gallery/src/activity/EdgeLogs.h"

#include <algorithm>
#include <filesystem>
#include <tuple>
#include <utility>

#include "CobalixUtil.h"
#include "base/FileDescriptor.h"
#include "base/ReadWrite.h"
#include "common/files/DirUtil.h"
#include "common/json/JsonParse.h"
#include "common/results/Exception.h"

namespace {

constexpr size_t kMostBytesOfLog = size_t{16} << 20;
constexpr size_t kMostBytes = size_t{64} << 20;

struct LogFile {
    std::filesystem::file_time_type time;
    std::string path;
    std::string game;
};

void AddLogsOf(const std::string& gallery, const std::string& game, std::vector<LogFile>& logs) {
    const std::string folder = gallery + "/" + game;
    for (const std::string& name : KXP::EnumFilesWithExtension(folder, "edgelog")) {
        std::string path = KXP::FileJoin({folder, name});
        std::error_code error;
        const auto time = std::filesystem::last_write_time(path, error);
        if (!error) logs.push_back({time, std::move(path), game});
    }
}

bool IsLater(const LogFile& a, const LogFile& b) {
    return std::tie(a.time, a.path) > std::tie(b.time, b.path);
}

// Subtracts the size of the log from `budget`. Throws when the log cannot be used.
ActivityData ReadLog(const LogFile& log, size_t& budget) {
    KXP::FileBytes content;
    const KXP::FileDescriptor file = KXP::OpenForRead(log.path);
    if (!file.IsOpen() || !KXP::ReadWhole(file, std::min(budget, kMostBytesOfLog), content))
        throw KXP::JSONFieldError("It cannot be read, or is too large");
    budget -= content.size;
    KXP::Document document;
    if (KXP::ParseJSON(content.view(), document).IsError()) throw KXP::JSONFieldError("It is no JSON");
    ActivityData data = ActivityData::ParseActivityJSON(document);
    if (!data.gameName || data.gameName->empty()) data.gameName = log.game;
    return data;
}

}  // namespace

bool ParseEdgeLogs(std::vector<ActivityData>& list, const std::string& galleryPath) {
    if (!KXP::DirectoryExists(galleryPath)) return false;
    std::vector<LogFile> logs;
    for (const std::string& game : KXP::EnumDirectories(galleryPath))
        if (game.front() != '.') AddLogsOf(galleryPath, game, logs);
    std::sort(logs.begin(), logs.end(), IsLater);
    size_t budget = kMostBytes;
    for (const LogFile& log : logs) {
        try {
            list.push_back(ReadLog(log, budget));
        } catch (const std::exception& error) {
            KXP_LOG(KXP::LogFailure, "Passing over activity log %s: %s", log.path.c_str(),
                    KXP::ExceptionText(error).c_str());
        }
    }
    return true;
}
