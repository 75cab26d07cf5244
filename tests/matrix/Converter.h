// The media library as an import uses it.
#pragma once

#include <string>
#include <vector>

#include <unistd.h>

#include "base/FileDescriptor.h"
#include "libraries/ovnx-media/client/MediaLibrary.h"

namespace matrix {

class Converter {
  public:
    // Why it is refused; empty for success.
    std::string Convert(const std::string& from, const std::string& to) const {
        char message[200] = "";
        OvnxMediaPacketListener listener{};
        listener.message = message;
        listener.messageSize = sizeof message;
        const KXP::FileDescriptor input = KXP::OpenForRead(from);
        KXP::OpenForWrite(to, 0600);
        const KXP::FileDescriptor output = KXP::OpenForUpdate(to);
        if (ftruncate(output.get(), 0) != 0) return "it cannot be written";
        const int32_t status = library_.convert(input.get(), output.get(), &listener);
        return status == OVNX_MEDIA_OK ? "" : message + std::string(" (") + std::to_string(status) + ")";
    }

    // The bytes of each track.
    std::vector<std::string> PacketsOf(const std::string& path) const {
        std::vector<std::string> tracks;
        OvnxMediaPacketListener listener{};
        listener.packet = [](void* context, uint32_t track, const char* bytes, size_t size, void*) {
            auto& all = *static_cast<std::vector<std::string>*>(context);
            if (track >= all.size()) all.resize(track + 1);
            all[track].append(bytes, size);
            return 0;
        };
        listener.context = &tracks;
        const KXP::FileDescriptor file = KXP::OpenForRead(path);
        if (library_.packets(file.get(), &listener) != OVNX_MEDIA_OK) tracks.clear();
        return tracks;
    }

  private:
    const ovnxmedia::MediaLibrary library_{PRODUCT_DEPENDENCIES};
};

}  // namespace matrix
