// Thumbnails on their way from the library, a few at a time: more at once are no faster, and a request that
// was sent cannot be recalled when its page has scrolled on.
#pragma once

#include <deque>
#include <vector>

#include "gallery-host/page/Library.h"
#include "gallery-host/page/PageBus.h"

namespace host::page {

// For the thread of the session.
class ThumbQueue {
  public:
    static constexpr size_t kAtOnce = 3;

    explicit ThumbQueue(Library& library) : library_(library) {}

    void Add(ThumbnailRequest request) { waiting_.push_back(std::move(request)); }
    // Sends what may be sent, the oldest first. Throws Failure as Session::Send does.
    void Advance();

  private:
    void Send(ThumbnailRequest request);

    Library& library_;
    std::deque<ThumbnailRequest> waiting_;
    size_t running_ = 0;
};

}  // namespace host::page
