// The library at work in gallery-host, and what it tells of the captures.
#pragma once

#include <set>
#include <string>

#include "common/Json.h"
#include "tests/host/ChildProcess.h"
#include "tests/support/TempFolder.h"

class TrackerProcess {
  public:
    // Is up when this returns. `known` are the captures that its tracker's file holds.
    TrackerProcess(const TempFolder& home, std::set<std::string> known);

    bool HasRebuilt() const { return rebuilt_; }
    // The payload of the answer.
    KXP::Document Ask(const std::string& method, const std::string& payload);
    // Without waiting for the answer.
    void Tell(const std::string& method, const std::string& payload);
    void ReadFor(int milliseconds);
    void Kill();
    // Ends it in order; its exit status.
    int End();

    // What is known by the notifications. With `silent` on, captures may come and go without.
    const std::set<std::string>& known() const { return known_; }
    bool silent() const { return silent_; }
    void SetSilent() { silent_ = true; }
    void SetKnown(std::set<std::string> known);
    bool IsTold(const std::string& path) const { return known_.count(path) > 0; }

    // Notifications that no change accounts for, and reports of the sanitizers.
    const std::string& wrong() const { return wrong_; }
    const std::string& log() const { return child_.err; }

  private:
    void ReadLines();
    void OnNotification(const KXP::Value& payload);
    void CheckLog();

    ChildProcess child_;
    size_t read_ = 0;  // of child_.out
    int asked_ = 0;
    bool rebuilt_ = false;
    bool silent_ = false;
    std::set<std::string> known_;
    std::string wrong_;
};
