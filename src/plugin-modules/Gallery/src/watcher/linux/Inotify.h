// The kernel's events, parsed from bytes into watch descriptor, mask and name. Knows nothing of paths.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/FileDescriptor.h"
#include "base/ReadWrite.h"

namespace watcher {

struct KernelEvent {
    int watch = -1;
    uint32_t mask = 0;
    std::string_view name;  // of the entry in the watched folder; empty for an event of the folder itself
};

// Removes the first event from `bytes`. Returns false when they do not begin with a whole event.
bool NextKernelEvent(std::string_view& bytes, KernelEvent& event);

class Inotify {
  public:
    // Returns false, with errno set, when the user may open no more of them.
    bool Open();
    void Close() { file_.Close(); }
    bool IsOpen() const { return file_.IsOpen(); }
    int Descriptor() const { return file_.get(); }

    // Watches what is created, removed, moved and closed after writing in a folder, and changes of times;
    // with `writes`, each write too. A `named` folder may be a link, and its own removal or move is watched.
    // Returns the watch descriptor, or -1 with errno set.
    int Watch(const std::string& folder, bool writes, bool named);
    void Unwatch(int watch);

    // Returns the number of bytes; 0 when there are none or reading fails.
    size_t Read(char* buffer, size_t size);

  private:
    KXP::FileDescriptor file_;
};

}  // namespace watcher
