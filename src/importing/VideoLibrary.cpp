#include "importing/VideoLibrary.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <utility>
#include <vector>

#include "importing/Splice.h"
#include "libraries/digest/Sha256.h"

namespace importing {
namespace {

// What one call of the library hears. No exception passes through it.
class Listening {
  public:
    Listening(const ovnxmedia::MediaLibrary& library, const ReadListener& onRead, DigestThread& digests)
        : release_(library.releasePacket), onRead_(onRead), digests_(digests) {
        listener_.packet = OnPacket;
        listener_.restart = OnRestart;
        listener_.read = OnRead;
        listener_.context = this;
        listener_.message = message_;
        listener_.messageSize = sizeof message_;
    }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

    const OvnxMediaPacketListener* listener() const { return &listener_; }

    void Expect(int32_t status) const {
        if (failure_) std::rethrow_exception(failure_);
        if (status == OVNX_MEDIA_OK) return;
        const std::string text = message_;
        throw ImportError(status == OVNX_MEDIA_UNWRITABLE ? "cannot be written: " + text : text);
    }

    // Whatever the order of the tracks is.
    std::string Digest() {
        std::vector<std::string> digests;
        for (BackgroundDigest& track : tracks_)
            digests.push_back(track.Finish());
        std::sort(digests.begin(), digests.end());
        KXP::Sha256 all;
        for (const std::string& digest : digests)
            all.Add(digest.data(), digest.size());
        return all.Finish();
    }

  private:
    template <typename Work>
    void Try(const Work& work) noexcept {
        try {
            if (!failure_) work();
        } catch (...) {
            failure_ = std::current_exception();
        }
    }

    static int OnPacket(void* self, uint32_t track, const char* bytes, size_t size, void* owner) noexcept {
        auto& listening = *static_cast<Listening*>(self);
        DigestThread::Owner kept(owner, listening.release_);
        listening.Try([&] {
            while (listening.tracks_.size() <= track)
                listening.tracks_.emplace_back(listening.digests_);
            BackgroundDigest& digest = listening.tracks_[track];
            kept ? digest.Add({bytes, size}, std::move(kept)) : digest.Add(bytes, size);
        });
        return owner != nullptr;
    }

    static void OnRestart(void* self) noexcept { static_cast<Listening*>(self)->tracks_.clear(); }

    static int OnRead(void* self, uint64_t bytes) noexcept {
        auto& listening = *static_cast<Listening*>(self);
        if (listening.onRead_) listening.Try([&] { listening.onRead_(bytes); });
        return listening.failure_ ? 1 : 0;
    }

    void (*const release_)(void*);
    const ReadListener& onRead_;
    DigestThread& digests_;
    OvnxMediaPacketListener listener_{};
    char message_[200] = "";
    std::deque<BackgroundDigest> tracks_;
    std::exception_ptr failure_;
};

}  // namespace

const ovnxmedia::MediaLibrary& VideoLibrary::Library() {
    if (!library_) library_ = std::make_unique<const ovnxmedia::MediaLibrary>(folder_);
    return *library_;
}

std::string VideoLibrary::DigestOf(const KXP::FileDescriptor& video, const ReadListener& onRead) {
    Listening listening(Library(), onRead, digests_);
    listening.Expect(Library().packets(video.get(), listening.listener()));
    return listening.Digest();
}

void VideoLibrary::Check(const KXP::FileDescriptor& video) {
    const ReadListener nobody;
    const Listening listening(Library(), nobody, digests_);
    listening.Expect(Library().convert(video.get(), -1, listening.listener()));
}

std::string VideoLibrary::Convert(const KXP::FileDescriptor& video, const KXP::FileDescriptor& out,
                                  const ReadListener& onRead) {
    Listening listening(Library(), onRead, digests_);
    listening.Expect(Library().convert(video.get(), out.get(), listening.listener()));
    return listening.Digest();
}

}  // namespace importing
