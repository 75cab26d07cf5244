#include "base/PartFiles.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/Path.h"
#include "base/Places.h"
#include "base/RandomName.h"

namespace KXP {
namespace {

constexpr std::string_view kStart = ".";
constexpr std::string_view kEnd = ".part";
constexpr size_t kDigits = 16;

bool IsPartName(std::string_view name) {
    if (name.size() != kStart.size() + kDigits + kEnd.size()) return false;
    const std::string_view digits = name.substr(kStart.size(), kDigits);
    return name.substr(0, kStart.size()) == kStart && name.substr(name.size() - kEnd.size()) == kEnd &&
           digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// Each library that this code is linked into finds the same place.
std::string NotesFolder() {
    return Platform::AppSupportFolder() + kProductFolder + "/" + kShareFolder;
}

// A path is the whole note, with a line end that shows that it is complete. Returns whether nothing is left
// to do.
bool Remove(std::string path, int& removed) {
    if (path.empty() || path.front() != '/' || path.back() != '\n') return true;
    path.pop_back();
    if (!IsUsablePath(path) || !IsPartName(NameOf(path))) return true;
    const FileDescriptor folder(open(ParentOf(path).c_str(), Platform::kFolderForLookup | O_CLOEXEC));
    if (!folder.IsOpen()) return false;
    struct stat status {};
    if (fstatat(folder.get(), NameOf(path).c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT;
    if (!S_ISREG(status.st_mode)) return true;
    if (unlinkat(folder.get(), NameOf(path).c_str(), 0) != 0) return false;
    ++removed;
    return true;
}

}  // namespace

std::string NewPartName() {
    return std::string(kStart) + RandomName() + std::string(kEnd);
}

std::unique_ptr<WorkNote> NotePart(const FileDescriptor& folder, const std::string& name) {
    const std::string path = Platform::PathOf(folder.get());
    if (path.empty()) return nullptr;
    auto note = std::make_unique<WorkNote>(NotesFolder(), kPartNotes);
    if (!note->IsOpen() || !note->Add(path + "/" + name + "\n")) return nullptr;
    return note;
}

int RemoveAbandonedParts() {
    int removed = 0;
    SettleWorkNotes(NotesFolder(), kPartNotes,
                    [&](const std::string& path) { return Remove(path, removed); });
    return removed;
}

}  // namespace KXP
