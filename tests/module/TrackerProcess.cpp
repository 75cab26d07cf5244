#include "tests/module/TrackerProcess.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <utility>

#include <gtest/gtest.h>

namespace {

// At 2 the tracker says whether it rebuilds; 4 shows each event.
std::string LogLevel() {
    const char* const wanted = std::getenv("GALLERY_WALK_LOG");
    return wanted ? wanted : "2";
}

ChildProcess::Options HomeIn(const TempFolder& home) {
    return {{"HOME=" + home.path(), "XDG_DATA_HOME=" + home / "data", "XDG_CONFIG_HOME=" + home / "config",
             "XDG_CACHE_HOME=" + home / "cache", "COBALIX_LOG_LEVEL=" + LogLevel()},
            false};
}

std::string PathIn(const KXP::Value& payload, const char* event) {
    const KXP::Value* path = KXP::JsonPointer((std::string("/") + event + "/ugc/path").c_str()).Get(payload);
    return path && path->IsString() ? path->GetString() : "";
}

}  // namespace

TrackerProcess::TrackerProcess(const TempFolder& home, std::set<std::string> known)
    : child_({"-v", "serve"}, HomeIn(home)), known_(std::move(known)) {
    Ask("GetSettings", "{}");
    // The tracker says so before the first answer is given.
    ReadFor(0);
    rebuilt_ = child_.err.find("rebuilding from GalleryPath") != std::string::npos;
}

void TrackerProcess::Tell(const std::string& method, const std::string& payload) {
    child_.Write("{\"method\":\"" + method + "\",\"uniqueid\":\"ask" + std::to_string(++asked_) +
                 "\",\"payload\":" + payload + "}\n");
}

KXP::Document TrackerProcess::Ask(const std::string& method, const std::string& payload) {
    Tell(method, payload);
    const std::string reference = "\"reference_uniqueid\":\"ask" + std::to_string(asked_) + "\"";
    EXPECT_TRUE(child_.ReadOutUntil(reference)) << child_.err;
    size_t at = std::min(child_.out.find(reference), child_.out.size());
    while (child_.out.find('\n', at) == std::string::npos && child_.ReadOutUntil("\n"))
        child_.ReadWithin(100);
    const size_t start = child_.out.rfind('\n', at) + 1;
    KXP::Document answer;
    answer.Parse(child_.out.substr(start, child_.out.find('\n', at) - start));
    ReadLines();
    return answer;
}

void TrackerProcess::ReadFor(int milliseconds) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    do {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        child_.ReadWithin(static_cast<int>(std::max<long>(left, 0)));
    } while (Clock::now() < end);
    ReadLines();
}

void TrackerProcess::ReadLines() {
    for (size_t end; (end = child_.out.find('\n', read_)) != std::string::npos; read_ = end + 1) {
        KXP::Document line;
        line.Parse(child_.out.substr(read_, end - read_));
        const KXP::Value* payload = line.IsObject() ? KXP::JsonPointer("/payload").Get(line) : nullptr;
        if (payload && payload->IsObject()) OnNotification(*payload);
    }
}

void TrackerProcess::OnNotification(const KXP::Value& payload) {
    const std::string saved = PathIn(payload, "captureSaved");
    const std::string deleted = PathIn(payload, "ugcDeleted");
    if (!saved.empty() && !known_.insert(saved).second && !silent_) wrong_ += "told again: " + saved + "\n";
    if (!deleted.empty() && known_.erase(deleted) == 0 && !silent_)
        wrong_ += "told gone, and was not known: " + deleted + "\n";
}

void TrackerProcess::SetKnown(std::set<std::string> known) {
    known_ = std::move(known);
    silent_ = false;
}

void TrackerProcess::CheckLog() {
    if (child_.err.find("Sanitizer") != std::string::npos ||
        child_.err.find("runtime error") != std::string::npos)
        wrong_ += child_.err;
}

void TrackerProcess::Kill() {
    child_.Signal(SIGKILL);
    child_.Wait();
    ReadLines();
    CheckLog();
}

int TrackerProcess::End() {
    const int status = child_.Wait();
    ReadLines();
    CheckLog();
    return status;
}
