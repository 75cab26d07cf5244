// A plug-in for the tests of gallery-host. Its requests are named for what they do; FAKE_PLUGIN, a list of
// words, chooses how its life cycle goes wrong.
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <unistd.h>

#include "common/JsonParse.h"
#include "core/container/cef/ZvCefPlugin.h"

namespace {

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

bool Behaves(const std::string& word) {
    return (" " + Environment("FAKE_PLUGIN") + " ").find(" " + word + " ") != std::string::npos;
}

std::string ToText(const KXP::Value& value) {
    KXP::JsonBuffer buffer;
    KXP::JsonWriter writer(buffer);
    value.Accept(writer);
    return buffer.GetString();
}

struct Fake {
    Fake(ZvCefPluginCallback toCall, void* itsContext) : callback(toCall), context(itsContext) {}

    ZvCefPluginCallback callback;
    void* context;
    std::map<std::string, std::vector<std::string>> subscribers;
    boost::asio::thread_pool worker{1};  // last: its tasks use the rest
};
std::unique_ptr<Fake> fake;

void Send(ZvCefPluginNotification_t notification, const std::string& text) {
    fake->callback(notification, text.c_str(), fake->context);
}

int Command(const std::string& name, const char* method) {
    Send(ZvCefPluginLog, "fake: " + name);
    if (Behaves(name + "-refuses")) return 0;
    if (Behaves(name + "-throws")) throw std::runtime_error(name + " threw");
    if (Behaves(name + "-done")) return 1;
    if (Behaves(name + "-never")) return 2;
    boost::asio::post(fake->worker, [method, fails = Behaves(name + "-fails")] {
        const std::string failure = std::string(R"({"method":")") + method +
                                    R"(","payload":{"_return_code":-2147467259,)"
                                    R"("_return_status":"it is broken"}})";
        Send(fails ? ZvCefPluginCommandFailed : ZvCefPluginCommandSucceeded, fails ? failure : method);
    });
    return 2;
}

KXP::Value Settings(KXP::Allocator& allocator) {
    const std::string gallery = Environment("HOME") + "/Videos/ZORVEX/Ovirastream";
    KXP::Value settings(rapidjson::kObjectType);
    settings.AddMember("path", KXP::Value(gallery, allocator), allocator);
    if (Behaves("rebuilds")) settings.AddMember("trackerStatus", "TrackerUpdateInProgress", allocator);
    return settings;
}

void Answer(const KXP::Document& request, KXP::Value payload, KXP::Document& response, int code,
            const char* status) {
    KXP::Allocator& allocator = response.GetAllocator();
    response.AddMember("system", KXP::Value(request["source_system"], allocator), allocator);
    response.AddMember("module", KXP::Value(request["source_module"], allocator), allocator);
    response.AddMember("method", KXP::Value(request["method"], allocator), allocator);
    response.AddMember("reference_uniqueid", KXP::Value(request["uniqueid"], allocator), allocator);
    response.AddMember("type", 3072, allocator);
    payload.AddMember("_return_code", code, allocator);
    payload.AddMember("_return_status", rapidjson::StringRef(status), allocator);
    response.AddMember("payload", payload, allocator);
    Send(ZvCefPluginJsonMessage, ToText(response));
}

void Notify(const std::string& method) {
    for (const std::string& id : fake->subscribers[method]) {
        KXP::Document notification;
        KXP::ParseJSON(R"({"system":"Host","module":"gallery-host","uniqueid":"n","type":3073,"payload":)"
                       R"({"n":1,"path":"/g\u001b[2J"}})",
                       notification);
        KXP::Allocator& allocator = notification.GetAllocator();
        notification.AddMember("method", KXP::Value(method, allocator), allocator);
        notification.AddMember("reference_uniqueid", KXP::Value(id, allocator), allocator);
        Send(ZvCefPluginJsonMessage, ToText(notification));
    }
}

// The answer to a request whose payload holds `asked`, of the first row that fits. A null answer never comes.
struct Canned {
    const char* method;
    const char* asked;
    int code;
    const char* status;
    const char* answer;
};

constexpr int kInvalid = -2147024809;
constexpr const char* kRecord =
    R"({"fileType":"image","date":"2026-03-14T18:06:00Z","msDuration":2500,"fileSizeKB":13,"path":"/g/Race/a.png"})";

constexpr const char* kListing =
    R"({"files":[{"name":"bad\u001b]0;name\u0007.mp4","type":"video"}],"directories":["Some Game"]})";

constexpr Canned kCanned[] = {
    {"GetFolderListing", "", 0, "Success", kListing},
    {"GetFileMetadata", "foreign", 0, "Success", "{}"},
    {"GetFileMetadata", "", 0, "Success", kRecord},
    {"GetThumbnail", "none", 0, "Success", "{}"},
    {"GetThumbnail", "broken", 0, "Success", R"({"thumbnail":"data:image/png;base64,iVBOR"})"},
    {"GetThumbnail", "", 0, "Success", R"({"thumbnail":"data:image/png;base64,iVBORw0KGgo="})"},
    {"CopyFile", "never", 0, "", nullptr},
    {"CopyFile", "foreign", kInvalid, "'source' is not a valid ZORVEX file", "{}"},
    {"CopyFile", "taken", kInvalid, "'destination' already exists", "{}"},
    {"RemoveGalleryItem", "foreign", kInvalid, "File path is not ZORVEX tracked UGC file", "{}"},
    {"GetAppStats", "Race", 0, "Success", R"({"screenshots":3,"videos":1})"},
    {"EnumerateDrives", "", 0, "Success", R"({"drives":[{"name":"/","type":"fixed"}]})"},
    {"GetDriveInfo", "", -2147467259, "Failed to get drive information", "{}"},
    {"Trim", "outside", -2147467259, "Gallery Trim failed", "{}"},
    {"AddMeme", "foreign", -2147024894, "UGC not found", "{}"},
    {"CreateMontageFromRecipe", "nowhere", -2147467259, "Cloud sync fetch montage recipe failed", "{}"},
    {"SetSettings", "bad", kInvalid, "Invalid path defined", "{}"},
};

const Canned* FindCanned(const std::string& method, const std::string& asked) {
    for (const Canned& canned : kCanned)
        if (method == canned.method && asked.find(canned.asked) != std::string::npos) return &canned;
    return nullptr;
}

// What these do to files, but for some that say so.
void Change(const std::string& method, const KXP::Value& payload) {
    const char* member = method == "EngraveMP4" ? "file" : "output";
    if ((method != "EngraveMP4" && method != "Trim" && method != "CreateMontageFromRecipe") ||
        ToText(payload).find("broken") != std::string::npos)
        return;
    std::ofstream(payload[member].GetString(), std::ios::app) << "changed";
}

void Handle(const std::string& text) {
    if (Behaves("reverses") && text.find("CopyFile") != std::string::npos) {
        // The answer to the first of two comes after the answer to the second.
        static std::string first;
        if (first.empty()) {
            first = text;
            return;
        }
        if (text != first) boost::asio::post(fake->worker, [] { Handle(first); });
    }
    KXP::Document request;
    KXP::ParseJSON(text, request);
    const std::string method = request["method"].GetString();
    Change(method, request["payload"]);
    if (request["type"].GetInt() == 3073) {
        fake->subscribers[method].emplace_back(request["uniqueid"].GetString());
        if (Behaves("notifies")) Notify(method);
        return;
    }
    if (method == "Never") return;
    KXP::Document response(rapidjson::kObjectType);
    KXP::Allocator& allocator = response.GetAllocator();
    KXP::Value payload(request["payload"], allocator);
    if (method == "Notify") {
        const KXP::Value& named = request["payload"]["method"];
        Notify(std::string(named.GetString(), named.GetStringLength()));
    }
    if (method == "Log") {
        Send(ZvCefPluginLog, "a line with \x1b[31mcolour");
        Send(ZvCefPluginLog,
             "[now][4][Gallery FILE] Watch.cpp:1 seen at level " + Environment("COBALIX_LOG_LEVEL"));
        Send(ZvCefPluginLog, "[now][3][Gallery TASK] Work.cpp:1 named ][Gallery FILE] x");
    }
    if (method == "Big")
        payload.AddMember("big", KXP::Value(std::string(1 << 20, 'x'), allocator), allocator);
    if (method == "GetSettings") payload.AddMember("settings", Settings(allocator), allocator);
    if (const Canned* canned = FindCanned(method, ToText(request["payload"]))) {
        if (!canned->answer) return;
        KXP::Document answer;
        KXP::ParseJSON(canned->answer, answer);
        Answer(request, KXP::Value(answer, allocator), response, canned->code, canned->status);
    } else if (method == "Fail")
        Answer(request, std::move(payload), response, kInvalid, "Bad \x1b[31margument");
    else
        Answer(request, std::move(payload), response, 0, "Success");
}

int Initialize(ZvCefPluginCallback callback, const char* config, void* context) {
    fake = std::make_unique<Fake>(callback, context);
    if (std::string(config) != "{}") return 0;
    return Command("init", "_CmdInit_");
}

int Start() {
    return Command("start", "_CmdStart_");
}

int Stop() {
    return Command("stop", "_CmdStop_");
}

int Nothing() {
    return 0;
}

int Uninitialize() {
    Send(ZvCefPluginLog, "fake: uninit");
    fake->worker.join();
    fake.reset();
    return 1;
}

int OnJsonMessage(const char* json) {
    KXP::Document request;
    KXP::ParseJSON(json, request);
    if (!request.HasMember("method") || !request["method"].IsString())
        throw std::runtime_error("Required string method unexpected type");
    const std::string method = request["method"].GetString();
    if (method == "ThrowOdd") throw 42;
    while (method == "Hang")
        pause();
    boost::asio::post(fake->worker, [text = std::string(json)] { Handle(text); });
    return 0;
}

ZvCefPluginInfo info = {1,       "Fake",  "Fake.Module", Initialize,   Start,
                        Nothing, Nothing, Stop,          Uninitialize, OnJsonMessage};

}  // namespace

extern "C" __attribute__((visibility("default"))) ZvCefPluginInfo* ZvCefPluginGetInfo() {
    info.version = Behaves("old") ? 0 : 1;
    return &info;
}
