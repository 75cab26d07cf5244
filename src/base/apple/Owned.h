// What a "create" or "copy" function of a framework returned, which may be nothing.
#pragma once

#include <utility>

#include <CoreFoundation/CoreFoundation.h>

namespace KXP {

template <typename T>
class Owned {
  public:
    explicit Owned(T reference) : reference_(reference) {}
    ~Owned() {
        if (reference_) CFRelease(reference_);
    }
    Owned(Owned&& other) noexcept : reference_(std::exchange(other.reference_, nullptr)) {}
    Owned& operator=(Owned&&) = delete;

    explicit operator bool() const { return reference_ != nullptr; }
    T get() const { return reference_; }

  private:
    T reference_;
};

}  // namespace KXP
