#include "importing/BackgroundDigest.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace importing {
namespace {

// Small enough for the heap to keep their memory.
constexpr size_t kBlock = size_t{64} << 10;
constexpr size_t kMostWaiting = 8;

}  // namespace

BackgroundDigest::BackgroundDigest() {
    try {
        thread_ = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
        // The bytes are then digested as they come.
    }
}

BackgroundDigest::~BackgroundDigest() {
    End();
}

void BackgroundDigest::Add(const char* bytes, size_t size) {
    if (!thread_.joinable()) {
        digest_.Add(bytes, size);
        return;
    }
    while (size > 0) {
        const size_t part = std::min(size, kBlock - block_.size());
        block_.append(bytes, part);
        bytes += part;
        size -= part;
        if (block_.size() == kBlock) Pass();
    }
}

void BackgroundDigest::Pass() {
    {
        const KXP::MutexLock lock(mutex_);
        while (waiting_.size() >= kMostWaiting)
            changed_.Wait(mutex_);
        waiting_.push_back(std::move(block_));
        block_ = std::move(free_);
        free_.clear();
        changed_.NotifyAll();
    }
    block_.clear();
    block_.reserve(kBlock);
}

std::string BackgroundDigest::Finish() {
    if (thread_.joinable()) Pass();
    End();
    return digest_.Finish();
}

void BackgroundDigest::End() {
    if (!thread_.joinable()) return;
    {
        const KXP::MutexLock lock(mutex_);
        isEnded_ = true;
        changed_.NotifyAll();
    }
    thread_.join();
}

void BackgroundDigest::Run() {
    for (;;) {
        std::string block;
        {
            const KXP::MutexLock lock(mutex_);
            while (waiting_.empty() && !isEnded_)
                changed_.Wait(mutex_);
            if (waiting_.empty()) return;
            block = std::move(waiting_.front());
            waiting_.pop_front();
            changed_.NotifyAll();
        }
        digest_.Add(block.data(), block.size());
        const KXP::MutexLock lock(mutex_);
        free_ = std::move(block);
    }
}

}  // namespace importing
