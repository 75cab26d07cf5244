#include "tests/faults/Gallery.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "sample-media/MadeMedia.h"
#include "tests/module/TrackerRecords.h"
#include "tests/support/CaptureBytes.h"

namespace {

namespace fs = std::filesystem;

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void WriteAll(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string Video(const char* source, const char* inner) {
    made::Video video;
    video.tagc = captures::Block(source, inner);
    return ReadAll(made::Path(video));
}

}  // namespace

Product::Product(const std::string& productRoot, const std::string& home) {
    setenv("COBALIX_LOG_LEVEL", "1", 0);
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_DATA_HOME", (home + "/data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home + "/config").c_str(), 1);
    setenv("XDG_CACHE_HOME", (home + "/cache").c_str(), 1);
    const std::string path = productRoot + "/Contents/Frameworks/plugins/Gallery/libGallery.so";
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error(dlerror());
    info_ = reinterpret_cast<ZvCefPluginGetInfoFn>(dlsym(library, "ZvCefPluginGetInfo"))();
}

bool Product::Up() {
    isUp_ = Command([&] { return info_->Initialize(&FakeContainer::Callback, "{}", &container_); }) &&
            Command([&] { return info_->Start(); });
    return isUp_;
}

void Product::Down() {
    if (isUp_) (void)Command([&] { return info_->Stop(); });
    isUp_ = false;
    (void)info_->Uninitialize();
}

// Whether it succeeded, which is notified.
bool Product::Command(const std::function<int()>& command) {
    const size_t succeeded = container_.All(1).size();
    const size_t failed = container_.All(2).size();
    if (command() != 2) return false;
    const auto until = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (std::chrono::steady_clock::now() < until) {
        if (container_.All(1).size() > succeeded) return true;
        if (container_.All(2).size() > failed) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    throw std::runtime_error("a command has no end");
}

std::string Product::Ask(const std::string& method, const std::string& payload) {
    const std::string id = "ask" + std::to_string(++asked_);
    info_->OnJsonMessage(Envelope(method, id, payload).c_str());
    std::string answer = container_.WaitFor(3, "\"reference_uniqueid\":\"" + id + "\"").text;
    if (answer.empty()) throw std::runtime_error("no answer to " + method);
    return answer;
}

std::string Product::Log() const {
    std::string log;
    for (const auto& line : container_.All(6))
        log += line.text + "\n";
    return log;
}

SmallGallery::SmallGallery(std::string home)
    : home_(std::move(home)),
      folder_(home_ + "/Videos/ZORVEX/Ovirastream"),
      tracker_(home_ + "/data/ZORVEX/OvirastreamX/Share/UGCTracker.json") {
    files_["Race/a.mp4"] = Video("Ovirastream SHARE", R"({"DRSAppName":"Race"})");
    files_["Race/h.mp4"] = Video("Ovirastream SDK", R"({"HighlightGroupId":"g","HighlightName":"won"})");
    files_["Race/b.png"] = captures::Png(captures::PngText("Software", "Ovirastream SHARE"));
    files_["Art/c.jpg"] = captures::OwnJpeg();
    files_["Art/foreign.txt"] = "nobody but its owner knows this";
}

void SmallGallery::LayOut() const {
    for (const auto& entry : fs::directory_iterator(home_))
        fs::remove_all(entry.path());
    for (const auto& [name, bytes] : files_)
        WriteAll(Path(name), bytes);
}

void SmallGallery::AddPicture(const std::string& name) const {
    const std::string bytes = captures::Png(captures::PngText("Software", "Ovirastream LUMIS"));
    const std::string aside = home_ + "/aside";
    const int file = open(aside.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    if (write(file, bytes.data(), bytes.size()) < 0) throw std::runtime_error("cannot write " + name);
    close(file);
    // Whole at once: the process may be killed at any moment.
    if (rename(aside.c_str(), Path(name).c_str()) != 0) throw std::runtime_error("cannot make " + name);
}

std::map<std::string, std::string> SmallGallery::Contents() const {
    std::map<std::string, std::string> contents;
    for (const auto& entry : fs::recursive_directory_iterator(folder_))
        if (entry.is_regular_file()) contents[fs::relative(entry.path(), folder_)] = ReadAll(entry.path());
    return contents;
}

std::string SmallGallery::WhyUntrue() const {
    std::set<std::string> onDisk;
    for (const auto& [name, bytes] : Contents()) {
        media::SniffResult sniffed;
        if (media::SniffFile(Path(name), sniffed) >= 0 && sniffed.isOwn) onDisk.insert(Path(name));
    }
    TrackerRecords records;
    if (!ReadTracker(tracker_, records)) return "the tracker's file cannot be read";
    std::string why = records.wrong;
    for (const auto& [path, id] : records.ids)
        if (onDisk.erase(path) == 0) why += "on record, and not there: " + path + "\n";
    for (const std::string& path : onDisk)
        why += "not on record: " + path + "\n";
    return why;
}

std::string SmallGallery::AwaitTrueRecord() const {
    const auto until = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    std::string why;
    while (!(why = WhyUntrue()).empty() && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return why;
}

std::string SmallGallery::CaptionOf(const std::string& name) const {
    TrackerRecords records;
    return ReadTracker(tracker_, records) ? records.captions[Path(name)] : "";
}
