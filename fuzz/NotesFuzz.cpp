// A note on a trim that was interrupted, which anybody can edit.
#include <string>

#include "fuzz/Plain.h"
#include "plugin-modules/Gallery/src/editing/EditNote.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::optional<NotedEdit> note = NotedEdit::Parse(text);
    const size_t line = text.find('\n') + 1;
    const std::optional<NotedEdit> begun = NotedEdit::Parse(text.substr(0, line));
    if (!note) return 0;
    plain::Demand(note->capture.front() == '/' && note->capture.find('\0') == std::string::npos);
    plain::Demand(note->attempt >= 1 && note->attempt <= kClipAttempts);
    // The clip stands beside the capture.
    const std::string clip = ClipPath(note->capture, note->attempt);
    plain::Demand(clip != note->capture && clip.rfind('/') == note->capture.rfind('/'));
    // A cut off end is as if it had not been added.
    plain::Demand(begun && !begun->whole && begun->capture == note->capture && begun->begun == note->begun);
    const size_t end = text.find('\n', line);
    plain::Demand(!note->whole || end != std::string::npos);
    if (end != std::string::npos) plain::Demand(!NotedEdit::Parse(text.substr(0, end))->whole);
    return 0;
}
