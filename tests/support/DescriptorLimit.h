// Stands in for a disk that cannot be read: as long as it lives, nothing can be opened, also by root.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

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
