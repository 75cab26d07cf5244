// The library with the codecs, opened at run time in a symbol scope of its own.
#pragma once

#include "OvnxMedia.h"

namespace codelib {

class MediaLibrary {
  public:
    // Opens the one that lies beside this library. Throws std::runtime_error with the linker's text.
    MediaLibrary();
    ~MediaLibrary();
    MediaLibrary(const MediaLibrary&) = delete;
    MediaLibrary& operator=(const MediaLibrary&) = delete;

    decltype(&OvnxMediaRemux) remux() const { return remux_; }

  private:
    // Null when dlerror has the reason.
    static void* Open();

    void* handle_ = Open();
    decltype(&OvnxMediaRemux) remux_ = nullptr;
};

}  // namespace codelib
