// A thread that digests bytes beside the one that reads them, as that takes as long as their copying.
#pragma once

#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "base/SlabMemory.h"
#include "common/threads/Mutex.h"
#include "libraries/digest/Sha256.h"

namespace importing {

// All functions are for the thread that made it.
class DigestThread {
  public:
    // Small enough to stay in the processor's cache from one use to the next.
    static constexpr size_t kBlock = size_t{256} << 10;
    using Block = std::unique_ptr<char[], KXP::SlabDeleter>;
    // Of bytes that somebody else has made.
    using Owner = std::unique_ptr<void, void (*)(void*)>;

    DigestThread();
    ~DigestThread();
    DigestThread(const DigestThread&) = delete;
    DigestThread& operator=(const DigestThread&) = delete;

    // Memory of kBlock bytes. Waits while too many are to be digested.
    Block Take() EXCLUDES(mutex_);
    // Adds bytes to a digest: so many of a block, or some that somebody else owns. The digest must live and
    // be left alone until Finish, and so must bytes without an owner. Others are returned to theirs by the
    // thread; for them it may wait as Take does.
    void Add(KXP::Sha256& digest, Block block, size_t size) EXCLUDES(mutex_);
    void Add(KXP::Sha256& digest, std::string_view bytes) EXCLUDES(mutex_);
    void Add(KXP::Sha256& digest, std::string_view bytes, Owner owner) EXCLUDES(mutex_);
    // Returns when everything was added. Throws what a digest has thrown.
    void Finish() EXCLUDES(mutex_);

  private:
    struct Job {
        KXP::Sha256* digest;
        std::string_view bytes;
        Block block;  // that they are in, if any
        Owner owner{nullptr, nullptr};
    };

    void Add(Job job) EXCLUDES(mutex_);
    void Run() EXCLUDES(mutex_);
    void WaitUntilAtMost(size_t bytes) REQUIRES(mutex_);
    void Digest(const Job& job) noexcept;

    std::exception_ptr failure_;  // of the thread, until Finish
    KXP::Mutex mutex_;
    KXP::CondVar changed_;
    std::deque<Job> jobs_ GUARDED_BY(mutex_);  // the first one is at work
    size_t bytes_ GUARDED_BY(mutex_) = 0;      // of the jobs
    std::vector<Block> free_ GUARDED_BY(mutex_);
    bool isWaiting_ GUARDED_BY(mutex_) = false;  // the thread that made it, for jobs to be done
    bool isEnded_ GUARDED_BY(mutex_) = false;
    std::thread thread_;  // last: it uses the rest
};

// One digest that the thread makes.
class BackgroundDigest {
  public:
    explicit BackgroundDigest(DigestThread& thread) : thread_(thread) {}
    ~BackgroundDigest();
    BackgroundDigest(const BackgroundDigest&) = delete;
    BackgroundDigest& operator=(const BackgroundDigest&) = delete;

    // The bytes are copied.
    void Add(const char* bytes, size_t size);
    // As that of the thread.
    void Add(std::string_view bytes, DigestThread::Owner owner);
    // What follows, as the functions of the thread. Not together with bytes that are copied.
    void Add(DigestThread::Block block, size_t size) { thread_.Add(digest_, std::move(block), size); }
    void Add(std::string_view bytes) { thread_.Add(digest_, bytes); }
    // Lower-case hexadecimal. Nothing can be added afterwards.
    std::string Finish();

  private:
    void AddCopied();

    DigestThread& thread_;
    KXP::Sha256 digest_;
    DigestThread::Block block_;  // with bytes that were copied
    size_t size_ = 0;
};

}  // namespace importing
