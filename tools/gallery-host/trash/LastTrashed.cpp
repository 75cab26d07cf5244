#include "gallery-host/trash/LastTrashed.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include <fcntl.h>

#include "base/NewFile.h"
#include "base/Places.h"
#include "base/ReadWrite.h"
#include "gallery-host/message/Envelope.h"

namespace host {
namespace {

constexpr size_t kMaxBytes = 64 << 20;
constexpr const char* kFile = "file";

std::string PlaceOfBatch() {
    return KXP::Platform::AppSupportFolder() + KXP::kProductFolder + "/" + KXP::kShareFolder +
           "/LastTrashed.jsonl";
}

}  // namespace

// A line is whole after each file, because the command may be killed before the next.
void TrashBatch::Add(const std::string& path) {
    if (!begun_) {
        begun_ = true;
        const std::string place = PlaceOfBatch();
        std::error_code error;
        std::filesystem::create_directories(std::filesystem::path(place).parent_path(), error);
        KXP::NewFile file(place);
        // Another command that goes on with its own batch writes into the file that this one replaces.
        if (file.IsOpen() && file.PutOver())
            file_ = KXP::FileDescriptor(open(place.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC));
    }
    if (file_.IsOpen()) KXP::WriteFully(file_, ToText(MakeTexts({{kFile, path}})) + "\n");
}

std::set<std::string> LastTrashed() {
    const KXP::FileDescriptor file(open(PlaceOfBatch().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    KXP::FileBytes content;
    std::set<std::string> paths;
    if (!file.IsOpen() || !KXP::ReadWhole(file, kMaxBytes, content)) return paths;
    std::string_view rest = content.view();
    for (size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        KXP::Document line;
        std::string error;
        if (ParseObject(rest.substr(0, end), line, error)) paths.insert(Text(line, kFile));
        rest.remove_prefix(end + 1);
    }
    return paths;
}

}  // namespace host
