// A digest that a thread of its own makes, as it takes as long as the copying of the bytes.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <thread>

#include "common/threads/Mutex.h"
#include "importing/PictureDigest.h"

namespace importing {

// For one thread; the bytes are copied. Not more than a few blocks of them wait.
class BackgroundDigest {
  public:
    BackgroundDigest();
    ~BackgroundDigest();
    BackgroundDigest(const BackgroundDigest&) = delete;
    BackgroundDigest& operator=(const BackgroundDigest&) = delete;

    void Add(const char* bytes, size_t size);
    // As PictureDigest.
    std::string Finish();

  private:
    void Pass();
    void End();
    void Run();

    PictureDigest digest_;  // of the thread, while there is one
    std::string block_;
    KXP::Mutex mutex_;
    KXP::CondVar changed_;
    std::deque<std::string> waiting_ GUARDED_BY(mutex_);
    std::string free_ GUARDED_BY(mutex_);  // memory of a block that is done
    bool isEnded_ GUARDED_BY(mutex_) = false;
    std::thread thread_;  // last: it uses the rest
};

}  // namespace importing
