#include "gallery-host/base/LineSplitter.h"

#include <utility>

namespace host {

void LineSplitter::Feed(std::string_view bytes) {
    while (!bytes.empty()) {
        const size_t end = bytes.find('\n');
        Append(bytes.substr(0, end));
        if (end == std::string_view::npos) return;
        EndLine();
        bytes.remove_prefix(end + 1);
    }
}

void LineSplitter::Finish() {
    if (tooLong_ || !line_.empty()) EndLine();
}

void LineSplitter::Append(std::string_view bytes) {
    if (tooLong_) return;
    if (line_.size() + bytes.size() > maxBytes_) {
        tooLong_ = true;
        std::string().swap(line_);
        return;
    }
    line_ += bytes;
}

void LineSplitter::EndLine() {
    const Line line = {number_++, std::exchange(tooLong_, false), std::exchange(line_, {})};
    consumer_(line);
}

}  // namespace host
