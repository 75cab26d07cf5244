// Writes a session to a file: a line for each message, {"ms":12,"in":{...}} for one to the plug-in and
// {"ms":15,"out":{...}} for one from it, with the milliseconds since the start. The user's home is written
// as "$HOME".
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "base/FileDescriptor.h"
#include "common/json/Json.h"
#include "gallery-host/recording/Redactor.h"

namespace host {

class Recorder {
  public:
    // Throws Failure(kExitFailed) when the file is there already or cannot be made.
    Recorder(const std::string& path, bool redact);

    // Both throw Failure(kExitFailed) when the file cannot be written.
    void In(const KXP::Value& message) { Write("in", message); }
    void Out(const KXP::Value& message) { Write("out", message); }

  private:
    void Write(const char* direction, const KXP::Value& message);

    const std::string path_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    const std::unique_ptr<Redactor> redactor_;  // null: as it was
    KXP::FileDescriptor file_;
};

struct RecordedMessage {
    bool isIn = false;
    size_t line = 0;  // of the file, from 1
    KXP::Document message;
};

// The messages in their order, with the home of this user. Throws Failure(kExitFailed), with the line, for a
// file that is no recording.
std::vector<RecordedMessage> ReadRecording(const std::string& path);

}  // namespace host
