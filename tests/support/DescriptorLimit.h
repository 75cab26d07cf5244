// Stands in for a disk that cannot be read: as long as it lives, nothing can be opened, also by root.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

// The sanitizer of undefined behaviour looks at memory through pipes, and takes every object for a wrong one
// where there are none to be had.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SKIP_WHERE_DESCRIPTORS_ARE_NEEDED() GTEST_SKIP() << "the sanitizer needs descriptors itself"
#endif
#endif
#if !defined(SKIP_WHERE_DESCRIPTORS_ARE_NEEDED)
#define SKIP_WHERE_DESCRIPTORS_ARE_NEEDED() static_cast<void>(0)
#endif

class DescriptorLimit {
  public:
    // Descriptors below `most` can still be had.
    explicit DescriptorLimit(rlim_t most = 0) {
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit limit{most, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &before_); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

  private:
    rlimit before_{};
};
