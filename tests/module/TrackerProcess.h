// The library at work in gallery-host, and what it tells of the captures.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "common/json/Json.h"
#include "tests/host/ChildProcess.h"
#include "tests/support/TempFolder.h"

class TrackerProcess {
  public:
    // Is up when this returns. `known` are the captures that its tracker's file holds.
    TrackerProcess(const TempFolder& home, std::set<std::string> known)
        : child_({"-v", "serve"}, HomeIn(home)), known_(std::move(known)) {
        Ask("GetSettings", "{}");
        // The tracker says so before the first answer is given.
        ReadFor(0);
        rebuilt_ = child_.err.find("rebuilding from GalleryPath") != std::string::npos;
    }

    bool HasRebuilt() const { return rebuilt_; }

    // Without waiting for the answer.
    void Tell(const std::string& method, const std::string& payload) {
        child_.Write("{\"method\":\"" + method + "\",\"uniqueid\":\"ask" + std::to_string(++asked_) +
                     "\",\"payload\":" + payload + "}\n");
    }

    // The whole answer.
    KXP::Document Ask(const std::string& method, const std::string& payload) {
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

    void ReadFor(int milliseconds) {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
        do {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
            child_.ReadWithin(static_cast<int>(std::max<long>(left.count(), 0)));
        } while (Clock::now() < end);
        ReadLines();
    }

    void Kill() {
        child_.Signal(SIGKILL);
        End();
    }
    // Ends it in order; its exit status.
    int End() {
        const int status = child_.Wait();
        ReadLines();
        for (const char* report : {"Sanitizer", "runtime error"})
            if (child_.err.find(report) != std::string::npos) wrong_ += child_.err;
        return status;
    }

    // What is known by the notifications. With `silent` on, captures may come and go without.
    const std::set<std::string>& known() const { return known_; }
    bool silent() const { return silent_; }
    void SetSilent() { silent_ = true; }
    void SetKnown(std::set<std::string> known) {
        known_ = std::move(known);
        silent_ = false;
    }

    // Notifications that no change accounts for, and reports of the sanitizers.
    const std::string& wrong() const { return wrong_; }
    const std::string& log() const { return child_.err; }

  private:
    static ChildProcess::Options HomeIn(const TempFolder& home) {
        // At 2 the tracker says whether it rebuilds; 4 shows each event.
        const char* const level = std::getenv("GALLERY_WALK_LOG");
        return {{"HOME=" + home.path(), "XDG_DATA_HOME=" + home / "data",
                 "XDG_CONFIG_HOME=" + home / "config", "XDG_CACHE_HOME=" + home / "cache",
                 std::string("COBALIX_LOG_LEVEL=") + (level ? level : "2")}};
    }

    static std::string PathIn(const KXP::Value& line, const char* event) {
        const KXP::Value* path =
            rapidjson::GenericPointer<KXP::Value>((std::string("/payload/") + event + "/ugc/path").c_str())
                .Get(line);
        return path && path->IsString() ? path->GetString() : "";
    }

    void ReadLines() {
        for (size_t end; (end = child_.out.find('\n', read_)) != std::string::npos; read_ = end + 1) {
            KXP::Document line;
            line.Parse(child_.out.substr(read_, end - read_));
            const std::string saved = PathIn(line, "captureSaved");
            const std::string deleted = PathIn(line, "ugcDeleted");
            if (!saved.empty() && !known_.insert(saved).second && !silent_)
                wrong_ += "told again: " + saved + "\n";
            if (!deleted.empty() && known_.erase(deleted) == 0 && !silent_)
                wrong_ += "told gone, and was not known: " + deleted + "\n";
        }
    }

    ChildProcess child_;
    size_t read_ = 0;  // of child_.out
    int asked_ = 0;
    bool rebuilt_ = false;
    bool silent_ = false;
    std::set<std::string> known_;
    std::string wrong_;
};
