#include "importing/DigestThread.h"

#include <algorithm>
#include <cstring>
#include <system_error>
#include <utility>

namespace importing {
namespace {

// Enough for both threads to have work, and little memory.
constexpr size_t kMostBytes = 3 * DigestThread::kBlock;

DigestThread::Block MakeBlock() {
    return DigestThread::Block(static_cast<char*>(KXP::AllocateInSlab(DigestThread::kBlock)));
}

}  // namespace

DigestThread::DigestThread() {
    try {
        thread_ = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
        // The bytes are then digested as they come.
    }
}

DigestThread::~DigestThread() {
    if (!thread_.joinable()) return;
    {
        const KXP::MutexLock lock(mutex_);
        isEnded_ = true;
        changed_.NotifyAll();
    }
    thread_.join();
}

// Each wake-up costs, so that there is none while both threads have work.
void DigestThread::WaitUntilAtMost(size_t bytes) {
    isWaiting_ = true;
    while (bytes_ > bytes)
        changed_.Wait(mutex_);
    isWaiting_ = false;
}

DigestThread::Block DigestThread::Take() {
    const KXP::MutexLock lock(mutex_);
    WaitUntilAtMost(kMostBytes - kBlock);
    if (free_.empty()) return MakeBlock();
    Block block = std::move(free_.back());
    free_.pop_back();
    return block;
}

void DigestThread::Add(KXP::Sha256& digest, Block block, size_t size) {
    const std::string_view bytes(block.get(), size);
    Add({&digest, bytes, std::move(block)});
}

void DigestThread::Add(KXP::Sha256& digest, std::string_view bytes) {
    Add({&digest, bytes, nullptr});
}

void DigestThread::Add(KXP::Sha256& digest, std::string_view bytes, Owner owner) {
    {
        const KXP::MutexLock lock(mutex_);
        WaitUntilAtMost(kMostBytes);
    }
    Add({&digest, bytes, nullptr, std::move(owner)});
}

void DigestThread::Add(Job job) {
    if (!thread_.joinable()) return Digest(job);
    const KXP::MutexLock lock(mutex_);
    bytes_ += job.bytes.size();
    jobs_.push_back(std::move(job));
    if (jobs_.size() == 1) changed_.NotifyAll();
}

void DigestThread::Finish() {
    {
        const KXP::MutexLock lock(mutex_);
        WaitUntilAtMost(0);
    }
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void DigestThread::Digest(const Job& job) noexcept {
    try {
        if (!failure_) job.digest->Add(job.bytes.data(), job.bytes.size());
    } catch (...) {
        failure_ = std::current_exception();
    }
}

void DigestThread::Run() {
    for (;;) {
        const Job* job = nullptr;
        {
            const KXP::MutexLock lock(mutex_);
            while (jobs_.empty() && !isEnded_)
                changed_.Wait(mutex_);
            if (jobs_.empty()) return;
            job = &jobs_.front();
        }
        // It stays where it is when others are added.
        Digest(*job);
        Owner owner{nullptr, nullptr};  // released after the lock
        const KXP::MutexLock lock(mutex_);
        Job& done = jobs_.front();
        bytes_ -= done.bytes.size();
        if (done.block) free_.push_back(std::move(done.block));
        owner = std::move(done.owner);
        jobs_.pop_front();
        if (isWaiting_) changed_.NotifyAll();
    }
}

BackgroundDigest::~BackgroundDigest() {
    try {
        thread_.Finish();
    } catch (const std::exception&) {
        // The digest is not wanted any more.
    }
}

void BackgroundDigest::Add(const char* bytes, size_t size) {
    while (size > 0) {
        if (!block_) block_ = thread_.Take();
        const size_t part = std::min(size, DigestThread::kBlock - size_);
        std::memcpy(block_.get() + size_, bytes, part);
        bytes += part;
        size -= part;
        size_ += part;
        if (size_ == DigestThread::kBlock) AddCopied();
    }
}

void BackgroundDigest::Add(std::string_view bytes, DigestThread::Owner owner) {
    AddCopied();
    thread_.Add(digest_, bytes, std::move(owner));
}

void BackgroundDigest::AddCopied() {
    if (size_ > 0) Add(std::move(block_), std::exchange(size_, 0));
}

std::string BackgroundDigest::Finish() {
    AddCopied();
    thread_.Finish();
    return digest_.Finish();
}

}  // namespace importing
