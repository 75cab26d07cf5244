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

    DigestThread();
    ~DigestThread();
    DigestThread(const DigestThread&) = delete;
    DigestThread& operator=(const DigestThread&) = delete;

    // Memory of kBlock bytes. Waits while too many are to be digested.
    Block Take() EXCLUDES(mutex_);
    // Adds bytes to a digest: so many of a block, or some that somebody else owns. The digest, and they, must
    // live and be left alone until Finish.
    void Add(KXP::Sha256& digest, Block block, size_t size) EXCLUDES(mutex_);
    void Add(KXP::Sha256& digest, std::string_view bytes) EXCLUDES(mutex_);
    // Returns when everything was added. Throws what a digest has thrown.
    void Finish() EXCLUDES(mutex_);

  private:
    struct Job {
        KXP::Sha256* digest;
        std::string_view bytes;
        Block block;  // that they are in, if any
    };

    void Add(Job job) EXCLUDES(mutex_);
    void Run() EXCLUDES(mutex_);
    void WaitForLess(size_t jobs) REQUIRES(mutex_);
    void Digest(const Job& job) noexcept;

    std::exception_ptr failure_;  // of the thread, until Finish
    KXP::Mutex mutex_;
    KXP::CondVar changed_;
    std::deque<Job> jobs_ GUARDED_BY(mutex_);  // the first one is at work
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
    // What follows, as the functions of the thread. Not together with bytes that are copied.
    void Add(DigestThread::Block block, size_t size) { thread_.Add(digest_, std::move(block), size); }
    void Add(std::string_view bytes) { thread_.Add(digest_, bytes); }
    // Lower-case hexadecimal. Nothing can be added afterwards.
    std::string Finish();

  private:
    DigestThread& thread_;
    KXP::Sha256 digest_;
    DigestThread::Block block_;  // with bytes that were copied
    size_t size_ = 0;
};

}  // namespace importing
