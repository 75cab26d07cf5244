// The kernel's events as they come: bytes into watch descriptor, mask and name. Knows nothing of paths.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/FileDescriptor.h"

namespace watcher {

struct KernelEvent {
    int watch = -1;
    uint32_t mask = 0;
    std::string_view name;  // of the entry in the watched folder; empty when the event is about the folder
};

// Takes the first event off `bytes`. False when they do not begin with a whole event.
bool NextKernelEvent(std::string_view& bytes, KernelEvent& event);

class Inotify {
  public:
    // False with errno set when the user may have no more of them.
    bool Open();
    void Close() { file_.Close(); }
    bool IsOpen() const { return file_.IsOpen(); }
    int Descriptor() const { return file_.get(); }

    // Watches a folder: what comes, goes, moves and is written in it, and with `itself` what becomes of it.
    // Links are followed with `follow` alone. -1 with errno set.
    int Watch(const std::string& folder, bool itself, bool follow);
    void Unwatch(int watch);

    // Number of bytes; 0 when nothing is there or reading fails.
    size_t Read(char* buffer, size_t size);

  private:
    KXP::FileDescriptor file_;
};

}  // namespace watcher
