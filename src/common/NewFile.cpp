#include "common/NewFile.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "common/System.h"
#include "common/TextUtil.h"

namespace KXP {
namespace {

constexpr mode_t kPrivateFile = 0600;

// The name is as long whatever the place's own is, which may be as long as names can be.
std::string HiddenBeside(const std::string& place) {
    return place.substr(0, place.rfind('/') + 1) + "." + GenerateGUID();
}

}  // namespace

NewFile::NewFile(std::string place) : place_(std::move(place)) {
    // The system would take the text before a zero byte, which is another place.
    if (place_.find('\0') != std::string::npos) {
        errno = EINVAL;
        return;
    }
    const std::string hidden = HiddenBeside(place_);
    file_ = FileDescriptor(open(hidden.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivateFile));
    if (IsOpen()) hidden_ = hidden;
}

NewFile::~NewFile() {
    if (!hidden_.empty()) (void)unlink(hidden_.c_str());
}

bool NewFile::Put(bool replace) {
    if (!file_.Close()) return false;
    const bool put = replace ? std::rename(hidden_.c_str(), place_.c_str()) == 0
                             : Platform::RenameNoReplace(hidden_, place_);
    if (put) hidden_.clear();
    return put;
}

}  // namespace KXP
