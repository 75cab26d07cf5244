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

#include "common/json/JsonParse.h"
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
    std::map<std::string, int> seen;     // requests by method
    std::vector<std::string> held;       // requests that wait for one to release them
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

// The payload, which is an object, gains the members of every answer.
void Answer(const KXP::Document& request, std::string payload, int code, const std::string& status) {
    payload.back() = payload == "{}" ? ' ' : ',';
    const auto of = [&request](const char* member) { return ToText(request[member]); };
    Send(ZvCefPluginJsonMessage, R"({"system":)" + of("source_system") + R"(,"module":)" +
                                     of("source_module") + R"(,"method":)" + of("method") +
                                     R"(,"reference_uniqueid":)" + of("uniqueid") +
                                     R"(,"type":3072,"payload":)" + payload + R"("_return_code":)" +
                                     std::to_string(code) + R"(,"_return_status":")" + status + "\"}}");
}

void Notify(const std::string& method) {
    KXP::Document name;
    name.SetString(method, name.GetAllocator());
    for (const std::string& id : fake->subscribers[method])
        Send(ZvCefPluginJsonMessage,
             R"({"system":"Host","module":"gallery-host","uniqueid":"n","type":3073,"payload":)"
             R"({"n":1,"path":"/g\u001b[2J"},"method":)" +
                 ToText(name) + R"(,"reference_uniqueid":")" + id + "\"}");
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

void Handle(const std::string& text);

// Keeps a request that says "held" until one says "release", which is then handled last.
bool TakeHeld(const std::string& text) {
    if (text.find("\"release\"") != std::string::npos) {
        std::vector<std::string> held;
        held.swap(fake->held);
        for (std::string& one : held)
            Handle(one.replace(one.find("held"), 4, "kept"));
        return false;
    }
    if (text.find("held") == std::string::npos) return false;
    fake->held.push_back(text);
    return true;
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
    if (TakeHeld(text)) return;
    Change(method, request["payload"]);
    if (request["type"].GetInt() == 3073) {
        fake->subscribers[method].emplace_back(request["uniqueid"].GetString());
        if (Behaves("notifies")) Notify(method);
        return;
    }
    if (method == "Never") return;
    std::string payload = ToText(request["payload"]);
    if (request["payload"].HasMember("seen"))
        payload = "{\"seen\":" + std::to_string(fake->seen[request["payload"]["seen"].GetString()]) + "}";
    if (request["payload"].HasMember("notify")) Notify(request["payload"]["notify"].GetString());
    if (method == "Notify") Notify(request["payload"]["method"].GetString());
    if (method == "Log") {
        Send(ZvCefPluginLog, "a line with \x1b[31mcolour");
        Send(ZvCefPluginLog,
             "[now][4][Gallery FILE] Watch.cpp:1 seen at level " + Environment("COBALIX_LOG_LEVEL"));
        Send(ZvCefPluginLog, "[now][3][Gallery TASK] Work.cpp:1 named ][Gallery FILE] x");
    }
    if (method == "Big") payload = R"({"big":")" + std::string(1 << 20, 'x') + "\"}";
    if (method == "GetSettings")
        payload = R"({"settings":{"path":")" + Environment("HOME") + R"(/Videos/ZORVEX/Ovirastream")" +
                  (Behaves("rebuilds") ? R"(,"trackerStatus":"TrackerUpdateInProgress"}})" : "}}");
    if (const Canned* canned = FindCanned(method, payload)) {
        if (canned->answer) Answer(request, canned->answer, canned->code, canned->status);
    } else if (method == "Fail")
        Answer(request, payload, kInvalid, "Bad \\u001b[31margument");
    else
        Answer(request, payload, 0, "Success");
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
    boost::asio::post(fake->worker, [method, text = std::string(json)] {
        ++fake->seen[method];
        Handle(text);
    });
    return 0;
}

ZvCefPluginInfo info = {1,       "Fake",  "Fake.Module", Initialize,   Start,
                        Nothing, Nothing, Stop,          Uninitialize, OnJsonMessage};

}  // namespace

extern "C" __attribute__((visibility("default"))) ZvCefPluginInfo* ZvCefPluginGetInfo() {
    info.version = Behaves("old") ? 0 : 1;
    return &info;
}
