#include "gallery-host/page/HostMethods.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <spawn.h>
#include <sys/wait.h>

#include "common/results/RetVal.h"
#include "common/system/System.h"
#include "gallery-host/base/Desktop.h"
#include "gallery-host/base/UserEnvironment.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/trash/LastTrashed.h"
#include "gallery-host/trash/Trash.h"

namespace host::page {
namespace {

constexpr const char* kOpenFolder = "OpenFolder";
constexpr const char* kOpenInPlayer = "OpenInPlayer";
constexpr const char* kPreferences = "Preferences";
constexpr const char* kRestore = "Restore";
constexpr const char* kTrash = "Trash";

constexpr const char* kPreferencesMember = "preferences";
constexpr const char* kSuccess = "Success";

// The shell leaves the opener behind, which may stay as long as what it opens.
constexpr const char* kScript =
    "command -v \"$1\" >/dev/null || exit 127; \"$1\" \"$2\" </dev/null >/dev/null 2>&1 &";

std::string FolderOf(const std::string& path) {
    return path.substr(0, std::max<size_t>(path.rfind('/'), 1));
}

void AddResult(KXP::Value& object, int32_t code, const std::string& text, KXP::Allocator& allocator) {
    object.AddMember("_return_status", KXP::Value(text, allocator), allocator);
    object.AddMember("_return_code", code, allocator);
    object.AddMember("_return_internal", 0, allocator);
}

// `payload` is an object.
KXP::Document Response(const std::string& method, int32_t code, const std::string& text,
                       KXP::Document payload = MakeTexts({})) {
    AddResult(payload, code, text, payload.GetAllocator());
    KXP::Document response = MakeRequest(method, payload);
    SetText(response, "system", kSourceSystem);
    SetText(response, "module", "Host");
    response.RemoveMember("uniqueid");
    return response;
}

// Restores the file that was deleted last of those from `path`.
std::string RestoreLast(const std::vector<TrashedFile>& trashed, const std::string& path) {
    const auto found = std::find_if(trashed.begin(), trashed.end(),
                                    [&](const TrashedFile& file) { return file.path == path; });
    return found == trashed.end() ? "The file is not in the trash" : Restore(*found);
}

}  // namespace

const std::vector<std::string>& HostMethodNames() {
    static const std::vector<std::string> names = {kOpenFolder, kOpenInPlayer, kPreferences, kRestore,
                                                   kTrash};
    return names;
}

KXP::Document HostMethods::Answer(const std::string& method, const KXP::Value& payload) const {
    if (method == kPreferences) return AnswerPreferences(payload);
    if (method == kTrash || method == kRestore) return AnswerFiles(method, payload);
    return OpenFile(method, Text(payload, "file"));
}

KXP::Document HostMethods::AnswerFiles(const std::string& method, const KXP::Value& payload) const {
    TrashBatch batch;
    const std::vector<TrashedFile> trashed =
        method == kRestore ? ListTrashed(gallery_.path()) : std::vector<TrashedFile>();
    // Only what a page was shown, and only where it still is, or was, a file of the gallery.
    const auto errorOf = [&](const std::string& path) -> std::string {
        if (!handles_.Knows(path)) return "Not a capture on record";
        if (method == kRestore) return RestoreLast(trashed, path);
        struct stat status {};
        if (!gallery_.Open(path, status).IsOpen()) return "The file is not in the gallery";
        std::string error = MoveToTrash(path);
        if (error.empty()) batch.Add(path);
        return error;
    };
    KXP::Document answer(rapidjson::kObjectType);
    KXP::Allocator& allocator = answer.GetAllocator();
    KXP::Value files(rapidjson::kArrayType);
    for (const KXP::Value& file : Elements(payload, "files")) {
        if (!file.IsString()) continue;
        const std::string path(file.GetString(), file.GetStringLength());
        const std::string error = errorOf(path);
        KXP::Value result(rapidjson::kObjectType);
        result.AddMember("file", KXP::Value(path, allocator), allocator);
        AddResult(result, error.empty() ? 0 : KXP::Code::kFailure, error.empty() ? kSuccess : error,
                  allocator);
        files.PushBack(result, allocator);
    }
    answer.AddMember("files", files, allocator);
    return Response(method, 0, kSuccess, std::move(answer));
}

KXP::Document HostMethods::AnswerPreferences(const KXP::Value& payload) const {
    if (const KXP::Value* const given = Find(payload, kPreferencesMember)) {
        const std::string error = preferences_.Write(*given);
        if (!error.empty()) return Response(kPreferences, KXP::Code::kFailure, error);
    }
    KXP::Document answer(rapidjson::kObjectType);
    answer.AddMember(rapidjson::StringRef(kPreferencesMember),
                     KXP::Value(preferences_.Read(), answer.GetAllocator()), answer.GetAllocator());
    return Response(kPreferences, 0, kSuccess, std::move(answer));
}

KXP::Document HostMethods::OpenFile(const std::string& method, const std::string& path) const {
    struct stat status {};
    // Only what a page was shown, and only where it still is a file of the gallery.
    if (!handles_.Knows(path)) return Response(method, KXP::Code::kNotFound, "Not a capture on record");
    const bool there = gallery_.Open(path, status).IsOpen();
    if (!there && method == kOpenInPlayer)
        return Response(method, KXP::Code::kNotFound, "The file is not in the gallery");
    const bool opened = OpenWithDesktop(method == kOpenFolder ? FolderOf(path) : path);
    if (!opened) return Response(method, KXP::Code::kFailure, "The desktop has no program to open it");
    return Response(method, 0, kSuccess);
}

bool OpenWithDesktop(const std::string& path) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_setflags(&attributes,
                             static_cast<short>(POSIX_SPAWN_SETSID | KXP::Platform::kSpawnCloses));
    // A program that stays would keep the server's port.
    KXP::Platform::CloseOtherDescriptors(&actions);
    const char* const argv[] = {"sh", "-c", kScript, "sh", Platform::kOpener, path.c_str(), nullptr};
    pid_t pid = -1;
    const int error = posix_spawn(&pid, "/bin/sh", &actions, &attributes, const_cast<char* const*>(argv),
                                  UserEnvironment());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) return false;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace host::page
