// Videos of all containers, by the media library.
#pragma once

#include <memory>
#include <string>

#include "base/FileDescriptor.h"
#include "importing/DigestThread.h"
#include "importing/ReadListener.h"
#include "libraries/ovnx-media/client/MediaLibrary.h"

namespace importing {

class VideoLibrary {
  public:
    // `folder` has the library, which is opened when it is first needed. The functions throw ImportError, and
    // std::runtime_error when there is no library.
    VideoLibrary(std::string folder, DigestThread& digests) : folder_(std::move(folder)), digests_(digests) {}

    // Of all packets: the same of a recording in any container.
    std::string DigestOf(const KXP::FileDescriptor& video, const ReadListener& onRead);

    // Throws when the video cannot be converted for its codecs.
    void Check(const KXP::FileDescriptor& video);
    // Writes an MP4 file to an empty one, and returns the digest.
    std::string Convert(const KXP::FileDescriptor& video, const KXP::FileDescriptor& out,
                        const ReadListener& onRead);

  private:
    const ovnxmedia::MediaLibrary& Library();

    const std::string folder_;
    DigestThread& digests_;
    std::unique_ptr<const ovnxmedia::MediaLibrary> library_;
};

}  // namespace importing
