#include "gallery-host/doctor/ProductChecks.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "base/ReadWrite.h"
#include "common/json/JSONFile.h"
#include "core/container/cef/ZvCefPlugin.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kReinstall = "install the product again";
constexpr unsigned kLoadSeconds = 20;
// What recorders write and players of captures need.
constexpr std::array<const char*, 6> kCodecs = {"h264", "hevc", "vp9", "libdav1d", "aac", "opus"};

std::string LinkerError() {
    const char* const error = dlerror();
    return error ? error : "it cannot be loaded";
}

// What follows says nothing of the library when it is all right, and the reason when it is not.
std::string FaultOfPlugin(void* library) {
    const auto getInfo = reinterpret_cast<ZvCefPluginGetInfoFn>(dlsym(library, "ZvCefPluginGetInfo"));
    if (!getInfo) return LinkerError();
    const ZvCefPluginInfo* const info = getInfo();
    if (info->version == 1) return {};
    return "it is made for version " + std::to_string(info->version) + " of the container's interface, not 1";
}

std::string FaultOfMedia(void* library) {
    if (!dlsym(library, "OvnxMediaProbe")) return LinkerError();
    using FindDecoder = const void* (*)(const char*);
    const auto find = reinterpret_cast<FindDecoder>(dlsym(library, "avcodec_find_decoder_by_name"));
    std::string missing;
    for (const char* codec : kCodecs)
        if (find && !find(codec)) missing += std::string(missing.empty() ? "" : ", ") + codec;
    return missing.empty() ? missing : "its codecs lack " + missing;
}

std::string NoFault(void*) {
    return {};
}

// Runs in the child, which ends with it.
[[noreturn]] void Load(const std::string& path, const std::function<std::string(void*)>& faultOf,
                       int report) {
    alarm(kLoadSeconds);
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    const std::string fault = library ? faultOf(library) : LinkerError();
    KXP::WriteFully(report, fault);
    _exit(0);
}

std::string FaultOf(const std::string& path, const std::function<std::string(void*)>& faultOf) {
    if (!fs::exists(path)) return "it is missing";
    int ends[2];
    if (pipe(ends) != 0) return std::strerror(errno);
    const KXP::FileDescriptor report(ends[0]);
    KXP::FileDescriptor theirs(ends[1]);
    const pid_t child = fork();
    if (child < 0) return std::strerror(errno);
    if (child == 0) Load(path, faultOf, theirs.get());
    theirs = {};
    std::string fault;
    char bytes[4096];
    for (long got = 0; (got = KXP::ReadSome(report, bytes, sizeof bytes)) > 0;)
        fault.append(bytes, static_cast<size_t>(got));
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return fault;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM ? "loading it does not end"
                                                              : "loading it ends the program";
}

Finding CheckLibrary(const std::string& path, const std::function<std::string(void*)>& faultOf) {
    const std::string fault = FaultOf(path, faultOf);
    if (fault.empty()) return {"library", Health::kGood, path, {}, {}};
    return {"library", Health::kBad, path + ": " + fault, kReinstall, {}};
}

Finding CheckConfig(const fs::path& root) {
    const std::string path = (root / "Resources/data/configs/config.json").string();
    KXP::JSONFile file;
    file.Init(path);
    KXP::Document config;
    if (file.ReadAndParseJSON(config).Failed())
        return {"product", Health::kBad, path + ": it is missing or no JSON object", kReinstall, {}};
    return {"product", Health::kGood, root.string(), {}, {}};
}

Finding CheckPage(const fs::path& root) {
    const std::string path = (root / "Resources/page/index.html").string();
    if (fs::exists(path)) return {"page", Health::kGood, path, {}, {}};
    return {
        "page", Health::kNote, "the gallery page is not installed", "\"page\" does not work without it", {}};
}

// Only the start of an address is looked at; a download checks the rest.
Finding CheckCloud() {
    const char* const set = std::getenv("COBALIX_CLOUD_SYNC_URL");
    const std::string address = set ? set : "";
    if (address.empty()) return {"cloud", Health::kGood, "the folder that comes with the product", {}, {}};
    for (const char* start : {"https://", "http://localhost", "http://127.0.0.1", "http://[::1]"})
        if (address.rfind(start, 0) == 0) return {"cloud", Health::kGood, address, {}, {}};
    constexpr std::string_view kFile = "file://";
    const bool isFile = address.rfind(kFile, 0) == 0;
    if (isFile && fs::is_directory(address.substr(kFile.size())))
        return {"cloud", Health::kGood, address, {}, {}};
    return {
        "cloud",
        Health::kBad,
        "COBALIX_CLOUD_SYNC_URL is " + address + (isFile ? ", which is no folder" : ", which is not used"),
        "set it to an address with https, or to a folder with file",
        {}};
}

}  // namespace

Findings CheckProduct(const std::string& plugin) {
    // Contents/Frameworks/plugins/Gallery/libGallery.so
    const fs::path root = fs::path(plugin).parent_path().parent_path().parent_path().parent_path();
    const fs::path libraries = root / "Frameworks/dependencies";
    Findings findings = {CheckConfig(root), CheckLibrary(plugin, FaultOfPlugin)};
    const std::string ending = fs::path(plugin).extension().string();
    findings.push_back(CheckLibrary((libraries / ("libovnxmedia" + ending)).string(), FaultOfMedia));
    if (findings.back().health == Health::kGood) findings.back().text += ", with its codecs";
    for (const char* name : {"libovnxcodelib", "libCobalixUtil", "libCobalixCloud"})
        findings.push_back(CheckLibrary((libraries / (name + ending)).string(), NoFault));
    findings.push_back(CheckPage(root));
    findings.push_back(CheckCloud());
    return findings;
}

}  // namespace host
