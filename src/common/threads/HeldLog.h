// Log lines that are formed while a lock is held, for sending after the unlock: a line is a callback into the
// client, which may call back or wait for another thread that wants the same lock.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "CobalixUtil.h"

namespace KXP {

// Sends its lines, in their order, when it goes out of scope: declare it before the lock. Belongs to one
// thread.
class HeldLog {
  public:
    HeldLog() = default;
    ~HeldLog() {
        for (const Line& line : lines_)
            LogMessage(line.level, line.file, line.line, "%s", line.text.c_str());
    }
    HeldLog(const HeldLog&) = delete;
    HeldLog& operator=(const HeldLog&) = delete;

    // The place in the source is the caller's.
    void Add(LogLevel level, std::string text, const char* file = __builtin_FILE(),
             int line = __builtin_LINE()) {
        lines_.push_back({level, std::move(text), file, line});
    }

  private:
    struct Line {
        LogLevel level;
        std::string text;
        const char* file;
        int line;
    };

    std::vector<Line> lines_;
};

}  // namespace KXP
