// Takes the log for as long as it lives and keeps its lines. One at a time; lines may come from any thread.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "CobalixUtil.h"

class LogCapture {
  public:
    LogCapture() { KXP::LogInit(KXP::LocalApp, &LogCapture::Take, this); }
    ~LogCapture() { KXP::LogInit(KXP::LocalApp, nullptr, nullptr); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Whole lines, "[time][level][thread] file:line text".
    std::vector<std::string> Lines() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }

    bool Has(const std::string& text) const { return Count(text) > 0; }

    int Count(const std::string& text) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return static_cast<int>(std::count_if(lines_.begin(), lines_.end(), [&](const std::string& line) {
            return line.find(text) != std::string::npos;
        }));
    }

    // Whether there is a line of this level that ends in exactly this text.
    bool HasLine(int level, const std::string& text) const {
        const std::string levelMark = "][" + std::to_string(level) + "][";
        std::lock_guard<std::mutex> lock(mutex_);
        return std::any_of(lines_.begin(), lines_.end(), [&](const std::string& line) {
            return line.find(levelMark) != std::string::npos && line.size() > text.size() &&
                   line.compare(line.size() - text.size(), text.size(), text) == 0 &&
                   line[line.size() - text.size() - 1] == ' ';
        });
    }

    void Clear() {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.clear();
    }

  private:
    static void Take(const char* line, void* context) {
        auto* capture = static_cast<LogCapture*>(context);
        std::lock_guard<std::mutex> lock(capture->mutex_);
        capture->lines_.emplace_back(line);
    }

    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};
