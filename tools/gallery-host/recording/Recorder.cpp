#include "gallery-host/recording/Recorder.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>

#include "base/ReadWrite.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/LineSplitter.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/recording/TextChange.h"

namespace host {
namespace {

constexpr size_t kMaxLineBytes = 64 << 20;

Failure FailedOn(const std::string& path) {
    return {kExitFailed, path + ": " + std::strerror(errno)};
}

RecordedMessage ReadMessage(const LineSplitter::Line& line, const std::string& path) {
    KXP::Document document;
    std::string error = "it is longer than any recorded message";
    RecordedMessage recorded;
    recorded.line = line.number;
    if (!line.tooLong && ParseObject(line.text, document, error)) {
        const KXP::Value* const in = Find(document, "in");
        const KXP::Value* const out = Find(document, "out");
        const KXP::Value* const message = in ? in : out;
        recorded.isIn = in != nullptr;
        if (message && message->IsObject()) {
            recorded.message.CopyFrom(*message, recorded.message.GetAllocator());
            ChangeTexts(
                recorded.message, [](auto, const std::string& text) { return WithHome(text); },
                recorded.message.GetAllocator());
            return recorded;
        }
        error = "it is no recorded message";
    }
    throw Failure(kExitFailed, path + ", line " + std::to_string(line.number) + ": " + error);
}

}  // namespace

Recorder::Recorder(const std::string& path, bool redact)
    : path_(path),
      redactor_(redact ? std::make_unique<Redactor>() : nullptr),
      file_(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
    if (!file_.IsOpen()) throw FailedOn(path_);
}

void Recorder::Write(const char* direction, const KXP::Value& message) {
    using std::chrono::milliseconds;
    KXP::Document line(rapidjson::kObjectType);
    KXP::Allocator& allocator = line.GetAllocator();
    const auto since = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start_);
    line.AddMember("ms", static_cast<int64_t>(since.count()), allocator);
    KXP::Value copy(message, allocator);
    ChangeTexts(
        copy, [](auto, const std::string& text) { return WithoutHome(text); }, allocator);
    if (redactor_) redactor_->Redact(copy, allocator);
    line.AddMember(rapidjson::StringRef(direction), copy, allocator);
    if (!KXP::WriteFully(file_, ToText(line) + "\n")) throw FailedOn(path_);
}

std::vector<RecordedMessage> ReadRecording(const std::string& path) {
    const KXP::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen()) throw FailedOn(path);
    std::vector<RecordedMessage> messages;
    LineSplitter lines(kMaxLineBytes, [&](const LineSplitter::Line& line) {
        if (line.tooLong || !line.text.empty()) messages.push_back(ReadMessage(line, path));
    });
    std::vector<char> bytes(1 << 16);
    long got = 0;
    while ((got = KXP::ReadSome(file, bytes.data(), bytes.size())) > 0)
        lines.Feed({bytes.data(), static_cast<size_t>(got)});
    if (got < 0) throw FailedOn(path);
    lines.Finish();
    return messages;
}

}  // namespace host
